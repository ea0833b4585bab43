// Writes struct attribute values as child objects of the MO.
//
// A struct attribute `attr` of the MO `Top=1,Obj=1` is kept in the child object `Obj=1:attr`
// (a list: `Obj=1:attr=i`, i from 1), which is not visible as an MO and holds the members as
// attributes. The MO's attribute holds the child's full dn (type 14), or all of them joined
// with ";" (type 32).
//
// No state; lives as the one field of IAttribute. Called on the transaction's thread.
#pragma once

#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"
#include "platform/orl/OrlAttributeValue.h"

namespace TibVeskCM {

class StructFactory {
  public:
    virtual ~StructFactory() = default;

    // Writes the child objects of `value` and the MO's attribute into the database transaction
    // `handle`. The result is a copy of that attribute for the caller's object copy (owned by
    // the caller), or null when nothing was written. A shorter list loses its committed tail.
    Attribute* setStruct(std::string dn, std::string attributeName,
                         OrlMoAttributeValueContainer_3 const* value, int handle);
    // The full dn and the rdn of the child `index` (used only for a list attribute). False when
    // `dn` cannot be split.
    bool generateStructName(std::string dn, std::string attributeName, std::string& structFdn,
                            std::string& structRdn, int index);
    // Adds one member as an attribute of the child `object`; `dn` is the MO's, for the model's
    // list question. False when the member has no value or cannot be built.
    bool addMember(DBObject* object, std::string dn,
                   OrlMoAttributeValueStructMember_3 const* member);
    // Deletes committed children from `startIndex` on, up to the first one that is missing.
    void deleteStructObjects(std::string dn, std::string attributeName, int startIndex, int handle);
    // Deletes every child named by the attribute and empties it. True when nothing was there.
    bool deleteStructAttribute(std::string dn, std::string attributeName, int handle);
};

}  // namespace TibVeskCM

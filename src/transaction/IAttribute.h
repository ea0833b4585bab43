// Builds new attributes from host values, for objects being created and for struct members.
//
// Two list encodings exist side by side. The transaction's builders (updateNewAttribute and
// createListAttributeString) join INT8 and STRING lists with ";"; the writers here and the
// object-copy writers of VeskDBTransactionHelper join them with ",". Readers split strings on
// ";", so a string list written here reads back as one value. Both stay as they are: stored data
// of either kind exist.
//
// No state but the struct factory. Called on the transaction's thread.
#pragma once

#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"
#include "platform/orl/OrlAttributeValue.h"
#include "transaction/StructFactory.h"

namespace TibVeskCM {

class IAttribute {
  public:
    // Which of the two list encodings to use.
    enum ListEncoding {
        kTransactionEncoding,  // the transaction's builders
        kWriterEncoding        // IAttribute and the object-copy writers
    };

    virtual ~IAttribute() = default;

    // True when the model says the attribute is a list; an unknown attribute is not a list.
    bool isListAttribute(std::string const& dn, std::string const& attributeName);
    // Adds the attribute built from `value` to `object`; a struct is written to the database
    // transaction `handle` first. False when nothing was added.
    bool setAttribute(DBObject* object, std::string dn, std::string attributeName,
                      OrlMoAttributeValueContainer_3 const* value, int handle);
    // A list attribute (type 0 and int 0 for types that have no list). Owned by the caller.
    Attribute* createMultiValueAttribute(std::string const& dn, std::string const& attributeName,
                                         OrlMoAttributeValueContainer_3 const* value);
    // A single attribute from the first value; null for a type without one (struct included).
    Attribute* createSingleValueAttribute(std::string const& dn, std::string const& attributeName,
                                          OrlMoAttributeValueContainer_3 const* value);
    // Deletes a struct attribute's children and restores its default. The deletion's result.
    int deleteAttribute(std::string dn, std::string attributeName, int handle);
    // Sets the attribute of `dn` back to its model default; true on success.
    bool createAttributeWithDefaultValue(std::string dn, std::string attributeName, int handle,
                                         int flag);

    // The text of one value of host type `hostType` in a list; false when it has none.
    static bool valueText(int hostType, OrlMoAttributeValue_3 const& value, std::string& text);
    // The list type of a host type (32 for a struct); 0 for types without a list.
    static IPCData::AttributeValueType listType(int hostType);
    // The separator between list elements of `hostType` in `encoding`.
    static char listSeparator(int hostType, ListEncoding encoding);
    // The values of types 1..12 and 16 joined as `encoding` says. An element without text is
    // left out with its separator; the separator goes before every element but the first by
    // position, so a missing first element leaves a leading separator.
    static std::string joinValues(OrlMoAttributeValueContainer_3 const* value,
                                  ListEncoding encoding);
    // Stores the first value into `attribute` in the variant alternative of its host type; false
    // (attribute untouched) for types 13, 14, 15 and beyond 16.
    static bool storeSingleValue(Attribute* attribute, int hostType,
                                 OrlMoAttributeValue_3 const& value);

  private:
    StructFactory _structFactory;
};

}  // namespace TibVeskCM

// Small helpers of the rule classes: the first value of a change as text or number, read only when
// the value's type holds one, and database objects fetched in a transaction and released by
// their owner.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Toolbox.h"
#include "platform/orl/OrlAttributeValue.h"

namespace TibVeskOI {
namespace rules {

// The first text of a string or reference value; null for an empty value or any other type.
inline const char* firstText(const OrlMoAttributeValueContainer_3* value) {
    if (value == nullptr || value->nrOfValues == 0 || value->values == nullptr ||
        (value->type != OrlOamSpiMoAttributeType_3_STRING &&
         value->type != OrlOamSpiMoAttributeType_3_REFERENCE)) {
        return nullptr;
    }
    return value->values[0].theString;
}

// The first 32 bits, signed, of an integer or enumeration value; false for an empty value or
// any other type.
inline bool firstInt(const OrlMoAttributeValueContainer_3* value, int& out) {
    if (value == nullptr || value->nrOfValues == 0 || value->values == nullptr) {
        return false;
    }
    const bool integral = (value->type >= OrlOamSpiMoAttributeType_3_INT8 &&
                           value->type <= OrlOamSpiMoAttributeType_3_UINT64) ||
                          value->type == OrlOamSpiMoAttributeType_3_ENUM;
    if (integral) {
        out = value->values[0].i32;
    }
    return integral;
}

// The full dn of an object copy: its parent's dn, a comma and its key.
inline std::string dnOf(const DBObject& object) {
    return object.parentDn.empty() ? object.dn : object.parentDn + "," + object.dn;
}

// An integer attribute of `object` (may be null), or `start` when it cannot be read.
inline int readInt(DBObject* object, const char* name, int start) {
    int value = start;
    if (object != nullptr && !Toolbox::getAttrValueFromObj<int>(object, name, value)) {
        value = start;
    }
    return value;
}

// A text attribute of `object` (may be null), or "" when it cannot be read.
inline std::string readText(DBObject* object, const char* name) {
    std::string value;
    if (object != nullptr && !Toolbox::getAttrValueFromObj<std::string>(object, name, value)) {
        value.clear();
    }
    return value;
}

typedef std::unique_ptr<DBObject> ObjectPtr;

// One object in the view of `dbTx`, or null.
inline ObjectPtr fetch(const std::string& dn, int dbTx) {
    return ObjectPtr(IDatabase::getObject(dn, 1, dbTx));
}

// The MOs of a class in the view of `dbTx`; the objects that hold struct values (":" in the
// key) are no MOs and are left out.
class MoList {
  public:
    MoList(const std::string& className, int dbTx) {
        for (DBObject* object : IDatabase::getMOClass(className, dbTx)) {
            if (object->dn.find(':') == std::string::npos) {
                _objects.emplace_back(object);
            } else {
                delete object;
            }
        }
    }
    std::list<ObjectPtr>::const_iterator begin() const { return _objects.begin(); }
    std::list<ObjectPtr>::const_iterator end() const { return _objects.end(); }
    size_t size() const { return _objects.size(); }

  private:
    std::list<ObjectPtr> _objects;
};

}  // namespace rules
}  // namespace TibVeskOI

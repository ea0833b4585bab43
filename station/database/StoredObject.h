// The committed form of one database object, shared read-only between the committed state, the
// overlays and the readers. A StoredObject is never changed once published: a change makes a new
// one (copy on write).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/IPCData.h"

namespace vesk {
namespace db {

struct StoredAttribute {
    std::string name;
    AttributeVariant value;
    IPCData::AttributeValueType type = IPCData::AVT_UNKNOWN;
    int32_t attributeId = 0;
    int32_t alternateSlot = -1;  // -1 in the regular map
    bool hidden = false;
};

// Attributes ordered by name, one entry per name.
class AttributeSet {
  public:
    const StoredAttribute* find(const std::string& name) const;
    // Inserts or replaces the attribute of the same name.
    void put(StoredAttribute attribute);
    // Appends when `attribute` sorts after every held one (as a decoder delivers them).
    void putLast(StoredAttribute attribute);
    void reserve(size_t n) { _items.reserve(n); }
    // False if there was none.
    bool erase(const std::string& name);
    const std::vector<StoredAttribute>& items() const { return _items; }
    size_t size() const { return _items.size(); }

  private:
    std::vector<StoredAttribute>::iterator lowerBound(const std::string& name);
    std::vector<StoredAttribute> _items;
};

struct StoredObject {
    std::string fullDn;
    std::string key;
    std::string className;
    std::string parentDn;
    int instance = 1;
    bool visible = true;
    bool flagB = false;
    int operationalState = 0;
    int adminState = 1;
    int classInstance = 1;
    uint64_t seq = 0;  // insertion order within the store; 0 until committed
    AttributeSet attributes;
    AttributeSet alternates;
};

using ObjectPtr = std::shared_ptr<const StoredObject>;

// A char const* value is kept as the string it points to (null as ""): the pointer cannot outlive
// the caller's call.
AttributeVariant normalizedValue(const AttributeVariant& value);

StoredAttribute storedFromAttribute(const Attribute& attribute);

// A new DBObject copy of `object`, owned by the caller: dn holds the key, hidden attributes are
// included with their flag, alternates go to alternateAttributes.
DBObject* toDBObject(const StoredObject& object);

// The object stored by an insert of `object` (whose attributes were checked by the caller) under
// `fullDn`. Attributes marked deleted are left out; an alternateSlot other than -1 routes an
// attribute to the alternate map.
StoredObject storedFromDBObject(const DBObject& object, const std::string& fullDn);

// Binary form of both attribute maps, for the store's attrs column.
std::string encodeAttributes(const StoredObject& object);
// False if `blob` is not a well-formed encoding.
bool decodeAttributes(const char* data, size_t size, StoredObject* object);

}  // namespace db
}  // namespace vesk

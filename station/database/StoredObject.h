// The committed form of one database object, shared read-only between the committed state, the
// overlays and the readers. A StoredObject is never changed once published: a change makes a new
// one (copy on write).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/IPCData.h"
#include "station/database/AttributeName.h"

namespace vesk {
namespace db {

struct StoredAttribute {
    AttributeName name;
    AttributeVariant value;
    int32_t attributeId = 0;
    int32_t alternateSlot = -1;  // -1 in the regular map
    IPCData::AttributeValueType type = IPCData::AVT_UNKNOWN;
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
    // Appends `attribute`, which the caller knows to sort after every held one.
    void append(StoredAttribute&& attribute) { _items.push_back(std::move(attribute)); }
    void reserve(size_t n) { _items.reserve(n); }
    // False if there was none.
    bool erase(const std::string& name);
    const std::vector<StoredAttribute>& items() const { return _items; }
    size_t size() const { return _items.size(); }

  private:
    std::vector<StoredAttribute>::iterator lowerBound(const std::string& name);
    std::vector<StoredAttribute> _items;
};

// The key, class and parent are parts of the full dn, read in place.
struct StoredObject {
    std::string fullDn;
    int instance = 1;
    int operationalState = 0;
    int adminState = 1;
    int classInstance = 1;
    bool visible = true;
    bool flagB = false;
    uint64_t seq = 0;  // insertion order within the store; 0 until committed
    AttributeSet attributes;
    AttributeSet alternates;

    // The text after the last "," of the dn.
    std::string_view key() const;
    // The key up to its first "=".
    std::string_view className() const;
    // The text before the last ","; "" at the root.
    std::string_view parentDn() const;
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

}  // namespace db
}  // namespace vesk

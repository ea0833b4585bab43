#include "station/database/StoredObject.h"

#include <algorithm>

namespace vesk {
namespace db {

std::vector<StoredAttribute>::iterator AttributeSet::lowerBound(const std::string& name) {
    return std::lower_bound(
        _items.begin(), _items.end(), name,
        [](const StoredAttribute& a, const std::string& n) { return a.name.str() < n; });
}

const StoredAttribute* AttributeSet::find(const std::string& name) const {
    auto it = const_cast<AttributeSet*>(this)->lowerBound(name);
    return (it != _items.end() && it->name == name) ? &*it : nullptr;
}

void AttributeSet::put(StoredAttribute attribute) {
    auto it = lowerBound(attribute.name);
    if (it != _items.end() && it->name == attribute.name) {
        *it = std::move(attribute);
    } else {
        _items.insert(it, std::move(attribute));
    }
}

void AttributeSet::putLast(StoredAttribute attribute) {
    if (_items.empty() || _items.back().name < attribute.name) {
        _items.push_back(std::move(attribute));
    } else {
        put(std::move(attribute));
    }
}

std::string_view StoredObject::key() const {
    size_t comma = fullDn.rfind(',');
    return comma == std::string::npos ? std::string_view(fullDn)
                                      : std::string_view(fullDn).substr(comma + 1);
}

std::string_view StoredObject::className() const {
    std::string_view k = key();
    return k.substr(0, k.find('='));
}

std::string_view StoredObject::parentDn() const {
    size_t comma = fullDn.rfind(',');
    return std::string_view(fullDn).substr(0, comma == std::string::npos ? 0 : comma);
}

bool AttributeSet::erase(const std::string& name) {
    auto it = lowerBound(name);
    if (it == _items.end() || it->name != name)
        return false;
    _items.erase(it);
    return true;
}

AttributeVariant normalizedValue(const AttributeVariant& value) {
    if (value.which() != AV_CSTRING)
        return value;
    const char* text = boost::get<char const*>(value);
    return AttributeVariant(std::string(text == nullptr ? "" : text));
}

StoredAttribute storedFromAttribute(const Attribute& attribute) {
    StoredAttribute stored;
    stored.name = attribute.name;
    stored.value = normalizedValue(attribute.value);
    stored.type = attribute.type;
    stored.attributeId = attribute.attributeId;
    stored.alternateSlot = attribute.alternateSlot;
    stored.hidden = attribute.hidden;
    return stored;
}

namespace {

// The constructor takes name and value by value and copies them again: an empty name and value
// are given and the stored ones copied in once.
Attribute* toAttribute(const StoredAttribute& stored) {
    Attribute* attribute = new Attribute(stored.hidden, std::string(), AttributeVariant(),
                                         stored.attributeId, true, stored.type, false, false);
    attribute->name = stored.name.str();
    attribute->value = stored.value;
    attribute->alternateSlot = stored.alternateSlot;
    return attribute;
}

// The names of `set` ascend, so each goes in at the end of `out`.
void copyInto(const AttributeSet& set, std::map<std::string, Attribute*>& out) {
    for (const StoredAttribute& stored : set.items())
        out.emplace_hint(out.end(), stored.name.str(), toAttribute(stored));
}

}  // namespace

DBObject* toDBObject(const StoredObject& object) {
    DBObject* copy =
        new DBObject(std::string(object.key()), object.instance, object.visible, object.flagB,
                     static_cast<IPCData::OperationalState>(object.operationalState),
                     static_cast<IPCData::AdminState>(object.adminState),
                     std::string(object.parentDn()), object.classInstance);
    copyInto(object.attributes, copy->attributes);
    copyInto(object.alternates, copy->alternateAttributes);
    return copy;
}

StoredObject storedFromDBObject(const DBObject& object, const std::string& fullDn) {
    StoredObject stored;
    stored.fullDn = fullDn;
    stored.instance = object.instance;
    stored.visible = object.visible;
    stored.flagB = object.flagB;
    stored.operationalState = object.operationalState;
    stored.adminState = object.adminState;
    stored.classInstance = object.classInstance;
    for (const auto& entry : object.attributes) {
        if (entry.second == nullptr || entry.second->deleted)
            continue;
        StoredAttribute attribute = storedFromAttribute(*entry.second);
        attribute.name = entry.first;
        if (attribute.alternateSlot != -1) {
            stored.alternates.putLast(std::move(attribute));
        } else {
            stored.attributes.putLast(std::move(attribute));
        }
    }
    for (const auto& entry : object.alternateAttributes) {
        if (entry.second == nullptr || entry.second->deleted)
            continue;
        StoredAttribute attribute = storedFromAttribute(*entry.second);
        attribute.name = entry.first;
        stored.alternates.put(std::move(attribute));
    }
    return stored;
}

}  // namespace db
}  // namespace vesk

#include "station/database/StoredObject.h"

#include <algorithm>
#include <cstring>

#include "station/database/DnName.h"

namespace vesk {
namespace db {

std::vector<StoredAttribute>::iterator AttributeSet::lowerBound(const std::string& name) {
    return std::lower_bound(
        _items.begin(), _items.end(), name,
        [](const StoredAttribute& a, const std::string& n) { return a.name < n; });
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

Attribute* toAttribute(const StoredAttribute& stored) {
    Attribute* attribute = new Attribute(stored.hidden, stored.name, stored.value,
                                         stored.attributeId, true, stored.type, false, false);
    attribute->alternateSlot = stored.alternateSlot;
    return attribute;
}

void copyInto(const AttributeSet& set, std::map<std::string, Attribute*>& out) {
    auto hint = out.end();
    for (const StoredAttribute& stored : set.items()) {
        hint = out.emplace_hint(hint, stored.name, toAttribute(stored));
        ++hint;
    }
}

}  // namespace

DBObject* toDBObject(const StoredObject& object) {
    DBObject* copy = new DBObject(object.key, object.instance, object.visible, object.flagB,
                                  static_cast<IPCData::OperationalState>(object.operationalState),
                                  static_cast<IPCData::AdminState>(object.adminState),
                                  object.parentDn, object.classInstance);
    copyInto(object.attributes, copy->attributes);
    copyInto(object.alternates, copy->alternateAttributes);
    return copy;
}

StoredObject storedFromDBObject(const DBObject& object, const std::string& fullDn) {
    StoredObject stored;
    stored.fullDn = fullDn;
    stored.key = keyOf(fullDn);
    stored.className = classOfKey(stored.key);
    stored.parentDn = parentOf(fullDn);
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

// Encoding: per map a count, then per attribute: name, type, id, slot, hidden, alternative index
// and the value (fixed-size alternatives as their bytes, strings with their length).
namespace {

class Writer {
  public:
    template <typename T>
    void pod(T v) {
        _out.append(reinterpret_cast<const char*>(&v), sizeof v);
    }
    void text(const std::string& s) {
        pod<uint32_t>(static_cast<uint32_t>(s.size()));
        _out.append(s);
    }
    std::string& out() { return _out; }

  private:
    std::string _out;
};

class Reader {
  public:
    Reader(const char* data, size_t size) : _data(data), _size(size) {}
    template <typename T>
    bool pod(T* v) {
        if (_size - _pos < sizeof(T))
            return false;
        std::memcpy(v, _data + _pos, sizeof(T));
        _pos += sizeof(T);
        return true;
    }
    bool text(std::string* s) {
        uint32_t n = 0;
        if (!pod(&n) || _size - _pos < n)
            return false;
        s->assign(_data + _pos, n);
        _pos += n;
        return true;
    }
    bool atEnd() const { return _pos == _size; }
    size_t left() const { return _size - _pos; }

  private:
    const char* _data;
    size_t _size;
    size_t _pos = 0;
};

struct ValueWriter : boost::static_visitor<void> {
    explicit ValueWriter(Writer& w) : w(w) {}
    template <typename T>
    void operator()(T v) const {
        w.pod(v);
    }
    void operator()(const std::string& s) const { w.text(s); }
    void operator()(char const* s) const { w.text(s == nullptr ? "" : s); }
    Writer& w;
};

template <typename T>
bool readPod(Reader& r, AttributeVariant* value) {
    T v{};
    if (!r.pod(&v))
        return false;
    *value = v;
    return true;
}

bool readValue(Reader& r, int which, AttributeVariant* value) {
    switch (which) {
        case AV_CHAR:
            return readPod<char>(r, value);
        case AV_SHORT:
            return readPod<short>(r, value);
        case AV_INT:
            return readPod<int>(r, value);
        case AV_LONGLONG:
            return readPod<long long>(r, value);
        case AV_FLOAT:
            return readPod<float>(r, value);
        case AV_DOUBLE:
            return readPod<double>(r, value);
        case AV_UCHAR:
            return readPod<unsigned char>(r, value);
        case AV_USHORT:
            return readPod<unsigned short>(r, value);
        case AV_UINT:
            return readPod<unsigned int>(r, value);
        case AV_ULONGLONG:
            return readPod<unsigned long long>(r, value);
        case AV_BOOL: {  // a byte other than 0 or 1 is no bool: read as a byte
            uint8_t byte = 0;
            if (!r.pod(&byte))
                return false;
            *value = byte != 0;
            return true;
        }
        case AV_STRING:
        case AV_CSTRING: {
            std::string s;
            if (!r.text(&s))
                return false;
            *value = std::move(s);
            return true;
        }
        default:
            return false;
    }
}

void writeSet(Writer& w, const AttributeSet& set) {
    w.pod<uint32_t>(static_cast<uint32_t>(set.size()));
    for (const StoredAttribute& a : set.items()) {
        w.text(a.name);
        w.pod<int32_t>(a.type);
        w.pod<int32_t>(a.attributeId);
        w.pod<int32_t>(a.alternateSlot);
        w.pod<uint8_t>(a.hidden ? 1 : 0);
        w.pod<uint8_t>(static_cast<uint8_t>(a.value.which()));
        boost::apply_visitor(ValueWriter(w), a.value);
    }
}

// Name length, type, id, slot, hidden flag, alternative and a value of at least one byte.
constexpr size_t kSmallestAttribute = 4 + 3 * 4 + 2 + 1;

bool readAttribute(Reader& r, StoredAttribute* a) {
    int32_t type = 0;
    uint8_t hidden = 0, which = 0;
    if (!r.text(&a->name) || !r.pod(&type) || !r.pod(&a->attributeId) ||
        !r.pod(&a->alternateSlot) || !r.pod(&hidden) || !r.pod(&which)) {
        return false;
    }
    a->type = static_cast<IPCData::AttributeValueType>(type);
    a->hidden = hidden != 0;
    return readValue(r, which, &a->value);
}

bool readSet(Reader& r, AttributeSet* set) {
    uint32_t count = 0;
    if (!r.pod(&count) || count > r.left() / kSmallestAttribute)
        return false;
    set->reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        StoredAttribute a;
        if (!readAttribute(r, &a))
            return false;
        set->putLast(std::move(a));
    }
    return true;
}

}  // namespace

std::string encodeAttributes(const StoredObject& object) {
    Writer w;
    w.out().reserve(64 * (object.attributes.size() + object.alternates.size()) + 8);
    writeSet(w, object.attributes);
    writeSet(w, object.alternates);
    return std::move(w.out());
}

bool decodeAttributes(const char* data, size_t size, StoredObject* object) {
    Reader r(data, size);
    return readSet(r, &object->attributes) && readSet(r, &object->alternates) && r.atEnd();
}

}  // namespace db
}  // namespace vesk

#include "station/database/AttributeCodec.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "station/database/ValueInput.h"

namespace vesk {
namespace db {

namespace {

void putVarint(std::string& out, uint64_t v) {
    while (v >= 0x80) {
        out.push_back(static_cast<char>(v | 0x80));
        v >>= 7;
    }
    out.push_back(static_cast<char>(v));
}

uint64_t zigzag(int64_t v) {
    return (static_cast<uint64_t>(v) << 1) ^ static_cast<uint64_t>(v >> 63);
}

int64_t unzigzag(uint64_t v) {
    return static_cast<int64_t>(v >> 1) ^ -static_cast<int64_t>(v & 1);
}

void putText(std::string& out, const std::string& text) {
    putVarint(out, text.size());
    out.append(text);
}

// Reads what the writers above wrote: chars and floats as their bytes, whole numbers as
// varints, a bool as a byte of 0 or 1, strings with their length.
class Input : public ByteInput {
  public:
    using ByteInput::ByteInput;
    bool varint(uint64_t* v) {
        *v = 0;
        for (int shift = 0; shift < 64 && more(); shift += 7) {
            uint8_t byte = next();
            if (shift == 63 && byte > 1)
                return false;
            *v |= static_cast<uint64_t>(byte & 0x7f) << shift;
            if (byte < 0x80)
                return true;
        }
        return false;
    }
    // A signed varint that fits `T`.
    template <typename T>
    bool signedInt(T* v) {
        uint64_t raw = 0;
        if (!varint(&raw))
            return false;
        int64_t wide = unzigzag(raw);
        if (wide < std::numeric_limits<T>::min() || wide > std::numeric_limits<T>::max())
            return false;
        *v = static_cast<T>(wide);
        return true;
    }
    template <typename T>
    bool unsignedInt(T* v) {
        uint64_t raw = 0;
        if (!varint(&raw) || raw > std::numeric_limits<T>::max())
            return false;
        *v = static_cast<T>(raw);
        return true;
    }
    bool text(std::string* s) {
        uint64_t n = 0;
        return varint(&n) && take(n, s);
    }
    // One value, as readValue() asks for it.
    template <typename T>
    bool read(T* v) {
        if constexpr (sizeof(T) == 1 || std::is_floating_point<T>::value)
            return bytes(v);
        else if constexpr (std::is_signed<T>::value)
            return signedInt(v);
        else
            return unsignedInt(v);
    }
    bool read(bool* v) {
        uint8_t byte = 2;
        if (!bytes(&byte) || byte > 1)
            return false;
        *v = byte == 1;
        return true;
    }
    bool read(std::string* s) { return text(s); }
};

struct ValueWriter : boost::static_visitor<void> {
    explicit ValueWriter(std::string& out) : out(out) {}
    void operator()(char v) const { out.push_back(v); }
    void operator()(unsigned char v) const { out.push_back(static_cast<char>(v)); }
    void operator()(bool v) const { out.push_back(v ? 1 : 0); }
    void operator()(short v) const { putVarint(out, zigzag(v)); }
    void operator()(int v) const { putVarint(out, zigzag(v)); }
    void operator()(long long v) const { putVarint(out, zigzag(v)); }
    void operator()(unsigned short v) const { putVarint(out, v); }
    void operator()(unsigned int v) const { putVarint(out, v); }
    void operator()(unsigned long long v) const { putVarint(out, v); }
    void operator()(float v) const { out.append(reinterpret_cast<const char*>(&v), sizeof v); }
    void operator()(double v) const { out.append(reinterpret_cast<const char*>(&v), sizeof v); }
    void operator()(const std::string& s) const { putText(out, s); }
    void operator()(char const* s) const { putText(out, s == nullptr ? "" : s); }
    std::string& out;
};

// A char const* value is written as the string it holds.
int storedWhich(const AttributeVariant& value) {
    return value.which() == AV_CSTRING ? AV_STRING : value.which();
}

void appendEntries(std::string& out, const AttributeSet& set) {
    for (const StoredAttribute& a : set.items()) {
        putText(out, a.name);
        putVarint(out, zigzag(a.type));
        out.push_back(static_cast<char>(storedWhich(a.value)));
        putVarint(out, zigzag(a.attributeId));
        putVarint(out, zigzag(a.alternateSlot));
        out.push_back(a.hidden ? 1 : 0);
    }
}

// Name, type, alternative, id, slot and flag: at least six bytes each.
constexpr size_t kSmallestEntry = 6;

bool readEntry(Input& in, LayoutEntry* entry) {
    std::string name;
    int32_t type = 0;
    uint8_t which = 0, hidden = 0;
    StoredAttribute& a = entry->attribute;
    if (!in.text(&name) || !in.signedInt(&type) || !in.bytes(&which) ||
        !in.signedInt(&a.attributeId) || !in.signedInt(&a.alternateSlot) || !in.bytes(&hidden) ||
        which >= AV_CSTRING || hidden > 1) {
        return false;
    }
    a.name = AttributeName(name);
    a.type = static_cast<IPCData::AttributeValueType>(type);
    a.hidden = hidden == 1;
    entry->which = which;
    return true;
}

}  // namespace

std::string Layouts::bodyOf(const StoredObject& object) {
    std::string body;
    body.reserve(24 * (object.attributes.size() + object.alternates.size()) + 4);
    putVarint(body, object.attributes.size());
    putVarint(body, object.alternates.size());
    appendEntries(body, object.attributes);
    appendEntries(body, object.alternates);
    return body;
}

std::unique_ptr<Layout> Layouts::parse(const char* body, size_t size) {
    Input in(body, size);
    uint64_t regular = 0, alternate = 0;
    if (!in.varint(&regular) || !in.varint(&alternate) || regular > in.left() / kSmallestEntry ||
        alternate > in.left() / kSmallestEntry) {
        return nullptr;
    }
    auto layout = std::make_unique<Layout>();
    layout->regularCount = regular;
    layout->entries.resize(regular + alternate);
    layout->ordered = true;
    for (size_t i = 0; i < layout->entries.size(); ++i) {
        if (!readEntry(in, &layout->entries[i]))
            return nullptr;
        bool first = i == 0 || i == layout->regularCount;
        if (!first && !(layout->entries[i - 1].attribute.name < layout->entries[i].attribute.name))
            layout->ordered = false;
    }
    return in.atEnd() ? std::move(layout) : nullptr;
}

void Layouts::keep(uint32_t id, std::unique_ptr<Layout> layout, std::string body) {
    if (_byId.size() < id)
        _byId.resize(id);
    _byId[id - 1] = std::move(layout);
    _idOfBody.emplace(std::move(body), id);
    _lastId = std::max(_lastId, id);
}

bool Layouts::load(uint32_t id, const char* body, size_t size) {
    if (id == 0 || find(id) != nullptr)
        return false;
    std::unique_ptr<Layout> layout = parse(body, size);
    if (layout == nullptr)
        return false;
    keep(id, std::move(layout), std::string(body, size));
    return true;
}

uint32_t Layouts::idOf(const std::string& body) {
    auto it = _idOfBody.find(body);
    if (it != _idOfBody.end())
        return it->second;
    std::unique_ptr<Layout> layout = parse(body.data(), body.size());
    if (layout == nullptr)
        return 0;
    uint32_t id = _lastId + 1;
    keep(id, std::move(layout), body);
    _pending.emplace_back(id, body);
    return id;
}

void Layouts::dropPending() {
    for (const auto& entry : _pending) {
        _idOfBody.erase(entry.second);
        _byId[entry.first - 1].reset();
    }
    if (!_pending.empty())
        _lastId = _pending.front().first - 1;
    _pending.clear();
}

const Layout* Layouts::find(uint32_t id) const {
    return id == 0 || id > _byId.size() ? nullptr : _byId[id - 1].get();
}

void Layouts::clear() {
    _byId.clear();
    _idOfBody.clear();
    _pending.clear();
    _lastId = 0;
}

std::string encodeAttributes(const StoredObject& object, uint32_t layoutId) {
    std::string out;
    out.reserve(12 * (object.attributes.size() + object.alternates.size()) + 4);
    putVarint(out, layoutId);
    ValueWriter writer(out);
    for (const AttributeSet* set : {&object.attributes, &object.alternates}) {
        for (const StoredAttribute& a : set->items())
            boost::apply_visitor(writer, a.value);
    }
    return out;
}

bool decodeAttributes(const char* data, size_t size, const Layouts& layouts, StoredObject* object) {
    Input in(data, size);
    uint64_t id = 0;
    if (!in.varint(&id) || id > std::numeric_limits<uint32_t>::max())
        return false;
    const Layout* layout = layouts.find(static_cast<uint32_t>(id));
    if (layout == nullptr)
        return false;
    object->attributes.reserve(layout->regularCount);
    object->alternates.reserve(layout->entries.size() - layout->regularCount);
    for (size_t i = 0; i < layout->entries.size(); ++i) {
        const LayoutEntry& entry = layout->entries[i];
        StoredAttribute a = entry.attribute;
        if (!readValue(in, entry.which, &a.value))
            return false;
        AttributeSet& set = i < layout->regularCount ? object->attributes : object->alternates;
        if (layout->ordered) {
            set.append(std::move(a));
        } else {
            set.putLast(std::move(a));
        }
    }
    return in.atEnd();
}

}  // namespace db
}  // namespace vesk

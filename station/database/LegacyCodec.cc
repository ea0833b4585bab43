#include "station/database/LegacyCodec.h"

#include <cstdint>
#include <string>

#include "station/database/ValueInput.h"

namespace vesk {
namespace db {

namespace {

// Fixed-size values as their bytes, a bool as a byte (any byte but 0 is true), strings with a
// 32-bit length.
class Reader : public ByteInput {
  public:
    using ByteInput::ByteInput;
    template <typename T>
    bool read(T* v) {
        return bytes(v);
    }
    bool read(bool* v) {
        uint8_t byte = 0;
        if (!bytes(&byte))
            return false;
        *v = byte != 0;
        return true;
    }
    bool read(std::string* s) { return text(s); }
    bool text(std::string* s) {
        uint32_t n = 0;
        return bytes(&n) && take(n, s);
    }
};

// Name length, type, id, slot, hidden flag, alternative and a value of at least one byte.
constexpr size_t kSmallestAttribute = 4 + 3 * 4 + 2 + 1;

bool readAttribute(Reader& r, StoredAttribute* a) {
    int32_t type = 0;
    uint8_t hidden = 0, which = 0;
    std::string name;
    if (!r.text(&name) || !r.bytes(&type) || !r.bytes(&a->attributeId) ||
        !r.bytes(&a->alternateSlot) || !r.bytes(&hidden) || !r.bytes(&which)) {
        return false;
    }
    a->name = AttributeName(name);
    a->type = static_cast<IPCData::AttributeValueType>(type);
    a->hidden = hidden != 0;
    return readValue(r, which, &a->value);
}

bool readSet(Reader& r, AttributeSet* set) {
    uint32_t count = 0;
    if (!r.bytes(&count) || count > r.left() / kSmallestAttribute)
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

bool decodeLegacyAttributes(const char* data, size_t size, StoredObject* object) {
    Reader r(data, size);
    return readSet(r, &object->attributes) && readSet(r, &object->alternates) && r.atEnd();
}

}  // namespace db
}  // namespace vesk

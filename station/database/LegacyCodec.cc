#include "station/database/LegacyCodec.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace vesk {
namespace db {

namespace {

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

// Name length, type, id, slot, hidden flag, alternative and a value of at least one byte.
constexpr size_t kSmallestAttribute = 4 + 3 * 4 + 2 + 1;

bool readAttribute(Reader& r, StoredAttribute* a) {
    int32_t type = 0;
    uint8_t hidden = 0, which = 0;
    std::string name;
    if (!r.text(&name) || !r.pod(&type) || !r.pod(&a->attributeId) || !r.pod(&a->alternateSlot) ||
        !r.pod(&hidden) || !r.pod(&which)) {
        return false;
    }
    a->name = AttributeName(name);
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

bool decodeLegacyAttributes(const char* data, size_t size, StoredObject* object) {
    Reader r(data, size);
    return readSet(r, &object->attributes) && readSet(r, &object->alternates) && r.atEnd();
}

}  // namespace db
}  // namespace vesk

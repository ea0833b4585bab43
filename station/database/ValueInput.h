// Reading of stored attribute values, shared by the store's encoding and the older one read when
// a store is converted. Each encoding says how it reads each kind of value; the choice of the
// kind by the variant alternative is made once here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "platform/AttributeVariant.h"

namespace vesk {
namespace db {

// Bytes read in order from a buffer the caller keeps alive; every read fails rather than run
// past the end.
class ByteInput {
  public:
    ByteInput(const char* data, size_t size) : _data(data), _size(size) {}

    // The next sizeof(T) bytes as a `T`.
    template <typename T>
    bool bytes(T* v) {
        if (_size - _pos < sizeof(T))
            return false;
        std::memcpy(v, _data + _pos, sizeof(T));
        _pos += sizeof(T);
        return true;
    }
    // The next `n` bytes as a string.
    bool take(size_t n, std::string* s) {
        if (n > _size - _pos)
            return false;
        s->assign(_data + _pos, n);
        _pos += n;
        return true;
    }
    bool atEnd() const { return _pos == _size; }
    size_t left() const { return _size - _pos; }

  protected:
    // The next byte, which the caller has checked is there.
    uint8_t next() { return static_cast<uint8_t>(_data[_pos++]); }
    bool more() const { return _pos < _size; }

  private:
    const char* _data;
    size_t _size;
    size_t _pos = 0;
};

template <typename T, class In>
bool readAs(In& in, AttributeVariant* value) {
    T v{};
    if (!in.read(&v))
        return false;
    *value = std::move(v);
    return true;
}

// Reads a value of the variant alternative `which` through `in.read(T*)`, which an encoding
// provides for every alternative's type (a char const* value is stored as its string). False
// for an alternative that is none, or when `in` fails.
template <class In>
bool readValue(In& in, int which, AttributeVariant* value) {
    using Reader = bool (*)(In&, AttributeVariant*);
    // In the order of the variant's alternatives.
    // clang-format off
    static const Reader kByWhich[] = {
        readAs<char, In>, readAs<short, In>, readAs<int, In>, readAs<long long, In>,
        readAs<float, In>, readAs<double, In>, readAs<std::string, In>, readAs<unsigned char, In>,
        readAs<unsigned short, In>, readAs<unsigned int, In>, readAs<unsigned long long, In>,
        readAs<bool, In>, readAs<std::string, In>};
    // clang-format on
    static_assert(sizeof kByWhich / sizeof kByWhich[0] == AV_CSTRING + 1, "one per alternative");
    return which >= 0 && which <= AV_CSTRING && kByWhich[which](in, value);
}

}  // namespace db
}  // namespace vesk

#include "station/messages/ByteCodec.h"

#include <cstring>

namespace VESK {
namespace Messages {

void ByteWriter::u16(uint16_t v) {
    u8(static_cast<uint8_t>(v));
    u8(static_cast<uint8_t>(v >> 8));
}

void ByteWriter::u32(uint32_t v) {
    for (int i = 0; i < 4; ++i)
        u8(static_cast<uint8_t>(v >> (8 * i)));
}

void ByteWriter::str(const std::string& v) {
    u32(static_cast<uint32_t>(v.size()));
    bytes(v.data(), v.size());
}

void ByteWriter::bytes(const void* data, size_t size) {
    const uint8_t* p = static_cast<const uint8_t*>(data);
    _out.insert(_out.end(), p, p + size);
}

char* ByteWriter::append(size_t size) {
    size_t at = _out.size();
    _out.resize(at + size);
    return reinterpret_cast<char*>(_out.data() + at);
}

void ByteWriter::patchU32(size_t offset, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        _out[offset + i] = static_cast<uint8_t>(v >> (8 * i));
}

bool ByteReader::take(size_t n) {
    if (_failed || _size - _pos < n) {
        _failed = true;
        return false;
    }
    return true;
}

bool ByteReader::u8(uint8_t& v) {
    if (!take(1))
        return false;
    v = _data[_pos++];
    return true;
}

bool ByteReader::boolean(bool& v) {
    uint8_t b = 0;
    if (!u8(b))
        return false;
    if (b > 1) {
        _failed = true;
        return false;
    }
    v = b == 1;
    return true;
}

bool ByteReader::u16(uint16_t& v) {
    if (!take(2))
        return false;
    v = static_cast<uint16_t>(_data[_pos] | (_data[_pos + 1] << 8));
    _pos += 2;
    return true;
}

bool ByteReader::u32(uint32_t& v) {
    if (!take(4))
        return false;
    v = 0;
    for (int i = 0; i < 4; ++i)
        v |= static_cast<uint32_t>(_data[_pos + i]) << (8 * i);
    _pos += 4;
    return true;
}

bool ByteReader::i32(int32_t& v) {
    uint32_t u = 0;
    if (!u32(u))
        return false;
    v = static_cast<int32_t>(u);
    return true;
}

bool ByteReader::str(std::string& v) {
    uint32_t n = 0;
    const uint8_t* p = nullptr;
    if (!u32(n) || !view(p, n))
        return false;
    v.assign(reinterpret_cast<const char*>(p), n);
    return true;
}

bool ByteReader::count(uint32_t& n, size_t minElementSize) {
    if (!u32(n))
        return false;
    if (minElementSize > 0 && n > remaining() / minElementSize) {
        _failed = true;
        return false;
    }
    return true;
}

bool ByteReader::bytes(void* data, size_t size) {
    const uint8_t* p = nullptr;
    if (!view(p, size))
        return false;
    std::memcpy(data, p, size);
    return true;
}

bool ByteReader::view(const uint8_t*& data, size_t size) {
    if (!take(size))
        return false;
    data = _data + _pos;
    _pos += size;
    return true;
}

void putU16(char* p, uint16_t v) {
    p[0] = static_cast<char>(v);
    p[1] = static_cast<char>(v >> 8);
}

void putU32(char* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<char>(v >> (8 * i));
}

uint16_t getU16(const char* p) {
    const unsigned char* u = reinterpret_cast<const unsigned char*>(p);
    return static_cast<uint16_t>(u[0] | (u[1] << 8));
}

uint32_t getU32(const char* p) {
    const unsigned char* u = reinterpret_cast<const unsigned char*>(p);
    return u[0] | (u[1] << 8) | (u[2] << 16) | (static_cast<uint32_t>(u[3]) << 24);
}

}  // namespace Messages
}  // namespace VESK

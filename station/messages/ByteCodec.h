// Little-endian writer and bounds-checked reader of the message byte form (docs/messages.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VESK {
namespace Messages {

class ByteWriter {
  public:
    explicit ByteWriter(std::vector<uint8_t>& out) : _out(out) {}
    void u8(uint8_t v) { _out.push_back(v); }
    void boolean(bool v) { u8(v ? 1 : 0); }
    void u16(uint16_t v);
    void u32(uint32_t v);
    void i32(int32_t v) { u32(static_cast<uint32_t>(v)); }
    // uint32 length, then the bytes.
    void str(const std::string& v);
    void bytes(const void* data, size_t size);
    // Appends `size` zero bytes and points at them, for a record written in place. The pointer
    // is valid until the next write.
    char* append(size_t size);
    size_t size() const { return _out.size(); }
    // Overwrites four bytes at `offset`, written earlier.
    void patchU32(size_t offset, uint32_t v);

  private:
    std::vector<uint8_t>& _out;
};

// Every read checks the bytes left first; after a failed read the reader stays failed and
// every later read fails too, so a decoder may check once at the end.
class ByteReader {
  public:
    ByteReader(const uint8_t* data, size_t size) : _data(data), _size(size) {}
    bool u8(uint8_t& v);
    // Only 0 and 1 are booleans.
    bool boolean(bool& v);
    bool u16(uint16_t& v);
    bool u32(uint32_t& v);
    bool i32(int32_t& v);
    bool str(std::string& v);
    // A uint32 count of elements of at least `minElementSize` bytes each; fails if the bytes
    // left cannot hold them, so that no huge reservation follows from a corrupt count.
    bool count(uint32_t& n, size_t minElementSize);
    bool bytes(void* data, size_t size);
    // Points at `size` bytes and skips them.
    bool view(const uint8_t*& data, size_t size);
    size_t remaining() const { return _failed ? 0 : _size - _pos; }
    bool ok() const { return !_failed; }
    bool atEnd() const { return !_failed && _pos == _size; }

  private:
    bool take(size_t n);
    const uint8_t* _data;
    size_t _size;
    size_t _pos = 0;
    bool _failed = false;
};

// Little-endian helpers for the fixed records.
void putU16(char* p, uint16_t v);
void putU32(char* p, uint32_t v);
uint16_t getU16(const char* p);
uint32_t getU32(const char* p);

}  // namespace Messages
}  // namespace VESK

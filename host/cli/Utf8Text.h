// Text that may hold bytes that are not UTF-8: the check the write commands make on string
// values, and the escaped form in which answers show such bytes.
#pragma once

#include <string>

namespace vesk {
namespace host {
namespace cli {

// True if `text` is well-formed UTF-8 (no overlong forms, surrogates or values above U+10FFFF).
bool isUtf8(const std::string& text);

// `text` with every byte that is not part of a well-formed UTF-8 sequence written as "\xHH"
// (two lower-case hex digits); with `controls`, also the control characters below 0x20 and 0x7f.
// Text that needs no escape comes back unchanged.
std::string escapeBytes(const std::string& text, bool controls = false);

}  // namespace cli
}  // namespace host
}  // namespace vesk

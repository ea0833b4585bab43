#include "host/cli/Utf8Text.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

// Length of the well-formed UTF-8 sequence at `at`, or 0 if the byte there begins none.
size_t sequenceLength(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char first = byte(at);
    if (first < 0x80) {
        return 1;
    }
    size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc2 ? 2 : 0;
    if (length == 0 || first > 0xf4 || at + length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    unsigned char second = byte(at + 1);
    bool overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    bool surrogate = first == 0xed && second >= 0xa0;
    bool tooHigh = first == 0xf4 && second >= 0x90;
    return overlong || surrogate || tooHigh ? 0 : length;
}

}  // namespace

bool isUtf8(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        size_t length = sequenceLength(text, at);
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string escapeBytes(const std::string& text, bool controls) {
    static const char kHex[] = "0123456789abcdef";
    std::string result;
    for (size_t at = 0; at < text.size();) {
        auto c = static_cast<unsigned char>(text[at]);
        size_t length = sequenceLength(text, at);
        if (length == 0 || (controls && (c < 0x20 || c == 0x7f))) {
            result += "\\x";
            result += kHex[c >> 4];
            result += kHex[c & 0xf];
            ++at;
        } else {
            result.append(text, at, length);
            at += length;
        }
    }
    return result;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

// Attribute names held once per process: every stored attribute of that name points at the same
// text, so that a store of many objects of few classes keeps each name once. Names are never
// freed; their number is that of the distinct names ever stored, which the model bounds.
#pragma once

#include <string>

namespace vesk {
namespace db {

class AttributeName {
  public:
    // "".
    AttributeName();
    // The name `text`, looked up (or added) in the process's names; any thread may call it.
    AttributeName(const std::string& text);  // NOLINT: a name is made where a string is given
    AttributeName(const char* text);         // NOLINT

    const std::string& str() const { return *_text; }
    operator const std::string&() const { return *_text; }  // NOLINT
    const char* c_str() const { return _text->c_str(); }
    bool empty() const { return _text->empty(); }

    // The same name is the same text: equal names compare by pointer.
    friend bool operator==(const AttributeName& a, const AttributeName& b) {
        return a._text == b._text;
    }
    friend bool operator!=(const AttributeName& a, const AttributeName& b) { return !(a == b); }
    friend bool operator==(const AttributeName& a, const std::string& b) { return *a._text == b; }
    friend bool operator!=(const AttributeName& a, const std::string& b) { return !(a == b); }
    friend bool operator==(const AttributeName& a, const char* b) { return *a._text == b; }
    friend bool operator!=(const AttributeName& a, const char* b) { return !(a == b); }
    friend bool operator<(const AttributeName& a, const AttributeName& b) {
        return *a._text < *b._text;
    }
    friend std::string operator+(const std::string& a, const AttributeName& b) {
        return a + *b._text;
    }

  private:
    const std::string* _text;
};

}  // namespace db
}  // namespace vesk

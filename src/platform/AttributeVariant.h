// The value of a database attribute. The order of the alternatives is part of the contract:
// values are checked against the alternative index.
#pragma once

#include <boost/variant.hpp>
#include <string>

typedef boost::variant<char,                // 0
                       short,               // 1
                       int,                 // 2
                       long long,           // 3
                       float,               // 4
                       double,              // 5
                       std::string,         // 6
                       unsigned char,       // 7
                       unsigned short,      // 8
                       unsigned int,        // 9
                       unsigned long long,  // 10
                       bool,                // 11
                       char const*>         // 12: only "" as a value that clears an attribute
    AttributeVariant;

enum AttributeVariantIndex {
    AV_CHAR = 0,
    AV_SHORT = 1,
    AV_INT = 2,
    AV_LONGLONG = 3,
    AV_FLOAT = 4,
    AV_DOUBLE = 5,
    AV_STRING = 6,
    AV_UCHAR = 7,
    AV_USHORT = 8,
    AV_UINT = 9,
    AV_ULONGLONG = 10,
    AV_BOOL = 11,
    AV_CSTRING = 12,
};

// One attribute of one database object. Constructor, destructor, ToStr and both SetValue forms
// are inline and are the agent's own code.
#pragma once

#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>

#include "platform/AttributeVariant.h"
#include "platform/IPCData.h"

class Attribute {
  public:
    AttributeVariant value;
    int32_t attributeId;
    bool valueSet;  // false marks a placeholder of type 0
    std::string name;
    bool modified;  // tells IDatabase::update which attributes to store
    bool deleted;   // deleted within the transaction; readers treat it as absent
    int32_t alternateSlot;
    IPCData::AttributeValueType type;
    bool hidden;  // exists in the database but is never shown to a reader

    Attribute(bool aHidden, std::string aName, AttributeVariant aValue, int aAttributeId,
              bool aValueSet, IPCData::AttributeValueType aType, bool aModified, bool aDeleted)
        : value(aValue),
          attributeId(aAttributeId),
          valueSet(aValueSet),
          name(aName),
          modified(aModified),
          deleted(aDeleted),
          alternateSlot(-1),
          type(aType),
          hidden(aHidden) {}

    virtual ~Attribute() {}

    // Assigns `v` and sets `modified`, unless the held value is the same alternative and equal.
    void SetValue(AttributeVariant v) {
        if (value.which() == v.which() && value == v)
            return;
        value = v;
        modified = true;
    }

    // Stores `text` in the alternative of `aType`. Types outside 1..32 are ignored; 13 and 15
    // store nothing. The field `type` is not changed.
    void SetValue(std::string text, IPCData::AttributeValueType aType) {
        if (aType < 1 || aType > 32)
            return;
        std::istringstream in(text);
        switch (aType) {
            case IPCData::AVT_INT8:
                SetValue(AttributeVariant(static_cast<char>(read<int>(in))));
                break;
            case IPCData::AVT_INT16:
                SetValue(AttributeVariant(read<short>(in)));
                break;
            case IPCData::AVT_INT32:
            case IPCData::AVT_ENUM:
                SetValue(AttributeVariant(read<int>(in)));
                break;
            case IPCData::AVT_INT64:
                SetValue(AttributeVariant(read<long long>(in)));
                break;
            case IPCData::AVT_UINT8:
                SetValue(AttributeVariant(static_cast<unsigned char>(read<unsigned>(in))));
                break;
            case IPCData::AVT_UINT16:
                SetValue(AttributeVariant(read<unsigned short>(in)));
                break;
            case IPCData::AVT_UINT32:
                SetValue(AttributeVariant(read<unsigned int>(in)));
                break;
            case IPCData::AVT_UINT64:
                SetValue(AttributeVariant(read<unsigned long long>(in)));
                break;
            case IPCData::AVT_DECIMAL64:
                SetValue(AttributeVariant(read<double>(in)));
                break;
            case IPCData::AVT_FLOAT:
                SetValue(AttributeVariant(read<float>(in)));
                break;
            case IPCData::AVT_BOOL:
                if (text == "true") {
                    SetValue(AttributeVariant(true));
                } else if (text == "false") {
                    SetValue(AttributeVariant(false));
                } else {
                    SetValue(AttributeVariant(read<bool>(in)));
                }
                break;
            case IPCData::AVT_RESERVED_13:
            case IPCData::AVT_RESERVED_15:
                break;
            default:
                SetValue(AttributeVariant(text));
                break;  // 9, 11, 14, 18..32
        }
    }

    // The value as text. Types 1 and 5 print as decimal numbers; bool prints 1 or 0.
    std::string ToStr() {
        std::ostringstream out;
        switch (value.which()) {
            case AV_CHAR:
                if (type == IPCData::AVT_INT8) {
                    out << static_cast<int>(boost::get<char>(value));
                } else {
                    out << boost::get<char>(value);
                }
                break;
            case AV_UCHAR:
                if (type == IPCData::AVT_UINT8) {
                    out << static_cast<unsigned>(boost::get<unsigned char>(value));
                } else {
                    out << boost::get<unsigned char>(value);
                }
                break;
            case AV_SHORT:
                out << boost::get<short>(value);
                break;
            case AV_INT:
                out << boost::get<int>(value);
                break;
            case AV_LONGLONG:
                out << boost::get<long long>(value);
                break;
            case AV_FLOAT:
                out << boost::get<float>(value);
                break;
            case AV_DOUBLE:
                out << boost::get<double>(value);
                break;
            case AV_STRING:
                out << boost::get<std::string>(value);
                break;
            case AV_USHORT:
                out << boost::get<unsigned short>(value);
                break;
            case AV_UINT:
                out << boost::get<unsigned int>(value);
                break;
            case AV_ULONGLONG:
                out << boost::get<unsigned long long>(value);
                break;
            case AV_BOOL:
                out << (boost::get<bool>(value) ? 1 : 0);
                break;
            case AV_CSTRING: {
                const char* s = boost::get<char const*>(value);
                if (s == nullptr) {
                    out.setstate(std::ios_base::failbit);
                } else {
                    out << s;
                }
                break;
            }
        }
        if (out.fail())
            std::cout << "Error: std::string ToStr\n";
        return out.str();
    }

  private:
    template <typename T>
    static T read(std::istream& in) {
        T v{};
        in >> v;
        return v;
    }
};

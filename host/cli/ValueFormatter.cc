#include "host/cli/ValueFormatter.h"

#include <vector>

#include "host/cli/Utf8Text.h"

namespace vesk {
namespace host {
namespace cli {

Json ValueFormatter::format(Id attribute, const OrlMoAttributeValueContainer_3* container) const {
    bool list = attribute != kNone && _model.isList(attribute);
    if (container == nullptr || container->nrOfValues == 0 || container->values == nullptr) {
        return list ? Json::array() : Json();
    }
    if (!list && container->nrOfValues == 1) {
        return formatSlot(attribute, container->type, container->values[0]);
    }
    Json values = Json::array();
    for (uint32_t i = 0; i < container->nrOfValues; ++i) {
        values.push_back(formatSlot(attribute, container->type, container->values[i]));
    }
    return values;
}

Json ValueFormatter::formatSlot(Id attribute, int32_t type,
                                const OrlMoAttributeValue_3& slot) const {
    switch (type) {
        case OrlOamSpiMoAttributeType_3_INT8:
            return slot.i8;
        case OrlOamSpiMoAttributeType_3_INT16:
            return slot.i16;
        case OrlOamSpiMoAttributeType_3_INT32:
            return slot.i32;
        case OrlOamSpiMoAttributeType_3_INT64:
            return slot.i64;
        case OrlOamSpiMoAttributeType_3_UINT8:
            return slot.u8;
        case OrlOamSpiMoAttributeType_3_UINT16:
            return slot.u16;
        case OrlOamSpiMoAttributeType_3_UINT32:
            return slot.u32;
        case OrlOamSpiMoAttributeType_3_UINT64:
            return slot.u64;
        case OrlOamSpiMoAttributeType_3_STRING:
            return slot.theString != nullptr ? slot.theString : "";
        case OrlOamSpiMoAttributeType_3_BOOL:
            return slot.theBool;
        case OrlOamSpiMoAttributeType_3_REFERENCE:
            return slot.moRef != nullptr ? slot.moRef : "";
        case OrlOamSpiMoAttributeType_3_DECIMAL64:
            return slot.decimal64;
        case OrlOamSpiMoAttributeType_3_STRUCT:
            return formatStruct(attribute, slot.structMember);
        case OrlOamSpiMoAttributeType_3_ENUM: {
            std::string name =
                attribute == kNone ? "" : _model.literalName(attribute, slot.theEnum);
            return name.empty() ? Json(slot.theEnum) : Json(name);
        }
        default:
            return "<type " + std::to_string(type) + ">";
    }
}

Json ValueFormatter::formatStruct(Id attribute,
                                  const OrlMoAttributeValueStructMember_3* first) const {
    std::vector<const OrlMoAttributeValueStructMember_3*> members;
    for (auto* member = first; member != nullptr; member = member->nextMember) {
        members.push_back(member);
    }
    Json result = Json::object();
    // The model's members in model order, then any the model does not know, as they came.
    if (attribute != kNone) {
        for (Id id : _model.structMembers(attribute)) {
            for (auto*& member : members) {
                if (member != nullptr && member->memberName != nullptr &&
                    _model.attributeName(id) == member->memberName) {
                    result[member->memberName] = format(id, member->memberValue);
                    member = nullptr;
                }
            }
        }
    }
    for (auto* member : members) {
        if (member != nullptr) {
            result[member->memberName != nullptr ? member->memberName : ""] =
                format(kNone, member->memberValue);
        }
    }
    return result;
}

namespace {

bool needsQuotes(const std::string& text) {
    return text.empty() || text.find_first_of(" \t\",;[]{}=\\") != std::string::npos ||
           escapeBytes(text, true) != text;
}

// Quotes and backslashes escaped first, so that "\xHH" for a byte that is not UTF-8 (or a
// control character) cannot be mistaken for text.
std::string quoted(const std::string& text) {
    std::string result;
    for (char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return "\"" + escapeBytes(result, true) + "\"";
}

}  // namespace

std::string renderText(const Json& value) {
    if (value.is_null()) {
        return "-";
    }
    if (value.is_string()) {
        const std::string& text = value.get_ref<const std::string&>();
        return needsQuotes(text) ? quoted(text) : text;
    }
    if (value.is_array() || value.is_object()) {
        std::string text = value.is_array() ? "[" : "{";
        bool first = true;
        for (auto it = value.begin(); it != value.end(); ++it) {
            text += first ? "" : ", ";
            text += value.is_object() ? it.key() + "=" : std::string();
            text += renderText(*it);
            first = false;
        }
        return text + (value.is_array() ? "]" : "}");
    }
    return value.dump();
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

// Builds version 3 values for the tests, with malloc as the host would.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

#include "platform/orl/OrlAttributeValue.h"

namespace vesk_test {

inline OrlMoAttributeValueContainer_3* newContainer(OrlOamSpiMoAttributeType_3 type,
                                                    uint32_t count) {
    auto* c = static_cast<OrlMoAttributeValueContainer_3*>(
        std::malloc(sizeof(OrlMoAttributeValueContainer_3)));
    c->type = type;
    c->nrOfValues = count;
    c->values = count == 0 ? nullptr
                           : static_cast<OrlMoAttributeValue_3*>(
                                 std::calloc(count, sizeof(OrlMoAttributeValue_3)));
    return c;
}

inline char* dupText(const std::string& text) {
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

// STRING or REFERENCE values.
inline OrlMoAttributeValueContainer_3* newTexts(OrlOamSpiMoAttributeType_3 type,
                                                std::initializer_list<const char*> texts) {
    auto* c = newContainer(type, static_cast<uint32_t>(texts.size()));
    uint32_t i = 0;
    for (const char* text : texts)
        c->values[i++].theString = dupText(text);
    return c;
}

inline OrlMoAttributeValueContainer_3* newInt64s(OrlOamSpiMoAttributeType_3 type,
                                                 std::initializer_list<int64_t> numbers) {
    auto* c = newContainer(type, static_cast<uint32_t>(numbers.size()));
    uint32_t i = 0;
    for (int64_t n : numbers)
        c->values[i++].i64 = n;
    return c;
}

inline OrlMoAttributeValueStructMember_3* newMember(const char* name,
                                                    OrlMoAttributeValueContainer_3* value,
                                                    OrlMoAttributeValueStructMember_3* next) {
    auto* m = static_cast<OrlMoAttributeValueStructMember_3*>(
        std::malloc(sizeof(OrlMoAttributeValueStructMember_3)));
    m->memberName = dupText(name);
    m->memberValue = value;
    m->nextMember = next;
    return m;
}

// One STRUCT value: {label: STRING "a", level: ENUM 70000, inner: {ref: REFERENCE "X=1"}}.
inline OrlMoAttributeValueContainer_3* newSampleStruct() {
    auto* inner = newContainer(OrlOamSpiMoAttributeType_3_STRUCT, 1);
    inner->values[0].structMember =
        newMember("ref", newTexts(OrlOamSpiMoAttributeType_3_REFERENCE, {"X=1"}), nullptr);
    auto* s = newContainer(OrlOamSpiMoAttributeType_3_STRUCT, 1);
    s->values[0].structMember =
        newMember("label", newTexts(OrlOamSpiMoAttributeType_3_STRING, {"a"}),
                  newMember("level", newInt64s(OrlOamSpiMoAttributeType_3_ENUM, {70000}),
                            newMember("inner", inner, nullptr)));
    return s;
}

}  // namespace vesk_test

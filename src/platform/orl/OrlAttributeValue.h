// Attribute value records of the host boundary, version 3 and the older version 1 form.
//
// Every record and every string of this family is allocated with malloc and freed with free,
// whichever side frees it. The receiver of a result owns it and frees it through `release`. A
// container passed into an operation belongs to the caller; the callee copies what it keeps.
#pragma once

#include "platform/orl/OrlTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

// Attribute types. Held as a plain signed 32-bit number: -2 marks a type that could not be
// found, and 13 and 15 have no meaning here.
typedef int32_t OrlOamSpiMoAttributeType_3;

enum {
    OrlOamSpiMoAttributeType_3_INT8 = 1,
    OrlOamSpiMoAttributeType_3_INT16 = 2,
    OrlOamSpiMoAttributeType_3_INT32 = 3,
    OrlOamSpiMoAttributeType_3_INT64 = 4,
    OrlOamSpiMoAttributeType_3_UINT8 = 5,
    OrlOamSpiMoAttributeType_3_UINT16 = 6,
    OrlOamSpiMoAttributeType_3_UINT32 = 7,
    OrlOamSpiMoAttributeType_3_UINT64 = 8,
    OrlOamSpiMoAttributeType_3_STRING = 9,
    OrlOamSpiMoAttributeType_3_BOOL = 10,
    OrlOamSpiMoAttributeType_3_REFERENCE = 11,
    OrlOamSpiMoAttributeType_3_ENUM = 12,
    OrlOamSpiMoAttributeType_3_STRUCT = 14,
    OrlOamSpiMoAttributeType_3_DECIMAL64 = 16
};

struct OrlMoAttributeValueStructMember_3;

// One value slot: always 8 bytes, the value at the low end (offset 0).
typedef union OrlMoAttributeValue_3 {
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    char* theString;  // STRING: owned by the value
    bool theBool;
    char* moRef;      // REFERENCE: dn of the MO pointed to, owned by the value
    int64_t theEnum;  // ENUM: the literal's number
    struct OrlMoAttributeValueStructMember_3* structMember;  // STRUCT: head of the member list
    double decimal64;
} OrlMoAttributeValue_3;

// One type for all values. `values` is null when `nrOfValues` is 0.
typedef struct OrlMoAttributeValueContainer_3 {
    OrlOamSpiMoAttributeType_3 type;
    uint32_t nrOfValues;
    OrlMoAttributeValue_3* values;
} OrlMoAttributeValueContainer_3;

// A node of a struct value's member list; every pointer is owned by the node.
typedef struct OrlMoAttributeValueStructMember_3 {
    char* memberName;
    OrlMoAttributeValueContainer_3* memberValue;
    struct OrlMoAttributeValueStructMember_3* nextMember;  // null at the end
} OrlMoAttributeValueStructMember_3;

// A named value. Lists of these are null-terminated arrays of pointers.
typedef struct OrlMoNamedAttributeValueContainer_3 {
    char* attributeName;
    OrlMoAttributeValueContainer_3 attributeValue;  // held by value
} OrlMoNamedAttributeValueContainer_3;

// Result of a single read or of an action. The host calls `release` when done with `container`.
typedef struct OrlMoAttributeValueResult_3 {
    void (*release)(OrlMoAttributeValueContainer_3* container);
    OrlMoAttributeValueContainer_3* container;
} OrlMoAttributeValueResult_3;

// Result of a read of several attributes: one container per requested name, in request order,
// then a null entry.
typedef struct OrlMoAttributeValuesResult_3 {
    void (*release)(OrlMoAttributeValueContainer_3** containers);
    OrlMoAttributeValueContainer_3** containers;
} OrlMoAttributeValuesResult_3;

// Version 1 forms: the same fields in the same order and the same 8-byte slots. A slot holds only
// as many bytes as its type's width in the old form (enumerations as 16 bits); the rest is zero.
typedef int32_t OrlOamSpiMoAttributeType;

struct OrlMoAttributeValueStructMember;

typedef union OrlMoAttributeValue {
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    char* theString;
    bool theBool;
    char* moRef;
    int16_t theEnum;
    struct OrlMoAttributeValueStructMember* structMember;
    uint64_t raw;
} OrlMoAttributeValue;

typedef struct OrlMoAttributeValueContainer {
    OrlOamSpiMoAttributeType type;
    uint32_t nrOfValues;
    OrlMoAttributeValue* values;
} OrlMoAttributeValueContainer;

typedef struct OrlMoAttributeValueStructMember {
    char* memberName;
    OrlMoAttributeValueContainer* memberValue;
    struct OrlMoAttributeValueStructMember* nextMember;
} OrlMoAttributeValueStructMember;

#ifdef __cplusplus
}  // extern "C"

static_assert(sizeof(OrlMoAttributeValue_3) == 8, "value slot is 8 bytes");
static_assert(sizeof(OrlMoAttributeValue) == 8, "version 1 slot is 8 bytes");
static_assert(offsetof(OrlMoAttributeValueContainer_3, type) == 0, "container layout");
static_assert(offsetof(OrlMoAttributeValueContainer_3, nrOfValues) == 4, "container layout");
static_assert(offsetof(OrlMoAttributeValueContainer_3, values) == 8, "container layout");
static_assert(sizeof(OrlMoAttributeValueContainer) == sizeof(OrlMoAttributeValueContainer_3),
              "version 1 container has the same layout");
static_assert(offsetof(OrlMoAttributeValueStructMember_3, nextMember) == 2 * sizeof(void*),
              "member layout");
static_assert(offsetof(OrlMoNamedAttributeValueContainer_3, attributeValue) == sizeof(void*),
              "named container holds the value inline");
#endif

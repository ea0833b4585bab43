// The host's model repository records. The model is reached through opaque 64-bit handles that
// stay valid while the host runs. Every operation answers 0 on success; -2 where "none" is a
// regular answer (no default, not a struct, not an enumeration, no further element, a leaf
// class); other non-zero answers are failures. Texts handed out belong to the host and stay
// valid while it runs.
#pragma once

#include "platform/orl/OrlTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint64_t OrlOamSpiMocHandleT;
typedef uint64_t OrlOamSpiContainmentHandleT;
typedef uint64_t OrlOamSpiTypeContainerHandleT;
typedef uint64_t OrlOamSpiAttributeHandleT;
typedef uint64_t OrlOamSpiGeneralPropertiesHandleT;
typedef uint64_t OrlOamSpiDomainExtensionHandleT;
typedef uint64_t OrlOamSpiStructHandleT;
typedef uint64_t OrlOamSpiStructMemberHandleT;
typedef uint64_t OrlOamSpiEnumHandleT;
typedef uint64_t OrlOamSpiEnumLiteralHandleT;
typedef uint64_t OrlOamSpiDerivedTypeHandleT;

// The attribute type numbers (1..12, 14, 16); 13 is a derived type, resolved through its base.
typedef int32_t OrlOamSpiMrType_3;
enum { OrlOamSpiMrType_3_DERIVED = 13 };

// Unbounded maximum cardinality or multiplicity.
enum { OrlOamSpiMrUnbounded = 0x7fffffff };

// The oldest repository. Provided by the host, never called by the agent.
typedef struct OrlOamSpiModelRepository_1 {
    OrlMgmtSpiInterface_1 header;
} OrlOamSpiModelRepository_1;

typedef struct OrlOamSpiModelRepository_2 {
    OrlMgmtSpiInterface_1 header;
    // Classes.
    OrlReturnT (*getMocGeneralProperties)(OrlOamSpiMocHandleT moc,
                                          OrlOamSpiGeneralPropertiesHandleT* out);  // 1
    OrlReturnT (*getMocFirstAttribute)(OrlOamSpiMocHandleT moc,
                                       OrlOamSpiAttributeHandleT* out);  // 2
    OrlReturnT (*getMocFirstChildContainment)(OrlOamSpiMocHandleT moc,
                                              OrlOamSpiContainmentHandleT* out);  // 3
    OrlReturnT (*isMocSystemCreated)(OrlOamSpiMocHandleT moc, bool* out);         // 4
    // Attributes.
    OrlReturnT (*getAttributeGeneralProperties)(OrlOamSpiAttributeHandleT attribute,
                                                OrlOamSpiGeneralPropertiesHandleT* out);  // 5
    OrlReturnT (*getAttributeTypeContainer)(OrlOamSpiAttributeHandleT attribute,
                                            OrlOamSpiTypeContainerHandleT* out);         // 6
    OrlReturnT (*isAttributeKey)(OrlOamSpiAttributeHandleT attribute, bool* out);        // 7
    OrlReturnT (*isAttributeMandatory)(OrlOamSpiAttributeHandleT attribute, bool* out);  // 8
    OrlReturnT (*getNextAttribute)(OrlOamSpiAttributeHandleT attribute,
                                   OrlOamSpiAttributeHandleT* out);  // 9
    // General properties.
    OrlReturnT (*getName)(OrlOamSpiGeneralPropertiesHandleT properties, const char** out);  // 10
    OrlReturnT (*getFirstDomainExtension)(OrlOamSpiGeneralPropertiesHandleT properties,
                                          OrlOamSpiDomainExtensionHandleT* out);  // 11
    // Domain extensions.
    OrlReturnT (*getDomainExtensionName)(OrlOamSpiDomainExtensionHandleT extension,
                                         const char** out);  // 12
    OrlReturnT (*getDomainExtensionValue)(OrlOamSpiDomainExtensionHandleT extension,
                                          const char** out);  // 13
    OrlReturnT (*getNextDomainExtension)(OrlOamSpiDomainExtensionHandleT extension,
                                         OrlOamSpiDomainExtensionHandleT* out);  // 14
    // Containments.
    OrlReturnT (*getContainmentChildMoc)(OrlOamSpiContainmentHandleT containment,
                                         OrlOamSpiMocHandleT* out);  // 15
    OrlReturnT (*getContainmentParentMoc)(OrlOamSpiContainmentHandleT containment,
                                          OrlOamSpiMocHandleT* out);  // 16
    OrlReturnT (*getContainmentMinCardinality)(OrlOamSpiContainmentHandleT containment,
                                               int32_t* out);  // 17
    OrlReturnT (*getContainmentMaxCardinality)(OrlOamSpiContainmentHandleT containment,
                                               int32_t* out);  // 18
    OrlReturnT (*getNextSiblingContainment)(OrlOamSpiContainmentHandleT containment,
                                            OrlOamSpiContainmentHandleT* out);  // 19
    // Type containers. The default is a null-terminated array of texts.
    OrlReturnT (*getDefaultValue)(OrlOamSpiTypeContainerHandleT type,
                                  const char* const** out);                              // 20
    OrlReturnT (*getMinMultiplicity)(OrlOamSpiTypeContainerHandleT type, int32_t* out);  // 21
    OrlReturnT (*getMaxMultiplicity)(OrlOamSpiTypeContainerHandleT type, int32_t* out);  // 22
    OrlReturnT (*getStruct)(OrlOamSpiTypeContainerHandleT type,
                            OrlOamSpiStructHandleT* out);                                  // 23
    OrlReturnT (*getEnum)(OrlOamSpiTypeContainerHandleT type, OrlOamSpiEnumHandleT* out);  // 24
    OrlReturnT (*getDerivedType)(OrlOamSpiTypeContainerHandleT type,
                                 OrlOamSpiDerivedTypeHandleT* out);  // 25
    OrlReturnT (*getDerivedTypeBase)(OrlOamSpiDerivedTypeHandleT derived,
                                     OrlOamSpiTypeContainerHandleT* out);  // 26
    // Structs and their members.
    OrlReturnT (*getStructFirstMember)(OrlOamSpiStructHandleT structType,
                                       OrlOamSpiStructMemberHandleT* out);  // 27
    OrlReturnT (*getStructMemberGeneralProperties)(OrlOamSpiStructMemberHandleT member,
                                                   OrlOamSpiGeneralPropertiesHandleT* out);  // 28
    OrlReturnT (*getStructMemberTypeContainer)(OrlOamSpiStructMemberHandleT member,
                                               OrlOamSpiTypeContainerHandleT* out);  // 29
    OrlReturnT (*getNextStructMember)(OrlOamSpiStructMemberHandleT member,
                                      OrlOamSpiStructMemberHandleT* out);  // 30
    // Enumerations and their literals.
    OrlReturnT (*getEnumFirstLiteral)(OrlOamSpiEnumHandleT enumeration,
                                      OrlOamSpiEnumLiteralHandleT* out);  // 31
    OrlReturnT (*getEnumLiteralGeneralProperties)(OrlOamSpiEnumLiteralHandleT literal,
                                                  OrlOamSpiGeneralPropertiesHandleT* out);  // 32
    OrlReturnT (*getEnumLiteralValue)(OrlOamSpiEnumLiteralHandleT literal, int16_t* out);   // 33
    OrlReturnT (*getNextEnumLiteral)(OrlOamSpiEnumLiteralHandleT literal,
                                     OrlOamSpiEnumLiteralHandleT* out);  // 34
} OrlOamSpiModelRepository_2;

typedef struct OrlOamSpiModelRepository_3 {
    OrlMgmtSpiInterface_1 header;
    // 1: the class of a dn; a short form such as "EUtranFrequency=1" is resolved by the class of
    // its last pair.
    OrlReturnT (*getMocByDn)(const char* dn, OrlOamSpiMocHandleT* out);
    // 2
    OrlReturnT (*getTypeContainerType)(OrlOamSpiTypeContainerHandleT type, OrlOamSpiMrType_3* out);
    // 3
    OrlReturnT (*getRequestedMoc)(const char* momName, const char* momVersion, const char* mocName,
                                  OrlOamSpiMocHandleT* out);
} OrlOamSpiModelRepository_3;

#ifdef __cplusplus
}  // extern "C"

static_assert(sizeof(OrlOamSpiModelRepository_2) == (3 + 34) * sizeof(void*), "34 slots");
static_assert(sizeof(OrlOamSpiModelRepository_3) == (3 + 3) * sizeof(void*), "three slots");
#endif

// Managed object records of the host boundary: the host's transaction service, and the
// transactional resource, managed object and object implementer registration interfaces that a
// component provides. Each record begins with the interface header; operations follow in slot
// order, slot 1 first.
#pragma once

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

// A host transaction, chosen by the host.
typedef unsigned long OrlTxHandleT;

// Taking part in a host transaction: the coordinator calls join before any other call of the
// transaction, then prepare and commit (or abort), and always finish.
typedef struct OrlOamSpiTransactionalResource_2 {
    OrlMgmtSpiInterface_1 header;
    OrlReturnT (*join)(OrlTxHandleT txHandle);      // 1
    OrlReturnT (*prepare)(OrlTxHandleT txHandle);   // 2
    OrlReturnT (*commit)(OrlTxHandleT txHandle);    // 3
    OrlReturnT (*abort)(OrlTxHandleT txHandle);     // 4
    OrlReturnT (*finish)(OrlTxHandleT txHandle);    // 5
    OrlReturnT (*validate)(OrlTxHandleT txHandle);  // 6
} OrlOamSpiTransactionalResource_2;

// The older transaction service. Provided by the host, never called by the agent.
typedef struct OrlOamSpiTransaction_1 {
    OrlMgmtSpiInterface_1 header;
    OrlReturnT (*registerParticipant)(OrlTxHandleT txHandle, void* resource);  // 1
} OrlOamSpiTransaction_1;

typedef struct OrlOamSpiTransaction_2 {
    OrlMgmtSpiInterface_1 header;
    // 1: `resource` takes part in the transaction until its finish.
    OrlReturnT (*registerParticipant)(OrlTxHandleT txHandle,
                                      OrlOamSpiTransactionalResource_2* resource);
} OrlOamSpiTransaction_2;

// Reads and changes of MOs. Names and dns are given by the caller and stay its own; results are
// owned by the caller and released through their `release`.
typedef struct OrlOamSpiManagedObject_3 {
    OrlMgmtSpiInterface_1 header;
    // 1
    OrlReturnT (*setMoAttribute)(OrlTxHandleT txHandle, const char* dn, const char* attributeName,
                                 const OrlMoAttributeValueContainer_3* value);
    // 2
    OrlReturnT (*getMoAttribute)(OrlTxHandleT txHandle, const char* dn, const char* attributeName,
                                 OrlMoAttributeValueResult_3* result);
    // 3: `attributeNames` is null-terminated.
    OrlReturnT (*getMoAttributes)(OrlTxHandleT txHandle, const char* dn,
                                  const char* const* attributeNames,
                                  OrlMoAttributeValuesResult_3* result);
    // 4: *itHandle 0 means nothing to walk.
    OrlReturnT (*newMoIterator)(OrlTxHandleT txHandle, const char* dn, const char* className,
                                uint64_t* itHandle);
    // 5: *result null at the end; the text stays the provider's.
    OrlReturnT (*nextMo)(uint64_t itHandle, char** result);
    // 6: `attributes` is null-terminated.
    OrlReturnT (*createMo)(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                           const char* keyAttributeName, const char* keyAttributeValue,
                           OrlMoNamedAttributeValueContainer_3** attributes);
    // 7
    OrlReturnT (*deleteMo)(OrlTxHandleT txHandle, const char* dn);
    // 8: `parameters` is null-terminated.
    OrlReturnT (*action)(OrlTxHandleT txHandle, const char* dn, const char* actionName,
                         OrlMoNamedAttributeValueContainer_3** parameters,
                         OrlMoAttributeValueResult_3* result);
    // 9
    OrlReturnT (*finalizeIterator)(uint64_t itHandle);
    // 10
    OrlReturnT (*existsMo)(OrlTxHandleT txHandle, const char* dn, bool* result);
    // 11
    OrlReturnT (*countMoChildren)(OrlTxHandleT txHandle, const char* dn, const char* className,
                                  uint64_t* result);
} OrlOamSpiManagedObject_3;

// Registration of object implementers: `moIf` and `txIf` name the implementer's managed object
// and transactional resource records; `name` is a dn or an MO path.
typedef OrlReturnT (*OrlOamSpiRegisterOperation_2)(OrlMgmtSpiInterface_1 moIf,
                                                   OrlMgmtSpiInterface_1 txIf, const char* name);

typedef struct OrlOamSpiRegisterObjectImplementer_2 {
    OrlMgmtSpiInterface_1 header;
    OrlOamSpiRegisterOperation_2 registerClass;    // 1
    OrlOamSpiRegisterOperation_2 registerDn;       // 2
    OrlOamSpiRegisterOperation_2 unRegisterClass;  // 3
    OrlOamSpiRegisterOperation_2 unRegisterDn;     // 4
} OrlOamSpiRegisterObjectImplementer_2;

#ifdef __cplusplus
}  // extern "C"

static_assert(offsetof(OrlOamSpiManagedObject_3, setMoAttribute) == 3 * sizeof(void*),
              "slot 1 follows the header");
static_assert(offsetof(OrlOamSpiManagedObject_3, countMoChildren) == 13 * sizeof(void*),
              "eleven slots");
static_assert(sizeof(OrlOamSpiTransactionalResource_2) == 9 * sizeof(void*), "six slots");
static_assert(sizeof(OrlOamSpiRegisterObjectImplementer_2) == 7 * sizeof(void*), "four slots");
#endif

// Management records of the host boundary: the portal through which a plug-in finds interfaces
// and registers components, the component record, sessions and the per-thread request context.
// Each record begins with the interface header; operations follow in slot order, slot 1 first.
// A slot a provider does not fill is null.
#pragma once

#include "platform/orl/OrlTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

struct OrlMgmtSpiInterfacePortal_1;

// A component as the host knows it: what it provides, what it needs, and how to start and stop
// it. The arrays are null-terminated arrays of pointers to records (or, in `dependencyArray`, to
// interface triples whose first text is the service name).
typedef struct OrlMgmtSpiComponent {
    const char* componentName;
    const char* interfaceName;     // "OrlMgmtSpiComponent"
    const char* interfaceVersion;  // "1"
    OrlMgmtSpiInterface_1** interfaceArray;
    OrlMgmtSpiInterface_1** dependencyArray;
    OrlReturnT (*start)(OrlStateChangeReason reason);
    OrlReturnT (*stop)(OrlStateChangeReason reason);
    OrlMgmtSpiInterface_1** optionalDependencyArray;  // null, or null-terminated like the others
} OrlMgmtSpiComponent;

// Handed to the plug-in's init. Its first word is the operation itself; there is no header.
typedef struct OrlMgmtSpiInterfacePortalAccessor {
    struct OrlMgmtSpiInterfacePortal_1* (*getPortal)(const char* version);
} OrlMgmtSpiInterfacePortalAccessor;

typedef struct OrlMgmtSpiInterfacePortal_1 {
    OrlMgmtSpiInterface_1 header;
    // 1: the record named by (service or component name, interface name, version) into *out.
    OrlReturnT (*getInterface)(const char* serviceName, const char* interfaceName,
                               const char* interfaceVersion, void** out);
    // 2: a null-terminated array of all provided records with this name and version into *out.
    // The array belongs to the portal.
    OrlReturnT (*getInterfaceArray)(const char* interfaceName, const char* interfaceVersion,
                                    void*** out);
    // 3: the component's provided records become reachable at once; may be called from inside
    // another component's start.
    OrlReturnT (*registerComponent)(OrlMgmtSpiComponent* component);
    // 4
    OrlReturnT (*unregisterComponent)(OrlMgmtSpiComponent* component);
} OrlMgmtSpiInterfacePortal_1;

typedef void (*OrlMgmtSpiSessionCallback_1)(uint64_t sessionHandle);

// Sessions of operators. Slots 1, 3, 4 and 7 are the host's own way of opening, binding and
// closing sessions; the agent calls only 2, 5, 6 and 8.
typedef struct OrlMgmtSpiSession_1 {
    OrlMgmtSpiInterface_1 header;
    // 1: opens a session; its handle into *out.
    OrlReturnT (*createSession)(uint64_t* out);
    // 2: the session bound to the calling thread into *out; non-zero when none is bound.
    OrlReturnT (*getBoundSession)(uint64_t* out);
    // 3: binds the session to the calling thread.
    OrlReturnT (*bindSession)(uint64_t sessionHandle);
    // 4: unbinds whatever session is bound to the calling thread.
    OrlReturnT (*unbindSession)(void);
    // 5: `created` and `destroyed` are called as sessions open and close, on the host's thread.
    OrlReturnT (*registerSessionCallbacks)(OrlMgmtSpiSessionCallback_1 created,
                                           OrlMgmtSpiSessionCallback_1 destroyed,
                                           uint64_t* registration);
    // 6
    OrlReturnT (*unregisterSessionCallbacks)(uint64_t registration);
    // 7: closes a session.
    OrlReturnT (*destroySession)(uint64_t sessionHandle);
    // 8: 0 when found. "TibSessionVariableProtocol_1": `out` is an int32_t*.
    // "TibSessionVariableUsername_1": `out` is a const char** that receives text owned by the
    // session, valid while the session is open.
    OrlReturnT (*getVariable)(uint64_t sessionHandle, const char* name, void* out);
} OrlMgmtSpiSession_1;

// Per-thread context of the request being served.
typedef struct OrlMgmtSpiThreadContext_2 {
    OrlMgmtSpiInterface_1 header;
    // 1: attaches a message for the operator to the calling thread's request; `kind` is 1.
    OrlReturnT (*addMessage)(int32_t kind, const char* text);
} OrlMgmtSpiThreadContext_2;

#ifdef __cplusplus
}  // extern "C"

static_assert(offsetof(OrlMgmtSpiComponent, interfaceArray) == 3 * sizeof(void*),
              "component layout");
static_assert(offsetof(OrlMgmtSpiComponent, optionalDependencyArray) == 7 * sizeof(void*),
              "component layout");
static_assert(offsetof(OrlMgmtSpiSession_1, getVariable) == 10 * sizeof(void*),
              "getVariable is slot 8");
static_assert(offsetof(OrlMgmtSpiInterfacePortal_1, unregisterComponent) == 6 * sizeof(void*),
              "unregisterComponent is slot 4");
#endif

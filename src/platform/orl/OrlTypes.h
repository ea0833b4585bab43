// Basic types of the host boundary: result codes, the interface header every host record begins
// with, and the state change reason given to component start and stop. Plain C; the host and the
// agent are built against the same layout.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Result of every operation across the boundary: signed 32-bit.
typedef int32_t OrlReturnT;

enum {
    OrlOk = 0,
    OrlTryAgain = 1,           // refused for now; the caller may ask again later
    OrlFailure = -1,           // general failure
    OrlNotExist = -2,          // transaction, iterator or MO not found
    OrlAlreadyJoined = -3,     // an implementer's answer to join that counts as success
    OrlValidationFailed = -9,  // the change was refused by validation
    OrlSendFailed = -10        // a request to another component could not be delivered
};

// The host's reason for a start or stop. The agent only logs it.
typedef int32_t OrlStateChangeReason;

// Header of every record that crosses the boundary, and the by-value triple that names an
// interface. The three texts are NUL-terminated and outlive the record.
typedef struct OrlMgmtSpiInterface_1 {
    const char* componentName;  // providing component, or a host service name
    const char* interfaceName;
    const char* interfaceVersion;  // "1", "2" or "3"
} OrlMgmtSpiInterface_1;

#ifdef __cplusplus
}  // extern "C"

static_assert(sizeof(OrlReturnT) == 4, "OrlReturnT is 32-bit");
static_assert(sizeof(OrlMgmtSpiInterface_1) == 3 * sizeof(void*), "three text pointers");
#endif

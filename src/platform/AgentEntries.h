// Entries that the agent exports for the station's framework. The station layer does not link
// against the agent: it finds these symbols at run time by name (dlsym), in the handles that the
// embedding program registers and then in the global scope. So they are C symbols with default
// visibility, and the agent defines each of them exactly once.
#pragma once

#define VESK_AGENT_EXPORT __attribute__((visibility("default")))

extern "C" {
// The baseband OAM's answer to a ConfMsg_setAttributeReq: 1 none yet, 0 accepted, -1 refused.
// Written by the framework from another thread with a release store; read it with
// vesk::boamStatusLoad.
extern VESK_AGENT_EXPORT int boamSetAttributeReponseStatus;

// The configuration manager's answer to VESK_ValidateFrequencyReq, non-zero if valid. Called on
// a framework thread; the agent forwards it to VeskCMChangeFrequency::responseReceived.
VESK_AGENT_EXPORT void vesk_cm_frequencyValidationResponse(int valid);
}

namespace vesk {
// Acquire and release access to the answer mailbox above.
inline int boamStatusLoad(const int* status) {
    return __atomic_load_n(status, __ATOMIC_ACQUIRE);
}
inline void boamStatusStore(int* status, int value) {
    __atomic_store_n(status, value, __ATOMIC_RELEASE);
}
}  // namespace vesk

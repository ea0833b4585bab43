// The host's event router ("OrlOamSpiEventRouter" version "1" of "OrlOamSpiEventService"), the
// producer record a plug-in registers with it, and the change notification records it carries.
#pragma once

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

// One filter term. Only `value` is read: a pattern the whole dn must match.
typedef struct OrlNameValuePair {
    const char* name;
    const char* value;
} OrlNameValuePair;

// What the router calls on a producer. The filter array stays the consumer's, alive until the
// matching removeFilter with the same pointer.
typedef struct OrlOamSpiEventProducer_1 {
    OrlMgmtSpiInterface_1 header;
    OrlReturnT (*addFilter)(unsigned long consumerHandle, const char* eventType,
                            OrlNameValuePair** filter);  // 1
    OrlReturnT (*removeFilter)(unsigned long consumerHandle, const char* eventType,
                               OrlNameValuePair** filter);  // 2
    OrlReturnT (*clearAll)(void);                           // 3
    // 4: the consumer is done with one delivery of `notification`.
    OrlReturnT (*doneWithValue)(const char* eventType, void* notification);
} OrlOamSpiEventProducer_1;

// A consumer's delivery: the notification stays the producer's until doneWithValue.
typedef void (*OrlOamSpiEventDeliver_1)(unsigned long consumerHandle, const char* eventType,
                                        void* notification);

typedef struct OrlOamSpiEventRouter_1 {
    OrlMgmtSpiInterface_1 header;
    // 1: delivers one notification to one consumer; 0 when delivered.
    OrlReturnT (*notify)(uint32_t producerHandle, unsigned long consumerHandle,
                         const char* eventType, OrlNameValuePair** filter, void* notification);
    // 2 to 5: the consumer side.
    OrlReturnT (*registerConsumer)(OrlOamSpiEventDeliver_1 deliver,
                                   unsigned long* consumerHandle);   // 2
    OrlReturnT (*unregisterConsumer)(unsigned long consumerHandle);  // 3
    OrlReturnT (*subscribe)(unsigned long consumerHandle, const char* eventType,
                            OrlNameValuePair** filter);  // 4
    OrlReturnT (*unsubscribe)(unsigned long consumerHandle, const char* eventType,
                              OrlNameValuePair** filter);  // 5
    // 6: *producerHandle is never 0.
    OrlReturnT (*registerProducer)(OrlOamSpiEventProducer_1* producer, uint32_t* producerHandle);
    OrlReturnT (*addProducerEvent)(uint32_t producerHandle, const char* eventType);     // 7
    OrlReturnT (*removeProducerEvent)(uint32_t producerHandle, const char* eventType);  // 8
    OrlReturnT (*unregisterProducer)(uint32_t producerHandle,
                                     OrlOamSpiEventProducer_1* producer);  // 9
} OrlOamSpiEventRouter_1;

// Event types of a change.
enum { OrlOamSpiCmEvent_Created = 1, OrlOamSpiCmEvent_Deleted = 2, OrlOamSpiCmEvent_Changed = 3 };

// One changed MO. `attributes` is null-terminated, null for a deletion.
typedef struct OrlOamSpiCmEvent_1T {
    char* dn;
    int32_t eventType;
    OrlMoNamedAttributeValueContainer_3** attributes;
} OrlOamSpiCmEvent_1T;

// What "OrlOamSpiCmEvent_Notification_1" delivers. `events` is null-terminated.
typedef struct OrlOamSpiCmEvent_Notification_1T {
    uint32_t txHandle;
    uint64_t eventTime;  // nanoseconds since the epoch
    int32_t sourceIndicator;
    OrlOamSpiCmEvent_1T** events;
} OrlOamSpiCmEvent_Notification_1T;

#ifdef __cplusplus
}  // extern "C"

static_assert(offsetof(OrlOamSpiEventRouter_1, registerProducer) == 8 * sizeof(void*),
              "registerProducer is slot 6");
static_assert(sizeof(OrlOamSpiEventProducer_1) == 7 * sizeof(void*), "four slots");
#endif

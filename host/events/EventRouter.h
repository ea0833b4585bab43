// The host's event router ("OrlOamSpiEventRouter" version "1" of "OrlOamSpiEventService").
//
// Producers register their record and announce the event types they make; each gets a handle
// that is never 0. Consumers (the host's own, or through slots 2 to 5 of the record) subscribe
// to an event type with a filter: the router keeps its own copy of the filter array, hands that
// copy to every producer of the type (addFilter) and keeps it alive until the consumer
// unsubscribes (removeFilter with the same pointer). A producer's notify only queues the
// notification for its consumer and returns; the consumer's own thread delivers it and then
// calls the producer's doneWithValue, exactly once per notify that answered 0.
//
// The router never holds its lock while it calls into a producer. A producer may call notify
// while holding a lock of its own that its addFilter, removeFilter and doneWithValue also take.
// Subscribing and unsubscribing must not run while the producer's library is being unloaded;
// the host calls detachProducers first. One router per process: the record reaches it through
// a process-wide pointer.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "host/events/ConsumerQueue.h"
#include "platform/orl/OrlEventRouter.h"

namespace vesk {
namespace host {
namespace events {

// The event type of configuration changes.
constexpr char kCmEventType[] = "OrlOamSpiCmEvent_Notification_1";

struct ConsumerInfo {
    unsigned long handle;
    std::string name;
    std::vector<std::vector<std::string>> filters;  // one list of patterns per subscription
    size_t queued;
    uint64_t delivered;
    OrlReturnT refusal;  // what notify answers for it; OrlOk when it takes notifications
};

class EventRouter {
  public:
    EventRouter();
    // Removes every consumer, giving back what they hold.
    ~EventRouter();
    EventRouter(const EventRouter&) = delete;
    EventRouter& operator=(const EventRouter&) = delete;

    OrlOamSpiEventRouter_1* record() { return &_record; }

    // Makes registerProducer answer `code` (and register nothing); OrlOk accepts again.
    void refuseRegistration(OrlReturnT code);
    // Makes notify to `consumer` answer `code` without queuing; OrlOk takes again.
    OrlReturnT refuseDeliveries(unsigned long consumer, OrlReturnT code);

    // A consumer of the host's own; its handle (never 0).
    unsigned long addConsumer(const std::string& name, Deliver deliver);
    // Subscribes `consumer` to `eventType`: a notification goes to it when its dn matches one of
    // `patterns` as a whole (no pattern: every notification). OrlNotExist for an unknown
    // consumer.
    OrlReturnT subscribe(unsigned long consumer, const std::string& eventType,
                         const std::vector<std::string>& patterns);
    // Unsubscribes the consumer from everything, stops it and gives back what it still holds.
    // OrlNotExist for an unknown consumer.
    OrlReturnT removeConsumer(unsigned long consumer);

    std::vector<ConsumerInfo> consumers() const;
    size_t producerCount() const;
    // Waits up to `ms` milliseconds until no consumer holds or delivers a notification.
    bool waitIdle(unsigned ms) const;
    // Gives back every notification still queued, waits for deliveries in progress and forgets
    // the producers: after it no producer function is called. Before the producers' library is
    // unloaded.
    void detachProducers();

    // The record's slots.
    OrlReturnT notify(uint32_t producerHandle, unsigned long consumer, const char* eventType,
                      OrlNameValuePair** filter, void* notification);
    OrlReturnT registerProducer(OrlOamSpiEventProducer_1* producer, uint32_t* handle);
    OrlReturnT addProducerEvent(uint32_t producerHandle, const char* eventType);
    OrlReturnT removeProducerEvent(uint32_t producerHandle, const char* eventType);
    OrlReturnT unregisterProducer(uint32_t producerHandle, OrlOamSpiEventProducer_1* producer);
    OrlReturnT registerConsumer(OrlOamSpiEventDeliver_1 deliver, unsigned long* handle);
    OrlReturnT subscribeArray(unsigned long consumer, const char* eventType,
                              OrlNameValuePair** filter);
    OrlReturnT unsubscribeArray(unsigned long consumer, const char* eventType,
                                OrlNameValuePair** filter);

  private:
    struct Producer {
        OrlOamSpiEventProducer_1* record;
        std::set<std::string, std::less<>> eventTypes;
    };
    // One subscription: the router's own filter array, alive until the unsubscription.
    struct Subscription {
        unsigned long consumer;
        std::string eventType;
        std::vector<std::string> patterns;
        std::vector<OrlNameValuePair> pairs;
        std::vector<OrlNameValuePair*> array;  // null-terminated, points into `pairs`
        OrlNameValuePair** callerFilter;       // the array a consumer of the record gave
    };
    struct Consumer {
        std::shared_ptr<ConsumerQueue> queue;
        OrlReturnT refusal = OrlOk;
    };

    std::unique_ptr<Subscription> makeSubscription(unsigned long consumer,
                                                   const std::string& eventType,
                                                   const std::vector<std::string>& patterns);
    // The records of the producers of `eventType`. Under _mutex.
    std::vector<OrlOamSpiEventProducer_1*> producersOf(const std::string& eventType) const;
    // Hands the subscription's filter to the producers of its type (outside _mutex).
    void addFilters(const Subscription& subscription,
                    const std::vector<OrlOamSpiEventProducer_1*>& producers);
    void removeFilters(const Subscription& subscription,
                       const std::vector<OrlOamSpiEventProducer_1*>& producers);

    OrlOamSpiEventRouter_1 _record;
    mutable std::mutex _mutex;
    std::map<uint32_t, Producer> _producers;
    std::map<unsigned long, Consumer> _consumers;
    std::vector<std::unique_ptr<Subscription>> _subscriptions;
    // Every event type ever announced, never removed: queued notifications point at these.
    std::set<std::string, std::less<>> _eventTypeNames;
    uint32_t _nextProducer = 1;
    unsigned long _nextConsumer = 1;
    OrlReturnT _registrationRefusal = OrlOk;
};

}  // namespace events
}  // namespace host
}  // namespace vesk

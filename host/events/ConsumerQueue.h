// One consumer of the host's event router: the notifications routed to it, in order, and the
// thread that hands each to the consumer and then gives it back to its producer. The producer's
// thread only ever queues (push never waits for the consumer), so a slow consumer holds up
// nobody but itself. An idle consumer is woken by the first notification; one that has just
// delivered looks again 2 ms later and takes what came meanwhile, so a stream of notifications
// costs one wake-up per round rather than one per notification.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/orl/OrlEventRouter.h"

namespace vesk {
namespace host {
namespace events {

// What a consumer sees of one notification: its own handle, the event type and the producer's
// record, which stays the producer's and is valid only during the call.
using Deliver =
    std::function<void(unsigned long consumer, const char* eventType, const void* notification)>;

// One notification taken for a consumer, with what is needed to give it back.
struct Held {
    OrlOamSpiEventProducer_1* producer;
    uint32_t producerHandle;
    const char* eventType;  // the router's own copy, which lives as long as the router
    void* notification;
};

// Gives `held` back to its producer: doneWithValue, once.
void release(const Held& held);

class ConsumerQueue {
  public:
    // Starts the delivery thread. `deliver` runs on it, one notification at a time.
    ConsumerQueue(unsigned long handle, std::string name, Deliver deliver);
    // stop(), with what was still queued given back.
    ~ConsumerQueue();
    ConsumerQueue(const ConsumerQueue&) = delete;
    ConsumerQueue& operator=(const ConsumerQueue&) = delete;

    // Queues one notification; false once stopped.
    bool push(Held held);
    // Lets the delivery in progress finish, ends the thread and gives back what is still queued,
    // undelivered. Not from the delivery thread. Idempotent.
    void stop();
    // Takes every queued notification out, undelivered, and waits until no delivery is in
    // progress. The caller gives them back.
    std::vector<Held> drain();
    // Takes the queued notifications of one producer out, undelivered, without waiting.
    std::vector<Held> take(uint32_t producerHandle);
    // True when nothing is queued and nothing is being delivered.
    bool idle() const;

    unsigned long handle() const { return _handle; }
    const std::string& name() const { return _name; }
    size_t queued() const;
    uint64_t delivered() const;

  private:
    void run();
    // Hands the first queued notification to the consumer and gives it back. Holds `lock` on
    // entry and on return, not in between.
    void deliverFront(std::unique_lock<std::mutex>& lock);

    const unsigned long _handle;
    const std::string _name;
    Deliver _deliver;
    mutable std::mutex _mutex;
    std::condition_variable _wake;  // an item is queued, or the thread must stop
    std::condition_variable _idle;  // a delivery has ended
    std::deque<Held> _queue;
    bool _busy = false;
    bool _asleep = false;  // waiting for a push to wake it
    bool _stopping = false;
    uint64_t _delivered = 0;
    std::thread _thread;
};

}  // namespace events
}  // namespace host
}  // namespace vesk

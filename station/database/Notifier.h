// The notifier: keeps the subscriptions to change events and delivers the changes that commits
// publish, in commit order, on a thread of its own.
//
// Delivery calls the subscriber's enqueueEvent(event, false) on the notifier thread; the
// subscriber copies the event. Unsubscribing returns only when no delivery to that subscriber is
// in progress, except when called on the notifier thread itself (from inside enqueueEvent), where
// it returns at once and the subscriber receives nothing after its enqueueEvent returns. A
// subscriber must not unsubscribe while holding a lock that its own enqueueEvent takes.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "station/database/ChangeFeed.h"
#include "station/database/Subscription.h"

namespace vesk {
namespace db {

// Delivers what is queued, stops the notifier thread and ends every subscription. Called by
// close(); the thread starts again with the next subscription. Not to be called from inside a
// subscriber's enqueueEvent.
void notifierStop();

// Returns once every change published before the call has been delivered.
void notifierFlush();

class Notifier {
  public:
    static Notifier& instance();
    ~Notifier();

    // A new ticket (1 and up), starting the thread if needed.
    int32_t subscribe(const std::string& className, const std::string& attributeName,
                      VESK::Framework::IEventAware* subscriber);
    // False if `ticket` is not a subscription of `subscriber`.
    bool unsubscribe(int32_t ticket, VESK::Framework::IEventAware* subscriber);
    // Ends every subscription with this class and attribute; the number ended.
    int unsubscribeMatching(const std::string& className, const std::string& attributeName);
    void unsubscribeAll();

    // Queues one commit's changes; dropped at once when nobody subscribes.
    void publish(std::vector<ObjectChange>&& changes);
    void flush();
    void stop();

  private:
    Notifier() = default;
    void run();
    void deliverBatch(const std::vector<ObjectChange>& changes);
    void deliverOne(const Subscription& subscription, const ObjectChange& change);
    // Waits until no delivery to a subscriber in `removed` is in progress. Holds `lock`.
    void waitForDelivery(std::unique_lock<std::mutex>& lock,
                         const std::vector<VESK::Framework::IEventAware*>& removed);

    std::mutex _mutex;
    std::condition_variable _wake;                   // a batch is queued, or the thread must stop
    std::condition_variable _idle;                   // a delivery or a batch has ended
    std::map<int32_t, Subscription> _subscriptions;  // by ticket, so in order of subscription
    std::deque<std::vector<ObjectChange>> _queue;
    int32_t _nextTicket = 1;
    std::thread _thread;
    std::thread::id _threadId;
    bool _stopping = false;
    bool _busy = false;  // a batch is being delivered
    VESK::Framework::IEventAware* _inFlight = nullptr;
};

}  // namespace db
}  // namespace vesk

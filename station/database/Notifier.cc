#include "station/database/Notifier.h"

#include <algorithm>
#include <cstdint>

#include "platform/Logger.h"

namespace vesk {
namespace db {

void publishChanges(std::vector<ObjectChange>&& changes) {
    Notifier::instance().publish(std::move(changes));
}

void notifierStop() {
    Notifier::instance().stop();
}

void notifierFlush() {
    Notifier::instance().flush();
}

Notifier& Notifier::instance() {
    static Notifier notifier;
    return notifier;
}

Notifier::~Notifier() {
    stop();
}

int32_t Notifier::subscribe(const std::string& className, const std::string& attributeName,
                            VESK::Framework::IEventAware* subscriber) {
    std::lock_guard<std::mutex> lock(_mutex);
    int32_t ticket = _nextTicket;
    _nextTicket = ticket == INT32_MAX ? 1 : ticket + 1;
    _subscriptions[ticket] = Subscription{ticket, className, attributeName, subscriber};
    if (!_thread.joinable()) {
        _stopping = false;
        _thread = std::thread(&Notifier::run, this);
        _threadId = _thread.get_id();
    }
    return ticket;
}

bool Notifier::unsubscribe(int32_t ticket, VESK::Framework::IEventAware* subscriber) {
    std::unique_lock<std::mutex> lock(_mutex);
    auto it = _subscriptions.find(ticket);
    if (it == _subscriptions.end() || it->second.subscriber != subscriber)
        return false;
    _subscriptions.erase(it);
    waitForDelivery(lock, {subscriber});
    return true;
}

int Notifier::unsubscribeMatching(const std::string& className, const std::string& attributeName) {
    std::unique_lock<std::mutex> lock(_mutex);
    std::vector<VESK::Framework::IEventAware*> removed;
    for (auto it = _subscriptions.begin(); it != _subscriptions.end();) {
        if (it->second.className == className && it->second.attributeName == attributeName) {
            removed.push_back(it->second.subscriber);
            it = _subscriptions.erase(it);
        } else {
            ++it;
        }
    }
    waitForDelivery(lock, removed);
    return static_cast<int>(removed.size());
}

void Notifier::unsubscribeAll() {
    std::unique_lock<std::mutex> lock(_mutex);
    std::vector<VESK::Framework::IEventAware*> removed;
    for (const auto& entry : _subscriptions)
        removed.push_back(entry.second.subscriber);
    _subscriptions.clear();
    waitForDelivery(lock, removed);
}

void Notifier::waitForDelivery(std::unique_lock<std::mutex>& lock,
                               const std::vector<VESK::Framework::IEventAware*>& removed) {
    if (std::this_thread::get_id() == _threadId)
        return;  // called from inside enqueueEvent
    _idle.wait(lock, [&] {
        return _inFlight == nullptr ||
               std::find(removed.begin(), removed.end(), _inFlight) == removed.end();
    });
}

void Notifier::publish(std::vector<ObjectChange>&& changes) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_subscriptions.empty() || !_thread.joinable() || changes.empty())
        return;
    _queue.push_back(std::move(changes));
    _wake.notify_one();
}

void Notifier::flush() {
    std::unique_lock<std::mutex> lock(_mutex);
    if (std::this_thread::get_id() == _threadId)
        return;
    _idle.wait(lock, [&] { return _queue.empty() && !_busy; });
}

void Notifier::stop() {
    std::unique_lock<std::mutex> lock(_mutex);
    if (_thread.joinable()) {
        if (std::this_thread::get_id() == _threadId) {
            VESK_ERROR("Notifier::%s: called from the notifier thread, not stopped", __func__);
            return;
        }
        _stopping = true;
        _wake.notify_one();
        lock.unlock();
        _thread.join();
        lock.lock();
        _thread = std::thread();
        _threadId = std::thread::id();
        _stopping = false;
    }
    _subscriptions.clear();
    _queue.clear();
}

void Notifier::run() {
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;) {
        _wake.wait(lock, [&] { return _stopping || !_queue.empty(); });
        if (_queue.empty())
            break;  // stopping, and everything is delivered
        std::vector<ObjectChange> batch = std::move(_queue.front());
        _queue.pop_front();
        _busy = true;
        lock.unlock();
        deliverBatch(batch);
        lock.lock();
        _busy = false;
        _idle.notify_all();
    }
}

void Notifier::deliverBatch(const std::vector<ObjectChange>& changes) {
    for (const ObjectChange& change : changes) {
        std::vector<Subscription> subscriptions;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            subscriptions.reserve(_subscriptions.size());
            for (const auto& entry : _subscriptions)
                subscriptions.push_back(entry.second);
        }
        for (const Subscription& subscription : subscriptions)
            deliverOne(subscription, change);
    }
}

void Notifier::deliverOne(const Subscription& subscription, const ObjectChange& change) {
    IDatabase::EventClass_ev4Notification event;
    if (!buildEvent(subscription, change, event))
        return;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        // Ended since the snapshot: the subscriber must not see it.
        if (_subscriptions.count(subscription.ticket) == 0)
            return;
        _inFlight = subscription.subscriber;
    }
    if (!subscription.subscriber->enqueueEvent(event, false)) {
        VESK_WARNING("Notifier::%s: subscriber of ticket %d refused an event of %s", __func__,
                     subscription.ticket, change.dn.c_str());
    }
    std::lock_guard<std::mutex> lock(_mutex);
    _inFlight = nullptr;
    _idle.notify_all();
}

}  // namespace db
}  // namespace vesk

// The subscription operations of IDatabase.

int32_t IDatabase::registerToNotif(int eventClass, std::string className, int /*instance*/,
                                   void* subscriber, std::string attributeName, int, int, int) {
    if (eventClass != EV4_NOTIFICATION) {
        VESK_ERROR("IDatabase::%s: unsupported event class %d", __func__, eventClass);
        return -1;
    }
    if (subscriber == nullptr) {
        VESK_ERROR("IDatabase::%s: null subscriber", __func__);
        return -1;
    }
    auto* aware = static_cast<VESK::Framework::IEventAware*>(subscriber);
    return vesk::db::Notifier::instance().subscribe(className, attributeName, aware);
}

int IDatabase::unRegisterToNotif(int32_t ticket, int eventClass, void* subscriber) {
    if (eventClass != EV4_NOTIFICATION) {
        VESK_ERROR("IDatabase::%s: unsupported event class %d", __func__, eventClass);
        return 0;
    }
    auto* aware = static_cast<VESK::Framework::IEventAware*>(subscriber);
    if (subscriber == nullptr || !vesk::db::Notifier::instance().unsubscribe(ticket, aware)) {
        VESK_ERROR("IDatabase::%s: no subscription with ticket %d for this subscriber", __func__,
                   ticket);
        return 0;
    }
    return 1;
}

int IDatabase::unRegisterToNotif(std::string className, int /*instance*/, std::string attributeName,
                                 int, int, int) {
    if (vesk::db::Notifier::instance().unsubscribeMatching(className, attributeName) == 0) {
        VESK_ERROR("IDatabase::%s: no subscription to class '%s' attribute '%s'", __func__,
                   className.c_str(), attributeName.c_str());
        return 0;
    }
    return 1;
}

int IDatabase::unRegisterToAllNotifs() {
    vesk::db::Notifier::instance().unsubscribeAll();
    return 1;
}

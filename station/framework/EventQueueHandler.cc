#include "station/framework/EventQueueHandler.h"

#include <atomic>
#include <chrono>

#include "platform/Logger.h"
#include "station/framework/FrameworkControl.h"

namespace {

// Events posted to any queue and not yet processed or dropped.
std::atomic<long> g_queuedEvents{0};

}  // namespace

bool vesk::station::waitForIdleQueues(unsigned ms) {
    auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (g_queuedEvents.load() > 0) {
        if (std::chrono::steady_clock::now() >= limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

namespace VESK {
namespace Framework {

EventQueueHandler::~EventQueueHandler() {
    stop();
}

void EventQueueHandler::start() {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_stopped || _thread.joinable())
        return;
    _thread = std::thread([this] { run(); });
}

bool EventQueueHandler::post(ReactiveStateMachine* target, Event* event) {
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopped)
            return false;
        _queue.emplace_back(target, event);
        ++g_queuedEvents;
    }
    _wake.notify_one();
    start();
    return true;
}

void EventQueueHandler::forget(ReactiveStateMachine* target) {
    std::deque<Item> dropped;
    {
        std::unique_lock<std::mutex> lock(_mutex);
        for (auto it = _queue.begin(); it != _queue.end();) {
            if (it->first == target) {
                dropped.push_back(*it);
                it = _queue.erase(it);
            } else {
                ++it;
            }
        }
        _idle.wait(lock, [&] { return _busyWith != target; });
    }
    dropAll(dropped);
}

void EventQueueHandler::stop() {
    std::thread thread;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopped = true;
        thread = std::move(_thread);
    }
    _wake.notify_all();
    if (thread.joinable())
        thread.join();
    std::deque<Item> rest;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        rest.swap(_queue);
    }
    dropAll(rest);
}

void EventQueueHandler::stopFromQueueThread() {
    std::lock_guard<std::mutex> lock(_mutex);
    _stopped = true;
}

void EventQueueHandler::dropAll(std::deque<Item>& items) {
    for (Item& item : items) {
        VESK_ERROR("EventQueueHandler: event %d dropped, its machine is stopped",
                   item.second->eventId);
        item.second->cleanup();
        delete item.second;
        --g_queuedEvents;
    }
    items.clear();
}

void EventQueueHandler::run() {
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;) {
        _wake.wait(lock, [this] { return _stopped || !_queue.empty(); });
        if (_stopped)
            break;
        Item item = _queue.front();
        _queue.pop_front();
        _busyWith = item.first;
        lock.unlock();
        item.first->dispatchFromQueue(item.second);
        --g_queuedEvents;
        lock.lock();
        _busyWith = nullptr;
        _idle.notify_all();
    }
    std::deque<Item> rest;
    rest.swap(_queue);
    lock.unlock();
    dropAll(rest);
}

}  // namespace Framework
}  // namespace VESK

#include "host/events/ConsumerQueue.h"

#include <chrono>
#include <exception>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace events {
namespace {

// How long a consumer that has just delivered waits before it looks at its queue again.
const std::chrono::milliseconds kLinger(2);

}  // namespace

void release(const Held& held) {
    if (held.producer != nullptr && held.producer->doneWithValue != nullptr) {
        held.producer->doneWithValue(held.eventType, held.notification);
    }
}

ConsumerQueue::ConsumerQueue(unsigned long handle, std::string name, Deliver deliver)
    : _handle(handle), _name(std::move(name)), _deliver(std::move(deliver)) {
    _thread = std::thread([this] { run(); });
}

ConsumerQueue::~ConsumerQueue() {
    stop();
}

bool ConsumerQueue::push(Held held) {
    bool wake = false;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping) {
            return false;
        }
        _queue.push_back(std::move(held));
        wake = _asleep;
    }
    // A consumer that has just delivered comes back for more by itself.
    if (wake) {
        _wake.notify_one();
    }
    return true;
}

void ConsumerQueue::stop() {
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
    }
    _wake.notify_all();
    if (_thread.joinable()) {
        _thread.join();
    }
    for (const Held& held : drain()) {
        release(held);
    }
}

std::vector<Held> ConsumerQueue::drain() {
    std::unique_lock<std::mutex> lock(_mutex);
    std::vector<Held> taken(_queue.begin(), _queue.end());
    _queue.clear();
    _idle.wait(lock, [this] { return !_busy; });
    return taken;
}

std::vector<Held> ConsumerQueue::take(uint32_t producerHandle) {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<Held> taken;
    for (auto it = _queue.begin(); it != _queue.end();) {
        if (it->producerHandle == producerHandle) {
            taken.push_back(std::move(*it));
            it = _queue.erase(it);
        } else {
            ++it;
        }
    }
    return taken;
}

bool ConsumerQueue::idle() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _queue.empty() && !_busy;
}

size_t ConsumerQueue::queued() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _queue.size();
}

uint64_t ConsumerQueue::delivered() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _delivered;
}

void ConsumerQueue::run() {
    std::unique_lock<std::mutex> lock(_mutex);
    bool lingering = false;
    for (;;) {
        if (_queue.empty() && !_stopping) {
            if (lingering) {
                // What arrives meanwhile is taken in one round: under a stream of notifications
                // the thread wakes once per linger, not once per notification.
                _wake.wait_for(lock, kLinger, [this] { return _stopping; });
                lingering = false;
                continue;
            }
            _asleep = true;
            _wake.wait(lock, [this] { return _stopping || !_queue.empty(); });
            _asleep = false;
        }
        if (_stopping) {
            return;
        }
        while (!_queue.empty() && !_stopping) {
            deliverFront(lock);
        }
        lingering = true;
    }
}

void ConsumerQueue::deliverFront(std::unique_lock<std::mutex>& lock) {
    Held held = std::move(_queue.front());
    _queue.pop_front();
    _busy = true;
    lock.unlock();
    try {
        _deliver(_handle, held.eventType, held.notification);
    } catch (const std::exception& e) {
        VESK_ERROR("host: consumer %lu (%s) failed on a notification: %s", _handle, _name.c_str(),
                   e.what());
    }
    // Given back after the consumer is done, on this thread: never inside notify.
    release(held);
    lock.lock();
    ++_delivered;
    _busy = false;
    _idle.notify_all();
}

}  // namespace events
}  // namespace host
}  // namespace vesk

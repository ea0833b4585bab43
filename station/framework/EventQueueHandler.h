// A queue of events with one thread that hands them, in order, to their machines.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/ReactiveStateMachine.h"

namespace VESK {
namespace Framework {

// A machine built with a null handler owns one of these; several machines may also share one.
// Events are processed one at a time, in the order posted, on the queue's thread.
class EventQueueHandler {
  public:
    EventQueueHandler() = default;
    // stop().
    ~EventQueueHandler();
    EventQueueHandler(const EventQueueHandler&) = delete;
    EventQueueHandler& operator=(const EventQueueHandler&) = delete;

    // Starts the thread if it is not running and the queue is not stopped.
    void start();
    // Takes `event` for `target` and starts the thread if needed. False once stopped; the caller
    // keeps `event` then.
    bool post(ReactiveStateMachine* target, Event* event);
    // Drops the queued events of `target` and waits until the thread is not processing one of
    // its events. Not from the queue's own thread.
    void forget(ReactiveStateMachine* target);
    // Refuses further events, lets the event in progress finish, drops the rest and joins the
    // thread. Not from the queue's own thread; idempotent.
    void stop();
    // From the queue's thread: refuse further events; the thread drops the rest and ends after
    // the event in progress.
    void stopFromQueueThread();

  private:
    using Item = std::pair<ReactiveStateMachine*, Event*>;
    void run();
    void dropAll(std::deque<Item>& items);

    std::mutex _mutex;
    std::condition_variable _wake;
    std::condition_variable _idle;
    std::deque<Item> _queue;
    ReactiveStateMachine* _busyWith = nullptr;
    bool _stopped = false;
    std::thread _thread;
};

}  // namespace Framework
}  // namespace VESK

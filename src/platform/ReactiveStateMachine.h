// The framework's state machine base: one queue of copied events, processed one at a time on
// the queue's own thread.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/IStateMachine.h"

namespace VESK {
namespace Framework {

class EventQueueHandler;

// Calling order: construct; initializeStateMachine(); start(); then enqueueEvent from any thread.
// processEvent runs only on the queue's thread, never on the caller's. When processEvent leaves
// the machine in its final state, the queue stops: events still queued are dropped (each with
// its cleanup() and an error line) and later enqueues are refused.
//
// A derived class whose processEvent touches its own members must call stopQueue() first in its
// destructor, so that no event runs while the derived part is being destroyed.
class ReactiveStateMachine : public IStateMachine {
  public:
    // A null `handler` gives the machine a queue and thread of its own. A non-null handler is
    // shared, not owned, and must outlive the machine.
    ReactiveStateMachine(int initialState, int finalState, EventQueueHandler* handler);
    ~ReactiveStateMachine() override;
    ReactiveStateMachine(const ReactiveStateMachine&) = delete;
    ReactiveStateMachine& operator=(const ReactiveStateMachine&) = delete;

    // currentState != finalState.
    bool allowEnqueue() const override;
    // Queues a copy of `event` (copyEvent) and returns at once. False, with an error line, when
    // the machine has terminated or its queue is stopped; the caller keeps `event` either way.
    // The flag is not used.
    bool enqueueEvent(Event const& event, bool flag) override;
    // Stores `state` as the current state. Generated machines run the enter action first.
    void onEnter(int state) override;
    void onExit() override {}
    // Logs the event at trace level. The queue calls cleanup() on an event that processEvent
    // did not handle (result 0), so a message that it carries is released.
    void onUnhandledEvent(Event& event) override;
    // onEnter(initialState).
    void initializeStateMachine() override;
    // Starts the queue's thread, if not started yet. Events queued before wait for it.
    void start() override;
    // currentState == finalState.
    bool hasTerminated() const override;

    // Stops the queue: the event in progress, if any, completes; the rest are dropped; the
    // thread is joined. Idempotent; must not be called from the machine's own thread.
    void stopQueue();

    // Used by the queue's thread: processes one event and releases it. Not for other callers.
    void dispatchFromQueue(Event* event);

    // Fields in order. currentState is read by other threads through allowEnqueue and
    // hasTerminated, so it is atomic; it reads and assigns like an int.
    std::atomic<int32_t> currentState;
    int32_t initialState;
    int32_t finalState;
    EventQueueHandler* queueHandler;

  private:
    bool _ownsQueue;
};

}  // namespace Framework
}  // namespace VESK

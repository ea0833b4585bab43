#include "platform/ReactiveStateMachine.h"

#include <exception>

#include "platform/EventWithMessage.h"
#include "platform/Logger.h"
#include "platform/SerializableMessage.h"
#include "station/framework/EventQueueHandler.h"

namespace VESK {
namespace Framework {

ReactiveStateMachine::ReactiveStateMachine(int aInitialState, int aFinalState,
                                           EventQueueHandler* handler)
    : currentState(aInitialState),
      initialState(aInitialState),
      finalState(aFinalState),
      queueHandler(handler != nullptr ? handler : new EventQueueHandler()),
      _ownsQueue(handler == nullptr) {}

ReactiveStateMachine::~ReactiveStateMachine() {
    stopQueue();
    if (_ownsQueue)
        delete queueHandler;
}

bool ReactiveStateMachine::allowEnqueue() const {
    return currentState != finalState;
}

bool ReactiveStateMachine::hasTerminated() const {
    return currentState == finalState;
}

bool ReactiveStateMachine::enqueueEvent(Event const& event, bool /*flag*/) {
    if (!allowEnqueue()) {
        VESK_ERROR("ReactiveStateMachine: event %d refused, the machine has terminated",
                   event.eventId);
        return false;
    }
    Event* copy = event.copyEvent();
    if (!queueHandler->post(this, copy)) {
        delete copy;  // the caller still owns what `event` carries
        VESK_ERROR("ReactiveStateMachine: event %d refused, the queue is stopped", event.eventId);
        return false;
    }
    return true;
}

void ReactiveStateMachine::onEnter(int state) {
    currentState = state;
}

void ReactiveStateMachine::onUnhandledEvent(Event& event) {
    VESK_TRACE("ReactiveStateMachine: event %d not handled in state %d", event.eventId,
               static_cast<int>(currentState));
}

void ReactiveStateMachine::initializeStateMachine() {
    onEnter(initialState);
}

void ReactiveStateMachine::start() {
    queueHandler->start();
}

void ReactiveStateMachine::stopQueue() {
    if (_ownsQueue) {
        queueHandler->stop();
    } else {
        queueHandler->forget(this);
    }
}

void ReactiveStateMachine::dispatchFromQueue(Event* event) {
    if (hasTerminated()) {
        VESK_ERROR("ReactiveStateMachine: event %d dropped, the machine has terminated",
                   event->eventId);
        event->cleanup();
        delete event;
        return;
    }
    int handled = 0;
    try {
        handled = processEvent(*event);
    } catch (const std::exception& e) {
        VESK_ERROR("ReactiveStateMachine: event %d failed: %s", event->eventId, e.what());
    }
    if (handled == 0)
        event->cleanup();
    delete event;
    if (hasTerminated() && _ownsQueue)
        queueHandler->stopFromQueueThread();
}

void EventWithMessage::cleanup() {
    delete message;
    message = nullptr;
}

}  // namespace Framework
}  // namespace VESK

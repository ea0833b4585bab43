#include "notification/VeskCmEventProducer_StateMachine.h"

using VESK::Framework::Event;
using VESK::Framework::ReactiveStateMachine;

VeskCmEventProducer_StateMachine::VeskCmEventProducer_StateMachine()
    : ReactiveStateMachine(initial, stFinal, nullptr) {}

VeskCmEventProducer_StateMachine::~VeskCmEventProducer_StateMachine() {
    stopQueue();
}

int VeskCmEventProducer_StateMachine::transitionTarget(Event const& event) const {
    const int state = currentState;
    const bool operating = state == stInitialize || state == stRunning;
    switch (event.eventId) {
        case evInitial:
            return state == initial ? stInitialize : 0;
        case evGotoRunning:
            return operating ? stRunning : 0;
        case ev4Notification:
            if (!operating ||
                dynamic_cast<IDatabase::EventClass_ev4Notification const*>(&event) == nullptr) {
                return 0;
            }
            return state;
        case evQuit:
            return operating ? stFinal : 0;
        default:
            return 0;
    }
}

void VeskCmEventProducer_StateMachine::runAction(Event& event) {
    switch (event.eventId) {
        case evInitial:
            processEvent_initial_stInitialize();
            break;
        case evGotoRunning:
            processEvent_evGotoRunning();
            break;
        case ev4Notification:
            processEvent_evNotification(static_cast<IDatabase::EventClass_ev4Notification&>(event));
            break;
        case evQuit:
            processEvent_evQuit();
            break;
        default:
            break;
    }
}

int VeskCmEventProducer_StateMachine::processEvent(Event& event) {
    const int target = transitionTarget(event);
    if (target == 0) {
        onUnhandledEvent(event);
        return 0;
    }
    if (event.eventId == evGotoRunning && currentState == stRunning) {
        processEvent_evGotoRunning();  // stays without leaving or entering
        return 1;
    }
    onExit();
    runAction(event);
    onEnter(target);
    return 1;
}

void VeskCmEventProducer_StateMachine::onEnter(int state) {
    if (state == stInitialize) {
        enterState_stInitialize();
    } else if (state == stRunning) {
        enterState_stRunning();
    }
    ReactiveStateMachine::onEnter(state);
}

void VeskCmEventProducer_StateMachine::onExit() {
    const int state = currentState;
    if (state == stInitialize) {
        leaveState_stInitialize();
    } else if (state == stRunning) {
        leaveState_stRunning();
    }
}

void VeskCmEventProducer_StateMachine::initializeStateMachine() {
    ReactiveStateMachine::initializeStateMachine();
    enqueueEvent(Event(evInitial), false);
}

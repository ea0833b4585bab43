#include "software/VeskSwM_StateMachine.h"

using VESK::Framework::Event;
using VESK::Framework::EventWithMessage;
using VESK::Framework::ReactiveStateMachine;

VeskSwM_StateMachine::VeskSwM_StateMachine() : ReactiveStateMachine(initial, stFinal, nullptr) {}

VeskSwM_StateMachine::~VeskSwM_StateMachine() {
    stopQueue();
}

int VeskSwM_StateMachine::transitionTarget(Event const& event) const {
    const int state = currentState;
    switch (event.eventId) {
        case evQuit:
            return (state == initial || state == stReady) ? stFinal : 0;
        case evStartToOperate:
            return state == initial ? stReady : 0;
        case evInitialiseSWResp:
        case evSwOssUpdateResp:
            if (state != stReady || dynamic_cast<EventWithMessage const*>(&event) == nullptr) {
                return 0;
            }
            return stReady;
        default:
            return 0;
    }
}

int VeskSwM_StateMachine::processEvent(Event& event) {
    const int target = transitionTarget(event);
    if (target == 0) {
        onUnhandledEvent(event);
        return 0;
    }
    onExit();
    if (event.eventId == evStartToOperate) {
        processEvent_evStartToOperate();
    } else if (event.eventId == evInitialiseSWResp) {
        processEvent_evInitialiseSWResp(static_cast<EventWithParams_evInitialiseSWResp&>(event));
    } else if (event.eventId == evSwOssUpdateResp) {
        processEvent_evSwOssUpdateResp(static_cast<EventWithParams_evSwOssUpdateResp&>(event));
    }
    onEnter(target);
    return 1;
}

void VeskSwM_StateMachine::onEnter(int state) {
    if (state == initial) {
        enterState_initial();
    } else if (state == stReady) {
        enterState_stReady();
    }
    ReactiveStateMachine::onEnter(state);
}

void VeskSwM_StateMachine::initializeStateMachine() {
    ReactiveStateMachine::initializeStateMachine();
}

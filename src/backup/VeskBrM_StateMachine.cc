#include "backup/VeskBrM_StateMachine.h"

using VESK::Framework::Event;
using VESK::Framework::ReactiveStateMachine;

VeskBrM_StateMachine::VeskBrM_StateMachine() : ReactiveStateMachine(initial, stFinal, nullptr) {}

VeskBrM_StateMachine::~VeskBrM_StateMachine() {
    stopQueue();
}

int VeskBrM_StateMachine::transitionTarget(Event const& event) const {
    const int state = currentState;
    switch (event.eventId) {
        case evQuit:
            return (state == initial || state == stReady) ? stFinal : 0;
        case evStartToOperate:
            return state == initial ? stReady : 0;
        case evBrMOperationResp:
            if (state != stReady ||
                dynamic_cast<EventWithParams_evBrMOperationResp const*>(&event) == nullptr) {
                return 0;
            }
            return stReady;
        default:
            return 0;
    }
}

int VeskBrM_StateMachine::processEvent(Event& event) {
    const int target = transitionTarget(event);
    if (target == 0) {
        onUnhandledEvent(event);
        return 0;
    }
    onExit();
    if (event.eventId == evStartToOperate) {
        processEvent_evStartToOperate();
    } else if (event.eventId == evBrMOperationResp) {
        processEvent_evBrMOperationResp(static_cast<EventWithParams_evBrMOperationResp&>(event));
    }
    onEnter(target);
    return 1;
}

void VeskBrM_StateMachine::onEnter(int state) {
    if (state == initial) {
        enterState_initial();
    } else if (state == stReady) {
        enterState_stReady();
    }
    ReactiveStateMachine::onEnter(state);
}

void VeskBrM_StateMachine::initializeStateMachine() {
    ReactiveStateMachine::initializeStateMachine();
}

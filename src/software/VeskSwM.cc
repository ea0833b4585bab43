#include "software/VeskSwM.h"

#include "platform/Logger.h"

VeskSwM::VeskSwM() : ReactiveStateMachine(initial, stFinal, nullptr) {}

VeskSwM::~VeskSwM() {
    stopQueue();
}

int VeskSwM::processEvent(VESK::Framework::Event& event) {
    const int state = currentState;
    if (event.eventId == evQuit && (state == initial || state == stReady)) {
        onExit();
        onEnter(stFinal);
        return 1;
    }
    if (event.eventId == evStartToOperate && state == initial) {
        onExit();
        processEvent_evStartToOperate();
        onEnter(stReady);
        return 1;
    }
    onUnhandledEvent(event);
    return 0;
}

void VeskSwM::onEnter(int state) {
    if (state == initial) {
        enterState_initial();
    } else if (state == stReady) {
        enterState_stReady();
    }
    ReactiveStateMachine::onEnter(state);
}

void VeskSwM::enterState_initial() {
    VESK_TRACE("VeskSwM: Entering initial");
}

void VeskSwM::enterState_stReady() {
    VESK_TRACE("VeskSwM: Entering stReady");
}

void VeskSwM::processEvent_evStartToOperate() {
    VESK_TRACE("VeskSwM: Processing event evStartToOperate");
}

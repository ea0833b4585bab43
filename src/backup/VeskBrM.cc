#include "backup/VeskBrM.h"

#include "platform/Logger.h"

VeskBrM::VeskBrM() : ReactiveStateMachine(initial, stFinal, nullptr) {}

VeskBrM::~VeskBrM() {
    stopQueue();
}

int VeskBrM::processEvent(VESK::Framework::Event& event) {
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

void VeskBrM::onEnter(int state) {
    if (state == initial) {
        enterState_initial();
    } else if (state == stReady) {
        enterState_stReady();
    }
    ReactiveStateMachine::onEnter(state);
}

void VeskBrM::enterState_initial() {
    VESK_INFO("VeskBrM: Entering initial");
}

void VeskBrM::enterState_stReady() {
    VESK_INFO("VeskBrM: Entering stReady");
}

void VeskBrM::processEvent_evStartToOperate() {
    VESK_INFO("VeskBrM: Processing event evStartToOperate");
}

#include "software/VeskSwM.h"

#include "platform/Logger.h"
#include "platform/SerializableMessage.h"

VeskSwM::VeskSwM() {}

VeskSwM::~VeskSwM() {
    stopQueue();
}

void VeskSwM::enterState_initial() {
    VESK_TRACE("VeskSwM: Entering initial");
}

void VeskSwM::enterState_stReady() {
    VESK_TRACE("VeskSwM: Entering stReady");
}

void VeskSwM::leaveState_initial() {
    VESK_TRACE("VeskSwM: Leaving initial");
}

void VeskSwM::leaveState_stReady() {
    VESK_TRACE("VeskSwM: Leaving stReady");
}

void VeskSwM::processEvent_evStartToOperate() {
    VESK_TRACE("VeskSwM: Processing event evStartToOperate");
}

void VeskSwM::processEvent_evInitialiseSWResp(EventWithParams_evInitialiseSWResp const& event) {
    // Storing the answer for the waiting createUpgradePackage comes with upgrade packages.
    VESK_ERROR("VeskSwM::%s - not available yet", __func__);
    delete event.message;
}

void VeskSwM::processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) {
    // Storing the answer for the waiting upgrade package command comes with upgrade packages.
    VESK_ERROR("VeskSwM::%s - not available yet", __func__);
    delete event.message;
}

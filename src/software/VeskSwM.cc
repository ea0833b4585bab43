#include "software/VeskSwM.h"

#include "platform/Logger.h"
#include "platform/SerializableMessage.h"

VeskSwM::VeskSwM() {}

VeskSwM::~VeskSwM() {
    stopQueue();
}

int VeskSwM::createUpgradePackage(bool& success, std::string uri, std::string, std::string,
                                  unsigned short& upgradePackageId) {
    VESK_ERROR("VeskSwM::%s - not available yet (uri %s)", __func__, uri.c_str());
    success = false;
    upgradePackageId = 0;
    return -1;
}

int VeskSwM::sendUpgradePackageMessageAndWait(bool& success, std::string command) {
    VESK_ERROR("VeskSwM::%s - not available yet (%s)", __func__, command.c_str());
    success = false;
    return -1;
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

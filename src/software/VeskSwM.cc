#include "software/VeskSwM.h"

#include <ctime>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/StationSleep.h"
#include "platform/VeskMessages.h"

using VESK::Messages::VESK_InitialiseSWResp;
using VESK::Messages::VESK_SwOssUpdateResp;

namespace {
const int kSwmComponent = 7;
const int kSwmPolls = 300;
const unsigned kSwmPollUs = 100000;
const int kRemoveUpgradePackage = 5;
const int32_t kRunning = 2;

int commandNumber(std::string const& command) {
    static const char* const names[] = {"prepare", "cancel", "activate",
                                        "commit",  "verify", "removeUpgradePackage"};
    if (command == "confirm") {
        return 3;
    }
    for (int i = 0; i < 6; ++i) {
        if (command == names[i]) {
            return i;
        }
    }
    return 6;
}
}  // namespace

VeskSwM::VeskSwM() {
    using VESK::Framework::Messaging::subscribeInbound;
    subscribeInbound(VESK_InitialiseSWResp::MESSAGE_ID, evInitialiseSWResp, this);
    subscribeInbound(VESK_SwOssUpdateResp::MESSAGE_ID, evSwOssUpdateResp, this);
}

VeskSwM::~VeskSwM() {
    VESK::Framework::Messaging::unsubscribeInbound(this);
    stopQueue();
}

bool VeskSwM::isResetOngoing() {
    bool ongoing = false;
    DBObject* oam = IDatabase::getObject("OAM", 1, 0);
    Attribute* attribute = oam != nullptr ? oam->getAttribute("resetOngoing") : nullptr;
    if (attribute != nullptr) {
        bool const* value = boost::get<bool>(&attribute->value);
        if (value == nullptr) {
            VESK_ERROR("VeskSwM: %s. boost::bad_get", "isResetOngoing");
        }
        ongoing = value != nullptr && *value;
    }
    delete oam;
    VESK_INFO("VeskSwM: isResetOngoing(): Returning: %d", ongoing);
    return ongoing;
}

bool VeskSwM::awaitResponse(int& polls) {
    while (polls > 0) {
        --polls;
        VESK::Framework::stationSleepUs(kSwmPollUs);
        if (_responseReceived.load(std::memory_order_acquire)) {
            return true;
        }
    }
    return false;
}

int VeskSwM::createUpgradePackage(bool& success, std::string uri, std::string password,
                                  std::string actionName, unsigned short& upgradePackageId) {
    VESK_INFO("SW DL request from OSS, uri: %s", uri.c_str());
    if (isResetOngoing()) {
        VESK_ERROR("VeskSwM::Recovery reset is ongoing, SWM operations are not allowed");
        return -1;
    }
    VESK::Messages::VESK_InitialiseSWReq request;
    request.uri = uri;
    request.password.password = password;
    request.actionName = actionName;
    _upgradePackageId = 0;
    _responseReceived = false;
    int rc = -10;
    if (VESK::Framework::Messaging::sendVeskMessage(kSwmComponent, request) == 0) {
        VESK_ERROR("VeskSwM::createUpgradePackage: Message sending to SoftwareManagement failed");
    } else {
        VESK_INFO(
            "VeskSwM::createUpgradePackage: VESK_InitialiseSWReq sent succesfully to "
            "SoftwareManagement");
        int polls = kSwmPolls;
        rc = awaitResponse(polls) ? 0 : -1;
        if (rc != 0) {
            VESK_ERROR("VeskSwM::createUpgradePackage: response waiting timeout elapsed");
        }
        _responseReceived = false;
        // Also after a time-out: the last answer's, however old.
        success = _result;
    }
    upgradePackageId = _upgradePackageId;
    return rc;
}

int VeskSwM::sendUpgradePackageMessageAndWait(bool& success, std::string command) {
    VESK_INFO("VeskSwM::sendUpgradePackageMessageAndWait %s action triggered!", command.c_str());
    if (isResetOngoing()) {
        VESK_ERROR("VeskSwM::Recovery reset is ongoing, SWM operations are not allowed");
        return -1;
    }
    _result = false;
    _responseId = 0;
    VESK::Messages::VESK_SwmCmd request;
    request.command = commandNumber(command);
    request.requestId = static_cast<uint32_t>(time(nullptr));
    request.commandName = command;
    _responseReceived = false;
    if (VESK::Framework::Messaging::sendVeskMessage(kSwmComponent, request) == 0) {
        VESK_ERROR("Message sending to SoftwareManagement failed");
        return -10;
    }
    VESK_INFO("Command (reqId:%u) sent succesfully to SoftwareManagement, waiting for response",
              request.requestId);
    int polls = kSwmPolls;
    while (awaitResponse(polls)) {
        if (_responseId != request.requestId) {
            VESK_ERROR(
                "VeskSwM::sendUpgradePackageMessageAndWait: response id (%u) don't match "
                "request id (%u)",
                _responseId.load(), request.requestId);
            _responseReceived = false;
            continue;
        }
        success = _result;
        if (request.command == kRemoveUpgradePackage && !_result &&
            _upgradePackageState == kRunning) {
            VESK_ERROR(
                "UpgradePackage state is RUNNING, removeUpgradePackage() action cannot be "
                "started");
        }
        _responseReceived = false;
        return 0;
    }
    VESK_ERROR("VeskSwM::sendUpgradePackageMessageAndWait: response waiting timeout elapsed");
    _responseReceived = false;
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
    if (auto* answer = event.messageAs<VESK_InitialiseSWResp>()) {
        _result = answer->success;
        _upgradePackageId = static_cast<uint16_t>(answer->upgradePackageId & 0xffff);
        if (!answer->success) {
            VESK_ERROR(answer->failureCode == 1 ? "VeskSwM: SW DL initialization from OSS failed, "
                                                  "UpgradePackage exists already"
                                                : "VeskSwM: SW DL initialization from OSS failed");
        }
        _responseReceived.store(true, std::memory_order_release);
    }
    delete event.message;
}

void VeskSwM::processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) {
    VESK_INFO("VeskSwM: Processing event evSwOssUpdateResp");
    if (auto* answer = event.messageAs<VESK_SwOssUpdateResp>()) {
        _result = answer->success;
        _responseId = answer->requestId;
        _upgradePackageState = answer->upgradePackageState;
        if (!answer->success) {
            VESK_WARNING("VeskSwM: Failure indication in event evSwOssUpdateResp");
        }
        _responseReceived.store(true, std::memory_order_release);
    }
    delete event.message;
}

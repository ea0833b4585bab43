#include "host/peers/FaultManager.h"

#include <Poco/DateTimeFormat.h>
#include <Poco/DateTimeFormatter.h>
#include <Poco/Timestamp.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/Logger.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"

namespace vesk {
namespace host {
namespace peers {
namespace {

using Json = nlohmann::ordered_json;

std::string now() {
    return Poco::DateTimeFormatter::format(Poco::Timestamp(),
                                           Poco::DateTimeFormat::ISO8601_FRAC_FORMAT);
}

Json toJson(const ActiveFault& fault) {
    return Json{{"code", fault.code},
                {"class", fault.faultClass},
                {"cell", fault.cell},
                {"raised", fault.raised}};
}

Json toJson(const FaultEvent& event) {
    return Json{{"time", event.time},        {"code", event.code}, {"state", event.state},
                {"class", event.faultClass}, {"cell", event.cell}, {"outcome", event.outcome}};
}

ActiveFault activeFrom(const Json& json) {
    return ActiveFault{json.at("code").get<int32_t>(), json.at("class").get<int32_t>(),
                       json.at("cell").get<std::string>(), json.at("raised").get<std::string>()};
}

FaultEvent eventFrom(const Json& json) {
    return FaultEvent{json.at("time").get<std::string>(), json.at("code").get<int32_t>(),
                      json.at("state").get<int32_t>(),    json.at("class").get<int32_t>(),
                      json.at("cell").get<std::string>(), json.at("outcome").get<std::string>()};
}

}  // namespace

FaultManager::FaultManager(const std::string& file) : _file(file) {
    load();
}

FaultManager::~FaultManager() {
    detach();
}

void FaultManager::attach() {
    vesk::station::registerComponent(kDestination, [this](int, const uint8_t* data, size_t size,
                                                          int) { return receive(data, size); });
    std::lock_guard<std::mutex> lock(_mutex);
    _attached = true;
}

void FaultManager::detach() {
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (!_attached) {
            return;
        }
        _attached = false;
    }
    // Waits for a call in progress, which takes the mutex.
    vesk::station::unregisterComponent(kDestination);
}

bool FaultManager::receive(const uint8_t* data, size_t size) {
    std::string error;
    std::unique_ptr<VESK::Messages::SerializableMessage> message =
        VESK::Messages::decodeMessage(data, size, error);
    if (message == nullptr) {
        VESK_ERROR("fault manager: cannot decode a message: %s", error.c_str());
        return false;
    }
    if (message->messageId != VESK::Messages::VESK_FaultNotification::MESSAGE_ID) {
        VESK_ERROR("fault manager: message %u is no fault notification", message->messageId);
        return false;
    }
    const auto& notification = static_cast<const VESK::Messages::VESK_FaultNotification&>(*message);
    if (notification.faultState != 0 && notification.faultState != 1) {
        VESK_ERROR("fault manager: fault %d of %s has state %d, neither raise (1) nor clear (0)",
                   notification.faultId, notification.additionalText.c_str(),
                   notification.faultState);
        return false;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    const std::string time = now();
    const std::string outcome = _refusing ? "refused" : apply(notification, time);
    record(FaultEvent{time, notification.faultId, notification.faultState, notification.faultClass,
                      notification.additionalText, outcome});
    save();
    return !_refusing;
}

std::string FaultManager::apply(const VESK::Messages::VESK_FaultNotification& notification,
                                const std::string& time) {
    auto found = std::find_if(_active.begin(), _active.end(), [&](const ActiveFault& fault) {
        return fault.code == notification.faultId && fault.cell == notification.additionalText;
    });
    if (notification.faultState == 1) {
        if (found != _active.end()) {
            return "already active";
        }
        _active.push_back(ActiveFault{notification.faultId, notification.faultClass,
                                      notification.additionalText, time});
        return "raised";
    }
    if (found == _active.end()) {
        return "not active";
    }
    _active.erase(found);
    return "cleared";
}

void FaultManager::record(const FaultEvent& event) {
    _history.push_back(event);
    if (_history.size() > kHistoryLimit) {
        _history.erase(_history.begin(), _history.end() - kHistoryLimit);
    }
}

void FaultManager::setRefusing(bool refusing) {
    std::lock_guard<std::mutex> lock(_mutex);
    _refusing = refusing;
}

bool FaultManager::refusing() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _refusing;
}

std::vector<ActiveFault> FaultManager::active() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _active;
}

std::vector<FaultEvent> FaultManager::history() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _history;
}

std::string FaultManager::faultName(int32_t code) {
    switch (code) {
        case 20745:
            return "VeskFault_IllegalCellBandwidthChange";
        case 20752:
            return "VeskFault_InconsistentCellBandwidthChange";
        default:
            return "";
    }
}

void FaultManager::load() {
    std::error_code code;
    if (_file.empty() || !std::filesystem::exists(_file, code)) {
        return;
    }
    try {
        std::ifstream in(_file);
        const Json json = Json::parse(in);
        std::vector<ActiveFault> active;
        std::vector<FaultEvent> history;
        for (const Json& fault : json.at("active")) {
            active.push_back(activeFrom(fault));
        }
        for (const Json& event : json.at("history")) {
            history.push_back(eventFrom(event));
        }
        _active = std::move(active);
        _history = std::move(history);
    } catch (const std::exception& failure) {
        // Put aside, not overwritten: what it held stays for the operator to look at.
        std::filesystem::rename(_file, _file + ".unreadable", code);
        VESK_ERROR("fault manager: cannot read %s (%s): moved to %s.unreadable, no faults known",
                   _file.c_str(), failure.what(), _file.c_str());
    }
}

void FaultManager::save() const {
    if (_file.empty()) {
        return;
    }
    Json json = Json::object();
    json["active"] = Json::array();
    json["history"] = Json::array();
    for (const ActiveFault& fault : _active) {
        json["active"].push_back(toJson(fault));
    }
    for (const FaultEvent& event : _history) {
        json["history"].push_back(toJson(event));
    }
    // Written aside and renamed, so that the file holds the old table or the new one.
    const std::string written = _file + ".new";
    std::ofstream out(written, std::ios::trunc);
    out << json.dump() << "\n";
    out.close();
    std::error_code code;
    if (!out) {
        VESK_ERROR("fault manager: cannot write %s", written.c_str());
        return;
    }
    std::filesystem::rename(written, _file, code);
    if (code) {
        VESK_ERROR("fault manager: cannot replace %s: %s", _file.c_str(), code.message().c_str());
    }
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

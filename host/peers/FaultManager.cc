#include "host/peers/FaultManager.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/Logger.h"
#include "platform/VeskMessages.h"

namespace vesk {
namespace host {
namespace peers {

FaultManager::FaultManager() : Peer(kName, 3, {"record", "refuse"}) {}

void FaultManager::keepIn(const std::string& file) {
    std::lock_guard<std::mutex> lock(_tableMutex);
    _file = file;
    _active.clear();
    _history.clear();
    load();
}

bool FaultManager::receive(const VESK::Messages::SerializableMessage& message, int flag) {
    auto* fault = dynamic_cast<const VESK::Messages::VESK_FaultNotification*>(&message);
    if (fault == nullptr) {
        return Peer::receive(message, flag);
    }
    if (fault->faultState != 0 && fault->faultState != 1) {
        VESK_ERROR("peer fault: fault %d of %s has state %d, neither raise (1) nor clear (0)",
                   fault->faultId, fault->additionalText.c_str(), fault->faultState);
        return false;
    }
    const bool refused = behaviour() == "refuse";
    std::lock_guard<std::mutex> lock(_tableMutex);
    const std::string time = timeText();
    const std::string outcome = refused ? "refused"
                                        : apply(fault->faultId, fault->faultState,
                                                fault->faultClass, fault->additionalText, time);
    _history.push_back(FaultEvent{time, fault->faultId, fault->faultState, fault->faultClass,
                                  fault->additionalText, outcome});
    if (_history.size() > kHistoryLimit) {
        _history.erase(_history.begin(), _history.end() - kHistoryLimit);
    }
    save();
    return !refused;
}

std::string FaultManager::apply(int32_t code, int32_t state, int32_t faultClass,
                                const std::string& cell, const std::string& time) {
    auto found = std::find_if(_active.begin(), _active.end(), [&](const ActiveFault& fault) {
        return fault.code == code && fault.cell == cell;
    });
    if (state == 1) {
        if (found != _active.end()) {
            return "already active";
        }
        _active.push_back(ActiveFault{code, faultClass, cell, time});
        return "raised";
    }
    if (found == _active.end()) {
        return "not active";
    }
    _active.erase(found);
    return "cleared";
}

Json FaultManager::show() const {
    std::lock_guard<std::mutex> lock(_tableMutex);
    return tableJson();
}

Json FaultManager::tableJson() const {
    Json table{{"active", Json::array()}, {"history", Json::array()}};
    for (const ActiveFault& fault : _active) {
        table["active"].push_back(toJson(fault));
    }
    for (const FaultEvent& event : _history) {
        table["history"].push_back(toJson(event));
    }
    return table;
}

std::vector<ActiveFault> FaultManager::active() const {
    std::lock_guard<std::mutex> lock(_tableMutex);
    return _active;
}

std::vector<FaultEvent> FaultManager::history() const {
    std::lock_guard<std::mutex> lock(_tableMutex);
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

Json FaultManager::toJson(const ActiveFault& fault) {
    return Json{{"code", fault.code},
                {"name", faultName(fault.code)},
                {"class", fault.faultClass},
                {"cell", fault.cell},
                {"raised", fault.raised}};
}

Json FaultManager::toJson(const FaultEvent& event) {
    return Json{{"time", event.time},        {"event", event.state == 1 ? "raise" : "clear"},
                {"code", event.code},        {"name", faultName(event.code)},
                {"class", event.faultClass}, {"cell", event.cell},
                {"outcome", event.outcome}};
}

void FaultManager::load() {
    std::error_code code;
    if (!std::filesystem::exists(_file, code)) {
        return;
    }
    try {
        const Json json = Json::parse(std::ifstream(_file));
        std::vector<ActiveFault> active;
        std::vector<FaultEvent> history;
        for (const Json& fault : json.at("active")) {
            active.push_back(ActiveFault{
                fault.at("code").get<int32_t>(), fault.at("class").get<int32_t>(),
                fault.at("cell").get<std::string>(), fault.at("raised").get<std::string>()});
        }
        for (const Json& event : json.at("history")) {
            history.push_back(
                FaultEvent{event.at("time").get<std::string>(), event.at("code").get<int32_t>(),
                           event.at("event").get<std::string>() == "raise" ? 1 : 0,
                           event.at("class").get<int32_t>(), event.at("cell").get<std::string>(),
                           event.at("outcome").get<std::string>()});
        }
        _active = std::move(active);
        _history = std::move(history);
    } catch (const std::exception& failure) {
        // Put aside, not overwritten: what it held stays for the operator to look at.
        std::filesystem::rename(_file, _file + ".unreadable", code);
        VESK_ERROR("peer fault: cannot read %s (%s): moved to %s.unreadable, no faults known",
                   _file.c_str(), failure.what(), _file.c_str());
    }
}

void FaultManager::save() const {
    if (_file.empty()) {
        return;
    }
    // Written aside and renamed, so that the file holds the old table or the new one.
    const std::string written = _file + ".new";
    std::ofstream out(written, std::ios::trunc);
    out << tableJson().dump() << "\n";
    out.close();
    std::error_code code;
    if (!out) {
        VESK_ERROR("peer fault: cannot write %s", written.c_str());
        return;
    }
    std::filesystem::rename(written, _file, code);
    if (code) {
        VESK_ERROR("peer fault: cannot replace %s: %s", _file.c_str(), code.message().c_str());
    }
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

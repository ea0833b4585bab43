#include "host/cli/AlarmCommands.h"

#include "host/Host.h"
#include "host/cli/Shell.h"
#include "host/peers/FaultManager.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using peers::ActiveFault;
using peers::FaultEvent;
using peers::FaultManager;

// "20745 VeskFault_IllegalCellBandwidthChange", or the code alone when it has no name.
std::string faultText(int32_t code) {
    const std::string name = FaultManager::faultName(code);
    return std::to_string(code) + (name.empty() ? "" : " " + name);
}

std::string activeLine(const ActiveFault& fault) {
    return faultText(fault.code) + " on " + fault.cell + ", class " +
           std::to_string(fault.faultClass) + ", raised " + fault.raised;
}

std::string eventLine(const FaultEvent& event) {
    return event.time + " " + (event.state == 1 ? "raise " : "clear ") + faultText(event.code) +
           " on " + event.cell + ", class " + std::to_string(event.faultClass) + ": " +
           event.outcome;
}

}  // namespace

void runAlarms(Shell& shell, const std::vector<std::string>& args, Answer* answer) {
    FaultManager* manager = shell.host().faultManager();
    const bool history = !args.empty() && args[0] == "history";
    if (!args.empty() && !history) {
        answer->error = "unknown alarms command '" + args[0] + "': alarms [history]";
        return;
    }
    if (manager == nullptr) {
        answer->error = "the host plays no fault manager";
        return;
    }
    const bool json = shell.options().json;
    answer->data = Json::array();
    if (manager->behaviour() == "refuse") {
        answer->notes.push_back("the fault manager refuses fault notifications");
    }
    if (history) {
        for (const FaultEvent& event : manager->history()) {
            answer->data.push_back(json ? FaultManager::toJson(event) : Json(eventLine(event)));
        }
    } else {
        for (const ActiveFault& fault : manager->active()) {
            answer->data.push_back(json ? FaultManager::toJson(fault) : Json(activeLine(fault)));
        }
    }
    if (answer->data.empty()) {
        answer->notes.push_back(history ? "no fault notifications received" : "no active faults");
    }
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

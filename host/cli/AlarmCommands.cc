#include "host/cli/AlarmCommands.h"

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

Json activeJson(const ActiveFault& fault, bool json) {
    if (!json) {
        return faultText(fault.code) + " on " + fault.cell + ", class " +
               std::to_string(fault.faultClass) + ", raised " + fault.raised;
    }
    return Json{{"code", fault.code},
                {"name", FaultManager::faultName(fault.code)},
                {"class", fault.faultClass},
                {"cell", fault.cell},
                {"raised", fault.raised}};
}

Json eventJson(const FaultEvent& event, bool json) {
    const std::string kind = event.state == 1 ? "raise" : "clear";
    if (!json) {
        return event.time + " " + kind + " " + faultText(event.code) + " on " + event.cell +
               ", class " + std::to_string(event.faultClass) + ": " + event.outcome;
    }
    return Json{{"time", event.time},        {"event", kind},
                {"code", event.code},        {"name", FaultManager::faultName(event.code)},
                {"class", event.faultClass}, {"cell", event.cell},
                {"outcome", event.outcome}};
}

void noteRefusing(const FaultManager& manager, Answer* answer) {
    if (manager.refusing()) {
        answer->notes.push_back("the fault manager refuses fault notifications");
    }
}

}  // namespace

void runAlarms(Shell& shell, const std::vector<std::string>& args, Answer* answer) {
    FaultManager* manager = shell.host().faultManager();
    if (manager == nullptr) {
        answer->error = "no fault manager: the station's state is not open";
        return;
    }
    const std::string verb = args.empty() ? "" : args[0];
    const bool json = shell.options().json;
    answer->data = Json::array();
    if (verb.empty()) {
        noteRefusing(*manager, answer);
        for (const ActiveFault& fault : manager->active()) {
            answer->data.push_back(activeJson(fault, json));
        }
        if (answer->data.empty()) {
            answer->notes.push_back("no active faults");
        }
    } else if (verb == "history") {
        noteRefusing(*manager, answer);
        for (const FaultEvent& event : manager->history()) {
            answer->data.push_back(eventJson(event, json));
        }
        if (answer->data.empty()) {
            answer->notes.push_back("no fault notifications received");
        }
    } else if (verb == "refuse" || verb == "accept") {
        manager->setRefusing(verb == "refuse");
        answer->data = nullptr;
        answer->notes.push_back(verb == "refuse" ? "the fault manager refuses fault notifications"
                                                 : "the fault manager takes fault notifications");
    } else {
        answer->data = nullptr;
        answer->error = "unknown alarms command '" + verb + "': alarms [history | refuse | accept]";
    }
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

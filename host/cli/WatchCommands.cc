#include "host/cli/WatchCommands.h"

#include <cerrno>
#include <cstdlib>

#include "host/cli/NotificationView.h"
#include "host/cli/Shell.h"
#include "host/events/EventRouter.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

Json consumerJson(const events::ConsumerInfo& info) {
    Json json = Json::object();
    json["consumer"] = info.handle;
    json["name"] = info.name;
    json["filters"] = info.filters;
    json["queued"] = info.queued;
    json["delivered"] = info.delivered;
    if (info.refusal != OrlOk) {
        json["refusing"] = returnCodeName(info.refusal);
    }
    return json;
}

}  // namespace

Watches::~Watches() {
    for (const auto& entry : _consumers) {
        _shell.host().events().removeConsumer(entry.second);
    }
}

int Watches::add(const std::string& pattern, std::string* error) {
    std::string bad = filterPatternError(pattern);
    if (!bad.empty()) {
        *error = "bad pattern '" + pattern + "': " + bad;
        return 0;
    }
    const int id = _next++;
    events::EventRouter& router = _shell.host().events();
    unsigned long consumer = router.addConsumer(
        "watch " + std::to_string(id),
        [this, id](unsigned long, const char*, const void* notification) {
            print(id, *static_cast<const OrlOamSpiCmEvent_Notification_1T*>(notification));
        });
    std::vector<std::string> patterns;
    if (!pattern.empty()) {
        patterns.push_back(pattern);
    }
    OrlReturnT rc = router.subscribe(consumer, events::kCmEventType, patterns);
    if (rc != OrlOk) {
        router.removeConsumer(consumer);
        *error = "the event router refused the watch (" + returnCodeName(rc) + ")";
        return 0;
    }
    _consumers[id] = consumer;
    return id;
}

bool Watches::remove(int id, uint64_t* printed) {
    auto found = _consumers.find(id);
    if (found == _consumers.end()) {
        return false;
    }
    _shell.host().settleNotifications();
    *printed = 0;
    for (const events::ConsumerInfo& info : _shell.host().events().consumers()) {
        if (info.handle == found->second) {
            *printed = info.delivered;
        }
    }
    _shell.host().events().removeConsumer(found->second);
    _consumers.erase(found);
    return true;
}

std::vector<int> Watches::ids() const {
    std::vector<int> result;
    for (const auto& entry : _consumers) {
        result.push_back(entry.first);
    }
    return result;
}

void Watches::print(int id, const OrlOamSpiCmEvent_Notification_1T& notification) {
    Json json = Json::object();
    json["watch"] = id;
    json.update(notificationJson(notification, _shell.model()));
    std::lock_guard<std::mutex> lock(_shell.outputMutex());
    if (_shell.options().json) {
        _shell.out() << json.dump() << std::endl;
    } else {
        _shell.out() << "watch " << id << ": " << notificationText(json) << std::endl;
    }
}

void runWatch(Shell& shell, const std::vector<std::string>& args, Answer* answer) {
    std::string pattern = args.empty() ? std::string() : args[0];
    int id = shell.watches().add(pattern, &answer->error);
    if (id == 0) {
        return;
    }
    answer->notes.push_back(
        "watch " + std::to_string(id) + " on " +
        (pattern.empty() ? std::string("every notification") : "dns matching '" + pattern + "'"));
    answer->data = Json::object({{"watch", id}, {"pattern", pattern}});
}

void runUnwatch(Shell& shell, const std::vector<std::string>& args, Answer* answer) {
    std::vector<int> ids = shell.watches().ids();
    if (!args.empty()) {
        char* end = nullptr;
        errno = 0;
        long id = std::strtol(args[0].c_str(), &end, 10);
        if (end == args[0].c_str() || *end != '\0' || errno != 0 || id <= 0 || id > INT32_MAX) {
            answer->error = "a watch is named by its number, not '" + args[0] + "'";
            return;
        }
        ids.assign(1, static_cast<int>(id));
    }
    if (ids.empty()) {
        answer->error = "no watch is running";
        return;
    }
    for (int id : ids) {
        uint64_t printed = 0;
        if (!shell.watches().remove(id, &printed)) {
            answer->error = "no watch " + std::to_string(id);
            return;
        }
        answer->notes.push_back("watch " + std::to_string(id) + " ended after " +
                                std::to_string(printed) + " notifications");
    }
}

Json eventStatus(Shell& shell) {
    Json consumers = Json::array();
    for (const events::ConsumerInfo& info : shell.host().events().consumers()) {
        consumers.push_back(consumerJson(info));
    }
    return Json::object(
        {{"producers", shell.host().events().producerCount()}, {"consumers", consumers}});
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

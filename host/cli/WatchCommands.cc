#include "host/cli/WatchCommands.h"

#include <cerrno>
#include <cstdint>
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

// A whole number from 1 to INT32_MAX in `word`, or 0.
long countIn(const std::string& word) {
    char* end = nullptr;
    errno = 0;
    long count = std::strtol(word.c_str(), &end, 10);
    bool whole = end != word.c_str() && *end == '\0' && errno == 0;
    return whole && count > 0 && count <= INT32_MAX ? count : 0;
}

Json journalStatus(const Host& host) {
    const events::Journal* journal = host.journal();
    if (journal == nullptr) {
        return "off";
    }
    return Json::object({{"kept", journal->size()},
                         {"capacity", journal->capacity()},
                         {"recorded", journal->recorded()}});
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
        long id = countIn(args[0]);
        if (id == 0) {
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

void runNotifications(Shell& shell, const std::vector<std::string>& args, Answer* answer) {
    const events::Journal* journal = shell.host().journal();
    long count = args.empty() ? 0 : countIn(args[0]);
    if (args.size() == 2 && count == 0) {
        answer->error = "a count of notifications is a whole number above 0, not '" + args[0] + "'";
        return;
    }
    std::string pattern = args.size() == 2 || (args.size() == 1 && count == 0) ? args.back() : "";
    std::string bad = filterPatternError(pattern);
    if (!bad.empty()) {
        answer->error = "bad pattern '" + pattern + "': " + bad;
        return;
    }
    if (journal == nullptr) {
        answer->error = "the host keeps no journal of notifications (--no-journal)";
        return;
    }
    // What was committed before this command is in the journal.
    shell.host().settleNotifications();
    answer->data = Json::array();
    for (const events::Journal::Entry& entry : journal->last(count > 0 ? count : 10, pattern)) {
        Json json = Json::parse(entry.line);
        answer->data.push_back(shell.options().json ? json : Json(notificationText(json)));
    }
    if (answer->data.empty()) {
        answer->notes.push_back("no notification in the journal" +
                                (pattern.empty() ? "" : " matches '" + pattern + "'"));
    }
}

Json eventStatus(Shell& shell) {
    Json consumers = Json::array();
    for (const events::ConsumerInfo& info : shell.host().events().consumers()) {
        consumers.push_back(consumerJson(info));
    }
    return Json::object({{"producers", shell.host().events().producerCount()},
                         {"consumers", consumers},
                         {"journal", journalStatus(shell.host())}});
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

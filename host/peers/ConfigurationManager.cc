#include "host/peers/ConfigurationManager.h"

#include <algorithm>
#include <cstdlib>

#include "platform/Logger.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageBus.h"

namespace vesk {
namespace host {
namespace peers {
namespace {

// A whole number of milliseconds, 0 to one hour.
bool parseDelay(const std::string& text, long* ms) {
    char* end = nullptr;
    long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < 0 || value > 3600000) {
        return false;
    }
    *ms = value;
    return true;
}

}  // namespace

ConfigurationManager::ConfigurationManager()
    : Peer("cm", 2, {"accept", "refuse", "silent", "delay"}), _thread([this] { run(); }) {}

ConfigurationManager::~ConfigurationManager() {
    {
        std::lock_guard<std::mutex> lock(_lock);
        _stopping = true;
    }
    _wake.notify_all();
    _thread.join();
}

std::string ConfigurationManager::usage() const {
    return "show|accept [DN]|refuse [DN]|silent [DN]|delay MS [DN]|answer true|false";
}

bool ConfigurationManager::receive(const VESK::Messages::SerializableMessage& message, int flag) {
    auto* request = dynamic_cast<const VESK::Messages::VESK_ValidateFrequencyReq*>(&message);
    if (request == nullptr) {
        return Peer::receive(message, flag);
    }
    Json cells = Json::array();
    bool refuse = false;
    bool silent = false;
    long delayMs = 0;
    for (const auto& cell : request->cellFrequencies) {
        cells.push_back(Json{
            {"dn", cell.cellDn}, {"bandwidth", cell.channelBandwidth}, {"channel", cell.earfcn}});
        Setting setting = settingFor(cell.cellDn);
        refuse = refuse || setting.mode == "refuse";
        silent = silent || setting.mode == "silent";
        delayMs = std::max(delayMs, setting.delayMs);
    }
    bool timed = refuse || !silent;
    Json entry{{"cells", cells}};
    entry["answer"] = refuse ? Json("false") : !timed ? Json("waits") : Json("true");
    if (timed && !refuse && delayMs > 0) {
        entry["delayMs"] = delayMs;
    }
    size_t record = note(entry);
    VESK_INFO("peer cm: frequency check of %zu cells", request->cellFrequencies.size());
    {
        std::lock_guard<std::mutex> lock(_lock);
        _pending.push_back(Pending{record, !refuse, timed,
                                   Clock::now() + std::chrono::milliseconds(refuse ? 0 : delayMs)});
    }
    _wake.notify_all();
    return true;
}

ConfigurationManager::Setting ConfigurationManager::settingFor(const std::string& dn) const {
    std::lock_guard<std::mutex> lock(_lock);
    auto cell = _cells.find(dn);
    return cell != _cells.end() ? cell->second : _default;
}

bool ConfigurationManager::command(const Words& words, Json* result, std::string* error) {
    if (words.size() == 1 && words[0] == "show") {
        *result = show();
        return true;
    }
    if (!words.empty() && words[0] == "answer") {
        return answerByHand(words, result, error);
    }
    return setBehaviour(words, result, error);
}

bool ConfigurationManager::setBehaviour(const Words& words, Json* result, std::string* error) {
    Setting setting;
    size_t dnAt = 1;
    if (!words.empty() && words[0] == "delay") {
        if (words.size() < 2 || !parseDelay(words[1], &setting.delayMs)) {
            *error = "the delay is a whole number of milliseconds (0 to 3600000)";
            return false;
        }
        dnAt = 2;
    } else if (words.empty() ||
               (words[0] != "accept" && words[0] != "refuse" && words[0] != "silent")) {
        *error = "usage: peer cm " + usage();
        return false;
    }
    if (words.size() > dnAt + 1) {
        *error = "usage: peer cm " + usage();
        return false;
    }
    setting.mode = words[0];
    *result = Json{{"name", name()}, {"behaviour", words[0]}};
    if (setting.delayMs > 0) {
        (*result)["delayMs"] = setting.delayMs;
    }
    if (words.size() == dnAt + 1) {
        std::lock_guard<std::mutex> lock(_lock);
        _cells[words[dnAt]] = setting;
        (*result)["dn"] = words[dnAt];
        return true;
    }
    Words base{words[0]};
    Peer::command(base, result, error);
    {
        std::lock_guard<std::mutex> lock(_lock);
        _default = setting;
        _cells.clear();
    }
    *result = Json{{"name", name()}, {"behaviour", words[0]}};
    if (setting.delayMs > 0) {
        (*result)["delayMs"] = setting.delayMs;
    }
    return true;
}

bool ConfigurationManager::answerByHand(const Words& words, Json* result, std::string* error) {
    if (words.size() != 2 || (words[1] != "true" && words[1] != "false")) {
        *error = "usage: peer cm answer true|false";
        return false;
    }
    size_t record = 0;
    {
        std::lock_guard<std::mutex> lock(_lock);
        if (_pending.empty()) {
            *error = "no frequency check waits for an answer";
            return false;
        }
        record = _pending.front().record;
        _pending.pop_front();
    }
    deliver(record, words[1] == "true");
    *result = Json{{"name", name()}, {"answered", words[1] == "true"}, {"request", record + 1}};
    return true;
}

Json ConfigurationManager::show() const {
    Json settings;
    {
        std::lock_guard<std::mutex> lock(_lock);
        settings["behaviour"] = _default.mode;
        if (_default.delayMs > 0) {
            settings["delayMs"] = _default.delayMs;
        }
        for (const auto& cell : _cells) {
            Json one{{"behaviour", cell.second.mode}};
            if (cell.second.delayMs > 0) {
                one["delayMs"] = cell.second.delayMs;
            }
            settings["cells"][cell.first] = one;
        }
    }
    settings["requests"] = Peer::show();
    return settings;
}

bool ConfigurationManager::waitedOn() const {
    // An answer due at once (accept, refuse) is no wait: the commit ends by itself.
    const Clock::time_point soon = Clock::now() + std::chrono::milliseconds(50);
    std::lock_guard<std::mutex> lock(_lock);
    return std::any_of(_pending.begin(), _pending.end(),
                       [soon](const Pending& p) { return !p.timed || p.due > soon; });
}

void ConfigurationManager::run() {
    std::unique_lock<std::mutex> lock(_lock);
    while (!_stopping) {
        auto due = std::find_if(_pending.begin(), _pending.end(),
                                [](const Pending& p) { return p.timed; });
        if (due == _pending.end()) {
            _wake.wait(lock);
            continue;
        }
        if (Clock::now() < due->due) {
            _wake.wait_until(lock, due->due);
            continue;
        }
        Pending answer = *due;
        _pending.erase(due);
        lock.unlock();
        deliver(answer.record, answer.valid);
        lock.lock();
    }
}

void ConfigurationManager::deliver(size_t record, bool valid) {
    amend(record, "answered", Json{{"valid", valid}, {"time", timeText()}});
    // The agent's wait ends here; nothing of the peer is locked meanwhile.
    if (!vesk::station::deliverFrequencyValidationAnswer(valid)) {
        amend(record, "answered", "not delivered: the agent takes no answer");
    }
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

#include "host/peers/Peer.h"

#include <chrono>
#include <ctime>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace peers {

Peer::Peer(std::string name, int destination, Words behaviours)
    : _name(std::move(name)),
      _destination(destination),
      _behaviours(std::move(behaviours)),
      _behaviour(_behaviours.empty() ? std::string() : _behaviours[0]) {}

std::string Peer::behaviour() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _behaviour;
}

bool Peer::receive(const VESK::Messages::SerializableMessage& message, int) {
    VESK_ERROR("peer %s: message %u is not one it takes", _name.c_str(), message.messageId);
    return false;
}

bool Peer::command(const Words& words, Json* result, std::string* error) {
    if (words.size() == 1 && words[0] == "show") {
        *result = show();
        return true;
    }
    for (const std::string& behaviour : _behaviours) {
        if (words.size() == 1 && words[0] == behaviour) {
            {
                std::lock_guard<std::mutex> lock(_mutex);
                _behaviour = behaviour;
            }
            behaviourSet(behaviour);
            *result = Json{{"name", _name}, {"behaviour", behaviour}};
            return true;
        }
    }
    *error = "usage: peer " + _name + " " + usage();
    return false;
}

Json Peer::show() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _records;
}

std::string Peer::usage() const {
    std::string text = "show";
    for (const std::string& behaviour : _behaviours) {
        text += "|" + behaviour;
    }
    return text;
}

size_t Peer::note(Json entry) {
    entry["time"] = timeText();
    std::lock_guard<std::mutex> lock(_mutex);
    _records.push_back(std::move(entry));
    return _records.size() - 1;
}

void Peer::amend(size_t index, const std::string& key, Json value) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (index < _records.size()) {
        _records[index][key] = std::move(value);
    }
}

std::string timeText() {
    using namespace std::chrono;
    system_clock::time_point now = system_clock::now();
    std::time_t seconds = system_clock::to_time_t(now);
    long millis =
        static_cast<long>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[40];
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &utc);
    char full[48];
    std::snprintf(full, sizeof(full), "%s.%03ldZ", text, millis);
    return full;
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

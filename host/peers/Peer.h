// A component of the station that the reference host plays in place of the real one: the
// receiver of one destination number of the station's messages (or of no messages, for a
// component the agent reaches through a station call), with a behaviour the operator or a test
// sets, and what it received kept for `peer NAME show`.
//
// Threads: receive runs on the sender's thread (a host thread inside an agent call, or a
// machine's thread); the operator's commands on the console's. A peer keeps its records and its
// behaviour under its own lock and never calls the agent while holding it.
#pragma once

#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/SerializableMessage.h"

namespace vesk {
namespace host {
namespace peers {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

class Peer {
  public:
    // `destination` 0: the peer takes no messages. `behaviours` are the one-word behaviours the
    // operator may set; the first is the initial one.
    Peer(std::string name, int destination, Words behaviours);
    virtual ~Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    const std::string& name() const { return _name; }
    int destination() const { return _destination; }
    std::string behaviour() const;

    // One decoded message of the peer's destination. False refuses it, and the send fails.
    // The default refuses every message with an error line.
    virtual bool receive(const VESK::Messages::SerializableMessage& message, int flag);
    // The words after `peer NAME`: "show", or one of the behaviours; a peer adds its own
    // subcommands by overriding. False, with one line in `error`, for words it does not take.
    virtual bool command(const Words& words, Json* result, std::string* error);
    // What the peer received and did, oldest first.
    virtual Json show() const;
    // The words the peer takes, for its usage line: "show|record|restart|refuse".
    virtual std::string usage() const;
    // Whether the agent waits now for an answer that this peer holds back.
    virtual bool waitedOn() const { return false; }
    // Once the station's state is open, before the agent is loaded.
    virtual void stateOpened() {}
    // Before the host closes: ends whatever the peer does on threads of its own.
    virtual void stop() {}

  protected:
    // Called (without the lock) once `behaviour` is set.
    virtual void behaviourSet(const std::string& behaviour) { (void)behaviour; }
    // Keeps `entry`, with the time it came as "time"; returns its index.
    size_t note(Json entry);
    // Sets `key` of the entry at `index`.
    void amend(size_t index, const std::string& key, Json value);

  private:
    const std::string _name;
    const int _destination;
    const Words _behaviours;
    mutable std::mutex _mutex;
    std::string _behaviour;
    Json _records = Json::array();
};

// The time now, UTC, as "2026-11-24T16:59:56.841Z".
std::string timeText();

}  // namespace peers
}  // namespace host
}  // namespace vesk

// The station's configuration manager, destination 2: takes VESK_ValidateFrequencyReq, keeps
// each request (its cells with bandwidth and channel) and answers it from a thread of its own,
// as the real component does, through the station's delivery of VESK_ValidateFrequencyResp.
//
// Behaviours, for every cell or for one cell given by its dn: `accept` (the default) answers
// true at once, `refuse` false at once, `delay MS` true after MS milliseconds, `silent` not at
// all. A request takes the behaviour of its cells: false if any cell refuses, no answer if any is
// silent, otherwise true after the longest delay. `answer true|false` answers the oldest request
// still waiting (silent or delayed) at once. Setting a behaviour without a dn forgets the
// settings of single cells.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <thread>

#include "host/peers/Peer.h"

namespace vesk {
namespace host {
namespace peers {

class ConfigurationManager : public Peer {
  public:
    ConfigurationManager();
    // Stops the answering thread; answers still due are dropped.
    ~ConfigurationManager() override;

    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;
    bool command(const Words& words, Json* result, std::string* error) override;
    Json show() const override;
    std::string usage() const override;
    // Whether a request waits for its answer (silent or delayed): the agent is blocked on it.
    bool waitedOn() const override;

  private:
    using Clock = std::chrono::steady_clock;
    // How a cell is answered: "accept", "refuse", "silent" or "delay" with `delayMs`.
    struct Setting {
        std::string mode = "accept";
        long delayMs = 0;
    };
    struct Pending {
        size_t record;
        bool valid;
        bool timed;  // false: waits for `answer`
        Clock::time_point due;
    };

    bool setBehaviour(const Words& words, Json* result, std::string* error);
    bool answerByHand(const Words& words, Json* result, std::string* error);
    Setting settingFor(const std::string& dn) const;
    // The answering thread: delivers each timed answer when it is due.
    void run();
    void deliver(size_t record, bool valid);

    mutable std::mutex _lock;
    std::condition_variable _wake;
    Setting _default;
    std::map<std::string, Setting> _cells;
    std::deque<Pending> _pending;
    bool _stopping = false;
    std::thread _thread;  // last: started once the members above exist
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

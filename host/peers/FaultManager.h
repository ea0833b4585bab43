// The station's fault manager, destination 3: decodes the fault notifications sent there, keeps
// the table of active faults (code, class, cell, time raised) and the history of raises and
// clears, and keeps both in a file of the state directory, so that they outlive a restart of
// the agent inside the host and of the host itself. The agent's own lists of raised faults live
// in its memory only; after a restart it sends no clear for a fault it raised before, so the
// table keeps what the fault manager was told. `record` (the default) or `refuse` (the send
// fails; the refused notification is noted in the history and changes nothing else). `show`
// gives the table and the history.
//
// Threads: receive runs on the sender's thread (an agent's commit); the readers on any other.
// One mutex guards the table, the history and the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "host/peers/Peer.h"

namespace vesk {
namespace host {
namespace peers {

struct ActiveFault {
    int32_t code = 0;
    int32_t faultClass = 0;
    std::string cell;    // the notification's additional text: the cell's dn
    std::string raised;  // UTC, as timeText()
};

struct FaultEvent {
    std::string time;  // UTC, as timeText()
    int32_t code = 0;
    int32_t state = 0;  // as received: 1 raise, 0 clear
    int32_t faultClass = 0;
    std::string cell;
    // "raised", "cleared", "already active" (a raise of an active fault), "not active" (a clear
    // of a fault that is not) or "refused".
    std::string outcome;
};

class FaultManager : public Peer {
  public:
    static constexpr const char* kName = "fault";
    // The history keeps this many events, the latest.
    static constexpr size_t kHistoryLimit = 1000;

    // Starts with an empty table, kept in memory only.
    FaultManager();

    // From now on keeps its table in `file`, first reading what the file holds. A file that
    // cannot be read is put aside as FILE.unreadable, with an error line; the table then starts
    // empty.
    void keepIn(const std::string& file);

    // False, with an error line, for a message that is no fault notification or a state other
    // than 0 and 1, and while refusing.
    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;
    // {"active": [...], "history": [...]}, as `alarms --json` gives them.
    Json show() const override;

    // The active faults in the order raised, and the history, oldest first.
    std::vector<ActiveFault> active() const;
    std::vector<FaultEvent> history() const;

    // The name of a fault code the station raises ("VeskFault_IllegalCellBandwidthChange"), or "".
    static std::string faultName(int32_t code);
    static Json toJson(const ActiveFault& fault);
    static Json toJson(const FaultEvent& event);

  private:
    // Applies one raise or clear at `time`; the outcome for the history.
    std::string apply(int32_t code, int32_t state, int32_t faultClass, const std::string& cell,
                      const std::string& time);
    // The table and the history as show() gives them; the caller holds _tableMutex.
    Json tableJson() const;
    void load();
    void save() const;

    mutable std::mutex _tableMutex;
    std::string _file;
    std::vector<ActiveFault> _active;
    std::vector<FaultEvent> _history;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

// The station's fault manager as a peer of the reference host. It is the component of
// destination 3: it decodes the fault notifications sent there, keeps the table of active
// faults (code, class, cell, time raised) and the history of raises and clears, and keeps both
// in a file of the state directory, so that they outlive a restart of the agent inside the host
// and of the host itself. The agent's own lists of raised faults live in its memory only; after
// a restart it sends no clear for a fault it raised before, so the table keeps what the fault
// manager was told.
//
// It can be set to refuse notifications (the send then fails at the agent); a refused one is
// noted in the history and changes nothing else.
//
// Threads: receive() runs on the sender's thread (an agent's commit); the readers and setters on
// any other. One mutex guards the table, the history and the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace VESK {
namespace Messages {
class VESK_FaultNotification;
}  // namespace Messages
}  // namespace VESK

namespace vesk {
namespace host {
namespace peers {

struct ActiveFault {
    int32_t code = 0;
    int32_t faultClass = 0;
    std::string cell;    // the notification's additional text: the cell's dn
    std::string raised;  // UTC, ISO 8601 with microseconds
};

struct FaultEvent {
    std::string time;  // UTC, ISO 8601 with microseconds
    int32_t code = 0;
    int32_t state = 0;  // as received: 1 raise, 0 clear
    int32_t faultClass = 0;
    std::string cell;
    // "raised", "cleared", "already active" (a raise of an active fault), "not active" (a clear
    // of a fault that is not) or "refused".
    std::string outcome;
};

class FaultManager {
  public:
    static constexpr int kDestination = 3;
    // The history keeps this many events, the latest.
    static constexpr size_t kHistoryLimit = 1000;

    // Keeps its table in `file` ("" for memory only) and reads what the file holds. A file that
    // cannot be read is put aside as FILE.unreadable, with an error line; the table then starts
    // empty.
    explicit FaultManager(const std::string& file);
    // Detaches.
    ~FaultManager();
    FaultManager(const FaultManager&) = delete;
    FaultManager& operator=(const FaultManager&) = delete;

    // Becomes (stops being) the component of destination 3 on the station's message bus.
    void attach();
    void detach();

    // Takes the bytes of one message. False, with an error line, for bytes that do not decode,
    // a message that is no fault notification or a state other than 0 and 1, and while refusing.
    bool receive(const uint8_t* data, size_t size);

    void setRefusing(bool refusing);
    bool refusing() const;

    // The active faults in the order raised, and the history, oldest first.
    std::vector<ActiveFault> active() const;
    std::vector<FaultEvent> history() const;

    // The name of a fault code the station raises ("VeskFault_IllegalCellBandwidthChange"), or "".
    static std::string faultName(int32_t code);

  private:
    // Applies one notification at `time`; the outcome for the history.
    std::string apply(const VESK::Messages::VESK_FaultNotification& notification,
                      const std::string& time);
    void record(const FaultEvent& event);
    void load();
    void save() const;

    const std::string _file;
    mutable std::mutex _mutex;
    bool _attached = false;
    bool _refusing = false;
    std::vector<ActiveFault> _active;
    std::vector<FaultEvent> _history;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

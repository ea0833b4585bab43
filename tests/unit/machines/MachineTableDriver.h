// Drives one row of a machine's transition table on the test's thread and checks what the
// table promises: the answer, the actions in order (each tagged with the state current while it
// ran), the state reached, and that the message of an unhandled answer is left alone.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "platform/EventWithMessage.h"
#include "platform/IDatabase.h"
#include "platform/SerializableMessage.h"

namespace vesk {
namespace machinetest {

// A message that counts its destructions, so a test can tell who deleted it and how often.
class TrackedMessage : public VESK::Messages::SerializableMessage {
  public:
    explicit TrackedMessage(int* deletions) : SerializableMessage(0), _deletions(deletions) {}
    ~TrackedMessage() override { ++*_deletions; }
    void writeFields(VESK::Messages::ByteWriter&) const override {}
    bool readFields(VESK::Messages::ByteReader&) override { return true; }

  private:
    int* _deletions;
};

// What the queue would hand to processEvent for a row.
enum class Carrier { Plain, Message, Notification };

struct Row {
    const char* name;  // the test's name: source, event, outcome
    int source;
    int eventId;
    Carrier carrier;
    std::vector<std::string> calls;  // "action@state" in order; empty for an unhandled event
    int target;                      // == source for an unhandled event
    bool handled;
};

// Failure messages name the row instead of dumping its bytes.
inline void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

inline std::string rowName(const ::testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

// The actions called so far, each as "name@currentState". Safe from two threads.
class ActionLog {
  public:
    void add(const std::string& action, int state) {
        std::lock_guard<std::mutex> lock(_mutex);
        _calls.push_back(action + "@" + std::to_string(state));
    }
    std::vector<std::string> calls() const {
        std::lock_guard<std::mutex> lock(_mutex);
        return _calls;
    }

  private:
    mutable std::mutex _mutex;
    std::vector<std::string> _calls;
};

// Runs `row` on `machine` (a recording subclass with a public `log` and `lastMessage`).
template <class Machine>
void driveRow(const Row& row) {
    Machine machine;
    machine.currentState = row.source;
    int deletions = 0;
    std::unique_ptr<VESK::Framework::Event> event;
    TrackedMessage* message = nullptr;
    if (row.carrier == Carrier::Message) {
        message = new TrackedMessage(&deletions);
        event.reset(new VESK::Framework::EventWithMessage(row.eventId, message));
    } else if (row.carrier == Carrier::Notification) {
        event.reset(new IDatabase::EventClass_ev4Notification());
        event->eventId = row.eventId;
    } else {
        event.reset(new VESK::Framework::Event(row.eventId));
    }

    EXPECT_EQ(machine.processEvent(*event), row.handled ? 1 : 0);
    EXPECT_EQ(machine.log.calls(), row.calls);
    EXPECT_EQ(machine.currentState, row.target);
    EXPECT_EQ(machine.hasTerminated(), row.target == 1999);
    EXPECT_EQ(machine.allowEnqueue(), row.target != 1999);
    if (message == nullptr) {
        return;
    }
    if (row.handled) {
        // The action got this very message and, as its owner, deleted it once.
        EXPECT_EQ(machine.lastMessage, message);
        EXPECT_EQ(deletions, 1);
    } else {
        // Left for the queue's cleanup.
        EXPECT_EQ(deletions, 0);
        event->cleanup();
        EXPECT_EQ(deletions, 1);
    }
}

}  // namespace machinetest
}  // namespace vesk

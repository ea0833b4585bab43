// Every row of the change notification producer's table, and pairs the table does not hold.
#include <gtest/gtest.h>

#include "notification/VeskCmEventProducer_StateMachine.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

using vesk::machinetest::Carrier;
using vesk::machinetest::Row;

class RecordingProducer : public VeskCmEventProducer_StateMachine {
  public:
    ~RecordingProducer() override { stopQueue(); }

    vesk::machinetest::ActionLog log;
    const void* lastMessage = nullptr;  // no event of this machine carries a message
    int lastTicket = -1;

  protected:
    void enterState_stInitialize() override { log.add(__func__, currentState); }
    void leaveState_stInitialize() override { log.add(__func__, currentState); }
    void enterState_stRunning() override { log.add(__func__, currentState); }
    void leaveState_stRunning() override { log.add(__func__, currentState); }
    void processEvent_evGotoRunning() override { log.add(__func__, currentState); }
    void processEvent_evQuit() override { log.add(__func__, currentState); }
    void processEvent_evNotification(IDatabase::EventClass_ev4Notification& event) override {
        log.add(__func__, currentState);
        lastTicket = event.ticket;
    }
    void processEvent_initial_stInitialize() override { log.add(__func__, currentState); }
};

class ProducerTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(ProducerTableTest, FollowsTheTable) {
    vesk::machinetest::driveRow<RecordingProducer>(GetParam());
}

// clang-format off
const Row kRows[] = {
    {"initial_evInitial_stInitialize", 1998, 998, Carrier::Plain,
     {"processEvent_initial_stInitialize@1998", "enterState_stInitialize@1998"}, 2000, true},
    {"stInitialize_evGotoRunning_stRunning", 2000, 1002, Carrier::Plain,
     {"leaveState_stInitialize@2000", "processEvent_evGotoRunning@2000",
      "enterState_stRunning@2000"}, 2001, true},
    {"stInitialize_ev4Notification_stInitialize", 2000, 1004, Carrier::Notification,
     {"leaveState_stInitialize@2000", "processEvent_evNotification@2000",
      "enterState_stInitialize@2000"}, 2000, true},
    {"stInitialize_evQuit_final", 2000, 1000, Carrier::Plain,
     {"leaveState_stInitialize@2000", "processEvent_evQuit@2000"}, 1999, true},
    // The one stay that neither leaves nor enters its state.
    {"stRunning_evGotoRunning_stRunning", 2001, 1002, Carrier::Plain,
     {"processEvent_evGotoRunning@2001"}, 2001, true},
    {"stRunning_ev4Notification_stRunning", 2001, 1004, Carrier::Notification,
     {"leaveState_stRunning@2001", "processEvent_evNotification@2001",
      "enterState_stRunning@2001"}, 2001, true},
    {"stRunning_evQuit_final", 2001, 1000, Carrier::Plain,
     {"leaveState_stRunning@2001", "processEvent_evQuit@2001"}, 1999, true},
    {"initial_evQuit_unhandled", 1998, 1000, Carrier::Plain, {}, 1998, false},
    {"initial_ev4Notification_unhandled", 1998, 1004, Carrier::Notification, {}, 1998, false},
    {"stInitialize_evInitial_unhandled", 2000, 998, Carrier::Plain, {}, 2000, false},
    {"stRunning_ev4NotificationThatIsNoNotification_unhandled", 2001, 1004, Carrier::Plain, {},
     2001, false},
    {"final_evGotoRunning_unhandled", 1999, 1002, Carrier::Plain, {}, 1999, false},
    {"final_evQuit_unhandled", 1999, 1000, Carrier::Plain, {}, 1999, false},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Rows, ProducerTableTest, ::testing::ValuesIn(kRows),
                         vesk::machinetest::rowName);

TEST(ProducerMachineTest, NotificationActionGetsTheDeliveredEvent) {
    RecordingProducer machine;
    machine.currentState = 2000;
    IDatabase::EventClass_ev4Notification event;
    event.ticket = 17;
    EXPECT_EQ(machine.processEvent(event), 1);
    EXPECT_EQ(machine.lastTicket, 17);
}

}  // namespace

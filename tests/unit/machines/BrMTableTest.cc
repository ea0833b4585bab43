// Every row of the backup machine's table, and pairs the table does not hold.
#include <gtest/gtest.h>

#include "backup/VeskBrM_StateMachine.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

using vesk::machinetest::Carrier;
using vesk::machinetest::Row;

class RecordingBrM : public VeskBrM_StateMachine {
  public:
    ~RecordingBrM() override { stopQueue(); }

    vesk::machinetest::ActionLog log;
    const void* lastMessage = nullptr;

  protected:
    void enterState_initial() override { log.add(__func__, currentState); }
    void enterState_stReady() override { log.add(__func__, currentState); }
    void leaveState_initial() override { log.add(__func__, currentState); }
    void leaveState_stReady() override { log.add(__func__, currentState); }
    void processEvent_evStartToOperate() override { log.add(__func__, currentState); }
    void processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) override {
        log.add(__func__, currentState);
        lastMessage = event.message;
        delete event.message;
    }
};

class BrMTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(BrMTableTest, FollowsTheTable) {
    vesk::machinetest::driveRow<RecordingBrM>(GetParam());
}

// clang-format off
const Row kRows[] = {
    {"initial_evQuit_final", 1998, 1000, Carrier::Plain, {}, 1999, true},
    {"initial_evStartToOperate_stReady", 1998, 1001, Carrier::Plain,
     {"processEvent_evStartToOperate@1998", "enterState_stReady@1998"}, 2000, true},
    {"stReady_evQuit_final", 2000, 1000, Carrier::Plain, {}, 1999, true},
    // A stay is a transition: the state is entered again after the action.
    {"stReady_evBrMOperationResp_stReady", 2000, 1015, Carrier::Message,
     {"processEvent_evBrMOperationResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"initial_evBrMOperationResp_unhandled", 1998, 1015, Carrier::Message, {}, 1998, false},
    {"stReady_evBrMOperationRespWithoutMessage_unhandled", 2000, 1015, Carrier::Plain, {}, 2000,
     false},
    {"stReady_evStartToOperate_unhandled", 2000, 1001, Carrier::Plain, {}, 2000, false},
    {"stReady_evSwOssUpdateResp_unhandled", 2000, 1016, Carrier::Message, {}, 2000, false},
    {"final_evQuit_unhandled", 1999, 1000, Carrier::Plain, {}, 1999, false},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Rows, BrMTableTest, ::testing::ValuesIn(kRows),
                         vesk::machinetest::rowName);

TEST(BrMMachineTest, InitializeEntersInitialThroughItsEnterAction) {
    RecordingBrM machine;
    machine.currentState = 2000;  // wherever it stands, initialisation goes to initial
    machine.initializeStateMachine();
    EXPECT_EQ(machine.log.calls(), std::vector<std::string>{"enterState_initial@2000"});
    EXPECT_EQ(machine.currentState, 1998);
}

}  // namespace

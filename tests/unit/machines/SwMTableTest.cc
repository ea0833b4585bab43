// Every row of the software machine's table, and pairs the table does not hold.
#include <gtest/gtest.h>

#include "software/VeskSwM_StateMachine.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

using vesk::machinetest::Carrier;
using vesk::machinetest::Row;

class RecordingSwM : public VeskSwM_StateMachine {
  public:
    ~RecordingSwM() override { stopQueue(); }

    vesk::machinetest::ActionLog log;
    const void* lastMessage = nullptr;

  protected:
    void enterState_initial() override { log.add(__func__, currentState); }
    void enterState_stReady() override { log.add(__func__, currentState); }
    void leaveState_initial() override { log.add(__func__, currentState); }
    void leaveState_stReady() override { log.add(__func__, currentState); }
    void processEvent_evStartToOperate() override { log.add(__func__, currentState); }
    void processEvent_evInitialiseSWResp(EventWithParams_evInitialiseSWResp const& event) override {
        answered(__func__, event);
    }
    void processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) override {
        answered(__func__, event);
    }

  private:
    void answered(const char* action, VESK::Framework::EventWithMessage const& event) {
        log.add(action, currentState);
        lastMessage = event.message;
        delete event.message;
    }
};

class SwMTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(SwMTableTest, FollowsTheTable) {
    vesk::machinetest::driveRow<RecordingSwM>(GetParam());
}

// clang-format off
const Row kRows[] = {
    {"initial_evQuit_final", 1998, 1000, Carrier::Plain, {}, 1999, true},
    {"initial_evStartToOperate_stReady", 1998, 1001, Carrier::Plain,
     {"processEvent_evStartToOperate@1998", "enterState_stReady@1998"}, 2000, true},
    {"stReady_evInitialiseSWResp_stReady", 2000, 1014, Carrier::Message,
     {"processEvent_evInitialiseSWResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"stReady_evSwOssUpdateResp_stReady", 2000, 1016, Carrier::Message,
     {"processEvent_evSwOssUpdateResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"stReady_evQuit_final", 2000, 1000, Carrier::Plain, {}, 1999, true},
    {"initial_evInitialiseSWResp_unhandled", 1998, 1014, Carrier::Message, {}, 1998, false},
    {"stReady_evSwOssUpdateRespWithoutMessage_unhandled", 2000, 1016, Carrier::Plain, {}, 2000,
     false},
    {"stReady_evBrMOperationResp_unhandled", 2000, 1015, Carrier::Message, {}, 2000, false},
    {"stReady_evStartToOperate_unhandled", 2000, 1001, Carrier::Plain, {}, 2000, false},
    {"final_evQuit_unhandled", 1999, 1000, Carrier::Plain, {}, 1999, false},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Rows, SwMTableTest, ::testing::ValuesIn(kRows),
                         vesk::machinetest::rowName);

TEST(SwMMachineTest, InitializeEntersInitialThroughItsEnterAction) {
    RecordingSwM machine;
    machine.initializeStateMachine();
    EXPECT_EQ(machine.log.calls(), std::vector<std::string>{"enterState_initial@1998"});
    EXPECT_EQ(machine.currentState, 1998);
}

}  // namespace

// Every row of the backup and software machines' tables, and pairs the tables do not hold.
#include <gtest/gtest.h>

#include <vector>

#include "backup/VeskBrM_StateMachine.h"
#include "software/VeskSwM_StateMachine.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

using vesk::machinetest::Carrier;
using vesk::machinetest::Row;

// The actions both machines share, logged; an answer's message is kept and deleted as its owner.
template <class Machine>
class Recording : public Machine {
  public:
    ~Recording() override { this->stopQueue(); }

    vesk::machinetest::ActionLog log;
    const void* lastMessage = nullptr;

  protected:
    void enterState_initial() override { log.add(__func__, this->currentState); }
    void enterState_stReady() override { log.add(__func__, this->currentState); }
    void leaveState_initial() override { log.add(__func__, this->currentState); }
    void leaveState_stReady() override { log.add(__func__, this->currentState); }
    void processEvent_evStartToOperate() override { log.add(__func__, this->currentState); }
    void answered(const char* action, VESK::Framework::EventWithMessage const& event) {
        log.add(action, this->currentState);
        lastMessage = event.message;
        delete event.message;
    }
};

class RecordingBrM : public Recording<VeskBrM_StateMachine> {
    void processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) override {
        answered(__func__, event);
    }
};

class RecordingSwM : public Recording<VeskSwM_StateMachine> {
    void processEvent_evInitialiseSWResp(EventWithParams_evInitialiseSWResp const& event) override {
        answered(__func__, event);
    }
    void processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) override {
        answered(__func__, event);
    }
};

// The rows both tables hold, then the given ones.
std::vector<Row> withSharedRows(std::vector<Row> own) {
    // clang-format off
    const Row shared[] = {
        {"initial_evQuit_final", 1998, 1000, Carrier::Plain, {}, 1999, true},
        {"initial_evStartToOperate_stReady", 1998, 1001, Carrier::Plain,
         {"processEvent_evStartToOperate@1998", "enterState_stReady@1998"}, 2000, true},
        {"stReady_evQuit_final", 2000, 1000, Carrier::Plain, {}, 1999, true},
        {"stReady_evStartToOperate_unhandled", 2000, 1001, Carrier::Plain, {}, 2000, false},
        {"final_evQuit_unhandled", 1999, 1000, Carrier::Plain, {}, 1999, false},
    };
    // clang-format on
    own.insert(own.begin(), std::begin(shared), std::end(shared));
    return own;
}

class BrMTableTest : public ::testing::TestWithParam<Row> {};
class SwMTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(BrMTableTest, FollowsTheTable) {
    vesk::machinetest::driveRow<RecordingBrM>(GetParam());
}

TEST_P(SwMTableTest, FollowsTheTable) {
    vesk::machinetest::driveRow<RecordingSwM>(GetParam());
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, BrMTableTest, ::testing::ValuesIn(withSharedRows({
    // A stay is a transition: the state is entered again after the action.
    {"stReady_evBrMOperationResp_stReady", 2000, 1015, Carrier::Message,
     {"processEvent_evBrMOperationResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"initial_evBrMOperationResp_unhandled", 1998, 1015, Carrier::Message, {}, 1998, false},
    {"stReady_evBrMOperationRespWithoutMessage_unhandled", 2000, 1015, Carrier::Plain, {}, 2000,
     false},
    {"stReady_evSwOssUpdateResp_unhandled", 2000, 1016, Carrier::Message, {}, 2000, false},
})), vesk::machinetest::rowName);

INSTANTIATE_TEST_SUITE_P(Rows, SwMTableTest, ::testing::ValuesIn(withSharedRows({
    {"stReady_evInitialiseSWResp_stReady", 2000, 1014, Carrier::Message,
     {"processEvent_evInitialiseSWResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"stReady_evSwOssUpdateResp_stReady", 2000, 1016, Carrier::Message,
     {"processEvent_evSwOssUpdateResp@2000", "enterState_stReady@2000"}, 2000, true},
    {"initial_evInitialiseSWResp_unhandled", 1998, 1014, Carrier::Message, {}, 1998, false},
    {"stReady_evSwOssUpdateRespWithoutMessage_unhandled", 2000, 1016, Carrier::Plain, {}, 2000,
     false},
    {"stReady_evBrMOperationResp_unhandled", 2000, 1015, Carrier::Message, {}, 2000, false},
})), vesk::machinetest::rowName);
// clang-format on

// Wherever it stands, initialisation goes to initial through its enter action.
template <class Machine>
void expectInitializeEntersInitial(int from) {
    Machine machine;
    machine.currentState = from;
    machine.initializeStateMachine();
    EXPECT_EQ(machine.log.calls(),
              std::vector<std::string>{"enterState_initial@" + std::to_string(from)});
    EXPECT_EQ(machine.currentState, 1998);
}

TEST(ReadyMachinesTest, InitializeEntersInitialThroughItsEnterAction) {
    expectInitializeEntersInitial<RecordingBrM>(2000);
    expectInitializeEntersInitial<RecordingSwM>(1998);
}

}  // namespace

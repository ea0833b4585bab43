// The software and backup machines: their transition tables, driven on the test's thread, and a
// run through their own queue threads from start to the final state.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "backup/VeskBrM.h"
#include "platform/Logger.h"
#include "software/VeskSwM.h"
#include "station/log/LogControl.h"

namespace {

using VESK::Framework::Event;

template <typename Machine>
class LifecycleMachineTest : public ::testing::Test {};

using Machines = ::testing::Types<VeskBrM, VeskSwM>;
TYPED_TEST_SUITE(LifecycleMachineTest, Machines);

TYPED_TEST(LifecycleMachineTest, StartToOperateThenQuitFollowTheTable) {
    TypeParam machine;
    machine.initializeStateMachine();
    EXPECT_EQ(machine.currentState, 1998);

    Event response(1015);
    EXPECT_EQ(machine.processEvent(response), 0);  // no answer is handled in initial
    EXPECT_EQ(machine.currentState, 1998);

    Event startToOperate(1001);
    EXPECT_EQ(machine.processEvent(startToOperate), 1);
    EXPECT_EQ(machine.currentState, 2000);
    EXPECT_EQ(machine.processEvent(startToOperate), 0);  // only once, from initial
    EXPECT_EQ(machine.currentState, 2000);
    EXPECT_TRUE(machine.allowEnqueue());

    Event quit(1000);
    EXPECT_EQ(machine.processEvent(quit), 1);
    EXPECT_EQ(machine.currentState, 1999);
    EXPECT_TRUE(machine.hasTerminated());
    EXPECT_FALSE(machine.allowEnqueue());
    EXPECT_EQ(machine.processEvent(startToOperate), 0);
    EXPECT_EQ(machine.currentState, 1999);
}

TYPED_TEST(LifecycleMachineTest, QuitEndsTheMachineAlsoFromInitial) {
    TypeParam machine;
    machine.initializeStateMachine();
    Event quit(1000);
    EXPECT_EQ(machine.processEvent(quit), 1);
    EXPECT_TRUE(machine.hasTerminated());
}

TYPED_TEST(LifecycleMachineTest, QueuedEventsRunOnTheMachineThreadUntilQuit) {
    TypeParam machine;
    machine.initializeStateMachine();
    machine.start();
    ASSERT_TRUE(machine.enqueueEvent(Event(1001), false));
    ASSERT_TRUE(machine.enqueueEvent(Event(1000), false));
    for (int i = 0; i < 500 && !machine.hasTerminated(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(machine.hasTerminated());
    EXPECT_FALSE(machine.enqueueEvent(Event(1001), false));
}

TEST(VeskBrMTest, EnterActionsAreLoggedAsInformation) {
    vesk::log::LogCapture log;
    VeskBrM machine;
    machine.initializeStateMachine();
    Event startToOperate(1001);
    machine.processEvent(startToOperate);
    EXPECT_EQ(log.count("VeskBrM: Entering initial", VESK_LOG_INFO), 1u);
    EXPECT_EQ(log.count("VeskBrM: Processing event evStartToOperate", VESK_LOG_INFO), 1u);
    EXPECT_EQ(log.count("VeskBrM: Entering stReady", VESK_LOG_INFO), 1u);
    // The action runs before the state is entered.
    std::vector<vesk::log::LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].text, "VeskBrM: Processing event evStartToOperate");
}

}  // namespace

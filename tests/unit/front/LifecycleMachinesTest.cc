// The software and backup machines run through their own queue threads from start to the final
// state; their tables are driven row by row in the machines' own tests.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "backup/VeskBrM.h"
#include "software/VeskSwM.h"

namespace {

using VESK::Framework::Event;

template <typename Machine>
class LifecycleMachineTest : public ::testing::Test {};

using Machines = ::testing::Types<VeskBrM, VeskSwM>;
TYPED_TEST_SUITE(LifecycleMachineTest, Machines);

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
    EXPECT_EQ(machine.currentState, 1999);
    EXPECT_FALSE(machine.enqueueEvent(Event(1001), false));
}

}  // namespace

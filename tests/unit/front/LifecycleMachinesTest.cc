// The software and backup machines run through their own queue threads from start to the final
// state; their tables are driven row by row in the machines' own tests. Terminate leaves them
// ended, so that the unload that deletes them drops nothing.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "backup/VeskBrM.h"
#include "front/VeskMoImpl.h"
#include "platform/EventWithMessage.h"
#include "platform/SerializableMessage.h"
#include "plugin/VeskCMComponent.h"
#include "software/VeskSwM.h"
#include "station/log/LogControl.h"

namespace {

using VESK::Framework::Event;
using namespace std::chrono_literals;

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
        std::this_thread::sleep_for(10ms);
    }
    ASSERT_TRUE(machine.hasTerminated());
    EXPECT_EQ(machine.currentState, 1999);
    EXPECT_FALSE(machine.enqueueEvent(Event(1001), false));
}

// An answer whose release keeps the machine's thread busy for a while.
struct SlowMessage : VESK::Messages::SerializableMessage {
    SlowMessage() : SerializableMessage(0) {}
    ~SlowMessage() override { std::this_thread::sleep_for(50ms); }
    void writeFields(VESK::Messages::ByteWriter&) const override {}
    bool readFields(VESK::Messages::ByteReader&) override { return true; }
};

TEST(TerminateTest, TheMachinesHaveTakenTheirQuitWhenTerminateReturns) {
    swm = new VeskSwM();
    swm->initializeStateMachine();
    swm->enqueueEvent(Event(VeskSwM::evStartToOperate), false);
    swm->enqueueEvent(VESK::Framework::EventWithMessage(1014, new SlowMessage()), false);
    vesk::log::LogCapture log;
    TibVeskCM::VeskMoImpl::instance()->orlLCMterminate();
    EXPECT_TRUE(swm->hasTerminated());
    delete swm;  // as the unload does
    swm = nullptr;
    EXPECT_EQ(log.countContaining("dropped"), 0u);
}

}  // namespace

// The software and backup machines run through their own queue threads from start to the final
// state; their tables are driven row by row in the machines' own tests. Terminate leaves them
// ended, so that the unload that deletes them drops nothing.
#include <gtest/gtest.h>

#include <atomic>
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

// An answer whose release waits for `release`: it keeps the machine's thread busy.
class SlowMessage : public VESK::Messages::SerializableMessage {
  public:
    explicit SlowMessage(const std::atomic<bool>& release)
        : SerializableMessage(0), _release(release) {}
    ~SlowMessage() override {
        while (!_release)
            std::this_thread::sleep_for(1ms);
    }
    void writeFields(VESK::Messages::ByteWriter&) const override {}
    bool readFields(VESK::Messages::ByteReader&) override { return true; }

  private:
    const std::atomic<bool>& _release;
};

TEST(TerminateTest, MachinesHaveTakenTheirQuitWhenTerminateReturns) {
    swm = new VeskSwM();
    brm = new VeskBrM();
    using Machine = VESK::Framework::ReactiveStateMachine;
    for (Machine* machine : {static_cast<Machine*>(swm), static_cast<Machine*>(brm)}) {
        machine->initializeStateMachine();
        machine->start();
        machine->enqueueEvent(Event(1001), false);
    }
    std::atomic<bool> release{false};
    VESK::Framework::EventWithMessage busy(VeskSwM::evInitialiseSWResp, new SlowMessage(release));
    ASSERT_TRUE(swm->enqueueEvent(busy, false));
    std::thread releaser([&] {
        std::this_thread::sleep_for(50ms);
        release = true;
    });
    vesk::log::LogCapture log;
    TibVeskCM::VeskMoImpl::instance()->orlLCMterminate();
    EXPECT_TRUE(swm->hasTerminated());
    EXPECT_TRUE(brm->hasTerminated());
    releaser.join();
    // What the unload does next.
    delete swm;
    delete brm;
    swm = nullptr;
    brm = nullptr;
    EXPECT_EQ(log.countContaining("dropped"), 0u);
}

}  // namespace

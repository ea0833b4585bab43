// The concrete machines on their tables, driven on the test's thread: what their actions log
// today, and that an answer they cannot use yet is still released by its handler.
#include <gtest/gtest.h>

#include "backup/VeskBrM.h"
#include "platform/Logger.h"
#include "software/VeskSwM.h"
#include "station/log/LogControl.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

using VESK::Framework::Event;
using VESK::Framework::EventWithMessage;
using vesk::machinetest::TrackedMessage;

TEST(ConcreteBrMTest, AnswerWithoutItsMessageInStReadyIsReleasedWithAnErrorLine) {
    VeskBrM machine;
    machine.currentState = VeskBrM::stReady;
    vesk::log::LogCapture log;
    int deletions = 0;
    EventWithMessage answer(1015, new TrackedMessage(&deletions));
    EXPECT_EQ(machine.processEvent(answer), 1);
    EXPECT_EQ(deletions, 1);
    EXPECT_EQ(machine.currentState, VeskBrM::stReady);
    EXPECT_EQ(log.count("VeskBrM: evBrMOperationResp without its message", VESK_LOG_ERROR), 1u);
    // The stay enters stReady again.
    EXPECT_EQ(log.count("VeskBrM: Entering stReady", VESK_LOG_INFO), 1u);
}

TEST(ConcreteSwMTest, BothAnswersInStReadyAreReleased) {
    VeskSwM machine;
    machine.initializeStateMachine();
    Event startToOperate(1001);
    ASSERT_EQ(machine.processEvent(startToOperate), 1);
    vesk::log::LogCapture log;
    int deletions = 0;
    EventWithMessage created(1014, new TrackedMessage(&deletions));
    EventWithMessage updated(1016, new TrackedMessage(&deletions));
    EXPECT_EQ(machine.processEvent(created), 1);
    EXPECT_EQ(machine.processEvent(updated), 1);
    EXPECT_EQ(deletions, 2);
    EXPECT_EQ(log.count("VeskSwM: Processing event evSwOssUpdateResp", VESK_LOG_INFO), 1u);
    EXPECT_EQ(log.countContaining("VeskSwM: Entering stReady"), 2u);
    EXPECT_EQ(log.countContaining("VeskSwM: Leaving"), 0u);
}

}  // namespace

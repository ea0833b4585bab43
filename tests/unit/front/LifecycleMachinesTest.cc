// Terminate leaves the machines ended, so that the unload that deletes them drops nothing. Their
// tables are driven row by row in the machines' own tests, their start in the agent's start.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "front/VeskMoImpl.h"
#include "platform/EventWithMessage.h"
#include "platform/SerializableMessage.h"
#include "plugin/VeskCMComponent.h"
#include "software/VeskSwM.h"
#include "station/log/LogControl.h"

namespace {

using VESK::Framework::Event;
using namespace std::chrono_literals;

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

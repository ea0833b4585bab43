// The machines on their own queue threads: the producer's self-started move to stInitialize,
// and answers that arrive through the station's inbound router, handled or released.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "backup/VeskBrM.h"
#include "notification/VeskCmEventProducer_StateMachine.h"
#include "platform/Logger.h"
#include "platform/VeskMessages.h"
#include "station/log/LogControl.h"
#include "station/messages/MessageBus.h"
#include "unit/machines/MachineTableDriver.h"

namespace {

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

class RecordingProducer : public VeskCmEventProducer_StateMachine {
  public:
    ~RecordingProducer() override { stopQueue(); }
    vesk::machinetest::ActionLog log;

  protected:
    void enterState_stInitialize() override { log.add(__func__, currentState); }
    void leaveState_stInitialize() override { log.add(__func__, currentState); }
    void enterState_stRunning() override { log.add(__func__, currentState); }
    void leaveState_stRunning() override { log.add(__func__, currentState); }
    void processEvent_evGotoRunning() override { log.add(__func__, currentState); }
    void processEvent_evQuit() override { log.add(__func__, currentState); }
    void processEvent_evNotification(IDatabase::EventClass_ev4Notification&) override {
        log.add(__func__, currentState);
    }
    void processEvent_initial_stInitialize() override { log.add(__func__, currentState); }
};

TEST(ProducerQueueTest, InitializeMovesToStInitializeOnTheQueueThread) {
    RecordingProducer machine;
    machine.initializeStateMachine();
    machine.start();
    ASSERT_TRUE(eventually([&] { return machine.currentState == 2000; }));
    EXPECT_EQ(machine.log.calls(),
              (std::vector<std::string>{"processEvent_initial_stInitialize@1998",
                                        "enterState_stInitialize@1998"}));
    ASSERT_TRUE(machine.enqueueEvent(VESK::Framework::Event(1000), false));
    ASSERT_TRUE(eventually([&] { return machine.hasTerminated(); }));
    EXPECT_EQ(machine.log.calls().back(), "processEvent_evQuit@2000");
}

std::vector<uint8_t> backupAnswer() {
    VESK::Messages::VESK_BrMOperationResp answer;
    answer.success = true;
    answer.operation = "CREATE";
    answer.dn = "BrmBackup=1";
    return answer.serialize();
}

// The answer's message is freed either way: by the handler in stReady, by the queue's cleanup
// in initial (the leak checker of the sanitizer build sees a miss).
TEST(BrMQueueTest, RoutedAnswerIsUnhandledInInitialAndReachesTheActionInStReady) {
    vesk::log::LogCapture log;
    VeskBrM machine;
    machine.initializeStateMachine();
    machine.start();
    vesk::station::subscribeInbound(VESK::Messages::VESK_BrMOperationResp::MESSAGE_ID,
                                    VeskBrM::evBrMOperationResp, &machine);

    ASSERT_TRUE(vesk::station::deliverInbound(backupAnswer()));
    ASSERT_TRUE(machine.enqueueEvent(VESK::Framework::Event(VeskBrM::evStartToOperate), false));
    ASSERT_TRUE(eventually([&] { return log.count("VeskBrM: Entering stReady") == 1; }));
    EXPECT_EQ(log.countContaining("Processing event evBrMOperationResp"), 0u);

    ASSERT_TRUE(vesk::station::deliverInbound(backupAnswer()));
    EXPECT_TRUE(eventually(
        [&] { return log.countContaining("VeskBrM: Processing event evBrMOperationResp") == 1; }));
    vesk::station::unsubscribeInbound(&machine);
}

}  // namespace

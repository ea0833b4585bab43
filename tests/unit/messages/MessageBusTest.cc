#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/AgentEntries.h"
#include "platform/EventWithMessage.h"
#include "platform/Messaging.h"
#include "platform/ReactiveStateMachine.h"
#include "platform/VeskMessages.h"
#include "station/log/LogControl.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"
#include "unit/Eventually.h"

// The two entries that the agent exports, defined here so that the station finds them in this
// program by name.
extern "C" {
int boamSetAttributeReponseStatus = 1;
std::atomic<int> g_validationAnswers{0};
std::atomic<int> g_lastValidation{-1};
void vesk_cm_frequencyValidationResponse(int valid) {
    g_lastValidation = valid;
    ++g_validationAnswers;
}
}

namespace {

using vesk::test::eventually;
using namespace VESK::Messages;
using VESK::Framework::Event;
using VESK::Framework::EventWithMessage;
using VESK::Framework::ReactiveStateMachine;
namespace Messaging = VESK::Framework::Messaging;

// Handles the answer events in stReady (2000) like the agent's machines: reads, then deletes.
class AnswerMachine : public ReactiveStateMachine {
  public:
    AnswerMachine() : ReactiveStateMachine(1998, 1999, nullptr) {}
    ~AnswerMachine() override {
        Messaging::unsubscribeInbound(this);
        stopQueue();
    }
    int processEvent(Event& event) override {
        if (event.eventId == 1000) {
            onEnter(1999);
            return 1;
        }
        if (event.eventId == 1001 && currentState == 1998) {
            onEnter(2000);
            return 1;
        }
        auto& e = static_cast<EventWithMessage&>(event);
        if (currentState != 2000 || e.message == nullptr) {
            onUnhandledEvent(event);
            return 0;
        }
        std::lock_guard<std::mutex> lock(mutex);
        received.emplace_back(event.eventId, e.message->messageId);
        if (auto* r = e.messageAs<VESK_BrMOperationResp>())
            operations.push_back(r->operation);
        delete e.message;
        return 1;
    }
    size_t count() {
        std::lock_guard<std::mutex> lock(mutex);
        return received.size();
    }
    std::mutex mutex;
    std::vector<std::pair<int, uint32_t>> received;
    std::vector<std::string> operations;
};

TEST(MessageBus, SendsSerialisedBytesToTheRegisteredComponentOnly) {
    vesk::log::LogCapture capture;
    VESK_ResetRBS reset;
    reset.resetCause = 27;
    EXPECT_EQ(0, Messaging::sendVeskMessage(9, reset, 1));
    EXPECT_EQ(1u,
              capture.count("Messaging: no component for destination 9, message 4123 not sent", 2));

    std::vector<std::unique_ptr<SerializableMessage>> got;
    std::vector<int> flags;
    vesk::station::registerComponent(9, [&](int dest, const uint8_t* data, size_t size, int flag) {
        std::string error;
        got.push_back(decodeMessage(data, size, error));
        flags.push_back(flag);
        return dest == 9;
    });
    EXPECT_NE(0, Messaging::sendVeskMessage(9, reset, 1));
    EXPECT_NE(0, Messaging::sendVeskMessage(9, &reset));
    EXPECT_EQ(0, Messaging::sendVeskMessage(9, nullptr));
    ASSERT_EQ(2u, got.size());
    ASSERT_NE(nullptr, got[0]);
    EXPECT_EQ(27, dynamic_cast<VESK_ResetRBS&>(*got[0]).resetCause);
    EXPECT_EQ((std::vector<int>{1, 0}), flags);
    EXPECT_EQ(0, Messaging::sendVeskMessage(6, reset));

    vesk::station::registerComponent(3, [](int, const uint8_t*, size_t, int) { return false; });
    VESK_FaultNotification fault;
    EXPECT_EQ(0, Messaging::sendVeskMessage_v2(3, fault, 1));
    EXPECT_EQ(1u, capture.count("Messaging: destination 3 refused message 4102", 2));

    vesk::station::unregisterComponent(9);
    vesk::station::unregisterComponent(3);
    EXPECT_EQ(0, Messaging::sendVeskMessage(9, reset));
    EXPECT_EQ(2u, got.size());
}

TEST(MessageBus, UnregisterWaitsForTheCallInProgress) {
    std::atomic<bool> inside{false}, finished{false};
    vesk::station::registerComponent(8, [&](int, const uint8_t*, size_t, int) {
        inside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        finished = true;
        return true;
    });
    std::thread sender([] { Messaging::sendVeskMessage(8, VESK_WriteAutointegrationLog()); });
    ASSERT_TRUE(eventually([&] { return inside.load(); }));
    vesk::station::unregisterComponent(8);
    EXPECT_TRUE(finished.load());
    sender.join();
}

TEST(InboundRouter, AnswersReachTheSubscribedMachineAsEventsOnce) {
    vesk::log::LogCapture capture;
    AnswerMachine brm, swm;
    for (AnswerMachine* m : {&brm, &swm}) {
        m->initializeStateMachine();
        m->start();
        m->enqueueEvent(Event(1001), false);
    }
    Messaging::subscribeInbound(VESK_BrMOperationResp::MESSAGE_ID, 1015, &brm);
    Messaging::subscribeInbound(VESK_InitialiseSWResp::MESSAGE_ID, 1014, &swm);
    Messaging::subscribeInbound(VESK_SwOssUpdateResp::MESSAGE_ID, 1016, &swm);

    VESK_BrMOperationResp brmAnswer;
    brmAnswer.operation = "confirmRestore";
    EXPECT_TRUE(vesk::station::deliverInbound(brmAnswer.serialize()));
    EXPECT_TRUE(vesk::station::deliverInbound(VESK_SwOssUpdateResp().serialize()));
    EXPECT_TRUE(vesk::station::deliverInbound(VESK_InitialiseSWResp().serialize()));
    ASSERT_TRUE(eventually([&] { return brm.count() == 1 && swm.count() == 2; }));
    EXPECT_EQ((std::vector<std::string>{"confirmRestore"}), brm.operations);
    EXPECT_EQ(std::make_pair(1016, 8197u), swm.received[0]);
    EXPECT_EQ(std::make_pair(1014, 4146u), swm.received[1]);

    // Bad input: bytes that do not decode, a request instead of an answer, a terminated machine.
    std::vector<uint8_t> bytes = brmAnswer.serialize();
    bytes.pop_back();
    EXPECT_FALSE(vesk::station::deliverInbound(bytes));
    EXPECT_EQ(1u, capture.countContaining("InboundRouter: message of " +
                                              std::to_string(bytes.size()) + " bytes not decoded",
                                          2));
    EXPECT_FALSE(vesk::station::deliverInbound(VESK_BrMOperationReq().serialize()));
    EXPECT_EQ(1u, capture.count("InboundRouter: message 4216 is no answer", 2));
    brm.enqueueEvent(Event(1000), false);
    ASSERT_TRUE(eventually([&] { return brm.hasTerminated(); }));
    EXPECT_FALSE(vesk::station::deliverInbound(brmAnswer.serialize()));
    EXPECT_EQ(1u, capture.count("InboundRouter: message 4217 not delivered, the machine refused "
                                "event 1015",
                                2));
    Messaging::unsubscribeInbound(&swm);
    EXPECT_FALSE(vesk::station::deliverInbound(VESK_SwOssUpdateResp().serialize()));
    EXPECT_EQ(1u, capture.count("InboundRouter: no machine takes message 8197", 2));
    EXPECT_EQ(1u, brm.count());
    EXPECT_EQ(2u, swm.count());
}

TEST(InboundRouter, AnswersWithoutEventsReachTheExportedEntries) {
    VESK_BoamSetAttributeResp boam;
    boam.status = -1;
    ASSERT_TRUE(vesk::station::deliverInbound(boam.serialize()));
    EXPECT_EQ(-1, vesk::boamStatusLoad(&boamSetAttributeReponseStatus));
    ASSERT_TRUE(vesk::station::deliverBoamSetAttributeStatus(0));

    // The agent polls the mailbox on its own thread while the station writes it.
    vesk::boamStatusStore(&boamSetAttributeReponseStatus, 1);
    std::thread peer([] { vesk::station::deliverBoamSetAttributeStatus(0); });
    EXPECT_TRUE(
        eventually([] { return vesk::boamStatusLoad(&boamSetAttributeReponseStatus) == 0; }));
    peer.join();

    int before = g_validationAnswers;
    VESK_ValidateFrequencyResp answer;
    answer.valid = true;
    ASSERT_TRUE(vesk::station::deliverInbound(answer.serialize()));
    EXPECT_EQ(1, g_lastValidation.load());
    ASSERT_TRUE(vesk::station::deliverFrequencyValidationAnswer(false));
    EXPECT_EQ(0, g_lastValidation.load());
    EXPECT_EQ(before + 2, g_validationAnswers.load());
}

}  // namespace

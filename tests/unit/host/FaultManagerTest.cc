// The fault manager peer over a scripted series of messages sent through the station's message
// bus, its file across a restart, and senders on other threads while the table is read.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "host/peers/FaultManager.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace {

using vesk::host::peers::FaultManager;

int sendFault(int code, int state, const std::string& cell) {
    VESK::Messages::VESK_FaultNotification message;
    message.faultId = code;
    message.faultState = state;
    message.additionalText = cell;
    return VESK::Framework::Messaging::sendVeskMessage_v2(3, message, 1);
}

// "code cell" of each active fault, in order.
std::string table(const FaultManager& manager) {
    std::string text;
    for (const auto& fault : manager.active())
        text += (text.empty() ? "" : " ") + std::to_string(fault.code) + fault.cell;
    return text;
}

TEST(FaultManager, KeepsWhatItWasToldAcrossARestart) {
    vesk::dbtest::TempDir dir;
    const std::string file = dir.path() + "/faults.json";
    const struct {
        const char* name;
        std::function<int()> send;
        bool refusing;
        int sent;
        std::string outcome, active;  // outcome "" when nothing is noted
    } rows[] = {
        {"Raise", [] { return sendFault(20745, 1, "A"); }, false, 1, "raised", "20745A"},
        {"RaiseAgain", [] { return sendFault(20745, 1, "A"); }, false, 1, "already active",
         "20745A"},
        {"OtherCode", [] { return sendFault(20752, 1, "A"); }, false, 1, "raised", "20745A 20752A"},
        {"ClearOfOtherCell", [] { return sendFault(20745, 0, "B"); }, false, 1, "not active",
         "20745A 20752A"},
        {"Refused", [] { return sendFault(20745, 0, "A"); }, true, 0, "refused", "20745A 20752A"},
        {"Clear", [] { return sendFault(20745, 0, "A"); }, false, 1, "cleared", "20752A"},
        {"UnknownState", [] { return sendFault(20745, 7, "A"); }, false, 0, "", "20752A"},
        {"OtherMessage",
         [] {
             return VESK::Framework::Messaging::sendVeskMessage(
                 3, VESK::Messages::VESK_WriteAutointegrationLog());
         },
         false, 0, "", "20752A"},
    };
    FaultManager manager(file);
    manager.attach();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const size_t before = manager.history().size();
        manager.setRefusing(row.refusing);
        EXPECT_EQ(row.send(), row.sent);
        ASSERT_EQ(manager.history().size(), before + (row.outcome.empty() ? 0 : 1));
        if (!row.outcome.empty()) {
            EXPECT_EQ(manager.history().back().outcome, row.outcome);
        }
        EXPECT_EQ(table(manager), row.active);
    }
    const uint8_t truncated[3] = {6, 16, 0};
    EXPECT_FALSE(manager.receive(truncated, sizeof truncated));
    manager.detach();
    EXPECT_EQ(sendFault(20745, 1, "C"), 0);  // no component any more

    FaultManager restarted(file);
    EXPECT_EQ(table(restarted), "20752A");
    EXPECT_EQ(restarted.active()[0].raised, manager.active()[0].raised);
    EXPECT_EQ(restarted.history().size(), 6u);

    std::ofstream(file) << "{\"active\": [{\"code\": \"x\"}]}";
    vesk::log::LogCapture capture;
    FaultManager unreadable(file);
    EXPECT_EQ(table(unreadable), "");
    EXPECT_TRUE(std::filesystem::exists(file + ".unreadable"));
    EXPECT_EQ(capture.countContaining("fault manager: cannot read " + file, VESK_LOG_ERROR), 1u);
}

// Senders on two threads while the table is read; the history keeps its last events.
TEST(FaultManager, SendersOnOtherThreads) {
    FaultManager manager("");
    manager.attach();
    auto send = [](const std::string& cell) {
        for (size_t i = 0; i < FaultManager::kHistoryLimit; ++i)
            sendFault(20745, static_cast<int>(i % 2 == 0), cell);
    };
    std::thread first(send, "A"), second(send, "B");
    while (manager.history().size() < FaultManager::kHistoryLimit)
        manager.active();
    first.join();
    second.join();
    EXPECT_EQ(manager.history().size(), FaultManager::kHistoryLimit);
    EXPECT_EQ(table(manager), "");
    EXPECT_EQ(manager.history().back().outcome, "cleared");
}

}  // namespace

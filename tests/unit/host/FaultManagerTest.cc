// The fault manager peer over a scripted series of messages sent through the station's message
// bus, an unreadable file, and senders on other threads while the table is read.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "host/peers/FaultManager.h"
#include "host/peers/Peers.h"
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

TEST(FaultManager, ScriptedNotifications) {
    vesk::dbtest::TempDir dir;
    const std::string file = dir.path() + "/faults.json";
    const struct {
        int code, state;
        const char* cell;
        const char* behaviour;
        int sent;
        std::string outcome, active;  // outcome "" when nothing is noted
    } rows[] = {
        {20745, 1, "A", "record", 1, "raised", "20745A"},
        {20745, 1, "A", "record", 1, "already active", "20745A"},
        {20752, 1, "A", "record", 1, "raised", "20745A 20752A"},
        {20745, 0, "B", "record", 1, "not active", "20745A 20752A"},
        {20745, 0, "A", "refuse", 0, "refused", "20745A 20752A"},
        {20745, 0, "A", "record", 1, "cleared", "20752A"},
        {20745, 7, "A", "record", 0, "", "20752A"},
    };
    auto peers = std::make_unique<vesk::host::peers::Peers>();
    auto* manager = static_cast<FaultManager*>(peers->add(std::make_unique<FaultManager>()));
    manager->keepIn(file);
    vesk::host::peers::Json result;
    std::string error;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.code) + row.cell + std::to_string(row.state));
        const size_t before = manager->history().size();
        ASSERT_TRUE(manager->command({row.behaviour}, &result, &error)) << error;
        EXPECT_EQ(sendFault(row.code, row.state, row.cell), row.sent);
        ASSERT_EQ(manager->history().size(), before + (row.outcome.empty() ? 0 : 1));
        if (!row.outcome.empty()) {
            EXPECT_EQ(manager->history().back().outcome, row.outcome);
        }
        EXPECT_EQ(table(*manager), row.active);
    }
    EXPECT_EQ(VESK::Framework::Messaging::sendVeskMessage(
                  3, VESK::Messages::VESK_WriteAutointegrationLog()),
              0);
    EXPECT_EQ(manager->show()["history"].size(), 6u);
    peers.reset();

    std::ofstream(file) << "{\"active\": [{\"code\": \"x\"}]}";
    vesk::log::LogCapture capture;
    FaultManager restarted;
    restarted.keepIn(file);
    EXPECT_EQ(table(restarted), "");
    EXPECT_TRUE(std::filesystem::exists(file + ".unreadable"));
    EXPECT_EQ(capture.countContaining("peer fault: cannot read " + file, VESK_LOG_ERROR), 1u);
}

// Senders on two threads while the table is read; the history keeps its last events.
TEST(FaultManager, SendersOnOtherThreads) {
    vesk::host::peers::Peers peers;
    auto* manager = static_cast<FaultManager*>(peers.add(std::make_unique<FaultManager>()));
    auto send = [](const std::string& cell) {
        for (size_t i = 0; i < FaultManager::kHistoryLimit; ++i)
            sendFault(20745, static_cast<int>(i % 2 == 0), cell);
    };
    std::thread first(send, "A"), second(send, "B");
    while (manager->history().size() < FaultManager::kHistoryLimit)
        manager->show();
    first.join();
    second.join();
    EXPECT_EQ(manager->history().size(), FaultManager::kHistoryLimit);
    EXPECT_EQ(table(*manager), "");
    EXPECT_EQ(manager->history().back().outcome, "cleared");
}

}  // namespace

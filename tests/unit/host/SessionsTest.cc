// Sessions: variables, the binding of each thread, and the callbacks.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "host/Sessions.h"

namespace {

using vesk::host::Sessions;

std::vector<std::string> g_seen;
void created(uint64_t session) {
    g_seen.push_back("created " + std::to_string(session));
}
void destroyed(uint64_t session) {
    g_seen.push_back("destroyed " + std::to_string(session));
}

TEST(SessionsTest, VariablesOfOpenSessionsOnly) {
    Sessions sessions;
    OrlMgmtSpiSession_1* record = sessions.record();
    uint64_t cli = sessions.open(vesk::host::kProtocolCli, "operator");
    int32_t protocol = -1;
    const char* user = nullptr;
    EXPECT_EQ(record->getVariable(cli, "TibSessionVariableProtocol_1", &protocol), OrlOk);
    EXPECT_EQ(protocol, 2);
    EXPECT_EQ(record->getVariable(cli, "TibSessionVariableUsername_1", &user), OrlOk);
    EXPECT_STREQ(user, "operator");
    EXPECT_EQ(record->getVariable(cli, "TibSessionVariableColour_1", &user), OrlNotExist);

    uint64_t made = 0;
    ASSERT_EQ(record->createSession(&made), OrlOk);
    EXPECT_EQ(record->getVariable(made, "TibSessionVariableProtocol_1", &protocol), OrlOk);
    EXPECT_EQ(protocol, 0);
    EXPECT_EQ(record->destroySession(made), OrlOk);
    EXPECT_EQ(record->getVariable(made, "TibSessionVariableProtocol_1", &protocol), OrlNotExist);
    EXPECT_EQ(record->destroySession(made), OrlNotExist);
}

TEST(SessionsTest, EachThreadHasItsOwnBinding) {
    Sessions sessions;
    OrlMgmtSpiSession_1* record = sessions.record();
    uint64_t mine = sessions.open(vesk::host::kProtocolNetconf, "icfa");
    uint64_t theirs = sessions.open(vesk::host::kProtocolCli, "other");
    uint64_t bound = 0;
    EXPECT_NE(record->getBoundSession(&bound), OrlOk);
    ASSERT_EQ(record->bindSession(mine), OrlOk);
    EXPECT_EQ(record->bindSession(12345), OrlNotExist);

    std::thread other([&] {
        uint64_t seen = 0;
        EXPECT_NE(record->getBoundSession(&seen), OrlOk) << "nothing bound on this thread";
        ASSERT_EQ(record->bindSession(theirs), OrlOk);
        EXPECT_EQ(record->getBoundSession(&seen), OrlOk);
        EXPECT_EQ(seen, theirs);
    });
    other.join();
    ASSERT_EQ(record->getBoundSession(&bound), OrlOk);
    EXPECT_EQ(bound, mine);

    // Closing a session ends its binding, also on a thread that did not close it.
    std::thread closer([&] { EXPECT_EQ(sessions.close(mine), OrlOk); });
    closer.join();
    EXPECT_NE(record->getBoundSession(&bound), OrlOk);
}

TEST(SessionsTest, CallbacksHearOpenAndCloseUntilUnregistered) {
    Sessions sessions;
    OrlMgmtSpiSession_1* record = sessions.record();
    g_seen.clear();
    uint64_t first = 0;
    uint64_t second = 0;
    ASSERT_EQ(record->registerSessionCallbacks(created, destroyed, &first), OrlOk);
    ASSERT_EQ(record->registerSessionCallbacks(created, nullptr, &second), OrlOk);
    EXPECT_NE(first, second);
    uint64_t session = sessions.open(1, "icfa");
    sessions.close(session);
    std::string s = std::to_string(session);
    EXPECT_EQ(g_seen, (std::vector<std::string>{"created " + s, "created " + s, "destroyed " + s}));

    EXPECT_EQ(record->unregisterSessionCallbacks(first), OrlOk);
    EXPECT_EQ(record->unregisterSessionCallbacks(first), OrlNotExist);
    EXPECT_EQ(record->unregisterSessionCallbacks(second), OrlOk);
    g_seen.clear();
    sessions.close(sessions.open(1, "icfa"));
    EXPECT_TRUE(g_seen.empty());
}

}  // namespace

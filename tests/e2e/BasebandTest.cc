// The forwarding of WCDMA attributes through the host to its baseband OAM peer (`peer boam`), on
// the demo station: what the baseband receives, stages, applies and drops, its refusals, its
// silence and its late answers, and a baseband that is not up or has no mapping.
#include <gtest/gtest.h>

#include <cstdlib>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "station/framework/FrameworkControl.h"

namespace {

using namespace vesk::e2e;

const std::string kNode = "ManagedElement=1,NodeBFunction=1";
const std::string kCell1 = kNode + ",NodeBLocalCellGroup=1,NodeBLocalCell=1";
const std::string kBasebandCell2 = kNode + ",NodeBLocalCellGroup=1,NodeBLocalCell=2";
const char* const kBasebandAttempts = "DOLM_NUM_OI_SETMOATTR_ATTEMPTS";

class BasebandTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        if (!HasFatalFailure())
            startAgentShell();
        vesk::station::setTimeScale(0.01);
    }
    void TearDown() override {
        unsetenv(kBasebandAttempts);
        vesk::station::setTimeScale(1);
        HostFixture::TearDown();
    }
    Json show() { return run("peer boam show")["result"]; }
    // The code of each command, ";"-joined.
    std::string codes(const std::string& commands) {
        std::string all;
        std::istringstream list(commands);
        for (std::string command; std::getline(list, command, ';');) {
            Json answer = run(command);
            all += (all.empty() ? "" : ";") + (answer.contains("code")
                                                   ? answer["code"].get<std::string>()
                                                   : std::string(answer["ok"] ? "ok" : "error"));
        }
        return all;
    }
    // The messages received since record `from`, without their times.
    Json received(size_t from) {
        Json all = show()["received"], some = Json::array();
        for (size_t i = from; i < all.size(); ++i) {
            all[i].erase("time");
            some.push_back(all[i]);
        }
        return some;
    }
};

// Before the agent has seen the baseband up: once seen, it stays so for the agent.
TEST_F(BasebandTest, NotUpPassesWithoutMessageAndNoMappingRefuses) {
    ASSERT_TRUE(IDatabase::setAttribute("BOAM", 1, "state", AttributeVariant(1), false,
                                        IPCData::AVT_INT32, true, 0));
    EXPECT_EQ(codes("begin;set " + kCell1 + " eulMaxOwnUuLoad 50;commit"), "OrlOk;OrlOk;OrlOk");
    EXPECT_EQ(received(0), Json::array());
    ASSERT_TRUE(IDatabase::setAttribute("BOAM", 1, "state", AttributeVariant(2), false,
                                        IPCData::AVT_INT32, true, 0));
    ASSERT_TRUE(IDatabase::deleteObj("BOMOMapping", 1, 0));
    EXPECT_EQ(codes("begin;set " + kCell1 + " eulMaxOwnUuLoad 60;abort"), "OrlOk;OrlFailure;OrlOk");
    EXPECT_EQ(received(0), Json::array());
    EXPECT_EQ(run("get " + kCell1 + " eulMaxOwnUuLoad")["result"]["eulMaxOwnUuLoad"], 50);
}

TEST_F(BasebandTest, SetsAreStagedAppliedAtCommitAndDroppedAtAbort) {
    EXPECT_EQ(codes("begin;set " + kCell1 + " eulMaxOwnUuLoad 65;set " + kCell1 +
                    " eAgchMaxPower -100;set " + kNode + " eulMaxAllowedSchRate 4000;set " +
                    kCell1 + " userLabel west"),
              "OrlOk;OrlOk;OrlOk;OrlOk;OrlOk");
    Json sets = received(0);
    ASSERT_EQ(sets.size(), 3u) << "userLabel is not the baseband's";
    const std::string txId = sets[0]["transactionId"].dump();
    EXPECT_EQ(sets[0], Json::parse(R"({"message":"set","transactionId":)" + txId +
                                   R"(,"class":130,"attributeId":4126,"values":{
        "localThermalNoise":-1048,"eulMaxOwnUuLoad":65,"hsuLoadIncreaseStarvingUes":7,
        "eulMaxRoTCoverage":120},"answer":"accepted"})"));
    EXPECT_EQ(show()["staged"][txId].size(), 3u);

    EXPECT_EQ(codes("commit"), "OrlOk");
    const std::string commit = R"({"message":"commit","transactionId":)" + txId + ",\"class\":";
    EXPECT_EQ(received(3),
              Json::parse("[" + commit + R"(130,"applied":2},)" + commit + R"(132,"applied":1}])"));
    Json applied = show()["applied"];
    ASSERT_EQ(applied.size(), 3u);
    EXPECT_EQ(applied[1]["values"], Json::parse(R"({"eAgchMinPower":-140,"eAgchMaxPower":-100})"));
    EXPECT_EQ(applied[2]["values"]["eulMaxAllowedSchRate"], 4000);
    EXPECT_EQ(show()["staged"], Json::object());

    // An abort: one cancel, the baseband holds nothing new.
    EXPECT_EQ(codes("begin;set " + kBasebandCell2 + " eHichMinPower2msTti -70;abort"),
              "OrlOk;OrlOk;OrlOk");
    Json aborted = received(6);
    ASSERT_EQ(aborted.size(), 1u);
    EXPECT_EQ(aborted[0]["dropped"], 1);
    EXPECT_EQ(show()["applied"], applied);
    EXPECT_EQ(show()["staged"], Json::object());
}

TEST_F(BasebandTest, RefusalsMinimumAboveMaximumSilenceAndLateAnswers) {
    EXPECT_EQ(
        codes("peer boam strict;begin;set " + kBasebandCell2 + " eRgchMaxPower -130;set " +
              kBasebandCell2 + " eRgchMinPower -110;set " + kBasebandCell2 + " eRgchMinPower -135"),
        "ok;OrlOk;OrlOk;OrlValidationFailed;OrlOk");
    EXPECT_EQ(codes("peer boam refuse;set " + kBasebandCell2 + " eulMaxRoTCoverage 90;abort"),
              "ok;OrlFailure;OrlOk");
    Json refused = received(0);
    ASSERT_EQ(refused.size(), 5u);
    EXPECT_EQ(refused[1]["answer"], "refused");
    EXPECT_EQ(refused[3]["answer"], "refused");
    EXPECT_EQ(refused[4]["message"], "cancel");
    EXPECT_EQ(refused[4]["dropped"], 1) << "the pair, staged once";

    // Silent: each attempt waits its second, the host's attempts end the set.
    setenv(kBasebandAttempts, "2", 1);
    EXPECT_EQ(codes("peer boam silent;begin;set " + kCell1 + " eHichMaxPower -120"),
              "ok;OrlOk;OrlTryAgain");
    Json silent = received(5);
    ASSERT_EQ(silent.size(), 2u);
    EXPECT_EQ(silent[0]["transactionId"], silent[1]["transactionId"]);
    EXPECT_EQ(silent[1]["answer"], "none");
    EXPECT_EQ(codes("get " + kCell1 + " eHichMaxPower"), "OrlOk") << "the host answers";

    // Late: the answer comes after the wait has ended and is not taken; nor is it taken as the
    // answer to the next request, whose send empties the mailbox first.
    setenv(kBasebandAttempts, "1", 1);
    vesk::station::setTimeScale(0.1);
    EXPECT_EQ(codes("peer boam late 5000;set " + kCell1 + " eHichMaxPower -121"), "ok;OrlTryAgain");
    EXPECT_TRUE(eventually([&] {
        return show()["received"].back()["answer"].get<std::string>().rfind("accepted, sent", 0) ==
               0;
    }));
    EXPECT_EQ(codes("peer boam silent;set " + kCell1 + " eHichMaxPower -122"), "ok;OrlTryAgain");
    EXPECT_EQ(codes("peer boam accept;set " + kCell1 + " eHichMaxPower -123;abort"),
              "ok;OrlOk;OrlOk");
    EXPECT_EQ(received(9).back()["message"], "cancel");
    EXPECT_EQ(show()["staged"], Json::object()) << "the cancel drops the late one too";
}

}  // namespace

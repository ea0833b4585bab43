// MO actions of the real agent on the demo station, through the host's `action` command: every
// row of the dispatch by dn, name and AI phase, with what the station's peers (reset component,
// WiFi module, security component) saw; the reset component restarting the agent once the
// transaction is over; the write outside the transaction; and input the host refuses.
#include <gtest/gtest.h>

#include "e2e/HostFixture.h"
#include "station/database/ISecControl.h"

namespace {

using namespace vesk::e2e;

const std::string kUnit = "ManagedElement=1,Equipment=1,RbsUnit=1";
const std::string kActionWifi = kUnit + ",WifiModule=1";
const std::string kSwM = "ManagedElement=1,SystemFunctions=1,SwM=1";
const std::string kActionCertM = "ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1";
const std::string kExtEnb = kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1";
const std::string kActionFrequency = kEnb + ",EUtraNetwork=1,EUtranFrequency=1";
const char* const kNotYet = "changeFrequency action not supported yet for this MO.";

class ActionTest : public HostFixture {
  protected:
    void SetUp() override {
        vesk::isec::reset();
        HostFixture::SetUp();
        if (!HasFatalFailure())
            startAgentShell();
    }
    void TearDown() override {
        HostFixture::TearDown();
        vesk::isec::reset();
    }
    Json show(const std::string& peer) { return run("peer " + peer + " show")["result"]; }
    // What the peers took since `before` (their shows then), one word a record.
    std::string traffic(const Json& before) {
        std::string text;
        for (const char* peer : {"reset", "sec"}) {
            Json now = show(peer);
            for (size_t i = before[peer].size(); i < now.size(); ++i) {
                Json record = now[i];
                record.erase("time");
                text += std::string(text.empty() ? "" : " ") + peer + record.dump();
            }
        }
        if (show("wifi") != before["wifi"])
            text += std::string(text.empty() ? "" : " ") + "wifi" + show("wifi").dump();
        return text;
    }
    Json shows() {
        return Json{{"reset", show("reset")}, {"sec", show("sec")}, {"wifi", show("wifi")}};
    }
};

// The rows run in order on one station; each sets the phase and the peers' behaviours first.
TEST_F(ActionTest, EveryRowOfTheDispatchByDnNameAndPhase) {
    ASSERT_EQ(
        run("create " + kExtEnb + " ExternalEUtranCellTDD=9 localCellId=9 eutranFrequencyRef=" +
            kActionFrequency)["code"],
        "OrlOk");
    struct Row {
        int phase;
        const char* behaviours;  // peer commands run before
        std::string action;
        const char* code;
        const char* result;  // JSON
        const char* message;
        std::string traffic;
    };
    const Row rows[] = {
        // The unit's resets, and the gate that only "resetToFactory" passes below phase 4.
        {3, "", kUnit + " resetToFactory", "OrlOk", "null", "",
         R"(reset{"cause":3,"kind":1,"text":"","parameter":-1})"},
        {3, "", kUnit + " restart", "OrlTryAgain", R"({"result":false})", "", ""},
        {4, "", kUnit + " restart", "OrlOk", "null", "",
         R"(reset{"cause":4,"kind":1,"text":"","parameter":-1})"},
        {4, "peer reset refuse", kUnit + " resetToFactory", "OrlFailure", "null", "",
         R"(reset{"cause":3,"kind":1,"text":"","parameter":-1,"refused":true})"},
        {4, "peer reset refuse", kUnit + " restart", "OrlFailure", "null", "",
         R"(reset{"cause":4,"kind":1,"text":"","parameter":-1,"refused":true})"},
        // The WiFi module overwrites the refusal every other dn gets first.
        {3, "", kActionWifi + " resetToFactory", "OrlOk", "null", "",
         R"(wifi{"factoryResets":1,"restarts":0,"lastRestartMode":-1})"},
        {3, "", kActionWifi + " restart restartRank=2", "OrlTryAgain", R"({"result":false})", "",
         ""},
        {4, "", kActionWifi + " restart restartRank=2", "OrlOk", "null", "",
         R"(wifi{"factoryResets":1,"restarts":1,"lastRestartMode":2})"},
        {4, "peer wifi fail", kActionWifi + " resetToFactory", "OrlFailure", "null", "",
         R"(wifi{"factoryResets":2,"restarts":1,"lastRestartMode":2})"},
        // Software management: an unknown name only tells the operator.
        {4, "", kSwM + " cancel", "OrlFailure", "null", "Action is not supported", ""},
        // Certificates go to the security component with their attributes.
        {4, "", kActionCertM + " installTrustedCertFromUri uri=sftp://ca fingerprint=ab:cd",
         "OrlOk", R"({"ok":true})", "",
         R"(sec{"action":"installTrustedCertFromUri","dn":")" + std::string(kActionCertM) +
             R"(","attributes":{"fingerprint":"ab:cd","uri":"sftp://ca"}})"},
        {4, "peer sec fail", kActionCertM + " installTrustedCertFromUri uri=x", "OrlFailure",
         R"({"ok":false})", "", ""},
        // Frequency change: a class the engine does not know is told in a message; an own cell's
        // change commits with the reset (and takes the unknown external cell, a user of its old
        // frequency without relations, along); external cells then wait for the restart.
        {4, "", kExtEnb + ",ExternalEUtranCellTDD=9 changeFrequency earfcn=100", "OrlOk", "null",
         kNotYet, ""},
        {4, "", kCell + " changeFrequency earfcn=100", "OrlOk", "null", "",
         R"(reset{"cause":27,"kind":1,"text":"","parameter":-1})"},
        {4, "", kExtEnb + ",ExternalEUtranCellFDD=1 changeFrequency earfcn=100", "OrlFailure",
         "null", "", ""},
        {4, "",
         kEnb + ",UtraNetwork=1,UtranFrequency=1,ExternalUtranCellFDD=1 changeFrequency earfcn=9",
         "OrlFailure", "null", "", ""},
        {4, "", kCell + " setMaxNoOfCellRelations maxNoOfCellRelations=77", "OrlOk", "null", "",
         ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.action);
        run("phase " + std::to_string(row.phase));
        for (const char* peer : {"reset record", "wifi ok", "sec ok"})
            run(std::string("peer ") + peer);
        if (*row.behaviours)
            run(row.behaviours);
        Json before = shows();
        Json answer = run("action " + row.action);
        EXPECT_EQ(answer["code"], row.code) << answer.dump();
        EXPECT_EQ(answer["result"], Json::parse(row.result));
        EXPECT_EQ(answer["messages"], *row.message ? Json::array({row.message}) : Json::array());
        EXPECT_EQ(traffic(before), row.traffic);
    }
    EXPECT_EQ(run("get " + kCell + " maxNoOfCellRelations")["result"]["maxNoOfCellRelations"], 77);
}

// The agent comes back from a restart it asked for, after the transaction, on the same data: a
// new library, whose gates have not yet seen the integrated phase.
TEST_F(ActionTest, TheResetComponentRestartsTheAgentOnceTheTransactionIsOver) {
    ok("set " + kCell + " userLabel kept");
    ok("peer reset restart");
    ok("begin");
    ok("action " + kUnit + " restart");
    EXPECT_EQ(show("reset")[0]["restart"], "due");
    ok("commit");
    Json reset = show("reset")[0];
    EXPECT_EQ(reset["cause"], 4);
    EXPECT_EQ(reset["restart"].get<std::string>().rfind("done at ", 0), 0u) << reset.dump();
    EXPECT_EQ(run("get " + kCell + " userLabel")["result"]["userLabel"], "kept");
    // The library that saw phase 4 let writes pass below it; the new one has not seen it.
    ok("phase 3");
    EXPECT_EQ(run("set " + kCell + " userLabel lost")["code"], "OrlTryAgain");
    // A reset in a transaction that is aborted restarts as well.
    ok("begin");
    ok("action " + kUnit + " resetToFactory");
    ok("abort");
    EXPECT_EQ(show("reset")[1]["restart"].get<std::string>().rfind("done at ", 0), 0u);
    EXPECT_EQ(run("get " + kCell + " userLabel")["result"]["userLabel"], "kept");
}

TEST_F(ActionTest, TheCellRelationLimitIsWrittenOutsideTheTransaction) {
    ok("begin");
    ok("set " + kCell + " userLabel dropped");
    ok("action " + kCell + " setMaxNoOfCellRelations maxNoOfCellRelations=5");
    ok("abort");
    Json cell = run("get " + kCell + " maxNoOfCellRelations userLabel")["result"];
    EXPECT_EQ(cell["maxNoOfCellRelations"], 5);
    EXPECT_NE(cell["userLabel"], "dropped");
}

// One line each, and neither the action nor any peer is reached.
TEST_F(ActionTest, InputTheModelRefusesNeverReachesTheAgent) {
    const std::pair<std::string, std::string> cases[] = {
        {kUnit + ",WifiModule=2 resetToFactory", "no MO " + kUnit + ",WifiModule=2"},
        {kUnit + " reboot",
         "class RbsUnit has no action 'reboot' (its actions: resetToFactory, "
         "restart)"},
        {kCell + " changeFrequency",
         "earfcn of changeFrequency is mandatory: give it as "
         "earfcn=VALUE"},
        {kCell + " changeFrequency channel=5",
         "changeFrequency has no parameter 'channel' (it "
         "takes earfcn)"},
        {kCell + " changeFrequency earfcn=5 earfcn=6", "earfcn is given twice"},
        {kCell + " changeFrequency 5", "a parameter must be written PARAM=VALUE, not '5'"},
        {kUnit + " resetToFactory force=yes",
         "resetToFactory has no parameter 'force' (it takes "
         "none)"},
    };
    Json before = shows();
    for (const auto& c : cases) {
        Json answer = run("action " + c.first);
        EXPECT_EQ(answer["error"], c.second) << answer.dump();
        EXPECT_EQ(answer.value("code", "OrlOk"), "OrlOk");
    }
    Json typed = run("action " + kCell + " changeFrequency earfcn=high");
    EXPECT_EQ(typed["error"].get<std::string>().rfind("earfcn: value 'high' does not fit", 0), 0u)
        << typed.dump();
    EXPECT_EQ(traffic(before), "");
}

class ActionProgramTest : public StationProgramFixture {};

// The operator's view: codes, the result in the command line's syntax, messages, and the peers.
TEST_F(ActionProgramTest, AnswersInTextAndJson) {
    Outcome text = agent("phase 3; action " + kUnit + " resetToFactory; action " + kUnit +
                             " restart; phase 4; action " + kSwM + " cancel; peer",
                         "--log-level error");
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("OrlOk\n"), std::string::npos) << text.out;
    EXPECT_NE(
        text.out.find("OrlTryAgain: action restart of " + kUnit + " refused\nresult: false\n"),
        std::string::npos)
        << text.out;
    EXPECT_NE(text.out.find("OrlFailure: action cancel of " + kSwM + " refused\n"),
              std::string::npos)
        << text.out;
    EXPECT_NE(text.out.find("message: Action is not supported\n"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("{name=reset, behaviour=record, destination=9, "
                            "usage=show|record|restart|refuse}"),
              std::string::npos)
        << text.out;
    Outcome json = agent("phase 3; action " + kUnit + " resetToFactory; peer reset show", "--json");
    std::vector<Json> answers = json.answers();
    ASSERT_EQ(answers.size(), 3u) << json.out;
    EXPECT_EQ(answers[1]["code"], "OrlOk");
    EXPECT_EQ(answers[2]["result"][0]["cause"], 3);
    EXPECT_EQ(answers[2]["result"][0]["kind"], 1);
}

}  // namespace

// The operator's command line of vesk-host, run as a child process with the real agent on the
// demo station: answers in the model's terms (parsed back from --json), transactions, bad
// input, --strict exit statuses, and a transaction left open at exit.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "e2e/HostFixture.h"

namespace {

using namespace vesk::e2e;

const std::string kFrequency = kEnb + ",EUtraNetwork=1,EUtranFrequency=1";
const std::string kRelation = kCell + ",EUtranFreqRelation=1";

class HostCliTest : public StationProgramFixture {
  protected:
    // Runs vesk-host on the demo station with `arguments`, input from `input` (or none).
    Outcome host(const std::string& arguments, const std::string& input = "") {
        return program("--state " + _dir + "/state --log-level warning " + arguments, input);
    }
    // Runs `commands` with -c on the agent.
    Outcome run(const std::string& commands, const std::string& options = "") {
        return agent(commands, "--log-level warning " + options);
    }
};

// Reads, walks and counts in one transaction, and a missing MO, in one run.
TEST_F(HostCliTest, ReadsShowValuesInTheModelsTermsAndAMissingMoIsNamed) {
    const std::string missing = kEnb + ",EUtranCellFDD=9";
    std::vector<Json> a =
        answers("get " + kCell + " administrativeState earfcndl cellId; get " + kEnb +
                    " eNodeBPlmnId; get " + kFrequency + " reservedBy; get " + kRelation +
                    " eutranFrequencyRef blackListEntry; get " + kCell + "; begin; ls " + kEnb +
                    " EUtranCellFDD; count " + kEnb + " EUtranCellFDD; exists " + kCell +
                    "; exists " + missing + "; status; ls " + kEnb +
                    " EUtranCellTDD; commit; status; get " + missing + " cellId; ls " + missing +
                    " EUtranFreqRelation; count " + missing + " EUtranFreqRelation",
                17);
    for (size_t i = 0; i < 14; ++i)
        EXPECT_EQ(a[i]["ok"], true) << a[i].dump();
    for (size_t i = 0; i < 5; ++i) {  // the agent was asked
        EXPECT_EQ(a[i]["code"], "OrlOk") << a[i].dump();
        EXPECT_EQ(a[i]["rc"], 0);
    }
    EXPECT_EQ(a[0]["result"].dump(),
              R"({"administrativeState":"UNLOCKED","earfcndl":6300,"cellId":1})");
    EXPECT_EQ(a[1]["result"]["eNodeBPlmnId"], Json::parse(R"({"mcc":244,"mnc":91,"mncLength":2})"));
    EXPECT_EQ(a[2]["result"]["reservedBy"].size(), 4u) << a[2].dump();
    EXPECT_EQ(a[3]["result"]["eutranFrequencyRef"], kFrequency);
    EXPECT_EQ(a[3]["result"]["blackListEntry"], Json::parse(R"([{"startPci":100,"pciRange":4}])"));
    // All attributes of the class, key first.
    EXPECT_EQ(a[4]["result"].begin().key(), "eUtranCellFDDId");
    EXPECT_EQ(a[4]["result"]["operationalState"], "ENABLED");
    EXPECT_EQ(a[6]["result"], Json::parse("[\"" + kEnb + ",EUtranCellFDD=1\", \"" + kEnb +
                                          ",EUtranCellFDD=2\", \"" + kEnb + ",EUtranCellFDD=3\"]"));
    EXPECT_EQ(a[7]["result"], 3);
    EXPECT_EQ(a[8]["result"], true);
    EXPECT_EQ(a[9]["result"], false);
    EXPECT_TRUE(a[10]["result"]["transaction"].is_number()) << a[10].dump();
    // No instances: nothing walked, not even what the first walk left behind.
    EXPECT_EQ(a[11]["result"], Json::array());
    EXPECT_EQ(a[12]["code"], "OrlOk");
    EXPECT_EQ(a[12]["notes"][0],
              "transaction " + a[10]["result"]["transaction"].dump() + " committed");
    EXPECT_EQ(a[13]["result"]["transaction"], "none");
    for (size_t i = 14; i < 17; ++i) {
        EXPECT_FALSE(a[i]["ok"].get<bool>());
        EXPECT_EQ(a[i]["error"], "no MO " + missing);
        EXPECT_EQ(a[i]["code"], "OrlOk") << "the agent's own answer to the question";
    }
    EXPECT_EQ(run("get " + missing).out, "error: no MO " + missing + "\n");
    EXPECT_EQ(run("get " + missing, "--strict").status, 8);
}

TEST_F(HostCliTest, BadInputGetsOneLineAndTheAgentIsNotAsked) {
    Outcome o = run("get ManagedElement=1,Nothing=1; get " + kCell + " nope; get " + kEnb +
                    ",EUtranCellFDD; ls " + kEnb + "; count " + kEnb +
                    " Equipment; frobnicate; commit; abort; help ls");
    EXPECT_EQ(o.status, 0) << "no --strict";
    EXPECT_EQ(o.out,
              "error: unknown class 'Nothing'\n"
              "error: unknown attribute 'nope' of class EUtranCellFDD\n"
              "error: malformed dn '" +
                  kEnb +
                  ",EUtranCellFDD': 'EUtranCellFDD' is not Class=id\n"
                  "error: usage: ls DN CLASS\n"
                  "error: class 'Equipment' is not a child class of ENodeBFunction\n"
                  "error: unknown command 'frobnicate' (try help)\n"
                  "error: no transaction is open\n"
                  "error: no transaction is open\n"
                  "ls DN CLASS           list the children of class CLASS of an MO\n");
    EXPECT_EQ(o.err.find("VeskMoImpl"), std::string::npos) << o.err;
}

TEST_F(HostCliTest, StrictStopsAtTheFirstFailure) {
    Outcome o = run("status; get " + kCell + " nope; status", "--strict --json");
    EXPECT_EQ(o.status, 8);
    std::vector<Json> a = o.answers();
    ASSERT_EQ(a.size(), 2u) << o.out;
    EXPECT_TRUE(a[0]["ok"].get<bool>());
    EXPECT_FALSE(a[1]["ok"].get<bool>());
    EXPECT_EQ(a[1]["error"], "unknown attribute 'nope' of class EUtranCellFDD");
    EXPECT_FALSE(a[1].contains("code")) << "the agent was not asked";

    // A script stops the same way; a failure without --strict does not change the status.
    std::ofstream(_dir + "/script") << "# comment\nstatus\nexists Bad\nstatus\n";
    Outcome script =
        host(std::string("--plugin ") + VESK_AGENT_PATH + " --strict --script " + _dir + "/script");
    EXPECT_EQ(script.status, 8);
    EXPECT_EQ(script.out.find("vesk> status\ntransaction: none\n"), 0u) << script.out;
    EXPECT_NE(script.out.find("vesk> exists Bad\nerror: malformed dn 'Bad': 'Bad' is not "
                              "Class=id\n"),
              std::string::npos);
    EXPECT_EQ(script.out.find("transaction: none", 20), std::string::npos) << "stopped";
    Outcome lenient =
        host(std::string("--plugin ") + VESK_AGENT_PATH + " --script " + _dir + "/script");
    EXPECT_EQ(lenient.status, 0);
    Outcome missing =
        host(std::string("--plugin ") + VESK_AGENT_PATH + " --script " + _dir + "/none");
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("vesk-host: cannot read script " + _dir + "/none"),
              std::string::npos);
}

TEST_F(HostCliTest, SessionOptionsAndInputLines) {
    Outcome o = host(std::string("--plugin ") + VESK_AGENT_PATH + " --protocol netconf --user oss",
                     "status\n\nquit\nstatus\n");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out,
              "vesk-host: up, components: VESKCMSAcomponent VESKOIcomponent\n"
              "transaction: none\nopen transactions: 0\nprotocol: netconf\nuser: oss\n"
              "agent: VESKCMSAcomponent\n"
              "components: [VESKCMSAcomponent, VESKOIcomponent]\n"
              "events: {producers=1, consumers=[{consumer=1, name=journal, filters=[[]], "
              "queued=0, delivered=0}], journal={kept=0, capacity=1000, recorded=0}}\n")
        << "quit ends the input";
    Outcome none = run("status", "--protocol none --json");
    ASSERT_EQ(none.answers().size(), 1u);
    EXPECT_EQ(none.answers()[0]["result"]["protocol"], "none");
    Outcome bad = run("status", "--protocol telnet");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("vesk-host: unknown protocol 'telnet' (netconf, cli or none)"),
              std::string::npos);
}

TEST_F(HostCliTest, ATransactionOpenAtExitIsAborted) {
    Outcome o = run("begin; get " + kCell + " cellId");
    EXPECT_EQ(o.status, 0) << o.err;
    std::istringstream lines(o.out);
    std::vector<std::string> out;
    for (std::string line; std::getline(lines, line);) {
        out.push_back(line);
    }
    ASSERT_EQ(out.size(), 6u) << o.out;
    EXPECT_EQ(out[0], "OrlOk");
    std::string tx = out[1].substr(12, out[1].find(' ', 12) - 12);
    EXPECT_EQ(out[1], "transaction " + tx + " open");
    EXPECT_EQ(out[3], "cellId: 1");
    EXPECT_EQ(out[4], "OrlOk");
    EXPECT_EQ(out[5], "transaction " + tx + " was open at exit: aborted");
}

}  // namespace

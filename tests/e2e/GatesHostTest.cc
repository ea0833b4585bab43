// The write road of the operator's command line through the real agent, with vesk-host run as a
// child process on the demo station loaded at AI phase 3: which session may change what before
// the station is integrated, the latch once it is, and the host's own implementers delaying or
// stopping a write, each seen in the answers, the station's values and the agent's log.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "e2e/HostFixture.h"

namespace {

using namespace vesk::e2e;

const std::string kNewCell = kEnb + ",EUtranCellFDD=9";
const std::string kPhaseLine =
    "VeskMoImpl::IsDatabaseChangeAllowed()-> AI phase is 3, AI_completed not yet reached, "
    "checking MOM change exception cases.\n";
const std::string kIcfLine = "VeskMoImpl::IsDatabaseChangeAllowed()-> AIM icf parsing ongoing\n";

size_t occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// The refusal lines of the gates, as the agent logs them (each ends in a blank).
std::string setRefused(const std::string& attribute, const std::string& dn, int phase) {
    return "VeskMoImpl::setMoAttribute(): Cannot set attribute " + attribute + ", MO " + dn +
           ", AI_phase is " + std::to_string(phase) + " \n";
}
std::string deleteRefused(int phase) {
    return "VeskMoImpl::deleteMo(): Cannot delete MO, AI_phase is " + std::to_string(phase) + " \n";
}

// Seconds of the day of a log line's stamp ("2026-11-23T13:30:39.123456Z ...").
double stampOf(const std::string& line) {
    return std::stoi(line.substr(11, 2)) * 3600.0 + std::stoi(line.substr(14, 2)) * 60.0 +
           std::stod(line.substr(17, 9));
}

// How long each call of the agent's setMoAttribute entry point took, in call order.
std::vector<double> setDurations(const std::string& log) {
    std::vector<double> durations;
    std::istringstream lines(log);
    double start = -1;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(">> vesk_cm_SetMoAttribute_3") != std::string::npos) {
            start = stampOf(line);
        } else if (line.find("<< vesk_cm_SetMoAttribute_3") != std::string::npos && start >= 0) {
            durations.push_back(stampOf(line) - start);
            start = -1;
        }
    }
    return durations;
}

class GatesHostTest : public ProgramFixture {
  protected:
    void SetUp() override {
        unsetenv("DOLM_NUM_OI_SETMOATTR_ATTEMPTS");
        ProgramFixture::SetUp();
        // The demo station's objects with the station still being integrated.
        std::string objects = slurp(VESK_DATA_DIR "/station/station-objects.xml");
        const std::string integrated = R"(name="AI_phase" type="3" value="4")";
        size_t at = objects.find(integrated);
        ASSERT_NE(at, std::string::npos);
        objects.replace(at, integrated.size(), R"(name="AI_phase" type="3" value="3")");
        std::ofstream(_dir + "/objects.xml") << objects;
        Outcome loaded =
            program("--state " + _dir +
                    "/state --load " VESK_DATA_DIR "/station/demo-station.xml --station-objects " +
                    _dir + "/objects.xml");
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
    // The `count` answers of `commands` on the agent, the log in the log file; the run in `o`.
    std::vector<Json> run(const std::string& commands, size_t count, const std::string& options,
                          Outcome* o, const std::string& level = "info") {
        return answers(commands, count,
                       "--log-file " + _dir + "/log --log-level " + level + " " + options, o);
    }
};

// One session of the operator's command line before the station is integrated, and which of a
// write of "userLabel", a write of "rbsConfigLevel", a creation and a deletion pass.
struct SessionRow {
    const char* label;
    const char* options;
    bool userLabel;
    bool configLevel;
    bool create;
};

void PrintTo(const SessionRow& row, std::ostream* out) {
    *out << row.label;
}

class GatesBelowIntegration : public GatesHostTest,
                              public ::testing::WithParamInterface<SessionRow> {};

TEST_P(GatesBelowIntegration, OnlyTheIntegrationAndTheNamedCasesPass) {
    const SessionRow& row = GetParam();
    Outcome o;
    const std::vector<Json> a = run(
        "set " + kCell + " userLabel gated; set ManagedElement=1 rbsConfigLevel " +
            "SITE_CONFIG_COMPLETE; create " + kEnb + " EUtranCellFDD=9 cellId=9 earfcndl=6300; " +
            "delete " + kEnb + ",EUtranCellFDD=3; get " + kCell + " userLabel; " +
            "get ManagedElement=1 rbsConfigLevel; exists " + kNewCell,
        7, row.options, &o);
    const bool passes[] = {row.userLabel, row.configLevel, row.create, false};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(a[i]["code"], passes[i] ? "OrlOk" : "OrlTryAgain") << a[i].dump();
    }
    EXPECT_EQ(a[4]["result"]["userLabel"], row.userLabel ? Json("gated") : Json());
    EXPECT_EQ(a[5]["result"]["rbsConfigLevel"], "SITE_CONFIG_COMPLETE");
    EXPECT_EQ(a[6]["result"], row.create);

    // The gate logs the phase at each write it judges (its refusal lines: GatesTest).
    EXPECT_EQ(occurrences(o.log, kPhaseLine), 3u) << o.log;
    const bool icfa = std::string(row.label) == "NetconfIcfa";
    EXPECT_EQ(occurrences(o.log, kIcfLine), icfa ? 3u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Sessions, GatesBelowIntegration,
    ::testing::Values(SessionRow{"NetconfOperator", "--protocol netconf", false, true, false},
                      SessionRow{"NetconfIcfa", "--protocol netconf --user icfa", true, true, true},
                      SessionRow{"CliIcfa", "--protocol cli --user icfa", false, true, false},
                      SessionRow{"NoSession", "--protocol none", true, true, true}),
    [](const ::testing::TestParamInfo<SessionRow>& info) { return info.param.label; });

TEST_F(GatesHostTest, ThePhaseReachingFourOpensSetsAndCreationsForTheRestOfTheRun) {
    Outcome o;
    const std::vector<Json> a = run(
        "set " + kCell + " userLabel early; phase 4; set " + kCell +
            " userLabel integrated; phase 3; set " + kCell + " userLabel latched; create " + kEnb +
            " EUtranCellFDD=9 cellId=9 earfcndl=6300; " + "delete " + kNewCell + "; get " + kCell +
            " userLabel; phase; phase 4; " + "delete " + kNewCell + "; exists " + kNewCell,
        12, "--protocol netconf", &o);
    EXPECT_EQ(a[0]["code"], "OrlTryAgain");
    EXPECT_EQ(a[1]["notes"][0], "AI_phase set to 4");
    EXPECT_EQ(a[2]["code"], "OrlOk") << a[2].dump();
    EXPECT_EQ(a[4]["code"], "OrlOk") << a[4].dump();
    EXPECT_EQ(a[5]["code"], "OrlOk") << a[5].dump();
    // Deletion reads the phase each time and knows no latch.
    EXPECT_EQ(a[6]["code"], "OrlTryAgain");
    EXPECT_EQ(a[7]["result"]["userLabel"], "latched");
    EXPECT_EQ(a[8]["result"], 3);
    EXPECT_EQ(a[10]["code"], "OrlOk") << a[10].dump();
    EXPECT_EQ(a[11]["result"], false);

    // Once latched the phase is not read again for sets and creations: one line, one refusal.
    EXPECT_EQ(occurrences(o.log, kPhaseLine), 1u) << o.log;
    EXPECT_EQ(occurrences(o.log, "Cannot set attribute"), 1u);
    EXPECT_EQ(occurrences(o.log, setRefused("userLabel", kCell, 3)), 1u);
    EXPECT_EQ(occurrences(o.log, deleteRefused(3)), 1u);
}

TEST_F(GatesHostTest, ImplementersDelayOrStopAWrite) {
    Outcome o;
    const std::vector<Json> a =
        run("phase 4; oi add dn " + kCell + " tryagain 2; set " + kCell +
                " userLabel west; oi set 1 ok; set " + kCell + " userLabel east; " +
                "oi add class " + kCellPath + " fail OrlValidationFailed; set " + kCell +
                " userLabel north; oi remove 2; oi set 1 fail OrlFailure; set " + kCell +
                " userLabel south; oi show 1; get " + kCell + " userLabel",
            12, "--protocol netconf", &o, "trace");
    // Two waits of half a second, then the write goes through; without waits it is quick.
    EXPECT_EQ(a[2]["code"], "OrlOk") << a[2].dump();
    EXPECT_EQ(a[4]["code"], "OrlOk") << a[4].dump();
    std::vector<double> durations = setDurations(o.log);
    ASSERT_EQ(durations.size(), 4u) << o.log;
    EXPECT_GE(durations[0], 0.8);
    EXPECT_LE(durations[0], 3.0);
    EXPECT_LT(durations[1], 0.4);
    EXPECT_EQ(occurrences(o.log,
                          "checkSetMoAttributeDnOI: Object Implementer's setMoAttribute() "
                          "returned:1...delaying 0,5 sec before continuing.\n"),
              2u);

    // A class implementer's refusal stops the write and tells the operator why.
    EXPECT_EQ(a[6]["code"], "OrlValidationFailed");
    EXPECT_EQ(a[6]["messages"], Json::array({"vesk-host-oi-2 refused setMoAttribute of " + kCell +
                                             " userLabel: OrlValidationFailed"}));
    EXPECT_EQ(occurrences(o.log,
                          "VeskMoImpl::checkSetMoAttributeClassOI(): Object "
                          "Implementer's setMoAttribute() returned failure: -9\n"),
              1u);
    // A dn implementer's refusal is only heard: the write stands.
    EXPECT_EQ(a[9]["code"], "OrlOk") << a[9].dump();
    EXPECT_EQ(a[9]["messages"].size(), 1u);

    const Json& seen = a[10]["result"];
    ASSERT_EQ(seen.size(), 6u) << seen.dump();
    const char* answers[] = {"OrlTryAgain", "OrlTryAgain", "OrlOk", "OrlOk", "OrlOk", "OrlFailure"};
    const char* values[] = {"west", "west", "west", "east", "north", "south"};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(seen[i]["answer"], answers[i]) << i;
        EXPECT_EQ(seen[i]["value"], values[i]) << i;
    }
    EXPECT_EQ(a[11]["result"]["userLabel"], "south");
}

TEST_F(GatesHostTest, TheTextAnswersShowRefusalsAndOperatorMessages) {
    Outcome o = agent("set " + kCell + " userLabel x; phase 4; oi add class " + kCellPath +
                          " fail -9; delete " + kNewCell + "; phase 4x; phase",
                      "--protocol netconf --log-level error");
    ASSERT_EQ(o.status, 0) << o.err;
    std::string refusal = "OrlTryAgain: cannot set userLabel of " + kCell + "\n";
    EXPECT_EQ(o.out.find(refusal), 0u) << o.out;
    EXPECT_NE(o.out.find("AI_phase set to 4\n4\n"), std::string::npos) << o.out;
    // The agent's line on the refusal comes with it, then the implementer's message.
    EXPECT_NE(o.out.find("OrlValidationFailed: cannot delete " + kNewCell + "\nreason: "),
              std::string::npos)
        << o.out;
    EXPECT_NE(o.out.find("\nmessage: vesk-host-oi-1 refused deleteMo of " + kNewCell +
                         ": OrlValidationFailed\n"),
              std::string::npos)
        << o.out;
    EXPECT_NE(o.out.find("\nerror: the phase is a whole number, not '4x'\n4\n"), std::string::npos)
        << o.out;
}

}  // namespace

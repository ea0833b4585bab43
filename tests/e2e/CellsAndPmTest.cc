// Cell priorities, the next operation mode and the PM rules of the real agent, through vesk-host
// on the demo station: cells FDD 1 and 2 unlocked with resources (1, 2), FDD 3 locked, WCDMA 1
// unlocked with resources (3), WCDMA 2 locked; PM jobs within their capabilities, and event jobs
// 10000 (stopped), 10001 (running) and 10005 (view only) of at most four.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "e2e/HostFixture.h"

namespace {

using namespace vesk::e2e;

const std::string kEp = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat";
const std::string kPm = "ManagedElement=1,SystemFunctions=1,Pm=1";

// $F an FDD cell, $W a WCDMA cell, $J an event job, $E the event producer, $P the PM function.
std::string expand(std::string text) {
    const std::pair<const char*, std::string> names[] = {
        {"$F", kEnb + ",EUtranCellFDD="},
        {"$W", "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell="},
        {"$J", kEp + ",EventJob="},
        {"$E", kEp},
        {"$P", kPm}};
    for (const auto& [name, value] : names) {
        for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at))
            text.replace(at, 2, value);
    }
    return text;
}

class CellsAndPm : public ProgramFixture {
  protected:
    void SetUp() override {
        ProgramFixture::SetUp();
        Outcome loaded =
            program("--state " + _dir + "/state --load " + kData + "/station/demo-station.xml");
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
    std::vector<Json> answers(const std::string& commands) {
        Outcome o = agent(expand(commands), "--json");
        EXPECT_EQ(o.status, 0) << o.err;
        return o.answers();
    }
};

// One step of a session: its commands with one letter per answer (O OrlOk, V OrlValidationFailed),
// then the committed priorities of F1 F2 F3 W1 W2 ("-" for a cell that is gone) and the mode.
struct Step {
    std::string commands;
    std::string codes;
    std::string priorities;
    const char* mode;
};
struct Session {
    const char* name;
    std::vector<Step> steps;
};
void PrintTo(const Session& s, std::ostream* out) {
    *out << s.name;
}

class CellSessions : public CellsAndPm, public ::testing::WithParamInterface<Session> {};

TEST_P(CellSessions, PrioritiesAndModeReadBackAfterEachCommit) {
    const std::string readBack =
        "; get $F1 priority; get $F2 priority; get $F3 priority; get $W1 priority; get $W2 "
        "priority; opmode";
    std::string commands;
    for (const Step& step : GetParam().steps)
        commands += (commands.empty() ? "" : "; ") + step.commands + readBack;
    const std::vector<Json> a = answers(commands);
    size_t i = 0;
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE(step.commands);
        for (char code : step.codes) {
            ASSERT_LT(i, a.size());
            EXPECT_EQ(a[i++].value("code", ""), code == 'O' ? "OrlOk" : "OrlValidationFailed");
        }
        std::string priorities;
        for (int cell = 0; cell < 5 && i < a.size(); ++cell, ++i) {
            const Json p = a[i].value(Json::json_pointer("/result/priority"), Json());
            priorities += (cell ? " " : "") + (p.is_number() ? std::to_string(int(p)) : "-");
        }
        EXPECT_EQ(priorities, step.priorities);
        ASSERT_LT(i, a.size());
        EXPECT_EQ(a[i++]["result"], step.mode);
    }
    EXPECT_EQ(i, a.size());
}

INSTANTIATE_TEST_SUITE_P(
    Cells, CellSessions,
    ::testing::Values(
        Session{"OneChangeAtATime",
                {{"set $F3 administrativeState UNLOCKED", "O", "1 2 4 3 10", "mixed"},
                 {"set $F1 administrativeState LOCKED", "O", "10 1 3 2 10", "mixed"},
                 {"set $W1 administrativeState LOCKED", "O", "10 1 2 10 10", "hc_lte"},
                 {"set $W2 administrativeState UNLOCKED", "O", "10 1 2 10 3", "mixed"},
                 {"delete $F2", "O", "10 - 1 10 2", "mixed"}}},
        Session{"OneTransaction",
                {{"begin; set $F1 administrativeState LOCKED; set $W1 administrativeState LOCKED; "
                  "set $F3 administrativeState UNLOCKED; abort",
                  "OOOOO", "1 2 10 3 10", "mixed"},
                 {"begin; set $F1 administrativeState LOCKED; set $W1 administrativeState LOCKED; "
                  "set $F3 administrativeState UNLOCKED; commit",
                  "OOOOO", "10 1 2 10 10", "hc_lte"},
                 {"begin; delete $W1; set $F1 administrativeState UNLOCKED; set $W2 "
                  "administrativeState UNLOCKED; commit",
                  "OOOOO", "2 1 3 - 4", "mixed"}}}),
    [](const ::testing::TestParamInfo<Session>& info) { return info.param.name; });

// The next operation mode is the station's: set by the agent's commit or by the operator, kept
// across restarts of the host.
TEST_F(CellsAndPm, OperationModeSurvivesARestart) {
    std::vector<Json> a = answers("set $W1 administrativeState LOCKED; opmode; opmode standby");
    ASSERT_EQ(a.size(), 3u);
    EXPECT_EQ(a[1]["result"], "hc_lte");
    EXPECT_EQ(a[2]["error"], "the operation mode is mixed or hc_lte, not 'standby'");
    a = answers("opmode; opmode mixed");
    ASSERT_EQ(a.size(), 2u);
    EXPECT_EQ(a[0]["result"], "hc_lte");
    EXPECT_EQ(a[1]["result"], "mixed");
    EXPECT_EQ(answers("opmode")[0]["result"], "mixed");
}

// What a PM job or event job asks for is refused when the station cannot do it, with the reason
// for the operator; an event job is repaired at commit, and a running one takes nothing but a new
// requested state.
TEST_F(CellsAndPm, JobsAreHeldToWhatTheStationCanDo) {
    struct Check {
        std::string command;
        std::string code;
        std::string message = "";  // the first operator message, or the first reason
        std::string attribute = "";
        Json value = nullptr;
    };
    const std::string reader =
        "MeasurementReader=1 \"measurementSpecification={measurementTypeRef=\\\"$P,PmGroup="
        "EUtranCellFDD,MeasurementType=";
    const std::string dangling =
        "\"eventFilter=[{filterName=nosuch, filterValue=7}, {filterName=cellIdFilter, "
        "filterValue=3}]\" \"eventTypeRef=[\\\"$E,EventType=gone\\\", "
        "\\\"$E,EventType=INTERNAL_PROC_RRC_CONN_SETUP\\\"]\"";
    const std::string running =
        "EventJob (currentJobState) is not in stopped state, operation is not allowed.";
    const std::vector<Check> checks = {
        {"create $P PmJob=hourly reportingPeriod=ONE_MIN", "OrlValidationFailed",
         "VeskPMOI::validateReportingPeriod Unsupported reportingPeriod set"},
        {"set $P,PmJob=cellTraffic granularityPeriod TEN_SECONDS", "OrlValidationFailed",
         "VeskPMOI::validateGranularityPeriod Unsupported granularityPeriod set"},
        {"set $P,PmJob=cellTraffic measurementSpecification \"measurementTypeRef=\\\"$P,"
         "PmGroup=EUtranCellFDD,MeasurementType=pmNoSuchCounter\\\"\"",
         "OrlValidationFailed",
         expand("VeskPMOI::validateMeasurementSpecification $P,PmGroup=EUtranCellFDD,"
                "MeasurementType=pmNoSuchCounter is not present in DB")},
        {"begin", "OrlOk"},
        {"create $P PmJob=hourly reportingPeriod=ONE_HOUR granularityPeriod=FIVE_MIN", "OrlOk"},
        {"create $P,PmJob=hourly " + reader + "pmCellDowntimeAuto\\\"}\"", "OrlOk"},
        {"commit", "OrlOk"},
        {"get $P,PmJob=hourly reportingPeriod", "OrlOk", "", "reportingPeriod", "ONE_HOUR"},
        {"create $E EventJob=10002 reportingPeriod=ONE_HOUR", "OrlValidationFailed",
         "Unsupported reportingPeriod set"},
        {"create $E EventJob=10002 " + dangling, "OrlOk"},
        {"get $J10002 eventFilter", "OrlOk", "", "eventFilter",
         Json::array({Json::object({{"filterName", "cellIdFilter"}, {"filterValue", "3"}})})},
        {"get $J10002 eventTypeRef", "OrlOk", "", "eventTypeRef",
         Json::array({expand("$E,EventType=INTERNAL_PROC_RRC_CONN_SETUP")})},
        {"get $J10002 jobGroup", "OrlOk", "", "jobGroup", "JG1"},
        {"create $E EventJob=10003", "OrlValidationFailed", "Maximum number of Event jobs reached"},
        {"set $J10001 reportingPeriod FIFTEEN_MIN", "OrlValidationFailed", running},
        {"set $J10001 eventFilter", "OrlValidationFailed", running},
        {"delete $J10001", "OrlValidationFailed",
         "jobControl value is 'STARTSTOP', delete operation is not allowed."},
        {"set $J10001 requestedJobState STOPPED", "OrlOk"},
        {"get $J10001 requestedJobState", "OrlOk", "", "requestedJobState", "STOPPED"},
        {"set $J10005 requestedJobState ACTIVE", "OrlValidationFailed",
         "jobControl value is 'VIEWONLY', set operation is not allowed."},
        {"set $J10000 jobGroup JG3", "OrlValidationFailed", "JobGroup 'JG3' is reserved for CCTR."},
        {"get $J10000 jobGroup", "OrlOk", "", "jobGroup", "JG1"},
    };
    std::string commands;
    for (const Check& check : checks)
        commands += (commands.empty() ? "" : "; ") + check.command;
    const std::vector<Json> a = answers(commands);
    ASSERT_EQ(a.size(), checks.size());
    for (size_t i = 0; i < a.size(); ++i) {
        const Check& check = checks[i];
        SCOPED_TRACE(check.command);
        EXPECT_EQ(a[i].value("code", ""), check.code) << a[i];
        if (!check.message.empty()) {
            const Json& said = a[i]["messages"].empty() ? a[i]["reasons"] : a[i]["messages"];
            EXPECT_EQ(said.empty() ? Json("") : said[0], check.message) << a[i];
        }
        if (!check.attribute.empty()) {
            EXPECT_EQ(a[i]["result"][check.attribute], check.value) << a[i];
        }
    }
}

}  // namespace

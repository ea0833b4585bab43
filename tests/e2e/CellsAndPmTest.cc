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

// $F an FDD cell, $W a WCDMA cell, $J an event job, $E the event producer, $P the PM function,
// $N the LTE node.
std::string expandNames(const std::string& text) {
    return vesk::e2e::expand(
        text, {{"$F", kEnb + ",EUtranCellFDD="},
               {"$W", "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell="},
               {"$J", kEp + ",EventJob="},
               {"$E", kEp},
               {"$P", "ManagedElement=1,SystemFunctions=1,Pm=1"},
               {"$N", kEnb}});
}

// A command and what it answers: "" OrlOk; "!TEXT" refused, TEXT its first operator message (or
// reason, or the host's error); otherwise OrlOk with this result (the one attribute a get asks
// for, its value dumped compactly).
typedef std::vector<std::pair<std::string, std::string>> Checks;

class CellsAndPm : public StationProgramFixture {
  protected:
    // Runs the checks in one vesk-host.
    void run(const Checks& checks) {
        std::string commands;
        for (const auto& check : checks)
            commands += (commands.empty() ? "" : "; ") + expandNames(check.first);
        const std::vector<Json> a = answers(commands, checks.size());
        for (size_t i = 0; i < a.size(); ++i) {
            const std::string& expected = checks[i].second;
            SCOPED_TRACE(checks[i].first);
            Json result = a[i]["result"];
            if (result.is_object() && result.size() == 1)
                result = result.begin().value();
            if (expected.empty() || expected[0] != '!') {
                EXPECT_TRUE(a[i].value("ok", false)) << a[i];
                if (!expected.empty()) {
                    EXPECT_EQ(result.is_string() ? std::string(result) : result.dump(),
                              expandNames(expected));
                }
                continue;
            }
            // Refused by the agent with a message or a reason, or by the host with an error.
            EXPECT_EQ(a[i].value("code", "OrlValidationFailed"), "OrlValidationFailed");
            const Json& said = a[i]["messages"].empty() ? a[i]["reasons"] : a[i]["messages"];
            EXPECT_EQ(said.empty() ? a[i].value("error", "") : std::string(said[0]),
                      expandNames(expected.substr(1)));
        }
    }
};

TEST_F(CellsAndPm, PrioritiesFollowLocksUnlocksAndDeletionsAndTheModeFollowsTheCells) {
    run({{"opmode", "mixed"},
         {"set $F3 administrativeState UNLOCKED", ""},  // no resources: behind the others
         {"get $F3 priority", "4"},
         {"set $F1 administrativeState LOCKED", ""},
         {"get $F2 priority", "1"},
         {"get $W1 priority", "2"},
         {"get $F3 priority", "3"},
         {"begin", ""},  // the last unlocked WCDMA cell locked, a locked one unlocked, together
         {"set $W1 administrativeState LOCKED", ""},
         {"set $F2 administrativeState LOCKED", ""},
         {"set $F1 administrativeState UNLOCKED", ""},  // resources: ahead of FDD 3
         {"commit", ""},
         {"get $F1 priority", "1"},
         {"get $F3 priority", "2"},
         {"get $W1 priority", "10"},
         {"opmode", "hc_lte"},
         {"set $W2 administrativeState UNLOCKED", ""},
         {"opmode", "mixed"},
         // A new locked cell is not in use; the commit stores its 5 GHz channel in the low form
         // and its CDMA2000 system time.
         {"create $N EUtranCellTDD=2 cellId=9 earfcn=261894 initCdma2000SysTimeType=1", ""},
         {"get $N,EUtranCellTDD=2 priority", "10"},
         {"get $N,EUtranCellTDD=2 earfcn", "53540"},
         {"get $N,EUtranCellTDD=2 bcCdma2000SysTimeType", "1"},
         {"delete $F1", ""},
         {"get $F3 priority", "1"},
         {"get $W2 priority", "2"},
         {"opmode hc_lte", "hc_lte"},
         {"opmode standby", "!the operation mode is mixed or hc_lte, not 'standby'"}});
    // The operator's mode is the station's, kept across restarts.
    run({{"opmode", "hc_lte"}});
}

TEST_F(CellsAndPm, JobsAreHeldToWhatTheStationCanDo) {
    const std::string running =
        "!EventJob (currentJobState) is not in stopped state, operation is not allowed.";
    run({
        // Only the first period given is judged.
        {"create $P PmJob=quarter granularityPeriod=FIVE_MIN reportingPeriod=ONE_MIN", ""},
        {"create $P PmJob=hourly reportingPeriod=ONE_MIN granularityPeriod=FIVE_MIN",
         "!VeskPMOI::validateReportingPeriod Unsupported reportingPeriod set"},
        {"set $P,PmJob=cellTraffic granularityPeriod TEN_SECONDS",
         "!VeskPMOI::validateGranularityPeriod Unsupported granularityPeriod set"},
        {"set $P,PmJob=cellTraffic measurementSpecification \"measurementTypeRef=\\\"$P,PmGroup="
         "EUtranCellFDD,MeasurementType=pmNoSuchCounter\\\"\"",
         "!VeskPMOI::validateMeasurementSpecification $P,PmGroup=EUtranCellFDD,MeasurementType="
         "pmNoSuchCounter is not present in DB"},
        {"create $E EventJob=10002 reportingPeriod=ONE_HOUR", "!Unsupported reportingPeriod set"},
        // A filter of no type and a reference to an MO that is gone are dropped at commit.
        {"create $E EventJob=10002 \"eventFilter=[{filterName=nosuch, filterValue=7}, "
         "{filterName=cellIdFilter, filterValue=3}]\" \"eventTypeRef=[\\\"$E,EventType=gone\\\", "
         "\\\"$E,EventType=INTERNAL_PROC_RRC_CONN_SETUP\\\"]\"",
         ""},
        {"get $J10002 eventFilter", R"([{"filterName":"cellIdFilter","filterValue":"3"}])"},
        {"get $J10002 eventTypeRef", R"(["$E,EventType=INTERNAL_PROC_RRC_CONN_SETUP"])"},
        {"get $J10002 jobGroup", "JG1"},
        {"create $E EventJob=10003", "!Maximum number of Event jobs reached"},
        {"set $J10001 reportingPeriod FIFTEEN_MIN", running},
        {"set $J10001 eventFilter", running},
        {"delete $J10001", "!jobControl value is 'STARTSTOP', delete operation is not allowed."},
        {"set $J10001 requestedJobState STOPPED", ""},
        {"get $J10001 requestedJobState", "STOPPED"},
        {"set $J10005 requestedJobState ACTIVE",
         "!jobControl value is 'VIEWONLY', set operation is not allowed."},
        {"set $J10000 jobGroup JG3", "!JobGroup 'JG3' is reserved for CCTR."},
        {"get $J10000 jobGroup", "JG1"},
    });
}

}  // namespace

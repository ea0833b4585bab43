// The PM rules against the station's capabilities, one table of changes handed to the validation
// component as the front hands them over, on committed capability MOs and jobs of the test's own;
// then the commit repair of an event job in a database transaction.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskOI.h"
#include "validation/VeskPMOI.h"

namespace {

using TibVeskOI::VeskOI;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::putDn;

const std::string kPm = "ManagedElement=1,SystemFunctions=1,Pm=1";
const std::string kEp = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=L";
const std::string kType = kPm + ",PmGroup=G,MeasurementType=t";

Attribute* number(const char* name, int value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT32);
}
Attribute* text(const char* name, const std::string& value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_STRING);
}

// One change: 'c' creates "parent,Class=id", 's' sets, 'd' deletes; its attribute is a period
// (a number) or a measurement naming an MO (a text); the answer and the one error line it writes.
struct Row {
    const char* name;
    char op;
    std::string dn;
    std::vector<std::pair<std::string, int>> periods;
    std::string measures = "";
    int rc = 0;
    std::string error = "";
};

class PmRules : public vesk::dbtest::DatabaseTest {
  protected:
    // Two PM jobs of at most four; event jobs 10000 (stopped), 10001 (running), 10002 (view only)
    // of at most four.
    void SetUp() override {
        DatabaseTest::SetUp();
        for (const std::string& dn :
             {std::string("ManagedElement=1"), std::string("ManagedElement=1,SystemFunctions=1"),
              kPm, kPm + ",PmGroup=G", kType, kPm + ",PmJob=a", kPm + ",PmJob=b",
              kEp.substr(0, kEp.rfind(',')), kEp})
            putDn(dn, {});
        putDn(kPm + ",PmMeasurementCapabilities=1",
              {attr("maxNoOfJobs", AttributeVariant((unsigned short)4), IPCData::AVT_UINT16),
               text("supportedRopPeriods", "5,7"), text("supportedMeasJobGps", "4,5")});
        putDn(kEp + ",EventCapabilities=1",
              {attr("maxNoOfJobs", AttributeVariant((unsigned short)4), IPCData::AVT_UINT16)});
        putDn(kEp + ",FilePullCapabilities=1", {text("supportedReportingPeriods", "4,5")});
        const std::pair<const char*, std::pair<const char*, int>> jobs[] = {
            {"10000", {"1", 2}}, {"10001", {"1", 1}}, {"10002", {"2", 2}}};
        for (const auto& [id, job] : jobs)
            putDn(kEp + ",EventJob=" + id, {text("eventJobId", id), text("jobControl", job.first),
                                            number("currentJobState", job.second)});
    }
    void check(const Row& row, unsigned long tx) {
        SCOPED_TRACE(row.name);
        vesk::log::LogCapture capture(VESK_LOG_ERROR);
        std::vector<OrlMoAttributeValue_3> slots(row.periods.size() + 2);
        std::vector<OrlMoNamedAttributeValueContainer_3> named;
        for (size_t i = 0; i < row.periods.size(); ++i) {
            slots[i].i64 = row.periods[i].second;
            named.push_back({const_cast<char*>(row.periods[i].first.c_str()),
                             {OrlOamSpiMoAttributeType_3_ENUM, 1, &slots[i]}});
        }
        OrlMoAttributeValueContainer_3 type{OrlOamSpiMoAttributeType_3_STRING, 1, &slots.back()};
        slots.back().theString = const_cast<char*>(row.measures.c_str());
        OrlMoAttributeValueStructMember_3 member{const_cast<char*>("measurementTypeRef"), &type,
                                                 nullptr};
        slots[slots.size() - 2].structMember = &member;
        if (!row.measures.empty())
            named.push_back({const_cast<char*>("measurementSpecification"),
                             {OrlOamSpiMoAttributeType_3_STRUCT, 1, &slots[slots.size() - 2]}});
        std::vector<OrlMoNamedAttributeValueContainer_3*> array;
        for (auto& n : named)
            array.push_back(&n);
        array.push_back(nullptr);
        VeskOI& oi = *VeskOI::getVeskOI();
        const size_t comma = row.dn.rfind(','), equals = row.dn.rfind('=');
        const std::string parent = row.dn.substr(0, comma);
        const std::string cls = row.dn.substr(comma + 1, equals - comma - 1);
        const std::string id = row.dn.substr(equals + 1);
        int rc = row.op == 'd' ? oi.deleteMo(tx, row.dn.c_str())
                 : row.op == 's'
                     ? oi.setMoAttribute(tx, row.dn.c_str(), named[0].attributeName,
                                         &named[0].attributeValue)
                     : oi.createMo(tx, parent.c_str(), cls.c_str(), "", id.c_str(), array.data());
        EXPECT_EQ(rc, row.rc);
        const std::vector<vesk::log::LogLine> lines = capture.lines();
        EXPECT_EQ(lines.size(), row.error.empty() ? 0u : 1u);
        if (!lines.empty() && !row.error.empty()) {
            EXPECT_EQ(lines[0].text, "VeskPMOI::" + row.error);
        }
    }
};

TEST_F(PmRules, ChangesAreJudgedAgainstTheCapabilities) {
    const std::string job = kPm + ",PmJob=new", a = kPm + ",PmJob=a", e = kEp + ",EventJob=";
    const std::string running =
        "EventJob (currentJobState) is not in stopped state, operation is not allowed.";
    const std::vector<Row> rows = {
        {"SupportedPeriods", 'c', job, {{"granularityPeriod", 4}, {"reportingPeriod", 7}}},
        {"GranularityNotSupported",
         'c',
         job,
         {{"granularityPeriod", 7}},
         "",
         -9,
         "validateGranularityPeriod Unsupported granularityPeriod set"},
        {"OnlyTheFirstPeriodIsJudged",
         'c',
         job,
         {{"granularityPeriod", 5}, {"reportingPeriod", 1}}},
        {"ReportingNotSupported",
         's',
         a,
         {{"reportingPeriod", 4}},
         "",
         -9,
         "validateReportingPeriod Unsupported reportingPeriod set"},
        {"MeasurementOfAnMoThatIsNot",
         's',
         a + ",MeasurementReader=1",
         {},
         kType + "x",
         -9,
         "validateMeasurementSpecification " + kType + "x is not present in DB"},
        {"MeasurementOfAnMo", 's', a, {}, kType},
        {"EventJobIdOutsideTheSix",
         'c',
         e + "10006",
         {},
         "",
         -9,
         "validateEventJobCreation Unsupported eventJobId set"},
        {"EventReportingNotSupported",
         'c',
         e + "10003",
         {{"reportingPeriod", 7}},
         "",
         -9,
         "validateEventJobReportingPeriods Unsupported reportingPeriod set"},
        {"EventJobWithinTheLimit", 'c', e + "10003", {{"reportingPeriod", 4}}},
        {"RunningJobTakesItsRequestedState", 's', e + "10001", {{"requestedJobState", 2}}},
        {"RunningJobTakesNothingElse",
         's',
         e + "10001",
         {{"reportingPeriod", 5}},
         "",
         -9,
         "checkCurrentJobState " + running},
        {"StoppedJobPeriodChecked",
         's',
         e + "10000",
         {{"reportingPeriod", 7}},
         "",
         -9,
         "validateEventJobReportingPeriods Unsupported reportingPeriod set"},
        {"ViewOnlyTakesNoSet",
         's',
         e + "10002",
         {{"requestedJobState", 1}},
         "",
         -9,
         "checkJobControl jobControl value is 'VIEWONLY', set operation is not allowed."},
        {"StartStopIsNotDeleted",
         'd',
         e + "10000",
         {},
         "",
         -9,
         "checkJobControl jobControl value is 'STARTSTOP', delete operation is not allowed."},
        {"UnknownJob",
         'd',
         e + "10004",
         {},
         "",
         -1,
         "checkJobControl Couldn't find MO " + e + "10004 ."},
    };
    for (size_t i = 0; i < rows.size(); ++i)
        check(rows[i], 100 + i);
    // Accepted event job changes are judged again at commit.
    EXPECT_EQ(VeskOI::getVeskOI()->checkedCommits().size(), 2u);
    VeskOI::getVeskOI()->removeFromCheckedCommits(108);
    VeskOI::getVeskOI()->removeFromCheckedCommits(109);

    // The job limits hold at equality only: the fourth job is refused, a fifth passes.
    const std::string pmFull = "validatePmJobCreation Maximum number of PM jobs reached";
    const std::string eventsFull = "validateEventJobCreation Maximum number of Event jobs reached";
    putDn(kPm + ",PmJob=c", {});
    putDn(kPm + ",PmJob=d", {});
    check({"PmLimit", 'c', job, {}, "", -9, pmFull}, 200);
    putDn(e + "10003", {});
    check({"EventLimit", 'c', e + "10004", {}, "", -9, eventsFull}, 201);
    putDn(kPm + ",PmJob=e", {});
    check({"PmOverTheLimit", 'c', job, {}}, 202);
}

// At commit an event job gets its default group, loses what leads nowhere, and a group reserved
// for another job refuses the commit.
TEST_F(PmRules, CommitRepairsAnEventJob) {
    const std::string job = kEp + ",EventJob=10000", f = job + "," + "EventJob=10000:eventFilter=";
    putDn(kEp + ",EventFilterType=cells", {});
    putDn(kEp + ",EventType=kept", {});
    const std::string kept = kEp + ",EventType=kept";
    ASSERT_NE(IDatabase::setAttribute(job, 1, "eventTypeRef",
                                      AttributeVariant(kEp + ",EventType=gone;" + kept), true,
                                      IPCData::AVT_REFERENCE_LIST, false, 0),
              0);
    ASSERT_NE(IDatabase::setAttribute(job, 1, "eventFilter",
                                      AttributeVariant(f + "1;" + f + "2;" + f + "3"), true,
                                      IPCData::AVT_STRUCT_LIST, false, 0),
              0);
    putDn(f + "1", {text("filterName", "cells")});
    putDn(f + "2", {text("filterName", "cells")});
    putDn(f + "3", {text("filterName", "nosuch")});
    TibVeskOI::VeskPMOI& pm = *TibVeskOI::VeskPMOI::instance();
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    EXPECT_EQ(pm.validatePMCommit(job, h), 0);
    ASSERT_EQ(IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false), 1);
    EXPECT_EQ(committedString(job, "jobGroup"), "JG1");
    EXPECT_EQ(committedString(job, "eventTypeRef"), kept);
    EXPECT_EQ(committedString(job, "eventFilter"), f + "1");
    EXPECT_EQ(committedString(f + "2", "filterName"), "<no object>");
    EXPECT_EQ(committedString(f + "3", "filterName"), "<no object>");

    ASSERT_NE(IDatabase::setAttribute(job, 1, "jobGroup", AttributeVariant(std::string("JG3")),
                                      true, IPCData::AVT_STRING, false, 0),
              0);
    h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    EXPECT_EQ(pm.validatePMCommit(job, h), -9);
    putDn(kEp + ",EventJob=10005", {text("eventJobId", "10005"), text("jobGroup", "JG3")});
    EXPECT_EQ(pm.validatePMCommit(kEp + ",EventJob=10005", h), 0);
    IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false);
}

}  // namespace

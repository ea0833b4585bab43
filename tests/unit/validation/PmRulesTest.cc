// The PM rules where the host cannot lead: job limits at and over the capability, the first of two
// periods, event job ids the model would refuse, and the commit repair of duplicate filters and of
// a job without a group. The refusals an operator meets are in the end-to-end tests.
#include <gtest/gtest.h>

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

Attribute* text(const char* name, const std::string& value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_STRING);
}

class PmRules : public vesk::dbtest::DatabaseTest {
  protected:
    // Two PM jobs of at most three, periods 5 and 7 (reporting) and 4 and 5 (granularity).
    void SetUp() override {
        DatabaseTest::SetUp();
        for (const std::string& dn :
             {std::string("ManagedElement=1"), std::string("ManagedElement=1,SystemFunctions=1"),
              kPm, kPm + ",PmJob=a", kPm + ",PmJob=b", kEp.substr(0, kEp.rfind(',')), kEp})
            putDn(dn, {});
        putDn(kPm + ",PmMeasurementCapabilities=1",
              {attr("maxNoOfJobs", AttributeVariant((unsigned short)3), IPCData::AVT_UINT16),
               text("supportedRopPeriods", "5,7"), text("supportedMeasJobGps", "4,5")});
    }
    // Creates `cls`=`id` under `parent` with the given periods; the answer, and the error lines
    // written in `errors`.
    int create(const std::string& parent, const char* cls, const char* id,
               std::vector<std::pair<std::string, int>> periods, std::string* errors) {
        vesk::log::LogCapture capture(VESK_LOG_ERROR);
        std::vector<OrlMoAttributeValue_3> slots(periods.size());
        std::vector<OrlMoNamedAttributeValueContainer_3> named;
        std::vector<OrlMoNamedAttributeValueContainer_3*> array;
        for (size_t i = 0; i < periods.size(); ++i) {
            slots[i].i64 = periods[i].second;
            named.push_back(
                {periods[i].first.data(), {OrlOamSpiMoAttributeType_3_ENUM, 1, &slots[i]}});
        }
        for (auto& n : named)
            array.push_back(&n);
        array.push_back(nullptr);
        int rc = VeskOI::getVeskOI()->createMo(1, parent.c_str(), cls, "", id, array.data());
        for (const vesk::log::LogLine& line : capture.lines())
            *errors += line.text + "\n";
        return rc;
    }
};

TEST_F(PmRules, LimitsHoldAtEqualityAndOnlyTheFirstPeriodIsJudged) {
    std::string errors;
    EXPECT_EQ(
        create(kPm, "PmJob", "x", {{"granularityPeriod", 5}, {"reportingPeriod", 1}}, &errors), 0);
    EXPECT_EQ(
        create(kPm, "PmJob", "x", {{"reportingPeriod", 1}, {"granularityPeriod", 5}}, &errors), -9);
    EXPECT_EQ(errors, "VeskPMOI::validateReportingPeriod Unsupported reportingPeriod set\n");
    errors.clear();
    putDn(kPm + ",PmJob=c", {});
    EXPECT_EQ(create(kPm, "PmJob", "x", {}, &errors), -9);
    EXPECT_EQ(errors, "VeskPMOI::validatePmJobCreation Maximum number of PM jobs reached\n");
    putDn(kPm + ",PmJob=d", {});
    EXPECT_EQ(create(kPm, "PmJob", "x", {}, &errors), 0);
    // An id outside the six, which the model would refuse before the agent is asked.
    errors.clear();
    EXPECT_EQ(create(kEp, "EventJob", "10006", {}, &errors), -9);
    EXPECT_EQ(errors, "VeskPMOI::validateEventJobCreation Unsupported eventJobId set\n");
}

// Of two filters of one name the first stays (the model refuses both through the host); JG3 is
// the group of job 10005.
TEST_F(PmRules, CommitRepairsAnEventJob) {
    const std::string job = kEp + ",EventJob=10000", f = job + ",EventJob=10000:eventFilter=";
    putDn(kEp + ",EventFilterType=cells", {});
    putDn(job,
          {text("eventJobId", "10000"),
           attr("eventFilter", AttributeVariant(f + "1;" + f + "2"), IPCData::AVT_STRUCT_LIST)});
    putDn(f + "1", {text("filterName", "cells")});
    putDn(f + "2", {text("filterName", "cells")});
    putDn(kEp + ",EventJob=10005", {text("eventJobId", "10005"), text("jobGroup", "JG3")});
    TibVeskOI::VeskPMOI& pm = *TibVeskOI::VeskPMOI::instance();
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    EXPECT_EQ(pm.validatePMCommit(job, h), 0);
    EXPECT_EQ(pm.validatePMCommit(kEp + ",EventJob=10005", h), 0);
    ASSERT_EQ(IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false), 1);
    EXPECT_EQ(committedString(job, "eventFilter"), f + "1");
    EXPECT_EQ(committedString(f + "2", "filterName"), "<no object>");
}

}  // namespace

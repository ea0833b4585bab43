// The PM rules where the host cannot lead: job limits at and over the capability, event job ids
// the model would refuse, duplicate filters and the group of job 10005. The refusals and repairs
// an operator meets are in the end-to-end tests.
#include <gtest/gtest.h>

#include <string>

#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskOI.h"
#include "validation/VeskPMOI.h"

namespace {

using TibVeskOI::VeskOI;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::putDn;
using vesk::dbtest::text;

const std::string kPm = "ManagedElement=1,SystemFunctions=1,Pm=1";
const std::string kEp = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=L";

class PmRules : public vesk::dbtest::DatabaseTest {
  protected:
    // Two PM jobs of at most three.
    void SetUp() override {
        DatabaseTest::SetUp();
        for (const std::string& dn :
             {std::string("ManagedElement=1"), std::string("ManagedElement=1,SystemFunctions=1"),
              kPm, kPm + ",PmJob=a", kPm + ",PmJob=b", kEp.substr(0, kEp.rfind(',')), kEp})
            putDn(dn, {});
        putDn(kPm + ",PmMeasurementCapabilities=1",
              {attr("maxNoOfJobs", AttributeVariant((unsigned short)3), IPCData::AVT_UINT16)});
    }
    // Creates `cls`=`id` under `parent` with no attributes; the answer, and the error lines
    // written in `errors`.
    int create(const std::string& parent, const char* cls, const char* id, std::string* errors) {
        vesk::log::LogCapture capture(VESK_LOG_ERROR);
        OrlMoNamedAttributeValueContainer_3* none[] = {nullptr};
        const int rc = VeskOI::getVeskOI()->createMo(1, parent.c_str(), cls, "", id, none);
        for (const vesk::log::LogLine& line : capture.lines())
            *errors += line.text + "\n";
        return rc;
    }
};

TEST_F(PmRules, LimitsHoldAtEqualityOnly) {
    std::string errors;
    putDn(kPm + ",PmJob=c", {});
    EXPECT_EQ(create(kPm, "PmJob", "x", &errors), -9);
    EXPECT_EQ(errors, "VeskPMOI::validatePmJobCreation Maximum number of PM jobs reached\n");
    putDn(kPm + ",PmJob=d", {});
    EXPECT_EQ(create(kPm, "PmJob", "x", &errors), 0);
    // An id outside the six, which the model would refuse before the agent is asked.
    errors.clear();
    EXPECT_EQ(create(kEp, "EventJob", "10006", &errors), -9);
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

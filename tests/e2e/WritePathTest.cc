// Writes of the real agent on the demo station, driven through the host's command shell: what a
// committed transaction leaves survives a restart of the host on the same state directory, and an
// aborted one leaves nothing, neither in the database nor in the security component's store.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "e2e/HostFixture.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "station/database/ISecControl.h"

namespace {

using namespace vesk::e2e;

const std::string kFreqRel = kCell + ",EUtranFreqRelation=1";
const std::string kNewRel = kFreqRel + ",EUtranCellRelation=9";
const std::string kExternalCell =
    kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1,ExternalEUtranCellFDD=2";
const std::string kUtranRel = kCell + ",UtranFreqRelation=1";
const std::string kUtranCellRel = kUtranRel + ",UtranCellRelation=1";
const std::string kJob =
    "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat,EventJob=10000";
const std::string kGroup =
    "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat,EventGroup=RrcEvents";
const std::string kCertM = "ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1";
const std::string kPm = "ManagedElement=1,SystemFunctions=1,Pm=1";
const std::string kPmJob = kPm + ",PmJob=j2";

class WritePathTest : public HostFixture {
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
    Json get(const std::string& dn, const std::string& attribute) {
        return run("get " + dn + " " + attribute)["result"][attribute];
    }
    bool exists(const std::string& dn) { return run("exists " + dn)["result"] == true; }
    // The committed objects of the PM classes, MOs and struct objects alike.
    static size_t pmObjects() {
        size_t count = 0;
        for (const char* name : {"PmJob", "MeasurementReader"}) {
            for (DBObject* object : IDatabase::getMOClass(name, 0)) {
                delete object;
                ++count;
            }
        }
        return count;
    }

    // What the committed transaction of the first test wrote, as seen by the host now.
    void expectCommittedWrites() {
        EXPECT_TRUE(exists(kNewRel));
        EXPECT_EQ(get(kNewRel, "neighborCellRef"), kExternalCell);
        EXPECT_EQ(get(kNewRel, "isHoAllowed"), true);  // a default
        EXPECT_EQ(get(kNewRel, "createdBy"), "OPERATOR");
        EXPECT_EQ(get(kNewRel, "lastModification"), "NOT_MODIFIED");
        EXPECT_EQ(get(kFreqRel, "blackListEntry"),
                  Json::parse(R"([{"startPci":7,"pciRange":2},{"startPci":9,"pciRange":3}])"));
        EXPECT_EQ(get(kEnb, "eNodeBPlmnId"), Json::parse(R"({"mcc":240,"mnc":8,"mncLength":2})"));
        EXPECT_EQ(get(kFreqRel + ",EUtranCellRelation=1", "cellIndividualOffsetEUtran"), -3);
        EXPECT_EQ(get(kFreqRel + ",EUtranCellRelation=1", "lastModification"), "OPERATOR");
        EXPECT_EQ(get(kJob, "eventGroupRef"), Json::array({kGroup}));
        EXPECT_FALSE(exists(kUtranRel));
        EXPECT_FALSE(exists(kUtranCellRel));
        // The cell is unlocked: the bandwidth waits in the cell's slot, and reads show it.
        EXPECT_EQ(get(kCell, "dlChannelBandwidth"), 5000);
    }
};

TEST_F(WritePathTest, CommittedWritesSurviveARestartOfTheHost) {
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kExternalCell + "\"");
    ok("set " + kFreqRel + " blackListEntry startPci=7,pciRange=2 startPci=9,pciRange=3");
    ok("set " + kEnb + " eNodeBPlmnId mcc=240,mnc=8,mncLength=2");
    ok("set " + kJob + " eventGroupRef " + kGroup);
    ok("set " + kFreqRel + ",EUtranCellRelation=1 cellIndividualOffsetEUtran -3");
    // The relation goes with the cell relation below it.
    ok("delete " + kUtranRel);
    ok("set " + kCell + " dlChannelBandwidth 5000");
    ok("set " + kCertM + " userLabel \"trust anchor\"");
    // Certificate MOs reach the security component only when the transaction commits.
    EXPECT_TRUE(vesk::isec::storedDns().empty());
    ok("commit");
    expectCommittedWrites();
    std::unique_ptr<DBObject> cert(vesk::isec::storedObject(kCertM));
    ASSERT_NE(cert, nullptr);
    ASSERT_NE(cert->getAttribute("userLabel"), nullptr);
    EXPECT_EQ(cert->getAttribute("userLabel")->ToStr(), "trust anchor");

    closeHost();
    vesk::isec::reset();
    ASSERT_NO_FATAL_FAILURE(openHost());
    ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH, false));
    openShell();
    expectCommittedWrites();
    EXPECT_EQ(get(kCertM, "userLabel"), "trust anchor");
}

TEST_F(WritePathTest, AnAbortedOrFailedTransactionLeavesNothing) {
    Json before = get(kFreqRel, "blackListEntry");
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kExternalCell + "\"");
    ok("set " + kFreqRel + " blackListEntry startPci=7,pciRange=2");
    ok("delete " + kUtranCellRel);
    ok("set " + kCertM + " userLabel revoked");
    ok("create " + kCertM + " TrustCategory=extra");
    ok("abort");
    EXPECT_FALSE(exists(kNewRel));
    EXPECT_TRUE(exists(kUtranCellRel));
    EXPECT_EQ(get(kFreqRel, "blackListEntry"), before);
    EXPECT_TRUE(get(kCertM, "userLabel").is_null());
    EXPECT_FALSE(exists(kCertM + ",TrustCategory=extra"));
    EXPECT_TRUE(vesk::isec::storedDns().empty());

    // A reference to an MO that does not exist fails the commit, and nothing of it stays.
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kEnb +
       ",EUtranCellFDD=77\"");
    EXPECT_NE(run("commit")["code"], "OrlOk");
    EXPECT_FALSE(exists(kNewRel));

    // The next transaction starts clean: its commit confirms only its own change.
    ok("begin");
    ok("set " + kCertM + " userLabel kept");
    ok("commit");
    EXPECT_EQ(get(kCertM, "userLabel"), "kept");
    EXPECT_FALSE(exists(kCertM + ",TrustCategory=extra"));
    // Outside a transaction each write stands alone; a set without a value removes it.
    ok("set " + kCell + " userLabel \"east cell\"");
    EXPECT_EQ(get(kCell, "userLabel"), "east cell");
    ok("set " + kCell + " userLabel");
    EXPECT_TRUE(get(kCell, "userLabel").is_null());
}

TEST_F(WritePathTest, APmJobGoesWithItsReadersWhileAReaderAloneIsRefused) {
    const std::string measurement =
        " measurementSpecification \"groupRef=\\\"" + kPm + ",PmGroup=EUtranCellFDD\\\"\"";
    const size_t loaded = pmObjects();
    ok("begin");
    ok("create " + kPm + " PmJob=j2");
    ok("set " + kPmJob + measurement);
    for (const char* reader : {"MeasurementReader=1", "MeasurementReader=2"}) {
        ok("create " + kPmJob + " " + reader);
        ok("set " + kPmJob + "," + reader + measurement);
    }
    ok("commit");
    ASSERT_EQ(pmObjects(), loaded + 6);  // three MOs, each with the object of its struct value

    EXPECT_EQ(run("delete " + kPmJob + ",MeasurementReader=1")["code"], "OrlFailure");
    EXPECT_EQ(pmObjects(), loaded + 6);
    ok("delete " + kPmJob);
    EXPECT_EQ(pmObjects(), loaded);
    EXPECT_FALSE(exists(kPmJob));
}

}  // namespace

// The transaction's create, set and delete over the station model in a real station database:
// what each path stores, the security component's share of a transaction, and the refusals.
#include <gtest/gtest.h>

#include "station/database/ISecControl.h"
#include "station/log/LogControl.h"
#include "unit/writers/WriterSupport.h"

namespace writer_test {
namespace {

using vesk::log::LogCapture;

const std::string kCellRel = kRel + ",EUtranCellRelation=1";
const std::string kJob = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=1,EventJob=1";
const std::string kCertM = "ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1";
const std::string kTrust = kCertM + ",TrustCategory=1";
const std::string kHousekeeping =
    "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1,BrmBackupHousekeeping=1";

class WriteOpsTest : public WriterFixture {
  protected:
    void SetUp() override {
        vesk::isec::reset();
        WriterFixture::SetUp();
    }
    void TearDown() override { vesk::isec::reset(); }
    // Commits the chain of objects named by `dn` below ManagedElement=1.
    void commitChain(const std::string& dn) {
        std::string parent = kMe;
        size_t start = kMe.size() + 1;
        while (start < dn.size()) {
            size_t comma = dn.find(',', start);
            std::string rdn = dn.substr(start, comma == std::string::npos ? comma : comma - start);
            commitObject(rdn, parent);
            parent += "," + rdn;
            start = comma == std::string::npos ? dn.size() : comma + 1;
        }
    }
    int set(const std::string& dn, const std::string& name, const Value& v) {
        HostValue value(v);
        return _tx->setMoAttribute(dn, name, value.get());
    }
};

TEST_F(WriteOpsTest, ReferencesAreStoredWithoutBlanksAndNotedAsGiven) {
    commitObject("EUtranCellRelation=1", kRel);
    const std::string given = "ManagedElement=1, ENodeBFunction=1,\tEUtranCellFDD=1";
    ASSERT_EQ(set(kCellRel, "neighborCellRef", Value{11, {}, {given}}), 0);
    EXPECT_EQ(stored(kCellRel, "neighborCellRef"), "11:" + kCell);
    ASSERT_EQ(_tx->getRefList().size(), 1u);
    EXPECT_EQ(_tx->getRefList().front().reference, given);
    // A second write replaces the noted reference instead of adding one.
    ASSERT_EQ(set(kCellRel, "neighborCellRef", Value{11, {}, {kEnb}}), 0);
    ASSERT_EQ(_tx->getRefList().size(), 1u);
    EXPECT_EQ(_tx->getRefList().front().reference, kEnb);
    // The committed object was changed by the operator.
    EXPECT_EQ(read(kCellRel, "lastModification"), "12:[1]");
}

TEST_F(WriteOpsTest, ListsUseTheTransactionsEncodingWhateverTheirLength) {
    commitChain(kJob);
    const std::string group = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventGroup=1";
    // One element of a list attribute takes the list path: a list type, no separator.
    ASSERT_EQ(set(kJob, "eventGroupRef", Value{11, {}, {group}}), 0);
    EXPECT_EQ(stored(kJob, "eventGroupRef"), "31:" + group);
    EXPECT_EQ(read(kJob, "eventGroupRef"), "11:[\"" + group + "\"]");
    ASSERT_EQ(set(kJob, "eventGroupRef", Value{11, {}, {group, group + "0"}}), 0);
    EXPECT_EQ(stored(kJob, "eventGroupRef"), "31:" + group + ";" + group + "0");

    ASSERT_EQ(set(kJob, "eventTypeRef", Value{1, {1, 2, 3}}), 0);
    EXPECT_EQ(stored(kJob, "eventTypeRef"), "20:1;2;3");
    ASSERT_EQ(set(kJob, "eventTypeRef", Value{9, {}, {"a", "b"}}), 0);
    EXPECT_EQ(stored(kJob, "eventTypeRef"), "27:a;b");
    EXPECT_EQ(read(kJob, "eventTypeRef"), "9:[\"a\",\"b\"]");
}

TEST_F(WriteOpsTest, ZeroValuesDeleteButEmptyReservedBy) {
    commitObject("EUtranCellRelation=1", kRel);
    ASSERT_EQ(set(kCellRel, "neighborCellRef", Value{11, {}, {kCell}}), 0);
    ASSERT_EQ(set(kCellRel, "neighborCellRef", Value{11, {}, {}}), 0);
    EXPECT_EQ(stored(kCellRel, "neighborCellRef"), "absent");
    EXPECT_TRUE(_tx->getRefList().empty());
    ASSERT_EQ(set(kCell, "reservedBy", Value{11, {}, {}}), 0);
    EXPECT_EQ(stored(kCell, "reservedBy"), "31:");
}

TEST_F(WriteOpsTest, CreateBuildsTheWholeObject) {
    LogCapture log;
    HostValue plmn(
        std::vector<Struct>{{{"mcc", {3, {240}}}, {"mnc", {3, {8}}}, {"mncLength", {3, {2}}}}});
    HostValue ref(Value{11, {}, {kCell}});
    OrlMoNamedAttributeValueContainer_3 named[2] = {};
    named[0].attributeName = const_cast<char*>("eNodeBPlmnId");
    named[0].attributeValue = *plmn.get();
    OrlMoNamedAttributeValueContainer_3* attributes[] = {&named[0], nullptr};
    ASSERT_EQ(_tx->createMo(kMe.c_str(), "ENodeBFunction", "eNodeBFunctionId", "2", attributes), 0);
    const std::string enb2 = kMe + ",ENodeBFunction=2";
    EXPECT_EQ(read(enb2, "eNodeBPlmnId"), "14:[{mcc=3:[240] mnc=3:[8] mncLength=3:[2]}]");
    EXPECT_EQ(read(enb2, "eNodeBFunctionId"), "9:[\"2\"]");
    EXPECT_EQ(log.countContaining("] createMo: className: ENodeBFunction, attrName: eNodeBPlmnId, "
                                  "attrType: 14, isList: No"),
              1u);

    named[1].attributeName = const_cast<char*>("neighborCellRef");
    named[1].attributeValue = *ref.get();
    OrlMoNamedAttributeValueContainer_3* relation[] = {&named[1], nullptr};
    ASSERT_EQ(
        _tx->createMo(kRel.c_str(), "EUtranCellRelation", "eUtranCellRelationId", "4", relation),
        0);
    const std::string rel4 = kRel + ",EUtranCellRelation=4";
    EXPECT_EQ(stored(rel4, "neighborCellRef"), "11:" + kCell);
    EXPECT_EQ(read(rel4, "isHoAllowed"), "10:[true]");  // a default
    EXPECT_EQ(read(rel4, "createdBy"), "12:[0]");
    EXPECT_EQ(read(rel4, "lastModification"), "12:[0]");
    ASSERT_EQ(_tx->getRefList().size(), 1u);
    EXPECT_EQ(_tx->getRefList().front().dn, rel4);
    // A reader can be created only with its job; under a committed job it is refused.
    const std::string job = kMe + ",SystemFunctions=1,Pm=1,PmJob=1";
    commitChain(job);
    EXPECT_EQ(_tx->createMo(job.c_str(), "MeasurementReader", "measurementReaderId", "1", nullptr),
              -1);
    EXPECT_EQ(log.count("VeskDBTransaction::createMo(): Mo Object already exists. dn:" + job), 1u);
    EXPECT_FALSE(exists(job + ",MeasurementReader=1"));
}

TEST_F(WriteOpsTest, CertificateWritesGoToTheSecurityComponentUntilCommit) {
    commitChain(kCertM);
    LogCapture log;
    ASSERT_EQ(set(kCertM, "userLabel", Value{9, {}, {"anchor"}}), 0);
    EXPECT_EQ(stored(kCertM, "userLabel"), "absent");
    EXPECT_EQ(vesk::isec::stagedCount(handle()), 1u);
    ASSERT_EQ(_tx->commit(), 0);
    EXPECT_EQ(log.countContaining("] Commit to iSec returns 1"), 1u);
    EXPECT_EQ(vesk::isec::stagedCount(handle()), 0u);
    std::unique_ptr<DBObject> cert(vesk::isec::storedObject(kCertM));
    ASSERT_NE(cert, nullptr);
    ASSERT_NE(cert->getAttribute("userLabel"), nullptr);
    EXPECT_EQ(cert->getAttribute("userLabel")->ToStr(), "anchor");
    // A second commit has nothing left for the component.
    ASSERT_EQ(_tx->commit(), 0);
    EXPECT_EQ(log.countContaining("] Commit to iSec returns 1"), 1u);

    // A failing component refuses the set; a rollback drops what it staged.
    vesk::isec::failNext(vesk::isec::Operation::EditMo, 1);
    EXPECT_EQ(set(kCertM, "userLabel", Value{9, {}, {"x"}}), -1);
    ASSERT_EQ(_tx->deleteMo(kCertM), 0);
    EXPECT_EQ(vesk::isec::stagedCount(handle()), 1u);
    ASSERT_EQ(_tx->rollback(), 0);
    EXPECT_EQ(log.count("VeskDBTransaction::rollback(): Rollback to iSec returns 1"), 1u);
    EXPECT_EQ(vesk::isec::stagedCount(handle()), 0u);
    EXPECT_EQ(vesk::isec::storedDns(), std::vector<std::string>{kCertM});
    EXPECT_TRUE(exists(kCertM));
}

TEST_F(WriteOpsTest, DeleteIsLenientAfterTheModificationMark) {
    commitObject("EUtranCellRelation=1", kRel);
    ASSERT_EQ(_tx->deleteMo(kCellRel), 0);
    EXPECT_FALSE(exists(kCellRel));
    // Absent, with a lastModification in its class: the marking fails, and so does the delete.
    EXPECT_EQ(_tx->deleteMo(kRel + ",EUtranCellRelation=8"), -1);
    // Absent, of a class without one: the failing delete still answers 0.
    EXPECT_EQ(_tx->deleteMo(kMe + ",ENodeBFunction=8"), 0);
}

TEST_F(WriteOpsTest, RefusedValuesAndPendingValues) {
    commitChain(kHousekeeping);
    EXPECT_EQ(set(kHousekeeping, "maxStoredManualBackups", Value{6, {0}}), -8);
    EXPECT_EQ(stored(kHousekeeping, "maxStoredManualBackups"), "absent");
    EXPECT_EQ(set(kHousekeeping, "maxStoredManualBackups", Value{6, {3}}), 0);
    EXPECT_EQ(stored(kHousekeeping, "maxStoredManualBackups"), "6:3");

    // An unlocked cell holds a bandwidth change in its own slot.
    DBObject cell("EUtranCellFDD=2", 1, true, false, IPCData::OPSTATE_ENABLED,
                  IPCData::ADMSTATE_UNLOCKED, kEnb, 1);
    cell.addAttribute(*new Attribute(false, "administrativeState", AttributeVariant(1), 0, true,
                                     IPCData::AVT_ENUM, true, false));
    cell.addAttribute(*new Attribute(false, "alternateStorageSlot", AttributeVariant(3), 0, true,
                                     IPCData::AVT_INT32, true, false));
    ASSERT_NE(IDatabase::insert(&cell, 0), 0);
    const std::string cell2 = kEnb + ",EUtranCellFDD=2";
    ASSERT_EQ(set(cell2, "dlChannelBandwidth", Value{3, {5000}}), 0);
    EXPECT_EQ(stored(cell2, "dlChannelBandwidth"), "absent");
    EXPECT_EQ(stored(cell2, "dlChannelBandwidth", true), "3:5000");
    EXPECT_EQ(read(cell2, "dlChannelBandwidth"), "3:[5000]");
}

// A set whose log line names setMoAttribute, the operation the host called, and its answer.
struct LineRow {
    const char* name;
    std::string dn;
    std::string attribute;
    Value value;
    bool securityFails;
    int rc;
    int level;
    const char* line;  // what follows "VeskDBTransaction::setMoAttribute"
};

class SetLineTest : public WriteOpsTest, public ::testing::WithParamInterface<LineRow> {};

TEST_P(SetLineTest, TheLineNamesSetMoAttribute) {
    const LineRow& row = GetParam();
    commitObject("EUtranCellRelation=1", kRel);
    commitChain(kHousekeeping);
    commitChain(kTrust);
    if (row.securityFails)
        vesk::isec::failNext(vesk::isec::Operation::EditMo, 1);
    LogCapture log;
    EXPECT_EQ(set(row.dn, row.attribute, row.value), row.rc);
    EXPECT_EQ(
        log.countContaining("VeskDBTransaction::setMoAttribute" + std::string(row.line), row.level),
        1u);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SetLineTest,
    ::testing::Values(
        LineRow{"Delete", kCellRel, "neighborCellRef", Value{11, {}, {}}, false, 0, VESK_LOG_INFO,
                "():Deleting attribute neighborCellRef dn: "},
        LineRow{"OutOfBounds", kHousekeeping, "maxStoredManualBackups", Value{6, {6}}, false, -8,
                VESK_LOG_ERROR, " Given value out of bounds for attribute maxStoredManualBackups"},
        LineRow{"UnknownType", kCellRel, "neighborCellRef", Value{15, {1}}, false, 0,
                VESK_LOG_ERROR, "():Unknown attribute type: 15. Cannot set value for attribute: "},
        LineRow{"NoRdn", "," + kMe, "userLabel", Value{9, {}, {"a", "b"}}, false, 0, VESK_LOG_ERROR,
                "(): Cannot set attribute. Unable to determine object's RDN"},
        LineRow{"SecuritySingle", kCertM, "userLabel", Value{9, {}, {"x"}}, true, -1,
                VESK_LOG_ERROR, "(): SEC returned failure. Cannot set attribute "},
        LineRow{"SecurityList", kTrust, "trustedCertificates", Value{11, {}, {kCertM}}, true, -1,
                VESK_LOG_WARNING, "(): editMo from SEC returns failed"}),
    [](const ::testing::TestParamInfo<LineRow>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace writer_test

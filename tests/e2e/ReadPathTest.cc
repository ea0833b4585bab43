// Reads, iterators and the two-phase flow of the real agent, loaded in the reference host on the
// demo station: what a transaction sees, how iterators end, and the markers and lines of commit,
// abort and finish.
#include <gtest/gtest.h>

#include <string>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace {

using namespace vesk::e2e;
using vesk::log::LogCapture;
typedef OrlOamSpiManagedObject_3 Mo;

const std::string kReadRelation = kCell + ",EUtranFreqRelation=1";

class ReadPathTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        if (!HasFatalFailure())
            startOnStation(VESK_AGENT_PATH);
    }
    // One attribute as text: "" for no value, the first value otherwise.
    std::string get(OrlTxHandleT tx, const std::string& dn, const char* name, int* rc = nullptr) {
        OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
        int code = _host->callAgent(&Mo::getMoAttribute, tx, dn.c_str(), name, &result);
        if (rc != nullptr)
            *rc = code;
        std::string text;
        if (result.container != nullptr && result.container->nrOfValues > 0) {
            const OrlMoAttributeValue_3& v = result.container->values[0];
            text = result.container->type == OrlOamSpiMoAttributeType_3_STRING ||
                           result.container->type == OrlOamSpiMoAttributeType_3_REFERENCE
                       ? std::string(v.theString)
                       : std::to_string(v.i32);
        }
        if (result.release != nullptr)
            result.release(result.container);
        return text;
    }
    std::string next(uint64_t it, int* rc = nullptr) {
        char* id = nullptr;
        int code = _host->callAgent(&Mo::nextMo, it, &id);
        if (rc != nullptr)
            *rc = code;
        return id == nullptr ? "<end>" : id;
    }
    uint64_t iterate(OrlTxHandleT tx, const std::string& dn, const char* className) {
        uint64_t it = 99;
        EXPECT_EQ(_host->callAgent(&Mo::newMoIterator, tx, dn.c_str(), className, &it), OrlOk);
        return it;
    }
    OrlOamSpiTransactionalResource_2* agentTx() { return _host->agentTransactionalResource(); }
};

TEST_F(ReadPathTest, ReadsSeeCommittedDataAndNotAnotherTransactionsChanges) {
    OrlTxHandleT tx = begin();
    EXPECT_EQ(get(tx, kCell, "tac"), "100");

    // Another database transaction writes; this one does not see it until it is committed.
    int other = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(IDatabase::setAttribute(kCell, 1, "tac", AttributeVariant(200), false,
                                      IPCData::AVT_INT32, true, other),
              0);
    bool exists = false;
    DBObject unit("NewThing=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                  IPCData::ADMSTATE_UNLOCKED, kEnb, 1);
    ASSERT_NE(IDatabase::insert(&unit, other), 0);
    EXPECT_EQ(get(tx, kCell, "tac"), "100");
    EXPECT_EQ(_host->callAgent(&Mo::existsMo, tx, (kEnb + ",NewThing=1").c_str(), &exists), OrlOk);
    EXPECT_FALSE(exists);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, other, false), 0);
    EXPECT_EQ(get(tx, kCell, "tac"), "200");
    EXPECT_EQ(_host->callAgent(&Mo::existsMo, tx, (kEnb + ",NewThing=1").c_str(), &exists), OrlOk);
    EXPECT_TRUE(exists);

    // Several attributes in one request, in order; a struct list through the entry point.
    const char* names[] = {"earfcndl", "nothing", "cellId", nullptr};
    OrlMoAttributeValuesResult_3 values = {nullptr, nullptr};
    ASSERT_EQ(_host->callAgent(&Mo::getMoAttributes, tx, kCell.c_str(), names, &values), OrlOk);
    EXPECT_EQ(values.containers[0]->values[0].i32, 6300);
    EXPECT_EQ(values.containers[1]->nrOfValues, 0u);
    EXPECT_EQ(values.containers[2]->values[0].i32, 1);
    EXPECT_EQ(values.containers[3], nullptr);
    values.release(values.containers);

    OrlMoAttributeValueResult_3 list = {nullptr, nullptr};
    ASSERT_EQ(
        _host->callAgent(&Mo::getMoAttribute, tx, kReadRelation.c_str(), "blackListEntry", &list),
        OrlOk);
    ASSERT_EQ(list.container->type, OrlOamSpiMoAttributeType_3_STRUCT);
    ASSERT_EQ(list.container->nrOfValues, 1u);
    OrlMoAttributeValueStructMember_3* member = list.container->values[0].structMember;
    ASSERT_NE(member, nullptr);
    EXPECT_STREQ(member->memberName, "pciRange");
    EXPECT_EQ(member->memberValue->values[0].i32, 4);
    ASSERT_NE(member->nextMember, nullptr);
    EXPECT_STREQ(member->nextMember->memberName, "startPci");
    list.release(list.container);

    uint64_t count = 0;
    EXPECT_EQ(_host->callAgent(&Mo::countMoChildren, tx, kEnb.c_str(), "EUtranCellFDD", &count),
              OrlOk);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(_host->commit(tx), OrlOk);
}

TEST_F(ReadPathTest, IteratorsInterleaveAndEndAsTheHostExpects) {
    OrlTxHandleT tx = begin();
    uint64_t cells = iterate(tx, kEnb, "EUtranCellFDD");
    uint64_t relations = iterate(tx, kCell, "EUtranFreqRelation");
    EXPECT_NE(cells, 0u);
    EXPECT_NE(cells, relations);
    EXPECT_EQ(iterate(tx, kEnb, "NoSuchClass"), 0u);

    EXPECT_EQ(next(cells), "1");
    EXPECT_EQ(next(relations), "1");
    EXPECT_EQ(_host->callAgent(&Mo::finalizeIterator, cells), OrlOk);
    EXPECT_EQ(next(cells), "2");  // finalize ends nothing
    EXPECT_EQ(next(relations), "2");
    EXPECT_EQ(next(relations), "<end>");
    EXPECT_EQ(next(cells), "3");

    int rc = -1;
    EXPECT_EQ(next(0, &rc), "<end>");
    EXPECT_EQ(rc, OrlOk);
    EXPECT_EQ(next(123456789, &rc), "<end>");
    EXPECT_EQ(rc, OrlOk);

    // Commit ends the transaction's iterators: they look ended, not failed.
    uint64_t open = iterate(tx, kEnb, "EUtranCellFDD");
    EXPECT_EQ(_host->commit(tx), OrlOk);
    EXPECT_EQ(next(open, &rc), "<end>");
    EXPECT_EQ(rc, OrlOk);

    // Finish alone keeps the iterator, which now has no transaction.
    OrlTxHandleT lone = begin();
    uint64_t orphan = iterate(lone, kEnb, "EUtranCellFDD");
    EXPECT_EQ(agentTx()->finish(lone), OrlOk);
    LogCapture log;
    EXPECT_EQ(next(orphan, &rc), "<end>");
    EXPECT_EQ(rc, OrlNotExist);
    EXPECT_EQ(log.count("Call failed: Iterator has no matching transaction", VESK_LOG_ERROR), 1u);
    EXPECT_EQ(log.count("VeskMoImpl::nextMo - Unable to get nextMo - itHandle: " +
                            std::to_string(orphan) + " return: -2",
                        VESK_LOG_INFO),
              1u);
    _host->abort(lone);
}

TEST_F(ReadPathTest, UnknownTransactionsAnswerNotExist) {
    const OrlTxHandleT unknown = 4242;
    LogCapture log;
    int rc = 0;
    EXPECT_EQ(get(unknown, kCell, "tac", &rc), "");
    EXPECT_EQ(rc, OrlNotExist);
    EXPECT_EQ(log.count("VeskMoImpl::getMoAttribute - TransactionHandle 4242 was not found",
                        VESK_LOG_INFO),
              1u);
    EXPECT_EQ(log.count("VeskMoImpl::getMoAttribute - Unable to get attribute tac from " + kCell +
                            " - txHandle: 4242 return: -2 ",
                        VESK_LOG_INFO),
              1u);
    bool exists = true;
    EXPECT_EQ(_host->callAgent(&Mo::existsMo, unknown, kCell.c_str(), &exists), OrlNotExist);
    EXPECT_FALSE(exists);
    uint64_t count = 5, it = 5;
    EXPECT_EQ(
        _host->callAgent(&Mo::countMoChildren, unknown, kEnb.c_str(), "EUtranCellFDD", &count),
        OrlNotExist);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(_host->callAgent(&Mo::newMoIterator, unknown, kEnb.c_str(), "EUtranCellFDD", &it),
              OrlNotExist);

    EXPECT_EQ(agentTx()->commit(unknown), OrlNotExist);
    EXPECT_EQ(log.count("VeskMoImpl::commit - Unable to commit changes - txHandle: 4242 return: -2",
                        VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(agentTx()->abort(unknown), OrlOk);
    EXPECT_EQ(agentTx()->finish(unknown), OrlNotExist);
    EXPECT_EQ(log.count("VeskMoImpl::finish - Transaction finished with failure - txHandle: 4242 "
                        "return: -2",
                        VESK_LOG_INFO),
              1u);
}

bool icfStored() {
    Attribute* marker = IDatabase::getAttribute("OAM", "icfDataStoredToDB", 0);
    return marker != nullptr && boost::get<bool>(marker->value);
}

TEST_F(ReadPathTest, FirstNetconfCommitMarksTheConfigurationOnce) {
    // The demo station comes marked; clear it to see it written.
    ASSERT_NE(IDatabase::setAttribute("OAM", 1, "icfDataStoredToDB", AttributeVariant(false), false,
                                      IPCData::AVT_BOOL, false, 0),
              0);
    // A command line commit leaves the marker for later.
    _host->openSession(2, "cli-user");
    LogCapture log;
    EXPECT_EQ(_host->commit(begin()), OrlOk);
    EXPECT_EQ(log.count("VeskMoImpl::commit - Commit successful for Transaction: 0 with protocol: "
                        "2 (0 = unknown, 1 = netconf, 2 = cli )",
                        VESK_LOG_INFO),
              1u);
    EXPECT_EQ(log.countContaining("commit - Still waiting for first netconf commit after start."),
              1u);
    EXPECT_FALSE(icfStored());
    _host->closeSession();

    _host->openSession(1, "oss");
    EXPECT_EQ(_host->commit(begin()), OrlOk);
    EXPECT_EQ(log.count("First commit after start. ICF data is ready in database.", VESK_LOG_INFO),
              1u);
    EXPECT_TRUE(icfStored());

    // Tried once only: a later NETCONF commit does not write it again.
    ASSERT_NE(IDatabase::setAttribute("OAM", 1, "icfDataStoredToDB", AttributeVariant(false), false,
                                      IPCData::AVT_BOOL, false, 0),
              0);
    OrlTxHandleT tx = begin();
    EXPECT_EQ(_host->abort(tx), OrlOk);
    EXPECT_EQ(_host->commit(begin()), OrlOk);
    EXPECT_FALSE(icfStored());
    EXPECT_EQ(log.countContaining("First netconf commit after start."), 1u);
    _host->closeSession();
}

TEST_F(ReadPathTest, MissingOamAtFirstNetconfCommitIsNeverRetried) {
    ASSERT_NE(IDatabase::deleteObj("OAM", 1, 0), 0);  // the demo's carries the marker
    _host->openSession(1, "oss");
    LogCapture log;
    EXPECT_EQ(_host->commit(begin()), OrlOk);
    EXPECT_EQ(log.count("Cannot read OAM object from Database. Cannot indicate that AI "
                        "configuration is parsed into DB !!",
                        VESK_LOG_ERROR),
              1u);
    DBObject oam("OAM", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED);
    ASSERT_NE(IDatabase::insert(&oam, 0), 0);
    EXPECT_EQ(_host->commit(begin()), OrlOk);
    EXPECT_FALSE(icfStored());
    EXPECT_EQ(log.countContaining("First netconf commit after start."), 1u);
    _host->closeSession();
}

}  // namespace

// reservedBy of a referenced object follows the references that point at it.
#include <gtest/gtest.h>

#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

const char* kNet = "ManagedElement=1,EUtraNetwork=1";
const char* kFreq3 = "ManagedElement=1,EUtraNetwork=1,EUtranFrequency=3";
const char* kFreq4 = "ManagedElement=1,EUtraNetwork=1,EUtranFrequency=4";
const char* kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const char* kRelA = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1,EUtranFreqRelation=a";
const char* kRelB = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1,EUtranFreqRelation=b";

class ReservedByTest : public DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        put("ManagedElement=1", "");
        put("EUtraNetwork=1", "ManagedElement=1");
        put("EUtranFrequency=3", kNet);
        put("EUtranFrequency=4", kNet);
        put("ENodeBFunction=1", "ManagedElement=1");
        put("EUtranCellFDD=1", "ManagedElement=1,ENodeBFunction=1");
    }

    static void relation(const char* id, const std::string& ref, int handle) {
        auto rel = object(std::string("EUtranFreqRelation=") + id, kCell,
                          {attr("eutranFrequencyRef", ref, IPCData::AVT_REFERENCE)});
        ASSERT_NE(0, IDatabase::insert(rel.get(), handle));
    }
};

TEST_F(ReservedByTest, FollowsInsertsMovesAndDeletesOfReferrers) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    relation("a", kFreq3, h);
    relation("b", kFreq3, h);
    EXPECT_EQ("<absent>", committedString(kFreq3, "reservedBy"));  // not before the commit
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ(std::string(kRelA) + ";" + kRelB, committedString(kFreq3, "reservedBy"));
    std::unique_ptr<DBObject> freq(IDatabase::getObject(kFreq3, 1, 0));
    EXPECT_EQ(IPCData::AVT_REFERENCE_LIST, freq->getAttribute("reservedBy")->type);

    ASSERT_NE(0, IDatabase::setAttribute(kRelB, 1, "eutranFrequencyRef",
                                         AttributeVariant(std::string(kFreq4)), false,
                                         IPCData::AVT_REFERENCE, true, 0));
    EXPECT_EQ(kRelA, committedString(kFreq3, "reservedBy"));
    EXPECT_EQ(kRelB, committedString(kFreq4, "reservedBy"));

    ASSERT_NE(0, IDatabase::deleteObj(kRelA, 1, 0));
    EXPECT_EQ("", committedString(kFreq3, "reservedBy"));
    reopen();
    EXPECT_EQ(kRelB, committedString(kFreq4, "reservedBy"));
    ASSERT_NE(0, IDatabase::deleteObj(kRelB, 1, 0));  // the index was rebuilt at open
    EXPECT_EQ("", committedString(kFreq4, "reservedBy"));
}

TEST_F(ReservedByTest, ListReferencesShortFormsAndLateTargetsCount) {
    auto cell = object(
        "EUtranCellFDD=2", "ManagedElement=1,ENodeBFunction=1",
        {attr("refs", std::string(kFreq3) + ";EUtranFrequency=4", IPCData::AVT_REFERENCE_LIST)});
    ASSERT_NE(0, IDatabase::insert(cell.get(), 0));
    std::string cell2 = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=2";
    EXPECT_EQ(cell2, committedString(kFreq3, "reservedBy"));
    EXPECT_EQ(cell2, committedString(kFreq4, "reservedBy"));
    // A referrer that names a target before it exists: the target gets it when it arrives.
    relation("a", std::string(kNet) + ",EUtranFrequency=5", 0);
    put("EUtranFrequency=5", kNet);
    EXPECT_EQ(kRelA, committedString(std::string(kNet) + ",EUtranFrequency=5", "reservedBy"));
}

TEST_F(ReservedByTest, AnEmptiedReservedByIsRecomputedWhileReferrersRemain) {
    relation("a", kFreq3, 0);
    relation("b", kFreq3, 0);
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    std::unique_ptr<DBObject> freq(IDatabase::getObject(kFreq3, 1, h));
    freq->getAttribute("reservedBy")->SetValue(AttributeVariant(std::string("")));
    ASSERT_NE(0, IDatabase::update(freq.get(), 0));
    EXPECT_EQ(std::string(kRelA) + ";" + kRelB, committedString(kFreq3, "reservedBy"));
    // Emptied and the referrer deleted in the same transaction: only the survivor stays.
    ASSERT_NE(0, IDatabase::setAttribute(kFreq3, 1, "reservedBy", AttributeVariant(std::string()),
                                         false, IPCData::AVT_REFERENCE_LIST, true, h));
    ASSERT_NE(0, IDatabase::deleteObj(kRelA, 1, h));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ(kRelB, committedString(kFreq3, "reservedBy"));
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

// The references a transaction notes and their check before the database commit, against a real
// station database in a temporary folder, with a component on the auto-integration log's
// destination.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Logger.h"
#include "platform/VeskMessages.h"
#include "station/log/LogControl.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"
#include "unit/transaction/TransactionTestSupport.h"

namespace {

using TibVeskCM::VeskDBTransaction;
using vesk::log::LogCapture;
using vesk::txtest::attr;

const char* const kMe = "ManagedElement=1";
const char* const kHolder = "ManagedElement=1,Holder=1";
const char* const kTarget1 = "ManagedElement=1,Target=1";
const char* const kTarget2 = "ManagedElement=1,Target=2";

Attribute* ref(const std::string& name, const std::string& text) {
    return attr(name, AttributeVariant(text), IPCData::AVT_REFERENCE);
}

std::string missingLine(const std::string& target) {
    return "VeskDBTransaction::validateReferences(): Reference pointing to missing MO: " + target +
           ". Rejecting commit.";
}

std::string rejectedLine(const std::string& dn, const std::string& attribute) {
    return "VeskDBTransaction::validateReferences(): Rejected attribute: " + dn + ":" + attribute +
           ".";
}

class ReferenceTrackingTest : public vesk::txtest::TransactionTest {
  protected:
    void SetUp() override {
        TransactionTest::SetUp();
        vesk::station::registerComponent(8, [this](int, const uint8_t* data, size_t size, int) {
            std::string error;
            auto message = VESK::Messages::decodeMessage(data, size, error);
            auto* line = dynamic_cast<VESK::Messages::VESK_WriteAutointegrationLog*>(message.get());
            if (line == nullptr)
                return false;
            _aiLog.push_back(std::to_string(line->messageId) + " " + line->text);
            return true;
        });
    }
    void TearDown() override {
        vesk::station::unregisterComponent(8);
        TransactionTest::TearDown();
    }
    // Inserts "Class=id" under ManagedElement=1 in the transaction, or committed.
    void put(const std::string& key, std::initializer_list<Attribute*> attributes,
             bool committed = false) {
        TransactionTest::put(key, kMe, attributes, committed);
    }
    // The noted references, newest first, as "dn|attribute|reference".
    std::vector<std::string> noted() {
        std::vector<std::string> out;
        for (const auto& entry : _tx->getRefList())
            out.push_back(entry.dn + "|" + entry.attributeName + "|" + entry.reference);
        return out;
    }

    std::vector<std::string> _aiLog;
};

TEST_F(ReferenceTrackingTest, NotesEachTripleOnceNewestFirstAndSkipsBand46HighChannels) {
    LogCapture log;
    _tx->addToReferenceList(kHolder, "ref", kTarget1);
    _tx->addToReferenceList(kHolder, "ref", kTarget2);
    _tx->addToReferenceList(kHolder, "ref", kTarget1);  // already noted
    _tx->addToReferenceList(kHolder, "other", kTarget1);
    _tx->addToReferenceList(kHolder, "ref", "ManagedElement=1,EUtranFrequency=x255244y");
    _tx->addToReferenceList(kHolder, "ref", "261894");
    _tx->addToReferenceList(kHolder, "ref", "ManagedElement=1,EUtranFrequency=25524");
    EXPECT_EQ(noted(), (std::vector<std::string>{
                           std::string(kHolder) + "|ref|ManagedElement=1,EUtranFrequency=25524",
                           std::string(kHolder) + "|other|" + kTarget1,
                           std::string(kHolder) + "|ref|" + kTarget2,
                           std::string(kHolder) + "|ref|" + kTarget1}));
    EXPECT_EQ(log.countContaining(
                  "Reference ManagedElement=1,EUtranFrequency=x255244y not added to reference list",
                  VESK_LOG_TRACE),
              1u);
    EXPECT_EQ(log.countContaining("Reference 261894 not added to reference list"), 1u);

    log.clear();
    _tx->printReferenceList();
    EXPECT_EQ(log.countContaining("dn: ManagedElement=1,Holder=1  -- attributeName: other  -- "
                                  "reference: ManagedElement=1,Target=1",
                                  VESK_LOG_TRACE),
              1u);
    EXPECT_EQ(log.countContaining("dn: "), 4u);
}

TEST_F(ReferenceTrackingTest, RemoveForgetsEveryTargetOfThatAttributeOnly) {
    _tx->addToReferenceList(kHolder, "ref", kTarget1);
    _tx->addToReferenceList(kHolder, "ref", kTarget2);
    _tx->addToReferenceList(kHolder, "other", kTarget1);
    _tx->addToReferenceList(kTarget2, "ref", kTarget1);
    LogCapture log;
    _tx->removeFromReferenceList(kHolder, "ref");
    EXPECT_EQ(noted(), (std::vector<std::string>{std::string(kTarget2) + "|ref|" + kTarget1,
                                                 std::string(kHolder) + "|other|" + kTarget1}));
    for (const char* target : {kTarget1, kTarget2}) {
        EXPECT_EQ(log.count("VeskDBTransaction::removeFromReferenceList(): Removing reference : "
                            "ManagedElement=1,Holder=1::ref pointing to " +
                                std::string(target),
                            VESK_LOG_INFO),
                  1u);
    }
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST_F(ReferenceTrackingTest, ReferenceExistsTestsTheHeldTextInTheTransactionsView) {
    put("Holder=1", {ref("ref", "ManagedElement=1,Target=10"),
                     attr("count", AttributeVariant(3), IPCData::AVT_INT32), ref("empty", "")});
    LogCapture log;
    EXPECT_TRUE(_tx->referenceExists(kHolder, "ref", kTarget1));  // a part of the held text
    EXPECT_FALSE(_tx->referenceExists(kHolder, "ref", kTarget2));
    EXPECT_FALSE(_tx->referenceExists(kHolder, "empty", ""));
    EXPECT_FALSE(_tx->referenceExists(kHolder, "absent", kTarget1));
    EXPECT_FALSE(_tx->referenceExists(kTarget1, "ref", kTarget1));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(_tx->referenceExists(kHolder, "count", "3"));
    EXPECT_EQ(log.count("VeskDBTransaction::referenceExists(): Boost Bad Get!", VESK_LOG_ERROR),
              1u);

    // Another transaction without a database handle sees committed data only.
    VeskDBTransaction other(6, _portal);
    EXPECT_FALSE(other.referenceExists(kHolder, "ref", kTarget1));

    ASSERT_NE(IDatabase::deleteAttribute("ref", kHolder, "", handle()), 0);
    EXPECT_FALSE(_tx->referenceExists(kHolder, "ref", kTarget1));
}

TEST_F(ReferenceTrackingTest, EveryMissingTargetIsReportedAndTheListEmptied) {
    put("Target=1", {}, true);
    put("Holder=1",
        {ref("good", kTarget1),
         attr("targets", AttributeVariant(std::string(kTarget2) + ";ManagedElement=1,Target=3"),
              IPCData::AVT_REFERENCE_LIST)});
    _tx->enableAiLog();
    _tx->addToReferenceList(kHolder, "good", kTarget1);
    _tx->addToReferenceList(kHolder, "targets", kTarget2);
    _tx->addToReferenceList(kHolder, "targets", "ManagedElement=1,Target=3");
    LogCapture log;
    EXPECT_FALSE(_tx->validateReferences());
    for (const char* target : {kTarget2, "ManagedElement=1,Target=3"}) {
        EXPECT_EQ(log.count(missingLine(target), VESK_LOG_WARNING), 1u) << target;
    }
    EXPECT_EQ(log.count(rejectedLine(kHolder, "targets"), VESK_LOG_WARNING), 2u);
    EXPECT_EQ(log.count(missingLine(kTarget1)), 0u);
    const std::string line = "8195 Reference to missing MO: ManagedElement=1,Holder=1:targets";
    EXPECT_EQ(_aiLog, (std::vector<std::string>{line, line}));
    EXPECT_TRUE(_tx->getRefList().empty());

    log.clear();
    EXPECT_TRUE(_tx->validateReferences());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(_aiLog.size(), 2u);
}

TEST_F(ReferenceTrackingTest, TargetCreatedLaterInTheSameTransactionLetsTheCommitThrough) {
    put("Holder=1", {ref("ref", kTarget1)});
    _tx->addToReferenceList(kHolder, "ref", kTarget1);
    {
        LogCapture log;
        EXPECT_FALSE(_tx->validateReferences());
        EXPECT_EQ(log.lines().size(), 2u);
        EXPECT_EQ(log.count(missingLine(kTarget1), VESK_LOG_WARNING), 1u);
        EXPECT_EQ(log.count(rejectedLine(kHolder, "ref"), VESK_LOG_WARNING), 1u);
    }
    EXPECT_TRUE(_aiLog.empty());  // the log was not enabled

    _tx->addToReferenceList(kHolder, "ref", kTarget1);
    put("Target=1", {});
    LogCapture log;
    EXPECT_TRUE(_tx->validateReferences());
    EXPECT_TRUE(log.lines().empty());
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle(), false), 0);
    EXPECT_NE(IDatabase::isPresentInDB(kHolder, 1), 0);
}

TEST_F(ReferenceTrackingTest, StaleEntriesAreNotTestedButADeletedTargetFails) {
    put("Target=1", {}, true);
    put("Target=2", {}, true);
    put("Holder=1", {ref("moved", kTarget2), ref("kept", kTarget1)});
    put("Holder=2", {ref("ref", "ManagedElement=1,Target=9")});
    // Overwritten since it was noted: the missing first target does not count.
    _tx->addToReferenceList(kHolder, "moved", "ManagedElement=1,Target=8");
    // Elements noted under an empty attribute name are never held by such an attribute.
    _tx->addToReferenceList(kHolder, "", "ManagedElement=1,Target=7");
    // The holder goes away in the transaction.
    _tx->addToReferenceList("ManagedElement=1,Holder=2", "ref", "ManagedElement=1,Target=9");
    ASSERT_NE(IDatabase::deleteObj("ManagedElement=1,Holder=2", 1, handle()), 0);
    {
        LogCapture log;
        EXPECT_TRUE(_tx->validateReferences());
        EXPECT_TRUE(log.lines().empty());
    }

    _tx->enableAiLog();
    _tx->addToReferenceList(kHolder, "kept", kTarget1);
    ASSERT_NE(IDatabase::deleteObj(kTarget1, 1, handle()), 0);
    LogCapture log;
    EXPECT_FALSE(_tx->validateReferences());
    EXPECT_EQ(log.count(missingLine(kTarget1)), 1u);
    EXPECT_EQ(_aiLog, std::vector<std::string>{
                          "8195 Reference to missing MO: ManagedElement=1,Holder=1:kept"});
}

}  // namespace

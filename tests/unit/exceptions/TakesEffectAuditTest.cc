// When a change takes effect, the pending flag of a relation, and the audit attributes, over the
// station model in a station database of its own.
#include <gtest/gtest.h>

#include <boost/variant/get.hpp>
#include <memory>
#include <string>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "transaction/VeskDBTransactionHelper.h"
#include "unit/agent_model/AgentModelSupport.h"
#include "unit/database/DatabaseTestSupport.h"

namespace {

using agent_model_test::ModelHarness;
using agent_model_test::StationDatabase;
using agent_model_test::stationSchema;
using TibVeskCM::VeskDBTransactionHelper;
using vesk::log::LogCapture;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";
const std::string kTddCell = kEnb + ",EUtranCellTDD=1";
const std::string kBand = kCell + ",Cdma2000FreqBandRelation=1";
const std::string kRelation = kBand + ",Cdma20001xRttCellRelation=1";
const std::string kLocalCell =
    "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=1";

using vesk::dbtest::attr;
using vesk::dbtest::putDn;

Attribute* state(int value) {
    return attr("administrativeState", AttributeVariant(value), IPCData::AVT_ENUM);
}

// Read into a value here: the class constant has no definition of its own to bind a reference to.
const int kNotFound = 0 + VeskDBTransactionHelper::REFERENCEVALUE_NOT_FOUND;

class HelperTest : public ::testing::Test {
  protected:
    // The slot checkTakesEffect gives, starting from `preset`; `rc` gets the result.
    int slotOf(const std::string& dn, const char* attribute, int preset = 9, int* rc = nullptr) {
        int slot = preset;
        int code = _helper->checkTakesEffect(dn.c_str(), attribute, slot);
        if (rc != nullptr)
            *rc = code;
        return slot;
    }
    // The text of an attribute in the view of `handle`, "absent" when there is none.
    std::string valueOf(const std::string& dn, const std::string& name, int handle) {
        std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle));
        Attribute* a = object ? object->getAttribute(name) : nullptr;
        if (a == nullptr || a->deleted)
            return "absent";
        return a->ToStr() + "/" + std::to_string(a->type);
    }

    ModelHarness _model{stationSchema(), "/nonexistent"};
    StationDatabase _db;
    VeskDBTransactionHelper* _helper = VeskDBTransactionHelper::instance();
};

TEST_F(HelperTest, CellLockChangesWaitInTheCellsSlotWhileItIsUnlocked) {
    putDn(kEnb, {});
    putDn(kCell, {state(0), attr("alternateStorageSlot", AttributeVariant(3), IPCData::AVT_INT32)});
    putDn(kBand, {});
    putDn(kRelation, {});
    EXPECT_EQ(slotOf(kCell, "dlChannelBandwidth"), 0);  // locked
    EXPECT_EQ(slotOf(kRelation, "includeInSystemInformation"), 0);

    ASSERT_NE(IDatabase::setAttribute(kCell, 1, "administrativeState", AttributeVariant(1), false,
                                      IPCData::AVT_ENUM, false, 0),
              0);
    int rc = -1;
    EXPECT_EQ(slotOf(kCell, "dlChannelBandwidth", 9, &rc), 3);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(slotOf(kRelation, "includeInSystemInformation"), 3);  // the cell above decides
    EXPECT_EQ(slotOf(kCell, "physicalLayerCellIdGroup"), 0);
    EXPECT_EQ(slotOf(kCell, "physicalLayerSubCellId"), 0);
    EXPECT_EQ(slotOf(kCell, "isDlOnly"), 0);  // no takes-effect rule

    // A cell that is not an FDD cell, and an unlocked FDD cell without a slot of its own.
    putDn(kTddCell, {state(1)});
    EXPECT_EQ(slotOf(kTddCell, "dlChannelBandwidth"), 0);
    putDn(kEnb + ",EUtranCellFDD=2", {state(1)});
    EXPECT_EQ(slotOf(kEnb + ",EUtranCellFDD=2", "dlChannelBandwidth"), 0);
    // A cell whose state cannot be read counts as unlocked.
    putDn(kEnb + ",EUtranCellFDD=3",
          {attr("alternateStorageSlot", AttributeVariant(4), IPCData::AVT_INT32)});
    EXPECT_EQ(slotOf(kEnb + ",EUtranCellFDD=3", "dlChannelBandwidth"), 4);
}

TEST_F(HelperTest, ObjectLockRestartAndUncommittedObjects) {
    putDn("ManagedElement=1,NodeBFunction=1", {});
    putDn("ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1", {});
    putDn(kLocalCell, {state(1)});
    int rc = 0;
    EXPECT_EQ(slotOf(kLocalCell, "maxTransmissionPower", 9, &rc), 9);
    EXPECT_EQ(rc, -5);  // must be locked first
    EXPECT_EQ(slotOf(kLocalCell, "maxNumConcurrentUsers", 9, &rc), 2);
    EXPECT_EQ(rc, 0);

    ASSERT_NE(IDatabase::setAttribute(kLocalCell, 1, "administrativeState", AttributeVariant(2),
                                      false, IPCData::AVT_ENUM, false, 0),
              0);
    EXPECT_EQ(slotOf(kLocalCell, "maxTransmissionPower", 9, &rc), 9);  // shutting down
    EXPECT_EQ(rc, 0);
    ASSERT_NE(IDatabase::setAttribute(kLocalCell, 1, "administrativeState", AttributeVariant(0),
                                      false, IPCData::AVT_ENUM, false, 0),
              0);
    EXPECT_EQ(slotOf(kLocalCell, "maxTransmissionPower", 9, &rc), 0);
    EXPECT_EQ(rc, 0);

    // Created in the open transaction only: written at once, the slot left alone.
    int handle = _db.begin();
    ASSERT_GT(handle, 0);
    const std::string fresh =
        "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=2";
    putDn(fresh, {state(1)}, handle);
    EXPECT_EQ(slotOf(fresh, "maxNumConcurrentUsers", 9, &rc), 9);
    EXPECT_EQ(slotOf(fresh, "maxTransmissionPower", 9, &rc), 9);
    EXPECT_EQ(rc, 0);
}

TEST_F(HelperTest, FindsTheFddCellAtOrAboveADn) {
    EXPECT_EQ(_helper->getEutrancellFDD(kRelation), kCell);
    EXPECT_EQ(_helper->getEutrancellFDD(kCell), kCell);
    EXPECT_EQ(_helper->getEutrancellFDD(kTddCell + ",EUtranFreqRelation=1"), "");
    EXPECT_EQ(_helper->getEutrancellFDD(kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1,"
                                               "ExternalEUtranCellFDD=1"),
              "");
    EXPECT_EQ(_helper->getEutrancellFDD("ManagedElement=1"), "");
}

TEST_F(HelperTest, PendingPartnerFlagOfARelation) {
    putDn(kEnb, {});
    putDn(kCell, {});
    putDn(kBand, {});
    putDn(kRelation, {}, 0,
          {attr("includeInSystemInformationRel9", AttributeVariant(true), IPCData::AVT_BOOL),
           attr("includeInSystemInformation", AttributeVariant(false), IPCData::AVT_BOOL)});
    LogCapture log;
    EXPECT_EQ(_helper->getReferenceValueFromAlternateStorage(kRelation.c_str(),
                                                             "includeInSystemInformation"),
              1);
    EXPECT_EQ(log.count("getAlternateAttribute() Attribute: includeInSystemInformation. "
                        "strCheckAttribute: includeInSystemInformationRel9. refValue: 1 retVal: 1",
                        VESK_LOG_INFO),
              1u);
    EXPECT_EQ(_helper->getReferenceValueFromAlternateStorage(kRelation.c_str(),
                                                             "includeInSystemInformationRel9"),
              0);
    EXPECT_EQ(
        _helper->getReferenceValueFromAlternateStorage(kCell.c_str(), "includeInSystemInformation"),
        kNotFound);
    EXPECT_EQ(_helper->getReferenceValueFromAlternateStorage(
                  (kBand + ",Cdma20001xRttCellRelation=2").c_str(), "includeInSystemInformation"),
              kNotFound);
    EXPECT_EQ(log.countContaining("returning REFERENCEVALUE_NOT_FOUND", VESK_LOG_TRACE), 1u);

    const std::string odd = kBand + ",Cdma20001xRttCellRelation=3";
    putDn(odd, {}, 0,
          {attr("includeInSystemInformationRel9", AttributeVariant(1), IPCData::AVT_INT32)});
    log.clear();
    EXPECT_EQ(
        _helper->getReferenceValueFromAlternateStorage(odd.c_str(), "includeInSystemInformation"),
        kNotFound);
    EXPECT_EQ(log.count("VeskDBTransactionHelper::getReferenceValueFromAlternateStorage, Boost "
                        "Bad Get! When reading value of includeInSystemInformationRel9.",
                        VESK_LOG_ERROR),
              1u);
}

TEST_F(HelperTest, AuditAttributesFollowTheClassesModel) {
    int handle = _db.begin();
    ASSERT_GT(handle, 0);
    putDn(kEnb, {}, handle);
    putDn(kCell, {}, handle);
    putDn(kBand, {}, handle);

    EXPECT_EQ(_helper->createOtherRequiredAttributes(kBand, VeskDBTransactionHelper::NOT_MODIFIED,
                                                     handle),
              0);
    EXPECT_EQ(valueOf(kBand, "createdBy", handle), "0/12");
    EXPECT_EQ(valueOf(kBand, "lastModification", handle), "0/12");
    EXPECT_EQ(valueOf(kBand, "timeOfCreation", handle), "/9");
    EXPECT_EQ(valueOf(kBand, "timeOfLastModification", handle), "/9");
    EXPECT_EQ(valueOf(kBand, "reservedBy", handle), "absent");  // not in the class

    EXPECT_EQ(_helper->handleLastModificationAttribute(
                  kBand, VeskDBTransactionHelper::OPERATOR_MODIFICATION, handle),
              0);
    EXPECT_EQ(valueOf(kBand, "lastModification", handle), "1/12");  // "OPERATOR"
    EXPECT_EQ(_helper->handleLastModificationAttribute(
                  kBand, VeskDBTransactionHelper::OPERATOR_DELETE, handle),
              0);
    EXPECT_EQ(valueOf(kBand, "lastModification", handle), "2/12");

    // A cell has the reservation and power read-only attributes too.
    EXPECT_EQ(_helper->createReadOnlyAttributes(kCell, handle), 0);
    EXPECT_EQ(valueOf(kCell, "reservedBy", handle), "/31");
    EXPECT_EQ(valueOf(kCell, "maximumTransmissionPower", handle), "0/3");

    // A struct child and a class without audit attributes are left alone.
    EXPECT_EQ(
        _helper->handleLastModificationAttribute(kCell + ":mobCtrlAtPoorCovActive",
                                                 VeskDBTransactionHelper::OPERATOR_DELETE, handle),
        0);
    EXPECT_EQ(_helper->createOtherRequiredAttributes(
                  kEnb, VeskDBTransactionHelper::OPERATOR_MODIFICATION, handle),
              0);
    EXPECT_EQ(valueOf(kEnb, "createdBy", handle), "absent");
    EXPECT_EQ(valueOf(kEnb, "lastModification", handle), "absent");
    EXPECT_EQ(valueOf(kEnb, "timeOfCreation", handle), "absent");
}

TEST_F(HelperTest, AuditFailuresStopAtTheFirstStep) {
    LogCapture log;
    EXPECT_EQ(_helper->createOtherRequiredAttributes("ManagedElement=1,NoSuchClass=1",
                                                     VeskDBTransactionHelper::NOT_MODIFIED, 0),
              -1);
    EXPECT_EQ(log.count("VeskDBTransactionHelper::createOtherRequiredAttributes, Failed to create "
                        "read only attributes for MO 'ManagedElement=1,NoSuchClass=1'.",
                        VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(log.countContaining("'createdBy'"), 0u);

    // The class has the attributes but the MO is in no database view: the write fails.
    log.clear();
    EXPECT_EQ(_helper->handleCreatedByAttribute(kRelation, 0), -1);
    EXPECT_EQ(_helper->handleLastModificationAttribute(kRelation,
                                                       VeskDBTransactionHelper::NOT_MODIFIED, 0),
              -1);
}

}  // namespace

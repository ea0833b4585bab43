// The change-exception rules, one row a question, against a station database in its own temporary
// folder that holds a small committed network.
#include <gtest/gtest.h>

#include <string>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskCheckExceptions.h"

namespace {

using TibVeskCM::VeskCheckExceptions;
using vesk::dbtest::attr;
using vesk::dbtest::number;
using vesk::dbtest::putDn;
using vesk::log::LogCapture;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";
const std::string kBand = kCell + ",Cdma2000FreqBandRelation=1";
const std::string kRelation = kBand + ",Cdma20001xRttCellRelation=1";
const std::string kPmJob = "ManagedElement=1,SystemFunctions=1,Pm=1,PmJob=1";
const std::string kReader = kPmJob + ",MeasurementReader=1";
const std::string kFrequency6300 =
    "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1,EUtranFrequency=1";
const std::string kFrequency1300 =
    "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1,EUtranFrequency=2";

Attribute* flag(const std::string& name, bool value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_BOOL);
}

// A committed network: an LTE function whose only enabled cells are a TDD cell and a struct
// object of an FDD cell; a WCDMA function with an enabled local cell; PM, upgrade packages,
// a relation with its flags, and two frequencies of which the first is the cell's own.
class RuleDatabase : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        putDn("ManagedElement=1", {});
        for (const char* dn :
             {"ManagedElement=1,SystemFunctions=1", "ManagedElement=1,SystemFunctions=1,SwM=1",
              "ManagedElement=1,SystemFunctions=1,Pm=1"})
            putDn(dn, {});
        putDn("ManagedElement=1,SystemFunctions=1,SwM=1,UpgradePackage=7", {});
        putDn(kEnb, {});
        putDn(kCell, {number("operationalState", 0), number("earfcndl", 6300)});
        putDn(kCell + ":someStruct", {number("operationalState", 1)});
        putDn(kEnb + ",EUtranCellTDD=1", {number("operationalState", 1)});
        putDn("ManagedElement=1,NodeBFunction=1", {});
        putDn("ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1", {});
        putDn("ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=1",
              {number("operationalState", 1)});
        putDn(kPmJob, {});
        putDn(kReader, {attr("measurementSpecification", AttributeVariant(std::string("x")),
                             IPCData::AVT_STRING)});
        putDn(kCell + ",Cdma2000FreqBandRelation=1", {});
        putDn(kRelation,
              {flag("includeInSystemInformation", false),
               flag("includeInSystemInformationRel9", true)},
              0,
              {flag("includeInSystemInformation", false),
               flag("includeInSystemInformationRel9", true)});
        putDn(kEnb + ",EUtraNetwork=1", {});
        putDn(kFrequency6300, {number("arfcnValueEUtranDl", 6300)});
        putDn(kFrequency1300, {number("arfcnValueEUtranDl", 1300)});
        putDn(
            kCell + ",EUtranFreqRelation=1",
            {attr("eutranFrequencyRef", AttributeVariant(kFrequency6300), IPCData::AVT_REFERENCE)});
        putDn(
            kCell + ",EUtranFreqRelation=2",
            {attr("eutranFrequencyRef", AttributeVariant(kFrequency1300), IPCData::AVT_REFERENCE)});
    }
    VeskCheckExceptions _rules;
};

// One question: which rule, its two texts (dn, then parent, class or attribute) and a number.
enum Ask { kCreate, kDelete, kKey, kReaderSet, kBackups, kFlag, kFlagDb, kFlagPending, kRelDelete };
struct Rule {
    const char* name;
    Ask ask;
    std::string dn, text;
    int value;
    bool answer;
};

bool ask(VeskCheckExceptions& r, const Rule& q) {
    switch (q.ask) {
        case kCreate:
            return r.checkMoCreation(q.dn, q.text, std::to_string(q.value));
        case kDelete:
            return r.checkMoDeletion(q.dn, q.text);
        case kKey:
            return r.checkKeyAttribute(q.dn, q.text);
        case kReaderSet:
            return r.checkMeasurementReaderAttributeExistance(q.dn.c_str(), q.text.c_str());
        case kBackups:
            return r.checkBrMHousekeepingAttributeValidity(q.text, q.value);
        case kFlag:
            return r.isIt_includeInSystemInformationEtc(q.dn.c_str(), q.text.c_str());
        case kFlagDb:
            return r.check_includeInSystemInformationAndRel9AttributeValidity(
                q.dn.c_str(), q.text.c_str(), q.value);
        case kFlagPending:
            return r.checkAltStorage_includeInSystemInformationAndRel9AttributeValidity(
                q.dn.c_str(), q.text.c_str(), q.value);
        case kRelDelete:
            return r.checkEUtranFreqRelationDeletion(q.dn);
    }
    return false;
}

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.name;
}

class RuleTable : public RuleDatabase, public ::testing::WithParamInterface<Rule> {};

TEST_P(RuleTable, Answers) {
    EXPECT_EQ(ask(_rules, GetParam()), GetParam().answer);
}

const std::string kSwM = "ManagedElement=1,SystemFunctions=1,SwM=1";
const std::string kSi = "includeInSystemInformation";
const std::string kSi9 = "includeInSystemInformationRel9";
const std::string kFreqRel = kCell + ",EUtranFreqRelation=";

// clang-format off
const Rule kRules[] = {
    {"UpgradePackageOnRecord", kCreate, kSwM, "UpgradePackage", 7, true},
    {"UpgradePackageWithoutRecord", kCreate, kSwM, "UpgradePackage", 8, false},
    {"MeasurementReaderUnderCommittedParent", kCreate, kPmJob, "measurementreader", 1, false},
    {"MeasurementReaderUnderNewParent", kCreate, "ManagedElement=1,Pm=1,PmJob=9", "MeasurementReader", 1, true},
    {"OtherClass", kCreate, kPmJob, "PmJob", 1, true},
    {"PmJobItself", kDelete, kPmJob, "", 0, true},
    {"ChildOfPmJob", kDelete, kPmJob + ",MeasurementReader=2", "", 0, false},
    {"UpgradePackageAnyCase", kDelete, kSwM + ",upgradePACKAGE=3", "", 0, false},
    {"UnderUpgradePackageParent", kDelete, "Thing=1", kSwM + ",UpgradePackage=3", 0, false},
    {"PlainMo", kDelete, "ManagedElement=1,Equipment=1", "", 0, true},
    {"LteFunctionWithoutEnabledFddCell", kDelete, kEnb, "", 0, true},
    {"WcdmaFunctionWithEnabledLocalCell", kDelete, "ManagedElement=1,NodeBFunction=1", "", 0, false},
    {"RatCheckSkippedWithParent", kDelete, "ManagedElement=1,NodeBFunction=1", "ManagedElement=1", 0, true},
    {"KeyAttribute", kKey, kFrequency6300, "eUtranFrequencyId", 0, true},
    {"KeyAttributeOfRootDn", kKey, "ManagedElement=1", "managedElementId", 0, true},
    {"KeyAttributeIsCaseSensitive", kKey, kFrequency6300, "EUtranFrequencyId", 0, false},
    {"KeyAttributeWithoutClass", kKey, "ManagedElement=1,=1", "Id", 0, false},
    {"CommittedReaderAttributeHeld", kReaderSet, kReader, "measurementSpecification", 0, true},
    {"CommittedReaderAttributeNotHeld", kReaderSet, kReader, "thresholdRateOfChange", 0, false},
    {"NewReader", kReaderSet, kPmJob + ",MeasurementReader=5", "measurementSpecification", 0, false},
    {"NotAReader", kReaderSet, kCell, "earfcndl", 0, false},
    {"ManualBackups0", kBackups, "", "maxStoredManualBackups", 0, false},
    {"ManualBackups1", kBackups, "", "maxStoredManualBackups", 1, true},
    {"ManualBackups5", kBackups, "", "maxStoredManualBackups", 5, true},
    {"ManualBackups6", kBackups, "", "maxStoredManualBackups", 6, false},
    {"OtherHousekeepingAttribute", kBackups, "", "autoDelete", 0, true},
    {"FlagOfRelation", kFlag, kRelation, kSi9, 0, true},
    {"FlagOfRelationAnyCase", kFlag, "x,CDMA20001XRTTCELLRELATION=1", kSi, 0, true},
    {"OtherAttributeOfRelation", kFlag, kRelation, "externalCdma2000CellRef", 0, false},
    {"FlagOfOtherClass", kFlag, "x,Cdma2000CellRelation=1", kSi, 0, false},
    {"TrueAgainstStoredTrue", kFlagDb, kRelation, kSi, 1, true},
    {"FalseNeverConflicts", kFlagDb, kRelation, kSi, 0, false},
    {"TrueAgainstStoredFalse", kFlagDb, kRelation, kSi9, 1, false},
    {"UncommittedRelation", kFlagDb, kBand + ",Cdma20001xRttCellRelation=2", kSi, 1, false},
    {"TrueAgainstPendingTrue", kFlagPending, kRelation, kSi, 1, true},
    {"TrueAgainstPendingFalse", kFlagPending, kRelation, kSi9, 1, false},
    {"NothingPendingOnCell", kFlagPending, kCell, kSi, 1, false},
    {"RelationOnOwnFrequency", kRelDelete, kFreqRel + "1", "", 0, false},
    {"RelationOnOtherFrequency", kRelDelete, kFreqRel + "2", "", 0, true},
    {"ChildOfRelation", kRelDelete, kFreqRel + "1,EUtranCellRelation=1", "", 0, true},
    {"UnreadableRelation", kRelDelete, kFreqRel + "3", "", 0, true},
    {"NotARelation", kRelDelete, kCell, "", 0, true},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Rules, RuleTable, ::testing::ValuesIn(kRules),
                         [](const ::testing::TestParamInfo<Rule>& info) {
                             return std::string(info.param.name);
                         });

TEST_F(RuleDatabase, LogLinesTellWhyADeletionPassesOrNot) {
    LogCapture log;
    EXPECT_TRUE(_rules.checkMoDeletion(kPmJob, ""));
    EXPECT_EQ(log.count("VeskCheckExceptions::isThisPmJob found PmJob, returning TRUE: " + kPmJob,
                        VESK_LOG_INFO),
              1u);
    EXPECT_EQ(log.count("VeskCheckExceptions::checkPmJobDeletion can be removed, 'cause this is "
                        "PmJob parent: " +
                            kPmJob,
                        VESK_LOG_INFO),
              1u);

    log.clear();
    EXPECT_FALSE(_rules.checkMoDeletion("ManagedElement=1,NodeBFunction=1", ""));
    EXPECT_EQ(log.count("VeskCheckExceptions::isThisPmJob did NOT found PmJob, returning FALSE: "
                        "ManagedElement=1,NodeBFunction=1"),
              1u);
    EXPECT_EQ(log.count("VeskCheckExceptions::checkRatDeletion ManagedElement=1,NodeBFunction=1 "
                        "can't be removed, enabled cells found under it",
                        VESK_LOG_INFO),
              1u);

    log.clear();
    EXPECT_TRUE(_rules.checkMoDeletion(kEnb, ""));
    EXPECT_EQ(log.count("VeskCheckExceptions::checkRatDeletion Enabled cells not found under " +
                        kEnb + ", can be removed"),
              1u);

    // Enabling the FDD cell holds its function back.
    ASSERT_NE(IDatabase::setAttribute(kCell, 1, "operationalState", AttributeVariant(1), false,
                                      IPCData::AVT_ENUM, false, 0),
              0);
    EXPECT_FALSE(_rules.checkMoDeletion(kEnb, ""));
}

TEST_F(RuleDatabase, FailedReadsAnswerNoAndSayWhy) {
    LogCapture log;
    EXPECT_FALSE(_rules.checkKeyAttribute(",=1", "Id"));
    EXPECT_EQ(log.count("VeskCheckExceptions::checkKeyAttribute, couldn't determine class name "
                        "from dn, don't know if the attribute is key or not.",
                        VESK_LOG_INFO),
              1u);

    bool isDefault = true;
    EXPECT_NE(_rules.checkIsDefaultFreq(kCell + ",EUtranFreqRelation=3", isDefault), 0);
    EXPECT_EQ(log.count("VeskCheckExceptions::checkIsDefaultFreq, Failed to get MO '" + kCell +
                            ",EUtranFreqRelation=3' from database.",
                        VESK_LOG_ERROR),
              1u);
    EXPECT_TRUE(isDefault);  // untouched

    // A relation of a cell without earfcndl, and flags held as numbers.
    putDn(kEnb + ",EUtranCellFDD=2", {});
    putDn(kEnb + ",EUtranCellFDD=2,EUtranFreqRelation=1",
          {attr("eutranFrequencyRef", AttributeVariant(kFrequency1300), IPCData::AVT_REFERENCE)});
    log.clear();
    EXPECT_TRUE(
        _rules.checkEUtranFreqRelationDeletion(kEnb + ",EUtranCellFDD=2,EUtranFreqRelation=1"));
    EXPECT_EQ(
        log.count("VeskCheckExceptions::checkIsDefaultFreq, Failed to get attribute earfcndl."),
        1u);
    EXPECT_EQ(log.count("VeskCheckExceptions::checkEUtranFreqRelationDeletion, Failed to check "
                        "default frequency of cell.",
                        VESK_LOG_ERROR),
              1u);

    const std::string odd = kCell + ",Cdma2000FreqBandRelation=1,Cdma20001xRttCellRelation=3";
    putDn(odd,
          {number("includeInSystemInformation", 1), number("includeInSystemInformationRel9", 1)});
    log.clear();
    EXPECT_FALSE(_rules.check_includeInSystemInformationAndRel9AttributeValidity(
        odd.c_str(), "includeInSystemInformation", true));
    EXPECT_EQ(
        log.count("VeskCheckExceptions::check_includeInSystemInformationAndRel9AttributeValidity,"
                  " Boost Bad Get! When reading value of includeInSystemInformationRel9.",
                  VESK_LOG_ERROR),
        1u);
    log.clear();
    EXPECT_FALSE(_rules.checkAltStorage_includeInSystemInformationAndRel9AttributeValidity(
        odd.c_str(), "includeInSystemInformation", true));
    EXPECT_EQ(log.count("VeskCheckExceptions::checkAltStorage_"
                        "includeInSystemInformationAndRel9AttributeValidity,"
                        " Failed to get alternate attribute includeInSystemInformation.",
                        VESK_LOG_ERROR),
              1u);
}

}  // namespace

// The agent's model questions, answered through the host's repository over the station model and
// over the small test model.
#include <gtest/gtest.h>

#include "plugin/VeskOrlHelper.h"
#include "station/log/LogControl.h"
#include "unit/agent_model/AgentModelSupport.h"

namespace agent_model_test {
namespace {

using TibVeskCM::VeskModelRepository;
using vesk::log::LogCapture;

const char* const kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const char* const kLocalCell =
    "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=1";

class StationModelQueryTest : public ::testing::Test {
  protected:
    ModelHarness _model{stationSchema(), "/nonexistent"};
    VeskModelRepository* _repo = ModelHarness::repo();
};

TEST_F(StationModelQueryTest, AttributeTypesResolveDerivedTypesAndKeepPresetForUnknown) {
    LogCapture capture;
    int type = -2;
    EXPECT_EQ(_repo->getAttributeType(kCell, "dlChannelBandwidth", &type), 0);
    EXPECT_EQ(type, 3);  // channel-bandwidth is derived from int32
    EXPECT_EQ(capture.countContaining("Fetching derived data type", 32), 1u);
    type = -2;
    EXPECT_EQ(_repo->getAttributeType(kCell, "administrativeState", &type), 0);
    EXPECT_EQ(type, 12);  // an enumeration typedef
    type = -2;
    EXPECT_EQ(_repo->getAttributeType(kCell, "reservedBy", &type), 0);
    EXPECT_EQ(type, 11);
    type = -2;
    EXPECT_EQ(_repo->getAttributeType(kCell, "noSuchAttribute", &type), 0);
    EXPECT_EQ(type, -2);
    EXPECT_EQ(_repo->getAttributeType("ManagedElement=1,NoSuchClass=1", "x", &type), -1);
    EXPECT_EQ(capture.count("VeskModelRepository: failed to get MOC "
                            "ManagedElement=1,NoSuchClass=1 handle ",
                            2),
              1u);
    // Asked again: the same answers, from memory (no derived type is resolved again).
    const size_t resolved = capture.countContaining("Fetching derived data type", 32);
    for (auto asked : {std::make_pair("dlChannelBandwidth", 3), std::make_pair("reservedBy", 11),
                       std::make_pair("noSuchAttribute", -2)}) {
        type = -2;
        EXPECT_EQ(_repo->getAttributeType(kCell, asked.first, &type), 0);
        EXPECT_EQ(type, asked.second) << asked.first;
    }
    EXPECT_EQ(capture.countContaining("Fetching derived data type", 32), resolved);
    // New records: nothing remembered of the old ones.
    OrlOamSpiModelRepository_2 failing = *_model.host().record2();
    failing.getAttributeTypeContainer =
        [](OrlOamSpiAttributeHandleT, OrlOamSpiTypeContainerHandleT*) { return OrlReturnT(-1); };
    _repo->initialize(&failing, _model.host().record3());
    EXPECT_EQ(_repo->getAttributeType(kCell, "dlChannelBandwidth", &type), -1);
    _repo->initialize(_model.host().record2(), _model.host().record3());
}

TEST_F(StationModelQueryTest, InitializeInstallsTheHelpersTypeLookup) {
    TibVeskCM::VeskOrlHelper::setAttributeTypeLookup(nullptr);
    _repo->initialize(_model.host().record2(), _model.host().record3());
    OrlMoAttributeValueResult_3 result{};
    TibVeskCM::VeskOrlHelper::initAttributeContainer(kLocalCell, "maxNumConcurrentUsers", &result);
    ASSERT_NE(result.container, nullptr);
    int type = -2;
    EXPECT_EQ(_repo->getAttributeType(kLocalCell, "maxNumConcurrentUsers", &type), 0);
    EXPECT_NE(type, -2);
    EXPECT_EQ(result.container->type, type);
    result.release(result.container);
}

TEST_F(StationModelQueryTest, ListsExistenceAndCardinalities) {
    bool isList = true;
    EXPECT_EQ(_repo->checkAttributeListType(kCell, "reservedBy", isList), 0);
    EXPECT_TRUE(isList);
    EXPECT_EQ(_repo->checkAttributeListType(kCell, "dlChannelBandwidth", isList), 0);
    EXPECT_FALSE(isList);
    isList = true;
    EXPECT_EQ(_repo->checkAttributeListType(kCell, "noSuchAttribute", isList), 0);
    EXPECT_FALSE(isList);

    bool exists = false;
    EXPECT_EQ(_repo->checkAttributeExist(kCell, "isDlOnly", exists), 0);
    EXPECT_TRUE(exists);
    EXPECT_EQ(_repo->checkAttributeExist(kCell, "isUlOnly", exists), 0);
    EXPECT_FALSE(exists);

    int min = -1;
    int max = -1;
    EXPECT_EQ(_repo->getMOCardinalityRange("ManagedElement=1,ENodeBFunction=1",
                                           "CarrierAggregationFunction", min, max),
              0);
    EXPECT_EQ(min, 1);
    EXPECT_EQ(max, 1);
    EXPECT_EQ(_repo->getMOCardinalityRange("ManagedElement=1,ENodeBFunction=1", "EUtranCellFDD",
                                           min, max),
              0);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 6);
}

TEST_F(StationModelQueryTest, EnumerationLiteralsAndTakesEffect) {
    int value = 0;
    EXPECT_EQ(_repo->getEnumValueByLiteralName(kCell, "administrativeState", "UNLOCKED", value), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(_repo->getEnumValueByLiteralName(kCell, "administrativeState", "OPEN", value), -2);
    EXPECT_EQ(value, -1);
    LogCapture capture;
    EXPECT_EQ(_repo->getEnumValueByLiteralName(kCell, "isDlOnly", "true", value), 0);
    EXPECT_EQ(value, -1);  // not an enumeration: 0, with the value still -1
    EXPECT_EQ(capture.countContaining("VeskModelRepository: the type is not enum ", 32), 1u);

    VeskModelRepository::TakesEffectValue effect = VeskModelRepository::TAKES_EFFECT_NONE;
    EXPECT_EQ(_repo->getAttributeTakesEffectValue(kCell, "dlChannelBandwidth", effect), 0);
    EXPECT_EQ(effect, VeskModelRepository::TAKES_EFFECT_CELL_LOCK);
    EXPECT_EQ(_repo->getAttributeTakesEffectValue(kLocalCell, "maxTransmissionPower", effect), 0);
    EXPECT_EQ(effect, VeskModelRepository::TAKES_EFFECT_OBJECT_LOCK);
    EXPECT_EQ(_repo->getAttributeTakesEffectValue(kLocalCell, "maxNumConcurrentUsers", effect), 0);
    EXPECT_EQ(effect, VeskModelRepository::TAKES_EFFECT_NODE_RESTART);
    EXPECT_EQ(_repo->getAttributeTakesEffectValue(kCell, "isDlOnly", effect), 0);
    EXPECT_EQ(effect, VeskModelRepository::TAKES_EFFECT_NONE);
}

class TestModelQueryTest : public ::testing::Test {
  protected:
    ModelHarness _model{testSchema(), "/nonexistent"};
    VeskModelRepository* _repo = ModelHarness::repo();
};

TEST_F(TestModelQueryTest, DerivedTypesAndMultiplicity) {
    int type = -2;
    EXPECT_EQ(_repo->getAttributeType("ManagedElement=1", "depth", &type), 0);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(_repo->getAttributeType("ManagedElement=1", "shade", &type), 0);
    EXPECT_EQ(type, 12);
    bool isList = true;
    EXPECT_EQ(_repo->checkAttributeListType("ManagedElement=1", "label", isList), 0);
    EXPECT_FALSE(isList);  // maximum 1
    EXPECT_EQ(_repo->checkAttributeListType("ManagedElement=1", "pair", isList), 0);
    EXPECT_TRUE(isList);  // maximum 2
    std::string dn = "ManagedElement=1";
    std::string attr = "pair";
    int min = -1;
    int max = -1;
    EXPECT_EQ(_repo->getAttributeMultiplicityRange(dn, attr, min, max), 0);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 2);
    attr = "missing";
    EXPECT_NE(_repo->getAttributeMultiplicityRange(dn, attr, min, max), 0);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 0);
}

TEST_F(TestModelQueryTest, LastRecognisedTakesEffectWins) {
    OrlOamSpiMocHandleT moc = 0;
    ASSERT_EQ(_repo->getMOCHandleByDn("ManagedElement=1", &moc), 0);
    std::list<std::string> values{"stale"};
    EXPECT_EQ(_repo->getAttributeDomainExtensionValue(moc, "lockLevel", "takesEffect", &values), 0);
    EXPECT_EQ(values, (std::list<std::string>{"Cell lock/unlock", "At node restart", "Whenever"}));
    EXPECT_EQ(_repo->getAttributeDomainExtensionValue(moc, "label", "takesEffect", &values), 0);
    EXPECT_TRUE(values.empty());

    VeskModelRepository::TakesEffectValue effect = VeskModelRepository::TAKES_EFFECT_NONE;
    EXPECT_EQ(_repo->getAttributeTakesEffectValue("ManagedElement=1", "lockLevel", effect), 0);
    EXPECT_EQ(effect, VeskModelRepository::TAKES_EFFECT_NODE_RESTART);
}

TEST_F(TestModelQueryTest, SystemCreatedAndRequestedClasses) {
    OrlOamSpiMocHandleT twin = _repo->getRequestedMOC("AgentTest", "Twin");
    ASSERT_NE(twin, 0u);
    EXPECT_TRUE(_repo->isSystemCreatedMOC(twin));
    OrlOamSpiMocHandleT manual = _repo->getRequestedMOC("AgentTest", "Manual");
    ASSERT_NE(manual, 0u);
    EXPECT_FALSE(_repo->isSystemCreatedMOC(manual));
    EXPECT_EQ(_repo->getRequestedMOC("OtherModel", "Twin"), 0u);
    int min = 0;
    int max = 0;
    EXPECT_EQ(_repo->getMOCardinalityRange("ManagedElement=1", "Twin", min, max), 0);
    EXPECT_EQ(min, 2);
    EXPECT_EQ(max, OrlOamSpiMrUnbounded);
}

}  // namespace
}  // namespace agent_model_test

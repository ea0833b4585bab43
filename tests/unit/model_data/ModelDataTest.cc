// Checks the station model against the rules that the host's model repository
// and the agent rely on.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "ModelFixture.h"

namespace vesk::modeltest {
namespace {

TEST_F(ModelData, EnumerationsCarryTheirFixedNumbers) {
    using Literals = std::map<std::string, int>;
    EXPECT_EQ(enumLiterals(attr(kCell, "operationalState")).at("ENABLED"), 1);
    const std::string eventJob = kMe + "/SystemFunctions/PmEventM/EventProducer/EventJob";
    EXPECT_EQ(enumLiterals(attr(eventJob, "currentJobState")).at("STOPPED"), 2);

    const lysc_node* progress = attr(kBrm + "/BrmBackup", "progressReport");
    ASSERT_NE(progress, nullptr);
    Literals state = enumLiterals(attribute(progress, "state"));
    EXPECT_EQ(state.at("CANCELLING"), 1);
    EXPECT_EQ(state.at("RUNNING"), 2);
    EXPECT_EQ(state.at("FINISHED"), 3);

    // Every class with audit attributes must offer the literals the station writes.
    int classesWithAudit = 0;
    for (const auto& [path, node] : allClasses()) {
        const lysc_node* createdBy = attribute(node, "createdBy");
        const lysc_node* lastModification = attribute(node, "lastModification");
        EXPECT_EQ(createdBy == nullptr, lastModification == nullptr) << path;
        if (createdBy == nullptr || lastModification == nullptr) {
            continue;
        }
        ++classesWithAudit;
        Literals created = enumLiterals(createdBy);
        Literals modified = enumLiterals(lastModification);
        EXPECT_TRUE(created.count("OPERATOR")) << path;
        bool has2 = false, has6 = false;
        for (const auto& [name, value] : created)
            has2 |= value == 2;
        for (const auto& [name, value] : modified)
            has6 |= value == 6;
        EXPECT_TRUE(has2) << path << " createdBy has no literal numbered 2";
        EXPECT_TRUE(has6) << path << " lastModification has no literal numbered 6";
        for (const char* literal : {"NOT_MODIFIED", "OPERATOR", "OPERATOR_DELETE"}) {
            EXPECT_TRUE(modified.count(literal)) << path << " " << literal;
        }
    }
    EXPECT_GE(classesWithAudit, 10);
}

struct AttributeSample {
    std::string path;
    std::string name;
    int type;
    int base;
    std::string typedefName;
    std::vector<std::string> defaults;
};

TEST_F(ModelData, SampleAttributesHaveTheirTypesAndDefaults) {
    const std::string eutra = kEnb + "/EUtraNetwork";
    const std::string sysf = kMe + "/SystemFunctions";
    // clang-format off
    const std::vector<AttributeSample> samples = {
        {kCell, "earfcndl", kDerived, kInt32, "earfcn", {}},
        {kCell, "initCdma2000SysTimeType", kInt32, kInt32, "", {"-1"}},
        {kCell, "reservedBy", kReference, kReference, "", {}},
        {eutra + "/EUtranFrequency", "arfcnValueEUtranDl", kDerived, kInt32, "earfcn", {}},
        {kEnb + "/UtraNetwork/UtranFrequency", "arfcnValueUtranDl", kDerived, kUint32, "uarfcn",
         {}},
        {kEnb + "/TermPointToMme", "ipAddress1", kDerived, kString, "ip-address", {"0.0.0.0"}},
        {kCell + "/EUtranFreqRelation", "qRxLevMin", kDerived, kInt32, "q-rx-lev-min", {"-140"}},
        {kCell + "/EUtranFreqRelation/EUtranCellRelation", "neighborCellRef", kReference,
         kReference, "", {}},
        {sysf + "/PmEventM/EventProducer/EventJob", "jobControl", kDerived, kString,
         "job-control", {"1"}},
        {sysf + "/PmEventM/EventProducer/EventJob", "jobGroup", kString, kString, "", {"JG1"}},
        {sysf + "/Pm/PmMeasurementCapabilities", "maxNoOfJobs", kUint16, kUint16, "", {"10"}},
        {kBrm + "/BrmBackupHousekeeping", "maxStoredManualBackups", kUint16, kUint16, "", {"5"}},
        {kBrm + "/BrmBackupHousekeeping", "autoDelete", kInt32, kInt32, "", {"1"}},
        {kEnb + "/QciTable/QciProfileOperatorDefined", "qci", kUint32, kUint32, "", {}},
        {kMe, "networkManagedElementId", kString, kString, "", {}},
        {kMe + "/NodeBFunction", "eulMaxAllowedSchRate", kInt32, kInt32, "", {"3968"}},
        {kMe + "/NodeBFunction", "eulDchMaxAllowedSchRate", kInt32, kInt32, "", {"1600"}},
        {kLocalCell, "hsScchMinCodePower", kDerived, kInt16, "power-offset-short", {"-20"}},
        {kLocalCell, "eRgchMaxPower", kDerived, kInt16, "power-offset-short", {"-140"}},
        {kLocalCell, "eHichMinPower2msTti", kInt32, kInt32, "", {"-80"}},
        {kLocalCell, "rtwpInformation.hsuLoadIncreaseStarvingUes", kInt16, kInt16, "", {"5"}},
        {kLocalCell, "eulOptimalNoiseFloorLock", kString, kString, "", {}},
    };
    // clang-format on
    for (const AttributeSample& sample : samples) {
        SCOPED_TRACE(sample.path + " " + sample.name);
        const lysc_node* node = attr(sample.path, sample.name);
        if (node == nullptr) {
            continue;
        }
        TypeInfo info = hostType(node);
        EXPECT_EQ(info.type, sample.type);
        EXPECT_EQ(info.base, sample.base);
        EXPECT_EQ(info.typedefName, sample.typedefName);
        EXPECT_EQ(defaultTexts(node), sample.defaults);
    }
    EXPECT_TRUE(hostType(attr(kCell, "reservedBy")).isList);
    EXPECT_FALSE(hostType(attr(kCell, "earfcndl")).isList);
    EXPECT_EQ(minMaxElements(attr(kCell, "earfcndl")), std::make_pair(1u, 1u));
}

TEST_F(ModelData, StructAttributesHoldTheMembersTheAgentWrites) {
    const lysc_node* filter =
        attr(kMe + "/SystemFunctions/PmEventM/EventProducer/EventJob", "eventFilter");
    ASSERT_NE(filter, nullptr);
    EXPECT_TRUE(hostType(filter).isList);
    ASSERT_NE(attribute(filter, "filterName"), nullptr);
    EXPECT_EQ(hostType(attribute(filter, "filterName")).type, kString);

    const lysc_node* progress = attr(kBrm + "/BrmBackup", "progressReport");
    ASSERT_NE(progress, nullptr);
    EXPECT_EQ(hostType(progress).type, kStruct);
    for (const char* member : {"state", "actionName", "progressInfo"}) {
        EXPECT_NE(attribute(progress, member), nullptr) << member;
    }
    const lysc_node* measurement =
        attr(kMe + "/SystemFunctions/Pm/PmJob", "measurementSpecification");
    ASSERT_NE(measurement, nullptr);
    for (const lysc_node* member : attributes(measurement)) {
        EXPECT_EQ(hostType(member).type, kReference) << member->name;
    }
}

// Every attribute must map to a host type, lists only to types whose lists
// the station reads back, and references only to classes of the model.
TEST_F(ModelData, EveryAttributeHasAHostTypeAndReadableLists) {
    std::set<std::string> classNames;
    auto classes = allClasses();
    for (const auto& [path, node] : classes) {
        classNames.insert(node->name);
    }
    const std::set<int> readableLists = {kEnum, kInt32,     kUint32, kString,
                                         kBool, kReference, kStruct};
    std::function<void(const std::string&, const lysc_node*)> check = [&](const std::string& where,
                                                                          const lysc_node* owner) {
        for (const lysc_node* node : attributes(owner)) {
            std::string name = where + " " + node->name;
            TypeInfo info = hostType(node);
            EXPECT_NE(info.base, kNoHostType) << name;
            if (info.isList) {
                EXPECT_TRUE(readableLists.count(info.base)) << name;
            }
            if (const char* targets = extensionArgument(node, "reference")) {
                for (const std::string& target : split(targets, ' ')) {
                    EXPECT_TRUE(target.empty() || classNames.count(target)) << name;
                }
            }
            if (info.type == kStruct) {
                check(name, node);
            }
        }
    };
    for (const auto& [path, node] : classes) {
        check(path, node);
    }
}

TEST_F(ModelData, TakesEffectIsOneOfThreeTextsAndOnTheRightAttributes) {
    const std::set<std::string> allowed = {"Cell lock/unlock", "Object lock/unlock",
                                           "At node restart"};
    int marked = 0;
    for (const auto& [path, node] : allClasses()) {
        for (const lysc_node* a : attributes(node)) {
            if (const char* when = extensionArgument(a, "takes-effect")) {
                ++marked;
                EXPECT_TRUE(allowed.count(when)) << path << " " << a->name << ": " << when;
            }
        }
    }
    EXPECT_GE(marked, 8);
    const std::string rtt = kCell + "/Cdma2000FreqBandRelation/Cdma20001xRttCellRelation";
    const std::vector<std::tuple<std::string, std::string, std::string>> expected = {
        {kCell, "physicalLayerCellIdGroup", "Cell lock/unlock"},
        {kCell, "physicalLayerSubCellId", "Cell lock/unlock"},
        {kEnb + "/EUtranCellTDD", "ulChannelBandwidth", "Cell lock/unlock"},
        {rtt, "includeInSystemInformation", "Cell lock/unlock"},
        {rtt, "includeInSystemInformationRel9", "Cell lock/unlock"},
    };
    for (const auto& [path, name, when] : expected) {
        const lysc_node* node = attr(path, name);
        const char* value = node ? extensionArgument(node, "takes-effect") : nullptr;
        ASSERT_NE(value, nullptr) << path << " " << name;
        EXPECT_EQ(value, when) << path << " " << name;
    }
    EXPECT_EQ(extensionArgument(attr(kCell, "earfcndl"), "takes-effect"), nullptr);
}

TEST_F(ModelData, CardinalitiesAndSystemCreatedClasses) {
    using Range = std::pair<uint32_t, uint32_t>;
    EXPECT_EQ(minMaxElements(cls(kMe)), Range(1, 1));
    EXPECT_EQ(minMaxElements(cls(kCell + "/EUtranFreqRelation/EUtranCellRelation")), Range(0, 64));
    EXPECT_EQ(minMaxElements(cls(kMe + "/SystemFunctions/Pm/PmJob/MeasurementReader")).first, 1u);
    EXPECT_EQ(minMaxElements(cls(kEnb + "/EUtraNetwork/EUtranFrequency")).second, 24u);

    std::set<std::string> systemCreated;
    for (const auto& [path, node] : allClasses()) {
        if (extensionArgument(node, "system-created") == nullptr) {
            continue;
        }
        systemCreated.insert(node->name);
        // Instances "1".."min" are made with the parent: min 0 would make none.
        EXPECT_GE(minMaxElements(node).first, 1u) << path;
    }
    for (const char* name :
         {"Equipment", "RbsUnit", "SystemFunctions", "Pm", "PmMeasurementCapabilities", "BrM",
          "BrmBackupManager", "BrmBackupHousekeeping", "BrmRollbackAtRestore", "SwM", "CertM",
          "EUtraNetwork", "UtraNetwork", "QciTable", "WiFiChannelSelection",
          "CarrierAggregationFunction", "NodeBLocalCellGroup"}) {
        EXPECT_TRUE(systemCreated.count(name)) << name;
    }
    for (const char* name : {"EUtranCellFDD", "PmJob", "BrmBackup", "UpgradePackage",
                             "EUtranFreqRelation", "NodeBLocalCell", "WifiModule"}) {
        EXPECT_FALSE(systemCreated.count(name)) << name;
    }
}

}  // namespace
}  // namespace vesk::modeltest

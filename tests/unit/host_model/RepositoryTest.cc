// The model repository records over the station model, checked against the YANG sources.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "unit/host_model/RepositoryClient.h"

namespace vesk::host::model {
namespace {

const std::string kModelDir = std::string(VESK_DATA_DIR) + "/model";
const std::string kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const std::string kLocalCell =
    "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=1";
using Literals = std::vector<std::pair<std::string, int16_t>>;

class RepositoryTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        _schema = new ModelSchema;
        std::string error;
        ASSERT_TRUE(_schema->load(kModelDir, "vesk-station", &error)) << error;
    }
    static void TearDownTestSuite() {
        delete _schema;
        _schema = nullptr;
    }
    void SetUp() override {
        _repository = std::make_unique<ModelRepository>(*_schema);
        _client = std::make_unique<RepositoryClient>(*_repository);
    }

    static inline ModelSchema* _schema = nullptr;
    std::unique_ptr<ModelRepository> _repository;
    std::unique_ptr<RepositoryClient> _client;
};

// Every class of the YANG sources: each `list` that is not a struct list.
std::set<std::string> classesInSources() {
    std::set<std::string> classes;
    for (const auto& entry : std::filesystem::directory_iterator(kModelDir)) {
        std::ifstream in(entry.path());
        for (std::string line; std::getline(in, line);) {
            std::istringstream words(line);
            std::string keyword;
            std::string name;
            if (!(words >> keyword >> name) || keyword != "list") {
                continue;
            }
            std::string head;  // the statements up to the first leaf
            for (std::string next;
                 std::getline(in, next) && next.find("leaf") == std::string::npos;) {
                head += next;
            }
            if (head.find("vx:struct-list") == std::string::npos) {
                classes.insert(name);
            }
        }
    }
    return classes;
}

TEST_F(RepositoryTest, FindsClassesByDnShortFormAndMom) {
    RepositoryClient& c = *_client;
    OrlOamSpiMocHandleT byFullDn = c.moc(kCell + ",EUtranFreqRelation=1");
    EXPECT_EQ(c.mocName(byFullDn), "EUtranFreqRelation");
    EXPECT_EQ(c.moc("EUtranFreqRelation=7"), byFullDn) << "short form, by the last pair";
    EXPECT_EQ(c.mocName(c.moc("ManagedElement=1")), "ManagedElement");

    OrlOamSpiMocHandleT out = 42;
    EXPECT_EQ(c.r3.getMocByDn("ManagedElement=1,NoSuchClass=1", &out), OrlNotExist);
    EXPECT_EQ(c.r3.getMocByDn("ManagedElement", &out), OrlNotExist) << "no class=id pair";
    EXPECT_EQ(out, 42u) << "left untouched";

    OrlOamSpiMocHandleT requested = 0;
    EXPECT_EQ(c.r3.getRequestedMoc("VeskStation", "1.0", "RbsUnit", &requested), 0);
    EXPECT_EQ(requested, c.moc("ManagedElement=1,Equipment=1,RbsUnit=1"));
    EXPECT_EQ(c.r3.getRequestedMoc("VeskStation", "2.0", "RbsUnit", &requested), OrlNotExist);
    EXPECT_EQ(c.r3.getRequestedMoc("Other", "1.0", "RbsUnit", &requested), OrlNotExist);
    EXPECT_EQ(c.r3.getRequestedMoc("VeskStation", "1.0", "Nothing", &requested), OrlNotExist);
}

TEST_F(RepositoryTest, EveryClassOfTheSourcesIsReachableFromManagedElement) {
    RepositoryClient& c = *_client;
    std::set<std::string> reached;
    std::vector<OrlOamSpiMocHandleT> pending{c.moc("ManagedElement=1")};
    reached.insert("ManagedElement");
    while (!pending.empty()) {
        OrlOamSpiMocHandleT moc = pending.back();
        pending.pop_back();
        for (const ChildClass& child : c.children(moc)) {
            EXPECT_EQ(child.parent, moc) << child.name;
            OrlOamSpiMocHandleT childMoc = c.moc(child.name + "=1");
            if (reached.insert(child.name).second) {
                pending.push_back(childMoc);
            }
        }
    }
    EXPECT_EQ(reached, classesInSources());
    // The source scan above must not miss the classes the agent relies on.
    std::istringstream relied(
        "Equipment RbsUnit WifiModule PmJob MeasurementReader EventJob SwM UpgradePackage "
        "BrmBackup BrmBackupHousekeeping BrmRollbackAtRestore CertM EUtranFrequency "
        "ExternalENodeBFunction ExternalEUtranCellFDD ExternalEUtranCellTDD ExternalUtranCellFDD "
        "TermPointToMme EUtranCellFDD EUtranCellTDD EUtranFreqRelation EUtranCellRelation "
        "UtranCellRelation Cdma20001xRttCellRelation WiFiChannelSelection "
        "QciProfileOperatorDefined NodeBFunction NodeBLocalCell AntennaTxCarrier AntennaRxCarrier");
    for (std::string name; relied >> name;) {
        EXPECT_TRUE(reached.count(name)) << "missing class " << name;
    }

    // Each class is keyed by one string attribute named after it, mandatory and first.
    for (const std::string& name : reached) {
        OrlOamSpiMocHandleT moc = c.moc(name + "=1");
        std::string key =
            std::string(1, static_cast<char>(std::tolower(name[0]))) + name.substr(1) + "Id";
        OrlOamSpiAttributeHandleT first = 0;
        ASSERT_EQ(c.r2.getMocFirstAttribute(moc, &first), 0) << name;
        bool isKey = false;
        bool mandatory = false;
        EXPECT_EQ(c.r2.isAttributeKey(first, &isKey), 0);
        EXPECT_EQ(c.r2.isAttributeMandatory(first, &mandatory), 0);
        EXPECT_TRUE(isKey && mandatory) << name;
        EXPECT_EQ(c.attributeNames(moc).front(), key);
        EXPECT_EQ(c.types(name + "=1", key), std::make_pair(9, 9)) << name;
    }
}

TEST_F(RepositoryTest, TypesDefaultsAndMultiplicitiesFollowTheSources) {
    RepositoryClient& c = *_client;
    // Plain built-in types.
    EXPECT_EQ(c.types(kCell, "cellId"), std::make_pair(3, 3));
    EXPECT_EQ(c.types(kCell, "isDlOnly"), std::make_pair(10, 10));
    EXPECT_EQ(c.types("ManagedElement=1", "userLabel"), std::make_pair(9, 9));
    EXPECT_EQ(c.types("ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1,EUtranFrequency=1",
                      "laaMaxOccupancy"),
              std::make_pair(7, 7));
    // Typedefs are derived (13), with their base.
    EXPECT_EQ(c.types(kCell, "dlChannelBandwidth"), std::make_pair(13, 3));
    EXPECT_EQ(c.types(kCell, "administrativeState"), std::make_pair(13, 12));
    // A reference is never derived.
    EXPECT_EQ(c.types(kCell + ",EUtranFreqRelation=1", "eutranFrequencyRef"),
              std::make_pair(11, 11));

    EXPECT_EQ(c.defaults(c.typeContainer(c.attribute(kCell, "dlChannelBandwidth"))),
              std::vector<std::string>{"20000"});
    EXPECT_EQ(c.defaults(c.typeContainer(c.attribute(kCell, "administrativeState"))),
              std::vector<std::string>{"LOCKED"});
    EXPECT_EQ(c.defaults(c.typeContainer(c.attribute(kCell, "isDlOnly"))),
              std::vector<std::string>{"false"});
    EXPECT_EQ(c.defaults(c.typeContainer(c.attribute(kCell, "cellId"))),
              std::vector<std::string>{"<none>"});

    bool mandatory = false;
    EXPECT_EQ(c.r2.isAttributeMandatory(c.attribute(kCell, "cellId"), &mandatory), 0);
    EXPECT_TRUE(mandatory);
    EXPECT_EQ(c.multiplicity(c.typeContainer(c.attribute(kCell, "cellId"))), std::make_pair(1, 1));
    EXPECT_EQ(c.multiplicity(c.typeContainer(c.attribute(kCell, "tac"))), std::make_pair(0, 1));
    // Leaf-lists: max-elements 9, and unbounded.
    std::string pm = "ManagedElement=1,SystemFunctions=1,Pm=1,PmMeasurementCapabilities=1";
    OrlOamSpiTypeContainerHandleT periods = c.typeContainer(c.attribute(pm, "supportedRopPeriods"));
    EXPECT_EQ(c.multiplicity(periods), std::make_pair(0, 9));
    EXPECT_EQ(c.type(periods), 13) << "vt:time-period";
    std::string job = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat,EventJob=1";
    EXPECT_EQ(c.multiplicity(c.typeContainer(c.attribute(job, "eventTypeRef"))),
              std::make_pair(0, static_cast<int32_t>(OrlOamSpiMrUnbounded)));
    EXPECT_EQ(c.types(job, "eventTypeRef"), std::make_pair(11, 11));
}

TEST_F(RepositoryTest, EnumerationsCarryTheirNumbers) {
    RepositoryClient& c = *_client;
    EXPECT_EQ(c.literals(c.typeContainer(c.attribute(kCell, "administrativeState"))),
              (Literals{{"LOCKED", 0}, {"UNLOCKED", 1}, {"SHUTTING_DOWN", 2}}));
    EXPECT_EQ(c.literals(c.typeContainer(c.attribute(kCell, "lastModification"))),
              (Literals{{"NOT_MODIFIED", 0},
                        {"OPERATOR", 1},
                        {"OPERATOR_DELETE", 2},
                        {"SYSTEM", 3},
                        {"SYSTEM_DELETE", 4},
                        {"AUTOMATIC_DELETE", 5},
                        {"AUTOMATIC", 6}}));
    Literals periods = c.literals(c.typeContainer(
        c.attribute("ManagedElement=1,SystemFunctions=1,Pm=1,PmJob=1", "reportingPeriod")));
    ASSERT_EQ(periods.size(), 9u);
    EXPECT_EQ(periods.back(), std::make_pair(std::string("ONE_DAY"), int16_t(9)));

    OrlOamSpiEnumHandleT enumeration = 0;
    EXPECT_EQ(c.r2.getEnum(c.typeContainer(c.attribute(kCell, "cellId")), &enumeration),
              OrlNotExist);
    EXPECT_EQ(c.r2.getEnum(c.typeContainer(c.attribute(kCell, "dlChannelBandwidth")), &enumeration),
              OrlNotExist)
        << "derived, but from int32";
}

TEST_F(RepositoryTest, TakesEffectIsADomainExtensionOfTheAttribute) {
    RepositoryClient& c = *_client;
    using Extensions = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(c.extensions(c.attribute(kCell, "dlChannelBandwidth")),
              (Extensions{{"takesEffect", "Cell lock/unlock"}}));
    EXPECT_EQ(c.extensions(c.attribute(kLocalCell, "maxTransmissionPower")),
              (Extensions{{"takesEffect", "Object lock/unlock"}}));
    EXPECT_EQ(c.extensions(c.attribute(kLocalCell, "maxNumConcurrentUsers")),
              (Extensions{{"takesEffect", "At node restart"}}));
    EXPECT_EQ(c.extensions(c.attribute(kCell, "tac")), Extensions{});
    // A relation class reached through both cell classes has one set of answers.
    std::string tddRelation =
        "ManagedElement=1,ENodeBFunction=1,EUtranCellTDD=1,"
        "Cdma2000FreqBandRelation=1,Cdma20001xRttCellRelation=1";
    EXPECT_EQ(c.extensions(c.attribute(tddRelation, "includeInSystemInformation")),
              (Extensions{{"takesEffect", "Cell lock/unlock"}}));
}

TEST_F(RepositoryTest, StructAttributesListTheirMembers) {
    RepositoryClient& c = *_client;
    std::string wifi = "ManagedElement=1,ENodeBFunction=1,WiFiChannelSelection=1";
    OrlOamSpiTypeContainerHandleT channels =
        c.typeContainer(c.attribute(wifi, "candidateChannels"));
    EXPECT_EQ(c.type(channels), 14);
    EXPECT_EQ(c.multiplicity(channels), std::make_pair(0, 1));
    auto members = c.members(channels);
    ASSERT_EQ(members.size(), 11u);
    EXPECT_EQ(members.front(), std::make_pair(std::string("channel32"), 10));
    EXPECT_EQ(members.back(), std::make_pair(std::string("channelFreq5160MHz"), 10));
    EXPECT_EQ(c.defaults(channels), std::vector<std::string>{"<none>"});

    OrlOamSpiTypeContainerHandleT blackList =
        c.typeContainer(c.attribute(kCell + ",EUtranFreqRelation=1", "blackListEntry"));
    EXPECT_EQ(c.type(blackList), 14);
    EXPECT_EQ(c.multiplicity(blackList), std::make_pair(0, 16)) << "a struct list";
    EXPECT_EQ(c.members(blackList),
              (std::vector<std::pair<std::string, int32_t>>{{"startPci", 3}, {"pciRange", 3}}));
    // Member defaults are reached through the member's type container.
    OrlOamSpiStructHandleT structType = 0;
    OrlOamSpiStructMemberHandleT member = 0;
    OrlOamSpiTypeContainerHandleT memberType = 0;
    ASSERT_EQ(c.r2.getStruct(blackList, &structType), 0);
    ASSERT_EQ(c.r2.getStructFirstMember(structType, &member), 0);
    ASSERT_EQ(c.r2.getNextStructMember(member, &member), 0);
    ASSERT_EQ(c.r2.getStructMemberTypeContainer(member, &memberType), 0);
    EXPECT_EQ(c.defaults(memberType), std::vector<std::string>{"1"});
    EXPECT_EQ(c.r2.getNextStructMember(member, &member), OrlNotExist);

    OrlOamSpiStructHandleT none = 0;
    EXPECT_EQ(c.r2.getStruct(c.typeContainer(c.attribute(kCell, "cellId")), &none), OrlNotExist);
}

TEST_F(RepositoryTest, ContainmentsGiveCardinalitiesAndSystemCreatedClasses) {
    RepositoryClient& c = *_client;
    std::map<std::string, std::pair<int32_t, int32_t>> enb;
    for (const ChildClass& child : c.children(c.moc("ManagedElement=1,ENodeBFunction=1"))) {
        enb[child.name] = {child.min, child.max};
    }
    EXPECT_EQ(enb["EUtranCellFDD"], std::make_pair(0, 6));
    EXPECT_EQ(enb["TermPointToMme"], std::make_pair(0, INT32_MAX)) << "no bound in the model";
    EXPECT_EQ(enb["QciTable"], std::make_pair(1, 1));
    EXPECT_EQ(enb.count("EUtranFrequency"), 0u) << "below EUtraNetwork, not here";

    EXPECT_TRUE(c.systemCreated("QciTable=default"));
    EXPECT_TRUE(c.systemCreated("NodeBLocalCellGroup=1"));
    EXPECT_FALSE(c.systemCreated("WifiModule=1"));
    EXPECT_FALSE(c.systemCreated("EUtranCellFDD=1"));

    OrlOamSpiContainmentHandleT leaf = 0;
    EXPECT_EQ(c.r2.getMocFirstChildContainment(c.moc("TermPointToMme=1"), &leaf), OrlNotExist);
}

TEST_F(RepositoryTest, HandlesOfAnotherKindOrNullOutputsFail) {
    RepositoryClient& c = *_client;
    OrlOamSpiMocHandleT moc = c.moc(kCell);
    OrlOamSpiAttributeHandleT attribute = c.attribute(kCell, "cellId");
    uint64_t out = 0;
    const char* text = nullptr;
    EXPECT_EQ(c.r2.getMocFirstAttribute(attribute, &out), OrlFailure);
    EXPECT_EQ(c.r2.getAttributeTypeContainer(moc, &out), OrlFailure);
    EXPECT_EQ(c.r2.getName(moc, &text), OrlFailure);
    EXPECT_EQ(c.r2.getMocFirstAttribute(0, &out), OrlFailure);
    EXPECT_EQ(c.r2.getMocFirstAttribute(moc + 100000, &out), OrlFailure);
    EXPECT_EQ(c.r2.getMocFirstAttribute(moc, nullptr), OrlFailure);
    EXPECT_EQ(c.r3.getMocByDn(nullptr, &out), OrlFailure);
}

TEST_F(RepositoryTest, RecordsFailWithoutALiveRepositoryAndOnlyOneMayLive) {
    OrlOamSpiModelRepository_3 record = *_repository->record3();
    EXPECT_THROW(ModelRepository second(*_schema), std::logic_error);
    _client.reset();
    _repository.reset();
    OrlOamSpiMocHandleT out = 0;
    EXPECT_EQ(record.getMocByDn("ManagedElement=1", &out), OrlFailure);
}

}  // namespace
}  // namespace vesk::host::model

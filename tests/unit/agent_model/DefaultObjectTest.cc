// New MOs completed from the model's defaults, their struct objects and their system-created
// children, in a station database transaction; then committed and read again.
#include <gtest/gtest.h>

#include "station/log/LogControl.h"
#include "unit/agent_model/AgentModelSupport.h"

namespace agent_model_test {
namespace {

using TibVeskCM::VeskModelRepository;
using vesk::log::LogCapture;

const std::string kInstances = kTestDataDir + "/instances.xml";

DBObject* newObject(const std::string& rdn, const std::string& parentDn) {
    return new DBObject(rdn, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                        parentDn, 1);
}

Attribute* stringAttribute(const std::string& name, const std::string& value) {
    return new Attribute(false, name, AttributeVariant(value), 0, true, IPCData::AVT_STRING, true,
                         false);
}

// The attribute's value as text and its type, "absent" when the object or attribute is missing.
std::string valueOf(const std::string& dn, const std::string& name, int handle) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle));
    if (!object)
        return "no object";
    Attribute* attribute = object->getAttribute(name);
    if (attribute == nullptr)
        return "absent";
    return attribute->ToStr() + "/" + std::to_string(attribute->type) + "/" +
           std::to_string(attribute->value.which());
}

class TestModelDefaultsTest : public ::testing::Test {
  protected:
    // Creates ManagedElement=2 with its key and a label of its own, then its children.
    int createRoot(int handle) {
        std::unique_ptr<DBObject> root(newObject("ManagedElement=2", ""));
        root->addAttribute(*stringAttribute("managedElementId", "2"));
        root->addAttribute(*stringAttribute("label", "mine"));
        int result = _repo->createMOWithDefaultValues("ManagedElement=2", root.get(), handle);
        if (result != 0)
            return result;
        return _repo->createSystemCreatedSubMOs("ManagedElement=2", handle);
    }

    StationDatabase _db;
    ModelHarness _model{testSchema(), kInstances};
    VeskModelRepository* _repo = ModelHarness::repo();
};

TEST_F(TestModelDefaultsTest, DefaultsStructsAndChildrenSurviveCommit) {
    int handle = _db.begin();
    ASSERT_NE(handle, 0);
    ASSERT_EQ(createRoot(handle), 0);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false), 0);

    const std::string me = "ManagedElement=2";
    // value/type/variant alternative, read back from committed data
    EXPECT_EQ(valueOf(me, "managedElementId", 0), "2/9/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(me, "label", 0), "mine/9/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(me, "depth", 0), "4/2/" + std::to_string(AV_SHORT));
    EXPECT_EQ(valueOf(me, "shade", 0), "7/12/" + std::to_string(AV_INT));
    EXPECT_EQ(valueOf(me, "flags", 0), "1,0/28/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(me, "shades", 0), "3,7/18/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(me, "plain", 0), "absent");
    EXPECT_EQ(valueOf(me, "lockLevel", 0), "absent");
    EXPECT_EQ(valueOf(me, "pair", 0), "absent");
    // A struct without member defaults has neither object nor attribute.
    EXPECT_EQ(valueOf(me, "bare", 0), "absent");
    EXPECT_EQ(valueOf(me + ",ManagedElement=2:bare", "a", 0), "no object");
    // A struct with member defaults: the attribute names its object, which holds the defaults.
    EXPECT_EQ(valueOf(me, "sized", 0), "ManagedElement=2:sized/14/" + std::to_string(AV_STRING));
    const std::string sized = me + ",ManagedElement=2:sized";
    EXPECT_EQ(valueOf(sized, "width", 0), "20/6/" + std::to_string(AV_USHORT));
    EXPECT_EQ(valueOf(sized, "tint", 0), "3/12/" + std::to_string(AV_INT));
    EXPECT_EQ(valueOf(sized, "note", 0), "absent");
    std::unique_ptr<DBObject> sizedObject(IDatabase::getObject(sized, 1, 0));
    ASSERT_TRUE(sizedObject);
    EXPECT_FALSE(sizedObject->visible);

    // Minimum cardinality 2, keys from the instance number, defaults, and their own children.
    for (const std::string id : {"1", "2"}) {
        const std::string twin = me + ",Twin=" + id;
        EXPECT_EQ(valueOf(twin, "twinId", 0), id + "/9/" + std::to_string(AV_STRING));
        EXPECT_EQ(valueOf(twin, "weight", 0), "9/5/" + std::to_string(AV_UCHAR));
        EXPECT_EQ(valueOf(twin + ",Leaf=1", "leafId", 0), "1/9/" + std::to_string(AV_STRING));
    }
    EXPECT_EQ(valueOf(me + ",Twin=3", "twinId", 0), "no object");
    EXPECT_EQ(valueOf(me + ",Spare=1", "spareId", 0), "no object");    // minimum 0
    EXPECT_EQ(valueOf(me + ",Manual=1", "manualId", 0), "no object");  // not system created
    // The listed class comes from the instance file only.
    EXPECT_EQ(valueOf(me + ",Listed=main", "listedId", 0), "main/9/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(me + ",Listed=1", "listedId", 0), "no object");
    EXPECT_EQ(valueOf(me + ",Listed=main,Inner=1,Deep=1", "x", 0), "absent");
}

TEST_F(TestModelDefaultsTest, GivenKeyOfUserMoIsNotFilled) {
    int handle = _db.begin();
    std::unique_ptr<DBObject> root(newObject("ManagedElement=3", ""));
    ASSERT_EQ(_repo->createMOWithDefaultValues("ManagedElement=3", root.get(), handle), 0);
    EXPECT_EQ(root->getAttribute("managedElementId"), nullptr);
    EXPECT_EQ(valueOf("ManagedElement=3", "managedElementId", handle), "absent");
    EXPECT_EQ(valueOf("ManagedElement=3", "depth", handle), "4/2/" + std::to_string(AV_SHORT));
    EXPECT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
}

TEST_F(TestModelDefaultsTest, RestoringOneAttributeAndItsPendingSlot) {
    int handle = _db.begin();
    ASSERT_EQ(createRoot(handle), 0);
    ASSERT_NE(IDatabase::setAttribute("ManagedElement=2", 1, "depth", AttributeVariant(short(9)),
                                      false, IPCData::AVT_INT16, true, handle),
              0);
    LogCapture capture;
    EXPECT_EQ(
        _repo->createAttributeWithDefaultValue("", "ManagedElement=2", "depth", handle, false), 0);
    EXPECT_EQ(valueOf("ManagedElement=2", "depth", handle), "4/2/" + std::to_string(AV_SHORT));
    EXPECT_EQ(capture.countContaining("Updated ManagedElement=2:depth to database", 32), 1u);

    // A struct attribute is restored with its object; the flag makes both pending values.
    ASSERT_NE(IDatabase::deleteObj("ManagedElement=2,ManagedElement=2:sized", 1, handle), 0);
    EXPECT_EQ(_repo->createAttributeWithDefaultValue("", "ManagedElement=2", "sized", handle, true),
              0);
    std::unique_ptr<DBObject> sized(
        IDatabase::getObject("ManagedElement=2,ManagedElement=2:sized", 1, handle));
    ASSERT_TRUE(sized);
    ASSERT_NE(sized->getAlternateAttribute("width"), nullptr);
    EXPECT_EQ(sized->getAlternateAttribute("width")->alternateSlot, 2);
    std::unique_ptr<DBObject> root(IDatabase::getObject("ManagedElement=2", 1, handle));
    ASSERT_TRUE(root);
    ASSERT_NE(root->getAlternateAttribute("sized"), nullptr);
    EXPECT_EQ(root->getAlternateAttribute("sized")->ToStr(), "ManagedElement=2:sized");

    // The bare struct makes nothing, and an object that is not there fails.
    EXPECT_EQ(_repo->createAttributeWithDefaultValue("", "ManagedElement=2", "bare", handle, false),
              0);
    EXPECT_EQ(valueOf("ManagedElement=2", "bare", handle), "absent");
    EXPECT_EQ(
        _repo->createAttributeWithDefaultValue("", "ManagedElement=9", "depth", handle, false), -1);
    EXPECT_EQ(capture.countContaining("did not find ManagedElement=9 from database", 32), 1u);
    EXPECT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
}

// The host's record with one slot changed: the default of one attribute's type container is a
// literal its enumeration lacks (a YANG model cannot state that).
class BadDefaultTest : public TestModelDefaultsTest {
  protected:
    void SetUp() override {
        _patched = *_model.host().record2();
        _patched.getDefaultValue = &badDefault;
        _original = _model.host().record2()->getDefaultValue;
        _repo->initialize(&_patched, _model.host().record3());
    }
    void TearDown() override { _target = 0; }

    // Finds the type container of `attr` on ManagedElement.
    void target(const std::string& attr) {
        OrlOamSpiMocHandleT moc = 0;
        ASSERT_EQ(_repo->getMOCHandleByDn("ManagedElement=1", &moc), 0);
        OrlOamSpiAttributeHandleT it = 0;
        const OrlOamSpiModelRepository_2& r = *_model.host().record2();
        for (int rc = r.getMocFirstAttribute(moc, &it); rc == 0; rc = r.getNextAttribute(it, &it)) {
            OrlOamSpiGeneralPropertiesHandleT properties = 0;
            const char* name = nullptr;
            ASSERT_EQ(r.getAttributeGeneralProperties(it, &properties), 0);
            ASSERT_EQ(r.getName(properties, &name), 0);
            if (attr == name) {
                ASSERT_EQ(r.getAttributeTypeContainer(it, &_target), 0);
            }
        }
        ASSERT_NE(_target, 0u);
    }
    static OrlReturnT badDefault(OrlOamSpiTypeContainerHandleT type, const char* const** out) {
        static const char* const kBad[] = {"RED", "PURPLE", nullptr};
        if (type == _target) {
            *out = kBad + (_skipFirst ? 0 : 1);
            return 0;
        }
        return _original(type, out);
    }

    OrlOamSpiModelRepository_2 _patched;
    static inline OrlOamSpiTypeContainerHandleT _target = 0;
    static inline bool _skipFirst = false;
    static inline OrlReturnT (*_original)(OrlOamSpiTypeContainerHandleT, const char* const**);
};

TEST_F(BadDefaultTest, UnknownLiteralFailsCreationAndRollbackLeavesNothing) {
    target("plain");
    int handle = _db.begin();
    ASSERT_NE(handle, 0);
    EXPECT_EQ(createRoot(handle), -1);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
    EXPECT_EQ(valueOf("ManagedElement=2", "managedElementId", 0), "no object");
    EXPECT_TRUE(IDatabase::getMOClass("Twin", 0).empty());
}

TEST_F(BadDefaultTest, UnknownLiteralInAnEnumerationListIsLogged) {
    target("shades");
    _skipFirst = true;  // "RED" then "PURPLE"
    LogCapture capture;
    int handle = _db.begin();
    EXPECT_EQ(createRoot(handle), -1);
    EXPECT_EQ(capture.count("VeskModelRepository: Failed to set default values from enum list", 2),
              1u);
    _skipFirst = false;
    EXPECT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
}

// The station model and its shipped instance file: a new ENodeBFunction.
class StationModelDefaultsTest : public ::testing::Test {
  protected:
    StationDatabase _db;
    ModelHarness _model{stationSchema(), kDataDir + "/conf/system_created_MOs.xml"};
    VeskModelRepository* _repo = ModelHarness::repo();
};

TEST_F(StationModelDefaultsTest, NewENodeBFunctionGetsDefaultsAndSystemCreatedChildren) {
    const std::string dn = "ManagedElement=1,ENodeBFunction=1";
    int handle = _db.begin();
    std::unique_ptr<DBObject> object(newObject("ENodeBFunction=1", "ManagedElement=1"));
    object->addAttribute(*stringAttribute("eNodeBFunctionId", "1"));
    ASSERT_EQ(_repo->createMOWithDefaultValues(dn.c_str(), object.get(), handle), 0);
    ASSERT_EQ(_repo->createSystemCreatedSubMOs(dn.c_str(), handle), 0);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false), 0);

    EXPECT_EQ(valueOf(dn, "eNodeBPlmnId", 0),
              "ENodeBFunction=1:eNodeBPlmnId/14/" + std::to_string(AV_STRING));
    const std::string plmn = dn + ",ENodeBFunction=1:eNodeBPlmnId";
    EXPECT_EQ(valueOf(plmn, "mcc", 0), "1/3/" + std::to_string(AV_INT));
    EXPECT_EQ(valueOf(plmn, "mncLength", 0), "2/3/" + std::to_string(AV_INT));
    // From the instance file, with its nested profiles.
    EXPECT_EQ(valueOf(dn + ",QciTable=default", "qciTableId", 0),
              "default/9/" + std::to_string(AV_STRING));
    EXPECT_EQ(valueOf(dn + ",QciTable=default,QciProfilePredefined=qci5", "resourceType", 0),
              "1/12/" + std::to_string(AV_INT));
    EXPECT_EQ(valueOf(dn + ",QciTable=1", "qciTableId", 0), "no object");
    // By minimum cardinality, keyed 1.
    for (const char* child :
         {"CarrierAggregationFunction", "WiFiChannelSelection", "EUtraNetwork"}) {
        std::list<std::string> ids = IDatabase::getMOClassWithParent(dn, child, 0);
        EXPECT_EQ(ids, std::list<std::string>{"1"}) << child;
    }
    EXPECT_TRUE(IDatabase::getMOClassWithParent(dn, "TermPointToMme", 0).empty());
    EXPECT_TRUE(IDatabase::getMOClassWithParent(dn, "EUtranCellFDD", 0).empty());
}

}  // namespace
}  // namespace agent_model_test

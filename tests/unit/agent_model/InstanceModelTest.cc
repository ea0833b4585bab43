// The instance file of system-created MOs: reading, conversions and writing into a station
// database transaction.
#include <gtest/gtest.h>

#include <fstream>

#include "station/log/LogControl.h"
#include "unit/agent_model/AgentModelSupport.h"

namespace agent_model_test {
namespace {

using TibVeskCM::VeskInstanceModel;
using vesk::log::LogCapture;

class InstanceModelTest : public ::testing::Test {
  protected:
    void TearDown() override {
        _instances->reset();
        unsetenv(VeskInstanceModel::kPathVariable);
        std::filesystem::remove_all(_dir);
    }
    void useFile(const std::string& path) {
        setenv(VeskInstanceModel::kPathVariable, path.c_str(), 1);
        _instances->reset();
    }
    std::string writeFile(const std::string& text) {
        std::string path = _dir + "/instances.xml";
        std::ofstream(path) << text;
        return path;
    }
    Attribute* attribute(const std::string& dn, const std::string& name, int handle) {
        _held.reset(IDatabase::getObject(dn, 1, handle));
        return _held ? _held->getAttribute(name) : nullptr;
    }

    StationDatabase _db;
    std::string _dir = makeTempDir("vesk-amodel-file");
    VeskInstanceModel* _instances = VeskInstanceModel::instance();
    std::unique_ptr<DBObject> _held;
};

TEST_F(InstanceModelTest, MissingOrMalformedFileIsReadAgainAndOneThatParsesIsKept) {
    const std::string missing = _dir + "/none.xml";
    useFile(missing);
    LogCapture capture;
    int handle = _db.begin();
    EXPECT_FALSE(_instances->checkInstanceModel("Listed", "ManagedElement=1", handle));
    EXPECT_FALSE(_instances->checkInstanceModel("Listed", "ManagedElement=1", handle));
    EXPECT_EQ(
        capture.count(
            "VeskModelRepository::readFile System parameter file not found (" + missing + ")", 2),
        2u);

    std::string wrongRoot = writeFile("<?xml version=\"1.0\"?><Other><mo ldn=\"A=1\"/></Other>");
    useFile(wrongRoot);
    capture.clear();
    EXPECT_FALSE(_instances->checkInstanceModel("A", "ManagedElement=1", handle));
    EXPECT_EQ(
        capture.countContaining("Problems with POCO::XML parsing, msg: Exception: Root node is not "
                                "<SystemCreatedMOs>",
                                2),
        1u);

    writeFile("<SystemCreatedMOs><mo ldn=\"A=1\"></SystemCreatedMOs>");
    capture.clear();
    EXPECT_FALSE(_instances->checkInstanceModel("A", "ManagedElement=1", handle));
    EXPECT_EQ(capture.countContaining("Problems with POCO::XML parsing", 2), 1u);
    EXPECT_TRUE(IDatabase::getMOClass("A", handle).empty());

    // A file that parses is kept: removing it changes nothing.
    std::string path = writeFile(
        "<SystemCreatedMOs><mo ldn=\"A=1\"><attribute name=\"v\" type=\"PardInt32\" "
        "value=\"1\"/></mo></SystemCreatedMOs>");
    EXPECT_TRUE(_instances->checkInstanceModel("A", "ManagedElement=1", handle));
    std::filesystem::remove(path);
    EXPECT_TRUE(_instances->checkInstanceModel("A", "ManagedElement=1,B=1", handle));
    Attribute* v = attribute("ManagedElement=1,B=1,A=1", "v", handle);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->ToStr(), "1");
    EXPECT_EQ(_instances->mos().size(), 1u);
    EXPECT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
}

TEST_F(InstanceModelTest, ListedClassIsWrittenWithConversionsAndNestedMos) {
    useFile(kTestDataDir + "/instances.xml");
    int handle = _db.begin();
    for (const char* twin : {"Twin=1", "Twin=2"}) {
        DBObject object(twin, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                        "ManagedElement=1", 1);
        ASSERT_NE(IDatabase::insert(&object, handle), 0);
    }
    LogCapture capture;
    EXPECT_FALSE(_instances->checkInstanceModel("Twin", "ManagedElement=1", handle));
    EXPECT_TRUE(_instances->checkInstanceModel("Listed", "ManagedElement=1", handle));

    const std::string listed = "ManagedElement=1,Listed=main";
    struct Expected {
        const char* name;
        const char* text;
        int type;
        int alternative;
    };
    const Expected expected[] = {
        {"count", "12", 6, AV_USHORT},
        {"small", "-3", 1, AV_CHAR},
        {"ratio", "0.5", 17, AV_FLOAT},
        {"on", "0", 10, AV_BOOL},
        {"off", "1", 10, AV_BOOL},
        {"mode", "7", 12, AV_INT},
        {"broken", "0", 3, AV_INT},
        {"modes", "1,2", 18, AV_STRING},
        {"listedId", "main", 9, AV_STRING},
        {"peers", "ManagedElement=1,Twin=2,Foo,ManagedElement=1,Spare=x", 11, AV_STRING},
    };
    for (const Expected& e : expected) {
        Attribute* a = attribute(listed, e.name, handle);
        ASSERT_NE(a, nullptr) << e.name;
        EXPECT_EQ(a->ToStr(), e.text) << e.name;
        EXPECT_EQ(a->type, e.type) << e.name;
        EXPECT_EQ(a->value.which(), e.alternative) << e.name;
        EXPECT_FALSE(a->hidden) << e.name;
    }
    EXPECT_EQ(attribute(listed, "odd", handle), nullptr);
    EXPECT_EQ(
        capture.count("VeskModelRepository::addAttributes could not create attribute (odd)", 2),
        1u);
    EXPECT_EQ(capture.count("VeskModelRepository::makeAttribute could not find instance for "
                            "Foo",
                            2),
              1u);
    // Nested MOs below their parent's full name, each after its parent, in file order.
    EXPECT_NE(attribute(listed + ",Inner=1", "innerId", handle), nullptr);
    EXPECT_TRUE(
        std::unique_ptr<DBObject>(IDatabase::getObject(listed + ",Inner=1,Deep=1", 1, handle)));
    EXPECT_TRUE(std::unique_ptr<DBObject>(IDatabase::getObject(listed + ",Inner=2", 1, handle)));
    std::vector<std::string> entered;
    for (const auto& line : capture.lines()) {
        size_t at = line.text.find("writeToDatabase enter (");
        if (at != std::string::npos)
            entered.push_back(line.text.substr(at + 23));
    }
    EXPECT_EQ(entered,
              (std::vector<std::string>{listed + ")", listed + ",Inner=1)",
                                        listed + ",Inner=1,Deep=1)", listed + ",Inner=2)"}));
    EXPECT_NE(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false), 0);
}

}  // namespace
}  // namespace agent_model_test

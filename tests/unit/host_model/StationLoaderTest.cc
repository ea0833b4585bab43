// The demo station loaded through the station database into a fresh state directory.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/model/StationLoader.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace vesk::host::model {
namespace {

const std::string kData = VESK_DATA_DIR;
const std::string kDemo = kData + "/station/demo-station.xml";
const std::string kObjects = kData + "/station/station-objects.xml";
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kFrequency1 = kEnb + ",EUtraNetwork=1,EUtranFrequency=1";
const std::string kRelation = kEnb + ",EUtranCellFDD=1,EUtranFreqRelation=1";

class StationLoaderTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        _schema = new ModelSchema;
        std::string error;
        ASSERT_TRUE(_schema->load(kData + "/model", "vesk-station", &error)) << error;
    }
    static void TearDownTestSuite() {
        delete _schema;
        _schema = nullptr;
    }
    void SetUp() override {
        char pattern[] = "/tmp/vesk-station-load-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        reopen();
    }
    void TearDown() override {
        vesk::db::close();
        std::filesystem::remove_all(_dir);
    }
    void reopen() {
        vesk::db::close();
        std::string error;
        ASSERT_TRUE(vesk::db::open(_dir + "/state", &error)) << error;
    }
    // The demo file with `from` replaced by `to` once, written to the test's folder.
    std::string demoWith(const std::string& from, const std::string& to) {
        std::ifstream in(kDemo);
        std::stringstream text;
        text << in.rdbuf();
        std::string demo = text.str();
        size_t at = demo.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        demo.replace(at, from.size(), to);
        std::string path = _dir + "/bad.xml";
        std::ofstream(path) << demo;
        return path;
    }
    // The value and type of one committed attribute; type 0 when absent.
    std::pair<AttributeVariant, int> read(const std::string& dn, const std::string& name) {
        Attribute* attribute = IDatabase::getAttribute(dn, name, 0);
        if (attribute == nullptr) {
            return {AttributeVariant(std::string()), 0};
        }
        return {attribute->value, attribute->type};
    }
    std::string text(const std::string& dn, const std::string& name) {
        auto [value, type] = read(dn, name);
        EXPECT_NE(type, 0) << dn << " " << name;
        const std::string* s = boost::get<std::string>(&value);
        return s != nullptr ? *s : "<not a string>";
    }
    bool storeIsEmpty() {
        return IDatabase::getMOClass("ManagedElement", 0).empty() &&
               !IDatabase::isPresentInDB("OAM", 1);
    }

    static inline ModelSchema* _schema = nullptr;
    std::string _dir;
};

TEST_F(StationLoaderTest, DemoLoadsAndReadsBackAfterReopen) {
    StationLoader loader(*_schema);
    std::string error;
    ASSERT_TRUE(loader.load(kDemo, kObjects, &error)) << error;
    reopen();

    // Strings and keys, numbers of derived types, enumerations by number, booleans.
    EXPECT_EQ(text("ManagedElement=1", "networkManagedElementId"), "demo-station-01");
    EXPECT_EQ(text(kFrequency1, "eUtranFrequencyId"), "1");
    EXPECT_EQ(read(kFrequency1, "arfcnValueEUtranDl"), std::make_pair(AttributeVariant(6300), 3));
    EXPECT_EQ(read(kEnb + ",EUtranCellFDD=3", "administrativeState"),
              std::make_pair(AttributeVariant(0), 12));
    EXPECT_EQ(read(kEnb + ",EUtranCellFDD=1", "administrativeState"),
              std::make_pair(AttributeVariant(1), 12));
    EXPECT_EQ(read(kEnb + ",EUtranCellFDD=1", "resourcesAllocated"),
              std::make_pair(AttributeVariant(true), 10));
    EXPECT_EQ(read("OAM", "AI_phase"), std::make_pair(AttributeVariant(4), 3));

    // Lists: enumeration numbers joined with ",".
    std::string pm = "ManagedElement=1,SystemFunctions=1,Pm=1,PmMeasurementCapabilities=1";
    EXPECT_EQ(text(pm, "supportedRopPeriods"), "5,7");
    EXPECT_EQ(read(pm, "supportedRopPeriods").second, 18);

    // References as dns; the database derives reservedBy from them.
    EXPECT_EQ(text(kRelation, "eutranFrequencyRef"), kFrequency1);
    EXPECT_EQ(read(kRelation, "eutranFrequencyRef").second, 11);
    std::vector<std::string> referrers = {
        kEnb + ",EUtranCellFDD=1,EUtranFreqRelation=1",
        kEnb + ",EUtranCellFDD=2,EUtranFreqRelation=1",
        kEnb + ",EUtranCellFDD=3,EUtranFreqRelation=1",
        kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1,ExternalEUtranCellFDD=1"};
    std::sort(referrers.begin(), referrers.end());
    std::string joined;
    for (const std::string& dn : referrers) {
        joined += (joined.empty() ? "" : ";") + dn;
    }
    EXPECT_EQ(text(kFrequency1, "reservedBy"), joined);

    // A struct list: hidden child objects "rdn:attr=i", the MO holding their full dns.
    std::string entry = kRelation + ",EUtranFreqRelation=1:blackListEntry=1";
    EXPECT_EQ(text(kRelation, "blackListEntry"), entry);
    EXPECT_EQ(read(kRelation, "blackListEntry").second, 32);
    std::unique_ptr<DBObject> child(IDatabase::getObject(entry, 1, 0));
    ASSERT_NE(child, nullptr);
    EXPECT_FALSE(child->visible);
    EXPECT_EQ(child->parentDn, kRelation);
    EXPECT_EQ(read(entry, "startPci"), std::make_pair(AttributeVariant(100), 3));
    EXPECT_EQ(read(entry, "pciRange"), std::make_pair(AttributeVariant(4), 3));

    // A single struct: "rdn:attr", type 14.
    std::string unit = "ManagedElement=1,Equipment=1,RbsUnit=1";
    EXPECT_EQ(text(unit, "productData"), unit + ",RbsUnit=1:productData");
    EXPECT_EQ(read(unit, "productData").second, 14);
    EXPECT_EQ(text(unit + ",RbsUnit=1:productData", "productRevision"), "R1A");
    // Cell walks see MOs only: the struct child is no EUtranFreqRelation of its own.
    EXPECT_EQ(
        IDatabase::getMOClassWithParent(kEnb + ",EUtranCellFDD=1", "EUtranFreqRelation", 0).size(),
        2u);
}

TEST_F(StationLoaderTest, RefusesAStationThatIsAlreadyThere) {
    StationLoader loader(*_schema);
    std::string error;
    ASSERT_TRUE(loader.load(kDemo, kObjects, &error)) << error;
    EXPECT_FALSE(loader.load(kDemo, kObjects, &error));
    EXPECT_EQ(error, "the station database already holds a station; load only into an empty state");

    EXPECT_FALSE(StationLoader::isEmptyStateDirectory(_dir + "/state", &error));
    EXPECT_EQ(error, "the state directory " + _dir +
                         "/state is not empty; the demo station loads only into an empty one");
    EXPECT_TRUE(StationLoader::isEmptyStateDirectory(_dir + "/fresh", &error));
}

TEST_F(StationLoaderTest, FirstBadObjectIsNamedAndNothingIsWritten) {
    StationLoader loader(*_schema);
    std::string cell1 = kEnb + ",EUtranCellFDD=1";
    struct Case {
        std::string from, to, expected;
    };
    std::vector<Case> cases = {
        {"<tac>100</tac>\n      <priority>1</priority>",
         "<tac>100</tac><colour>red</colour>\n      <priority>1</priority>",
         cell1 + ": attribute colour: the class has no such attribute"},
        {"<administrativeState>UNLOCKED</administrativeState>\n      <operationalState>ENABLED"
         "</operationalState>\n      <alternateStorageSlot>",
         "<administrativeState>OPEN</administrativeState>\n      <operationalState>ENABLED"
         "</operationalState>\n      <alternateStorageSlot>",
         cell1 + ": attribute administrativeState: value 'OPEN' does not fit its type"},
        {"<dlChannelBandwidth>10000<", "<dlChannelBandwidth>12000<",
         cell1 + ": attribute dlChannelBandwidth: value '12000' does not fit its type"},
        {"<neighborCellRef>ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=2<",
         "<neighborCellRef>ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=9<",
         cell1 + ",EUtranFreqRelation=1,EUtranCellRelation=1: attribute neighborCellRef: refers "
                 "to ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=9, which the station does "
                 "not hold"},
        {"<startPci>100</startPci>", "<startPci>100</startPci><endPci>3</endPci>",
         kRelation + ": attribute blackListEntry.endPci: the struct has no such member"},
        {"<cellId>1</cellId>", "", cell1 + ": attribute cellId: mandatory attribute missing"},
    };
    for (const Case& c : cases) {
        std::string file = demoWith(c.from, c.to);
        std::string error;
        EXPECT_FALSE(loader.load(file, kObjects, &error));
        EXPECT_EQ(error.rfind(file + ": " + c.expected, 0), 0u) << error;
        EXPECT_TRUE(storeIsEmpty()) << c.expected;
    }
    std::string error;
    EXPECT_FALSE(loader.load(kDemo, kData + "/station/none.xml", &error));
    EXPECT_EQ(error, kData + "/station/none.xml: cannot open the file");
    EXPECT_TRUE(storeIsEmpty());
}

}  // namespace
}  // namespace vesk::host::model

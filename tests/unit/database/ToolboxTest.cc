// Toolbox: conversions, splits, reads of database objects, the operation mode and the baseband
// ids.
#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <memory>

#include "EventTestSupport.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "station/database/BoMapping.h"
#include "station/log/LogControl.h"

namespace {

TEST(ToolboxTest, ConversionsTakeWholeNumbersInRangeOnly) {
    std::string text;
    EXPECT_TRUE(Toolbox::convertIntToString(INT_MIN, text));
    EXPECT_EQ(text, "-2147483648");
    EXPECT_TRUE(Toolbox::convertULongToString(4294967295UL, text));
    EXPECT_EQ(text, "4294967295");

    int i = 99;
    EXPECT_TRUE(Toolbox::convertStringToInt("-42", i, false));
    EXPECT_EQ(i, -42);
    for (const char* bad : {"", "42x", " 42", "+1", "2147483648", "abc", "1.5"}) {
        i = 99;
        EXPECT_FALSE(Toolbox::convertStringToInt(bad, i, false)) << bad;
        EXPECT_EQ(i, 99) << bad;
    }
    unsigned u = 7;
    EXPECT_FALSE(Toolbox::convertStringToUInt("-1", u, false));
    EXPECT_TRUE(Toolbox::convertStringToUInt("4294967295", u, false));
    EXPECT_EQ(u, 4294967295u);
    short s = 0;
    EXPECT_FALSE(Toolbox::convertStringToShort("32768", s, false));
    EXPECT_TRUE(Toolbox::convertStringToShort("-32768", s, false));
    EXPECT_EQ(s, -32768);
    long long ll = 0;
    EXPECT_TRUE(Toolbox::convertStringToLongLong("-9223372036854775808", ll, false));
    EXPECT_EQ(ll, LLONG_MIN);
    unsigned long long ull = 0;
    EXPECT_FALSE(Toolbox::convertStringToULongLong("18446744073709551616", ull, false));
    EXPECT_TRUE(Toolbox::convertStringToULongLong("18446744073709551615", ull, false));
    EXPECT_EQ(ull, ULLONG_MAX);
    double d = 0;
    EXPECT_TRUE(Toolbox::convertStringToDouble("-1.25e2", d));
    EXPECT_EQ(d, -125.0);
    EXPECT_FALSE(Toolbox::convertStringToDouble("inf", d));
    EXPECT_FALSE(Toolbox::convertStringToDouble("1e999", d));
    EXPECT_EQ(d, -125.0);
}

TEST(ToolboxTest, ListsSplitInOrderOrFromTheFront) {
    std::list<std::string> pieces{"kept"};
    EXPECT_TRUE(Toolbox::readStringToList("a;;b", ';', pieces, true));
    EXPECT_EQ(pieces, (std::list<std::string>{"kept", "a", "", "b"}));
    std::list<std::string> dn;
    EXPECT_TRUE(Toolbox::readStringToList("ManagedElement=1,Foo=1,X=1", ',', dn, false));
    EXPECT_EQ(dn, (std::list<std::string>{"X=1", "Foo=1", "ManagedElement=1"}));
    EXPECT_FALSE(Toolbox::readStringToList("", ';', dn, true));
    EXPECT_EQ(dn.size(), 3u);

    std::list<int> ints{0};
    EXPECT_TRUE(Toolbox::readStringToIntList("1, 2,-3", ',', ints));
    EXPECT_EQ(ints, (std::list<int>{0, 1, 2, -3}));
    EXPECT_FALSE(Toolbox::readStringToIntList("4,x,5", ',', ints));
    EXPECT_FALSE(Toolbox::readStringToIntList("4,,5", ',', ints));
    EXPECT_EQ(ints.size(), 4u);

    std::list<AttributeVariant> values;
    EXPECT_TRUE(
        Toolbox::readStringToListVariant("1,5000000000,18446744073709551615,1.5", ',', values));
    std::vector<int> kinds;
    for (const AttributeVariant& v : values)
        kinds.push_back(v.which());
    EXPECT_EQ(kinds, (std::vector<int>{AV_INT, AV_LONGLONG, AV_ULONGLONG, AV_DOUBLE}));
    EXPECT_EQ(boost::get<int>(values.front()), 1);
    EXPECT_FALSE(Toolbox::readStringToListVariant("1,abc", ',', values));
    EXPECT_EQ(values.size(), 4u);
}

TEST(ToolboxTest, SplitFdnTakesTheLastPair) {
    std::string rdn = "old", parent = "old";
    EXPECT_TRUE(Toolbox::splitFdn("ManagedElement=1,Foo=1,Bar=2", rdn, parent));
    EXPECT_EQ(rdn, "Bar=2");
    EXPECT_EQ(parent, "ManagedElement=1,Foo=1");
    EXPECT_TRUE(Toolbox::splitFdn("OAM", rdn, parent));
    EXPECT_EQ(rdn, "OAM");
    EXPECT_EQ(parent, "");
    rdn = parent = "same";
    for (const char* bad : {"", "A=1,", ",A=1"}) {
        EXPECT_FALSE(Toolbox::splitFdn(bad, rdn, parent)) << bad;
    }
    EXPECT_FALSE(Toolbox::splitFdn(nullptr, rdn, parent));
    EXPECT_EQ(rdn, "same");
}

TEST(ToolboxTest, ReadsFromAnObjectInHand) {
    DBObject object("X=1", 1, true, false, IPCData::OPSTATE_DISABLED, IPCData::ADMSTATE_UNLOCKED);
    object.addAttribute(*new Attribute(false, "i", -5, 0, true, IPCData::AVT_INT32, true, false));
    object.addAttribute(*new Attribute(false, "us", static_cast<unsigned short>(7), 0, true,
                                       IPCData::AVT_UINT16, true, false));
    object.addAttribute(
        *new Attribute(false, "big", 3000000000u, 0, true, IPCData::AVT_UINT32, true, false));
    object.addAttribute(
        *new Attribute(false, "s", std::string("text"), 0, true, IPCData::AVT_STRING, true, false));
    object.addAttribute(*new Attribute(false, "gone", 1, 0, true, IPCData::AVT_INT32, true, true));
    std::string i = "i", us = "us", big = "big", s = "s", gone = "gone", none = "none";
    int value = 0;
    EXPECT_TRUE(Toolbox::getIntFromDBObject(&object, i, value));
    EXPECT_EQ(value, -5);
    EXPECT_TRUE(Toolbox::getIntFromDBObject(&object, us, value));
    EXPECT_EQ(value, 7);
    EXPECT_FALSE(Toolbox::getIntFromDBObject(&object, big, value));
    EXPECT_FALSE(Toolbox::getIntFromDBObject(&object, s, value));
    EXPECT_FALSE(Toolbox::getIntFromDBObject(&object, gone, value));
    EXPECT_FALSE(Toolbox::getIntFromDBObject(&object, none, value));
    vesk::log::LogCapture capture;
    EXPECT_FALSE(Toolbox::getIntFromDBObject(nullptr, i, value));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(capture.count("Toolbox::getIntFromDBObject: Object is NULL", VESK_LOG_WARNING), 1u);
    std::string text;
    EXPECT_TRUE(Toolbox::getStringFromDBObject(&object, s, text));
    EXPECT_EQ(text, "text");
    EXPECT_FALSE(Toolbox::getStringFromDBObject(&object, i, text));
    EXPECT_FALSE(Toolbox::getStringFromDBObject(nullptr, s, text));
    EXPECT_EQ(text, "text");
    EXPECT_EQ(capture.count("Toolbox::getStringFromDBObject: Object is NULL", VESK_LOG_WARNING),
              1u);
}

TEST(ToolboxTest, TableLinesThatDoNotParseAreSkippedWithAWarning) {
    std::string path = testing::TempDir() + "/vesk_bo_ids.csv";
    std::ofstream(path) << "# comment\n\nalpha, 12\nbeta\ngamma,x\n,5\ndelta,-1\n";
    vesk::log::LogCapture capture;
    vesk::db::BoAttributeTable table;
    ASSERT_TRUE(table.load(path));
    EXPECT_EQ(table.size(), 1u);
    EXPECT_EQ(table.find("alpha"), 12);
    EXPECT_EQ(table.find("beta"), 0);
    EXPECT_EQ(capture.countContaining("skipped", VESK_LOG_WARNING), 4u);
    EXPECT_FALSE(table.load(path + ".missing"));
}

using ToolboxDatabaseTest = vesk::test::DatabaseFixture;
using vesk::dbtest::put;

Attribute* intAttr(const std::string& name, int value) {
    return vesk::dbtest::attr(name, value, IPCData::AVT_INT32);
}

TEST_F(ToolboxDatabaseTest, AiPhaseIsMinusTwoUntilOamHoldsIt) {
    EXPECT_EQ(Toolbox::getAIPhaseFromDB(), -2);
    put("OAM", "", {intAttr("other", 1)});
    EXPECT_EQ(Toolbox::getAIPhaseFromDB(), -2);
    put("OAM", "", {intAttr("AI_phase", 4)});
    EXPECT_EQ(Toolbox::getAIPhaseFromDB(), 4);
}

TEST_F(ToolboxDatabaseTest, ModeIsMixedWhenTheHandleSeesAnUnlockedWcdmaCell) {
    const std::string group = "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1";
    put("ManagedElement=1", "");
    put("ENodeBFunction=1", "ManagedElement=1");
    put("EUtranCellFDD=1", "ManagedElement=1,ENodeBFunction=1",
        {intAttr("administrativeState", 1)});
    put("NodeBFunction=1", "ManagedElement=1");
    put("NodeBLocalCellGroup=1", "ManagedElement=1,NodeBFunction=1");
    put("NodeBLocalCell=2", group, {intAttr("administrativeState", 0)});
    put("NodeBLocalCell=2:struct", group, {intAttr("administrativeState", 1)});
    EXPECT_EQ(Toolbox::checkModeFromDB(0), 0);

    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(handle, 0);
    put("NodeBLocalCell=1", group, {intAttr("administrativeState", 1)}, handle);
    EXPECT_EQ(Toolbox::checkModeFromDB(handle), 1);
    EXPECT_EQ(Toolbox::checkModeFromDB(0), 0);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false), 0);
    EXPECT_EQ(Toolbox::checkModeFromDB(0), 1);

    handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(
        IDatabase::deleteObj(
            "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=1", 1, handle),
        0);
    EXPECT_EQ(Toolbox::checkModeFromDB(handle), 0);
    IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false);
}

TEST_F(ToolboxDatabaseTest, BasebandIdsComeFromTheMappingObjectThenTheTable) {
    const std::string cell =
        "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1,NodeBLocalCell=3";
    EXPECT_EQ(IDatabase::getBOAttributeId(nullptr, "eAgchMaxPower"), 4132);
    EXPECT_EQ(IDatabase::getBOAttributeId(nullptr, "eulMaxRoTCoverage"), 4126);
    EXPECT_EQ(IDatabase::getBOAttributeId(nullptr, "ManagedElement=1,NodeBFunction=1"), 132);
    EXPECT_EQ(IDatabase::getBOAttributeId(nullptr, cell), 130);

    put("BOMOMapping", "",
        {intAttr("eAgchMaxPower", 9999), vesk::dbtest::attr("uarfcnDl", std::string("777"))});
    std::unique_ptr<DBObject> mapping(IDatabase::getObject("BOMOMapping", 1, 0));
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(IDatabase::getBOAttributeId(mapping.get(), "eAgchMaxPower"), 9999);
    EXPECT_EQ(IDatabase::getBOAttributeId(mapping.get(), "uarfcnDl"), 777);
    EXPECT_EQ(IDatabase::getBOAttributeId(mapping.get(), "eAgchMinPower"), 4132);

    vesk::log::LogCapture capture;
    EXPECT_EQ(IDatabase::getBOAttributeId(mapping.get(), "userLabel"), 0);
    EXPECT_EQ(IDatabase::getBOAttributeId(nullptr, "ManagedElement=1,Foo=1"), 0);
    // An attribute that is the database's alone is no fault: traced, not warned.
    EXPECT_EQ(capture.countContaining("'userLabel' has no baseband id", VESK_LOG_TRACE), 1u);
    EXPECT_EQ(capture.lines().size(), 2u);
}

}  // namespace

// Views of handles: committed data, overlays, short forms, class and parent look-ups.
#include <gtest/gtest.h>

#include "platform/Toolbox.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

const char* kEquipment = "ManagedElement=1,Equipment=1";
const char* kRbsUnit = "ManagedElement=1,Equipment=1,RbsUnit=1";

class DatabaseViewTest : public DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        put("ManagedElement=1", "");
        put("Equipment=1", "ManagedElement=1");
        put("RbsUnit=1", kEquipment, {attr("serial_number", std::string("A1"))});
    }
};

TEST_F(DatabaseViewTest, InsertInAnOpenTransactionIsSeenOnlyThroughItsHandle) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, h);
    auto unit = object("RbsUnit=2", kEquipment, {attr("serial_number", std::string("B2"))});
    ASSERT_NE(0, IDatabase::insert(unit.get(), h));
    std::string dn = "ManagedElement=1,Equipment=1,RbsUnit=2";
    EXPECT_EQ(0, IDatabase::isPresentInDB(dn, 1));
    EXPECT_EQ(nullptr, IDatabase::getObject(dn, 1, 0));
    std::unique_ptr<DBObject> seen(IDatabase::getObject(dn, 1, h));
    ASSERT_NE(nullptr, seen);
    EXPECT_EQ("RbsUnit=2", seen->dn);
    EXPECT_EQ(kEquipment, seen->parentDn);
    EXPECT_EQ("B2", seen->getAttribute("serial_number")->ToStr());
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ(1, IDatabase::isPresentInDB(dn, 1));
    EXPECT_EQ("B2", committedString(dn, "serial_number"));
}

TEST_F(DatabaseViewTest, TwoTransactionsSeeOnlyTheirOwnChangesAndRollbackDropsAll) {
    int a = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    int b = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(a, b);
    ASSERT_NE(0, IDatabase::setAttribute(kRbsUnit, 1, "serial_number",
                                         AttributeVariant(std::string("fromA")), false,
                                         IPCData::AVT_STRING, true, a));
    ASSERT_NE(0, IDatabase::deleteObj("RbsUnit=1", 1, b));
    EXPECT_EQ(nullptr, IDatabase::getObject(kRbsUnit, 1, b));
    EXPECT_EQ(1, IDatabase::isPresentInDB(kRbsUnit, 1));
    std::unique_ptr<DBObject> inA(IDatabase::getObject(kRbsUnit, 1, a));
    ASSERT_NE(nullptr, inA);
    EXPECT_EQ("fromA", inA->getAttribute("serial_number")->ToStr());
    EXPECT_EQ("A1", committedString(kRbsUnit, "serial_number"));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_ROLLBACK, b, false));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, a, false));
    EXPECT_EQ("fromA", committedString(kRbsUnit, "serial_number"));
    int c = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    EXPECT_GT(c, b);  // handles are never reused
    IDatabase::transaction(IPCData::OP_TX_ROLLBACK, c, false);
}

TEST_F(DatabaseViewTest, GetObjectGivesACopyWithHiddenAndAlternateAttributes) {
    auto unit = object("RbsUnit=2", kEquipment, {attr("a", 1, IPCData::AVT_INT32)});
    unit->addAttribute(*new Attribute(true, "secret", AttributeVariant(std::string("s")), 0, true,
                                      IPCData::AVT_STRING, true, false));
    Attribute* pending = attr("a", 2, IPCData::AVT_INT32);
    pending->alternateSlot = 2;
    unit->addAlternateAttribute(*pending);
    ASSERT_NE(0, IDatabase::insert(unit.get(), 0));
    std::unique_ptr<DBObject> copy(IDatabase::getObject("RbsUnit=2", 1, 0));
    ASSERT_NE(nullptr, copy);
    ASSERT_NE(nullptr, copy->getAttribute("secret"));
    EXPECT_TRUE(copy->getAttribute("secret")->hidden);
    ASSERT_NE(nullptr, copy->getAlternateAttribute("a"));
    EXPECT_EQ(2, boost::get<int>(copy->getAlternateAttribute("a")->value));
    EXPECT_EQ(2, copy->getAlternateAttribute("a")->alternateSlot);
    copy->getAttribute("a")->SetValue(AttributeVariant(9));
    copy->addAttribute(*attr("extra", std::string("x")));
    EXPECT_EQ("1", committedString("RbsUnit=2", "a"));
    EXPECT_EQ("<absent>", committedString("RbsUnit=2", "extra"));
}

TEST_F(DatabaseViewTest, UpdateStoresModifiedDropsDeletedAndRoutesAlternateSlots) {
    auto unit = object("RbsUnit=2", kEquipment,
                       {attr("keep", 1, IPCData::AVT_INT32), attr("gone", 2, IPCData::AVT_INT32),
                        attr("touched", 3, IPCData::AVT_INT32)});
    ASSERT_NE(0, IDatabase::insert(unit.get(), 0));
    std::unique_ptr<DBObject> copy(IDatabase::getObject("RbsUnit=2", 1, 0));
    copy->getAttribute("keep")->value = AttributeVariant(100);  // not marked modified: ignored
    copy->getAttribute("gone")->deleted = true;
    copy->getAttribute("touched")->SetValue(AttributeVariant(30));
    Attribute* pending = attr("later", std::string("p"));
    pending->alternateSlot = 2;
    copy->addAttribute(*pending);
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::update(copy.get(), h));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    std::unique_ptr<DBObject> after(IDatabase::getObject("RbsUnit=2", 1, 0));
    EXPECT_EQ(1, boost::get<int>(after->getAttribute("keep")->value));
    EXPECT_EQ(nullptr, after->getAttribute("gone"));
    EXPECT_EQ(30, boost::get<int>(after->getAttribute("touched")->value));
    EXPECT_EQ(nullptr, after->getAttribute("later"));
    ASSERT_NE(nullptr, after->getAlternateAttribute("later"));
    EXPECT_EQ(2, after->getAlternateAttribute("later")->alternateSlot);
}

TEST_F(DatabaseViewTest, ShortFormsResolveWhenUniqueAndAmbiguousOnesFail) {
    put("OAM", "", {attr("AI_phase", 4, IPCData::AVT_INT32)});
    put("BrmBackupManager=1", "ManagedElement=1");
    put("BrmBackup=3", "ManagedElement=1,BrmBackupManager=1");
    auto report =
        object("BrmBackup=3:progressReport", "ManagedElement=1,BrmBackupManager=1,BrmBackup=3",
               {attr("state", 3, IPCData::AVT_INT32)});
    report->visible = false;
    ASSERT_NE(0, IDatabase::insert(report.get(), 0));
    EXPECT_EQ(1, IDatabase::isPresentInDB("OAM", 1));
    EXPECT_EQ(1, IDatabase::isPresentInDB("RbsUnit=1", 1));
    std::unique_ptr<DBObject> child(IDatabase::getObject("BrmBackup=3:progressReport", 1, 0));
    ASSERT_NE(nullptr, child);
    EXPECT_FALSE(child->visible);
    EXPECT_EQ("ManagedElement=1,BrmBackupManager=1,BrmBackup=3", child->parentDn);
    int phase = 0;
    EXPECT_TRUE(Toolbox::getDbObjAttrValue<int>("OAM", "AI_phase", phase, 1));
    EXPECT_EQ(4, phase);

    put("Equipment=2", "ManagedElement=1");
    put("RbsUnit=1", "ManagedElement=1,Equipment=2");
    log::LogCapture capture;
    EXPECT_EQ(nullptr, IDatabase::getObject("RbsUnit=1", 1, 0));
    EXPECT_EQ(1u, capture.count("IDatabase::getObject: dn 'RbsUnit=1' is ambiguous (2 objects)",
                                VESK_LOG_ERROR));
    EXPECT_NE(nullptr, std::unique_ptr<DBObject>(IDatabase::getObject(kRbsUnit, 1, 0)));
    EXPECT_EQ(nullptr, IDatabase::getObject("RbsUnit=9", 1, 0));  // absent: no error
    EXPECT_EQ(1u, capture.lines().size());
}

TEST_F(DatabaseViewTest, ClassAndParentLookupsFollowInsertionOrderAndTheView) {
    put("BrmBackupManager=1", "ManagedElement=1");
    const std::string manager = "ManagedElement=1,BrmBackupManager=1";
    for (const char* key : {"BrmBackup=7", "BrmBackup=3", "BrmBackup=5"})
        put(key, manager);
    put("BrmBackup=7:progressReport", manager + ",BrmBackup=7");
    using Ids = std::list<std::string>;
    EXPECT_EQ((Ids{"7", "3", "5"}), IDatabase::getMOClassWithParent(manager, "BrmBackup", 0));
    EXPECT_EQ((Ids{"7", "3", "5"}),
              IDatabase::getMOClassWithParent("BrmBackupManager=1", "BrmBackup", 0));
    EXPECT_EQ((Ids{"1"}), IDatabase::getMOClassWithParent("", "ManagedElement", 0));
    EXPECT_TRUE(IDatabase::getMOClassWithParent(manager, "RbsUnit", 0).empty());

    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::deleteObj(manager + ",BrmBackup=3", 1, h));
    auto added = object("BrmBackup=1", manager);
    ASSERT_NE(0, IDatabase::insert(added.get(), h));
    EXPECT_EQ((Ids{"7", "5", "1"}), IDatabase::getMOClassWithParent(manager, "BrmBackup", h));
    std::list<DBObject*> all = IDatabase::getMOClass("BrmBackup", h);
    std::vector<std::string> keys;
    for (DBObject* o : all) {
        keys.push_back(o->dn);
        delete o;
    }
    // The struct child's key starts with the class name: it is listed, callers skip ":" keys.
    EXPECT_EQ((std::vector<std::string>{"BrmBackup=7", "BrmBackup=5", "BrmBackup=7:progressReport",
                                        "BrmBackup=1"}),
              keys);
    all = IDatabase::getMOClass("BrmBackup", 0);
    EXPECT_EQ(4u, all.size());  // committed: 7, 3, 5 and the child
    for (DBObject* o : all)
        delete o;
    IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false);
}

TEST_F(DatabaseViewTest, GetAttributeFollowsTheViewAndLivesUntilTheNextCall) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::deleteAttribute("serial_number", kRbsUnit, "", h));
    EXPECT_EQ(nullptr, IDatabase::getAttribute(kRbsUnit, "serial_number", h));
    Attribute* a = IDatabase::getAttribute("RbsUnit=1", "serial_number", 0);
    ASSERT_NE(nullptr, a);
    EXPECT_EQ("A1", a->ToStr());
    EXPECT_EQ(IPCData::AVT_STRING, a->type);
    EXPECT_EQ(nullptr, IDatabase::getAttribute(kRbsUnit, "nothing", 0));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ("<absent>", committedString(kRbsUnit, "serial_number"));
}

TEST_F(DatabaseViewTest, SetAttributeKeepsTheTypeGivenAndToolboxTakesExactAlternatives) {
    ASSERT_NE(0, IDatabase::setAttribute("RbsUnit=1", 1, "count", AttributeVariant(7u), false,
                                         IPCData::AVT_UINT32, true, 0));
    ASSERT_NE(0, IDatabase::setAttribute("RbsUnit=1", 1, "serial_number",
                                         AttributeVariant(static_cast<char const*>("")), false,
                                         IPCData::AVT_REFERENCE_LIST, true, 0));
    std::unique_ptr<DBObject> copy(IDatabase::getObject(kRbsUnit, 1, 0));
    EXPECT_EQ(IPCData::AVT_UINT32, copy->getAttribute("count")->type);
    EXPECT_EQ(AV_UINT, copy->getAttribute("count")->value.which());
    EXPECT_EQ(IPCData::AVT_REFERENCE_LIST, copy->getAttribute("serial_number")->type);
    EXPECT_EQ(AV_STRING, copy->getAttribute("serial_number")->value.which());  // "" cleared
    log::LogCapture capture;
    int asInt = -1;
    EXPECT_FALSE(Toolbox::getDbObjAttrValue<int>("RbsUnit=1", "count", asInt, 1));
    EXPECT_EQ(1u, capture.count("Toolbox::getDbObjAttrValue: Boost Bad Get! When reading value "
                                "of: 'RbsUnit=1:count' ",
                                VESK_LOG_ERROR));
    unsigned asUnsigned = 0;
    EXPECT_TRUE(Toolbox::getDbObjAttrValue<unsigned>("RbsUnit=1", "count", asUnsigned, 1));
    EXPECT_EQ(7u, asUnsigned);
}

TEST_F(DatabaseViewTest, DeleteObjTakesEverythingBelowAndNothingElse) {
    putDn(std::string(kRbsUnit) + ",RbsUnit=1:s", {attr("x", 1, IPCData::AVT_INT32)});
    put("Transport=1", "ManagedElement=1");
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    put("RbsUnit=2", kEquipment, {}, h);
    ASSERT_NE(0, IDatabase::deleteObj(kEquipment, 42, h));  // the instance is ignored
    put("RbsUnit=3", kEquipment);                           // another handle's, committed meanwhile
    for (const char* below : {"", ",RbsUnit=1", ",RbsUnit=1,RbsUnit=1:s", ",RbsUnit=2"}) {
        std::unique_ptr<DBObject> seen(IDatabase::getObject(kEquipment + std::string(below), 1, h));
        EXPECT_FALSE(seen) << below;
    }
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    for (const char* below : {"", ",RbsUnit=1", ",RbsUnit=1,RbsUnit=1:s", ",RbsUnit=3"}) {
        EXPECT_EQ(0, IDatabase::isPresentInDB(kEquipment + std::string(below), 1)) << below;
    }
    EXPECT_EQ(1, IDatabase::isPresentInDB("ManagedElement=1,Transport=1", 1));
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

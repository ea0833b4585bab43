// Refused calls: each gets a failure result and exactly one error line, and changes nothing.
#include <gtest/gtest.h>

#include <functional>

#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

const char* kUnit = "ManagedElement=1,RbsUnit=1";

class DatabaseBadInputTest : public DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        put("ManagedElement=1", "");
        put("RbsUnit=1", "ManagedElement=1", {attr("a", 1, IPCData::AVT_INT32)});
    }

    // Runs `call`, expects a zero result, one error line containing `text`, and no change.
    void expectRefused(const std::string& text, const std::function<int()>& call) {
        std::string before = snapshot();
        log::LogCapture capture;
        EXPECT_EQ(0, call()) << text;
        auto lines = capture.lines();
        ASSERT_EQ(1u, lines.size()) << text;
        EXPECT_EQ(VESK_LOG_ERROR, lines[0].level);
        EXPECT_NE(std::string::npos, lines[0].text.find(text)) << lines[0].text;
        EXPECT_EQ(before, snapshot()) << text;
    }

    static std::string snapshot() {
        std::string out;
        for (DBObject* o : IDatabase::getMOClass("RbsUnit", 0)) {
            out += o->parentDn + "," + o->dn;
            for (auto& a : o->attributes)
                out += "|" + a.first + "=" + a.second->ToStr();
            delete o;
        }
        return out + "#" + std::to_string(IDatabase::isPresentInDB("ManagedElement=1", 1));
    }
};

TEST_F(DatabaseBadInputTest, HandlesThatAreUnknownOrEndedAreRefused) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::setAttribute(kUnit, 1, "a", AttributeVariant(2), false,
                                         IPCData::AVT_INT32, true, h));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    std::string notOpen = "handle " + std::to_string(h) + " is not open";
    expectRefused(notOpen, [&] { return IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false); });
    expectRefused(notOpen,
                  [&] { return IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false); });
    expectRefused(notOpen, [&] { return IDatabase::deleteObj(kUnit, 1, h); });
    expectRefused("handle 999999 is not open", [&] {
        return IDatabase::setAttribute(kUnit, 1, "a", AttributeVariant(3), false,
                                       IPCData::AVT_INT32, true, 999999);
    });
    expectRefused("handle -4 is not open",
                  [&] { return IDatabase::getObject(kUnit, 1, -4) == nullptr ? 0 : 1; });
    int r = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::deleteObj(kUnit, 1, r));
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_ROLLBACK, r, false));
    expectRefused("is not open",
                  [&] { return IDatabase::transaction(IPCData::OP_TX_COMMIT, r, false); });
    expectRefused("unknown operation 18",
                  [&] { return IDatabase::transaction(IPCData::OP_INSERT, 0, false); });
    EXPECT_EQ("2", committedString(kUnit, "a"));
}

TEST_F(DatabaseBadInputTest, EmptyOrMalformedDnsAreRefused) {
    for (const char* dn : {"", ",", "ManagedElement=1,", "ManagedElement=1,,RbsUnit=1",
                           "ManagedElement=1,RbsUnit", "=1", "ManagedElement=1,=1"}) {
        std::string text = std::string("malformed dn '") + dn + "'";
        expectRefused(text, [&] { return IDatabase::isPresentInDB(dn, 1); });
        expectRefused(text, [&] { return IDatabase::deleteObj(dn, 1, 0); });
        expectRefused(text, [&] {
            return IDatabase::setAttribute(dn, 1, "a", AttributeVariant(1), false,
                                           IPCData::AVT_INT32, true, 0);
        });
    }
    auto noName = object("", "");
    expectRefused("malformed dn ''", [&] { return IDatabase::insert(noName.get(), 0); });
}

TEST_F(DatabaseBadInputTest, AttributesWithoutTypeOrValueAreRefused) {
    auto typeless =
        object("RbsUnit=2", "ManagedElement=1",
               {attr("ok", 1, IPCData::AVT_INT32), attr("bad", 1, IPCData::AVT_UNKNOWN)});
    expectRefused("attribute 'bad' of 'RbsUnit=2' has no type or no value",
                  [&] { return IDatabase::insert(typeless.get(), 0); });
    auto placeholder = object("RbsUnit=2", "ManagedElement=1");
    placeholder->addAttribute(
        *new Attribute(false, "p", AttributeVariant(0), 0, false, IPCData::AVT_INT32, true, false));
    expectRefused("attribute 'p' of 'RbsUnit=2' has no type or no value",
                  [&] { return IDatabase::insert(placeholder.get(), 0); });
    std::unique_ptr<DBObject> copy(IDatabase::getObject(kUnit, 1, 0));
    copy->getAttribute("a")->SetValue(AttributeVariant(5));
    copy->getAttribute("a")->type = IPCData::AVT_UNKNOWN;
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    expectRefused("attribute 'a' of 'RbsUnit=1' has no type",
                  [&] { return IDatabase::update(copy.get(), h); });
    expectRefused("attribute 'b' of 'ManagedElement=1,RbsUnit=1' has no type", [&] {
        return IDatabase::setAttribute(kUnit, 1, "b", AttributeVariant(1), false,
                                       IPCData::AVT_UNKNOWN, true, h);
    });
    EXPECT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
}

TEST_F(DatabaseBadInputTest, WritesToMissingObjectsAreRefused) {
    const char* missing = "ManagedElement=1,RbsUnit=7";
    std::string text = std::string("object '") + missing + "' not found";
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, IDatabase::deleteObj(kUnit, 1, h));
    for (int handle : {0, h}) {
        expectRefused(text, [&] { return IDatabase::deleteObj(missing, 1, handle); });
        expectRefused(text, [&] { return IDatabase::deleteAttribute("a", missing, "", handle); });
        expectRefused(text, [&] {
            return IDatabase::setAttribute(missing, 1, "a", AttributeVariant(1), false,
                                           IPCData::AVT_INT32, true, handle);
        });
        auto ghost = object("RbsUnit=7", "ManagedElement=1", {attr("a", 1, IPCData::AVT_INT32)});
        expectRefused(text, [&] { return IDatabase::update(ghost.get(), handle); });
    }
    // Deleted in the handle: missing there, present in committed data.
    expectRefused(std::string("object '") + kUnit + "' not found", [&] {
        return IDatabase::setAttribute(kUnit, 1, "a", AttributeVariant(1), false,
                                       IPCData::AVT_INT32, true, h);
    });
    expectRefused("IDatabase::insert: no object", [&] { return IDatabase::insert(nullptr, h); });
    expectRefused("IDatabase::update: no object", [&] { return IDatabase::update(nullptr, h); });
    EXPECT_NE(0, IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false));
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

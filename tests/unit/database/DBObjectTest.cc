#include <gtest/gtest.h>

#include "platform/DBObject.h"

namespace {

int g_destroyed = 0;

class CountedAttribute : public Attribute {
  public:
    CountedAttribute(const std::string& name, int value)
        : Attribute(false, name, AttributeVariant(value), 0, true, IPCData::AVT_INT32, true,
                    false) {}
    ~CountedAttribute() override { ++g_destroyed; }
};

DBObject make() {
    return DBObject("RbsUnit=1", 1, true, false, IPCData::OPSTATE_DISABLED,
                    IPCData::ADMSTATE_UNLOCKED, "ManagedElement=1,Equipment=1", 1);
}

TEST(DBObjectTest, AddReplacesAndDestroysTheOldAttributeButNotTheSamePointer) {
    g_destroyed = 0;
    {
        DBObject object = make();
        auto* first = new CountedAttribute("a", 1);
        EXPECT_TRUE(object.addAttribute(*first));
        EXPECT_TRUE(object.addAttribute(*first));  // the same pointer again: kept alive
        EXPECT_EQ(0, g_destroyed);
        EXPECT_TRUE(object.addAttribute(*new CountedAttribute("a", 2)));
        EXPECT_EQ(1, g_destroyed);
        ASSERT_EQ(1u, object.attributes.size());
        EXPECT_EQ(2, boost::get<int>(object.getAttribute("a")->value));
        object.addAlternateAttribute(*new CountedAttribute("a", 3));
        EXPECT_EQ(3, boost::get<int>(object.getAlternateAttribute("a")->value));
        EXPECT_EQ(nullptr, object.getAttribute("b"));
        EXPECT_EQ(nullptr, object.getAlternateAttribute("b"));
    }
    EXPECT_EQ(3, g_destroyed);  // the destructor frees both maps
}

TEST(DBObjectTest, CopyIsDeepAndKeepsEveryField) {
    DBObject object = make();
    object.addAttribute(*new Attribute(true, "h", AttributeVariant(std::string("x")), 7, true,
                                       IPCData::AVT_STRING, false, false));
    object.addAlternateAttribute(*new Attribute(false, "p", AttributeVariant(5u), 0, true,
                                                IPCData::AVT_UINT32, true, false));
    DBObject copy(object);
    EXPECT_EQ("RbsUnit=1", copy.dn);
    EXPECT_EQ("ManagedElement=1,Equipment=1", copy.parentDn);
    EXPECT_EQ(IPCData::ADMSTATE_UNLOCKED, copy.adminState);
    ASSERT_NE(nullptr, copy.getAttribute("h"));
    EXPECT_NE(object.getAttribute("h"), copy.getAttribute("h"));
    EXPECT_TRUE(copy.getAttribute("h")->hidden);
    EXPECT_EQ(7, copy.getAttribute("h")->attributeId);
    copy.getAttribute("h")->SetValue(AttributeVariant(std::string("y")));
    EXPECT_EQ("x", object.getAttribute("h")->ToStr());
    EXPECT_EQ(5u, boost::get<unsigned>(copy.getAlternateAttribute("p")->value));
    copy.setDn("RbsUnit=2");
    EXPECT_EQ("RbsUnit=1", object.dn);
}

TEST(DBObjectTest, SetValueOfTheHeldValueLeavesModifiedAlone) {
    Attribute a(false, "n", AttributeVariant(5), 0, true, IPCData::AVT_INT32, false, false);
    a.SetValue(AttributeVariant(5));
    EXPECT_FALSE(a.modified);
    a.SetValue(AttributeVariant(5u));  // same number, other alternative: a change
    EXPECT_TRUE(a.modified);
    EXPECT_EQ(AV_UINT, a.value.which());
}

}  // namespace

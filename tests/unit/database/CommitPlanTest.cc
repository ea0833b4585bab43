// The change entries a commit hands to the notifier.
#include <gtest/gtest.h>

#include "station/database/CommitPlan.h"
#include "station/database/DnName.h"

namespace vesk {
namespace db {
namespace {

StoredAttribute stored(const std::string& name, AttributeVariant value,
                       IPCData::AttributeValueType type = IPCData::AVT_INT32) {
    StoredAttribute a;
    a.name = name;
    a.value = value;
    a.type = type;
    return a;
}

ObjectPtr make(const std::string& fullDn, std::vector<StoredAttribute> attributes, uint64_t seq) {
    auto object = std::make_shared<StoredObject>();
    object->fullDn = fullDn;
    object->key = keyOf(fullDn);
    object->className = classOfKey(object->key);
    object->parentDn = parentOf(fullDn);
    object->seq = seq;
    for (auto& a : attributes)
        object->attributes.put(a);
    return object;
}

std::string describe(const ObjectChange& change) {
    std::string out = std::to_string(change.op) + " " + change.dn + ":";
    for (const AttributeChange& a : change.attributes) {
        out += " " + a.name + (a.deleted ? "-" : "") + (a.alternateSlot != -1 ? "@" : "");
    }
    return out;
}

TEST(CommitPlanTest, ChangesListWrittenAttributesInTouchOrderWithReservedByLast) {
    CommittedState state;
    state.put(make("F=1", {}, 1));
    state.put(make("Cell=1", {stored("a", 1), stored("b", 2)}, 2));
    state.put(make("Old=1", {stored("z", std::string("last"), IPCData::AVT_STRING)}, 3));

    Overlay overlay;
    overlay.putAttribute("Cell=1", stored("a", 10), false);
    overlay.eraseAttribute("Cell=1", "b", false);
    overlay.eraseAttribute("Cell=1", "never", false);  // nothing to report
    StoredAttribute pending = stored("a", 11);
    pending.alternateSlot = 2;
    overlay.putAttribute("Cell=1", pending, true);
    overlay.remove("Old=1");
    overlay.replace(make("Rel=1", {stored("ref", std::string("F=1"), IPCData::AVT_REFERENCE)}, 0));

    CommitPlan plan(state, overlay);
    std::vector<ObjectChange> changes = plan.changes();
    ASSERT_EQ(4u, changes.size());
    EXPECT_EQ("23 Cell=1: a b- a@", describe(changes[0]));
    EXPECT_EQ(10, boost::get<int>(changes[0].attributes[0].value));
    EXPECT_EQ(2, boost::get<int>(changes[0].attributes[1].value));  // the last value
    EXPECT_EQ("9 Old=1: z", describe(changes[1]));
    EXPECT_EQ("last", boost::get<std::string>(changes[1].attributes[0].value));
    EXPECT_EQ("18 Rel=1: ref", describe(changes[2]));
    EXPECT_EQ("23 F=1: reservedBy", describe(changes[3]));
    EXPECT_EQ("Rel=1", boost::get<std::string>(changes[3].attributes[0].value));
    EXPECT_EQ(3u, plan.puts().size());
    EXPECT_EQ(std::vector<std::string>{"Old=1"}, plan.removes());

    plan.applyTo(&state);
    EXPECT_EQ(nullptr, state.find("Old=1"));
    EXPECT_EQ(4u, state.find("Rel=1")->seq);  // new objects come after every committed one
    ASSERT_NE(nullptr, state.referrersOf("F=1"));
    EXPECT_EQ(1u, state.referrersOf("F=1")->count("Rel=1"));
}

// A replacement of an object that was there reports what it changed, and nothing when it
// changed nothing.
TEST(CommitPlanTest, AnInsertOverAnExistingObjectIsAnUpdateOfItsDifferencesAndKeepsItsPlace) {
    CommittedState state;
    state.put(make("A=1", {stored("v", 5), stored("x", 1)}, 1));
    state.put(make("A=2", {stored("v", 5)}, 2));
    Overlay overlay;
    overlay.replace(make("A=1", {stored("v", 5), stored("y", 2)}, 0));
    overlay.putAttribute("A=1", stored("w", 3), false);  // patched in place after the insert
    overlay.replace(make("A=2", {stored("v", 5)}, 0));
    CommitPlan plan(state, overlay);
    ASSERT_EQ(2u, plan.changes().size());
    EXPECT_EQ("23 A=1: w y x-", describe(plan.changes()[0]));
    EXPECT_EQ("23 A=2:", describe(plan.changes()[1]));
    plan.applyTo(&state);
    EXPECT_EQ(1u, state.find("A=1")->seq);
    EXPECT_EQ(nullptr, state.find("A=1")->attributes.find("x"));
}

TEST(CommitPlanTest, NothingToDoForObjectsInsertedAndDeletedInTheSameTransaction) {
    CommittedState state;
    Overlay overlay;
    overlay.replace(make("A=1", {}, 0));
    overlay.remove("A=1");
    CommitPlan plan(state, overlay);
    EXPECT_TRUE(plan.empty());
}

}  // namespace
}  // namespace db
}  // namespace vesk

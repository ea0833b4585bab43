// The writers' odd cases: the model's choice between single and list on object copies, list text
// details, struct lists that shrink over committed and over same-transaction data, zero-value
// writes and deletes, and struct members that fail.
#include <gtest/gtest.h>

#include "station/log/LogControl.h"
#include "transaction/IAttribute.h"
#include "transaction/StructFactory.h"
#include "transaction/VeskDBTransactionHelper.h"
#include "unit/writers/WriterSupport.h"

namespace writer_test {
namespace {

using TibVeskCM::IAttribute;
using TibVeskCM::VeskDBTransactionHelper;
using vesk::log::LogCapture;

const std::string kJob = "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=1,EventJob=1";

std::string show(Attribute* a) {
    if (a == nullptr)
        return "absent";
    return std::to_string(a->type) + ":" + a->ToStr() + (a->deleted ? " deleted" : "") +
           (a->modified ? " modified" : "");
}

Struct range(int start, int size) {
    return {{"startPci", {3, {double(start)}}}, {"pciRange", {3, {double(size)}}}};
}

std::vector<Struct> ranges(int count) {
    std::vector<Struct> items;
    for (int i = 1; i <= count; ++i)
        items.push_back(range(i * 10, i));
    return items;
}

class WriterCasesTest : public WriterFixture {
  protected:
    std::string item(int i) {
        return kRel + ",EUtranFreqRelation=1:blackListEntry=" + std::to_string(i);
    }
    int writeRanges(int count) {
        HostValue value(ranges(count));
        return _tx->handleStructListAttribute(kRel, "blackListEntry", value.get(), "");
    }
};

TEST_F(WriterCasesTest, ObjectCopiesFollowTheModelForListOrSingle) {
    auto* helper = VeskDBTransactionHelper::instance();
    DBObject job("EventJob=1", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                 "ManagedElement=1,SystemFunctions=1,PmEventM=1,"
                 "EventProducer=1",
                 1);
    HostValue refs(Value{9, {}, {"x", "y"}});
    helper->updateObject("eventTypeRef", refs.get(), &job);
    EXPECT_EQ(show(job.getAttribute("eventTypeRef")), "27:x,y modified");
    HostValue none(Value{9, {}, {}});
    helper->updateObject("eventTypeRef", none.get(), &job);
    EXPECT_EQ(show(job.getAttribute("eventTypeRef")), "27:x,y deleted modified");

    DBObject enb("ENodeBFunction=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                 IPCData::ADMSTATE_UNLOCKED, kMe, 1);
    HostValue label(Value{9, {}, {"x", "y"}});
    helper->updateObject("userLabel", label.get(), &enb);
    EXPECT_EQ(show(enb.getAttribute("userLabel")), "9:x modified");
    HostValue plmn(std::vector<Struct>{{{"mcc", {3, {1}}}}});
    helper->updateObject("eNodeBPlmnId", plmn.get(), &enb);
    EXPECT_EQ(show(enb.getAttribute("eNodeBPlmnId")), "14:ENodeBFunction=1:eNodeBPlmnId modified");

    DBObject rel("EUtranFreqRelation=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                 IPCData::ADMSTATE_UNLOCKED, kCell, 1);
    HostValue two(ranges(2));
    helper->updateObject("blackListEntry", two.get(), &rel);
    EXPECT_EQ(show(rel.getAttribute("blackListEntry")),
              "32:EUtranFreqRelation=1:blackListEntry=1;EUtranFreqRelation=1:blackListEntry=2 "
              "modified");
}

TEST_F(WriterCasesTest, ListTextDetails) {
    auto* helper = VeskDBTransactionHelper::instance();
    // Zero values change the type of an INT32 list and leave its text.
    Attribute list(false, "a", AttributeVariant(std::string("4,5")), 0, true, IPCData::AVT_UNKNOWN,
                   false, false);
    HostValue empty(Value{3, {}, {}});
    helper->setListAttribute("Thing=1", &list, empty.get());
    EXPECT_EQ(show(&list), "19:4,5 modified");

    // A first element without text leaves a leading separator in both encodings.
    HostValue strings(Value{9, {}, {"a", "b"}});
    free(strings.get()->values[0].theString);
    strings.get()->values[0].theString = nullptr;
    std::string dn = kMe + ",Thing=1";
    EXPECT_EQ(_tx->createListAttributeString(strings.get(), dn, "Thing=1", "a"), ";b");
    std::unique_ptr<Attribute> joined(
        IAttribute().createMultiValueAttribute(dn, "a", strings.get()));
    EXPECT_EQ(show(joined.get()), "27:,b modified");
    HostValue nothing(Value{11, {}, {"r"}});
    free(nothing.get()->values[0].moRef);
    nothing.get()->values[0].moRef = nullptr;
    std::unique_ptr<Attribute> blank(
        IAttribute().createMultiValueAttribute(dn, "a", nothing.get()));
    EXPECT_EQ(show(blank.get()), "31:  modified");

    // A struct has no list text of its own in this writer: type 0, int 0.
    HostValue structs(ranges(1));
    std::unique_ptr<Attribute> typeless(
        IAttribute().createMultiValueAttribute(dn, "a", structs.get()));
    EXPECT_EQ(show(typeless.get()), "0:0 modified");
    EXPECT_EQ(IAttribute().createSingleValueAttribute(dn, "a", structs.get()), nullptr);

    // The builder notes each reference of a list, after forgetting the old ones.
    HostValue refs(Value{11, {}, {kMe, kEnb}});
    _tx->createListAttributeString(refs.get(), dn, "Thing=1", "r");
    HostValue one(Value{11, {}, {kCell}});
    _tx->createListAttributeString(one.get(), dn, "Thing=1", "r");
    ASSERT_EQ(_tx->getRefList().size(), 1u);
    EXPECT_EQ(_tx->getRefList().front().reference, kCell);
}

TEST_F(WriterCasesTest, ShorterStructListDropsCommittedTailOnly) {
    ASSERT_EQ(writeRanges(5), 0);
    commitAndReopen();
    ASSERT_EQ(writeRanges(3), 0);
    EXPECT_FALSE(exists(item(4)));
    EXPECT_FALSE(exists(item(5)));
    commitAndReopen();
    EXPECT_TRUE(exists(item(3)));
    EXPECT_FALSE(exists(item(4)));
    EXPECT_FALSE(exists(item(5)));
    EXPECT_EQ(read(kRel, "blackListEntry"),
              "14:[{pciRange=3:[1] startPci=3:[10]},{pciRange=3:[2] startPci=3:[20]},"
              "{pciRange=3:[3] startPci=3:[30]}]");

    // Five then three in one transaction: the walk looks at committed data and keeps 4 and 5.
    ASSERT_EQ(writeRanges(5), 0);
    ASSERT_EQ(writeRanges(2), 0);
    commitAndReopen();
    EXPECT_TRUE(exists(item(4)));
    EXPECT_TRUE(exists(item(5)));
    EXPECT_EQ(stored(kRel, "blackListEntry"), "32:" + item(1) + ";" + item(2));
}

TEST_F(WriterCasesTest, PendingStructListDropsItsTailInTheTransaction) {
    auto* helper = VeskDBTransactionHelper::instance();
    HostValue four(ranges(4));
    HostValue two(ranges(2));
    LogCapture log;
    ASSERT_EQ(helper->handleStructList(kRel, "blackListEntry", four.get(), handle(), 2), 0);
    EXPECT_TRUE(exists(item(4)));
    ASSERT_EQ(helper->handleStructList(kRel, "blackListEntry", two.get(), handle(), 2), 0);
    EXPECT_FALSE(exists(item(3)));
    EXPECT_FALSE(exists(item(4)));
    EXPECT_EQ(stored(kRel, "blackListEntry", true), "32:" + item(1) + ";" + item(2));
    EXPECT_EQ(log.countContaining("] handleStructList: Creating attribute blackListEntry for "),
              1u);
    EXPECT_EQ(log.countContaining("] handleStructList: Trying to remove " + item(3)), 1u);
    // The items hang under their MO: its parent still holds one relation.
    EXPECT_EQ(IDatabase::getMOClassWithParent(kCell, "EUtranFreqRelation", handle()).size(), 1u);
    EXPECT_EQ(helper->handleStructList(kMe + ",Nothing=1", "x", two.get(), handle(), 2), 0);
}

TEST_F(WriterCasesTest, DeletedStructReturnsToItsDefault) {
    HostValue plmn(std::vector<Struct>{{{"mcc", {3, {240}}}, {"mnc", {3, {7}}}}});
    ASSERT_EQ(_tx->handleStructAttribute(kEnb, "eNodeBPlmnId", plmn.get(), false, nullptr, nullptr,
                                         "", ""),
              1);
    commitAndReopen();
    IAttribute attributes;
    EXPECT_EQ(attributes.deleteAttribute(kEnb, "eNodeBPlmnId", handle()), 1);
    EXPECT_EQ(read(kEnb, "eNodeBPlmnId"), "14:[{mcc=3:[1] mnc=3:[1] mncLength=3:[2]}]");
    // An MO that is not there: nothing to delete, the default is tried and fails quietly.
    EXPECT_EQ(attributes.deleteAttribute(kMe + ",ENodeBFunction=9", "eNodeBPlmnId", handle()), 1);
}

TEST_F(WriterCasesTest, ZeroValuesOnThePendingPath) {
    auto* helper = VeskDBTransactionHelper::instance();
    HostValue label(Value{9, {}, {"north"}});
    HostValue none(Value{9, {}, {}});
    DBObject enb("ENodeBFunction=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                 IPCData::ADMSTATE_UNLOCKED, kMe, 1);
    enb.addAttribute(*new Attribute(false, "userLabel", AttributeVariant(std::string("south")), 0,
                                    true, IPCData::AVT_STRING, true, false));
    ASSERT_NE(IDatabase::insert(&enb, handle()), 0);
    ASSERT_EQ(helper->setAlternateStorage(kEnb, "userLabel", handle(), label.get(), 2), 0);
    ASSERT_EQ(helper->setAlternateStorage(kEnb, "userLabel", handle(), none.get(), 2), 0);
    // A deletion waits for nothing: the stored value goes with the pending one.
    EXPECT_EQ(stored(kEnb, "userLabel", true), "absent");
    EXPECT_EQ(stored(kEnb, "userLabel"), "absent");
    EXPECT_EQ(read(kEnb, "userLabel"), "9:[]");

    // A pending struct emptied: its object goes and the default comes back, pending in the
    // restart slot.
    HostValue plmn(std::vector<Struct>{{{"mcc", {3, {240}}}}});
    LogCapture log;
    ASSERT_EQ(helper->setAlternateStorage(kEnb, "eNodeBPlmnId", handle(), plmn.get(), 2), 0);
    const std::string child = kEnb + ",ENodeBFunction=1:eNodeBPlmnId";
    EXPECT_EQ(log.countContaining(
                  "] handleStructAttribute: Creating new struct object with value " + child),
              1u);
    EXPECT_EQ(log.countContaining("] setAlternateStorage: attribute not found, create : mcc"), 1u);
    EXPECT_EQ(stored(kEnb, "eNodeBPlmnId", true), "14:" + child);
    EXPECT_EQ(stored(child, "mcc", true), "3:240");
    HostValue emptied(std::vector<Struct>{{}});
    ASSERT_EQ(helper->setAlternateStorage(kEnb, "eNodeBPlmnId", handle(), emptied.get(), 2), 0);
    EXPECT_EQ(stored(child, "mcc", true), "3:1");
    EXPECT_EQ(stored(child, "mncLength", true), "3:2");
}

TEST_F(WriterCasesTest, StructKeepsTheMembersThatCouldBeWritten) {
    HostValue plmn(
        std::vector<Struct>{{{"mcc", {3, {240}}}, {"mnc", {3, {}}}, {"mncLength", {16, {2.5}}}}});
    // A member whose value is a struct cannot be written as a single value.
    Container* bad = static_cast<Container*>(calloc(1, sizeof(Container)));
    bad->type = OrlOamSpiMoAttributeType_3_STRUCT;
    bad->nrOfValues = 1;
    bad->values = static_cast<OrlMoAttributeValue_3*>(calloc(1, sizeof(OrlMoAttributeValue_3)));
    auto* last = plmn.get()->values[0].structMember->nextMember->nextMember;
    last->nextMember = VeskOrlHelper::newOrlMoAttributeValueStructMember("nested", bad);
    LogCapture log;
    ASSERT_EQ(_tx->handleStructAttribute(kEnb, "eNodeBPlmnId", plmn.get(), false, nullptr, nullptr,
                                         "", ""),
              1);
    EXPECT_EQ(read(kEnb, "eNodeBPlmnId"), "14:[{mcc=3:[240] mncLength=16:[2.5]}]");
    EXPECT_EQ(log.count("Failed to add member mnc", VESK_LOG_WARNING), 1u);
    EXPECT_EQ(log.count("Unknown value type 14 for nested", VESK_LOG_WARNING), 1u);
    EXPECT_EQ(log.count("Failed to create attribute: nested", VESK_LOG_ERROR), 1u);
    EXPECT_EQ(log.count("Failed to add member nested", VESK_LOG_WARNING), 1u);

    // A struct value with no members still makes its object; the attribute names it.
    HostValue bare(std::vector<Struct>{{}});
    ASSERT_EQ(_tx->handleStructAttribute(kRel, "x", bare.get(), false, nullptr, nullptr, "", ""),
              1);
    EXPECT_TRUE(exists(kRel + ",EUtranFreqRelation=1:x"));
    // No MO, nothing written.
    EXPECT_EQ(_tx->handleStructAttribute(kMe + ",Nothing=1", "x", bare.get(), false, nullptr,
                                         nullptr, "", ""),
              0);
}

}  // namespace
}  // namespace writer_test

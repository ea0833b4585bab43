// Every attribute type and list type, written by each writer family, stored in the station
// database and read back through the transaction's conversion, and struct values of several
// members written by the struct writers and read back through getMoAttribute.
#include <gtest/gtest.h>

#include "transaction/IAttribute.h"
#include "transaction/VeskDBTransactionHelper.h"
#include "unit/writers/WriterSupport.h"

namespace writer_test {
namespace {

using TibVeskCM::IAttribute;
using TibVeskCM::VeskDBTransactionHelper;

const char* const kThing = "ManagedElement=1,Thing=1";

// One host value; what each family stores and what the reader gives back, as
// "storedType:storedText -> read". `builder` is the transaction's builders, `writer` IAttribute
// and the object-copy writers (null: the same as `builder`).
struct Row {
    const char* name;
    bool list;
    Value value;
    const char* builder;
    const char* writer = nullptr;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

enum Family { kBuilder, kFactory, kObjectCopy };

class RoundTripTest : public WriterFixture, public ::testing::WithParamInterface<Row> {
  protected:
    // The attribute `a` made by `family` from `value`; null when the family makes none.
    Attribute* build(Family family, Container* value, bool list) {
        std::string dn = kThing;
        switch (family) {
            case kBuilder:
                if (!list)
                    return _tx->updateNewAttribute(dn, "a", *value, true);
                return _tx->updateNewListAttribute(
                    "a", _tx->createListAttributeString(value, dn, "Thing=1", "a"), value->type,
                    true);
            case kFactory:
                return list ? IAttribute().createMultiValueAttribute(dn, "a", value)
                            : IAttribute().createSingleValueAttribute(dn, "a", value);
            case kObjectCopy: {
                auto* a = new Attribute(false, "a", AttributeVariant(0), 0, true,
                                        IPCData::AVT_UNKNOWN, true, false);
                if (list)
                    VeskDBTransactionHelper::instance()->setListAttribute("Thing=1", a, value);
                else
                    VeskDBTransactionHelper::instance()->setSingleAttribute("Thing=1", a, value);
                return a;
            }
        }
        return nullptr;
    }
    // Stores the attribute in Thing=1 in the transaction and reads it back through the
    // conversion into a container of the host type.
    std::string storeAndRead(Attribute* attribute, int hostType) {
        DBObject thing("Thing=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                       IPCData::ADMSTATE_UNLOCKED, kMe, 1);
        thing.addAttribute(*attribute);
        EXPECT_NE(IDatabase::insert(&thing, handle()), 0);
        std::unique_ptr<DBObject> copy(IDatabase::getObject(kThing, 1, handle()));
        if (!copy || copy->getAttribute("a") == nullptr)
            return "not stored";
        Attribute* a = copy->getAttribute("a");
        Container c{hostType, 0, nullptr};
        EXPECT_EQ(_tx->setAttrResult_2(kThing, a, &c), 0);
        std::string text = std::to_string(a->type) + ":" + a->ToStr() + " -> " + render(&c);
        VeskOrlHelper::freeAttrValueContainer(&c);
        return text;
    }
};

TEST_P(RoundTripTest, EachFamilyStoresWhatTheReaderGivesBack) {
    const Row& row = GetParam();
    HostValue value(row.value);
    const char* writer = row.writer != nullptr ? row.writer : row.builder;
    const char* expected[] = {row.builder, writer, writer};
    const char* names[] = {"builder", "factory", "object copy"};
    for (Family family : {kBuilder, kFactory, kObjectCopy}) {
        Attribute* attribute = build(family, value.get(), row.list);
        ASSERT_NE(attribute, nullptr) << names[family];
        EXPECT_EQ(storeAndRead(attribute, row.value.type), expected[family]) << names[family];
    }
}

const double k2p32 = 4294967296.0;

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    AllTypes, RoundTripTest,
    ::testing::Values(
        // An INT8 built by the transaction sits in the int alternative and is not readable as
        // it stands; the other families use the char alternative.
        Row{"Int8", false, {1, {-5}}, "1:-5 -> 1:[]", "1:-5 -> 1:[-5]"},
        Row{"Int16", false, {2, {-300}}, "2:-300 -> 2:[-300]"},
        Row{"Int32", false, {3, {-70000}}, "3:-70000 -> 3:[-70000]"},
        Row{"Int64", false, {4, {-5e10}}, "4:-50000000000 -> 4:[-50000000000]"},
        Row{"Uint8", false, {5, {200}}, "5:200 -> 5:[200]"},
        Row{"Uint16", false, {6, {60000}}, "6:60000 -> 6:[60000]"},
        Row{"Uint32", false, {7, {4e9}}, "7:4000000000 -> 7:[4000000000]"},
        Row{"Uint64", false, {8, {1e19}}, "8:10000000000000000000 -> 8:[10000000000000000000]"},
        Row{"String", false, {9, {}, {"abc"}}, "9:abc -> 9:[\"abc\"]"},
        Row{"Bool", false, {10, {1}}, "10:1 -> 10:[true]"},
        Row{"Reference", false, {11, {}, {"ManagedElement=1"}},
            "11:ManagedElement=1 -> 11:[\"ManagedElement=1\"]"},
        Row{"Enum", false, {12, {-3}}, "12:-3 -> 12:[-3]"},
        Row{"Decimal64", false, {16, {2.5}}, "16:2.5 -> 16:[2.5]"},
        // Lists. Types without a reader read as empty; the stored text is what counts there.
        Row{"Int8List", true, {1, {1, -2, 3}}, "20:1;-2;3 -> 1:[]", "20:1,-2,3 -> 1:[]"},
        Row{"Int16List", true, {2, {-300, 4}}, "21:-300,4 -> 2:[]"},
        Row{"Int32List", true, {3, {5, -6}}, "19:5,-6 -> 3:[5,-6]"},
        Row{"Int64ListKeepsLow32Bits", true, {4, {k2p32, -7}}, "22:0,-7 -> 4:[]"},
        Row{"Uint8List", true, {5, {200, 1}}, "23:200,1 -> 5:[]"},
        Row{"Uint16ListOfOne", true, {6, {60000}}, "24:60000 -> 6:[]"},
        Row{"Uint32List", true, {7, {7, 4e9}}, "25:7,4000000000 -> 7:[7,4000000000]"},
        Row{"Uint64ListKeepsLow32Bits", true, {8, {k2p32 + 5, 9}}, "26:5,9 -> 8:[]"},
        // The object-copy encoding joins strings with "," and the reader sees one value.
        Row{"StringList", true, {9, {}, {"a", "b"}}, "27:a;b -> 9:[\"a\",\"b\"]",
            "27:a,b -> 9:[\"a,b\"]"},
        Row{"BoolList", true, {10, {1, 0, 1}}, "28:1,0,1 -> 10:[true,false,true]"},
        Row{"ReferenceList", true, {11, {}, {"ManagedElement=1", kEnb}},
            "31:ManagedElement=1;ManagedElement=1,ENodeBFunction=1 -> "
            "11:[\"ManagedElement=1\",\"ManagedElement=1,ENodeBFunction=1\"]"},
        Row{"EnumList", true, {12, {3, -1}}, "18:3,-1 -> 12:[3,-1]"},
        Row{"Decimal64ListIsTruncated", true, {16, {1.5, 2.5}}, "29:1,2 -> 16:[]"}),
    [](const ::testing::TestParamInfo<Row>& info) { return std::string(info.param.name); });
// clang-format on

// Struct values of several members and struct lists, through the transaction's gates (stored
// values) and through the pending path (values in an alternate slot), read with getMoAttribute.
class StructRoundTripTest : public WriterFixture {};

const Struct kPlmn = {{"mcc", {3, {240}}}, {"mnc", {3, {7}}}, {"mncLength", {3, {3}}}};
const std::vector<Struct> kRanges = {{{"startPci", {3, {10}}}, {"pciRange", {3, {3}}}},
                                     {{"startPci", {3, {20}}}, {"pciRange", {3, {1}}}},
                                     {{"startPci", {3, {30}}}, {"pciRange", {3, {5}}}}};
const char* const kPlmnRead = "14:[{mcc=3:[240] mnc=3:[7] mncLength=3:[3]}]";
const char* const kRangesRead =
    "14:[{pciRange=3:[3] startPci=3:[10]},{pciRange=3:[1] startPci=3:[20]},"
    "{pciRange=3:[5] startPci=3:[30]}]";

TEST_F(StructRoundTripTest, StoredStructsReadBackWithAllMembers) {
    HostValue plmn(std::vector<Struct>{kPlmn});
    HostValue ranges(kRanges);
    EXPECT_EQ(_tx->handleStructAttribute(kEnb, "eNodeBPlmnId", plmn.get(), false, nullptr, nullptr,
                                         "", ""),
              1);
    EXPECT_EQ(_tx->handleStructListAttribute(kRel, "blackListEntry", ranges.get(), ""), 0);
    EXPECT_EQ(read(kEnb, "eNodeBPlmnId"), kPlmnRead);
    EXPECT_EQ(read(kRel, "blackListEntry"), kRangesRead);
    EXPECT_EQ(stored(kEnb, "eNodeBPlmnId"), "14:" + kEnb + ",ENodeBFunction=1:eNodeBPlmnId");
    const std::string item = kRel + ",EUtranFreqRelation=1:blackListEntry=";
    EXPECT_EQ(stored(kRel, "blackListEntry"), "32:" + item + "1;" + item + "2;" + item + "3");
    EXPECT_EQ(stored(item + "2", "startPci"), "3:20");
    commitAndReopen();
    EXPECT_EQ(read(kEnb, "eNodeBPlmnId"), kPlmnRead);
    EXPECT_EQ(read(kRel, "blackListEntry"), kRangesRead);
}

TEST_F(StructRoundTripTest, PendingStructsReadBackOverTheStoredOnes) {
    HostValue before(
        std::vector<Struct>{{{"mcc", {3, {1}}}, {"mnc", {3, {1}}}, {"mncLength", {3, {2}}}}});
    ASSERT_EQ(_tx->handleStructAttribute(kEnb, "eNodeBPlmnId", before.get(), false, nullptr,
                                         nullptr, "", ""),
              1);
    commitAndReopen();
    auto* helper = VeskDBTransactionHelper::instance();
    HostValue plmn(std::vector<Struct>{kPlmn});
    HostValue ranges(kRanges);
    EXPECT_EQ(helper->setAlternateStorage(kEnb, "eNodeBPlmnId", handle(), plmn.get(), 2), 0);
    EXPECT_EQ(helper->setAlternateStorage(kRel, "blackListEntry", handle(), ranges.get(), 2), 0);
    EXPECT_EQ(read(kEnb, "eNodeBPlmnId"), kPlmnRead);
    EXPECT_EQ(read(kRel, "blackListEntry"), kRangesRead);
    // The stored members stay beside the pending ones.
    const std::string child = kEnb + ",ENodeBFunction=1:eNodeBPlmnId";
    EXPECT_EQ(stored(child, "mcc"), "3:1");
    EXPECT_EQ(stored(child, "mcc", true), "3:240");
    commitAndReopen();
    EXPECT_EQ(read(kRel, "blackListEntry"), kRangesRead);
}

// The pending path for plain attributes: a single and a list, chosen by the model.
TEST_F(StructRoundTripTest, PendingPlainValuesWinOverStoredOnes) {
    auto* helper = VeskDBTransactionHelper::instance();
    HostValue label(Value{9, {}, {"north"}});
    HostValue older(Value{9, {}, {"south"}});
    DBObject enb("ENodeBFunction=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                 IPCData::ADMSTATE_UNLOCKED, kMe, 1);
    enb.addAttribute(*new Attribute(false, "userLabel", AttributeVariant(std::string("south")), 0,
                                    true, IPCData::AVT_STRING, true, false));
    ASSERT_NE(IDatabase::insert(&enb, handle()), 0);
    EXPECT_EQ(helper->setAlternateStorage(kEnb, "userLabel", handle(), label.get(), 3), 0);
    EXPECT_EQ(read(kEnb, "userLabel"), "9:[\"north\"]");
    EXPECT_EQ(stored(kEnb, "userLabel"), "9:south");
    EXPECT_EQ(stored(kEnb, "userLabel", true), "9:north");
    EXPECT_EQ(helper->setAlternateStorage(kMe + ",NoSuch=1", "userLabel", handle(), older.get(), 3),
              -1);
}

}  // namespace
}  // namespace writer_test

// Reads of VeskDBTransaction against a real station database: every conversion row, the view of
// the transaction, struct values and iterators.
#include <gtest/gtest.h>

#include <string>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "unit/transaction/TransactionTestSupport.h"

namespace {

using TibVeskCM::VeskDBTransaction;
using vesk::log::LogCapture;
using vesk::txtest::attr;
using vesk::txtest::render;

const char* const kParent = "ManagedElement=1";
const char* const kMo = "ManagedElement=1,Thing=1";

class TransactionReadTest : public vesk::txtest::TransactionTest {
  protected:
    // getMoAttribute of `dn`, rendered as `as`; `rc` gets the return code.
    std::string read(const std::string& dn, const std::string& name, int as, int* rc = nullptr) {
        OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
        int code = _tx->getMoAttribute(dn, name, &result);
        if (rc)
            *rc = code;
        std::string text = render(result.container, as);
        result.release(result.container);
        return text;
    }
};

struct Row {
    const char* name;
    int type;
    AttributeVariant value;
    int as;
    const char* expected;
    int rc;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class ConversionTest : public TransactionReadTest, public ::testing::WithParamInterface<Row> {};

TEST_P(ConversionTest, StoredValueReadsAsTheHostSeesIt) {
    const Row& row = GetParam();
    put("Thing=1", kParent, {attr("a", row.value, row.type)});
    LogCapture log;
    int rc = 0;
    EXPECT_EQ(read(kMo, "a", row.as, &rc), row.expected);
    EXPECT_EQ(rc, row.rc);
    if (row.rc != 0) {
        EXPECT_EQ(log.count("VeskDBTransaction::setAttrResult_2(): Boost Bad Get! Check casting of "
                            "fetched attributes.",
                            VESK_LOG_ERROR),
                  1u);
    }
}

// Without a model a single container keeps the unknown type -2, except strings and references.
INSTANTIATE_TEST_SUITE_P(
    Rows, ConversionTest,
    ::testing::Values(
        Row{"Int8", 1, char(-5), 1, "-2:[-5]", 0}, Row{"Int16", 2, short(-300), 2, "-2:[-300]", 0},
        Row{"Int32", 3, int(-70000), 3, "-2:[-70000]", 0},
        Row{"Int64", 4, -50000000000LL, 4, "-2:[-50000000000]", 0},
        Row{"Uint8", 5, (unsigned char)200, 5, "-2:[200]", 0},
        Row{"Uint16", 6, (unsigned short)60000, 6, "-2:[60000]", 0},
        Row{"Uint32", 7, 4000000000u, 7, "-2:[4000000000]", 0},
        Row{"Uint64", 8, 18000000000000000000ULL, 8, "-2:[18000000000000000000]", 0},
        Row{"String", 9, std::string("abc"), 9, "9:[\"abc\"]", 0},
        Row{"EmptyStringIsOneEmptyValue", 9, std::string(""), 9, "9:[\"\"]", 0},
        Row{"Bool", 10, true, 10, "-2:[true]", 0},
        Row{"Reference", 11, std::string("ManagedElement=1"), 11, "11:[\"ManagedElement=1\"]", 0},
        Row{"EmptyReferenceHasNoValue", 11, std::string(""), 11, "-2:[]", 0},
        Row{"EnumIsSignExtended", 12, int(-3), 4, "-2:[-3]", 0},
        Row{"Decimal64", 16, 2.5, 16, "-2:[2.5]", 0},
        Row{"FloatIsABadGet", 17, 1.5f, 16, "-2:[]", -1},
        Row{"EnumList", 18, std::string("1,-2,3"), 12, "12:[1,-2,3]", 0},
        Row{"Int32List", 19, std::string("5,-6"), 3, "3:[5,-6]", 0},
        Row{"Uint32List", 25, std::string("7,4000000000"), 7, "7:[7,4000000000]", 0},
        Row{"StringList", 27, std::string("a;b;c"), 9, "9:[\"a\",\"b\",\"c\"]", 0},
        Row{"StringListWithCommaIsOneValue", 27, std::string("a,b"), 9, "9:[\"a,b\"]", 0},
        Row{"EmptyStringList", 27, std::string(""), 9, "9:[]", 0},
        Row{"BoolList", 28, std::string("1,0"), 10, "10:[true,false]", 0},
        Row{"ReferenceList", 31, std::string("A=1;B=2"), 11, "11:[\"A=1\",\"B=2\"]", 0},
        Row{"Int8ListHasNoReader", 20, std::string("1,2"), 1, "-2:[]", 0},
        Row{"Uint64ListHasNoReader", 26, std::string("1,2"), 8, "-2:[]", 0},
        Row{"Decimal64ListHasNoReader", 29, std::string("1.5"), 16, "-2:[]", 0},
        Row{"BadEnumListHasNoValue", 18, std::string("1,x"), 12, "12:[]", 0}),
    [](const ::testing::TestParamInfo<Row>& info) { return std::string(info.param.name); });

TEST_F(TransactionReadTest, UnreadableAttributesGiveNothing) {
    LogCapture log;
    OrlMoAttributeValueContainer_3 container = {-2, 0, nullptr};
    Attribute unknown(false, "u", AttributeVariant(1), 0, true, IPCData::AVT_UNKNOWN, true, false);
    EXPECT_EQ(_tx->setAttrResult_2(kMo, &unknown, &container), 0);
    EXPECT_EQ(log.count("VeskDBTransaction::setAttrResult_2(): AttributeValueType is unknown",
                        VESK_LOG_WARNING),
              1u);
    Attribute mismatch(false, "m", AttributeVariant(std::string("7")), 0, true, IPCData::AVT_INT32,
                       true, false);
    EXPECT_EQ(_tx->setAttrResult_2(kMo, &mismatch, &container), 0);
    EXPECT_EQ(container.nrOfValues, 0u);

    // A bool list element other than 0 or 1 keeps its slot but no defined value.
    put("Thing=1", kParent, {attr("b", std::string("0,7,1"), 28)});
    OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
    EXPECT_EQ(_tx->getMoAttribute(kMo, "b", &result), 0);
    ASSERT_EQ(result.container->nrOfValues, 3u);
    EXPECT_FALSE(result.container->values[0].theBool);
    EXPECT_TRUE(result.container->values[2].theBool);
    result.release(result.container);
}

TEST_F(TransactionReadTest, CertificateKeyShowsItsBareId) {
    const std::string cert = "ManagedElement=1,CertM=1,TrustedCertificate=1";
    put("CertM=1", kParent, {}, true);
    put("TrustedCertificate=1", "ManagedElement=1,CertM=1",
        {attr("trustedCertificateId", std::string("TrustedCertificate=1"), 9),
         attr("other", std::string("x=2"), 9)});
    put("Thing=1", kParent, {attr("thingId", std::string("Thing=1"), 9)});
    EXPECT_EQ(read(cert, "trustedCertificateId", 9), "9:[\"1\"]");
    EXPECT_EQ(read(cert, "other", 9), "9:[\"x=2\"]");
    EXPECT_EQ(read(kMo, "thingId", 9), "9:[\"Thing=1\"]");
}

TEST_F(TransactionReadTest, ReadsSeeTheTransactionsOwnChangesOnly) {
    put("Thing=1", kParent, {attr("kept", 1, 3), attr("gone", 2, 3)}, true);
    put("Thing=2", kParent, {attr("n", 5, 3)});
    ASSERT_NE(IDatabase::setAttribute(kMo, 1, "kept", AttributeVariant(9), false,
                                      IPCData::AVT_INT32, true, handle()),
              0);
    ASSERT_NE(IDatabase::deleteAttribute("gone", kMo, "", handle()), 0);

    EXPECT_EQ(read(kMo, "kept", 3), "-2:[9]");
    EXPECT_EQ(read(kMo, "gone", 3), "-2:[]");
    EXPECT_EQ(read("ManagedElement=1,Thing=2", "n", 3), "-2:[5]");

    VeskDBTransaction other(8, _portal);  // no database handle: committed data
    OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
    other.getMoAttribute(kMo, "kept", &result);
    EXPECT_EQ(render(result.container, 3), "-2:[1]");
    result.release(result.container);
    bool exists = true;
    other.existsMo("ManagedElement=1,Thing=2", &exists);
    EXPECT_FALSE(exists);
    EXPECT_EQ(VeskDBTransaction::getVeskDBTransaction(), &other);

    // Deleted in the transaction: still there for existsMo, nothing to read.
    ASSERT_NE(IDatabase::deleteObj(kMo, 1, handle()), 0);
    _tx->existsMo(kMo, &exists);
    EXPECT_TRUE(exists);
    LogCapture log;
    EXPECT_EQ(read(kMo, "kept", 3), "-2:[]");
    EXPECT_EQ(read(kMo, "missing", 3), "-2:[]");  // no object: no attribute line either
    EXPECT_EQ(log.countContaining("was not found from object"), 0u);
}

TEST_F(TransactionReadTest, PendingValueWinsAndHiddenOrMissingGiveNothing) {
    DBObject thing("Thing=1", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                   kParent, 1);
    thing.addAttribute(*attr("p", 1, 3));
    thing.addAlternateAttribute(*attr("p", 2, 3));
    thing.addAttribute(
        *new Attribute(true, "h", AttributeVariant(4), 0, true, IPCData::AVT_INT32, true, false));
    ASSERT_NE(IDatabase::insert(&thing, handle()), 0);
    LogCapture log;
    EXPECT_EQ(read(kMo, "p", 3), "-2:[2]");
    EXPECT_EQ(read(kMo, "h", 3), "-2:[]");
    EXPECT_EQ(read(kMo, "none", 3), "-2:[]");
    EXPECT_EQ(log.countContaining(
                  "Attribute 'h' has been deleted in same transaction or hidden attribute"),
              1u);
    EXPECT_EQ(log.countContaining("Attribute none was not found from object " + std::string(kMo)),
              1u);

    OrlMoAttributeValuesResult_3 results = {nullptr, nullptr};
    EXPECT_EQ(_tx->getMoAttributes(kMo, {"none", "p", "h"}, &results), 0);
    EXPECT_EQ(render(results.containers[0], 3), "-2:[]");
    EXPECT_EQ(render(results.containers[1], 3), "-2:[2]");
    EXPECT_EQ(render(results.containers[2], 3), "-2:[]");
    EXPECT_EQ(results.containers[3], nullptr);
    results.release(results.containers);
}

TEST_F(TransactionReadTest, StructsReadTheirVisibleMembersWithPendingValues) {
    const std::string s = std::string(kMo) + ",Thing=1:s";
    put("Thing=1", kParent,
        {attr("s", s, 14), attr("rel", std::string("Thing=1:s"), 14),
         attr("l", std::string("Thing=1:l=1;Thing=1:l=2;Thing=1:l=3"), 32),
         attr("empty", std::string(kMo) + ",Thing=1:e", 14)});
    put("Thing=1:s", kMo, {attr("x", 1, 3), attr("y", std::string("b"), 9)});
    DBObject entry1("Thing=1:l=1", 1, false, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED, kMo, 1);
    entry1.addAttribute(*attr("x", 1, 3));
    entry1.addAlternateAttribute(*attr("x", 5, 3));
    entry1.addAlternateAttribute(*attr("z", 6, 3));
    ASSERT_NE(IDatabase::insert(&entry1, handle()), 0);
    put("Thing=1:l=3", kMo, {attr("x", 3, 3)});
    put("Thing=1:e", kMo,
        {new Attribute(true, "x", AttributeVariant(1), 0, true, IPCData::AVT_INT32, true, false)});

    EXPECT_EQ(read(kMo, "s", 14), "14:[{x=3:[1] y=9:[\"b\"]}]");
    EXPECT_EQ(read(kMo, "rel", 14), "14:[{x=3:[1] y=9:[\"b\"]}]");
    // Entry 2 is missing and left out; entry 1 shows its pending member and the one only pending.
    EXPECT_EQ(read(kMo, "l", 14), "14:[{x=3:[5] z=3:[6]},{x=3:[3]}]");
    LogCapture log;
    EXPECT_EQ(read(kMo, "empty", 14), "14:[]");
    EXPECT_EQ(log.count("VeskDBTransaction::getStructAttribute(): No visible members found for "
                        "attribute '" +
                            std::string(kMo) + ",Thing=1:e' from db.",
                        VESK_LOG_WARNING),
              1u);
    OrlMoAttributeValueContainer_3 container = {-2, 0, nullptr};
    EXPECT_EQ(_tx->getStructListAttribute(kMo, "", 14, &container), -2);
}

TEST_F(TransactionReadTest, AFailingMemberIsLeftOutAndTheLastConversionDecides) {
    put("Thing=1", kParent,
        {attr("s", std::string("Thing=1:s"), 14), attr("l", std::string("Thing=1:l=1"), 32)});
    for (const char* key : {"Thing=1:s", "Thing=1:l=1"})
        put(key, kMo, {attr("a", 1, 3), attr("z", 1.5f, 17)});  // a float cannot be read
    LogCapture log;
    int rc = 0;
    EXPECT_EQ(read(kMo, "s", 14, &rc), "14:[{a=3:[1]}]");
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(read(kMo, "l", 14, &rc), "14:[{a=3:[1]}]");
    EXPECT_EQ(rc, 0);
    for (const char* reader : {"getStructAttribute", "getStructListAttribute"}) {
        EXPECT_EQ(log.count("VeskDBTransaction::" + std::string(reader) +
                                "(): Cannot determine the value of struct attribute: z",
                            VESK_LOG_WARNING),
                  1u)
            << reader;
    }
}

TEST_F(TransactionReadTest, IteratorsWalkIdsInOrderAndInterleave) {
    put("Cell=1", kParent, {}, true);
    put("Cell=2", kParent, {});
    put("Unit=a", kParent, {});
    unsigned long long count = 0;
    _tx->countMoChildren(kParent, "Cell", &count);
    EXPECT_EQ(count, 2u);
    LogCapture root;
    _tx->countMoChildren("", "ManagedElement", &count);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(root.countContaining("] VeskDBTransaction::countMoChildren(): getMOClass empty dn"),
              1u);

    unsigned long long cells = 0, units = 0, none = 7;
    _tx->newIterator(kParent, "Cell", &cells);
    _tx->newIterator(kParent, "Unit", &units);
    LogCapture log;
    _tx->newIterator(kParent, "Absent", &none);
    EXPECT_EQ(none, 0u);
    EXPECT_EQ(log.countContaining("Unable to find class Absent."), 1u);
    EXPECT_NE(cells, 0u);
    EXPECT_NE(cells, units);

    char* id = nullptr;
    _tx->next(cells, &id);
    EXPECT_STREQ(id, "1");
    _tx->next(units, &id);
    EXPECT_STREQ(id, "a");
    char* second = nullptr;
    _tx->next(cells, &second);
    EXPECT_STREQ(second, "2");
    EXPECT_STREQ(id, "a");  // texts handed out stay valid
    _tx->next(cells, &id);
    EXPECT_EQ(id, nullptr);
    // Handle 0 finds the texts parked by the walks.
    _tx->next(0, &id);
    EXPECT_NE(id, nullptr);
}

}  // namespace

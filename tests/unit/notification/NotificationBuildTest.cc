// From a database change event to what consumers receive: one table over the kinds of event and
// the flags and types of attributes, and one over filters.
#include "platform/OrlController.h"
#include "station/framework/FrameworkControl.h"
#include "station/log/LogControl.h"
#include "unit/notification/ProducerFixture.h"

namespace vesk {
namespace notificationtest {
namespace {

using dbtest::attr;
using Lines = std::vector<std::string>;

const std::string kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const std::string kSeenCell = "ManagedElement=AB,ENodeBFunction=1,EUtranCellFDD=1";
const auto kStr = IPCData::AVT_STRING;
const auto kInt = IPCData::AVT_INT32;

struct Row {
    const char* name;
    IPCData::EOperations operation;
    std::string dn;
    std::vector<Change> changes;
    Lines expected;
    std::string renamedTo = "";  // networkManagedElementId written before the event, when set
    int status = OrlController::TIB_RUNNING;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class NotificationBuildTest : public ProducerFixture, public ::testing::WithParamInterface<Row> {
  protected:
    void SetUp() override {
        ProducerFixture::SetUp();
        dbtest::put("ManagedElement=1", "", {attr("networkManagedElementId", std::string("AB"))});
        dbtest::put("ENodeBFunction=1", "ManagedElement=1");
        dbtest::putDn(kCell, {attr("userLabel", std::string("x"))});
        // A struct value: one member hidden, one pending, one only pending.
        Attribute* hidden = new Attribute(true, "secret", std::string("s"), 0, true, kStr, 1, 0);
        dbtest::putDn(kCell + ":mi", {attr("a", 1, kInt), attr("b", std::string("old")), hidden}, 0,
                      {attr("b", std::string("new")), attr("c", 3, kInt)});
        _producer->initMeNbiName();
        consume({});
    }
};

TEST_P(NotificationBuildTest, ConsumersGetWhatTheRowSays) {
    const Row& row = GetParam();
    if (!row.renamedTo.empty()) {
        ASSERT_NE(IDatabase::setAttribute("ManagedElement=1", 1, "networkManagedElementId",
                                          row.renamedTo, false, kStr, false, 0),
                  0);
    }
    station::setHostStatus(row.status);
    deliver(event(row.operation, row.dn, row.changes));
    station::setHostStatus(OrlController::TIB_RUNNING);
    EXPECT_EQ(seen(), row.expected);
    EXPECT_EQ(held(), 0u);
}

// clang-format off
const Row kRows[] = {
    {"InsertCarriesItsVisibleAttributes", IPCData::OP_INSERT, kCell,
     {change("cellId", 5, kInt), change("key", std::string("k"), kStr, "h"),
      change("userLabel", std::string("x"), kStr)},
     {"1 1 " + kSeenCell + " cellId=5 userLabel=\"x\""}},
    {"InsertOfHiddenOnlyGivesNothing", IPCData::OP_INSERT, kCell,
     {change("key", std::string("k"), kStr, "h")}, {}},
    {"InsertWithLocalDateTimeGivesNothing", IPCData::OP_INSERT, "ManagedElement=1",
     {change("userLabel", std::string("me"), kStr), change("localDateTime", std::string("t"), kStr)},
     {}},
    {"DeleteCarriesNoAttributes", IPCData::OP_DELETE, kCell,
     {change("userLabel", std::string("x"), kStr, "d"), change("key", std::string("k"), kStr, "hd")},
     {"1 2 " + kSeenCell}},
    {"DeleteWithoutAttributes", IPCData::OP_DELETE, kCell, {}, {"1 2 " + kSeenCell}},
    {"UpdateIsOneNotificationPerAttribute", IPCData::OP_UPDATE, kCell,
     {change("cellId", 7, kInt), change("userLabel", std::string("y"), kStr),
      change("tac", 9, kInt)},
     {"1 3 " + kSeenCell + " cellId=7", "2 3 " + kSeenCell + " userLabel=\"y\"",
      "3 3 " + kSeenCell + " tac=9"}},
    // The suppressed notification still took its counter value.
    {"UpdateSkipsLocalDateTimeOnly", IPCData::OP_UPDATE, "ManagedElement=1",
     {change("localDateTime", std::string("t"), kStr), change("userLabel", std::string("y"), kStr)},
     {"2 3 ManagedElement=AB userLabel=\"y\""}},
    {"RemovedValueHasNoValues", IPCData::OP_UPDATE, kCell,
     {change("userLabel", std::string(""), kStr, "d")}, {"1 3 " + kSeenCell + " userLabel=-"}},
    {"ReferenceIsRenamedToo", IPCData::OP_UPDATE, "ManagedElement=1,X=1",
     {change("ref", std::string("ManagedElement=1,Foo=1"), IPCData::AVT_REFERENCE)},
     {"1 3 ManagedElement=AB,X=1 ref=\"ManagedElement=AB,Foo=1\""}},
    {"OtherRootIsKept", IPCData::OP_UPDATE, "ManagedElement=2,X=1",
     {change("tac", 1, kInt)}, {"1 3 ManagedElement=2,X=1 tac=1"}},
    {"HiddenRenameRenamesItsOwnNotification", IPCData::OP_UPDATE, "ManagedElement=1",
     {change("networkManagedElementId", std::string("CD"), kStr, "h"),
      change("userLabel", std::string("z"), kStr)},
     {"1 3 ManagedElement=CD userLabel=\"z\""}, "CD"},
    {"EmptyStringListIsOneEmptyString", IPCData::OP_UPDATE, kCell,
     {change("names", std::string(""), IPCData::AVT_STRING_LIST)},
     {"1 3 " + kSeenCell + " names=\"\""}},
    {"EmptyNumberListGivesNothing", IPCData::OP_UPDATE, kCell,
     {change("ids", std::string(""), IPCData::AVT_INT32_LIST)}, {}},
    {"UnsignedListTakesItsElementType", IPCData::OP_UPDATE, kCell,
     {change("ids", std::string("1,4000000000"), IPCData::AVT_UINT32_LIST)},
     {"1 3 " + kSeenCell + " ids=[1,4000000000]"}},
    {"BoolListComesReversed", IPCData::OP_UPDATE, kCell,
     {change("flags", std::string("1,0,0"), IPCData::AVT_BOOL_LIST)},
     {"1 3 " + kSeenCell + " flags=[false,false,true]"}},
    {"DecimalListGivesNothing", IPCData::OP_UPDATE, kCell,
     {change("levels", std::string("1.5"), IPCData::AVT_DECIMAL64_LIST)}, {}},
    {"StructTakesPendingAndSkipsHiddenMembers", IPCData::OP_UPDATE, kCell,
     {change("mi", kCell + ":mi", IPCData::AVT_STRUCT)},
     {"1 3 " + kSeenCell + " mi={a=1,b=\"new\",c=3}"}},
    {"MissingStructGivesNothing", IPCData::OP_UPDATE, kCell,
     {change("mi", kCell + ":none", IPCData::AVT_STRUCT)}, {}},
    {"WrongAlternativeGivesNothing", IPCData::OP_UPDATE, kCell,
     {change("tac", std::string("9"), kInt)}, {}},
    {"EmptyUpdateGivesNothing", IPCData::OP_UPDATE, kCell, {}, {}},
    {"UnknownOperationGivesNothing", IPCData::OP_TX_OPEN, kCell, {change("tac", 1, kInt)}, {}},
    {"EmptyDnGivesNothing", IPCData::OP_UPDATE, "", {change("tac", 1, kInt)}, {}},
    {"ShuttingDownDropsAll", IPCData::OP_INSERT, kCell, {change("tac", 1, kInt)}, {}, "",
     OrlController::TIB_SHUTTING_DOWN},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Events, NotificationBuildTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<Row>& info) { return info.param.name; });

struct FilterRow {
    const char* name;
    std::vector<const char*> values;  // the filter's pair values; empty: a null filter
    bool matches;
};

void PrintTo(const FilterRow& row, std::ostream* out) {
    *out << row.name;
}

class FilterMatchTest : public ProducerFixture, public ::testing::WithParamInterface<FilterRow> {};

TEST_P(FilterMatchTest, MatchesTheWholeDn) {
    const FilterRow& row = GetParam();
    std::vector<OrlNameValuePair> pairs;
    for (const char* value : row.values) {
        pairs.push_back({"dn", value});
    }
    std::vector<OrlNameValuePair*> filter;
    for (OrlNameValuePair& pair : pairs) {
        filter.push_back(&pair);
    }
    filter.push_back(nullptr);
    OrlNameValuePair** array = row.values.empty() ? nullptr : filter.data();
    EXPECT_EQ(_producer->_producerIf->filterMatch(kSeenCell, array) != 0, row.matches);
}

const FilterRow kFilterRows[] = {
    {"NullFilter", {}, true},
    {"NullFirstValueSkipsTheRest", {nullptr, "nothing"}, true},
    {"WholeDn", {"ManagedElement=AB,ENodeBFunction=1,EUtranCellFDD=1"}, true},
    {"PrefixIsNoMatch", {"ManagedElement=AB,ENodeBFunction=1"}, false},
    {"TailIsNoMatch", {"ENodeBFunction=1,EUtranCellFDD=1"}, false},
    {"Expression", {".*EUtranCellFDD=[0-9]+"}, true},
    {"UntranslatedNameIsNoMatch", {"ManagedElement=1,.*"}, false},
    {"SecondPairMatches", {"X=1", "ManagedElement=AB.*"}, true},
};

INSTANTIATE_TEST_SUITE_P(Filters, FilterMatchTest, ::testing::ValuesIn(kFilterRows),
                         [](const ::testing::TestParamInfo<FilterRow>& i) { return i.param.name; });

TEST_F(ProducerFixture, MalformedFilterThrowsOutOfDeliveryAndKeepsNothing) {
    consume({});
    OrlNameValuePair bad{"dn", "(["};
    OrlNameValuePair* filter[] = {&bad, nullptr};
    ASSERT_EQ(_producer->_producerIf->addFilter(99, host::events::kCmEventType, filter), 0);
    log::LogCapture log;
    deliver(event(IPCData::OP_INSERT, kCell, {change("tac", 1, kInt)}));
    deliver(event(IPCData::OP_UPDATE, kCell, {change("tac", 2, kInt)}));
    // The consumer before the bad filter got both; once it is done nothing is held.
    EXPECT_EQ(seen(), (Lines{"1 1 " + kCell + " tac=1", "2 3 " + kCell + " tac=2"}));
    EXPECT_EQ(held(), 0u);
    EXPECT_EQ(log.countContaining("VeskCmEventProducer::sendChanges Exception [std::exception]",
                                  VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(
        log.countContaining("VeskCmEventProducer::sendChanges Caught exception [std::exception]",
                            VESK_LOG_ERROR),
        1u);
}

}  // namespace
}  // namespace notificationtest
}  // namespace vesk

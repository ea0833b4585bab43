// Cell priorities and the operation mode: each row is the cells before, what one transaction does
// to them (the rule before each change, as the front calls it), the commit stage, and the
// committed priorities and next operation mode after; the edges the sessions through vesk-host
// do not reach.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/OperationMode.h"
#include "station/StationConfig.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskCellPriority.h"

namespace {

using TibVeskOI::VeskCellPriority;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::putDn;

const std::string kPriorityEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kGroup = "ManagedElement=1,NodeBFunction=1,NodeBLocalCellGroup=1";

// "F1", "T1", "W1": FDD, TDD and WCDMA cell 1, by key and by full dn.
std::string keyOf(const std::string& name) {
    const char* cls = name[0] == 'F'   ? "EUtranCellFDD="
                      : name[0] == 'T' ? "EUtranCellTDD="
                                       : "NodeBLocalCell=";
    return cls + name.substr(1);
}
std::string dnOf(const std::string& name) {
    return (name[0] == 'W' ? kGroup : kPriorityEnb) + "," + keyOf(name);
}
std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> out;
    for (std::string word; in >> word;)
        out.push_back(word);
    return out;
}

// A cell "F1:2u+": priority 2 ("-" for none), unlocked ("l" locked), resources allocated ("+").
void putCell(const std::string& text, int handle) {
    const size_t colon = text.find(':');
    const std::string name = text.substr(0, colon), rest = text.substr(colon + 1);
    const std::string dn = dnOf(name);
    putDn(dn,
          {attr("administrativeState",
                AttributeVariant(rest.find('u') != std::string::npos ? 1 : 0), IPCData::AVT_INT32),
           attr("resourcesAllocated", AttributeVariant(rest.back() == '+'), IPCData::AVT_BOOL)},
          handle);
    if (rest[0] != '-')
        IDatabase::setAttribute(dn, 1, "priority", AttributeVariant(std::stoi(rest)), true,
                                IPCData::AVT_INT32, true, handle);
}

struct PriorityRow {
    const char* name;
    std::string before;   // cells
    std::string changes;  // "u:F1" unlock, "l:F1" lock, "c:F1u" create unlocked
    std::string after;    // "F1:1 F2:10"
    const char* mode;
};

class CellPriority : public vesk::dbtest::DatabaseTest,
                     public ::testing::WithParamInterface<PriorityRow> {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        vesk::station::setStateDirectory(_dir.path());
        for (const std::string& dn : {std::string("ManagedElement=1"), kPriorityEnb,
                                      std::string("ManagedElement=1,NodeBFunction=1"), kGroup})
            putDn(dn, {});
    }
    // What the front does for one change: the rule first, then the write.
    void change(const std::string& word, int h) {
        VeskCellPriority& priority = *VeskCellPriority::instance();
        const std::string name = word.substr(2, 2);
        const int state = word[0] == 'u' || (word[0] == 'c' && word.back() == 'u') ? 1 : 0;
        if (word[0] == 'c')
            putCell(name + ":10" + (state ? "u" : "l"), h);
        priority.checkCellPriority(h, keyOf(name), state);
        IDatabase::setAttribute(dnOf(name), 1, "administrativeState", AttributeVariant(state), true,
                                IPCData::AVT_ENUM, true, h);
    }
};

TEST_P(CellPriority, ChangesLeaveUnlockedCellsRankedWithoutGapsAndTheModeTheCellsCallFor) {
    const PriorityRow& row = GetParam();
    for (const std::string& cell : words(row.before))
        putCell(cell, 0);
    const std::string mode = row.mode;
    ASSERT_EQ(mw_api_operation_mode_set(2, mode == "mixed" ? 0 : 1), 0);  // the other one
    const int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (const std::string& word : words(row.changes))
        change(word, h);
    VeskCellPriority::instance()->validateMode(h);
    ASSERT_EQ(IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false), 1);

    std::string after;
    for (const std::string& cell : words(row.after)) {
        const std::string name = cell.substr(0, cell.find(':'));
        const std::string value = committedString(dnOf(name), "priority");
        after += (after.empty() ? "" : " ") + name + ":" + value;
    }
    EXPECT_EQ(after, row.after);
    int next = -1;
    ASSERT_EQ(mw_api_operation_mode_get(2, &next), 0);
    EXPECT_EQ(next == 1 ? "mixed" : "hc_lte", mode);
}

INSTANTIATE_TEST_SUITE_P(
    Maps, CellPriority,
    ::testing::Values(
        PriorityRow{"FirstUnlockedCellOfAnEmptyNode", "F1:10l", "u:F1", "F1:1", "hc_lte"},
        PriorityRow{"GapsCloseAtTheModeCheck", "F1:1u F2:2u F3:4u W1:10l", "",
                    "F1:1 F2:2 F3:3 W1:10", "hc_lte"},
        PriorityRow{"UnlockedRanksAheadOfALockedCellStillRanked", "F1:1u F2:2l F3:10l", "u:F3",
                    "F1:1 F2:10 F3:2", "hc_lte"},
        PriorityRow{"OnATieTheLastClassWinsAndTheLosersKeepTheirValue", "F1:2u W1:2u T1:2u F2:10l",
                    "u:F2", "F1:2 F2:2 T1:1 W1:2", "mixed"},
        PriorityRow{"CreatedCellsArePlacedByTheirState", "F1:1u+ W1:2u+ F3:-l", "c:T1u c:F2l u:F3",
                    "F1:1 F2:10 F3:4 T1:3 W1:2", "mixed"}),
    [](const ::testing::TestParamInfo<PriorityRow>& info) { return info.param.name; });

}  // namespace

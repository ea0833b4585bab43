// The lists the validation component keeps between a change and its commit, walked over small
// lists built by hand: the invalid and checked commits, the black list, and what the commit and
// rollback stages leave of them. No transaction is open, so no database is touched.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "validation/VeskOI.h"

namespace {

using TibVeskOI::VeskOI;

// A row's script: words of an operation letter, a handle digit and an MO name. '+' inserts an
// invalid commit, '-' removes that pair, 'x' the handle's invalid commits, 'k' inserts a checked
// commit, 'y' removes the handle's checked commits, 'c' commits, 'r' rolls back.
struct ListRow {
    const char* name;
    std::string script;
    std::string invalid, checked, blackList;
    int commit;  // the answer of the last commit
};

// The entries as "tx:mo" (or the handles), blank-separated.
template <typename List>
std::string render(const List& list) {
    std::string text;
    for (const auto& entry : list) {
        if constexpr (std::is_same<List, VeskOI::CommitList>::value)
            text += " " + std::to_string(entry.txId) + ":" + entry.mo;
        else
            text += " " + std::to_string(entry);
    }
    return text.empty() ? text : text.substr(1);
}

// Empties every list through the component's own operations.
void drain(VeskOI& oi) {
    while (!oi.invalidCommits().empty())
        oi.removeFromInvalidCommits(oi.invalidCommits().front().txId);
    while (!oi.checkedCommits().empty())
        oi.removeFromCheckedCommits(oi.checkedCommits().front().txId);
    while (!oi.blackList().empty())
        oi.removeFromInvalidCommits(oi.blackList().front(), "");
}

// Runs one word of a script; the answer of a commit or rollback, else OrlOk.
int runWord(VeskOI& oi, const std::string& word) {
    const unsigned long tx = word[1] - '0';
    const std::string mo = word.substr(2);
    switch (word[0]) {
        case '+':
            oi.insertToInvalidCommits(tx, mo);
            break;
        case '-':
            oi.removeFromInvalidCommits(tx, mo);
            break;
        case 'x':
            oi.removeFromInvalidCommits(tx);
            break;
        case 'k':
            oi.insertToCheckedCommits(tx, mo);
            break;
        case 'y':
            oi.removeFromCheckedCommits(tx);
            break;
        case 'c':
            return oi.handleCommit(tx);
        case 'r':
            return oi.handleRollback(tx);
    }
    return OrlOk;
}

TEST(CommitLists, WalksAndStages) {
    const std::vector<ListRow> rows = {
        {"AdjacentSecondSurvives", "+1a +1b x1", "1:b", "", "1", 0},
        {"ErasedLastWrapsToTheFront", "+1a +2x +1b x1", "2:x", "", "1 2 1", 0},
        {"SecondBehindOtherStays", "+2x +1a +1b x1", "2:x 1:b", "", "2 1", 0},
        {"ThreeAdjacentAllGo", "+1a +1b +1c x1", "", "", "1", 0},
        {"PairHeldOnce", "+1a +1a", "1:a", "", "1", 0},
        {"AbsentPairClearsBlackList", "+1a +2x -1zz", "1:a 2:x", "", "2", 0},
        {"RemovedPair", "+1a +2x -1a", "2:x", "", "2", 0},
        {"CheckedPairHeldOnce", "k1a k1a k2x y1", "", "2:x", "", 0},
        {"BlackListedCommitRefused", "+1a c1", "", "", "", -9},
        {"OtherTransactionsCommitPasses", "+2x c1", "2:x", "", "2", 0},
        {"OffTheBlackListCommits", "+1a -1b c1", "", "", "", 0},
        {"CheckedCommitsEnd", "k1PmJob=1 k2x c1", "", "2:x", "", 0},
        {"RollbackKeepsTheBlackList", "+1a k1b +2x r1", "2:x", "", "1 2", 0},
    };
    VeskOI& oi = *VeskOI::getVeskOI();
    for (const ListRow& row : rows) {
        SCOPED_TRACE(row.name);
        drain(oi);
        vesk::log::LogCapture capture;
        int commit = OrlOk;
        std::istringstream words(row.script);
        for (std::string word; words >> word;) {
            const int rc = runWord(oi, word);
            if (word[0] == 'c')
                commit = rc;
        }
        EXPECT_EQ(render(oi.invalidCommits()), row.invalid);
        EXPECT_EQ(render(oi.checkedCommits()), row.checked);
        EXPECT_EQ(render(oi.blackList()), row.blackList);
        EXPECT_EQ(commit, row.commit);
        EXPECT_EQ(capture.count("VeskOI::checkBlackList 1 is black listed", VESK_LOG_INFO),
                  row.commit == -9 ? 1u : 0u);
    }
}

}  // namespace

// The lists the validation component keeps between a change and its commit, walked over small
// lists built by hand: the invalid and checked commits, the black list, and what the commit and
// rollback stages leave of them. No transaction is open, so no database is touched.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "validation/VeskOI.h"

namespace {

using TibVeskOI::VeskOI;

// '+' insert an invalid commit, '-' remove that pair, 'x' remove the transaction's invalid
// commits, 'k' insert a checked commit, 'y' remove the transaction's checked commits, 'c' commit,
// 'r' roll back.
struct Op {
    char kind;
    unsigned long tx;
    const char* mo;
};

struct Row {
    const char* name;
    std::vector<Op> ops;
    std::string invalid, checked, blackList;
    int commit;  // the answer of the last commit
};

std::string render(const VeskOI::CommitList& list) {
    std::string text;
    for (const auto& entry : list)
        text += (text.empty() ? "" : " ") + std::to_string(entry.txId) + ":" + entry.mo;
    return text;
}

std::string render(const std::list<unsigned long>& list) {
    std::string text;
    for (unsigned long tx : list)
        text += (text.empty() ? "" : " ") + std::to_string(tx);
    return text;
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

int apply(VeskOI& oi, const Op& op) {
    switch (op.kind) {
        case '+':
            oi.insertToInvalidCommits(op.tx, op.mo);
            break;
        case '-':
            oi.removeFromInvalidCommits(op.tx, op.mo);
            break;
        case 'x':
            oi.removeFromInvalidCommits(op.tx);
            break;
        case 'k':
            oi.insertToCheckedCommits(op.tx, op.mo);
            break;
        case 'y':
            oi.removeFromCheckedCommits(op.tx);
            break;
        case 'c':
            return oi.handleCommit(op.tx);
        case 'r':
            return oi.handleRollback(op.tx);
    }
    return OrlOk;
}

TEST(CommitLists, WalksAndStages) {
    const std::vector<Row> rows = {
        {"AdjacentSecondSurvives", {{'+', 1, "a"}, {'+', 1, "b"}, {'x', 1, ""}}, "1:b", "", "1", 0},
        {"ErasedLastWrapsToTheFront",
         {{'+', 1, "a"}, {'+', 2, "x"}, {'+', 1, "b"}, {'x', 1, ""}},
         "2:x",
         "",
         "1 2 1",
         0},
        {"SecondBehindOtherStays",
         {{'+', 2, "x"}, {'+', 1, "a"}, {'+', 1, "b"}, {'x', 1, ""}},
         "2:x 1:b",
         "",
         "2 1",
         0},
        {"ThreeAdjacentAllGo",
         {{'+', 1, "a"}, {'+', 1, "b"}, {'+', 1, "c"}, {'x', 1, ""}},
         "",
         "",
         "1",
         0},
        {"PairHeldOnce", {{'+', 1, "a"}, {'+', 1, "a"}}, "1:a", "", "1", 0},
        {"AbsentPairClearsBlackList",
         {{'+', 1, "a"}, {'+', 2, "x"}, {'-', 1, "zz"}},
         "1:a 2:x",
         "",
         "2",
         0},
        {"RemovedPair", {{'+', 1, "a"}, {'+', 2, "x"}, {'-', 1, "a"}}, "2:x", "", "2", 0},
        {"CheckedPairHeldOnce",
         {{'k', 1, "a"}, {'k', 1, "a"}, {'k', 2, "x"}, {'y', 1, ""}},
         "",
         "2:x",
         "",
         0},
        {"BlackListedCommitRefused", {{'+', 1, "a"}, {'c', 1, ""}}, "", "", "", -9},
        {"OtherTransactionsCommitPasses", {{'+', 2, "x"}, {'c', 1, ""}}, "2:x", "", "2", 0},
        {"OffTheBlackListCommits", {{'+', 1, "a"}, {'-', 1, "b"}, {'c', 1, ""}}, "", "", "", 0},
        {"CheckedCommitsEnd", {{'k', 1, "PmJob=1"}, {'k', 2, "x"}, {'c', 1, ""}}, "", "2:x", "", 0},
        {"RollbackKeepsTheBlackList",
         {{'+', 1, "a"}, {'k', 1, "b"}, {'+', 2, "x"}, {'r', 1, ""}},
         "2:x",
         "",
         "1 2",
         0},
    };
    VeskOI& oi = *VeskOI::getVeskOI();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        drain(oi);
        vesk::log::LogCapture capture;
        int commit = OrlOk;
        for (const Op& op : row.ops) {
            int rc = apply(oi, op);
            if (op.kind == 'c')
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

// The transaction coordinator with participants of the test's own.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "host/TransactionCoordinator.h"

namespace {

using vesk::host::TransactionCoordinator;

// Participants A and B note their calls here; B's prepare may wait on `gate`.
std::mutex g_mutex;
std::vector<std::string> g_calls;
std::shared_future<void> g_gate;
OrlReturnT g_abortAnswer = OrlOk;

OrlReturnT note(const std::string& what) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_calls.push_back(what);
    return OrlOk;
}
OrlReturnT aPrepare(OrlTxHandleT) {
    return note("a.prepare");
}
OrlReturnT aCommit(OrlTxHandleT) {
    return note("a.commit");
}
OrlReturnT aAbort(OrlTxHandleT) {
    note("a.abort");
    return g_abortAnswer;
}
OrlReturnT aFinish(OrlTxHandleT) {
    return note("a.finish");
}
OrlReturnT bPrepare(OrlTxHandleT) {
    if (g_gate.valid()) {
        g_gate.wait();
    }
    return note("b.prepare");
}
OrlReturnT bAbort(OrlTxHandleT) {
    return note("b.abort");
}

OrlOamSpiTransactionalResource_2 g_a = {{"A", "OrlOamSpiTransactionalResource", "2"},
                                        nullptr,
                                        aPrepare,
                                        aCommit,
                                        aAbort,
                                        aFinish,
                                        nullptr};
// B has neither join, commit, finish nor validate: those are skipped.
OrlOamSpiTransactionalResource_2 g_b = {{"B", "OrlOamSpiTransactionalResource", "2"},
                                        nullptr,
                                        bPrepare,
                                        nullptr,
                                        bAbort,
                                        nullptr,
                                        nullptr};

class CoordinatorTest : public ::testing::Test {
  protected:
    void SetUp() override {
        g_calls.clear();
        g_gate = std::shared_future<void>();
        g_abortAnswer = OrlOk;
    }
    std::vector<std::string> calls() {
        std::lock_guard<std::mutex> lock(g_mutex);
        return g_calls;
    }
    TransactionCoordinator _coordinator;
};

TEST_F(CoordinatorTest, ParticipantsOnlyJoinOpenTransactions) {
    OrlTxHandleT first = _coordinator.open();
    OrlTxHandleT second = _coordinator.open();
    EXPECT_NE(first, 0u);
    EXPECT_NE(first, second);
    auto* record = _coordinator.record2();
    EXPECT_EQ(record->registerParticipant(first, &g_a), OrlOk);
    EXPECT_EQ(record->registerParticipant(first, &g_a), OrlOk);
    EXPECT_EQ(_coordinator.record1()->registerParticipant(first, &g_b), OrlOk);
    EXPECT_EQ(_coordinator.participants(first),
              (std::vector<OrlOamSpiTransactionalResource_2*>{&g_a, &g_b}));
    EXPECT_EQ(record->registerParticipant(999, &g_a), OrlNotExist);
    EXPECT_EQ(_coordinator.join(first, &g_a), OrlFailure) << "A has no join slot";

    EXPECT_EQ(_coordinator.commit(first), OrlOk);
    EXPECT_EQ(calls(),
              (std::vector<std::string>{"a.prepare", "b.prepare", "a.commit", "a.finish"}));
    EXPECT_EQ(record->registerParticipant(first, &g_a), OrlNotExist) << "finished";
    EXPECT_TRUE(_coordinator.isOpen(second));
}

TEST_F(CoordinatorTest, AbortReportsTheFirstRefusalAndStillFinishes) {
    OrlTxHandleT tx = _coordinator.open();
    _coordinator.registerParticipant(tx, &g_a);
    _coordinator.registerParticipant(tx, &g_b);
    g_abortAnswer = -4;
    EXPECT_EQ(_coordinator.abort(tx), -4);
    EXPECT_EQ(calls(), (std::vector<std::string>{"a.abort", "b.abort", "a.finish"}));
    EXPECT_EQ(_coordinator.abort(tx), OrlNotExist);
}

TEST_F(CoordinatorTest, PrepareMayBlockWithoutHoldingTheCoordinator) {
    std::promise<void> release;
    g_gate = release.get_future().share();
    OrlTxHandleT tx = _coordinator.open();
    _coordinator.registerParticipant(tx, &g_a);
    _coordinator.registerParticipant(tx, &g_b);

    std::atomic<bool> done{false};
    std::thread committer([&] {
        EXPECT_EQ(_coordinator.commit(tx), OrlOk);
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(done) << "commit waits for the slow prepare";
    // Meanwhile other transactions go on, and the waiting one takes no newcomers.
    OrlTxHandleT other = _coordinator.open();
    EXPECT_EQ(_coordinator.registerParticipant(other, &g_a), OrlOk);
    EXPECT_EQ(_coordinator.registerParticipant(tx, &g_a), OrlNotExist);
    release.set_value();
    committer.join();
    EXPECT_TRUE(done);
    EXPECT_EQ(calls(),
              (std::vector<std::string>{"a.prepare", "b.prepare", "a.commit", "a.finish"}));
}

}  // namespace

// A writer killed at random moments, and a writer whose power is cut at random moments: after
// either, the store opens, every acknowledged transaction is in, each transaction is wholly in or
// wholly out, and the ones that are in are contiguous.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "station/database/Database.h"
#include "station/database/FaultDisk.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

constexpr int kObjectsPerTransaction = 6;

int lastCommitted() {
    int last = 0;
    Attribute* a = IDatabase::getAttribute("Counter", "last", 0);
    if (a != nullptr)
        last = boost::get<int>(a->value);
    return last;
}

// Transaction `t`: kObjectsPerTransaction new objects and the counter set to `t`. True when the
// commit was acknowledged.
bool commitTransaction(int t) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int i = 0; i < kObjectsPerTransaction; ++i) {
        auto o = object("Obj=" + std::to_string(t) + "_" + std::to_string(i), "",
                        {attr("tx", t, IPCData::AVT_INT32)});
        if (IDatabase::insert(o.get(), h) == 0)
            return false;
    }
    auto counter = object("Counter", "", {attr("last", t, IPCData::AVT_INT32)});
    return IDatabase::insert(counter.get(), h) != 0 &&
           IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false) != 0;
}

// The child: commits transaction after transaction until it is killed, writing the number of
// each acknowledged one to `acks`. Never returns.
[[noreturn]] void writeForever(const std::string& dir, int acks) {
    std::string error;
    if (!db::open(dir, &error))
        _exit(3);
    for (int t = lastCommitted() + 1;; ++t) {
        if (!commitTransaction(t))
            _exit(5);
        if (write(acks, &t, sizeof t) != sizeof t)
            _exit(6);
        if (t % 7 == 0)
            IDatabase::storePersistentDump(false, false);
    }
}

// Checks the reopened store against the last acknowledged transaction; returns the last committed.
int checkWholeTransactions(int acknowledged) {
    std::map<int, int> objectsOf;
    for (DBObject* o : IDatabase::getMOClass("Obj", 0)) {
        ++objectsOf[boost::get<int>(o->getAttribute("tx")->value)];
        delete o;
    }
    int last = lastCommitted();
    for (const auto& entry : objectsOf) {
        EXPECT_EQ(kObjectsPerTransaction, entry.second) << "transaction " << entry.first;
    }
    EXPECT_EQ(static_cast<size_t>(last), objectsOf.size());
    if (!objectsOf.empty()) {
        EXPECT_EQ(1, objectsOf.begin()->first);
        EXPECT_EQ(last, objectsOf.rbegin()->first);
    }
    EXPECT_GE(last, acknowledged) << "an acknowledged transaction is lost";
    EXPECT_LE(last, acknowledged + 1) << "more than the transaction under way came in";
    return last;
}

// The highest number the child wrote before it died.
int lastAcknowledged(int acks, int before) {
    int t = 0, last = before;
    while (read(acks, &t, sizeof t) == sizeof t)
        last = t;
    return last;
}

TEST(CrashTest, KilledWritersLoseNoAcknowledgedTransaction) {
    TempDir dir;
    std::mt19937 random(12345);
    std::uniform_int_distribution<int> pause(2, 60);
    int last = 0;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    int kills = 0;
    for (; kills < 30 && std::chrono::steady_clock::now() < deadline; ++kills) {
        int acks[2];
        ASSERT_EQ(0, pipe(acks));
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(acks[0]);
            writeForever(dir.path(), acks[1]);
        }
        close(acks[1]);
        // The kill comes at a random moment after the writer's first commit of this life, so
        // that every round makes progress however slow the machine is.
        int first = 0;
        ASSERT_EQ(static_cast<ssize_t>(sizeof first), read(acks[0], &first, sizeof first))
            << "the writer ended before its first commit";
        std::this_thread::sleep_for(std::chrono::milliseconds(pause(random)));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself: " << status;
        int acknowledged = lastAcknowledged(acks[0], first);
        close(acks[0]);
        std::string error;  // the lock of the killed writer is gone with it
        ASSERT_TRUE(db::open(dir.path(), &error)) << error;
        last = checkWholeTransactions(acknowledged);
        db::close();
        if (HasFailure())
            break;
    }
    RecordProperty("kills", kills);
    RecordProperty("committed", last);
    EXPECT_GE(kills, 10);
    EXPECT_GT(last, 0);
}

// Each round cuts the power at a random write or sync of a stream of commits, dumps, closes and
// opens, then brings back only what was synced.
TEST(CrashTest, PowerCutsLoseNoAcknowledgedTransaction) {
    const unsigned kSeed = 20261124;
    SCOPED_TRACE(testing::Message() << "seed " << kSeed);
    std::mt19937 random(kSeed);
    db::FaultDisk disk;
    TempDir dir;
    int acknowledged = 0;
    for (int cut = 0; cut < 100 && !HasFailure(); ++cut) {
        SCOPED_TRACE(testing::Message() << "cut " << cut);
        std::string error;
        ASSERT_TRUE(db::open(dir.path(), &error)) << error;
        acknowledged = checkWholeTransactions(acknowledged);
        log::LogCapture quiet;  // the refusals while the power is off
        disk.cutPower(std::uniform_int_distribution<int>(1, 40)(random));
        for (int t = acknowledged + 1; !disk.powerIsOff(); ++t) {
            if (commitTransaction(t))
                acknowledged = t;
            int next = std::uniform_int_distribution<int>(0, 9)(random);
            if (next == 0)
                IDatabase::storePersistentDump(false, false);
            if (next == 1)
                db::close();
            if (next == 1 && !db::open(dir.path(), &error))
                break;
        }
        db::close();
        disk.restoreSynced();
    }
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

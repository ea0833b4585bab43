// A writer killed at random moments: each transaction is wholly in or wholly out after reopen,
// and the ones that are in are contiguous.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "station/database/Database.h"
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

// The child: commits transaction after transaction until it is killed, and writes one byte to
// `ready` after its first commit. Never returns.
[[noreturn]] void writeForever(const std::string& dir, int ready) {
    std::string error;
    if (!db::open(dir, &error))
        _exit(3);
    for (int t = lastCommitted() + 1;; ++t) {
        int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        for (int i = 0; i < kObjectsPerTransaction; ++i) {
            auto o = object("Obj=" + std::to_string(t) + "_" + std::to_string(i), "",
                            {attr("tx", t, IPCData::AVT_INT32)});
            if (IDatabase::insert(o.get(), h) == 0)
                _exit(4);
        }
        auto counter = object("Counter", "", {attr("last", t, IPCData::AVT_INT32)});
        if (IDatabase::insert(counter.get(), h) == 0)
            _exit(4);
        if (IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false) == 0)
            _exit(5);
        if (ready >= 0) {
            char byte = 1;
            if (write(ready, &byte, 1) != 1)
                _exit(6);
            close(ready);
            ready = -1;
        }
        if (t % 7 == 0)
            IDatabase::storePersistentDump(false, false);
    }
}

// Checks the reopened store; returns the last committed transaction.
int checkWholeTransactions() {
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
    return last;
}

TEST(CrashTest, KilledWritersLeaveWholeContiguousTransactions) {
    TempDir dir;
    std::mt19937 random(12345);
    std::uniform_int_distribution<int> pause(2, 60);
    int last = 0;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    int kills = 0;
    for (; kills < 30 && std::chrono::steady_clock::now() < deadline; ++kills) {
        int ready[2];
        ASSERT_EQ(0, pipe(ready));
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ready[0]);
            writeForever(dir.path(), ready[1]);
        }
        close(ready[1]);
        // The kill comes at a random moment after the writer's first commit of this life, so
        // that every round makes progress however slow the machine is.
        char byte = 0;
        ssize_t got = read(ready[0], &byte, 1);
        close(ready[0]);
        ASSERT_EQ(1, got) << "the writer ended before its first commit";
        std::this_thread::sleep_for(std::chrono::milliseconds(pause(random)));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself: " << status;
        std::string error;
        ASSERT_TRUE(db::open(dir.path(), &error)) << error;
        int now = checkWholeTransactions();
        EXPECT_GE(now, last);  // nothing committed is lost
        last = now;
        db::close();
        if (HasFailure())
            break;
    }
    RecordProperty("kills", kills);
    RecordProperty("committed", last);
    EXPECT_GE(kills, 10);
    EXPECT_GT(last, 0);
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

// Writers on their own handles and readers on committed data, all at once.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

constexpr int kWriters = 4;
constexpr int kTransactions = 40;
constexpr int kObjects = 3;

// Writer w commits transactions that insert kObjects objects and move its own "Pair" object
// on: the two attributes of a Pair are always written together, so no reader may see them
// differ.
void writer(int w, std::atomic<int>* failures) {
    std::string pair = "Pair=" + std::to_string(w);
    for (int t = 1; t <= kTransactions; ++t) {
        int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        for (int i = 0; i < kObjects; ++i) {
            std::string key =
                "Item=" + std::to_string(w) + "_" + std::to_string(t) + "_" + std::to_string(i);
            auto o = object(key, "", {attr("w", w, IPCData::AVT_INT32)});
            if (IDatabase::insert(o.get(), h) == 0)
                ++*failures;
        }
        std::unique_ptr<DBObject> p(IDatabase::getObject(pair, 1, h));
        if (p == nullptr) {
            ++*failures;
        } else {
            p->getAttribute("a")->SetValue(AttributeVariant(t));
            p->getAttribute("b")->SetValue(AttributeVariant(t));
            if (IDatabase::update(p.get(), h) == 0)
                ++*failures;
        }
        bool commit = t % 5 != 0;  // every fifth one is rolled back
        int op = commit ? IPCData::OP_TX_COMMIT : IPCData::OP_TX_ROLLBACK;
        if (IDatabase::transaction(static_cast<IPCData::EOperations>(op), h, false) == 0) {
            ++*failures;
        }
    }
}

void reader(const std::atomic<bool>* done, std::atomic<int>* torn, std::atomic<int>* reads) {
    while (!done->load()) {
        for (int w = 0; w < kWriters; ++w) {
            std::unique_ptr<DBObject> p(IDatabase::getObject("Pair=" + std::to_string(w), 1, 0));
            if (p == nullptr || !(p->getAttribute("a")->value == p->getAttribute("b")->value)) {
                ++*torn;
            }
        }
        for (DBObject* o : IDatabase::getMOClass("Item", 0))
            delete o;
        ++*reads;
    }
}

class DatabaseThreadTest : public DatabaseTest {};

TEST_F(DatabaseThreadTest, ConcurrentHandlesCommitWholeAndReadersNeverSeeHalfAWrite) {
    for (int w = 0; w < kWriters; ++w) {
        put("Pair=" + std::to_string(w), "",
            {attr("a", 0, IPCData::AVT_INT32), attr("b", 0, IPCData::AVT_INT32)});
    }
    std::atomic<int> failures{0}, torn{0}, reads{0};
    std::atomic<bool> done{false};
    std::vector<std::thread> readers;
    for (int r = 0; r < 2; ++r)
        readers.emplace_back(reader, &done, &torn, &reads);
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w)
        writers.emplace_back(writer, w, &failures);
    for (auto& t : writers)
        t.join();
    done = true;
    for (auto& t : readers)
        t.join();
    EXPECT_EQ(0, failures.load());
    EXPECT_EQ(0, torn.load());
    EXPECT_GT(reads.load(), 0);
    std::list<DBObject*> items = IDatabase::getMOClass("Item", 0);
    EXPECT_EQ(static_cast<size_t>(kWriters * (kTransactions - kTransactions / 5) * kObjects),
              items.size());
    for (DBObject* o : items)
        delete o;
    for (int w = 0; w < kWriters; ++w) {
        EXPECT_EQ("39", committedString("Pair=" + std::to_string(w), "a"));
    }
    reopen();
    items = IDatabase::getMOClass("Item", 0);
    EXPECT_EQ(static_cast<size_t>(kWriters * 32 * kObjects), items.size());
    for (DBObject* o : items)
        delete o;
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

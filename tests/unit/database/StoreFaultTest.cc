// The store on a failing disk: what a durable commit costs, and a commit that meets a write
// error, a failed sync or a full disk fails with one error line and changes nothing, in memory,
// on disk as a crash would leave it, or after a loss of power; the next commit succeeds.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "station/database/Database.h"
#include "station/database/FaultDisk.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

// Every committed object of the classes used here, with its attributes, as one text.
std::string contents() {
    std::string text;
    for (const char* cls : {"Obj", "Cell"}) {
        for (DBObject* o : IDatabase::getMOClass(cls, 0)) {
            text += o->dn + ":";
            for (const auto& a : o->attributes)
                text += " " + a.first + "=" + std::to_string(boost::get<int>(a.second->value));
            text += "\n";
            delete o;
        }
    }
    return text;
}

// A transaction that inserts, updates and deletes.
int mixedCommit() {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    auto fresh = object("Obj=3", "", {attr("a", 3, IPCData::AVT_INT32)});
    IDatabase::insert(fresh.get(), h);
    IDatabase::setAttribute("Obj=1", 1, "a", AttributeVariant(10), false, IPCData::AVT_INT32, true,
                            h);
    IDatabase::deleteObj("Obj=2", 1, h);
    return IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false);
}

class StoreFaultTest : public ::testing::Test {
  protected:
    // A store holding Obj=1 and Obj=2, closed and opened again so that every row starts alike.
    void SetUp() override {
        _dir.reset(new TempDir());
        std::string error;
        ASSERT_TRUE(db::open(store(), &error)) << error;
        put("Obj=1", "", {attr("a", 1, IPCData::AVT_INT32)});
        put("Obj=2", "", {attr("a", 2, IPCData::AVT_INT32)});
        db::close();
        ASSERT_TRUE(db::open(store(), &error)) << error;
    }
    void TearDown() override { db::close(); }
    std::string store() const { return _dir->path() + "/s"; }

    // The contents of the store in `copy` (closing the open one).
    std::string contentsOf(const std::string& copy) {
        db::close();
        std::string error;
        EXPECT_TRUE(db::open(copy, &error)) << error;
        std::string text = contents();
        db::close();
        return text;
    }

    db::FaultDisk _disk;
    std::unique_ptr<TempDir> _dir;
};

TEST_F(StoreFaultTest, ACommitSyncsTheLogOnceAndADumpOfAShortLogNothing) {
    put("Cell=0", "");  // the first commit after an open also writes the log's header
    const std::string log = store() + "/config.db-wal";
    struct Row {
        const char* what;
        std::function<int()> action;
        std::vector<std::string> synced;
    } rows[] = {
        {"transaction", mixedCommit, {log}},
        {"handle-0 insert", [] { return IDatabase::insert(object("Cell=1", "").get(), 0); }, {log}},
        {"handle-0 set",
         [] {
             return IDatabase::setAttribute("Cell=1", 1, "x", AttributeVariant(1), false,
                                            IPCData::AVT_INT32, false, 0);
         },
         {log}},
        {"handle-0 delete", [] { return IDatabase::deleteObj("Cell=1", 1, 0); }, {log}},
        {"dump", [] { return IDatabase::storePersistentDump(false, false); }, {}},
    };
    for (const Row& row : rows) {
        _disk.resetCounts();
        EXPECT_EQ(1, row.action()) << row.what;
        EXPECT_EQ(row.synced, _disk.synced()) << row.what;
    }
}

TEST_F(StoreFaultTest, AFailedCommitChangesNothingAndTheNextOneSucceeds) {
    const std::string before = contents();
    _disk.resetCounts();
    ASSERT_EQ(1, mixedCommit());
    const std::string after = contents();
    const int writes = _disk.writes(), syncs = static_cast<int>(_disk.synced().size());
    ASSERT_GE(writes, 2);
    ASSERT_EQ(2, syncs) << "the new log's header, then the commit";
    std::vector<std::pair<std::string, std::function<void()>>> faults;
    for (int n = 1; n <= writes; ++n)
        faults.emplace_back("EIO on write " + std::to_string(n), [=] { _disk.failWrite(n); });
    for (int n = 1; n <= syncs; ++n)
        faults.emplace_back("failed sync " + std::to_string(n), [=] { _disk.failSync(n); });
    faults.emplace_back("disk full", [=] { _disk.fillDisk(); });

    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.first);
        TearDown();
        SetUp();
        const std::string crashed = _dir->path() + "/crashed", cut = _dir->path() + "/cut";
        fault.second();
        {
            log::LogCapture capture;
            EXPECT_EQ(0, mixedCommit());
            EXPECT_EQ(1u, capture.countContaining(
                              "IDatabase::transaction: commit failed, nothing changed: ",
                              VESK_LOG_ERROR));
            EXPECT_EQ(1u, capture.lines().size());
        }
        EXPECT_EQ(before, contents()) << "in memory";
        std::filesystem::create_directory(crashed);
        for (const char* file : {"/config.db", "/config.db-wal"})
            std::filesystem::copy(store() + file, crashed + file);
        _disk.copySynced(store(), cut);
        _disk.clear();
        EXPECT_EQ(1, mixedCommit()) << "once the disk is back";
        EXPECT_EQ(before, contentsOf(crashed)) << "on disk as a crash leaves it";
        EXPECT_EQ(before, contentsOf(cut)) << "after a loss of power";
        EXPECT_EQ(after, contentsOf(store()));
    }
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

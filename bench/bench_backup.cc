// Backup and restore of a 100,000-object station by the host's software management component:
// the snapshot (the only time the store's writers wait), the archive written while a writer
// keeps committing beside it, and the restore of the archive (run after BM_Backup, whose
// archive it reads).
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/peers/BackupArchive.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace {

constexpr int kObjects = 100000;
constexpr int kAttributes = 12;

std::string g_dir;

DBObject* makeObject(int n) {
    auto* o = new DBObject("Item=" + std::to_string(n), 1, true, false, IPCData::OPSTATE_ENABLED,
                           IPCData::ADMSTATE_UNLOCKED, "", 1);
    for (int a = 0; a < kAttributes; ++a) {
        bool number = a % 2 == 0;
        AttributeVariant value =
            number ? AttributeVariant(n + a) : AttributeVariant("text " + std::to_string(n + a));
        o->addAttribute(*new Attribute(false, "attribute" + std::to_string(a), value, 0, true,
                                       number ? IPCData::AVT_INT32 : IPCData::AVT_STRING, true,
                                       false));
    }
    return o;
}

void ensureStation() {
    if (!g_dir.empty())
        return;
    char pattern[] = "/tmp/vesk-bench-backup-XXXXXX";
    g_dir = mkdtemp(pattern);
    std::string error;
    if (!vesk::db::open(g_dir + "/state", &error)) {
        fprintf(stderr, "%s\n", error.c_str());
        abort();
    }
    for (int done = 0; done < kObjects; done += 10000) {
        int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        for (int i = done; i < done + 10000; ++i) {
            std::unique_ptr<DBObject> o(makeObject(i));
            IDatabase::insert(o.get(), h);
        }
        IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false);
    }
    IDatabase::storePersistentDump(false, false);
}

vesk::host::peers::Progress quietProgress() {
    vesk::host::peers::Progress progress;
    progress.told = [](double) {};
    progress.cancelled = [] { return false; };
    return progress;
}

void BM_Snapshot(benchmark::State& state) {
    ensureStation();
    for (auto _ : state) {
        benchmark::DoNotOptimize(vesk::db::snapshot());
    }
}
BENCHMARK(BM_Snapshot)->Unit(benchmark::kMillisecond)->Iterations(10);

// Runs `op(i)` for i = 0, 1, ..., a millisecond apart, on a thread of its own until `done`; the
// longest call in ms goes to `longest`.
template <typename Op>
std::thread timedLoop(const std::atomic<bool>& done, double* longest, Op op) {
    return std::thread([&done, longest, op] {
        for (int i = 0; !done; ++i) {
            auto start = std::chrono::steady_clock::now();
            op(i);
            *longest = std::max(*longest, std::chrono::duration<double, std::milli>(
                                              std::chrono::steady_clock::now() - start)
                                              .count());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
}

// The archive of a snapshot, with a writer committing one attribute at a time and a reader
// reading whole objects beside it: their longest calls are max_write_ms and max_read_ms.
void BM_Backup(benchmark::State& state) {
    ensureStation();
    double longestWrite = 0;
    double longestRead = 0;
    for (auto _ : state) {
        std::atomic<bool> done{false};
        std::thread writer = timedLoop(done, &longestWrite, [](int i) {
            IDatabase::setAttribute("Item=" + std::to_string(i % kObjects), 1, "attribute0",
                                    AttributeVariant(i), false, IPCData::AVT_INT32, false, 0);
        });
        std::thread reader = timedLoop(done, &longestRead, [](int i) {
            delete IDatabase::getObject("Item=" + std::to_string((i * 7919) % kObjects), 1, 0);
        });
        std::string error;
        bool ok = vesk::host::peers::writeBackupArchive(g_dir + "/backup.zip", vesk::db::snapshot(),
                                                        {}, quietProgress(), &error);
        done = true;
        writer.join();
        reader.join();
        if (!ok)
            state.SkipWithError(error.c_str());
    }
    state.counters["max_write_ms"] = longestWrite;
    state.counters["max_read_ms"] = longestRead;
    state.counters["zip_MB"] = std::filesystem::file_size(g_dir + "/backup.zip") / 1e6;
}
BENCHMARK(BM_Backup)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

// The restore as the component does it, less the agent's restart: the archive read whole, the
// running state kept as the roll-back archive, then put in place of the station's state.
void BM_Restore(benchmark::State& state) {
    ensureStation();
    for (auto _ : state) {
        std::vector<vesk::db::StoredObject> objects;
        nlohmann::ordered_json manifest;
        std::string error;
        bool ok = vesk::host::peers::readBackupArchive(g_dir + "/backup.zip", &objects, &manifest,
                                                       &error) &&
                  vesk::host::peers::writeBackupArchive(
                      g_dir + "/rollback.zip", vesk::db::snapshot(), {}, quietProgress(), &error) &&
                  vesk::db::replace(
                      std::move(objects), [](const std::string&) { return false; }, &error);
        if (!ok)
            state.SkipWithError(error.c_str());
    }
}
BENCHMARK(BM_Restore)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    vesk::db::close();
    if (!g_dir.empty())
        std::filesystem::remove_all(g_dir);
    return 0;
}

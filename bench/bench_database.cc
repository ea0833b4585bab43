// Station database figures: reads on a large store, commits of growing size, reopen, and a
// durable commit beside the cost of the disk's own sync.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace {

constexpr int kLargeStore = 100000;
constexpr int kAttributes = 20;
constexpr int kChildren = 1000;

std::string g_dir;
int g_nextObject = 0;
int g_stored = 0;  // objects in the store

// Reports the median and the 99th percentile of `micros` as p50_us and p99_us.
void reportPercentiles(benchmark::State& state, std::vector<double>& micros) {
    std::sort(micros.begin(), micros.end());
    state.counters["p50_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[micros.size() * 99 / 100];
}

double microsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

DBObject* makeObject(const std::string& key, const std::string& parent) {
    auto* o = new DBObject(key, 1, true, false, IPCData::OPSTATE_DISABLED,
                           IPCData::ADMSTATE_UNLOCKED, parent, 1);
    for (int a = 0; a < kAttributes; ++a) {
        std::string name = "attribute" + std::to_string(a);
        AttributeVariant value = a % 2 == 0 ? AttributeVariant(a * 1000)
                                            : AttributeVariant("value " + std::to_string(a));
        auto type = a % 2 == 0 ? IPCData::AVT_INT32 : IPCData::AVT_STRING;
        o->addAttribute(*new Attribute(false, name, value, 0, true, type, true, false));
    }
    return o;
}

// Inserts `count` new objects of class `cls` under `parent` in one transaction.
void commitObjects(int count, const std::string& cls, const std::string& parent) {
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int i = 0; i < count; ++i) {
        std::unique_ptr<DBObject> o(makeObject(cls + "=" + std::to_string(++g_nextObject), parent));
        IDatabase::insert(o.get(), h);
    }
    IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false);
}

// The large store, built once: 100,000 objects, 1,000 of them under one parent.
void ensureStore() {
    if (!g_dir.empty())
        return;
    char pattern[] = "/tmp/vesk-bench-db-XXXXXX";
    g_dir = mkdtemp(pattern);
    std::string error;
    if (!vesk::db::open(g_dir, &error)) {
        fprintf(stderr, "%s\n", error.c_str());
        abort();
    }
    std::unique_ptr<DBObject> parent(makeObject("Parent=1", ""));
    IDatabase::insert(parent.get(), 0);
    commitObjects(kChildren, "Child", "Parent=1");
    for (int done = kChildren; done < kLargeStore; done += 10000) {
        commitObjects(std::min(10000, kLargeStore - done), "Item", "");
    }
    g_stored = kLargeStore + 1;
    IDatabase::storePersistentDump(false, false);
}

void BM_GetObject(benchmark::State& state) {
    ensureStore();
    std::vector<double> micros;
    int i = 0;
    for (auto _ : state) {
        std::string key =
            "Item=" + std::to_string(kChildren + 1 + (i++ * 7919) % (kLargeStore - kChildren));
        auto start = std::chrono::steady_clock::now();
        std::unique_ptr<DBObject> o(IDatabase::getObject(key, 1, 0));
        micros.push_back(microsSince(start));
        if (o == nullptr)
            state.SkipWithError("object missing");
    }
    reportPercentiles(state, micros);
}
BENCHMARK(BM_GetObject)->Iterations(20000);

void BM_GetMOClassWithParent(benchmark::State& state) {
    ensureStore();
    size_t found = 0;
    for (auto _ : state) {
        found = IDatabase::getMOClassWithParent("Parent=1", "Child", 0).size();
    }
    if (found != static_cast<size_t>(kChildren))
        state.SkipWithError("wrong child count");
}
BENCHMARK(BM_GetMOClassWithParent)->Unit(benchmark::kMicrosecond)->Iterations(200);

// close() + open(); open_ms is the open alone (lock, quick check, every row checked and loaded),
// open_cpu_ms the processor time it took, which other work on the machine does not inflate.
void BM_Reopen(benchmark::State& state) {
    ensureStore();
    long closed = 0, opened = 0;
    double openMs = 0, openCpuMs = 0;  // the slower of the rounds
    for (auto _ : state) {
        vesk::db::close();
        malloc_trim(0);
        closed = residentKiB();
        std::string error;
        auto start = std::chrono::steady_clock::now();
        std::clock_t cpuStart = std::clock();
        if (!vesk::db::open(g_dir, &error))
            state.SkipWithError(error.c_str());
        openMs = std::max(openMs, microsSince(start) / 1000);
        openCpuMs = std::max(openCpuMs, (std::clock() - cpuStart) * 1000.0 / CLOCKS_PER_SEC);
        opened = residentKiB();
    }
    state.counters["objects"] = g_stored;
    state.counters["open_ms"] = openMs;
    state.counters["open_cpu_ms"] = openCpuMs;
    state.counters["rss_bytes_per_object"] =
        static_cast<double>(opened - closed) * 1024.0 / g_stored;
}
BENCHMARK(BM_Reopen)->Iterations(2)->Unit(benchmark::kMillisecond);

// What the disk itself asks to make 4 KiB durable: a write at the end of a file in the store's
// folder, then fdatasync, as the store's log is written and synced at a commit. The file is
// written again from its start every 4 MiB, as the log is once folded.
void BM_BareSync(benchmark::State& state) {
    ensureStore();
    std::string path = g_dir + "/bare-sync";
    int fd = open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, 0644);
    std::vector<char> page(4096, 'x');
    std::vector<double> micros;
    off_t end = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        if (pwrite(fd, page.data(), page.size(), end) != 4096 || fdatasync(fd) != 0)
            state.SkipWithError("write or sync failed");
        micros.push_back(microsSince(start));
        end = (end + 4096) % (4 << 20);
    }
    close(fd);
    unlink(path.c_str());
    reportPercentiles(state, micros);
}
BENCHMARK(BM_BareSync)->Iterations(500)->Unit(benchmark::kMicrosecond);

// An operator's set as the agent makes it: one attribute of one object of the large store changed
// in a transaction, committed and followed by a dump; timed from open to the dump's answer.
void BM_DurableCommit(benchmark::State& state) {
    ensureStore();
    std::vector<double> micros;
    int i = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        IDatabase::setAttribute("Item=5000", 1, "attribute1",
                                AttributeVariant("set " + std::to_string(++i)), false,
                                IPCData::AVT_STRING, true, h);
        if (IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false) == 0 ||
            IDatabase::storePersistentDump(false, false) == 0) {
            state.SkipWithError("commit failed");
        }
        micros.push_back(microsSince(start));
    }
    reportPercentiles(state, micros);
}
BENCHMARK(BM_DurableCommit)->Iterations(500)->Unit(benchmark::kMicrosecond);

// Times insert and commit of `n` new objects; building the caller's DBObjects is not timed.
void BM_Commit(benchmark::State& state) {
    ensureStore();
    const int n = static_cast<int>(state.range(0));
    double commitMs = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::unique_ptr<DBObject>> objects;
        for (int i = 0; i < n; ++i) {
            objects.emplace_back(makeObject("New=" + std::to_string(++g_nextObject), ""));
        }
        state.ResumeTiming();
        int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        for (auto& o : objects)
            IDatabase::insert(o.get(), h);
        auto start = std::chrono::steady_clock::now();
        if (IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false) == 0) {
            state.SkipWithError("commit failed");
        }
        commitMs +=
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count();
    }
    state.counters["commit_only_ms"] = commitMs / static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * n);
    g_stored += static_cast<int>(state.iterations()) * n;
}
BENCHMARK(BM_Commit)->Arg(1)->Iterations(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Commit)->Arg(100)->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Commit)->Arg(10000)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (!g_dir.empty()) {
        vesk::db::close();
        std::filesystem::remove_all(g_dir);
    }
    return 0;
}

// Station database figures: reads on a large store, commits of growing size, reopen.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
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
        auto end = std::chrono::steady_clock::now();
        if (o == nullptr)
            state.SkipWithError("object missing");
        micros.push_back(std::chrono::duration<double, std::micro>(end - start).count());
    }
    std::sort(micros.begin(), micros.end());
    state.counters["p50_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[micros.size() * 99 / 100];
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

void BM_Reopen(benchmark::State& state) {
    ensureStore();
    long closed = 0, opened = 0;
    for (auto _ : state) {
        vesk::db::close();
        malloc_trim(0);
        closed = residentKiB();
        std::string error;
        if (!vesk::db::open(g_dir, &error))
            state.SkipWithError(error.c_str());
        opened = residentKiB();
    }
    state.counters["objects"] = g_stored;
    state.counters["rss_bytes_per_object"] =
        static_cast<double>(opened - closed) * 1024.0 / g_stored;
}
BENCHMARK(BM_Reopen)->Iterations(2)->Unit(benchmark::kMillisecond);

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

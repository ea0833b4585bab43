// Reads through the agent's entry points, with the real agent loaded in the reference host on the
// demo station grown to 100,000 MOs: one attribute, 20 attributes, an iterator walk over 10,000
// children. Each benchmark times every call and reports the median (p50_us) and p99 (p99_us).
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/AgentBench.h"
#include "host/Host.h"
#include "platform/IDatabase.h"
#include "station/log/LogControl.h"

namespace {

using Clock = std::chrono::steady_clock;
typedef OrlOamSpiManagedObject_3 Mo;

constexpr int kMos = 100000;
constexpr int kWalk = 10000;
constexpr int kAttributes = 20;
const std::string kData = VESK_DATA_DIR;
const std::string kParent = "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1";

std::string g_dir;
std::unique_ptr<vesk::host::Host> g_host;
std::string g_target;  // an MO with kAttributes attributes
OrlTxHandleT g_tx = 0;

// The last one is a model attribute of the grown classes; the others are unknown to the model.
std::string attributeName(int a) {
    return a == kAttributes - 1 ? "userLabel" : "attribute" + std::to_string(a);
}

DBObject* makeMo(const std::string& key, const std::string& parent) {
    auto* mo = new DBObject(key, 1, true, false, IPCData::OPSTATE_ENABLED,
                            IPCData::ADMSTATE_UNLOCKED, parent, 1);
    for (int a = 0; a < kAttributes; ++a) {
        bool even = a % 2 == 0;
        AttributeVariant value =
            even ? AttributeVariant(a * 1000) : AttributeVariant("value " + std::to_string(a));
        mo->addAttribute(*new Attribute(false, attributeName(a), value, 0, true,
                                        even ? IPCData::AVT_INT32 : IPCData::AVT_STRING, true,
                                        false));
    }
    return mo;
}

// Groups of external nodes, each with its cells, until the store holds kMos objects; the first
// node has kWalk cells.
void grow() {
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    int made = static_cast<int>(IDatabase::getMOClass("", 0).size());
    for (int node = 1; made < kMos; ++node) {
        std::string key = "ExternalENodeBFunction=" + std::to_string(1000 + node);
        std::unique_ptr<DBObject> n(makeMo(key, kParent));
        IDatabase::insert(n.get(), handle);
        ++made;
        int cells = node == 1 ? kWalk : 1000;
        for (int c = 1; c <= cells && made < kMos; ++c, ++made) {
            std::unique_ptr<DBObject> cell(
                makeMo("ExternalEUtranCellFDD=" + std::to_string(c), kParent + "," + key));
            IDatabase::insert(cell.get(), handle);
        }
    }
    IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false);
    g_target = kParent + ",ExternalENodeBFunction=1001,ExternalEUtranCellFDD=5000";
}

void ensureAgent() {
    if (g_host)
        return;
    vesk::log::setThreshold(2);  // the unknown attributes' warnings are not written
    char pattern[] = "/tmp/vesk-bench-reads-XXXXXX";
    g_dir = mkdtemp(pattern);
    g_host = vesk::bench::openDemoHost(g_dir, kData);
    std::string error;
    grow();
    if (g_host->load(VESK_AGENT_PATH, &error) != vesk::host::Host::kLoaded ||
        g_host->start() != OrlOk || g_host->begin(&g_tx) != OrlOk) {
        fprintf(stderr, "agent: %s\n", error.c_str());
        abort();
    }
}

void BM_GetMoAttribute(benchmark::State& state) {
    ensureAgent();
    std::vector<double> us;
    for (auto _ : state) {
        OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
        auto start = Clock::now();
        g_host->callAgent(&Mo::getMoAttribute, g_tx, g_target.c_str(), "userLabel", &result);
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        if (result.container->nrOfValues != 1)
            state.SkipWithError("no value");
        result.release(result.container);
    }
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_GetMoAttribute);

void BM_GetMoAttributes20(benchmark::State& state) {
    ensureAgent();
    std::vector<std::string> names;
    std::vector<const char*> pointers;
    for (int a = 0; a < kAttributes; ++a)
        names.push_back(attributeName(a));
    for (const std::string& name : names)
        pointers.push_back(name.c_str());
    pointers.push_back(nullptr);
    std::vector<double> us;
    for (auto _ : state) {
        OrlMoAttributeValuesResult_3 result = {nullptr, nullptr};
        auto start = Clock::now();
        g_host->callAgent(&Mo::getMoAttributes, g_tx, g_target.c_str(), pointers.data(), &result);
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        if (result.containers[kAttributes - 1]->nrOfValues != 1)
            state.SkipWithError("no value");
        result.release(result.containers);
    }
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_GetMoAttributes20);

void BM_IteratorWalk10000(benchmark::State& state) {
    ensureAgent();
    const std::string node = kParent + ",ExternalENodeBFunction=1001";
    std::vector<double> us;
    for (auto _ : state) {
        auto start = Clock::now();
        uint64_t it = 0;
        g_host->callAgent(&Mo::newMoIterator, g_tx, node.c_str(), "ExternalEUtranCellFDD", &it);
        int walked = 0;
        char* id = nullptr;
        while (g_host->callAgent(&Mo::nextMo, it, &id) == OrlOk && id != nullptr)
            ++walked;
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        if (walked != kWalk)
            state.SkipWithError("walk is short");
    }
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_IteratorWalk10000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_host) {
        g_host->commit(g_tx);
        g_host.reset();
        std::filesystem::remove_all(g_dir);
    }
    return 0;
}

// Writes through the agent's entry points, with the real agent loaded in the reference host on the
// demo station: a transaction that creates 1,000 MOs with their defaults and commits, and one
// attribute set and committed. Each benchmark times every transaction and reports the median
// (p50_us) and p99 (p99_us).
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

// 40 nodes of 24 cells each (the model's limit), plus the nodes: 1,000 MOs.
constexpr int kNodes = 40;
constexpr int kCellsPerNode = 24;
const std::string kData = VESK_DATA_DIR;
const std::string kNetwork = "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1";
const std::string kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";

std::string g_dir;
std::unique_ptr<vesk::host::Host> g_host;

void ensureAgent() {
    if (g_host)
        return;
    vesk::log::setThreshold(2);
    // VESK_BENCH_DIR puts the state directory elsewhere, e.g. on a memory file system to leave
    // the disk's flush out of the figures.
    const char* base = getenv("VESK_BENCH_DIR");
    std::string pattern =
        std::string(base != nullptr ? base : "/tmp") + "/vesk-bench-writes-XXXXXX";
    g_dir = mkdtemp(&pattern[0]);
    g_host = vesk::bench::openDemoHost(g_dir, kData);
    std::string error;
    if (g_host->load(VESK_AGENT_PATH, &error) != vesk::host::Host::kLoaded ||
        g_host->start() != OrlOk) {
        fprintf(stderr, "agent: %s\n", error.c_str());
        abort();
    }
    g_host->openSession(vesk::host::kProtocolCli, "bench");
}

double since(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// Creates kNodes nodes with their cells under keys starting at `first`; false on a refusal.
bool createBatch(OrlTxHandleT tx, int first) {
    OrlMoNamedAttributeValueContainer_3* none[] = {nullptr};
    for (int n = 0; n < kNodes; ++n) {
        std::string key = std::to_string(first + n);
        if (g_host->callAgent(&Mo::createMo, tx, kNetwork.c_str(), "ExternalENodeBFunction",
                              "externalENodeBFunctionId", key.c_str(), none) != OrlOk)
            return false;
        std::string node = kNetwork + ",ExternalENodeBFunction=" + key;
        for (int c = 1; c <= kCellsPerNode; ++c) {
            if (g_host->callAgent(&Mo::createMo, tx, node.c_str(), "ExternalEUtranCellFDD",
                                  "externalEUtranCellFDDId", std::to_string(c).c_str(),
                                  none) != OrlOk)
                return false;
        }
    }
    return true;
}

// Removes a batch straight from committed data, outside the timed part.
void dropBatch(int first) {
    for (int n = 0; n < kNodes; ++n) {
        std::string node = kNetwork + ",ExternalENodeBFunction=" + std::to_string(first + n);
        for (int c = 1; c <= kCellsPerNode; ++c)
            IDatabase::deleteObj(node + ",ExternalEUtranCellFDD=" + std::to_string(c), 1, 0);
        IDatabase::deleteObj(node, 1, 0);
    }
}

void BM_Create1000MosAndCommit(benchmark::State& state) {
    ensureAgent();
    std::vector<double> us;
    int first = 5000;
    for (auto _ : state) {
        auto start = Clock::now();
        OrlTxHandleT tx = 0;
        bool ok =
            g_host->begin(&tx) == OrlOk && createBatch(tx, first) && g_host->commit(tx) == OrlOk;
        us.push_back(since(start));
        if (!ok) {
            state.SkipWithError("create or commit refused");
            break;
        }
        state.PauseTiming();
        std::string probe = kNetwork + ",ExternalENodeBFunction=" + std::to_string(first) +
                            ",ExternalEUtranCellFDD=" + std::to_string(kCellsPerNode);
        if (!IDatabase::isPresentInDB(probe, 1))
            state.SkipWithError("the created MOs are not committed");
        dropBatch(first);
        first += kNodes;
        state.ResumeTiming();
    }
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_Create1000MosAndCommit)->Unit(benchmark::kMillisecond);

void BM_SetAttributeAndCommit(benchmark::State& state) {
    ensureAgent();
    std::vector<double> us;
    char text[32];
    OrlMoAttributeValue_3 slot;
    OrlMoAttributeValueContainer_3 value = {OrlOamSpiMoAttributeType_3_STRING, 1, &slot};
    int round = 0;
    for (auto _ : state) {
        snprintf(text, sizeof text, "label %d", ++round);
        slot.theString = text;
        auto start = Clock::now();
        OrlTxHandleT tx = 0;
        bool ok = g_host->begin(&tx) == OrlOk &&
                  g_host->callAgent(&Mo::setMoAttribute, tx, kCell.c_str(), "userLabel", &value) ==
                      OrlOk &&
                  g_host->commit(tx) == OrlOk;
        us.push_back(since(start));
        if (!ok) {
            state.SkipWithError("set or commit refused");
            break;
        }
    }
    Attribute* stored = IDatabase::getAttribute(kCell, "userLabel", 0);
    if (stored == nullptr || stored->ToStr() != text)
        state.SkipWithError("the last label is not committed");
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_SetAttributeAndCommit);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_host) {
        g_host.reset();
        std::filesystem::remove_all(g_dir);
    }
    return 0;
}

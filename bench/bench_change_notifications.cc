// Change notifications from commit to consumer, with the real agent loaded in the reference host
// on the demo station and the host's event router:
// - BM_CommitToConsumer: one database commit that updates 20 objects of 50 attributes each
//   (1,000 notifications, one per attribute), timed until one consumer has had every one of them
//   and given it back; notifications/s.
// - BM_CommitLatency/N: one attribute set through the agent and committed, with N consumers
//   watching every notification; the commit's median and p99 (the deliveries run on their own
//   threads meanwhile).
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/AgentBench.h"
#include "host/Host.h"
#include "platform/IDatabase.h"
#include "station/log/LogControl.h"

namespace {

using Clock = std::chrono::steady_clock;
typedef OrlOamSpiManagedObject_3 Mo;

constexpr int kObjects = 20;
constexpr int kAttributes = 50;
const std::string kData = VESK_DATA_DIR;
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";

std::string g_dir;
std::unique_ptr<vesk::host::Host> g_host;
std::atomic<long> g_delivered{0};

void ensureAgent() {
    if (g_host)
        return;
    // No log lines: with no consumer every notification logs an error, which is not what is
    // measured here.
    vesk::log::setThreshold(1);
    const char* base = getenv("VESK_BENCH_DIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/vesk-bench-notif-XXXXXX";
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

// A consumer of every notification that only counts them.
unsigned long addCounter() {
    vesk::host::events::EventRouter& router = g_host->events();
    unsigned long consumer =
        router.addConsumer("bench", [](unsigned long, const char*, const void*) { ++g_delivered; });
    router.subscribe(consumer, vesk::host::events::kCmEventType, {});
    return consumer;
}

std::string objectDn(int i) {
    return kEnb + ",EUtranCellFDD=" + std::to_string(100 + i);
}

// One commit that gives every attribute of every bench object the value `value`.
bool commitUpdates(int value) {
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int i = 0; i < kObjects; ++i) {
        std::unique_ptr<DBObject> object(IDatabase::getObject(objectDn(i), 1, handle));
        if (object == nullptr)
            return false;
        for (int a = 0; a < kAttributes; ++a) {
            object->getAttribute("counter" + std::to_string(a))->SetValue(AttributeVariant(value));
        }
        if (IDatabase::update(object.get(), handle) == 0)
            return false;
    }
    return IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false) != 0;
}

void insertObjects() {
    for (int i = 0; i < kObjects; ++i) {
        DBObject object("EUtranCellFDD=" + std::to_string(100 + i), 1, true, false,
                        IPCData::OPSTATE_DISABLED, IPCData::ADMSTATE_UNLOCKED, kEnb, 1);
        for (int a = 0; a < kAttributes; ++a) {
            Attribute* attribute = new Attribute(false, "counter" + std::to_string(a), 0, 0, true,
                                                 IPCData::AVT_INT32, true, false);
            object.addAttribute(*attribute);
        }
        IDatabase::insert(&object, 0);
    }
}

void BM_CommitToConsumer(benchmark::State& state) {
    ensureAgent();
    insertObjects();
    unsigned long consumer = addCounter();
    g_host->settleNotifications();
    long notifications = 0;
    int value = 0;
    std::vector<double> commitUs;
    for (auto _ : state) {
        const long target = g_delivered + kObjects * kAttributes;
        auto start = Clock::now();
        if (!commitUpdates(++value)) {
            state.SkipWithError("commit refused");
            break;
        }
        commitUs.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        while (g_delivered < target) {
            std::this_thread::yield();
        }
        notifications += kObjects * kAttributes;
    }
    g_host->settleNotifications();
    state.counters["notifications/s"] =
        benchmark::Counter(static_cast<double>(notifications), benchmark::Counter::kIsRate);
    // The commit's own share of each iteration.
    vesk::bench::reportPercentiles(state, commitUs);
    g_host->events().removeConsumer(consumer);
}
BENCHMARK(BM_CommitToConsumer)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CommitLatency(benchmark::State& state) {
    ensureAgent();
    std::vector<unsigned long> consumers;
    for (int i = 0; i < state.range(0); ++i)
        consumers.push_back(addCounter());
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
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        if (!ok) {
            state.SkipWithError("set or commit refused");
            break;
        }
    }
    g_host->settleNotifications();
    vesk::bench::reportPercentiles(state, us);
    for (unsigned long consumer : consumers)
        g_host->events().removeConsumer(consumer);
}
BENCHMARK(BM_CommitLatency)->Arg(0)->Arg(10)->Arg(0)->Arg(10)->Arg(0)->Arg(10);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_host) {
        g_host->closeSession();
        g_host.reset();
        std::error_code ignored;
        std::filesystem::remove_all(g_dir, ignored);
    }
    return 0;
}

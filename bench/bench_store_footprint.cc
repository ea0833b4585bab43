// The station store's footprint at N = 1,000, 10,000 and 100,000 objects of 20 attributes (half
// int, half short strings, every value its own): the bytes stored per object, and a restart of
// the reference host with the real agent up to its first read, each in a fresh process: the time
// from the start of the restart to the read's answer, and the process's resident memory then.
//
// The store is the demo station grown with external nodes and their cells until it holds N
// objects, built once per N and closed (its log folded) before the restarts. A restart opens the
// state (lock, checks of the file and of every row, loading), loads the model and the agent,
// starts it (its first durable commit included), begins a transaction and reads one attribute of
// one cell. Each benchmark iteration is one restart in a new process (`--restart DIR DN`); the
// counters give the median, the fastest and the slowest of them.
//
// VESK_BENCH_DIR puts the stores elsewhere than /tmp; VESK_BENCH_KEEP=1 keeps them and names them
// (`bench_store_footprint --restart DIR DN` then restarts on one by hand).
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/AgentBench.h"
#include "host/Host.h"
#include "platform/IDatabase.h"
#include "station/log/LogControl.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
typedef OrlOamSpiManagedObject_3 Mo;

constexpr int kAttributes = 20;
const std::string kData = VESK_DATA_DIR;
const std::string kParent = "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1";
const std::string kTarget = kParent + ",ExternalENodeBFunction=1001,ExternalEUtranCellFDD=500";

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The last one is a model attribute of the grown classes; the others are unknown to the model.
std::string attributeName(int a) {
    return a == kAttributes - 1 ? "userLabel" : "attribute" + std::to_string(a);
}

DBObject* makeMo(const std::string& key, const std::string& parent, int number) {
    auto* mo = new DBObject(key, 1, true, false, IPCData::OPSTATE_ENABLED,
                            IPCData::ADMSTATE_UNLOCKED, parent, 1);
    for (int a = 0; a < kAttributes; ++a) {
        bool even = a % 2 == 0;
        AttributeVariant value =
            even ? AttributeVariant(number * kAttributes + a)
                 : AttributeVariant("value " + std::to_string(a) + "/" + std::to_string(number));
        mo->addAttribute(*new Attribute(false, attributeName(a), value, 0, true,
                                        even ? IPCData::AVT_INT32 : IPCData::AVT_STRING, true,
                                        false));
    }
    return mo;
}

// External nodes of 1,000 cells each are added to the `made` objects of the store until it holds
// `total`.
void grow(int made, int total) {
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int node = 1; made < total; ++node) {
        std::string key = "ExternalENodeBFunction=" + std::to_string(1000 + node);
        std::unique_ptr<DBObject> n(makeMo(key, kParent, made));
        IDatabase::insert(n.get(), handle);
        ++made;
        for (int c = 1; c <= 1000 && made < total; ++c, ++made) {
            std::unique_ptr<DBObject> cell(
                makeMo("ExternalEUtranCellFDD=" + std::to_string(c), kParent + "," + key, made));
            IDatabase::insert(cell.get(), handle);
        }
    }
    IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false);
}

struct Store {
    std::string dir;
    int objects = 0;
    double bytes = 0;  // the store's files, the log folded
};

std::map<int, Store> g_stores;  // by the objects asked for

// The demo station grown to `total` objects (0: as it is), built once and closed.
const Store& store(int total) {
    Store& s = g_stores[total];
    if (!s.dir.empty())
        return s;
    const char* base = getenv("VESK_BENCH_DIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/vesk-footprint-XXXXXX";
    s.dir = mkdtemp(&pattern[0]);
    size_t demo = 0;
    {
        std::unique_ptr<vesk::host::Host> host = vesk::bench::openDemoHost(s.dir, kData, &demo);
        grow(static_cast<int>(demo), total);
    }
    s.objects = std::max(total, static_cast<int>(demo));
    for (const auto& entry : std::filesystem::directory_iterator(s.dir)) {
        if (entry.path().filename().string().rfind("config.db", 0) == 0)
            s.bytes += static_cast<double>(entry.file_size());
    }
    return s;
}

// One restart's figures: the whole of it and its phases, in milliseconds, and the resident memory
// after the first read.
struct Restart {
    double totalMs = 0, openMs = 0, modelMs = 0, startMs = 0, readMs = 0;
    long rssKiB = 0;
};

long residentKiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return 0;
}

// The child's side: restarts on `dir`, reads `dn`'s userLabel and prints what it measured.
int restartChild(const std::string& dir, const std::string& dn) {
    Restart r;
    auto start = Clock::now(), phase = start;
    auto lap = [&phase](double* ms) {
        *ms = msSince(phase);
        phase = Clock::now();
    };
    auto host = std::make_unique<vesk::host::Host>();
    std::string error;
    bool opened = host->openState(dir, &error);
    lap(&r.openMs);
    bool loaded = opened && host->loadModel(kData + "/model", &error);
    lap(&r.modelMs);
    OrlTxHandleT tx = 0;
    bool started = loaded && host->load(VESK_AGENT_PATH, &error) == vesk::host::Host::kLoaded &&
                   host->start() == OrlOk && host->begin(&tx) == OrlOk;
    lap(&r.startMs);
    if (!started) {
        fprintf(stderr, "restart: %s\n", error.c_str());
        return 1;
    }
    OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
    host->callAgent(&Mo::getMoAttribute, tx, dn.c_str(), "userLabel", &result);
    lap(&r.readMs);
    r.totalMs = msSince(start);
    r.rssKiB = residentKiB();
    bool found = result.container != nullptr && result.container->nrOfValues == 1;
    if (result.container != nullptr)
        result.release(result.container);
    if (!found) {
        fprintf(stderr, "no userLabel in %s\n", dn.c_str());
        return 1;
    }
    printf("%.3f %.3f %.3f %.3f %.3f %ld\n", r.totalMs, r.openMs, r.modelMs, r.startMs, r.readMs,
           r.rssKiB);
    fflush(stdout);
    host->commit(tx);
    return 0;
}

// Runs one restart in a new process; false with the reason in `error`.
bool restartOnce(const std::string& dir, const std::string& dn, Restart* out, std::string* error) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        *error = "pipe";
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
    posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
    std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    std::vector<char*> argv = {&self[0], const_cast<char*>("--restart"),
                               const_cast<char*>(dir.c_str()), const_cast<char*>(dn.c_str()),
                               nullptr};
    pid_t pid = 0;
    int rc = posix_spawn(&pid, self.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    std::string text;
    char buffer[256];
    ssize_t n;
    while (rc == 0 && (n = read(pipeFds[0], buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<size_t>(n));
    close(pipeFds[0]);
    int status = 0;
    if (rc != 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0 ||
        sscanf(text.c_str(), "%lf %lf %lf %lf %lf %ld", &out->totalMs, &out->openMs, &out->modelMs,
               &out->startMs, &out->readMs, &out->rssKiB) != 6) {
        *error = "the restart failed";
        return false;
    }
    return true;
}

// Median, fastest and slowest of `values` under `name`.
void reportSpread(benchmark::State& state, const std::string& name, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    state.counters[name + "_p50"] = values[values.size() / 2];
    state.counters[name + "_min"] = values.front();
    state.counters[name + "_max"] = values.back();
}

// The demo station's own restart, for the memory that does not grow with the store.
const Restart& baseline() {
    static Restart base;
    static bool done = false;
    std::string error;
    if (!done && !restartOnce(store(0).dir, "ManagedElement=1", &base, &error)) {
        fprintf(stderr, "baseline: %s\n", error.c_str());
        abort();
    }
    done = true;
    return base;
}

void BM_RestartToFirstRead(benchmark::State& state) {
    const Store& s = store(static_cast<int>(state.range(0)));
    const Store& demo = store(0);
    const Restart& base = baseline();
    std::vector<double> total, open, model, start, read, rss;
    for (auto _ : state) {
        Restart r;
        std::string error;
        if (!restartOnce(s.dir, kTarget, &r, &error)) {
            state.SkipWithError(error.c_str());
            return;
        }
        state.SetIterationTime(r.totalMs / 1000);
        total.push_back(r.totalMs);
        open.push_back(r.openMs);
        model.push_back(r.modelMs);
        start.push_back(r.startMs);
        read.push_back(r.readMs);
        rss.push_back(static_cast<double>(r.rssKiB));
    }
    reportSpread(state, "restart_ms", total);
    reportSpread(state, "open_ms", open);
    std::sort(model.begin(), model.end());
    std::sort(start.begin(), start.end());
    std::sort(read.begin(), read.end());
    state.counters["model_ms_p50"] = model[model.size() / 2];
    state.counters["start_ms_p50"] = start[start.size() / 2];
    state.counters["read_ms_p50"] = read[read.size() / 2];
    std::sort(rss.begin(), rss.end());
    double medianRss = rss[rss.size() / 2];
    state.counters["objects"] = s.objects;
    state.counters["stored_bytes_per_object"] = s.bytes / s.objects;
    state.counters["rss_MiB"] = medianRss / 1024;
    state.counters["rss_KiB_per_object"] = medianRss / s.objects;
    // What the store's objects add to the demo station's process.
    state.counters["rss_added_KiB_per_object"] =
        (medianRss - static_cast<double>(base.rssKiB)) / (s.objects - demo.objects);
}
BENCHMARK(BM_RestartToFirstRead)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    vesk::log::setThreshold(2);
    if (argc == 4 && std::strcmp(argv[1], "--restart") == 0)
        return restartChild(argv[2], argv[3]);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    bool keep = getenv("VESK_BENCH_KEEP") != nullptr;
    for (const auto& entry : g_stores) {
        if (keep)
            printf("kept %s (%d objects)\n", entry.second.dir.c_str(), entry.second.objects);
        else
            std::filesystem::remove_all(entry.second.dir);
    }
    return 0;
}

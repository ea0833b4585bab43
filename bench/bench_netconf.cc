// The host's NETCONF server with the real agent on the demo station grown to 10,000 MOs, driven
// over SSH on loopback by the protocol library's own client: an edit-config of one attribute
// (merge, committed) and a get-config of the whole station, each timed from the client's send
// to its reply (p50_us, p99_us); and clients that connect at once, each timed from the common
// start to its session (SSH and hello handshakes done). VESK_BENCH_HANDSHAKES sets how many
// handshakes the server runs at once (default: the server's own).
#include <benchmark/benchmark.h>
#include <nc_client.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/AgentBench.h"
#include "host/Host.h"
#include "host/netconf/NetconfServer.h"
#include "host/netconf/Schemas.h"
#include "platform/IDatabase.h"
#include "station/log/LogControl.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMos = 10000;
const std::string kData = VESK_DATA_DIR;
const std::string kParent = "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1";
const char* const kPassword = "bench";

struct Bench {
    std::string dir;
    std::unique_ptr<vesk::host::Host> host;
    std::unique_ptr<vesk::host::cli::ModelView> view;
    std::unique_ptr<vesk::host::netconf::NetconfServer> server;
    vesk::host::netconf::Schemas clientSchemas;
    nc_session* session = nullptr;
    uint16_t port = 0;
};
Bench* g_bench = nullptr;

void die(const std::string& why) {
    fprintf(stderr, "bench_netconf: %s\n", why.c_str());
    abort();
}

// External cells under one external node until the store holds kMos objects.
void grow() {
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    int made = static_cast<int>(IDatabase::getMOClass("", 0).size());
    const std::string node = "ExternalENodeBFunction=2000";
    DBObject parent(node, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                    kParent, 1);
    IDatabase::insert(&parent, handle);
    for (int c = 1; ++made < kMos; ++c) {
        DBObject cell("ExternalEUtranCellFDD=" + std::to_string(c), 1, true, false,
                      IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED, kParent + "," + node,
                      1);
        cell.addAttribute(*new Attribute(false, "userLabel",
                                         AttributeVariant("cell " + std::to_string(c)), 0, true,
                                         IPCData::AVT_STRING, true, false));
        IDatabase::insert(&cell, handle);
    }
    IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false);
}

char* password(const char*, const char*, void*) {
    return strdup(kPassword);
}
int anyHostKey(const char*, ssh_session, void*) {
    return 0;
}

// The client settings of the calling thread (the library keeps them per thread).
void clientSettings() {
    nc_client_ssh_set_username("bench");
    nc_client_ssh_set_auth_password_clb(password, nullptr);
    nc_client_ssh_set_auth_hostkey_check_clb(anyHostKey, nullptr);
    nc_client_ssh_set_auth_pref(NC_SSH_AUTH_PUBLICKEY, -1);
    nc_client_ssh_set_auth_pref(NC_SSH_AUTH_INTERACTIVE, -1);
}

void ensureServer() {
    if (g_bench != nullptr)
        return;
    vesk::log::setThreshold(2);
    g_bench = new Bench;
    char pattern[] = "/tmp/vesk-bench-netconf-XXXXXX";
    g_bench->dir = mkdtemp(pattern);
    g_bench->host = vesk::bench::openDemoHost(g_bench->dir, kData);
    grow();
    std::string error;
    if (g_bench->host->load(VESK_AGENT_PATH, &error) != vesk::host::Host::kLoaded ||
        g_bench->host->start() != OrlOk)
        die("agent: " + error);
    g_bench->view.reset(new vesk::host::cli::ModelView(*g_bench->host->model()));
    std::ofstream(g_bench->dir + "/users")
        << "bench:" << vesk::host::netconf::Users::hash(kPassword) << "\n";
    vesk::host::netconf::NetconfConfig config;
    config.port = 18300 + getpid() % 1000;
    config.usersFile = g_bench->dir + "/users";
    config.stateDirectory = g_bench->dir;
    config.modelDirectory = kData + "/model";
    config.protocolDirectory = kData + "/netconf";
    if (const char* handshakes = getenv("VESK_BENCH_HANDSHAKES"))
        config.acceptingThreads = atoi(handshakes);
    g_bench->port = config.port;
    g_bench->server.reset(new vesk::host::netconf::NetconfServer(*g_bench->host, *g_bench->view));
    if (!g_bench->server->start(config, &error) ||
        !g_bench->clientSchemas.load(config.modelDirectory, config.protocolDirectory, &error))
        die(error);
    nc_client_init();
    clientSettings();
    g_bench->session = nc_connect_ssh("127.0.0.1", config.port, g_bench->clientSchemas.context());
    if (g_bench->session == nullptr)
        die("cannot connect");
}

// Sends `rpc` and waits for its reply; the time taken in µs, or a negative number on an error.
// The reply's size as XML goes to `replyBytes`.
double roundTrip(nc_rpc* rpc, size_t* replyBytes) {
    uint64_t id = 0;
    lyd_node* envelope = nullptr;
    lyd_node* op = nullptr;
    auto start = Clock::now();
    if (nc_send_rpc(g_bench->session, rpc, 10000, &id) != NC_MSG_RPC ||
        nc_recv_reply(g_bench->session, rpc, id, 60000, &envelope, &op) != NC_MSG_REPLY)
        return -1;
    double us = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    bool error = envelope != nullptr && lyd_child(envelope) != nullptr &&
                 std::string(LYD_NAME(lyd_child(envelope))) == "rpc-error";
    char* text = nullptr;
    lyd_print_mem(&text, op, LYD_XML, LYD_PRINT_WITHSIBLINGS);
    *replyBytes = text != nullptr ? strlen(text) : 0;
    free(text);
    lyd_free_all(envelope);
    lyd_free_all(op);
    return error ? -1 : us;
}

void BM_EditConfigOneAttribute(benchmark::State& state) {
    ensureServer();
    std::vector<double> us;
    int round = 0;
    for (auto _ : state) {
        const std::string edit =
            "<ManagedElement xmlns='urn:vesk:params:xml:ns:yang:vesk-station'><managedElementId>1"
            "</managedElementId><ENodeBFunction><eNodeBFunctionId>1</eNodeBFunctionId>"
            "<EUtranCellFDD><eUtranCellFDDId>1</eUtranCellFDDId><userLabel>round " +
            std::to_string(++round) +
            "</userLabel></EUtranCellFDD></ENodeBFunction></ManagedElement>";
        nc_rpc* rpc =
            nc_rpc_edit(NC_DATASTORE_RUNNING, NC_RPC_EDIT_DFLTOP_MERGE, NC_RPC_EDIT_TESTOPT_UNKNOWN,
                        NC_RPC_EDIT_ERROPT_UNKNOWN, edit.c_str(), NC_PARAMTYPE_CONST);
        size_t bytes = 0;
        double took = roundTrip(rpc, &bytes);
        nc_rpc_free(rpc);
        if (took < 0) {
            state.SkipWithError("edit-config failed");
            break;
        }
        us.push_back(took);
    }
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_EditConfigOneAttribute)->Iterations(500);

void BM_GetConfigWholeStation(benchmark::State& state) {
    ensureServer();
    std::vector<double> us;
    size_t bytes = 0;
    for (auto _ : state) {
        nc_rpc* rpc =
            nc_rpc_getconfig(NC_DATASTORE_RUNNING, nullptr, NC_WD_UNKNOWN, NC_PARAMTYPE_CONST);
        double took = roundTrip(rpc, &bytes);
        nc_rpc_free(rpc);
        if (took < 0) {
            state.SkipWithError("get-config failed");
            break;
        }
        us.push_back(took);
    }
    state.counters["reply_bytes"] = static_cast<double>(bytes);
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_GetConfigWholeStation)->Iterations(5)->Unit(benchmark::kMillisecond);

// Clients connecting at the same moment, each from a thread and a model context of its own:
// p50_us/p99_us of the time from the start to each client's session, last_ms the time until
// every client has one.
void BM_ConnectAtOnce(benchmark::State& state) {
    ensureServer();
    const size_t clients = static_cast<size_t>(state.range(0));
    std::vector<std::unique_ptr<vesk::host::netconf::Schemas>> contexts;
    for (size_t i = 0; i < clients; ++i) {
        contexts.emplace_back(new vesk::host::netconf::Schemas);
        std::string error;
        if (!contexts.back()->load(kData + "/model", kData + "/netconf", &error))
            die(error);
    }
    std::vector<double> us;
    double lastMs = 0;
    for (auto _ : state) {
        std::vector<double> took(clients, -1);
        std::vector<std::thread> threads;
        const auto start = Clock::now();
        for (size_t i = 0; i < clients; ++i) {
            threads.emplace_back([&, i] {
                clientSettings();
                nc_session* session =
                    nc_connect_ssh("127.0.0.1", g_bench->port, contexts[i]->context());
                if (session != nullptr) {
                    took[i] =
                        std::chrono::duration<double, std::micro>(Clock::now() - start).count();
                    nc_session_free(session, nullptr);
                }
                nc_thread_destroy();
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        if (*std::min_element(took.begin(), took.end()) < 0) {
            state.SkipWithError("a client could not connect");
            break;
        }
        us.insert(us.end(), took.begin(), took.end());
        lastMs = std::max(lastMs, *std::max_element(took.begin(), took.end()) / 1000);
    }
    state.counters["last_ms"] = lastMs;
    vesk::bench::reportPercentiles(state, us);
}
BENCHMARK(BM_ConnectAtOnce)->Arg(8)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

// The host's NETCONF server over SSH: one listening endpoint, threads that accept clients (each
// runs one client's SSH and hello handshake at a time, so that several clients are let in at
// once), and threads that serve the sessions' requests. Each session binds a host session of
// protocol NETCONF with its authenticated user while it serves a request, so the agent's gates
// judge the real user. Users and passwords come from the users file; the SSH host key lives in the
// state directory. One server per process (the protocol library is process-wide).
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/Host.h"
#include "host/cli/ModelView.h"
#include "host/netconf/Schemas.h"
#include "host/netconf/Users.h"

struct nc_pollsession;
struct nc_session;

namespace vesk {
namespace host {
namespace netconf {

struct NetconfConfig {
    std::string address = "127.0.0.1";
    uint16_t port = 0;
    std::string usersFile;
    std::string stateDirectory;     // where the host key is kept
    std::string modelDirectory;     // the station model
    std::string protocolDirectory;  // the protocol's own modules
    int acceptingThreads = 4;       // handshakes that run at once
};

// Reads "[ADDR:]PORT" (an IPv6 address in brackets) into `config`. False, with the reason,
// otherwise.
bool parseListen(const std::string& text, NetconfConfig* config, std::string* error);

// What the server keeps for one session.
struct NetconfSession {
    uint64_t hostSession = 0;
    std::string user;
    std::string source;          // the client's address
    unsigned long consumer = 0;  // the event router consumer of its subscription, or 0
};

class NetconfServer {
  public:
    // `host` (started) and `model` must outlive the server.
    NetconfServer(Host& host, const cli::ModelView& model) : _host(host), _model(model) {}
    // stop().
    ~NetconfServer();
    NetconfServer(const NetconfServer&) = delete;
    NetconfServer& operator=(const NetconfServer&) = delete;

    // Reads the users, makes the host key if missing, loads the modules and starts listening.
    // False, with the reason, otherwise (nothing is left running).
    bool start(const NetconfConfig& config, std::string* error);
    // Stops the threads, then closes every open session (ending its subscription, its lock and
    // its host session) and frees the protocol library's state.
    void stop();

    // For the operations, on the threads that serve requests.
    Host& host() { return _host; }
    const cli::ModelView& model() const { return _model; }
    const Schemas& schemas() const { return _schemas; }
    // The running datastore's lock: the holder's session id, or 0.
    uint32_t lockHolder() const { return _lockHolder.load(); }
    // Takes the lock for `session`; false, with the holder, when someone holds it.
    bool lock(uint32_t session, uint32_t* holder);
    // Gives the lock back; false when `session` does not hold it.
    bool unlock(uint32_t session);
    // Marks the session `id` killed by `by`; false when there is no such session. Any thread.
    bool kill(uint32_t id, uint32_t by);

  private:
    void acceptLoop();
    void serveLoop();
    // Takes a session whose handshake is done into the poll, or frees it when kMostSessions
    // are open already.
    void admit(nc_session* session);
    // Takes `session` out of the poll; false when another thread took it first.
    bool release(nc_session* session);
    void opened(nc_session* session);
    // Ends the subscription, the lock and the host session of a released session, and frees it.
    void closed(nc_session* session);

    Host& _host;
    const cli::ModelView& _model;
    Schemas _schemas;
    Users _users;
    nc_pollsession* _poll = nullptr;
    std::atomic<bool> _running{false};
    std::atomic<uint32_t> _lockHolder{0};
    std::mutex _closing;                 // one session ends at a time
    std::mutex _sessionsLock;            // guards _sessions
    std::vector<nc_session*> _sessions;  // the sessions in the poll
    std::vector<std::thread> _acceptors;
    std::vector<std::thread> _servers;
};

}  // namespace netconf
}  // namespace host
}  // namespace vesk

#include "host/netconf/NetconfServer.h"

#include <nc_server.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "host/netconf/FramingGuard.h"
#include "host/netconf/HostKey.h"
#include "host/netconf/Operations.h"
#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

constexpr char kEndpoint[] = "main";
// A client that stops in the middle of a message holds one thread until the library's read
// time-out; the others serve on.
constexpr int kServingThreads = 4;
constexpr size_t kMostSessions = 64;
// How long a thread waits for a connection or a request before it looks whether to stop.
constexpr int kWaitMs = 200;

// The process's server, for the protocol library's callbacks.
NetconfServer* g_server = nullptr;
const Users* g_users = nullptr;
std::string g_hostKeyPath;

int checkPassword(const nc_session* session, const char* password, void*) {
    const char* user = nc_session_get_username(session);
    const char* source = nc_session_get_host(session);
    if (user != nullptr && password != nullptr && g_users->verify(user, password)) {
        return 0;
    }
    VESK_WARNING("NETCONF: login of %s from %s refused: wrong user or password",
                 user != nullptr ? user : "?", source != nullptr ? source : "?");
    return 1;
}

int hostKey(const char*, void*, char** path, char**, NC_SSH_KEY_TYPE*) {
    *path = strdup(g_hostKeyPath.c_str());
    return 0;
}

nc_server_reply* onRpc(lyd_node* rpc, nc_session* session) {
    return handleRpc(*g_server, rpc, session);
}

// The protocol library's lines go to the station's log: its errors as warnings (a client's
// mistakes are not the host's), its warnings as information.
void libraryLine(const nc_session* session, NC_VERB_LEVEL level, const char* text) {
    uint32_t id = session != nullptr ? nc_session_get_id(session) : 0;
    if (level == NC_VERB_ERROR) {
        VESK_WARNING("NETCONF session %u: %s", id, text);
    } else {
        VESK_INFO("NETCONF session %u: %s", id, text);
    }
}

}  // namespace

bool parseListen(const std::string& text, NetconfConfig* config, std::string* error) {
    std::string port = text;
    size_t colon = text.rfind(':');
    if (colon != std::string::npos) {
        std::string address = text.substr(0, colon);
        if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
            address = address.substr(1, address.size() - 2);
        }
        config->address = address;
        port = text.substr(colon + 1);
    }
    char* end = nullptr;
    long number = std::strtol(port.c_str(), &end, 10);
    if (port.empty() || *end != '\0' || number < 1 || number > 65535 || config->address.empty()) {
        *error = "--netconf takes [ADDR:]PORT, not '" + text + "'";
        return false;
    }
    config->port = static_cast<uint16_t>(number);
    return true;
}

NetconfServer::~NetconfServer() {
    stop();
}

bool NetconfServer::start(const NetconfConfig& config, std::string* error) {
    g_hostKeyPath = config.stateDirectory + "/" + kHostKeyFile;
    if (!_users.load(config.usersFile, error) || !ensureHostKey(g_hostKeyPath, error) ||
        !_schemas.load(config.modelDirectory, config.protocolDirectory, error)) {
        return false;
    }
    if (!framingGuardActive()) {
        VESK_WARNING("NETCONF: the framing guard is not in front of libssh");
    }
    g_server = this;
    g_users = &_users;
    nc_verbosity(NC_VERB_WARNING);
    nc_set_print_clb_session(libraryLine);
    // get-schema is answered here too, not by the library's own callback.
    const lysc_node* getSchema =
        lys_find_path(_schemas.context(), nullptr, "/ietf-netconf-monitoring:get-schema", 0);
    if (getSchema != nullptr) {
        nc_set_rpc_callback(const_cast<lysc_node*>(getSchema), reinterpret_cast<void*>(onRpc));
    }
    if (nc_server_init(_schemas.context()) != 0) {
        *error = "cannot start the NETCONF library";
        return false;
    }
    nc_server_set_capability("urn:ietf:params:netconf:capability:notification:1.0");
    nc_server_set_capability("urn:ietf:params:netconf:capability:interleave:1.0");
    for (const std::string& capability : _schemas.stationCapabilities()) {
        nc_server_set_capability(capability.c_str());
    }
    nc_set_global_rpc_clb(onRpc);
    nc_server_ssh_set_passwd_auth_clb(checkPassword, nullptr, nullptr);
    nc_server_ssh_set_hostkey_clb(hostKey, nullptr, nullptr);
    if (nc_server_add_endpt(kEndpoint, NC_TI_LIBSSH) != 0 ||
        nc_server_ssh_endpt_add_hostkey(kEndpoint, "host-key", -1) != 0 ||
        nc_server_ssh_endpt_set_auth_methods(kEndpoint, NC_SSH_AUTH_PASSWORD) != 0 ||
        nc_server_endpt_set_address(kEndpoint, config.address.c_str()) != 0 ||
        nc_server_endpt_set_port(kEndpoint, config.port) != 0) {
        *error = "cannot listen for NETCONF on " + config.address + " port " +
                 std::to_string(config.port);
        nc_server_destroy();
        return false;
    }
    _poll = nc_ps_new();
    _running = true;
    for (int i = 0; i < std::max(1, config.acceptingThreads); ++i) {
        _acceptors.emplace_back([this] { acceptLoop(); });
    }
    for (int i = 0; i < kServingThreads; ++i) {
        _servers.emplace_back([this] { serveLoop(); });
    }
    return true;
}

void NetconfServer::stop() {
    if (!_running.exchange(false)) {
        return;
    }
    for (std::thread& thread : _acceptors) {
        thread.join();
    }
    for (std::thread& thread : _servers) {
        thread.join();
    }
    _acceptors.clear();
    _servers.clear();
    // No thread is left to serve or accept: the sessions still open end here.
    while (!_sessions.empty()) {
        nc_session* session = _sessions.back();
        release(session);
        closed(session);
    }
    nc_ps_free(_poll);
    _poll = nullptr;
    nc_server_destroy();
    g_server = nullptr;
}

void NetconfServer::acceptLoop() {
    // The accepting threads take turns waiting for a connection; each runs the handshake of
    // the client it took while the others wait for the next.
    while (_running) {
        nc_session* session = nullptr;
        if (nc_accept(kWaitMs, &session) == NC_MSG_HELLO) {
            admit(session);
        }
    }
    nc_thread_destroy();
}

void NetconfServer::serveLoop() {
    while (_running) {
        nc_session* session = nullptr;
        int result = nc_ps_poll(_poll, kWaitMs, &session);
        if (result & NC_PSPOLL_NOSESSIONS) {
            // The poll does not wait when there is nothing to poll.
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            continue;
        }
        if (result & NC_PSPOLL_SSH_CHANNEL) {
            nc_session* channel = nullptr;
            if (nc_ps_accept_ssh_channel(_poll, &channel) == NC_MSG_HELLO) {
                admit(channel);
            }
        }
        // Another thread may have seen the same end first.
        if ((result & (NC_PSPOLL_SESSION_TERM | NC_PSPOLL_SESSION_ERROR)) && session != nullptr &&
            release(session)) {
            closed(session);
        }
    }
    nc_thread_destroy();
}

void NetconfServer::admit(nc_session* session) {
    {
        std::lock_guard<std::mutex> hold(_sessionsLock);
        if (_sessions.size() < kMostSessions) {
            opened(session);
            _sessions.push_back(session);
            nc_ps_add_session(_poll, session);
            return;
        }
    }
    VESK_WARNING("NETCONF: session of %s from %s closed: %zu sessions are open already",
                 nc_session_get_username(session), nc_session_get_host(session), kMostSessions);
    nc_session_free(session, nullptr);
}

bool NetconfServer::release(nc_session* session) {
    std::lock_guard<std::mutex> hold(_sessionsLock);
    auto found = std::find(_sessions.begin(), _sessions.end(), session);
    if (found == _sessions.end()) {
        return false;
    }
    _sessions.erase(found);
    nc_ps_del_session(_poll, session);
    return true;
}

void NetconfServer::opened(nc_session* session) {
    auto* data = new NetconfSession;
    data->user = nc_session_get_username(session);
    const char* source = nc_session_get_host(session);
    data->source = source != nullptr ? source : "";
    data->hostSession = _host.sessions().open(kProtocolNetconf, data->user);
    nc_session_set_data(session, data);
    VESK_INFO("NETCONF session %u of %s from %s opened", nc_session_get_id(session),
              data->user.c_str(), data->source.c_str());
}

void NetconfServer::closed(nc_session* session) {
    std::lock_guard<std::mutex> one(_closing);
    auto* data = static_cast<NetconfSession*>(nc_session_get_data(session));
    uint32_t id = nc_session_get_id(session);
    if (data != nullptr) {
        endSubscription(*this, *data);
        _host.sessions().close(data->hostSession);
        uint32_t held = id;
        _lockHolder.compare_exchange_strong(held, 0);
        VESK_INFO("NETCONF session %u of %s closed", id, data->user.c_str());
    }
    nc_session_set_data(session, nullptr);
    delete data;
    nc_session_free(session, nullptr);
}

bool NetconfServer::lock(uint32_t session, uint32_t* holder) {
    uint32_t expected = 0;
    if (_lockHolder.compare_exchange_strong(expected, session)) {
        return true;
    }
    *holder = expected;
    return false;
}

bool NetconfServer::unlock(uint32_t session) {
    uint32_t expected = session;
    return _lockHolder.compare_exchange_strong(expected, 0);
}

bool NetconfServer::kill(uint32_t id, uint32_t by) {
    // Under the lock the session cannot be released and freed meanwhile.
    std::lock_guard<std::mutex> hold(_sessionsLock);
    for (nc_session* session : _sessions) {
        if (nc_session_get_id(session) == id) {
            nc_session_set_term_reason(session, NC_SESSION_TERM_KILLED);
            nc_session_set_killed_by(session, by);
            nc_session_set_status(session, NC_STATUS_INVALID);
            return true;
        }
    }
    return false;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

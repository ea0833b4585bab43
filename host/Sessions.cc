#include "host/Sessions.h"

#include <atomic>
#include <cstring>
#include <stdexcept>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace {

std::atomic<Sessions*> g_sessions{nullptr};
thread_local uint64_t t_bound = 0;

const char kProtocolVariable[] = "TibSessionVariableProtocol_1";
const char kUserVariable[] = "TibSessionVariableUsername_1";

Sessions* liveSessions() {
    return g_sessions.load();
}

OrlReturnT c_create(uint64_t* out) {
    if (liveSessions() == nullptr || out == nullptr) {
        return OrlFailure;
    }
    *out = liveSessions()->open(kProtocolUnknown, "");
    return OrlOk;
}

OrlReturnT c_getBound(uint64_t* out) {
    return liveSessions() != nullptr && out != nullptr ? liveSessions()->bound(out) : OrlFailure;
}

OrlReturnT c_bind(uint64_t session) {
    return liveSessions() != nullptr ? liveSessions()->bind(session) : OrlFailure;
}

OrlReturnT c_unbind() {
    if (liveSessions() == nullptr) {
        return OrlFailure;
    }
    liveSessions()->unbind();
    return OrlOk;
}

OrlReturnT c_register(OrlMgmtSpiSessionCallback_1 created, OrlMgmtSpiSessionCallback_1 destroyed,
                      uint64_t* registration) {
    return liveSessions() != nullptr
               ? liveSessions()->registerCallbacks(created, destroyed, registration)
               : OrlFailure;
}

OrlReturnT c_unregister(uint64_t registration) {
    return liveSessions() != nullptr ? liveSessions()->unregisterCallbacks(registration)
                                     : OrlFailure;
}

OrlReturnT c_destroy(uint64_t session) {
    return liveSessions() != nullptr ? liveSessions()->close(session) : OrlFailure;
}

OrlReturnT c_getVariable(uint64_t session, const char* name, void* out) {
    return liveSessions() != nullptr ? liveSessions()->variable(session, name, out) : OrlFailure;
}

}  // namespace

Sessions::Sessions() {
    Sessions* expected = nullptr;
    if (!g_sessions.compare_exchange_strong(expected, this)) {
        throw std::logic_error("only one host session manager may live at a time");
    }
    _record.header =
        OrlMgmtSpiInterface_1{"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"};
    _record.createSession = c_create;
    _record.getBoundSession = c_getBound;
    _record.bindSession = c_bind;
    _record.unbindSession = c_unbind;
    _record.registerSessionCallbacks = c_register;
    _record.unregisterSessionCallbacks = c_unregister;
    _record.destroySession = c_destroy;
    _record.getVariable = c_getVariable;
}

Sessions::~Sessions() {
    g_sessions.store(nullptr);
}

std::vector<Sessions::Callbacks> Sessions::callbacks() const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<Callbacks> all;
    for (const auto& entry : _callbacks) {
        all.push_back(entry.second);
    }
    return all;
}

uint64_t Sessions::open(int32_t protocol, const std::string& user) {
    uint64_t session = 0;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        session = ++_lastSession;
        _sessions[session] = Session{protocol, user};
    }
    VESK_INFO("host: session %llu opened, protocol %d, user \"%s\"",
              static_cast<unsigned long long>(session), protocol, user.c_str());
    for (const Callbacks& cb : callbacks()) {
        if (cb.created != nullptr) {
            cb.created(session);
        }
    }
    return session;
}

OrlReturnT Sessions::close(uint64_t session) {
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_sessions.count(session) == 0) {
            return OrlNotExist;
        }
    }
    for (const Callbacks& cb : callbacks()) {
        if (cb.destroyed != nullptr) {
            cb.destroyed(session);
        }
    }
    if (t_bound == session) {
        t_bound = 0;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    _sessions.erase(session);
    VESK_INFO("host: session %llu closed", static_cast<unsigned long long>(session));
    return OrlOk;
}

OrlReturnT Sessions::bind(uint64_t session) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_sessions.count(session) == 0) {
        return OrlNotExist;
    }
    t_bound = session;
    return OrlOk;
}

void Sessions::unbind() {
    t_bound = 0;
}

OrlReturnT Sessions::bound(uint64_t* session) const {
    std::lock_guard<std::mutex> lock(_mutex);
    if (t_bound == 0 || _sessions.count(t_bound) == 0) {
        return OrlNotExist;
    }
    *session = t_bound;
    return OrlOk;
}

OrlReturnT Sessions::registerCallbacks(OrlMgmtSpiSessionCallback_1 created,
                                       OrlMgmtSpiSessionCallback_1 destroyed,
                                       uint64_t* registration) {
    if (registration == nullptr) {
        return OrlFailure;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    *registration = ++_lastRegistration;
    _callbacks[*registration] = Callbacks{created, destroyed};
    return OrlOk;
}

OrlReturnT Sessions::unregisterCallbacks(uint64_t registration) {
    std::lock_guard<std::mutex> lock(_mutex);
    return _callbacks.erase(registration) == 1 ? OrlOk : OrlNotExist;
}

size_t Sessions::callbackCount() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _callbacks.size();
}

OrlReturnT Sessions::variable(uint64_t session, const char* name, void* out) const {
    if (name == nullptr || out == nullptr) {
        return OrlFailure;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _sessions.find(session);
    if (it == _sessions.end()) {
        return OrlNotExist;
    }
    if (std::strcmp(name, kProtocolVariable) == 0) {
        *static_cast<int32_t*>(out) = it->second.protocol;
        return OrlOk;
    }
    if (std::strcmp(name, kUserVariable) == 0) {
        *static_cast<const char**>(out) = it->second.user.c_str();
        return OrlOk;
    }
    return OrlNotExist;
}

}  // namespace host
}  // namespace vesk

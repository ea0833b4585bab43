// Operator sessions: their variables, the session bound to each host thread, and the callbacks
// that components register to hear of sessions opening and closing. Its C record reaches the one
// live Sessions of the process.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/orl/OrlMgmtSpi.h"

namespace vesk {
namespace host {

// Values of "TibSessionVariableProtocol_1".
enum SessionProtocol : int32_t { kProtocolUnknown = 0, kProtocolNetconf = 1, kProtocolCli = 2 };

class Sessions {
  public:
    // Becomes the process's live session manager; a second one while this lives is a logic
    // error.
    Sessions();
    ~Sessions();
    Sessions(const Sessions&) = delete;
    Sessions& operator=(const Sessions&) = delete;

    // The service record "OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1".
    OrlMgmtSpiSession_1* record() { return &_record; }

    // Opens a session and calls every registered created callback on the calling thread.
    // Handles count from 1.
    uint64_t open(int32_t protocol, const std::string& user);
    // Closes the session (calling the destroyed callbacks first) and unbinds it from the
    // calling thread. OrlNotExist for an unknown handle.
    OrlReturnT close(uint64_t session);

    // The calling thread's binding. bind answers OrlNotExist for an unknown session.
    OrlReturnT bind(uint64_t session);
    void unbind();
    // OrlOk and the handle when an open session is bound to the calling thread; else
    // OrlNotExist.
    OrlReturnT bound(uint64_t* session) const;

    OrlReturnT registerCallbacks(OrlMgmtSpiSessionCallback_1 created,
                                 OrlMgmtSpiSessionCallback_1 destroyed, uint64_t* registration);
    OrlReturnT unregisterCallbacks(uint64_t registration);
    size_t callbackCount() const;

    // "TibSessionVariableProtocol_1" into an int32_t, "TibSessionVariableUsername_1" into a
    // const char* valid while the session is open. OrlNotExist for an unknown session or name.
    OrlReturnT variable(uint64_t session, const char* name, void* out) const;

  private:
    struct Session {
        int32_t protocol;
        std::string user;
    };
    struct Callbacks {
        OrlMgmtSpiSessionCallback_1 created;
        OrlMgmtSpiSessionCallback_1 destroyed;
    };

    std::vector<Callbacks> callbacks() const;

    OrlMgmtSpiSession_1 _record;
    mutable std::mutex _mutex;
    uint64_t _lastSession = 0;
    uint64_t _lastRegistration = 0;
    std::map<uint64_t, Session> _sessions;
    std::map<uint64_t, Callbacks> _callbacks;
};

}  // namespace host
}  // namespace vesk

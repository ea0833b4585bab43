// The reference management host, as a C++ object: it opens the station's state, loads one
// plug-in, starts and stops its components, runs transactions and sessions, and calls the
// plug-in's managed object entry points through the records it registered. One Host may live in
// a process at a time (the host records are plain C and reach it through process-wide state).
//
// Lifecycle: openState, load, start, (requests), stop, terminate, unload. The destructor does
// whatever of stop, terminate, unload and closing the state is still due.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/Portal.h"
#include "host/Sessions.h"
#include "host/StubServices.h"
#include "host/ThreadContext.h"
#include "host/TransactionCoordinator.h"
#include "host/events/EventRouter.h"
#include "host/events/Journal.h"
#include "host/model/ModelRepository.h"
#include "host/model/ModelSchema.h"
#include "host/oi/Implementers.h"
#include "host/peers/FaultManager.h"
#include "host/peers/Peers.h"
#include "platform/orl/OrlOamSpi.h"

namespace vesk {
namespace host {

class PluginLoader;

class Host {
  public:
    enum LoadStatus { kLoaded, kCannotOpen, kMissingSymbol, kInitFailed };

    Host();
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Gives the station its state directory and opens the database there. False, with the line
    // to show in `error`, if it cannot be opened: "the state directory DIR is in use by process
    // PID" when another process has it, else "cannot open state directory DIR: " and the reason.
    // `create` makes a new store even where the directory holds other files but no store.
    bool openState(const std::string& directory, std::string* error, bool create = false);

    // Parses the station model (module "vesk-station" in `directory`) and offers the model
    // repository built on it in place of the stub records. False, with "FILE:LINE: reason" in
    // `error`, if the model is missing or invalid; the stubs then stay. Called at most once,
    // before load.
    bool loadModel(const std::string& directory, std::string* error);
    // The loaded model, or null.
    const model::ModelSchema* model() const { return _model.loaded() ? &_model : nullptr; }

    // Opens the plug-in and calls its init with the portal accessor. The first component that
    // registers during init is the agent. `error` says what went wrong.
    LoadStatus load(const std::string& path, std::string* error);
    // Starts every registered component not started yet, in registration order (components
    // registered during a start included), reports the host as up and waits (a few seconds at
    // most) until the machines have handled what that gave them. The first failure is
    // returned, with the component named in `error`.
    OrlReturnT start(std::string* error = nullptr);
    // Lets notifications of the commits made reach their consumers (settleNotifications),
    // reports the host as shutting down and stops the started components, last first.
    void stop();
    // Calls the plug-in's terminate (once).
    void terminate();
    // Terminates if still due and closes the plug-in library.
    void unload();
    // The station's restart of the agent: stop, terminate, unload, then load the same plug-in
    // and start it again on the same state. False, with the reason, when it did not come back.
    // Not from inside a call of the agent.
    bool restartAgent(std::string* error);
    // The station's restart around a change of its state: once no transaction is open (new
    // ones wait meanwhile), stops and unloads the agent, runs `work`, then loads and starts the
    // agent again (when one was loaded). False, with the reason, when `work` fails (the agent is
    // started again all the same), the agent does not come back, or the host is closing. From a
    // thread of the host's own that is not in a call of the agent (a peer's).
    bool restartAgentAround(const std::function<bool(std::string* reason)>& work,
                            std::string* error);
    // Runs `work` once every transaction open now has ended, on the thread that ends the last
    // of them (at the end of commit or abort); with none open, at the end of the next commit
    // or abort. Any thread, also from inside a call of the agent.
    void afterTransactions(std::function<void()> work);

    // Test controls of the portal.
    void refuseInterface(const std::string& service, const std::string& interfaceName,
                         const std::string& version, OrlReturnT code);
    void clearRefusals();
    // Offers (or replaces) a host service record; see Portal::addService.
    void provideService(OrlMgmtSpiInterface_1* record);

    // Transactions: begin opens one and joins the agent's transactional resource to it. On a
    // failed join the transaction is aborted and ended, and the join's answer returned.
    OrlReturnT begin(OrlTxHandleT* tx);
    OrlReturnT commit(OrlTxHandleT tx);
    OrlReturnT abort(OrlTxHandleT tx);

    // Opens a session with this protocol and user and binds it to the calling thread; closes
    // the calling thread's session (OrlNotExist when none is bound).
    uint64_t openSession(int32_t protocol, const std::string& user);
    OrlReturnT closeSession();

    // Calls slot `slot` of the agent's managed object record as one request of the calling
    // thread: the thread's operator messages start empty. OrlNotExist when the agent has no
    // such record, OrlFailure when the slot is null.
    template <typename... Params, typename... Args>
    OrlReturnT callAgent(OrlReturnT (*OrlOamSpiManagedObject_3::*slot)(Params...), Args&&... args);
    // The operator messages of the calling thread's last request.
    std::vector<std::string> messages() const { return ThreadContext::messages(); }

    // The agent's records, or null.
    OrlOamSpiManagedObject_3* agentManagedObject();
    OrlOamSpiTransactionalResource_2* agentTransactionalResource();
    const std::string& agentComponent() const { return _agent; }

    // Another symbol exported by the plug-in, or null.
    void* pluginSymbol(const char* name) const;

    // The event router, and a wait until every change committed so far has been delivered to
    // the router's consumers (at most a few seconds; nothing to wait for without consumers).
    events::EventRouter& events() { return _events; }
    void settleNotifications();
    // From now on every change notification is kept in a journal of the last `capacity` (see
    // events::Journal), in place of one kept before; before start, so that none is missed.
    void keepJournal(size_t capacity, events::Journal::Format format);
    // The journal, or null when none is kept.
    const events::Journal* journal() const { return _journal.get(); }

    Portal& portal() { return _portal; }
    ComponentRegistry& components() { return _portal.components(); }
    TransactionCoordinator& transactions() { return _coordinator; }
    Sessions& sessions() { return _sessions; }
    // The host's own object implementers; they are unregistered at stop and unload.
    oi::Implementers& implementers() { return *_implementers; }
    // The station's components the host plays.
    peers::Peers& peers() { return _peers; }
    // The fault manager among the peers; it keeps its table in the state directory once one is
    // open.
    peers::FaultManager* faultManager() { return _faultManager; }

  private:
    void* agentRecord(const char* interfaceName, const char* version);
    void setStatus(int status);
    // Runs the work of afterTransactions whose transactions have all ended.
    void runAfterTransactions();

    struct Deferred {
        std::vector<OrlTxHandleT> waitFor;
        std::function<void()> work;
    };

    Portal _portal;
    TransactionCoordinator _coordinator;
    Sessions _sessions;
    ThreadContext _threadContext;
    StubServices _stubs;
    events::EventRouter _events;
    model::ModelSchema _model;
    std::unique_ptr<model::ModelRepository> _repository;
    std::unique_ptr<PluginLoader> _plugin;
    // After the router and the model: its consumer formats with the model and leaves first.
    std::unique_ptr<events::Journal> _journal;
    std::string _agent;
    bool _stateOpen = false;
    std::mutex _deferredMutex;
    std::vector<Deferred> _deferred;
    // Holds new transactions back while restartAgentAround works.
    std::mutex _gateMutex;
    std::condition_variable _gateOpened;
    bool _gateClosed = false;
    std::atomic<bool> _closing{false};
    peers::Peers _peers;
    peers::FaultManager* _faultManager = nullptr;     // one of _peers
    std::unique_ptr<oi::Implementers> _implementers;  // last: it calls the records above
};

template <typename... Params, typename... Args>
OrlReturnT Host::callAgent(OrlReturnT (*OrlOamSpiManagedObject_3::*slot)(Params...),
                           Args&&... args) {
    ThreadContext::beginRequest();
    OrlOamSpiManagedObject_3* record = agentManagedObject();
    if (record == nullptr) {
        return OrlNotExist;
    }
    auto operation = record->*slot;
    if (operation == nullptr) {
        return OrlFailure;
    }
    return operation(std::forward<Args>(args)...);
}

}  // namespace host
}  // namespace vesk

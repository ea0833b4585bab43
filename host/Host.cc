#include "host/Host.h"

#include <chrono>
#include <thread>

#include "host/PluginLoader.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"
#include "station/StationConfig.h"
#include "station/database/Database.h"
#include "station/database/Notifier.h"
#include "station/framework/FrameworkControl.h"

namespace vesk {
namespace host {
namespace {

const OrlStateChangeReason kReasonHost = 0;
// How long each stage of a settle may take, in milliseconds.
const unsigned kSettleMs = 2000;
// The fault manager's table, in the state directory.
const char kFaultManagerFile[] = "fault-manager.json";

}  // namespace

Host::Host() : _plugin(new PluginLoader), _implementers(new oi::Implementers(*this)) {
    _portal.addService(&_coordinator.record1()->header);
    _portal.addService(&_coordinator.record2()->header);
    _portal.addService(&_sessions.record()->header);
    _portal.addService(&_threadContext.record()->header);
    _portal.addService(&_stubs.repository1()->header);
    _portal.addService(&_stubs.repository2()->header);
    _portal.addService(&_stubs.repository3()->header);
    _portal.addService(&_events.record()->header);
    peers::addStationPeers(*this, _peers);
    _faultManager = dynamic_cast<peers::FaultManager*>(_peers.find(peers::FaultManager::kName));
}

Host::~Host() {
    _closing = true;
    _peers.stopAll();
    stop();
    unload();
    if (_stateOpen) {
        vesk::db::close();
    }
}

bool Host::openState(const std::string& directory, std::string* error, bool create) {
    vesk::station::setStateDirectory(directory);
    std::string reason;
    vesk::db::OpenOptions options;
    options.create = create;
    vesk::db::OpenStatus status = vesk::db::open(directory, options, &reason);
    if (status != vesk::db::OpenStatus::kOpened) {
        // Another process's directory is refused with the store's own line.
        *error = status == vesk::db::OpenStatus::kInUse
                     ? reason
                     : "cannot open state directory " + directory + ": " + reason;
        return false;
    }
    _stateOpen = true;
    if (_faultManager != nullptr) {
        _faultManager->keepIn(directory + "/" + kFaultManagerFile);
    }
    _peers.stateOpened();
    return true;
}

bool Host::loadModel(const std::string& directory, std::string* error) {
    if (!_model.load(directory, "vesk-station", error)) {
        VESK_ERROR("host: cannot load the model: %s", error->c_str());
        return false;
    }
    _repository.reset(new model::ModelRepository(_model));
    _portal.addService(&_repository->record1()->header);
    _portal.addService(&_repository->record2()->header);
    _portal.addService(&_repository->record3()->header);
    VESK_INFO("host: model %s %s loaded from %s, %zu classes", _model.tables().momName.c_str(),
              _model.tables().momVersion.c_str(), directory.c_str(), _model.tables().mocs.size());
    return true;
}

void Host::setStatus(int status) {
    vesk::station::setHostStatus(status);
    if (_stateOpen && IDatabase::isPresentInDB("OAM", 1)) {
        IDatabase::setAttribute("OAM", 1, "TIBStatus", AttributeVariant(status), false,
                                IPCData::AVT_INT32, false, 0);
    }
    VESK_INFO("host: status %s", OrlController::OrlStatusLiteral(status).c_str());
}

Host::LoadStatus Host::load(const std::string& path, std::string* error) {
    PluginLoader::Status opened = _plugin->open(path, error);
    if (opened != PluginLoader::kLoaded) {
        VESK_ERROR("host: %s", error->c_str());
        return opened == PluginLoader::kCannotOpen ? kCannotOpen : kMissingSymbol;
    }
    setStatus(OrlController::TIB_STARTING);
    size_t before = components().size();
    OrlReturnT result = _plugin->init(_portal.accessor());
    if (result != OrlOk) {
        *error = "plug-in " + path + " refused to initialise (" + std::to_string(result) + ")";
        VESK_ERROR("host: %s", error->c_str());
        return kInitFailed;
    }
    std::vector<std::string> names = components().names();
    _agent = names.size() > before ? names[before] : std::string();
    return kLoaded;
}

OrlReturnT Host::start(std::string* error) {
    std::string failed;
    OrlReturnT result = components().startAll(kReasonHost, &failed);
    if (result != OrlOk) {
        if (error != nullptr) {
            *error = "component " + failed + " failed to start (" + std::to_string(result) + ")";
        }
        return result;
    }
    // The machines take what the start gave them before the status changes, so that what they
    // see of the status does not depend on which thread runs first.
    vesk::station::waitForIdleQueues(kSettleMs);
    setStatus(OrlController::TIB_RUNNING);
    // Up means settled: the machines have handled what the start and the status gave them, so
    // that the changes of the first request already reach the change notifications.
    vesk::db::notifierFlush();
    if (!vesk::station::waitForIdleQueues(kSettleMs)) {
        VESK_WARNING("host: the components' machines are still busy after %u ms", kSettleMs);
    }
    return OrlOk;
}

void Host::stop() {
    // The host's implementers leave while the agent can still take their unregistration.
    _implementers->removeAll();
    if (components().started().empty()) {
        return;
    }
    settleNotifications();
    setStatus(OrlController::TIB_SHUTTING_DOWN);
    // The change of status reaches the machines' queues before anything that stop gives them.
    vesk::db::notifierFlush();
    components().stopAll(kReasonHost);
}

void Host::settleNotifications() {
    if (_events.consumers().empty()) {
        return;
    }
    // Changes go from the store to the producer's queue, then to the consumers' queues.
    vesk::db::notifierFlush();
    if (!vesk::station::waitForIdleQueues(kSettleMs) || !_events.waitIdle(kSettleMs)) {
        VESK_WARNING("host: notifications still under way after %u ms", 2 * kSettleMs);
    }
}

void Host::keepJournal(size_t capacity, events::Journal::Format format) {
    _journal.reset();
    _journal.reset(new events::Journal(_events, capacity, std::move(format)));
}

void Host::terminate() {
    if (_plugin->isOpen()) {
        _plugin->terminate();
    }
}

void Host::unload() {
    if (!_plugin->isOpen()) {
        return;
    }
    _implementers->removeAll();
    terminate();
    // The plug-in's records live in its library: nothing may point at them once it is closed.
    _events.detachProducers();
    for (const std::string& name : components().removeAll()) {
        VESK_INFO("host: component %s was still registered at unload", name.c_str());
    }
    _plugin->close();
    _agent.clear();
    setStatus(OrlController::TIB_STOPPED);
}

bool Host::restartAgent(std::string* error) {
    std::string path = _plugin->path();
    if (!_plugin->isOpen()) {
        *error = "no plug-in is loaded";
        return false;
    }
    VESK_INFO("host: restarting %s", path.c_str());
    stop();
    unload();
    return load(path, error) == kLoaded && start(error) == OrlOk;
}

bool Host::restartAgentAround(const std::function<bool(std::string*)>& work, std::string* error) {
    {
        std::lock_guard<std::mutex> lock(_gateMutex);
        _gateClosed = true;
    }
    while (!_coordinator.openHandles().empty() && !_closing) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    bool ok = !_closing;
    if (!ok) {
        *error = "the host is closing";
    } else {
        bool loaded = _plugin->isOpen();
        std::string path = _plugin->path();
        if (loaded) {
            VESK_INFO("host: restarting %s around a change of the station's state", path.c_str());
            stop();
            unload();
        }
        ok = work(error);
        std::string reason;
        if (loaded && !(load(path, &reason) == kLoaded && start(&reason) == OrlOk)) {
            *error = ok ? reason : *error + "; " + reason;
            ok = false;
        }
    }
    {
        std::lock_guard<std::mutex> lock(_gateMutex);
        _gateClosed = false;
    }
    _gateOpened.notify_all();
    return ok;
}

void Host::afterTransactions(std::function<void()> work) {
    std::lock_guard<std::mutex> lock(_deferredMutex);
    _deferred.push_back(Deferred{_coordinator.openHandles(), std::move(work)});
}

void Host::runAfterTransactions() {
    std::vector<std::function<void()>> due;
    {
        std::lock_guard<std::mutex> lock(_deferredMutex);
        for (auto it = _deferred.begin(); it != _deferred.end();) {
            bool ended = true;
            for (OrlTxHandleT tx : it->waitFor) {
                ended = ended && !_coordinator.isOpen(tx);
            }
            if (ended) {
                due.push_back(std::move(it->work));
                it = _deferred.erase(it);
            } else {
                ++it;
            }
        }
    }
    for (const std::function<void()>& work : due) {
        work();
    }
}

void Host::refuseInterface(const std::string& service, const std::string& interfaceName,
                           const std::string& version, OrlReturnT code) {
    _portal.refuse(service, interfaceName, version, code);
}

void Host::clearRefusals() {
    _portal.clearRefusals();
}

void Host::provideService(OrlMgmtSpiInterface_1* record) {
    _portal.addService(record);
}

void* Host::agentRecord(const char* interfaceName, const char* version) {
    return _agent.empty() ? nullptr : components().find(_agent, interfaceName, version);
}

OrlOamSpiManagedObject_3* Host::agentManagedObject() {
    return static_cast<OrlOamSpiManagedObject_3*>(agentRecord("OrlOamSpiManagedObject", "3"));
}

OrlOamSpiTransactionalResource_2* Host::agentTransactionalResource() {
    return static_cast<OrlOamSpiTransactionalResource_2*>(
        agentRecord("OrlOamSpiTransactionalResource", "2"));
}

OrlReturnT Host::begin(OrlTxHandleT* tx) {
    OrlOamSpiTransactionalResource_2* resource = nullptr;
    {
        // A transaction opened now is seen by restartAgentAround, which waits for it to end.
        std::unique_lock<std::mutex> lock(_gateMutex);
        _gateOpened.wait(lock, [this] { return !_gateClosed; });
        resource = agentTransactionalResource();
        if (resource == nullptr) {
            return OrlNotExist;
        }
        *tx = _coordinator.open();
    }
    OrlReturnT result = _coordinator.join(*tx, resource);
    if (result != OrlOk && result != OrlAlreadyJoined) {
        _coordinator.abort(*tx);
        return result;
    }
    return OrlOk;
}

OrlReturnT Host::commit(OrlTxHandleT tx) {
    ThreadContext::beginRequest();
    OrlReturnT result = _coordinator.commit(tx);
    runAfterTransactions();
    return result;
}

OrlReturnT Host::abort(OrlTxHandleT tx) {
    ThreadContext::beginRequest();
    OrlReturnT result = _coordinator.abort(tx);
    runAfterTransactions();
    return result;
}

uint64_t Host::openSession(int32_t protocol, const std::string& user) {
    uint64_t session = _sessions.open(protocol, user);
    _sessions.bind(session);
    return session;
}

OrlReturnT Host::closeSession() {
    uint64_t session = 0;
    if (_sessions.bound(&session) != OrlOk) {
        return OrlNotExist;
    }
    return _sessions.close(session);
}

void* Host::pluginSymbol(const char* name) const {
    return _plugin->symbol(name);
}

}  // namespace host
}  // namespace vesk

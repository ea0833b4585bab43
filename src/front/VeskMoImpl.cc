#include "front/VeskMoImpl.h"

#include "backup/VeskBrM.h"
#include "notification/VeskCmEventProducer.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"
#include "platform/StationSleep.h"
#include "platform/Toolbox.h"
#include "plugin/VeskCMComponent.h"
#include "plugin/VeskOrlHelper.h"
#include "software/VeskSwM.h"
#include "transaction/VeskDBTransaction.h"
#include "validation/VeskOI.h"

namespace TibVeskCM {
namespace {

const char* const kProtocolVariable = "TibSessionVariableProtocol_1";
const int32_t kProtocolUnknown = 0;
const int32_t kProtocolNetconf = 1;

// initMeNbiName of the event producer runs once for the life of the library.
unsigned _meNbiNameInitCount = 0;

// Gives `machine` the plain event `eventId`; the machine takes its own copy.
void enqueue(VESK::Framework::IEventAware* machine, int32_t eventId) {
    machine->enqueueEvent(VESK::Framework::Event(eventId), false);
}

// Gives `machine` evQuit and waits up to a second (station time) for it to reach its final
// state. The host unloads the library right after terminate, and the unload deletes the
// machines, which drops whatever is still queued: without the wait a machine busy with an
// earlier event loses its quit, with an error line on a normal shutdown.
void quit(VESK::Framework::ReactiveStateMachine* machine, int32_t evQuit) {
    enqueue(machine, evQuit);
    for (int i = 0; i < 100 && !machine->hasTerminated(); ++i) {
        VESK::Framework::stationSleepMs(10);
    }
}

}  // namespace

VeskMoImpl* VeskMoImpl::instance() {
    static VeskMoImpl moImpl;
    return &moImpl;
}

VeskMoImpl::VeskMoImpl()
    : ossConnInserted(false),
      _txService(nullptr),
      _txResource(nullptr),
      _portal(nullptr),
      _eventProducer(nullptr),
      _sessionIf(nullptr),
      _threadContext(nullptr),
      _firstCommitPending(true) {}

VeskMoImpl::~VeskMoImpl() {
    for (auto& entry : _txMap) {
        delete entry.second;
    }
    _txMap.clear();
}

OrlReturnT VeskMoImpl::orlLCMinit(OrlMgmtSpiInterfacePortalAccessor* accessor,
                                  const char* /*unused*/) {
    VESK_INFO("[libtib_oam_cm_sa.so] -- tibLCMinit ...  \n");
    _portal = accessor->getPortal("1");
    OrlReturnT rc = _portal->registerComponent(VeskCMComponent::instance()->getComponent());
    if (rc != OrlOk) {
        VESK_ERROR("VsekCMComponent: failed(%i) to register component", rc);
    }
    return rc;
}

void VeskMoImpl::orlLCMterminate() {
    if (_portal != nullptr) {
        _portal->unregisterComponent(VeskCMComponent::instance()->getComponent());
    }
    if (swm != nullptr) {
        quit(swm, VeskSwM::evQuit);
    }
    if (brm != nullptr) {
        quit(brm, VeskBrM::evQuit);
    }
}

void VeskMoImpl::initialize(OrlOamSpiTransaction_2* txService,
                            OrlOamSpiTransactionalResource_2* txResource,
                            VeskCmEventProducer* eventProducer, OrlMgmtSpiSession_1* session,
                            OrlMgmtSpiThreadContext_2* threadContext) {
    _txService = txService;
    _txResource = txResource;
    _eventProducer = eventProducer;
    _sessionIf = session;
    _threadContext = threadContext;
    VESK_INFO("VeskMoImpl::%s", "initialize");
    swm = new VeskSwM();
    swm->initializeStateMachine();
    swm->start();
    enqueue(swm, VeskSwM::evStartToOperate);
    brm = new VeskBrM();
    brm->initializeStateMachine();
    brm->start();
    enqueue(brm, VeskBrM::evStartToOperate);
}

OrlReturnT VeskMoImpl::getMoAttribute(OrlTxHandleT txHandle, const std::string& dn,
                                      const std::string& attrName,
                                      OrlMoAttributeValueResult_3* result) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    VeskDBTransaction* transaction = findTransaction(txHandle);
    OrlReturnT rc = OrlNotExist;
    if (transaction == nullptr || result == nullptr) {
        VESK_INFO("VeskMoImpl::%s - TransactionHandle %lu was not found", __func__, txHandle);
    } else {
        rc = transaction->getMoAttribute(dn, attrName, result);
    }
    if (rc != OrlOk) {
        VESK_INFO("VeskMoImpl::%s - Unable to get attribute %s from %s - txHandle: %lu return: %d ",
                  __func__, attrName.c_str(), dn.c_str(), txHandle, rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::getMoAttributes(OrlTxHandleT txHandle, const std::string& dn,
                                       const std::list<std::string>& names,
                                       OrlMoAttributeValuesResult_3* results) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    results->release = nullptr;
    VeskDBTransaction* transaction = findTransaction(txHandle);
    OrlReturnT rc =
        transaction == nullptr ? OrlNotExist : transaction->getMoAttributes(dn, names, results);
    VESK_TRACE("%s: retval: %d", __func__, rc);
    return rc;
}

OrlReturnT VeskMoImpl::newMoIterator(OrlTxHandleT txHandle, const char* dn, const char* className,
                                     uint64_t* itHandle) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    VeskDBTransaction* transaction = findTransaction(txHandle);
    OrlReturnT rc = OrlNotExist;
    if (transaction != nullptr) {
        unsigned long long handle = 0;
        rc = transaction->newIterator(dn, className, &handle);
        *itHandle = handle;
        if (rc == OrlOk && handle != 0) {
            _itMap[handle] = txHandle;
        }
    }
    if (rc != OrlOk) {
        VESK_INFO(
            "VeskMoImpl::%s - Unable to create new iterator for dn %s className %s - txHandle: "
            "%lu return: %d ",
            __func__, dn, className, txHandle, rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::nextMo(uint64_t itHandle, char** result) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    auto entry = _itMap.find(itHandle);
    if (entry == _itMap.end()) {
        VESK_TRACE("%s: no iterator %llu", __func__, static_cast<unsigned long long>(itHandle));
        *result = nullptr;
        return OrlOk;
    }
    VeskDBTransaction* transaction = findTransaction(entry->second);
    OrlReturnT rc = OrlNotExist;
    if (transaction == nullptr) {
        VESK_ERROR("Call failed: Iterator has no matching transaction");
    } else {
        rc = transaction->next(itHandle, result);
    }
    if (rc != OrlOk) {
        VESK_INFO("VeskMoImpl::%s - Unable to get nextMo - itHandle: %llu return: %d", __func__,
                  static_cast<unsigned long long>(itHandle), rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::finalizeMoIterator(uint64_t itHandle) {
    VESK_TRACE(">> %s", __func__);
    (void)itHandle;
    VESK_TRACE("<< %s", __func__);
    return OrlOk;
}

OrlReturnT VeskMoImpl::existsMo(OrlTxHandleT txHandle, const char* dn, bool* result) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    *result = false;
    VeskDBTransaction* transaction = findTransaction(txHandle);
    return transaction == nullptr ? OrlNotExist : transaction->existsMo(dn, result);
}

OrlReturnT VeskMoImpl::countMoChildren(OrlTxHandleT txHandle, const char* dn, const char* className,
                                       uint64_t* result) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    *result = 0;
    VeskDBTransaction* transaction = findTransaction(txHandle);
    if (transaction == nullptr) {
        return OrlNotExist;
    }
    unsigned long long count = 0;
    OrlReturnT rc = transaction->countMoChildren(dn, className, &count);
    *result = count;
    return rc;
}

OrlReturnT VeskMoImpl::join(OrlTxHandleT txHandle) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    if (_txService == nullptr) {
        VESK_ERROR("VeskMoImpl::%s - _txService was NULL", __func__);
        return OrlFailure;
    }
    if (_txResource == nullptr) {
        VESK_ERROR("_txResource was NULL");
        return OrlFailure;
    }
    OrlReturnT rc = _txService->registerParticipant(txHandle, _txResource);
    if (rc != OrlOk) {
        VESK_ERROR("VeskMoImpl::%s - Failed to registerParticipant - txHandle: %lu retval: %d",
                   __func__, txHandle, rc);
        return rc;
    }
    // The host does not join one handle twice; an entry there would be overwritten.
    VeskDBTransaction* transaction = new VeskDBTransaction(txHandle, *_portal);
    _txMap[txHandle] = transaction;
    if (!ossConnInserted) {
        VESK_TRACE(" VeskMoImpl::join() ossConnInserted == false. Checking TIB Status ");
        if (getTibCommunicationProtocol() == kProtocolNetconf) {
            transaction->enableAiLog();
        }
        int status = OrlController::getStatus();
        if (status != OrlController::TIB_RUNNING) {
            VESK_TRACE(" VeskMoImpl::join() Current TIB status %s",
                       OrlController::OrlStatusLiteral(status).c_str());
        } else if (_eventProducer != nullptr && _meNbiNameInitCount == 0) {
            _eventProducer->initMeNbiName();
            ++_meNbiNameInitCount;
        }
    }
    return rc;
}

OrlReturnT VeskMoImpl::prepare(OrlTxHandleT txHandle) {
    return checkCallbackMap(txHandle, OrlTxOperationPrepare);
}

void VeskMoImpl::insertToCallbackMap(OrlTxHandleT txHandle, OrlTxOperation operation,
                                     TxCallback callback) {
    // One entry per callback: the first operation given for it stays.
    _callbackMap[txHandle].insert(std::make_pair(callback, operation));
}

OrlReturnT VeskMoImpl::checkCallbackMap(OrlTxHandleT txHandle, OrlTxOperation operation) {
    auto entry = _callbackMap.find(txHandle);
    if (entry == _callbackMap.end()) {
        return OrlOk;
    }
    for (const auto& callback : entry->second) {
        if (callback.second != operation) {
            continue;
        }
        OrlReturnT rc = callback.first(txHandle);
        if (rc != OrlOk) {
            return rc;
        }
    }
    return OrlOk;
}

OrlReturnT VeskMoImpl::commit(OrlTxHandleT txHandle) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    OrlReturnT rc = TibVeskOI::VeskOI::getVeskOI()->handleCommit(txHandle);
    if (rc != OrlOk) {
        return rc;
    }
    VeskDBTransaction* transaction = findTransaction(txHandle);
    int32_t protocol = getTibCommunicationProtocol();
    rc = transaction == nullptr ? OrlNotExist : commitToDatabase(transaction, protocol);
    eraseIterators(txHandle);
    if (rc != OrlOk) {
        VESK_ERROR("VeskMoImpl::%s - Unable to commit changes - txHandle: %lu return: %d", __func__,
                   txHandle, rc);
        return rc;
    }
    if (_firstCommitPending && OrlController::getStatus() == OrlController::TIB_RUNNING) {
        markFirstCommit(protocol);
    }
    return rc;
}

OrlReturnT VeskMoImpl::commitToDatabase(VeskDBTransaction* transaction, int32_t protocol) {
    int databaseHandle = transaction->getDatabaseTxHandle();
    if (databaseHandle != 0) {
        if (!transaction->validateReferences()) {
            return OrlValidationFailed;
        }
        if (!IDatabase::transaction(IPCData::OP_TX_COMMIT, databaseHandle, false)) {
            VESK_ERROR("VeskMoImpl::%s(): Commit to database failed", "commit");
            return OrlFailure;
        }
        IDatabase::storePersistentDump(false, false);
        OrlReturnT rc = transaction->commit();
        if (rc != OrlOk) {
            return rc;
        }
    }
    VESK_INFO(
        "VeskMoImpl::%s - Commit successful for Transaction: %d with protocol: %d (0 = unknown, "
        "1 = netconf, 2 = cli )",
        "commit", databaseHandle, protocol);
    return OrlOk;
}

void VeskMoImpl::markFirstCommit(int32_t protocol) {
    if (protocol != kProtocolNetconf) {
        VESK_TRACE("%s - Still waiting for first netconf commit after start.", "commit");
        return;
    }
    VESK_TRACE("%s - First netconf commit after start.", "commit");
    if (IDatabase::isPresentInDB("OAM", 1)) {
        VESK_INFO("First commit after start. ICF data is ready in database.");
        IDatabase::setAttribute("OAM", 1, "icfDataStoredToDB", AttributeVariant(true), true,
                                IPCData::AVT_BOOL, false, 0);
    } else {
        VESK_ERROR(
            "Cannot read OAM object from Database. Cannot indicate that AI configuration is "
            "parsed into DB !!");
    }
    _firstCommitPending = false;
}

OrlReturnT VeskMoImpl::abort(OrlTxHandleT txHandle) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    TibVeskOI::VeskOI::getVeskOI()->handleRollback(txHandle);
    VeskDBTransaction* transaction = findTransaction(txHandle);
    if (transaction != nullptr) {
        transaction->rollback();
        int databaseHandle = transaction->getDatabaseTxHandle();
        if (databaseHandle != 0 &&
            !IDatabase::transaction(IPCData::OP_TX_ROLLBACK, databaseHandle, false)) {
            VESK_WARNING("VeskMoImpl::%s(): Rollback to database failed", __func__);
        }
    }
    eraseIterators(txHandle);
    OrlReturnT rc = checkCallbackMap(txHandle, OrlTxOperationAbort);
    if (rc != OrlOk) {
        VESK_ERROR("VeskMoImpl::%s - Unable to abort changes - txHandle: %lu return: %d", __func__,
                   txHandle, rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::finish(OrlTxHandleT txHandle) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    OrlReturnT rc = OrlOk;
    auto entry = _txMap.find(txHandle);
    if (entry == _txMap.end()) {
        rc = OrlNotExist;
        VESK_INFO("VeskMoImpl::%s - Transaction finished with failure - txHandle: %lu return: %d",
                  __func__, txHandle, rc);
    } else {
        delete entry->second;
        _txMap.erase(entry);
        VESK_TRACE("%s: txHandle %lu finished", __func__, txHandle);
    }
    _callbackMap.erase(txHandle);
    return rc;
}

VeskDBTransaction* VeskMoImpl::findTransaction(OrlTxHandleT txHandle) const {
    auto entry = _txMap.find(txHandle);
    return entry == _txMap.end() ? nullptr : entry->second;
}

void VeskMoImpl::eraseIterators(OrlTxHandleT txHandle) {
    for (auto entry = _itMap.begin(); entry != _itMap.end();) {
        entry = entry->second == txHandle ? _itMap.erase(entry) : std::next(entry);
    }
}

int32_t VeskMoImpl::getTibCommunicationProtocol() {
    if (_sessionIf == nullptr) {
        return -1;
    }
    uint64_t session = 0;
    if (_sessionIf->getBoundSession(&session) != OrlOk) {
        VESK_TRACE("%s: No session has been bound", __func__);
        return kProtocolUnknown;
    }
    int32_t protocol = kProtocolUnknown;
    if (_sessionIf->getVariable(session, kProtocolVariable, &protocol) != OrlOk) {
        VESK_TRACE("%s: getVariable fails", __func__);
        return -1;
    }
    return protocol;
}

void VeskMoImpl::sessionCreatedCallback(uint64_t sessionHandle) {
    if (ossConnInserted || Toolbox::getAIPhaseFromDB() == 4) {
        VESK_TRACE(
            " VeskMoImpl::sessionCreatedCallback(), Assumed that OSS connection already "
            "established.");
        ossConnInserted = true;
        return;
    }
    if (_sessionIf == nullptr) {
        VESK_ERROR("VeskMoImpl::%s - OrlMgmtSpiSession_1T was NULL! PLEASE REPORT THIS ISSUE!",
                   __func__);
        return;
    }
    int32_t protocol = kProtocolUnknown;
    OrlReturnT rc = _sessionIf->getVariable(sessionHandle, kProtocolVariable, &protocol);
    if (rc == OrlFailure || rc == OrlNotExist) {
        VESK_ERROR("Couldn't find %s session variable", kProtocolVariable);
        return;
    }
    if (rc != OrlOk) {
        return;
    }
    VESK_INFO("Session variable found : %s and Communication protocol : %d ", kProtocolVariable,
              protocol);
    if (!VeskOrlHelper::getAiConfigParsed()) {
        return;
    }
    if (protocol == kProtocolNetconf) {
        if (insertOssConnEstablished(true) != 0) {
            VESK_INFO(
                " VeskMoImpl::sessionCreatedCallback() ossConnectionEstablished = true inserted "
                "to vesk database ");
            ossConnInserted = true;
        } else {
            VESK_ERROR(
                " VeskMoImpl::sessionCreatedCallback() ossConnectionEstablished insert failed to "
                "vesk database ");
        }
    } else if (protocol == kProtocolUnknown) {
        VESK_INFO(" VeskMoImpl::sessionCreatedCallback(), Communication protocol was unspecified.");
    }
}

void VeskMoImpl::sessionDestroyedCallback(uint64_t sessionHandle) {
    VESK_INFO("VeskMoImpl::%s - Handle %llu", __func__,
              static_cast<unsigned long long>(sessionHandle));
}

int VeskMoImpl::insertOssConnEstablished(bool value) {
    int result = 0;
    if (IDatabase::isPresentInDB("OAM", 1)) {
        result =
            IDatabase::setAttribute("OAM", 1, "ossConnectionEstablished", AttributeVariant(value),
                                    false, IPCData::AVT_BOOL, false, 0);
    } else {
        DBObject* oam = new DBObject("OAM", 1, true, false, IPCData::OPSTATE_ENABLED,
                                     IPCData::ADMSTATE_UNLOCKED);
        Attribute* attribute =
            new Attribute(false, "ossConnectionEstablished", AttributeVariant(value), 0, true,
                          IPCData::AVT_BOOL, true, false);
        oam->addAttribute(*attribute);
        result = IDatabase::insert(oam, 0);
        delete oam;
    }
    if (result != 0) {
        VESK_INFO(" VeskMoImpl::%s OAM::ossConnectionEstablished inserted ", __func__);
    } else {
        VESK_ERROR(" VeskMoImpl::%s OAM::ossConnectionEstablished failed to save to database ",
                   __func__);
    }
    return result;
}

}  // namespace TibVeskCM

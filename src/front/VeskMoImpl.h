// The object behind every managed object and transactional resource entry point of the agent.
// One per process (instance()). It keeps the portal from the plug-in's init, the host interfaces
// from the agent's start, and the table of open host transactions.
//
// What it does now: init and terminate of the plug-in, initialize at start (which makes and
// starts the software and backup machines), the session callbacks and the OSS connection marker.
// Reads, iterators, writes, transactions, object implementer registrations and actions answer
// OrlFailure with an error line until their logic lands.
//
// Threads: the host calls on its own threads. `_mutex` (recursive) serialises every read, write,
// join, commit, abort, finish and action for its whole length; prepare, the session callbacks
// and the registrations run without it.
#pragma once

#include <Poco/Mutex.h>

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskCM {

class VeskDBTransaction;
class VeskCmEventProducer;

class VeskMoImpl {
  public:
    typedef std::map<OrlTxHandleT, VeskDBTransaction*> TxMap;

    // Made by the first entry point called (as a rule the plug-in's init), destroyed at library
    // unload.
    static VeskMoImpl* instance();

    VeskMoImpl();
    virtual ~VeskMoImpl();
    VeskMoImpl(const VeskMoImpl&) = delete;
    VeskMoImpl& operator=(const VeskMoImpl&) = delete;

    // Plug-in init: takes the portal ("1") from `accessor`, keeps it and registers the agent's
    // component. A refused registration is logged and returned.
    OrlReturnT orlLCMinit(OrlMgmtSpiInterfacePortalAccessor* accessor, const char* unused);
    // Plug-in terminate: unregisters the component if init ran, then gives evQuit to `swm` and
    // `brm` if start made them, waiting up to a second for each to end.
    void orlLCMterminate();
    // Agent start: keeps the five interfaces (none owned), then makes `swm` and `brm`, starts
    // them and gives each evStartToOperate.
    void initialize(OrlOamSpiTransaction_2* txService, OrlOamSpiTransactionalResource_2* txResource,
                    VeskCmEventProducer* eventProducer, OrlMgmtSpiSession_1* session,
                    OrlMgmtSpiThreadContext_2* threadContext);

    OrlMgmtSpiInterfacePortal_1* portal() const { return _portal; }

    // Managed object operations. Their logic lands with reads, writes and actions.
    OrlReturnT setMoAttribute(OrlTxHandleT txHandle, const std::string& dn,
                              const std::string& attrName,
                              const OrlMoAttributeValueContainer_3* value);
    OrlReturnT getMoAttribute(OrlTxHandleT txHandle, const std::string& dn,
                              const std::string& attrName, OrlMoAttributeValueResult_3* result);
    OrlReturnT getMoAttributes(OrlTxHandleT txHandle, const std::string& dn,
                               const std::list<std::string>& names,
                               OrlMoAttributeValuesResult_3* results);
    OrlReturnT newMoIterator(OrlTxHandleT txHandle, const char* dn, const char* className,
                             uint64_t* itHandle);
    OrlReturnT nextMo(uint64_t itHandle, char** result);
    // Nothing to release: iterators end with their transaction. Always OrlOk.
    OrlReturnT finalizeMoIterator(uint64_t itHandle);
    OrlReturnT createMo(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                        const char* keyAttrName, const char* keyAttrValue,
                        OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT deleteMo(OrlTxHandleT txHandle, const std::string& dn);
    OrlReturnT action(OrlTxHandleT txHandle, const char* dn, const char* name,
                      OrlMoNamedAttributeValueContainer_3** parameters,
                      OrlMoAttributeValueResult_3* result);
    OrlReturnT existsMo(OrlTxHandleT txHandle, const char* dn, bool* result);
    OrlReturnT countMoChildren(OrlTxHandleT txHandle, const char* dn, const char* className,
                               uint64_t* result);

    // Transactional resource operations. Their logic lands with transactions.
    OrlReturnT join(OrlTxHandleT txHandle);
    OrlReturnT prepare(OrlTxHandleT txHandle);
    OrlReturnT commit(OrlTxHandleT txHandle);
    OrlReturnT abort(OrlTxHandleT txHandle);
    OrlReturnT finish(OrlTxHandleT txHandle);

    // Object implementer registration. Its logic lands with the implementer registry.
    OrlReturnT registerClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                               const char* path);
    OrlReturnT registerDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf, const char* dn);
    OrlReturnT unRegisterClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                 const char* path);
    OrlReturnT unRegisterDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                              const char* dn);

    // A copy of the open transactions, without the mutex: for callers that hold it.
    TxMap getTxMap() const { return _txMap; }

    // Session callbacks, on the host's threads, without the mutex. A session over NETCONF
    // once the first configuration is parsed marks the OSS connection in the database.
    void sessionCreatedCallback(uint64_t sessionHandle);
    void sessionDestroyedCallback(uint64_t sessionHandle);
    // Writes "ossConnectionEstablished" of "OAM" outside any transaction, making "OAM" if it is
    // missing. The database's result: non-zero on success.
    int insertOssConnEstablished(bool value);

    bool isOssConnInserted() const { return ossConnInserted; }

  private:
    OrlReturnT notAvailable(const char* operation);

    // Read by the session callbacks and by join on different threads.
    std::atomic<bool> ossConnInserted;
    OrlOamSpiTransaction_2* _txService;
    OrlOamSpiTransactionalResource_2* _txResource;
    TxMap _txMap;
    std::map<uint64_t, OrlTxHandleT> _itMap;
    Poco::Mutex _mutex;
    OrlMgmtSpiInterfacePortal_1* _portal;
    VeskCmEventProducer* _eventProducer;
    OrlMgmtSpiSession_1* _sessionIf;
    OrlMgmtSpiThreadContext_2* _threadContext;
    bool _firstCommitPending;
};

}  // namespace TibVeskCM

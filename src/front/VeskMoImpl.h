// The object behind every managed object and transactional resource entry point of the agent.
// One per process (instance()). It keeps the portal from the plug-in's init, the host interfaces
// from the agent's start, the table of open host transactions (it owns their VeskDBTransaction
// objects from join to finish), the open iterators and the callbacks that actions hang on a
// transaction.
//
// What it does now: init and terminate of the plug-in, initialize at start, the two-phase flow
// (join, prepare, commit, abort, finish), the reads and iterators, the session callbacks, the OSS
// connection marker, the object implementer registry (VeskMoImplRegistry.cc) and the gated,
// routed writes (VeskMoImplGates.cc, VeskMoImplWrites.cc) and the action dispatch
// (VeskMoImplActions.cc).
//
// Threads: the host calls on its own threads. `_mutex` (recursive) serialises every read, write,
// join, commit, abort, finish and action for its whole length; prepare, the session callbacks,
// insertToCallbackMap and the registrations run without it.
#pragma once

#include <Poco/Mutex.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <set>
#include <string>

#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

class DBObject;

namespace TibVeskCM {

class VeskDBTransaction;
class VeskCmEventProducer;

// A registered object implementer: the dn (or MO path) and the record fetched from the portal.
// Ordered by the text (bytes, then length), then by the record's address, so one text may hold
// several records.
struct DnInterfacePair_T {
    std::string dn;
    void* interface;
};
typedef DnInterfacePair_T ClassInterfacePair_T;

// The integration's user name: below the integrated phase its NETCONF session may write.
extern const char* const AIM_ICF_USER;

// The phase a transaction callback belongs to.
enum OrlTxOperation { OrlTxOperationPrepare = 1, OrlTxOperationAbort = 2 };

class VeskMoImpl {
  public:
    typedef std::map<OrlTxHandleT, VeskDBTransaction*> TxMap;
    typedef OrlReturnT (*TxCallback)(unsigned long txHandle);

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

    // Managed object operations. Reads forward to the transaction's VeskDBTransaction and answer
    // OrlNotExist for an unknown txHandle.
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
    // The next id of the iterator, or null at its end. An unknown itHandle (0, or one whose
    // transaction committed or aborted) is an ended iterator: OrlOk and null. OrlNotExist when
    // the iterator's transaction has finished without commit or abort.
    OrlReturnT nextMo(uint64_t itHandle, char** result);
    // Nothing to release: iterators end with their transaction's commit or abort. Always OrlOk;
    // takes no lock.
    OrlReturnT finalizeMoIterator(uint64_t itHandle);
    OrlReturnT createMo(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                        const char* keyAttrName, const char* keyAttrValue,
                        OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT deleteMo(OrlTxHandleT txHandle, const std::string& dn);
    // An MO action: below the integrated phase only "resetToFactory" passes (others answer
    // OrlTryAgain with one BOOL false); then every row of the dispatch that matches dn and name
    // runs, in order, and a later row's return code replaces an earlier one's. OrlFailure when
    // none matches. A row with a result value puts a new container into result->container
    // (release stays as the caller set it; the caller frees the container with free).
    OrlReturnT action(OrlTxHandleT txHandle, const char* dn, const char* name,
                      OrlMoNamedAttributeValueContainer_3** parameters,
                      OrlMoAttributeValueResult_3* result);
    OrlReturnT existsMo(OrlTxHandleT txHandle, const char* dn, bool* result);
    OrlReturnT countMoChildren(OrlTxHandleT txHandle, const char* dn, const char* className,
                               uint64_t* result);

    // Transactional resource operations.
    // Registers this resource with the host's transaction and makes the transaction's
    // VeskDBTransaction (no database transaction yet).
    OrlReturnT join(OrlTxHandleT txHandle);
    // Runs the prepare callbacks; the first non-zero answer is returned. Takes no lock.
    OrlReturnT prepare(OrlTxHandleT txHandle);
    // Commit checks, reference check, database commit and persistent dump (only if the
    // transaction wrote), then the first-commit marker. Ends the transaction's iterators.
    OrlReturnT commit(OrlTxHandleT txHandle);
    // Rolls the database transaction back, ends the iterators, runs the abort callbacks.
    OrlReturnT abort(OrlTxHandleT txHandle);
    // Deletes the transaction object and forgets its callbacks.
    OrlReturnT finish(OrlTxHandleT txHandle);

    // Hangs `callback` on the transaction for `operation`; one entry per callback. No lock.
    void insertToCallbackMap(OrlTxHandleT txHandle, OrlTxOperation operation, TxCallback callback);
    // Calls the transaction's callbacks of `operation` in callback order; the first non-zero
    // answer stops and is returned. OrlOk when there are none. Takes no lock.
    OrlReturnT checkCallbackMap(OrlTxHandleT txHandle, OrlTxOperation operation);

    // Object implementer registration, without the mutex. The managed object record must be
    // version "1" for a dn and "3" for a class, the transactional resource record version "2";
    // other versions are ignored with a warning and OrlOk. Both records are fetched from the
    // portal by their header; a refused fetch is returned. A pair already held stays as it is.
    OrlReturnT registerClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                               const char* path);
    OrlReturnT registerDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf, const char* dn);
    // Removes both pairs; a pair not held is a warning. OrlOk unless a fetch is refused.
    OrlReturnT unRegisterClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                 const char* path);
    OrlReturnT unRegisterDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                              const char* dn);

    // "/A/B" for "A=1,B=2": each "=value," (or "=value" at the end) becomes "/", and the last
    // character is cut. A text without "=" loses its last character.
    static std::string GetMoPathFromFdn(std::string fdn);
    // The class of the MO named by dn: behind the last "," up to the last "=".
    static std::string classFromDn(const std::string& dn);
    // True if `dn` contains "CertM=1".
    static bool checkSecMo(const std::string& dn);
    // The variable's value; empty when it is unset.
    static std::string GetEnv(const std::string& name);
    // DOLM_NUM_OI_SETMOATTR_ATTEMPTS, read at each call; 200 when unset, empty or not a number.
    static int getOINumOfAttemptEnv();

    // "AI_phase" of "OAM" in committed data; -2 when the object or attribute is missing.
    int32_t getAimPhase();
    // The bound session's user, empty when unknown.
    std::string getTibUserName();
    // The change gate of set and create: true once the station is integrated (phase 4 or more,
    // latched for the life of the library; `phase` then reads -1), and below that for the
    // integration's NETCONF session as AIM_ICF_USER, for requests without a bound session or of
    // protocol 0, and for a write of "rbsConfigLevel". `phase` receives the phase read.
    bool IsDatabaseChangeAllowed(int& phase, const char* attrName);

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
    // The maps order by these agent-local comparators so that their code stays inside the agent
    // and is not exported from the plug-in.
    struct CallbackOrder {
        bool operator()(TxCallback a, TxCallback b) const { return std::less<TxCallback>()(a, b); }
    };
    struct HandleOrder {
        bool operator()(uint64_t a, uint64_t b) const { return a < b; }
    };
    typedef std::map<TxCallback, OrlTxOperation, CallbackOrder> Callbacks;

    struct PairOrder {
        bool operator()(const DnInterfacePair_T& a, const DnInterfacePair_T& b) const {
            int order = a.dn.compare(b.dn);
            return order != 0 ? order < 0 : std::less<void*>()(a.interface, b.interface);
        }
    };
    typedef std::set<DnInterfacePair_T, PairOrder> OiSet;
    // The registration's two fetches: the transactional resource record, then the managed
    // object record. A refusal is logged with `prefix` and returned.
    OrlReturnT fetchImplementer(const OrlMgmtSpiInterface_1& moIf,
                                const OrlMgmtSpiInterface_1& txIf, const char* prefix,
                                void** moRecord, void** txRecord);
    void traceOiSet(const OiSet& set, const char* name);

    // The routing of setMoAttribute: dn implementers (their answer is only waited out) and class
    // implementers (a failure stops the write).
    OrlReturnT checkSetMoAttributeDnOI(OrlTxHandleT txHandle, const std::string& dn,
                                       const std::string& attrName,
                                       const OrlMoAttributeValueContainer_3* value);
    OrlReturnT checkSetMoAttributeClassOI(OrlTxHandleT txHandle, const std::string& dn,
                                          const std::string& attrName,
                                          const OrlMoAttributeValueContainer_3* value);
    // Calls the implementer's setMoAttribute up to getOINumOfAttemptEnv() times while it answers
    // OrlTryAgain, sleeping half a second between calls. 1 when no attempt is allowed.
    OrlReturnT setMoAttributeAttempts(OrlOamSpiManagedObject_3* implementer, OrlTxHandleT txHandle,
                                      const std::string& dn, const std::string& attrName,
                                      const OrlMoAttributeValueContainer_3* value, bool classForm);
    // The managed object record of the first class implementer of fdn's path, or null.
    OrlOamSpiManagedObject_3* checkObjectImplementers(std::string fdn);
    // The database part of createMo, steps after the implementer.
    OrlReturnT createInDatabase(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                                const char* keyAttrName, const char* keyAttrValue,
                                OrlMoNamedAttributeValueContainer_3** attributes);
    // A duplicate "qci" of QciProfileOperatorDefined against committed data: OrlValidationFailed.
    OrlReturnT validateQciProfileOperatorDefinedQci(const std::string& dn,
                                                    const std::string& attrName,
                                                    const OrlMoAttributeValueContainer_3* value);
    // The same after a creation, against the transaction's own view.
    OrlReturnT validateQciProfileOperatorDefinedQciStartup(
        OrlTxHandleT txHandle, const std::string& className,
        OrlMoNamedAttributeValueContainer_3** attributes);

    // One action request as the rows of the dispatch see it.
    struct ActionRequest {
        OrlTxHandleT txHandle;
        std::string dn;
        std::string name;
        OrlMoNamedAttributeValueContainer_3** parameters;  // null-terminated, may be null
        OrlMoAttributeValueResult_3* result;
        VeskDBTransaction* transaction;  // null when the host did not join
        bool filled;                     // a row put a container into result
    };
    // The rows of the dispatch (VeskMoImplActions.cc). Each looks at the request and, when it
    // matches, acts and may replace `rc`.
    OrlReturnT actionRbsUnit(ActionRequest& request);
    void actionSwM(ActionRequest& request, OrlReturnT& rc);
    void actionUpgradePackage(ActionRequest& request, OrlReturnT& rc);
    void actionSecM(ActionRequest& request, OrlReturnT& rc);
    void actionBrM(ActionRequest& request, OrlReturnT& rc);
    void actionChangeFrequency(ActionRequest& request, OrlReturnT& rc);
    void actionSetMaxNoOfCellRelations(ActionRequest& request, OrlReturnT& rc);
    void actionWifiModule(ActionRequest& request, OrlReturnT& rc);
    // "createUpgradePackage" on the SwM dn.
    OrlReturnT createUpgradePackage(ActionRequest& request);
    // The SecM attributes of the action's parameters, built in the request's transaction.
    void addSecMParameters(ActionRequest& request, DBObject* object);
    // Attaches `text` for the operator to the calling thread's request, if the host gave a
    // thread context.
    void addOperatorMessage(const char* text);
    // The open transaction of `txHandle`, or null.
    VeskDBTransaction* findTransaction(OrlTxHandleT txHandle) const;
    // 0 unknown or no bound session, 1 NETCONF, 2 command line, -1 unreadable.
    int32_t getTibCommunicationProtocol();
    void eraseIterators(OrlTxHandleT txHandle);
    // Steps 3 to 6 of commit for a found transaction.
    OrlReturnT commitToDatabase(VeskDBTransaction* transaction, int32_t protocol);
    // Writes "icfDataStoredToDB" at the first NETCONF commit while the host is up; tried once.
    void markFirstCommit(int32_t protocol);

    // Read by the session callbacks and by join on different threads.
    std::atomic<bool> ossConnInserted;
    OrlOamSpiTransaction_2* _txService;
    OrlOamSpiTransactionalResource_2* _txResource;
    TxMap _txMap;
    std::map<uint64_t, OrlTxHandleT, HandleOrder> _itMap;
    Poco::Mutex _mutex;
    OrlMgmtSpiInterfacePortal_1* _portal;
    VeskCmEventProducer* _eventProducer;
    OrlMgmtSpiSession_1* _sessionIf;
    OrlMgmtSpiThreadContext_2* _threadContext;
    bool _firstCommitPending;
    std::map<OrlTxHandleT, Callbacks, HandleOrder> _callbackMap;
    OiSet _oiDnMapToTxResourceIf_2;
    OiSet _oiDnMapToManagedObjectIf_1;
    OiSet _oiClassMapToTxResourceIf_2;
    OiSet _oiClassMapToManagedObjectIf_1;
};

}  // namespace TibVeskCM

// The object implementer component "VESKOIcomponent": a second host component inside the agent,
// through which changes of the guarded classes pass for validation.
//
// What it does now: its component record and its two provided records, registration with the
// host, and the interface fetches of its start. The rule classes and their class registrations,
// the change dispatch and the commit checks are not carried yet: no class is guarded, so every
// change passes.
#pragma once

#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

class VeskOI {
  public:
    // Made at first use (the agent's start), destroyed at library unload.
    static VeskOI* getVeskOI();
    virtual ~VeskOI() {}

    // Keeps the portal, registers the component (its answer is only traced) and runs start().
    OrlReturnT init(OrlMgmtSpiInterfacePortal_1* portal);
    // Fetches the register interface (first of the array form) and the thread context; the
    // latter's failure is returned. Also the host's start of this component.
    virtual OrlReturnT start();
    // Only traces.
    virtual OrlReturnT stop();

    // The transactional resource slots: they only trace.
    OrlReturnT join(OrlTxHandleT txHandle);
    OrlReturnT commit(OrlTxHandleT txHandle);
    OrlReturnT abort(OrlTxHandleT txHandle);

    // Commit checks of the guarded classes, run first in the front's commit under its mutex;
    // OrlOk until the rule classes land.
    OrlReturnT handleCommit(OrlTxHandleT txHandle);
    // Clean-up of the rule classes at abort; OrlOk until the rule classes land.
    OrlReturnT handleRollback(OrlTxHandleT txHandle);

    // The validated flag: a rule that accepts a creation but wants no MO made sets it false;
    // getValidated() hands it back and sets it true again, so it lasts one creation. Under the
    // front's mutex.
    bool getValidated();
    void setValidated(bool validated) { _validated = validated; }
    // Called by the front after a cell's creation in the database, whatever its outcome. The cell
    // priority rules that judge it are still to come; until then it only traces.
    void createCell(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                    const char* keyAttrName, const char* keyAttrValue,
                    OrlMoNamedAttributeValueContainer_3** attributes);
    // The database transaction of a host transaction; 0 when it is not open or has not written.
    int getVeskDatabaseTransactionId(OrlTxHandleT txHandle);

    OrlMgmtSpiComponent* getComponent() { return &_component; }
    OrlOamSpiRegisterObjectImplementer_2* registerInterface() const { return _registerIf; }
    OrlMgmtSpiThreadContext_2* threadContext() const { return _threadContext; }

  private:
    VeskOI();

    OrlMgmtSpiComponent _component;
    OrlMgmtSpiInterface_1* _provided[3];
    OrlMgmtSpiInterface_1* _required[1];
    OrlMgmtSpiInterface_1* _extra[1];
    OrlMgmtSpiInterfacePortal_1* _portal;
    OrlOamSpiManagedObject_3 _managedObject;
    OrlOamSpiTransactionalResource_2 _txResource;
    OrlOamSpiRegisterObjectImplementer_2* _registerIf;
    bool _validated;
    OrlMgmtSpiThreadContext_2* _threadContext;
};

}  // namespace TibVeskOI

// The component's entry points; each gets the singleton and forwards.
OrlReturnT veskoi_component_start(OrlStateChangeReason reason);
OrlReturnT veskoi_component_stop(OrlStateChangeReason reason);
OrlReturnT veskoi_join_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_commit_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_abort_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_setMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                   const OrlMoAttributeValueContainer_3* value);
OrlReturnT veskoi_createMo_3(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                             const char* keyAttrName, const char* keyAttrValue,
                             OrlMoNamedAttributeValueContainer_3** attributes);
OrlReturnT veskoi_deleteMo_3(OrlTxHandleT txHandle, const char* dn);

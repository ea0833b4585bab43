#include "validation/VeskOI.h"

#include "front/VeskMoImpl.h"
#include "platform/Logger.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskOI {

VeskOI* VeskOI::getVeskOI() {
    static VeskOI oi;
    return &oi;
}

VeskOI::VeskOI()
    : _component(),
      _provided(),
      _required(),
      _extra(),
      _portal(nullptr),
      _managedObject(),
      _txResource(),
      _registerIf(nullptr),
      _validated(true),
      _threadContext(nullptr) {
    _managedObject.header = {"VESKOIcomponent", "OrlOamSpiManagedObject", "3"};
    _managedObject.setMoAttribute = veskoi_setMoAttribute_3;
    _managedObject.createMo = veskoi_createMo_3;
    _managedObject.deleteMo = veskoi_deleteMo_3;
    _txResource.header = {"VESKOIcomponent", "OrlOamSpiTransactionalResource", "2"};
    _txResource.join = veskoi_join_2;
    _txResource.commit = veskoi_commit_2;
    _txResource.abort = veskoi_abort_2;
    _provided[0] = &_managedObject.header;
    _provided[1] = &_txResource.header;
    _component.componentName = "VESKOIcomponent";
    _component.interfaceName = "OrlMgmtSpiComponent";
    _component.interfaceVersion = "1";
    _component.interfaceArray = _provided;
    _component.dependencyArray = _required;
    _component.start = veskoi_component_start;
    _component.stop = veskoi_component_stop;
    _component.optionalDependencyArray = _extra;
}

OrlReturnT VeskOI::init(OrlMgmtSpiInterfacePortal_1* portal) {
    _portal = portal;
    OrlReturnT rc = _portal->registerComponent(&_component);
    VESK_TRACE("VeskOI::%s registerComponent returned %d", __func__, rc);
    return start();
}

OrlReturnT VeskOI::start() {
    void** array = nullptr;
    OrlReturnT rc = _portal->getInterfaceArray("OrlOamSpiRegisterObjectImplementer", "2",
                                               reinterpret_cast<void***>(&array));
    VESK_TRACE("VeskOI::%s getInterfaceArray returned %d", __func__, rc);
    _registerIf =
        array != nullptr ? static_cast<OrlOamSpiRegisterObjectImplementer_2*>(array[0]) : nullptr;
    void* context = nullptr;
    rc = _portal->getInterface("OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2",
                               &context);
    if (rc != OrlOk) {
        VESK_ERROR("VeskOI::start: failed(%i) to get OrlMgmtSpiThreadContext_2 interface", rc);
        return rc;
    }
    _threadContext = static_cast<OrlMgmtSpiThreadContext_2*>(context);
    // The rule classes register their MO paths here once they exist.
    return OrlOk;
}

OrlReturnT VeskOI::stop() {
    VESK_TRACE("VeskOI::%s", __func__);
    return OrlOk;
}

OrlReturnT VeskOI::join(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

OrlReturnT VeskOI::handleCommit(OrlTxHandleT /*txHandle*/) {
    return OrlOk;  // nothing is guarded yet, so there is nothing to check
}

OrlReturnT VeskOI::handleRollback(OrlTxHandleT /*txHandle*/) {
    return OrlOk;  // nothing is guarded yet, so there is nothing to undo
}

bool VeskOI::getValidated() {
    const bool validated = _validated;
    _validated = true;
    return validated;
}

void VeskOI::createCell(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                        const char* /*keyAttrName*/, const char* keyAttrValue,
                        OrlMoNamedAttributeValueContainer_3** /*attributes*/) {
    // The cell priority rules take the new cell here once they land.
    VESK_TRACE("VeskOI::%s txHandle: %lu MO: %s,%s=%s", __func__, txHandle, parentDn, className,
               keyAttrValue);
}

int VeskOI::getVeskDatabaseTransactionId(OrlTxHandleT txHandle) {
    TibVeskCM::VeskMoImpl::TxMap transactions = TibVeskCM::VeskMoImpl::instance()->getTxMap();
    auto entry = transactions.find(txHandle);
    if (entry == transactions.end()) {
        VESK_TRACE("VeskOI::%s Transaction ID not found (%lu)", __func__, txHandle);
        return 0;
    }
    return entry->second->getDatabaseTxHandle();
}

OrlReturnT VeskOI::commit(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

OrlReturnT VeskOI::abort(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

}  // namespace TibVeskOI

using TibVeskOI::VeskOI;

OrlReturnT veskoi_component_start(OrlStateChangeReason /*reason*/) {
    return VeskOI::getVeskOI()->start();
}

OrlReturnT veskoi_component_stop(OrlStateChangeReason /*reason*/) {
    return VeskOI::getVeskOI()->stop();
}

OrlReturnT veskoi_join_2(OrlTxHandleT txHandle) {
    return VeskOI::getVeskOI()->join(txHandle);
}

OrlReturnT veskoi_commit_2(OrlTxHandleT txHandle) {
    return VeskOI::getVeskOI()->commit(txHandle);
}

OrlReturnT veskoi_abort_2(OrlTxHandleT txHandle) {
    return VeskOI::getVeskOI()->abort(txHandle);
}

// The change slots: no class is guarded yet, so each change passes.
OrlReturnT veskoi_setMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                   const OrlMoAttributeValueContainer_3* /*value*/) {
    VESK_TRACE("veskoi_setMoAttribute_3 txHandle: %lu dn: %s attribute: %s", txHandle, dn,
               attrName);
    return OrlOk;
}

OrlReturnT veskoi_createMo_3(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                             const char* /*keyAttrName*/, const char* keyAttrValue,
                             OrlMoNamedAttributeValueContainer_3** /*attributes*/) {
    VESK_TRACE("veskoi_createMo_3 txHandle: %lu MO: %s,%s=%s", txHandle, parentDn, className,
               keyAttrValue);
    return OrlOk;
}

OrlReturnT veskoi_deleteMo_3(OrlTxHandleT txHandle, const char* dn) {
    VESK_TRACE("veskoi_deleteMo_3 txHandle: %lu dn: %s", txHandle, dn);
    return OrlOk;
}

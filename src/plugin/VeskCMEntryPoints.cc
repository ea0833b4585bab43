#include "plugin/VeskCMEntryPoints.h"

#include <list>
#include <string>

#include "front/VeskMoImpl.h"
#include "platform/Logger.h"
#include "plugin/VeskCMComponent.h"
#include "transaction/VeskDBTransactionHelper.h"

using TibVeskCM::VeskCMComponent;
using TibVeskCM::VeskMoImpl;

namespace {

// The exit trace shared by the entry points that report their answer.
OrlReturnT traced(const char* function, OrlReturnT rc) {
    VESK_TRACE("<< %s - retval: %d", function, rc);
    return rc;
}

}  // namespace

OrlReturnT orlLCMinit(OrlMgmtSpiInterfacePortalAccessor* accessor, const char* unused) {
    return VeskMoImpl::instance()->orlLCMinit(accessor, unused);
}

void orlLCMterminate() {
    VeskMoImpl::instance()->orlLCMterminate();
}

OrlReturnT vesk_cm_componentStart(OrlStateChangeReason reason) {
    return VeskCMComponent::instance()->start(reason);
}

OrlReturnT vesk_cm_componentStop(OrlStateChangeReason reason) {
    return VeskCMComponent::instance()->stop(reason);
}

OrlReturnT vesk_cm_SetMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                    const OrlMoAttributeValueContainer_3* value) {
    VESK_TRACE(">> %s", __func__);
    VeskMoImpl* moImpl = VeskMoImpl::instance();
    return traced(__func__,
                  moImpl->setMoAttribute(txHandle, std::string(dn), std::string(attrName), value));
}

OrlReturnT vsek_cm_GetMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                    OrlMoAttributeValueResult_3* result) {
    VESK_TRACE(">> %s", __func__);
    VeskMoImpl* moImpl = VeskMoImpl::instance();
    return traced(__func__,
                  moImpl->getMoAttribute(txHandle, std::string(dn), std::string(attrName), result));
}

OrlReturnT vsek_cm_GetMoAttributes_3(OrlTxHandleT txHandle, const char* dn,
                                     const char* const* attrNames,
                                     OrlMoAttributeValuesResult_3* result) {
    VESK_TRACE(">> %s", __func__);
    VeskMoImpl* moImpl = VeskMoImpl::instance();
    std::list<std::string> names;
    for (const char* const* name = attrNames; name != nullptr && *name != nullptr; ++name) {
        names.push_back(*name);
    }
    return traced(__func__, moImpl->getMoAttributes(txHandle, std::string(dn), names, result));
}

OrlReturnT vesk_cm_NewMoIterator_3(OrlTxHandleT txHandle, const char* dn, const char* className,
                                   uint64_t* itHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__,
                  VeskMoImpl::instance()->newMoIterator(txHandle, dn, className, itHandle));
}

OrlReturnT vesk_cm_NextMo_3(uint64_t itHandle, char** result) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->nextMo(itHandle, result));
}

OrlReturnT vesk_cm_CreateMo_3(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                              const char* keyAttrName, const char* keyAttrValue,
                              OrlMoNamedAttributeValueContainer_3** attributes) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__,
                  VeskMoImpl::instance()->createMo(txHandle, parentDn, className, keyAttrName,
                                                   keyAttrValue, attributes));
}

OrlReturnT vesk_cm_DeleteMo_3(OrlTxHandleT txHandle, const char* dn) {
    VESK_TRACE(">> %s", __func__);
    VeskMoImpl* moImpl = VeskMoImpl::instance();
    return traced(__func__, moImpl->deleteMo(txHandle, std::string(dn)));
}

OrlReturnT vesk_cm_Action_3(OrlTxHandleT txHandle, const char* dn, const char* actionName,
                            OrlMoNamedAttributeValueContainer_3** parameters,
                            OrlMoAttributeValueResult_3* result) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__,
                  VeskMoImpl::instance()->action(txHandle, dn, actionName, parameters, result));
}

OrlReturnT vesk_cm_FinalizeIterator_3(uint64_t itHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->finalizeMoIterator(itHandle));
}

OrlReturnT vesk_cm_existsMo_3(OrlTxHandleT txHandle, const char* dn, bool* result) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->existsMo(txHandle, dn, result));
}

OrlReturnT vesk_cm_countMoChildren_3(OrlTxHandleT txHandle, const char* dn, const char* className,
                                     uint64_t* result) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__,
                  VeskMoImpl::instance()->countMoChildren(txHandle, dn, className, result));
}

OrlReturnT vesk_cm_Join_2(OrlTxHandleT txHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->join(txHandle));
}

OrlReturnT vesk_cm_Prepare_2(OrlTxHandleT txHandle) {
    VESK_TRACE(">> %s", __func__);
    return VeskMoImpl::instance()->prepare(txHandle);
}

OrlReturnT vesk_cm_Commit_2(OrlTxHandleT txHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->commit(txHandle));
}

OrlReturnT vesk_cm_Abort_2(OrlTxHandleT txHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->abort(txHandle));
}

OrlReturnT vesk_cm_Finish_2(OrlTxHandleT txHandle) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->finish(txHandle));
}

OrlReturnT vesk_cm_Validate_2(OrlTxHandleT /*txHandle*/) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, OrlOk);
}

OrlReturnT vesk_cm_RegisterClass_2(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                   const char* path) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->registerClassOI(moIf, txIf, path));
}

OrlReturnT vesk_cm_RegisterDn_2(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                const char* dn) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->registerDnOI(moIf, txIf, dn));
}

OrlReturnT vesk_cm_UnRegisterClass_2(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                     const char* path) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->unRegisterClassOI(moIf, txIf, path));
}

OrlReturnT vesk_cm_UnRegisterDn_2(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                  const char* dn) {
    VESK_TRACE(">> %s", __func__);
    return traced(__func__, VeskMoImpl::instance()->unRegisterDnOI(moIf, txIf, dn));
}

void vesk_cm_sessionCreatedCallback(uint64_t sessionHandle) {
    VeskMoImpl::instance()->sessionCreatedCallback(sessionHandle);
}

void vesk_cm_sessionDestroyedCallback(uint64_t sessionHandle) {
    VeskMoImpl::instance()->sessionDestroyedCallback(sessionHandle);
}

int vesk_cm_createDefaultFrequencyMOs(const char* cellDn, int frequency, int handle) {
    VESK_TRACE(">> %s", __func__);
    int rc = TibVeskCM::VeskDBTransactionHelper::instance()->createDefaultFrequencyMOs(
        cellDn != nullptr ? cellDn : "", frequency, handle);
    VESK_TRACE("<< %s", __func__);
    return rc;
}

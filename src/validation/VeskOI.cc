#include "validation/VeskOI.h"

#include <cstring>

#include "platform/Logger.h"
#include "validation/VeskBoamOI.h"
#include "validation/VeskCellPriority.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskPMOI.h"

namespace TibVeskOI {
namespace {

// The class of a dn: behind the last "," (the whole text without one), up to the last "=".
std::string classOfDn(const std::string& text) {
    std::string::size_type comma = text.rfind(',');
    std::string pair = comma == std::string::npos ? text : text.substr(comma + 1);
    std::string::size_type equals = pair.rfind('=');
    return equals == std::string::npos ? pair : pair.substr(0, equals);
}

bool isOneOf(const std::string& text, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (text == name) {
            return true;
        }
    }
    return false;
}

}  // namespace

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
    VeskPMOI::instance()->initialize();
    VeskLTEOI::instance()->initialize();
    VeskBoamOI::instance()->initialize();
    return OrlOk;
}

OrlReturnT VeskOI::stop() {
    VESK_TRACE("VeskOI::%s", __func__);
    return OrlOk;
}

OrlReturnT VeskOI::registerAsObjectImplementer(const std::string& path) {
    if (_registerIf == nullptr) {
        VESK_ERROR("VeskOI::%s no register interface for %s", __func__, path.c_str());
        return OrlFailure;
    }
    OrlReturnT rc =
        _registerIf->registerClass(_managedObject.header, _txResource.header, path.c_str());
    VESK_TRACE("VeskOI::%s %s returned %d", __func__, path.c_str(), rc);
    return rc;
}

OrlReturnT VeskOI::unregisterAsObjectImplementer(const std::string& path) {
    if (_registerIf == nullptr) {
        VESK_ERROR("VeskOI::%s no register interface for %s", __func__, path.c_str());
        return OrlFailure;
    }
    OrlReturnT rc =
        _registerIf->unRegisterClass(_managedObject.header, _txResource.header, path.c_str());
    VESK_TRACE("VeskOI::%s %s returned %d", __func__, path.c_str(), rc);
    return rc;
}

OrlReturnT VeskOI::join(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

OrlReturnT VeskOI::commit(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

OrlReturnT VeskOI::abort(OrlTxHandleT txHandle) {
    VESK_TRACE("VeskOI::%s txHandle: %lu", __func__, txHandle);
    return OrlOk;
}

OrlReturnT VeskOI::setMoAttribute(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                  const OrlMoAttributeValueContainer_3* value) {
    const std::string cls = classOfDn(dn);
    VeskLTEOI* lte = VeskLTEOI::instance();
    if (isOneOf(cls, {"PmJob", "MeasurementReader", "EventJob"})) {
        return VeskPMOI::instance()->validatePMSetAttribute(dn, attrName, value, txHandle);
    }
    if (cls == "EUtranFrequency") {
        return lte->validateEUtranFrequencySetAttribute(txHandle, dn, attrName, value);
    }
    if (cls == "TermPointToMme") {
        return lte->validateTermPointToMmeSetAttribute(dn, attrName, value, txHandle);
    }
    if (isOneOf(cls, {"NodeBFunction", "NodeBLocalCell"})) {
        OrlReturnT rc =
            VeskBoamOI::instance()->handleBOAMTransaction(dn, attrName, value, txHandle);
        return rc != OrlOk ? rc
                           : VeskCellPriority::instance()->validateCellSetAttribute(
                                 txHandle, dn, attrName, value);
    }
    if (isOneOf(cls, {"EUtranCellRelation", "UtranCellRelation", "Cdma2000CellRelation"})) {
        return lte->validateCellRelationSetAttribute(txHandle, dn, attrName, value);
    }
    if (cls == "EUtranFreqRelation") {
        return lte->validateFreqRelationSetAttribute(txHandle, dn, attrName, value);
    }
    return setCellAttribute(txHandle, dn, attrName, value, cls);
}

// The rest of the set table, from the cells on.
OrlReturnT VeskOI::setCellAttribute(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                    const OrlMoAttributeValueContainer_3* value,
                                    const std::string& cls) {
    VeskLTEOI* lte = VeskLTEOI::instance();
    if (isOneOf(cls, {"EUtranCellFDD", "EUtranCellTDD"})) {
        OrlReturnT rc = lte->validateCellSetAttribute(txHandle, dn, attrName, value);
        return rc != OrlOk ? rc
                           : VeskCellPriority::instance()->validateCellSetAttribute(
                                 txHandle, dn, attrName, value);
    }
    if (cls == "CarrierAggregationFunction") {
        return lte->validateCarrierAggregationSetAttribute(txHandle, dn, attrName, value);
    }
    if (cls == "WiFiChannelSelection") {
        return lte->validateWiFiChannelSelectionSetAttribute(txHandle, dn, attrName, value);
    }
    if (cls == "QciProfilePredefined") {
        return lte->validateQciProfilePredefinedSetAttribute(txHandle, dn, attrName, value);
    }
    // No registered path leads to ExternalEUtranCellTDD; its row stays for the day one does.
    if (isOneOf(cls, {"ExternalEUtranCellTDD", "ExternalEUtranCellFDD"})) {
        return lte->validateExternalEUtranCellSetAttribute(txHandle, dn, attrName, value);
    }
    return OrlOk;
}

OrlReturnT VeskOI::createMo(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                            const char* /*keyAttrName*/, const char* keyAttrValue,
                            OrlMoNamedAttributeValueContainer_3** attributes) {
    const std::string cls = className;
    VeskLTEOI* lte = VeskLTEOI::instance();
    if (isOneOf(cls, {"PmJob", "MeasurementReader", "EventJob"})) {
        const std::string fdn = std::string(parentDn) + "," + cls + "=" + keyAttrValue;
        return VeskPMOI::instance()->validatePMMoCreation(txHandle, parentDn, className, attributes,
                                                          fdn, keyAttrValue);
    }
    if (cls == "EUtranFrequency") {
        return lte->validateEUtranFrequencyCreation(txHandle, parentDn, className, attributes);
    }
    if (cls == "TermPointToMme") {
        return lte->validateTermPointToMmeCreation(txHandle, parentDn, className, attributes);
    }
    if (isOneOf(cls, {"EUtranCellRelation", "UtranCellRelation", "Cdma2000CellRelation"})) {
        return lte->validateCellRelationCreation(txHandle, parentDn, className, attributes);
    }
    if (cls == "EUtranFreqRelation") {
        return lte->validateFreqRelationCreation(txHandle, parentDn, className, attributes);
    }
    VESK_TRACE("VeskOI::%s Validated MO creation, returning OrlOk", __func__);
    return OrlOk;
}

void VeskOI::createCell(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                        const char* /*keyAttrName*/, const char* keyAttrValue,
                        OrlMoNamedAttributeValueContainer_3** attributes) {
    VeskCellPriority::instance()->validateCellCreation(txHandle, parentDn, className, attributes,
                                                       keyAttrValue);
}

OrlReturnT VeskOI::deleteMo(OrlTxHandleT txHandle, const char* dn) {
    if (std::strstr(dn, "EventJob") != nullptr) {
        return VeskPMOI::instance()->validatePMMoDeletion(txHandle, dn);
    }
    const std::string cls = classOfDn(dn);
    VeskLTEOI* lte = VeskLTEOI::instance();
    VeskCellPriority* priority = VeskCellPriority::instance();
    if (cls == "TermPointToMme") {
        return lte->validateTermPointToMmeDeletion(txHandle, dn);
    }
    if (cls == "EUtranFreqRelation") {
        return lte->validateEUtranFreqRelationDeletion(txHandle, dn);
    }
    if (cls == "EUtranFrequency") {
        return lte->validateEUtranFrequencyDeletion(txHandle, dn);
    }
    if (cls == "EUtranCellFDD") {
        OrlReturnT rc = lte->validateEUtranCellFDDDeletion(txHandle, dn);
        return rc != OrlOk ? rc : priority->validateCellDeletion(txHandle, dn);
    }
    if (cls == "NodeBLocalCell") {
        return priority->validateCellDeletion(txHandle, dn);
    }
    if (cls == "EUtranCellTDD") {
        OrlReturnT rc = lte->validateEUtranCellTDDDeletion(txHandle, dn);
        return rc != OrlOk ? rc : priority->validateCellDeletion(txHandle, dn);
    }
    return OrlOk;
}

void VeskOI::addMessage(const char* text) {
    if (text != nullptr && _threadContext != nullptr) {
        _threadContext->addMessage(1, text);
    }
}

bool VeskOI::getValidated() {
    const bool validated = _validated;
    _validated = true;
    return validated;
}

}  // namespace TibVeskOI

using TibVeskOI::VeskOI;

namespace {

// The change slots may be called by any host component; a missing text is an empty one.
const char* textOrEmpty(const char* value) {
    return value != nullptr ? value : "";
}

}  // namespace

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

OrlReturnT veskoi_setMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                   const OrlMoAttributeValueContainer_3* value) {
    return VeskOI::getVeskOI()->setMoAttribute(txHandle, textOrEmpty(dn), textOrEmpty(attrName),
                                               value);
}

OrlReturnT veskoi_createMo_3(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                             const char* keyAttrName, const char* keyAttrValue,
                             OrlMoNamedAttributeValueContainer_3** attributes) {
    return VeskOI::getVeskOI()->createMo(txHandle, textOrEmpty(parentDn), textOrEmpty(className),
                                         textOrEmpty(keyAttrName), textOrEmpty(keyAttrValue),
                                         attributes);
}

OrlReturnT veskoi_deleteMo_3(OrlTxHandleT txHandle, const char* dn) {
    return VeskOI::getVeskOI()->deleteMo(txHandle, textOrEmpty(dn));
}

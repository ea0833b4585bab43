#include "plugin/VeskCMComponent.h"

#include "backup/VeskBrM.h"
#include "model/VeskModelRepository.h"
#include "notification/VeskCmEventProducer.h"
#include "platform/FrameworkInit.h"
#include "platform/Logger.h"
#include "plugin/VeskCMEntryPoints.h"
#include "software/VeskSwM.h"
#include "validation/VeskOI.h"

OrlMgmtSpiSession_1* s_mgmt = nullptr;
VeskSwM* swm = nullptr;
VeskBrM* brm = nullptr;

namespace {

// The host interfaces the agent fetches at start, in the order of the fetches.
OrlMgmtSpiInterface_1 s_transaction1 = {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1"};
OrlMgmtSpiInterface_1 s_transaction2 = {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"};
OrlMgmtSpiInterface_1 s_repository1 = {"OrlOamSpiModelRepositoryService",
                                       "OrlOamSpiModelRepository", "1"};
OrlMgmtSpiInterface_1 s_repository2 = {"OrlOamSpiModelRepositoryService",
                                       "OrlOamSpiModelRepository", "2"};
OrlMgmtSpiInterface_1 s_repository3 = {"OrlOamSpiModelRepositoryService",
                                       "OrlOamSpiModelRepository", "3"};
OrlMgmtSpiInterface_1 s_threadContext2 = {"OrlMgmtSpiThreadContextService",
                                          "OrlMgmtSpiThreadContext", "2"};
OrlMgmtSpiInterface_1 s_session1 = {"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"};

// The machines outlive the host's stop and are never deleted by the agent's own flow. At unload
// they must be, so that their queue threads are joined before the library's code goes away.
struct MachineReaper {
    ~MachineReaper() {
        delete swm;
        swm = nullptr;
        delete brm;
        brm = nullptr;
    }
} s_machineReaper;

// Fetches `triple` from the portal into *out.
OrlReturnT fetch(OrlMgmtSpiInterfacePortal_1* portal, const OrlMgmtSpiInterface_1& triple,
                 void** out) {
    return portal->getInterface(triple.componentName, triple.interfaceName, triple.interfaceVersion,
                                out);
}

}  // namespace

namespace TibVeskCM {

VeskCMComponent* VeskCMComponent::instance() {
    static VeskCMComponent component;
    return &component;
}

VeskCMComponent::VeskCMComponent()
    : _sessionCallbackRegistration(0),
      _started(false),
      _component(),
      _managedObject(),
      _registerObjectImplementer(),
      _txResource(),
      _required(),
      _provided(),
      _eventProducer(nullptr),
      _sessionCreated(vesk_cm_sessionCreatedCallback),
      _sessionDestroyed(vesk_cm_sessionDestroyedCallback) {
    fillProvidedRecords();
    _required[0] = reinterpret_cast<OrlMgmtSpiInterface_1*>(getFrameworkInitSAInterfaceT());
    _required[1] = &s_repository1;
    _required[2] = &s_transaction2;
    _required[3] = &s_session1;
    _provided[0] = &_managedObject.header;
    _provided[1] = &_registerObjectImplementer.header;
    _provided[2] = &_txResource.header;
    _component.componentName = "VESKCMSAcomponent";
    _component.interfaceName = "OrlMgmtSpiComponent";
    _component.interfaceVersion = "1";
    _component.interfaceArray = _provided;
    _component.dependencyArray = _required;
    _component.start = vesk_cm_componentStart;
    _component.stop = vesk_cm_componentStop;
}

VeskCMComponent::~VeskCMComponent() {
    delete _eventProducer;
}

void VeskCMComponent::fillProvidedRecords() {
    _managedObject.header = {"VESKCMSAcomponent", "OrlOamSpiManagedObject", "3"};
    _managedObject.setMoAttribute = vesk_cm_SetMoAttribute_3;
    _managedObject.getMoAttribute = vsek_cm_GetMoAttribute_3;
    _managedObject.getMoAttributes = vsek_cm_GetMoAttributes_3;
    _managedObject.newMoIterator = vesk_cm_NewMoIterator_3;
    _managedObject.nextMo = vesk_cm_NextMo_3;
    _managedObject.createMo = vesk_cm_CreateMo_3;
    _managedObject.deleteMo = vesk_cm_DeleteMo_3;
    _managedObject.action = vesk_cm_Action_3;
    _managedObject.finalizeIterator = vesk_cm_FinalizeIterator_3;
    _managedObject.existsMo = vesk_cm_existsMo_3;
    _managedObject.countMoChildren = vesk_cm_countMoChildren_3;

    _txResource.header = {"VESKCMSAcomponent", "OrlOamSpiTransactionalResource", "2"};
    _txResource.join = vesk_cm_Join_2;
    _txResource.prepare = vesk_cm_Prepare_2;
    _txResource.commit = vesk_cm_Commit_2;
    _txResource.abort = vesk_cm_Abort_2;
    _txResource.finish = vesk_cm_Finish_2;
    _txResource.validate = vesk_cm_Validate_2;

    _registerObjectImplementer.header = {"VESKCMSAcomponent", "OrlOamSpiRegisterObjectImplementer",
                                         "2"};
    _registerObjectImplementer.registerClass = vesk_cm_RegisterClass_2;
    _registerObjectImplementer.registerDn = vesk_cm_RegisterDn_2;
    _registerObjectImplementer.unRegisterClass = vesk_cm_UnRegisterClass_2;
    _registerObjectImplementer.unRegisterDn = vesk_cm_UnRegisterDn_2;
}

OrlReturnT VeskCMComponent::start(OrlStateChangeReason reason) {
    VESK_TRACE("%s - Reason VeskCMComponent::start: %d", __func__, reason);
    if (_started) {
        VESK_WARNING("VeskCMComponent: received start when already started.");
        return OrlOk;
    }
    OrlMgmtSpiInterfacePortal_1* portal = VeskMoImpl::instance()->portal();
    void* transaction1 = nullptr;
    void* transaction2 = nullptr;
    void* repository1 = nullptr;
    void* repository2 = nullptr;
    void* repository3 = nullptr;
    void* threadContext = nullptr;
    OrlReturnT rc = OrlOk;
    if ((rc = fetch(portal, s_transaction1, &transaction1)) != OrlOk ||
        (rc = fetch(portal, s_transaction2, &transaction2)) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlOamSpiTransaction_1T interface", rc);
        return rc;
    }
    if ((rc = fetch(portal, s_repository1, &repository1)) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository interface", rc);
        return rc;
    }
    if ((rc = fetch(portal, s_repository2, &repository2)) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository 2T interface", rc);
        return rc;
    }
    if ((rc = fetch(portal, s_repository3, &repository3)) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository 3T interface", rc);
        return rc;
    }
    // Intended: from here on the component counts as started, even if a fetch below fails.
    _started = true;
    if ((rc = fetch(portal, s_threadContext2, &threadContext)) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlMgmtSpiThreadContext_2 interface", rc);
        return rc;
    }
    if ((rc = fetch(portal, s_session1, reinterpret_cast<void**>(&s_mgmt))) != OrlOk) {
        VESK_ERROR("VeskCMComponent: failed(%i) to get OrlMgmtSpiSession_1T interface", rc);
        return rc;
    }
    if (s_mgmt->registerSessionCallbacks(_sessionCreated, _sessionDestroyed,
                                         &_sessionCallbackRegistration) == OrlFailure) {
        VESK_ERROR("VeskCMComponent: failed(%i) to register OrlMgmtSpiSession callbacks",
                   OrlFailure);
    }
    _eventProducer = new VeskCmEventProducer(portal);
    _eventProducer->initializeStateMachine();
    _eventProducer->start();
    VeskMoImpl::instance()->initialize(static_cast<OrlOamSpiTransaction_2*>(transaction2),
                                       &_txResource, _eventProducer, s_mgmt,
                                       static_cast<OrlMgmtSpiThreadContext_2*>(threadContext));
    VeskModelRepository::instance()->initialize(
        static_cast<OrlOamSpiModelRepository_2*>(repository2),
        static_cast<OrlOamSpiModelRepository_3*>(repository3));
    TibVeskOI::VeskOI::getVeskOI()->init(portal);
    return rc;
}

OrlReturnT VeskCMComponent::stop(OrlStateChangeReason reason) {
    VESK_TRACE("%s - Stopping VeskCm service with reason: %d", __func__, reason);
    OrlReturnT rc = OrlOk;
    if (s_mgmt != nullptr) {
        VESK_INFO(" VeskCMComponent::%s, unregistering session callbacks.", __func__);
        rc = s_mgmt->unregisterSessionCallbacks(_sessionCallbackRegistration);
        if (rc != OrlOk) {
            VESK_ERROR(" VeskCMComponent::%s, Failed to unregister session callbacks", __func__);
        }
    } else {
        VESK_ERROR(" VeskCMComponent::%s, SPI session IF is NULL", __func__);
    }
    if (_eventProducer != nullptr) {
        _eventProducer->terminate();
    }
    return rc;
}

}  // namespace TibVeskCM

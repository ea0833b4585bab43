#include "front/VeskMoImpl.h"

#include <chrono>
#include <thread>

#include "backup/VeskBrM.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "plugin/VeskCMComponent.h"
#include "plugin/VeskOrlHelper.h"
#include "software/VeskSwM.h"

namespace TibVeskCM {
namespace {

const char* const kProtocolVariable = "TibSessionVariableProtocol_1";
const int32_t kProtocolUnknown = 0;
const int32_t kProtocolNetconf = 1;

// Gives `machine` the plain event `eventId`; the machine takes its own copy.
void enqueue(VESK::Framework::IEventAware* machine, int32_t eventId) {
    machine->enqueueEvent(VESK::Framework::Event(eventId), false);
}

// Gives `machine` evQuit and waits up to a second for it to reach its final state, so that the
// unload that follows terminate finds no event of it still queued.
void quit(VESK::Framework::ReactiveStateMachine* machine, int32_t evQuit) {
    enqueue(machine, evQuit);
    for (int i = 0; i < 100 && !machine->hasTerminated(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
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
    // Transaction objects are made by join; deleting the ones left comes with it.
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

OrlReturnT VeskMoImpl::notAvailable(const char* operation) {
    VESK_ERROR("VeskMoImpl::%s - not available yet", operation);
    return OrlFailure;
}

// Reads and iterators: their logic lands with the read path.
OrlReturnT VeskMoImpl::getMoAttribute(OrlTxHandleT, const std::string&, const std::string&,
                                      OrlMoAttributeValueResult_3*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::getMoAttributes(OrlTxHandleT, const std::string&,
                                       const std::list<std::string>&,
                                       OrlMoAttributeValuesResult_3*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::newMoIterator(OrlTxHandleT, const char*, const char*, uint64_t*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::nextMo(uint64_t, char**) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::finalizeMoIterator(uint64_t) {
    return OrlOk;
}

OrlReturnT VeskMoImpl::existsMo(OrlTxHandleT, const char*, bool*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::countMoChildren(OrlTxHandleT, const char*, const char*, uint64_t*) {
    return notAvailable(__func__);
}

// Writes: their logic lands with the write path and its change gates.
OrlReturnT VeskMoImpl::setMoAttribute(OrlTxHandleT, const std::string&, const std::string&,
                                      const OrlMoAttributeValueContainer_3*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::createMo(OrlTxHandleT, const char*, const char*, const char*, const char*,
                                OrlMoNamedAttributeValueContainer_3**) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::deleteMo(OrlTxHandleT, const std::string&) {
    return notAvailable(__func__);
}

// Actions: their logic lands with action dispatch.
OrlReturnT VeskMoImpl::action(OrlTxHandleT, const char*, const char*,
                              OrlMoNamedAttributeValueContainer_3**, OrlMoAttributeValueResult_3*) {
    return notAvailable(__func__);
}

// Transactions: their logic lands with the transaction registry.
OrlReturnT VeskMoImpl::join(OrlTxHandleT) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::prepare(OrlTxHandleT) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::commit(OrlTxHandleT) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::abort(OrlTxHandleT) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::finish(OrlTxHandleT) {
    return notAvailable(__func__);
}

// Object implementer registration: its logic lands with the implementer registry.
OrlReturnT VeskMoImpl::registerClassOI(OrlMgmtSpiInterface_1, OrlMgmtSpiInterface_1, const char*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::registerDnOI(OrlMgmtSpiInterface_1, OrlMgmtSpiInterface_1, const char*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::unRegisterClassOI(OrlMgmtSpiInterface_1, OrlMgmtSpiInterface_1,
                                         const char*) {
    return notAvailable(__func__);
}

OrlReturnT VeskMoImpl::unRegisterDnOI(OrlMgmtSpiInterface_1, OrlMgmtSpiInterface_1, const char*) {
    return notAvailable(__func__);
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

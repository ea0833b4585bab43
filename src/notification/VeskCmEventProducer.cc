#include "notification/VeskCmEventProducer.h"

#include <chrono>
#include <thread>

#include "platform/IDatabase.h"
#include "platform/Logger.h"

namespace TibVeskCM {
namespace {

const char* const kEventType = "OrlOamSpiCmEvent_Notification_1";

}  // namespace

VeskCmEventProducer::EventProducerIf* VeskCmEventProducer::EventProducerIf::_IFinstance = nullptr;
VeskCmEventProducer* VeskCmEventProducer::_instance = nullptr;

VeskCmEventProducer::EventProducerIf::EventProducerIf() : _record() {
    if (_IFinstance != nullptr) {
        VESK_TRACE("VeskCmEventProducer::%s the instance already exists", __func__);
        return;
    }
    _record.header = {"VESKCMSAcomponent", "OrlOamSpiEventProducer", "1"};
    _record.addFilter = cmRouterAddFilter_1;
    _record.removeFilter = cmRouterRemoveFilter_1;
    _record.clearAll = cmRouterClearAll_1;
    _record.doneWithValue = cmRouterDoneWithValue_1;
    _IFinstance = this;
}

VeskCmEventProducer::EventProducerIf::~EventProducerIf() {
    clearAll();
    if (_IFinstance == this) {
        _IFinstance = nullptr;
    }
}

OrlReturnT VeskCmEventProducer::EventProducerIf::start(OrlMgmtSpiInterfacePortal_1* portal) {
    void* router = nullptr;
    OrlReturnT rc =
        portal->getInterface("OrlOamSpiEventService", "OrlOamSpiEventRouter", "1", &router);
    if (rc != OrlOk) {
        VESK_TRACE("VeskCmEventProducer::%s-> getInterface call fails ret is %d", __func__, rc);
        return rc;
    }
    _eventRouter = static_cast<OrlOamSpiEventRouter_1*>(router);
    rc = _eventRouter->registerProducer(&_record, &_producerHandle);
    if (rc != OrlOk) {
        VESK_TRACE("VeskCmEventProducer::%s-> registerProducer call fails", __func__);
        return rc;
    }
    return _eventRouter->addProducerEvent(_producerHandle, kEventType);
}

int VeskCmEventProducer::EventProducerIf::stop() {
    {
        Poco::Mutex::ScopedLock lock(_mutex);
        if (_eventRouter != nullptr) {
            _eventRouter->removeProducerEvent(_producerHandle, kEventType);
            _eventRouter->unregisterProducer(_producerHandle, &_record);
            _producerHandle = 0;
            _eventRouter = nullptr;
        }
    }
    clearAll();
    return 0;
}

int VeskCmEventProducer::EventProducerIf::addFilter(unsigned long consumerHandle,
                                                    const char* eventType,
                                                    OrlNameValuePair** filter) {
    VESK_TRACE("VeskCmEventProducer::%s consumer %lu event type %s", __func__, consumerHandle,
               eventType != nullptr ? eventType : "(null)");
    _filters.emplace_back(consumerHandle, filter);
    return 0;
}

int VeskCmEventProducer::EventProducerIf::removeFilter(unsigned long consumerHandle,
                                                       const char* /*eventType*/,
                                                       OrlNameValuePair** filter) {
    for (auto it = _filters.begin(); it != _filters.end(); ++it) {
        if (it->first == consumerHandle && it->second == filter) {
            _filters.erase(it);
            return 0;
        }
    }
    return -8;
}

void VeskCmEventProducer::EventProducerIf::clearAll() {
    VESK_TRACE("VeskCmEventProducer::%s", __func__);
}

VeskCmEventProducer::VeskCmEventProducer(OrlMgmtSpiInterfacePortal_1* portal)
    : _producerIf(nullptr),
      _subscribed(false),
      ticketToDSet(0),
      ticketTIBStatus(0),
      _meNbiName("ManagedElement=1") {
    if (_instance == nullptr) {
        _instance = this;
    }
    if (EventProducerIf::_IFinstance == nullptr) {
        new EventProducerIf();
    }
    _producerIf = EventProducerIf::_IFinstance;
    _producerIf->start(portal);
}

VeskCmEventProducer::~VeskCmEventProducer() {
    // After terminate, let evQuit run rather than drop it with the rest of the queue.
    for (int i = 0; i < 100 && _quitGiven && !hasTerminated(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    stopQueue();
    _producerIf->stop();
    delete _producerIf;
    if (_instance == this) {
        _instance = nullptr;
    }
}

void VeskCmEventProducer::enterState_stInitialize() {
    VESK_INFO(
        "VeskCmEventProducer::FUNCTION_STATE_ENTER stInitialize ticketToDSet:%d "
        "ticketTIBStatus:%d ",
        ticketToDSet, ticketTIBStatus);
}

void VeskCmEventProducer::enterState_stRunning() {
    VESK_ERROR("VeskCmEventProducer::%s - not available yet", __func__);
}

void VeskCmEventProducer::processEvent_evGotoRunning() {
    VESK_TRACE("evGotoRunning received, state: %d", static_cast<int>(currentState));
}

void VeskCmEventProducer::processEvent_evNotification(
    IDatabase::EventClass_ev4Notification& /*event*/) {
    VESK_ERROR("VeskCmEventProducer::%s - not available yet", __func__);
}

void VeskCmEventProducer::processEvent_evQuit() {
    VESK_INFO("VeskCmEventProducer evQuit - Unregister database notifications");
    if (_subscribed) {
        IDatabase::unRegisterToNotif("", 1, "", 0, 2, 1);
    }
    IDatabase::unRegisterToAllNotifs();
}

void VeskCmEventProducer::terminate() {
    if (ticketTIBStatus != 0) {
        IDatabase::unRegisterToNotif(ticketTIBStatus, ev4Notification, this);
    }
    if (ticketToDSet != 0) {
        IDatabase::unRegisterToNotif(ticketToDSet, ev4Notification, this);
    }
    _quitGiven = enqueueEvent(VESK::Framework::Event(evQuit), false);
}

}  // namespace TibVeskCM

using TibVeskCM::VeskCmEventProducer;

namespace {

VeskCmEventProducer::EventProducerIf* producerIf() {
    if (VeskCmEventProducer::EventProducerIf::_IFinstance == nullptr) {
        new VeskCmEventProducer::EventProducerIf();
    }
    return VeskCmEventProducer::EventProducerIf::_IFinstance;
}

}  // namespace

OrlReturnT cmRouterAddFilter_1(unsigned long consumerHandle, const char* eventType,
                               OrlNameValuePair** filter) {
    return producerIf()->addFilter(consumerHandle, eventType, filter);
}

OrlReturnT cmRouterRemoveFilter_1(unsigned long consumerHandle, const char* eventType,
                                  OrlNameValuePair** filter) {
    return producerIf()->removeFilter(consumerHandle, eventType, filter);
}

OrlReturnT cmRouterClearAll_1() {
    producerIf()->clearAll();
    return 0;
}

OrlReturnT cmRouterDoneWithValue_1(const char* /*eventType*/, void* /*notification*/) {
    // Deliveries are not made yet, so no notification is held for the host.
    producerIf();
    return 0;
}

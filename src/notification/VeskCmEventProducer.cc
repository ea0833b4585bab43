// The producer's machine: its conditions, its database subscriptions and the ME's northbound name.
#include "notification/VeskCmEventProducer.h"

#include <chrono>
#include <memory>
#include <thread>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {
namespace {

const char* const kMeDn = "ManagedElement=1";
const size_t kMeDnLength = 16;

}  // namespace

VeskCmEventProducer* VeskCmEventProducer::_instance = nullptr;

VeskCmEventProducer::VeskCmEventProducer(OrlMgmtSpiInterfacePortal_1* portal)
    : _producerIf(nullptr),
      _subscribed(false),
      ticketToDSet(0),
      ticketTIBStatus(0),
      _meNbiName(kMeDn) {
    if (_instance == nullptr) {
        _instance = this;
    }
    if (EventProducerIf::_IFinstance == nullptr) {
        new EventProducerIf();
    }
    _producerIf = EventProducerIf::_IFinstance;
    _producerIf->start(portal);
    initMeNbiName();
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
    // Subscribed before the conditions are read, so that a change in between is not missed.
    if (ticketToDSet == 0) {
        VESK_INFO(
            "VeskCmEventProducer::FUNCTION_STATE_ENTER stInitialize registering ticketToDSet ");
        ticketToDSet =
            IDatabase::registerToNotif(ev4Notification, "OAM", 1, this, "ToDSet", 0, 0, 0);
    }
    if (ticketTIBStatus == 0) {
        VESK_INFO(
            "VeskCmEventProducer::FUNCTION_STATE_ENTER stInitialize registering ticketTIBStatus ");
        ticketTIBStatus =
            IDatabase::registerToNotif(ev4Notification, "OAM", 1, this, "TIBStatus", 0, 0, 0);
    }
    if (ticketToDSet == -1) {
        VESK_ERROR("VeskCmEventProducer::stInitialize - registerToNotif failed for TodSet");
    }
    if (ticketTIBStatus == -1) {
        VESK_ERROR("VeskCmEventProducer::stInitialize - registerToNotif failed for TIBStatus");
    }
    bool todSet = false;
    Toolbox::getDbAttrValue<bool>("OAM", "ToDSet", todSet, nullptr, 1);
    if (todSet) {
        releaseTicket(&ticketToDSet, "VeskCmEventProducer::%s - Unregister for ToDSet failed. ");
    }
    if (OrlController::getStatus() == OrlController::TIB_RUNNING) {
        releaseTicket(&ticketTIBStatus,
                      "VeskCmEventProducer::%s - Unregister for TIBStatus failed. ");
    }
    continueToRunning();
}

void VeskCmEventProducer::releaseTicket(int32_t* ticket, const char* failure) {
    if (IDatabase::unRegisterToNotif(*ticket, ev4Notification, this) != 0) {
        *ticket = 0;
    } else {
        VESK_ERROR(failure, __func__);
    }
}

void VeskCmEventProducer::continueToRunning() {
    if (ticketTIBStatus == 0 && ticketToDSet == 0) {
        enqueueEvent(VESK::Framework::Event(evGotoRunning), false);
    } else if (ticketTIBStatus == 0) {
        VESK_INFO(
            "VeskCmEventProducer::stInitialize - Waiting for ToD before ordering notifications");
    } else if (ticketToDSet == 0) {
        VESK_INFO(
            "VeskCmEventProducer::stInitialize - Waiting for TIBStatus before ordering "
            "notifications");
    } else {
        VESK_INFO(
            "VeskCmEventProducer::stInitialize - Waiting for ToD and TIBStatus before ordering "
            "notifications");
    }
}

bool VeskCmEventProducer::handleConditionEvent(IDatabase::EventClass_ev4Notification& event) {
    // A value of the wrong alternative throws boost::bad_get; nothing here catches it.
    if (event.ticket == ticketTIBStatus &&
        boost::get<int>(event.getAttrValue()) == OrlController::TIB_RUNNING) {
        releaseTicket(&ticketTIBStatus,
                      "VeskCmEventProducer::%s - Unregister for TIBStatus failed. ");
        continueToRunning();
        return true;
    }
    if (event.ticket == ticketToDSet && boost::get<bool>(event.getAttrValue())) {
        releaseTicket(&ticketToDSet, "VeskCmEventProducer::%s - Unregister for ToDStatus failed. ");
        continueToRunning();
        return true;
    }
    VESK_WARNING("VeskCmEventProducer::%s - Unknown notification received with ticket %d. ",
                 __func__, event.ticket);
    return false;
}

void VeskCmEventProducer::enterState_stRunning() {
    VESK_TRACE("stRunning::ENTER");
    if (subcribeDbNotif() == 0) {
        VESK_ERROR(
            "VeskCmEventProducer::%s - Notification subscription call to VeskCmEventProducer "
            "failed.",
            __func__);
    }
}

int VeskCmEventProducer::subcribeDbNotif() {
    if (_subscribed) {
        return 1;
    }
    VESK_INFO("VeskCmEventProducer::%s: Ordering attribute changed notifications from Database.",
              __func__);
    int32_t ticket = IDatabase::registerToNotif(ev4Notification, "", 1, this, "", 0, 2, 1);
    _subscribed = true;
    VESK_INFO(
        "VeskCmEventProducer::%s: Subscription to DB change notifications successful. "
        "Subscription ticket: %d",
        __func__, ticket);
    // The name may have changed since the constructor read it.
    initMeNbiName();
    return 1;
}

void VeskCmEventProducer::processEvent_evGotoRunning() {
    VESK_TRACE("evGotoRunning received, state: %d", static_cast<int>(currentState));
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

void VeskCmEventProducer::initMeNbiName() {
    std::string name = kMeDn;
    std::unique_ptr<DBObject> me(IDatabase::getObject(kMeDn, 1, 0));
    if (me == nullptr) {
        VESK_ERROR("VeskCmEventProducer::%s: ManagedElement=1 does not exist in DB!", __func__);
        std::lock_guard<std::mutex> lock(_nameMutex);
        _meNbiName = name;
        return;
    }
    Attribute* id = me->getAttribute("networkManagedElementId");
    if (id == nullptr) {
        VESK_WARNING(
            "VeskCmEventProducer::%s: ManagedElement::networkManagedElementId not existing.",
            __func__);
    } else if (id->type != IPCData::AVT_STRING || id->value.which() != AV_STRING) {
        VESK_WARNING(
            "VeskCmEventProducer::%s: ManagedElement::networkManagedElementId's type in DB is not "
            "STRING.",
            __func__);
        VESK_WARNING(
            "VeskCmEventProducer::%s: AVCN notifications may have faulty dn when sent to NBI.",
            __func__);
    } else {
        try {
            name = "ManagedElement=" + boost::get<std::string>(id->value);
        } catch (boost::bad_get&) {
            VESK_WARNING("VeskCmEventProducer::%s: boost::bad_get throws exception", __func__);
            VESK_WARNING(
                "VeskCmEventProducer::%s: Did not manage to read "
                "ManagedElement::networkManagedElementId from DB",
                __func__);
            VESK_WARNING(
                "VeskCmEventProducer::%s: AVCN notifications may have faulty dn when sent to NBI.",
                __func__);
        }
    }
    me.reset();
    std::lock_guard<std::mutex> lock(_nameMutex);
    _meNbiName = name;
    VESK_TRACE("VeskCmEventProducer::%s: Using:%s as ManagedElement's dn when sending AVCN to NBI.",
               __func__, _meNbiName.c_str());
}

std::string VeskCmEventProducer::setMeNbiName(std::string dn) {
    // Only the 16 characters are compared: "ManagedElement=11,X=1" has them replaced too.
    if (dn.compare(0, kMeDnLength, kMeDn) == 0) {
        std::lock_guard<std::mutex> lock(_nameMutex);
        return _meNbiName + dn.substr(kMeDnLength);
    }
    VESK_TRACE("VeskCmEventProducer::%s: did not find 'ManagedElement=1' from:%s", __func__,
               dn.c_str());
    return dn;
}

}  // namespace TibVeskCM

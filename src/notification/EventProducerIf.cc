// The producer's side facing the host's event router: registration, consumers' filters, delivery
// of notification records and their release.
#include <Poco/RegularExpression.h>

#include <cstdlib>

#include "notification/VeskCmEventProducer.h"
#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"

namespace TibVeskCM {
namespace {

const char* const kEventType = "OrlOamSpiCmEvent_Notification_1";
const int32_t kSourceIndicator = 2;

using ProducerIf = VeskCmEventProducer::EventProducerIf;

}  // namespace

ProducerIf* ProducerIf::_IFinstance = nullptr;

ProducerIf::EventProducerIf() : _record() {
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

ProducerIf::~EventProducerIf() {
    clearAll();
    if (_IFinstance == this) {
        _IFinstance = nullptr;
    }
    Poco::Mutex::ScopedLock lock(_mutex);
    for (sendNotifStruct* entry : _notifValueList) {
        freeNotification(entry->notification);
        std::free(entry);
    }
    _notifValueList.clear();
}

OrlReturnT ProducerIf::start(OrlMgmtSpiInterfacePortal_1* portal) {
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
        _producerHandle = 0;
        return rc;
    }
    return _eventRouter->addProducerEvent(_producerHandle, kEventType);
}

int ProducerIf::stop() {
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

int ProducerIf::addFilter(unsigned long consumerHandle, const char* eventType,
                          OrlNameValuePair** filter) {
    VESK_TRACE("VeskCmEventProducer::%s consumer %lu event type %s", __func__, consumerHandle,
               eventType != nullptr ? eventType : "(null)");
    Poco::Mutex::ScopedLock lock(_mutex);
    _filters.emplace_back(consumerHandle, filter);
    return 0;
}

int ProducerIf::removeFilter(unsigned long consumerHandle, const char* /*eventType*/,
                             OrlNameValuePair** filter) {
    Poco::Mutex::ScopedLock lock(_mutex);
    for (auto it = _filters.begin(); it != _filters.end(); ++it) {
        if (it->first == consumerHandle && it->second == filter) {
            _filters.erase(it);
            return 0;
        }
    }
    return -8;
}

void ProducerIf::clearAll() {
    VESK_TRACE("VeskCmEventProducer::%s", __func__);
}

int ProducerIf::filterMatch(const std::string& dn, OrlNameValuePair** filter) {
    if (filter == nullptr || filter[0] == nullptr || filter[0]->value == nullptr) {
        VESK_TRACE("VeskCmEventProducer::%s: Filter is empty return true", __func__);
        return 1;
    }
    for (OrlNameValuePair** pair = filter; *pair != nullptr; ++pair) {
        if ((*pair)->value == nullptr) {
            continue;
        }
        VESK_TRACE("VeskCmEventProducer::%s: Match %s to regex: %s", __func__, dn.c_str(),
                   (*pair)->value);
        // The two-argument match is anchored at the start and must reach the end.
        Poco::RegularExpression expression((*pair)->value, 0, true);
        if (expression.match(dn, 0)) {
            return 1;
        }
    }
    return 0;
}

int ProducerIf::getEventType(int objOperation) {
    return VeskOrlHelper::dbObjOper2OrlEventType(objOperation);
}

OrlOamSpiCmEvent_Notification_1T* ProducerIf::createNotification(unsigned long long eventTime) {
    auto* notification = static_cast<OrlOamSpiCmEvent_Notification_1T*>(
        std::malloc(sizeof(OrlOamSpiCmEvent_Notification_1T)));
    if (notification == nullptr) {
        return nullptr;
    }
    notification->txHandle = ++_txCounter;
    notification->eventTime = eventTime;
    notification->sourceIndicator = kSourceIndicator;
    notification->events = nullptr;
    return notification;
}

int ProducerIf::notificationsReceived(const std::string& dn, const std::list<notifStruct>& changes,
                                      unsigned long long eventTime, int objOperation) {
    Poco::Mutex::ScopedLock lock(_mutex);
    if (_producerHandle == 0) {
        VESK_TRACE("VeskCmEventProducer::%s: no _producerHandle  ", __func__);
        return -1;
    }
    OrlOamSpiCmEvent_Notification_1T* notification = createNotification(eventTime);
    if (notification == nullptr) {
        VESK_ERROR("VeskCmEventProducer::%s: could not create OrlOamSpiCmEvent_Notification_1T",
                   __func__);
        return -1;
    }
    notification->events =
        static_cast<OrlOamSpiCmEvent_1T**>(std::calloc(2, sizeof(OrlOamSpiCmEvent_1T*)));
    auto* event = static_cast<OrlOamSpiCmEvent_1T*>(std::calloc(1, sizeof(OrlOamSpiCmEvent_1T)));
    notification->events[0] = event;
    event->dn = VeskOrlHelper::ownStrDup(dn.c_str());
    event->eventType = getEventType(objOperation);
    if (event->eventType != OrlOamSpiCmEvent_Deleted && fillAttributes(event, changes) != 0) {
        freeNotification(notification);
        return -1;
    }
    printNotification(notification);
    int delivered = deliver(dn, notification);
    if (delivered > 0) {
        VESK_TRACE("VeskCmEventProducer::%s: save data, numOfItems = %d", __func__, delivered);
        keep(notification, delivered);
        return 0;
    }
    VESK_ERROR("VeskCmEventProducer::%s: notif sending fails", __func__);
    freeNotification(notification);
    return -1;
}

int ProducerIf::fillAttributes(OrlOamSpiCmEvent_1T* event, const std::list<notifStruct>& changes) {
    event->attributes = static_cast<OrlMoNamedAttributeValueContainer_3**>(
        std::calloc(changes.size() + 1, sizeof(OrlMoNamedAttributeValueContainer_3*)));
    size_t index = 0;
    for (const notifStruct& change : changes) {
        if (change.attributeName == "localDateTime") {
            // It changes all the time and must never reach the host, nor what comes with it.
            VESK_TRACE("VeskCmEventProducer::%s: attribute is %s, do not send AVCN notification",
                       "notificationsReceived", change.attributeName.c_str());
            return -1;
        }
        auto* named = static_cast<OrlMoNamedAttributeValueContainer_3*>(
            std::calloc(1, sizeof(OrlMoNamedAttributeValueContainer_3)));
        event->attributes[index++] = named;
        named->attributeName = VeskOrlHelper::ownStrDup(change.attributeName.c_str());
        if (!change.deleted && handleAttributeValueContainer(&named->attributeValue, change) == 0) {
            VESK_WARNING(
                "VeskCmEventProducer::%s: could not handle attribute, not sending notification",
                "notificationsReceived");
            return -1;
        }
    }
    return 0;
}

int ProducerIf::deliver(const std::string& dn, OrlOamSpiCmEvent_Notification_1T* notification) {
    int delivered = 0;
    try {
        for (const auto& entry : _filters) {
            if (filterMatch(dn, entry.second) == 0) {
                continue;
            }
            VESK_TRACE("VeskCmEventProducer::%s: Sending notification to orl",
                       "notificationsReceived");
            if (_eventRouter->notify(_producerHandle, entry.first, kEventType, entry.second,
                                     notification) == 0) {
                ++delivered;
            }
        }
    } catch (...) {
        // The consumers that took it will give it back.
        keep(notification, delivered);
        throw;
    }
    return delivered;
}

void ProducerIf::keep(OrlOamSpiCmEvent_Notification_1T* notification, int count) {
    if (count == 0) {
        freeNotification(notification);
        return;
    }
    auto* entry = static_cast<sendNotifStruct*>(std::malloc(sizeof(sendNotifStruct)));
    entry->notification = notification;
    entry->nrOfSendData = count;
    _notifValueList.push_back(entry);
}

void ProducerIf::doneWithValue(void* value) {
    Poco::Mutex::ScopedLock lock(_mutex);
    if (_notifValueList.empty()) {
        VESK_WARNING(
            "VeskCmEventProducer::%s: Received doneWithValue() call when pending notifications "
            "list is empty.",
            __func__);
        return;
    }
    const uint32_t txHandle = static_cast<OrlOamSpiCmEvent_Notification_1T*>(value)->txHandle;
    for (auto it = _notifValueList.begin(); it != _notifValueList.end(); ++it) {
        sendNotifStruct* entry = *it;
        if (entry->notification->txHandle != txHandle) {
            continue;
        }
        if (--entry->nrOfSendData == 0) {
            freeNotification(entry->notification);
            std::free(entry);
            _notifValueList.erase(it);
        }
        break;
    }
    VESK_TRACE("VeskCmEventProducer::%s: size of _notifValueList is %d", __func__,
               static_cast<int>(_notifValueList.size()));
}

void ProducerIf::freeNotification(OrlOamSpiCmEvent_Notification_1T* notification) {
    if (notification->events != nullptr) {
        freeCmEvents(notification->events);
    }
    std::free(notification->events);
    std::free(notification);
}

void ProducerIf::freeCmEvents(OrlOamSpiCmEvent_1T** events) {
    for (OrlOamSpiCmEvent_1T** event = events; *event != nullptr; ++event) {
        if ((*event)->attributes != nullptr) {
            VeskOrlHelper::freeNamedValueContainers((*event)->attributes);
            std::free((*event)->attributes);
        }
        std::free((*event)->dn);
        std::free(*event);
    }
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

OrlReturnT cmRouterDoneWithValue_1(const char* /*eventType*/, void* notification) {
    producerIf()->doneWithValue(notification);
    return 0;
}

// The producer's database events: its two conditions while it starts, and the changes of MOs
// that become notifications once it runs.
#include <Poco/Timestamp.h>

#include <exception>

#include "notification/VeskCmEventProducer.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"

namespace TibVeskCM {
namespace {

// Nanoseconds since the epoch, at microsecond resolution.
unsigned long long now() {
    return static_cast<unsigned long long>(Poco::Timestamp().epochMicroseconds()) * 1000ULL;
}

const char* operationName(int objOperation) {
    switch (objOperation) {
        case IPCData::OP_DELETE:
            return "Delete";
        case IPCData::OP_INSERT:
            return "Insert";
        case IPCData::OP_UPDATE:
            return "Update";
        default:
            return nullptr;
    }
}

}  // namespace

void VeskCmEventProducer::processEvent_evNotification(
    IDatabase::EventClass_ev4Notification& event) {
    if (OrlController::getStatus() == OrlController::TIB_SHUTTING_DOWN) {
        VESK_INFO(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: OrlController state is "
            "TIB_SHUTTING_DOWN. Notifications are not forwarded to orl.");
        return;
    }
    if (currentState == stInitialize) {
        if (!handleConditionEvent(event)) {
            return;
        }
    } else if (currentState != stRunning) {
        VESK_WARNING(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: Not in stRunning state "
            "(current state:%d). Notifications are not forwarded to orl.",
            static_cast<int>(currentState));
    } else if (!forwardChange(event)) {
        return;
    }
    event.cleanup();
}

bool VeskCmEventProducer::forwardChange(IDatabase::EventClass_ev4Notification& event) {
    const int operation = event.objOperation;
    const char* name = operationName(operation);
    if (name == nullptr) {
        VESK_WARNING(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: not handling ticket: "
            "%d, objOperation: %d",
            event.ticket, operation);
        return false;
    }
    std::string dn = event.dn;
    if (dn.empty()) {
        if (event.rdn.empty()) {
            VESK_TRACE(
                "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: dn and wholeDn "
                "were empty in notification!, do not handle notification");
            return false;
        }
        VESK_TRACE(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: wholeDn was empty in "
            "notification, using dn!");
        dn = event.rdn;
    }
    VESK_INFO(
        "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: Notification received with "
        "ticket: %d, objectDn: %s, objOperation: %s",
        event.ticket, dn.c_str(), name);
    const bool deletion = operation == IPCData::OP_DELETE;
    if (event.notifications.empty() && !deletion) {
        VESK_WARNING(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: Notification list is "
            "empty. Not generating any AVCN.");
        return true;
    }
    std::list<notifStruct> newNotifList;
    for (const IDatabase::attrNameValuePair& entry : event.notifications) {
        // Even a hidden change of the name renames this very notification.
        if (entry.attrName == "networkManagedElementId" && dn == "ManagedElement=1") {
            initMeNbiName();
        }
        if (!entry.hidden) {
            newNotifList.push_back({entry.attrName, entry.attrValue, entry.attrType,
                                    entry.attrOperation == IPCData::OP_DELETE});
        }
    }
    if (newNotifList.empty() && !deletion) {
        VESK_WARNING(
            "VeskCmEventProducer::FUNCTION_PROCESS_DATABASE_NOTIFICATION: newNotifList list is "
            "empty. Not generating any AVCN.");
        return true;
    }
    sendChanges(setMeNbiName(dn), newNotifList, operation);
    return true;
}

void VeskCmEventProducer::sendChanges(const std::string& dn, const std::list<notifStruct>& changes,
                                      int objOperation) {
    if (objOperation != IPCData::OP_UPDATE) {
        try {
            _producerIf->notificationsReceived(dn, changes, now(), objOperation);
        } catch (const std::exception& e) {
            VESK_ERROR("VeskCmEventProducer::%s Exception [std::exception] %s", __func__, e.what());
        }
        return;
    }
    // An attribute change is always a notification of its own.
    for (const notifStruct& change : changes) {
        try {
            _producerIf->notificationsReceived(dn, std::list<notifStruct>(1, change), now(),
                                               IPCData::OP_UPDATE);
        } catch (const std::exception& e) {
            VESK_ERROR("VeskCmEventProducer::%s Caught exception [std::exception] %s", __func__,
                       e.what());
        }
    }
}

}  // namespace TibVeskCM

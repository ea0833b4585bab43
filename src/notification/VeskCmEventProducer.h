// The change notification producer. VeskCmEventProducer is the state machine that waits until
// the node's clock is set ("ToDSet") and the host is up ("TIBStatus" 3), then subscribes to every
// attribute change of the database and turns each change event into notifications.
// EventProducerIf is the side facing the host's event router: it is registered there as the
// producer of "OrlOamSpiCmEvent_Notification_1", keeps the consumers' filters, builds the
// notification records and keeps each one until every consumer it went to is done with it.
#pragma once

#include <Poco/Mutex.h>

#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <utility>

#include "notification/VeskCmEventProducer_StateMachine.h"
#include "platform/AttributeVariant.h"
#include "platform/IPCData.h"
#include "platform/orl/OrlEventRouter.h"
#include "platform/orl/OrlMgmtSpi.h"

namespace TibVeskCM {

// One change as the producer hands it on: an attribute and its new value, or its removal.
struct notifStruct {
    std::string attributeName;
    AttributeVariant value;
    IPCData::AttributeValueType attributeType;
    bool deleted;
};

// One notification that consumers still hold; malloc'ed, an entry of _notifValueList.
struct sendNotifStruct {
    OrlOamSpiCmEvent_Notification_1T* notification;
    int32_t nrOfSendData;  // consumers that have not called doneWithValue yet
};

class VeskCmEventProducer : public VeskCmEventProducer_StateMachine {
  public:
    // The side facing the host's event router; one per process (_IFinstance).
    //
    // Threads: start, stop and the destructor run on the thread that starts and unloads the
    // agent; notificationsReceived on the machine's thread; the filter calls and doneWithValue
    // on whatever thread the router uses. All but start take _mutex (recursive), so a filter
    // change or a release never meets a delivery half-way.
    class EventProducerIf {
      public:
        // Fills the producer record and becomes _IFinstance, unless one exists already: then
        // the record stays empty and this object is never registered.
        EventProducerIf();
        // clearAll(); clears _IFinstance; frees every notification still held, whatever its
        // count.
        virtual ~EventProducerIf();

        // Fetches the router, registers the record and announces the event type. The first
        // non-zero answer of the host is returned; _producerHandle stays 0 then.
        OrlReturnT start(OrlMgmtSpiInterfacePortal_1* portal);
        // Takes back the event type and unregisters, if a router was fetched; then clearAll().
        int stop();

        // Appends (consumer, filter); the filter array stays the router's and must live until
        // the matching removeFilter. Returns 0.
        int addFilter(unsigned long consumerHandle, const char* eventType,
                      OrlNameValuePair** filter);
        // Removes the first entry of this consumer with this very filter pointer; -8 when
        // there is none.
        int removeFilter(unsigned long consumerHandle, const char* eventType,
                         OrlNameValuePair** filter);
        // Only traces: filters leave through removeFilter.
        void clearAll();
        // Non-zero when `dn` (as the host sees it) matches a pattern of `filter` as a whole;
        // a null filter or a null first value matches everything. A malformed pattern throws
        // Poco::RegularExpressionException.
        int filterMatch(const std::string& dn, OrlNameValuePair** filter);
        // 9 gives 2 (deleted), 18 gives 1 (created), anything else 3 (changed).
        int getEventType(int objOperation);

        // Builds one notification of `changes` on `dn` and delivers it to every consumer whose
        // filter matches. 0 when at least one took it; -1 when nothing was delivered (the record
        // is then freed at once). On the machine's thread.
        int notificationsReceived(const std::string& dn, const std::list<notifStruct>& changes,
                                  unsigned long long eventTime, int objOperation);
        // One consumer is done with the notification `value`; the last one frees it.
        void doneWithValue(void* value);
        // A new record with the next txHandle, or null when memory is exhausted.
        OrlOamSpiCmEvent_Notification_1T* createNotification(unsigned long long eventTime);
        void freeNotification(OrlOamSpiCmEvent_Notification_1T* notification);
        void freeCmEvents(OrlOamSpiCmEvent_1T** events);

        // Fills `container` with the value of `change`: 1, or 0 when it cannot be converted
        // (slots already filled stay for the caller to free).
        int handleAttributeValueContainer(OrlMoAttributeValueContainer_3* container,
                                          const notifStruct& change);
        // The single value, or the items of a list value, of database type `type`.
        std::list<AttributeVariant> getValues(IPCData::AttributeValueType type,
                                              const AttributeVariant& value);
        // The host's type of a database type (the element type for a list); 0 when unknown.
        OrlOamSpiMoAttributeType_3 getAttributeType(IPCData::AttributeValueType type);
        // The member list of the struct value held by the object `dn`; null when the object is
        // missing, every member is hidden or a member cannot be converted.
        OrlMoAttributeValueStructMember_3* handleStruct(const std::string& dn);
        void printNotification(const OrlOamSpiCmEvent_Notification_1T* notification);
        void printValueContainer(const OrlMoAttributeValueContainer_3* container);

        static EventProducerIf* _IFinstance;

        OrlOamSpiEventProducer_1 _record;
        OrlOamSpiEventRouter_1* _eventRouter = nullptr;
        uint32_t _producerHandle = 0;
        std::list<std::pair<unsigned long, OrlNameValuePair**>> _filters;
        std::list<sendNotifStruct*> _notifValueList;
        uint32_t _txCounter = 0;
        Poco::Mutex _mutex;

      private:
        // Fills the attributes of `event` from `changes`; -1 when the notification must not
        // go out (the caller frees it).
        int fillAttributes(OrlOamSpiCmEvent_1T* event, const std::list<notifStruct>& changes);
        // Hands `notification` to every matching consumer; the number that took it. A filter
        // that throws ends the walk: what was delivered so far is kept for its releases, and
        // the exception goes on.
        int deliver(const std::string& dn, OrlOamSpiCmEvent_Notification_1T* notification);
        // Keeps `notification` for `count` releases (count 0 frees it).
        void keep(OrlOamSpiCmEvent_Notification_1T* notification, int count);
        // One member of a struct value, linked behind *last; false when it cannot be converted.
        bool addStructMember(const std::string& dn, const std::string& name, notifStruct change,
                             OrlMoAttributeValueStructMember_3** first,
                             OrlMoAttributeValueStructMember_3** last);
    };

    // Takes _IFinstance (made if needed) and starts it with `portal`; its failure is only traced.
    // Reads the ME's northbound name. On the thread that starts the agent.
    explicit VeskCmEventProducer(OrlMgmtSpiInterfacePortal_1* portal);
    // Waits up to a second for a queued evQuit to run, stops the queue, stops and deletes the
    // router side, clears _instance. On the thread that unloads the agent.
    ~VeskCmEventProducer() override;

    // Releases the condition subscriptions still held and enqueues evQuit. On the thread that
    // stops the agent.
    void terminate();
    // `dn` with a leading "ManagedElement=1" replaced by the ME's northbound name. Any thread.
    std::string setMeNbiName(std::string dn);
    // Reads the northbound name from "networkManagedElementId" of "ManagedElement=1"; keeps
    // "ManagedElement=1" when it cannot. Any thread.
    void initMeNbiName();

    static VeskCmEventProducer* _instance;

    EventProducerIf* _producerIf;
    bool _subscribed;
    int32_t ticketToDSet;
    int32_t ticketTIBStatus;
    std::string _meNbiName;

  protected:
    // Subscribes to "ToDSet" and "TIBStatus", then reads both and moves on once both hold.
    void enterState_stInitialize() override;
    void leaveState_stInitialize() override {}
    // Subscribes to every attribute change of the database (once).
    void enterState_stRunning() override;
    void leaveState_stRunning() override {}
    // Traces "evGotoRunning received, state: %d".
    void processEvent_evGotoRunning() override;
    // Ends the database subscriptions of the agent.
    void processEvent_evQuit() override;
    // A condition in stInitialize; a change of an MO in stRunning, made into notifications.
    void processEvent_evNotification(IDatabase::EventClass_ev4Notification& event) override;
    void processEvent_initial_stInitialize() override {}

  private:
    // Enqueues evGotoRunning once both conditions hold, otherwise logs what is waited for.
    void continueToRunning();
    // Drops the subscription of `ticket` once its condition holds; logs `failure` when the
    // database refuses, and the ticket then stays.
    void releaseTicket(int32_t* ticket, const char* failure);
    // Serves the two condition subscriptions; false for an unknown ticket or value.
    bool handleConditionEvent(IDatabase::EventClass_ev4Notification& event);
    // The all-changes subscription; 1 always.
    int subcribeDbNotif();
    // Turns one change event into notifications; false where the event's end is left to the
    // queue (its cleanup() not called).
    bool forwardChange(IDatabase::EventClass_ev4Notification& event);
    // Hands the changes of one object to the router side: one notification for an insert or a
    // delete, one per attribute for an update.
    void sendChanges(const std::string& dn, const std::list<notifStruct>& changes,
                     int objOperation);

    bool _quitGiven = false;  // terminate enqueued evQuit
    std::mutex _nameMutex;    // _meNbiName: written by join's thread and the machine's
};

}  // namespace TibVeskCM

// What the router calls on the producer record; each makes the router side if it is missing.
OrlReturnT cmRouterAddFilter_1(unsigned long consumerHandle, const char* eventType,
                               OrlNameValuePair** filter);
OrlReturnT cmRouterRemoveFilter_1(unsigned long consumerHandle, const char* eventType,
                                  OrlNameValuePair** filter);
OrlReturnT cmRouterClearAll_1();
OrlReturnT cmRouterDoneWithValue_1(const char* eventType, void* notification);

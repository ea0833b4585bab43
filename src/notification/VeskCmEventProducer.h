// The change notification producer: a state machine that registers this agent with the host's
// event router as the producer of "OrlOamSpiCmEvent_Notification_1".
//
// What it does now: the router registration (EventProducerIf), the consumers' filter list, and
// the lifecycle initial -> stInitialize -> final of VeskCmEventProducer_StateMachine's table.
// Waiting for the node's clock and the host's status, the database subscription, the move to
// stRunning and the building of notifications come with change notifications: until then the
// machine waits in stInitialize for evQuit.
#pragma once

#include <Poco/Mutex.h>

#include <cstdint>
#include <list>
#include <string>
#include <utility>

#include "notification/VeskCmEventProducer_StateMachine.h"
#include "platform/orl/OrlEventRouter.h"
#include "platform/orl/OrlMgmtSpi.h"

namespace TibVeskCM {

class VeskCmEventProducer : public VeskCmEventProducer_StateMachine {
  public:
    // The side facing the host's event router; one per process (_IFinstance).
    class EventProducerIf {
      public:
        // Fills the producer record and becomes _IFinstance, unless one exists already: then
        // the record stays empty and this object is never registered.
        EventProducerIf();
        // clearAll(); clears _IFinstance.
        virtual ~EventProducerIf();

        // Fetches the router, registers the record and announces the event type. The first
        // non-zero answer of the host is returned; _producerHandle stays 0 then.
        OrlReturnT start(OrlMgmtSpiInterfacePortal_1* portal);
        // Takes back the event type and unregisters, if a router was fetched; then clearAll().
        int stop();

        // Called by the router on its own threads; they take no lock.
        int addFilter(unsigned long consumerHandle, const char* eventType,
                      OrlNameValuePair** filter);
        // -8 when no entry has this consumer and this very filter pointer.
        int removeFilter(unsigned long consumerHandle, const char* eventType,
                         OrlNameValuePair** filter);
        // Only traces: filters leave through removeFilter.
        void clearAll();

        static EventProducerIf* _IFinstance;

        OrlOamSpiEventProducer_1 _record;
        OrlOamSpiEventRouter_1* _eventRouter = nullptr;
        uint32_t _producerHandle = 0;
        std::list<std::pair<unsigned long, OrlNameValuePair**>> _filters;
        uint32_t _txCounter = 0;
        Poco::Mutex _mutex;
    };

    // Takes _IFinstance (made if needed) and starts it with `portal`; its failure is only traced.
    // On the thread that starts the agent.
    explicit VeskCmEventProducer(OrlMgmtSpiInterfacePortal_1* portal);
    // Waits up to a second for a queued evQuit to run, stops the queue, stops and deletes the
    // router side, clears _instance. On the thread that unloads the agent.
    ~VeskCmEventProducer() override;

    // Releases the condition subscriptions still held and enqueues evQuit. On the thread that
    // stops the agent.
    void terminate();

    static VeskCmEventProducer* _instance;

    EventProducerIf* _producerIf;
    bool _subscribed;
    int32_t ticketToDSet;
    int32_t ticketTIBStatus;
    std::string _meNbiName;

  protected:
    // Logs the tickets as information. Subscribing to the node's clock and the host's status,
    // and the move to stRunning once both hold, come with change notifications.
    void enterState_stInitialize() override;
    void leaveState_stInitialize() override {}
    // Not available yet (error line): the database subscription comes with change
    // notifications. Unreachable until then, since nothing enqueues evGotoRunning.
    void enterState_stRunning() override;
    void leaveState_stRunning() override {}
    // Traces "evGotoRunning received, state: %d".
    void processEvent_evGotoRunning() override;
    // Ends the database subscriptions of the agent.
    void processEvent_evQuit() override;
    // Not available yet (error line): conditions and deliveries come with change notifications.
    void processEvent_evNotification(IDatabase::EventClass_ev4Notification& event) override;
    void processEvent_initial_stInitialize() override {}

  private:
    bool _quitGiven = false;  // terminate enqueued evQuit
};

}  // namespace TibVeskCM

// What the router calls on the producer record; each makes the router side if it is missing.
OrlReturnT cmRouterAddFilter_1(unsigned long consumerHandle, const char* eventType,
                               OrlNameValuePair** filter);
OrlReturnT cmRouterRemoveFilter_1(unsigned long consumerHandle, const char* eventType,
                                  OrlNameValuePair** filter);
OrlReturnT cmRouterClearAll_1();
OrlReturnT cmRouterDoneWithValue_1(const char* eventType, void* notification);

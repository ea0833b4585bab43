// The transition table of the software management machine. Concrete class: VeskSwM.
//
//   initial  evQuit              -                               final
//   initial  evStartToOperate    processEvent_evStartToOperate   stReady
//   stReady  evInitialiseSWResp  processEvent_evInitialiseSWResp stReady (left and entered again)
//   stReady  evSwOssUpdateResp   processEvent_evSwOssUpdateResp  stReady (left and entered again)
//   stReady  evQuit              -                               final
//
// Any other pair goes to onUnhandledEvent and answers 0. onExit has an empty body here, so the
// leaveState_ actions never run.
#pragma once

#include "platform/EventWithMessage.h"
#include "platform/ReactiveStateMachine.h"

class VeskSwM_StateMachine : public VESK::Framework::ReactiveStateMachine {
  public:
    enum State { initial = 1998, stFinal = 1999, stReady = 2000 };
    enum EventId {
        evQuit = 1000,
        evStartToOperate = 1001,
        evInitialiseSWResp = 1014,
        evSwOssUpdateResp = 1016
    };

    // The answers of the software management component, carrying a VESK_InitialiseSWResp and
    // a VESK_SwOssUpdateResp; the message is the handler's once its action is called.
    typedef VESK::Framework::EventWithMessage EventWithParams_evInitialiseSWResp;
    typedef VESK::Framework::EventWithMessage EventWithParams_evSwOssUpdateResp;

    // initial 1998, final 1999, the framework's own queue.
    VeskSwM_StateMachine();
    // A concrete class must call stopQueue() first in its own destructor: the actions are its.
    ~VeskSwM_StateMachine() override;

    // On the queue's thread only. For a transition: onExit(), the action, onEnter(target); 1.
    // Otherwise onUnhandledEvent(event) and 0, with the event's message untouched. An answer
    // event that carries no message is not one of the table's events.
    int processEvent(VESK::Framework::Event& event) override;
    // Runs the enter action of `state` (none for the final state), then makes it current.
    void onEnter(int state) override;
    // Empty: this machine has no leave actions that run.
    void onExit() override {}
    // onEnter(initial).
    void initializeStateMachine() override;

  protected:
    virtual void enterState_initial() = 0;
    virtual void enterState_stReady() = 0;
    virtual void leaveState_initial() = 0;
    virtual void leaveState_stReady() = 0;
    virtual void processEvent_evStartToOperate() = 0;
    // Each owns event.message: reads its fields and deletes it before returning.
    virtual void processEvent_evInitialiseSWResp(
        EventWithParams_evInitialiseSWResp const& event) = 0;
    virtual void processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) = 0;

  private:
    // The target state of (current state, event), or 0 when the table has no such transition.
    int transitionTarget(VESK::Framework::Event const& event) const;
};

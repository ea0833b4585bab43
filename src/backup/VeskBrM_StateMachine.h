// The transition table of the backup and restore machine. Concrete class: VeskBrM.
//
//   initial  evQuit              -                               final
//   initial  evStartToOperate    processEvent_evStartToOperate   stReady
//   stReady  evQuit              -                               final
//   stReady  evBrMOperationResp  processEvent_evBrMOperationResp stReady (left and entered again)
//
// Any other pair goes to onUnhandledEvent and answers 0. onExit has an empty body here, so the
// leaveState_ actions never run.
#pragma once

#include "platform/EventWithMessage.h"
#include "platform/ReactiveStateMachine.h"

class VeskBrM_StateMachine : public VESK::Framework::ReactiveStateMachine {
  public:
    enum State { initial = 1998, stFinal = 1999, stReady = 2000 };
    enum EventId { evQuit = 1000, evStartToOperate = 1001, evBrMOperationResp = 1015 };

    // The answer to a backup request; its message is a VESK_BrMOperationResp, owned by the
    // handler once processEvent_evBrMOperationResp is called.
    typedef VESK::Framework::EventWithMessage EventWithParams_evBrMOperationResp;

    // initial 1998, final 1999, the framework's own queue.
    VeskBrM_StateMachine();
    // A concrete class must call stopQueue() first in its own destructor: the actions are its.
    ~VeskBrM_StateMachine() override;

    // On the queue's thread only. For a transition: onExit(), the action, onEnter(target); 1.
    // Otherwise onUnhandledEvent(event) and 0, with the event's message untouched. An
    // evBrMOperationResp that carries no message is not one of the table's events.
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
    // Owns event.message: reads its fields and deletes it before returning.
    virtual void processEvent_evBrMOperationResp(
        EventWithParams_evBrMOperationResp const& event) = 0;

  private:
    // The target state of (current state, event), or 0 when the table has no such transition.
    int transitionTarget(VESK::Framework::Event const& event) const;
};

// The transition table of the change notification producer. Concrete class:
// TibVeskCM::VeskCmEventProducer.
//
//   initial       evInitial        processEvent_initial_stInitialize  stInitialize
//   stInitialize  evGotoRunning    processEvent_evGotoRunning         stRunning
//   stInitialize  ev4Notification  processEvent_evNotification        stInitialize (left, entered)
//   stInitialize  evQuit           processEvent_evQuit                final
//   stRunning     evGotoRunning    processEvent_evGotoRunning         stRunning (neither left nor
//                                                                     entered)
//   stRunning     ev4Notification  processEvent_evNotification        stRunning (left, entered)
//   stRunning     evQuit           processEvent_evQuit                final
//
// Any other pair goes to onUnhandledEvent and answers 0; evQuit is not handled in initial.
// onExit runs the leave action of the current state (stInitialize and stRunning have one).
#pragma once

#include "platform/IDatabase.h"
#include "platform/ReactiveStateMachine.h"

class VeskCmEventProducer_StateMachine : public VESK::Framework::ReactiveStateMachine {
  public:
    enum State { initial = 1998, stFinal = 1999, stInitialize = 2000, stRunning = 2001 };
    enum EventId { evInitial = 998, evQuit = 1000, evGotoRunning = 1002, ev4Notification = 1004 };

    // initial 1998, final 1999, the framework's own queue.
    VeskCmEventProducer_StateMachine();
    // A concrete class must call stopQueue() first in its own destructor: the actions are its.
    ~VeskCmEventProducer_StateMachine() override;

    // On the queue's thread only. For a transition: onExit(), the action, onEnter(target); 1.
    // Otherwise onUnhandledEvent(event) and 0. An ev4Notification that is not a database
    // notification event is not one of the table's events.
    int processEvent(VESK::Framework::Event& event) override;
    // Runs the enter action of `state` (initial and final have none), then makes it current.
    void onEnter(int state) override;
    // Runs the leave action of the current state, if it has one.
    void onExit() override;
    // onEnter(initial), then enqueues evInitial to itself, so that the first thing the queue's
    // thread does is the move to stInitialize.
    void initializeStateMachine() override;

  protected:
    virtual void enterState_stInitialize() = 0;
    virtual void leaveState_stInitialize() = 0;
    virtual void enterState_stRunning() = 0;
    virtual void leaveState_stRunning() = 0;
    virtual void processEvent_evGotoRunning() = 0;
    virtual void processEvent_evQuit() = 0;
    virtual void processEvent_evNotification(IDatabase::EventClass_ev4Notification& event) = 0;
    virtual void processEvent_initial_stInitialize() = 0;

  private:
    // The target state of (current state, event), or 0 when the table has no such transition.
    int transitionTarget(VESK::Framework::Event const& event) const;
    // Runs the action of a transition that the table holds.
    void runAction(VESK::Framework::Event& event);
};

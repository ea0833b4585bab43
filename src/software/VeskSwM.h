// The software management machine: `initial` (1998) until the agent's start gives it
// evStartToOperate, then `stReady` (2000) until evQuit moves it to the final state (1999).
// The upgrade package actions and their answers are not carried yet; this is the lifecycle only.
#pragma once

#include "platform/ReactiveStateMachine.h"

class VeskSwM : public VESK::Framework::ReactiveStateMachine {
  public:
    enum State { initial = 1998, stFinal = 1999, stReady = 2000 };
    enum EventId { evQuit = 1000, evStartToOperate = 1001 };

    VeskSwM();
    // Stops the queue first, so that no event runs on a half-destroyed machine.
    ~VeskSwM() override;

    // On the queue's thread only. 1 for an event of the transition table, 0 otherwise.
    int processEvent(VESK::Framework::Event& event) override;
    // Runs the enter action of `state`, then makes it current.
    void onEnter(int state) override;

  private:
    void enterState_initial();
    void enterState_stReady();
    void processEvent_evStartToOperate();
};

// The software management machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskSwM_StateMachine's.
//
// What it does now: the lifecycle. The upgrade package actions and the handling of the
// component's answers come with upgrade packages.
#pragma once

#include "software/VeskSwM_StateMachine.h"

class VeskSwM : public VeskSwM_StateMachine {
  public:
    VeskSwM();
    // Stops the queue first, so that no event runs on a half-destroyed machine.
    ~VeskSwM() override;

  protected:
    // Each traces its own line: "VeskSwM: Entering <state>", "VeskSwM: Leaving <state>",
    // "VeskSwM: Processing event evStartToOperate". The leave actions are never run by the table.
    void enterState_initial() override;
    void enterState_stReady() override;
    void leaveState_initial() override;
    void leaveState_stReady() override;
    void processEvent_evStartToOperate() override;
    // Not available yet: each logs an error and deletes the message unread.
    void processEvent_evInitialiseSWResp(EventWithParams_evInitialiseSWResp const& event) override;
    void processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) override;
};

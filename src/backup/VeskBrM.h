// The backup and restore machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskBrM_StateMachine's.
//
// What it does now: the lifecycle. The backup actions and the handling of the component's
// answers come with backup and restore.
#pragma once

#include "backup/VeskBrM_StateMachine.h"

class VeskBrM : public VeskBrM_StateMachine {
  public:
    VeskBrM();
    // Stops the queue first, so that no event runs on a half-destroyed machine.
    ~VeskBrM() override;

  protected:
    // "VeskBrM: Entering initial" / "VeskBrM: Entering stReady", as information.
    void enterState_initial() override;
    void enterState_stReady() override;
    // Never run: the table leaves no state through them.
    void leaveState_initial() override {}
    void leaveState_stReady() override {}
    // "VeskBrM: Processing event evStartToOperate", as information.
    void processEvent_evStartToOperate() override;
    // Not available yet: logs an error and deletes the message unread.
    void processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) override;
};

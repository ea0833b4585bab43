// The backup and restore machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskBrM_StateMachine's.
//
// What it does now: the lifecycle, and the entry of the backup actions, which refuses (-1, with
// an error line) and sends nothing until backup and restore land. The handling of the
// component's answers comes with them.
#pragma once

#include "backup/VeskBrM_StateMachine.h"
#include "platform/orl/OrlAttributeValue.h"

class VeskBrM : public VeskBrM_StateMachine {
  public:
    VeskBrM();
    // Stops the queue first, so that no event runs on a half-destroyed machine.
    ~VeskBrM() override;

    // A BrM action on `dn`, on a host thread under the front's mutex: 0 started (or, for
    // "confirmRestore", confirmed), -1 refused, -3 a backup of that name exists, -10 not sent.
    // `txHandle` and `result` are not used.
    int executeOperation(unsigned long txHandle, char const* dn, char const* name,
                         OrlMoNamedAttributeValueContainer_3** parameters,
                         OrlMoAttributeValueResult_3* result);

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

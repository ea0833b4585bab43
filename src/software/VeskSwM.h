// The software management machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskSwM_StateMachine's.
//
// What it does now: the lifecycle, and the two entries of the upgrade package actions, which
// refuse (-1, with an error line) and send nothing until upgrade packages land. The handling of
// the component's answers comes with them.
#pragma once

#include <string>

#include "software/VeskSwM_StateMachine.h"

class VeskSwM : public VeskSwM_StateMachine {
  public:
    VeskSwM();
    // Stops the queue first, so that no event runs on a half-destroyed machine.
    ~VeskSwM() override;

    // The upgrade package actions, on a host thread under the front's mutex. Return codes: 0 the
    // component answered (`success` says how), -1 refused or no answer, -10 not sent.
    // "createUpgradePackage": asks the component for a package from `uri`; `upgradePackageId`
    // receives the new package's number.
    int createUpgradePackage(bool& success, std::string uri, std::string password,
                             std::string actionName, unsigned short& upgradePackageId);
    // "removeUpgradePackage" and the package actions ("prepare", "verify", ...), by name.
    int sendUpgradePackageMessageAndWait(bool& success, std::string command);

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

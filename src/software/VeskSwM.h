// The software management machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskSwM_StateMachine's.
//
// It is also the entry of the upgrade package actions: each is sent to software management
// (destination 7), and the host's thread polls (300 times 100 ms through the station's sleep)
// for the answer that the machine's thread stores. The machine's thread writes the answer's
// fields first and the flag last; the flag is released and acquired.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "software/VeskSwM_StateMachine.h"

class VeskSwM : public VeskSwM_StateMachine {
  public:
    VeskSwM();
    // Takes the answers off the inbound router, then stops the queue, so that no event runs on
    // a half-destroyed machine.
    ~VeskSwM() override;

    // The upgrade package actions, on a host thread under the front's mutex. Return codes: 0 the
    // component answered (`success` says how), -1 refused or no answer, -10 not sent.
    // "createUpgradePackage": asks the component for a package from `uri`; `upgradePackageId`
    // receives the new package's number.
    int createUpgradePackage(bool& success, std::string uri, std::string password,
                             std::string actionName, unsigned short& upgradePackageId);
    // "removeUpgradePackage" and the package actions ("prepare", "verify", ...), by name.
    int sendUpgradePackageMessageAndWait(bool& success, std::string command);
    // "resetOngoing" of "OAM"; false when it cannot be read.
    bool isResetOngoing();

  protected:
    // Each traces its own line: "VeskSwM: Entering <state>", "VeskSwM: Leaving <state>",
    // "VeskSwM: Processing event evStartToOperate". The leave actions are never run by the table.
    void enterState_initial() override;
    void enterState_stReady() override;
    void leaveState_initial() override;
    void leaveState_stReady() override;
    void processEvent_evStartToOperate() override;
    // Each stores the answer for the waiting host thread, then deletes the message.
    void processEvent_evInitialiseSWResp(EventWithParams_evInitialiseSWResp const& event) override;
    void processEvent_evSwOssUpdateResp(EventWithParams_evSwOssUpdateResp const& event) override;

  private:
    // Polls once per 100 ms, up to 300 times, until the flag is set; true if it was.
    bool awaitResponse(int& polls);

    std::atomic<bool> _result{false};
    std::atomic<bool> _responseReceived{false};
    std::atomic<uint32_t> _responseId{0};
    std::atomic<int32_t> _upgradePackageState{0};
    std::atomic<uint16_t> _upgradePackageId{0};
};

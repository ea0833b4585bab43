// The backup and restore machine: `initial` until the agent's start gives it evStartToOperate,
// then `stReady` until evQuit moves it to the final state. The table is VeskBrM_StateMachine's.
//
// It is also the entry of the backup actions: the backup manager decides what an action means
// and asks software management (destination 7), whose answers arrive here as evBrMOperationResp.
// The manager and the confirmation are made at their first use, not at start.
#pragma once

#include <memory>
#include <mutex>

#include "backup/VeskBrM_StateMachine.h"
#include "platform/orl/OrlAttributeValue.h"

class VeskBrMBackupManager;
class VeskBrmRollbackAtRestore;

class VeskBrM : public VeskBrM_StateMachine {
  public:
    VeskBrM();
    // Takes software management's answers off the inbound router, then stops the queue, so that
    // no event runs on a half-destroyed machine.
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
    // Closes the operation that the answer names (the manager is made if needed); the answer to
    // "confirmRestore" also releases the waiting confirmation. Deletes the message.
    void processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) override;

  private:
    // Made at the first action or answer; the caller holds _mutex.
    VeskBrMBackupManager& backupManager();

    // Serialises the manager between the host's thread (execute) and the machine's
    // (finalizeOperation); not held while "confirmRestore" waits.
    std::mutex _mutex;
    std::unique_ptr<VeskBrMBackupManager> _backupManager;
    std::unique_ptr<VeskBrmRollbackAtRestore> _rollbackAtRestore;
};

#include "backup/VeskBrM.h"

#include "backup/VeskBrMBackupManager.h"
#include "backup/VeskBrmRollbackAtRestore.h"
#include "backup/Vesk_BrMUtils.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"

using namespace VeskBrMNames;

VeskBrM::VeskBrM() {
    VESK::Framework::Messaging::subscribeInbound(VESK::Messages::VESK_BrMOperationResp::MESSAGE_ID,
                                                 evBrMOperationResp, this);
}

VeskBrM::~VeskBrM() {
    VESK::Framework::Messaging::unsubscribeInbound(this);
    stopQueue();
}

VeskBrMBackupManager& VeskBrM::backupManager() {
    if (!_backupManager) {
        _backupManager.reset(new VeskBrMBackupManager(kManager));
    }
    return *_backupManager;
}

int VeskBrM::executeOperation(unsigned long, char const* dn, char const* name,
                              OrlMoNamedAttributeValueContainer_3** parameters,
                              OrlMoAttributeValueResult_3*) {
    VESK_INFO("BrM:: executeOperation, dn %s, name %s", dn, name);
    const std::string target(dn);
    const std::string action(name);
    int rc = -1;
    if (target == kManagerDn ||
        target.compare(0, std::string(kBackupPrefix).size(), kBackupPrefix) == 0) {
        std::lock_guard<std::mutex> lock(_mutex);
        rc = backupManager().execute(target, action, parameters);
    }
    if (target == kRollbackDn && action == "confirmRestore") {
        VeskBrmRollbackAtRestore* rollback = nullptr;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            if (!_rollbackAtRestore) {
                _rollbackAtRestore.reset(new VeskBrmRollbackAtRestore());
            }
            rollback = _rollbackAtRestore.get();
        }
        return rollback->confirmRestore();
    }
    return rc;
}

void VeskBrM::enterState_initial() {
    VESK_INFO("VeskBrM: Entering initial");
}

void VeskBrM::enterState_stReady() {
    VESK_INFO("VeskBrM: Entering stReady");
}

void VeskBrM::processEvent_evStartToOperate() {
    VESK_INFO("VeskBrM: Processing event evStartToOperate");
}

void VeskBrM::processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) {
    auto* answer = event.messageAs<VESK::Messages::VESK_BrMOperationResp>();
    if (answer == nullptr) {
        VESK_ERROR("VeskBrM: evBrMOperationResp without its message");
        delete event.message;
        return;
    }
    const std::string operation = answer->operation;
    const std::string dn = answer->dn;
    VESK_INFO(
        "VeskBrM: Processing event evBrMOperationResp for operation %s: dn %s success: %d "
        "code: %d",
        operation.c_str(), dn.c_str(), answer->success, answer->code);
    VeskBrmRollbackAtRestore* rollback = nullptr;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (!backupManager().finalizeOperation(answer->success, operation, dn)) {
            VESK_ERROR("BrM: Unable to finalize operation %s for %s", operation.c_str(),
                       dn.c_str());
        }
        rollback = _rollbackAtRestore.get();
    }
    // Only a confirmation sent by this agent has someone waiting for it.
    if (operation == "confirmRestore" && rollback != nullptr) {
        rollback->confirmRestoreResponseReceived(answer->success);
    }
    delete event.message;
}

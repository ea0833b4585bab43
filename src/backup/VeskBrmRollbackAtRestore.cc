#include "backup/VeskBrmRollbackAtRestore.h"

#include "backup/Vesk_BrMUtils.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/StationSleep.h"

namespace {
const int kPolls = 100;
const unsigned kPollUs = 100000;
}  // namespace

int VeskBrmRollbackAtRestore::confirmRestore() {
    VESK_INFO("BrM: %s ", __func__);
    DBObject* manager = IDatabase::getObject(VeskBrMNames::kManager, 1, 0);
    if (manager == nullptr) {
        VESK_ERROR("BrM: %s FAILED to fetch  BrmBackupManager=1 from database", __func__);
        return -1;
    }
    std::string active;
    Vesk_BrMUtils::Read read = Vesk_BrMUtils::readAttribute(manager, "activeBackup", active);
    int rc = -1;
    if (read == Vesk_BrMUtils::kMissing) {
        VESK_ERROR("BrM: %s active backup not found from DB", __func__);
        rc = 2;
    } else if (read == Vesk_BrMUtils::kWrongType) {
        VESK_INFO("BrM: Could not find active backup for confirmRestore");
        VESK_ERROR("BrM: %s confirmRestore failed since there is nothing to be confirmed",
                   __func__);
    } else {
        rc = sendConfirmRestoreCommand(active);
    }
    delete manager;
    return rc;
}

int VeskBrmRollbackAtRestore::sendConfirmRestoreCommand(std::string const& backupDn) {
    _responseReceived = false;
    std::string name;
    DBObject* backup = IDatabase::getObject(backupDn, 1, 0);
    if (backup != nullptr) {
        if (Vesk_BrMUtils::readAttribute(backup, "backupName", name) == Vesk_BrMUtils::kWrongType) {
            VESK_INFO("BrM: Could not find backup name for %s", backupDn.c_str());
        }
        delete backup;
    }
    if (!Vesk_BrMUtils().sendRequest("confirmRestore", backupDn, name)) {
        VESK_ERROR(
            "VeskBrmRollbackAtRestore::sendConfirmRestoreCommand: Message sending to BrM "
            "failed");
        return -10;
    }
    VESK_INFO(
        "VeskBrmRollbackAtRestore::sendConfirmRestoreCommand: VESK_BrMOperationReq sent "
        "successfully to BrM");
    bool answered = false;
    for (int i = 0; i < kPolls && !answered; ++i) {
        VESK::Framework::stationSleepUs(kPollUs);
        answered = _responseReceived.load(std::memory_order_acquire);
    }
    int rc = -1;
    if (answered) {
        rc = _responseResult ? 0 : -1;
    } else {
        VESK_ERROR(
            "VeskBrmRollbackAtRestore::sendConfirmRestoreCommand: response waiting timeout "
            "elapsed");
    }
    _responseReceived = false;
    return rc;
}

void VeskBrmRollbackAtRestore::confirmRestoreResponseReceived(bool success) {
    VESK_INFO(
        "VeskBrmRollbackAtRestore::confirmRestoreResponseReceived: VESK_BrMOperationResp "
        "received from BrM");
    _responseResult = success;
    _responseReceived.store(true, std::memory_order_release);
    Vesk_BrMUtils utils;
    DBObject* manager = utils.getDBObject(VeskBrMNames::kManager, 1);
    if (manager == nullptr) {
        VESK_ERROR("BrM:Failed to get BrmBackupManager=1 from DB");
        return;
    }
    utils.updateAttribute("activeBackup", AttributeVariant(std::string()), IPCData::AVT_STRING,
                          manager);
    utils.updateDbObj(manager);
    delete manager;
}

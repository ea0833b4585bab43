// The backup manager's view of the store: the backup objects, the rotation, the operation taken
// over after a restart and the zip files brought into step with the database.
#include <dirent.h>

#include <set>

#include "backup/VeskBrMBackupManager.h"
#include "backup/Vesk_BrMUtils.h"
#include "platform/ExecuteCmd.h"
#include "platform/GetPath.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

using namespace VeskBrMNames;

namespace {
const char* const kTempZip = "BRM_TEMP_BACKUP.zip";
const char* const kRollbackZip = "BRM_ROLLBACK_BACKUP.zip";
const char* const kWaitingText = " restoration waiting 'confirmRestore' action";

// The oldest backup of `objects`, not empty: the first one unless a later one's creationTime
// sorts strictly below the time held.
std::list<DBObject*>::iterator oldestBackup(std::list<DBObject*>& objects) {
    auto oldest = objects.begin();
    std::string oldestTime;
    auto readTime = [](DBObject* object, std::string& time) {
        if (Vesk_BrMUtils::readAttribute(object, "creationTime", time) == Vesk_BrMUtils::kMissing) {
            VESK_INFO(
                "BrM:VeskBrMBackupManager: runHouseKeeping - creationTime attribute not "
                "found");
        }
    };
    readTime(*oldest, oldestTime);
    for (auto it = std::next(objects.begin()); it != objects.end(); ++it) {
        std::string time;
        readTime(*it, time);
        VESK_TRACE(
            "BrM:VeskBrMBackupManager: runHouseKeeping - oldestCreationTime %s,"
            "creationTime %s",
            oldestTime.c_str(), time.c_str());
        if (time < oldestTime) {
            oldest = it;
            readTime(*oldest, oldestTime);
        }
    }
    return oldest;
}
}  // namespace

std::list<DBObject*> VeskBrMBackupManager::backups(char const* caller) const {
    std::list<DBObject*> found;
    std::list<std::string> ids = IDatabase::getMOClassWithParent(kManager, "BrmBackup", 0);
    for (std::string const& id : ids) {
        std::string dn = std::string(kBackupPrefix) + id;
        DBObject* object = IDatabase::getObject(dn, 1, 0);
        if (object != nullptr) {
            VESK_INFO("BrM: %s: %s found from db", caller, dn.c_str());
            found.push_back(object);
        } else {
            VESK_INFO("BrM: %s: %s NOT found from db", caller, dn.c_str());
        }
    }
    if (ids.empty()) {
        VESK_INFO("BrM: %s: %s", caller,
                  std::string(caller) == "findBackup" ? "no BrmBackup MO's found from db"
                                                      : "no active BrmBackup MO's found from db");
    }
    return found;
}

std::list<DBObject*> VeskBrMBackupManager::getBackupsFromDb() const {
    return backups("getBackupsFromDb()");
}

bool VeskBrMBackupManager::runHouseKeeping() {
    VESK_INFO("BrM: %s", "runHouseKeeping");
    DBObject* housekeeping = IDatabase::getObject("BrmBackupHousekeeping=1", 1, 0);
    if (housekeeping == nullptr) {
        VESK_INFO("BrM: %s VeskBrMBackupManager: BrmBackupHousekeeping MO not found", __func__);
        return true;
    }
    int autoDelete = 0;
    unsigned short max = 0;
    Vesk_BrMUtils::Read a = Vesk_BrMUtils::readAttribute(housekeeping, "autoDelete", autoDelete);
    Vesk_BrMUtils::Read m =
        Vesk_BrMUtils::readAttribute(housekeeping, "maxStoredManualBackups", max);
    delete housekeeping;
    if (a == Vesk_BrMUtils::kMissing || m == Vesk_BrMUtils::kMissing) {
        VESK_INFO("BrM: %s : autoDelete and/or maxStoredManualBackups attribute not found",
                  __func__);
        return true;
    }
    if (a == Vesk_BrMUtils::kWrongType || m == Vesk_BrMUtils::kWrongType) {
        VESK_ERROR("boost::bad_get in BrM:runHouseKeeping");
        return true;
    }
    std::list<DBObject*> objects = getBackupsFromDb();
    size_t count = objects.size();
    if (count >= max && autoDelete != 1) {
        VESK_INFO(
            "BrM:VeskBrMBackupManager: runHouseKeeping - maxBackups (%d) reached, autoDelete "
            "not enabled",
            max);
        for (DBObject* object : objects) {
            delete object;
        }
        return false;
    }
    while (count >= max && !objects.empty()) {
        VESK_INFO("BrM:VeskBrMBackupManager: runHouseKeeping - maxBackups (%d) reached", max);
        auto oldest = oldestBackup(objects);
        std::string name;
        Vesk_BrMUtils::readAttribute(*oldest, "backupName", name);
        deleteBackup(name);
        delete *oldest;
        objects.erase(oldest);
        --count;
    }
    for (DBObject* object : objects) {
        delete object;
    }
    return true;
}

bool VeskBrMBackupManager::isResetOngoing() const {
    bool ongoing = false;
    DBObject* oam = IDatabase::getObject("OAM", 1, 0);
    if (Vesk_BrMUtils::readAttribute(oam, "resetOngoing", ongoing) == Vesk_BrMUtils::kWrongType) {
        VESK_ERROR("BrM: %s. boost::bad_get", __func__);
        ongoing = false;
    }
    delete oam;
    VESK_INFO("BrM: isResetOngoing(): Returning: %d", ongoing);
    return ongoing;
}

void VeskBrMBackupManager::initOngoingOperation() {
    VESK_INFO("BrM: initOngoingOperation");
    Vesk_BrMUtils utils;
    DBObject* manager = utils.getDBObject(_managerName, 1);
    if (manager == nullptr) {
        VESK_ERROR("BrM: Error while fetching BrmBackupManager");
        return;
    }
    std::string active;
    Vesk_BrMUtils::Read read = Vesk_BrMUtils::readAttribute(manager, "activeBackup", active);
    if (read == Vesk_BrMUtils::kMissing) {
        VESK_ERROR("BrM: Could not get active backup");
    } else if (read == Vesk_BrMUtils::kWrongType) {
        VESK_ERROR("BrM: boost::bad_get while fetching active backup!");
    }
    if (read != Vesk_BrMUtils::kMissing && active.empty()) {
        VESK_ERROR("BrM: Could not get active backup's dn");
        delete manager;
        return;
    }
    if (read == Vesk_BrMUtils::kRead) {
        int state = 3;
        std::string action;
        std::string info;
        DBObject* report = utils.getDBObject(active + ":progressReport", 1);
        if (report != nullptr) {
            if (Vesk_BrMUtils::readAttribute(report, "state", state) == Vesk_BrMUtils::kWrongType)
                VESK_ERROR("BrM: boost::bad_get while fetching backup state!");
            VESK_INFO("BrM: backup's state is %d", state);
            if (Vesk_BrMUtils::readAttribute(report, "actionName", action) ==
                Vesk_BrMUtils::kWrongType)
                VESK_ERROR("BrM: boost::bad_get while fetching backup's action name!");
            VESK_INFO("BrM: backup's action is %s", action.c_str());
            if (Vesk_BrMUtils::readAttribute(report, "progressInfo", info) ==
                Vesk_BrMUtils::kWrongType)
                VESK_ERROR("BrM: boost::bad_get while fetching backup's progressInfo!");
            VESK_INFO("BrM: backup's progressInfo is %s", info.c_str());
            delete report;
        }
        bool waiting =
            state == 3 && action == "RESTORE" && info.find(kWaitingText) != std::string::npos;
        if (report != nullptr && (state == 1 || state == 2 || waiting)) {
            _ongoingOperation = action;
            _ongoingBackup = active;
        }
    }
    delete manager;
    VESK_INFO("BrM: Exiting initOngoingOperation -- ongoing operation is %s",
              _ongoingOperation.c_str());
}

void VeskBrMBackupManager::initExistingBackups() {
    VESK_INFO("VeskBrMBackupManager::initExistingBackups enter");
    std::list<DBObject*> objects = getBackupsFromDb();
    if (objects.empty()) {
        VESK_INFO("BrM: No existing backups found from DB");
    }
    std::set<std::string> known;
    for (DBObject* object : objects) {
        std::string file;
        Vesk_BrMUtils::Read read = Vesk_BrMUtils::readAttribute(object, "fileName", file);
        if (read == Vesk_BrMUtils::kRead) {
            VESK_INFO("VeskBrMBackupManager::initExistingBackups: found zip filename %s",
                      file.c_str());
            known.insert(file);
        } else if (read == Vesk_BrMUtils::kWrongType) {
            VESK_ERROR(
                "VeskBrMBackupManager::initExistingBackups: boost::bad_get while fetching "
                "filename");
        }
        delete object;
    }
    VESK_INFO("VeskBrMBackupManager::initExistingBackups: syncing backup zips");
    std::string path = getPath("VESK_BRM_BACKUP_PATH", "/var/permanent/brm_backup");
    DIR* directory = opendir(path.c_str());
    if (directory == nullptr) {
        VESK_ERROR("VeskBrMBackupManager::initExistingBackups: cannot open directory: %s\n",
                   path.c_str());
        return;
    }
    if (known.empty()) {
        VESK_INFO(
            "VeskBrMBackupManager::initExistingBackups: no known backups, removing all "
            "backup zip files");
        executeCmd(e_eComp_VeskCM, "rm -rf " + path + "/" + "*", "", false);
    }
    while (dirent* entry = readdir(directory)) {
        std::string name = entry->d_name;
        if (known.count(name) == 0 && Vesk_BrMUtils::isZipFile(name) && name != kTempZip &&
            name != kRollbackZip) {
            VESK_INFO(
                "VeskBrMBackupManager::initExistingBackups: backup zip without parent, "
                "removing %s",
                name.c_str());
            executeCmd(e_eComp_VeskCM, "rm " + path + "/" + name, "", false);
        }
    }
    closedir(directory);
    VESK_INFO("VeskBrMBackupManager::initExistingBackups exit");
}

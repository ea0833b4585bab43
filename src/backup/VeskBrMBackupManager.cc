#include "backup/VeskBrMBackupManager.h"

#include "backup/Vesk_BrMUtils.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

using namespace VeskBrMNames;

namespace {
// The first value of the first parameter as text; false when it has no value array.
bool firstText(OrlMoNamedAttributeValueContainer_3** parameters, std::string& out) {
    if (parameters == nullptr || parameters[0] == nullptr ||
        parameters[0]->attributeValue.values == nullptr) {
        VESK_ERROR("Mandatory parameter missing");
        return false;
    }
    char const* text = parameters[0]->attributeValue.values[0].theString;
    out = text != nullptr ? text : "";
    return true;
}
}  // namespace

VeskBrMBackupManager::VeskBrMBackupManager(std::string managerName)
    : _managerName(std::move(managerName)) {
    initExistingBackups();
    initOngoingOperation();
}

int VeskBrMBackupManager::fail(int code) {
    _ongoingOperation.clear();
    _ongoingBackup.clear();
    return code;
}

int VeskBrMBackupManager::execute(std::string const& dn, std::string const& name,
                                  OrlMoNamedAttributeValueContainer_3** parameters) {
    VESK_INFO("BrM: %s", "execute");
    if (isResetOngoing()) {
        VESK_ERROR("BrM:Recovery reset is ongoing, BRM operations are not allowed");
        return -1;
    }
    initOngoingOperation();
    if (_ongoingOperation.empty()) {
        _ongoingOperation = name;
        return start(dn, name, parameters);
    }
    if (name != "cancelCurrentAction") {
        VESK_ERROR("BrM: Operation %s still ongoing.", _ongoingOperation.c_str());
        return fail(-1);
    }
    if (dn == kManagerDn) {
        VESK_ERROR("BrM: Nothing to be canceled on BrMBackupManager=1 !!");
        return fail(-1);
    }
    // Throws std::out_of_range for a dn shorter than the manager's; the model keeps those out.
    std::string shortDn = dn.substr(kShortFormAt);
    if (shortDn == _ongoingBackup) {
        int rc = cancelCurrentAction();
        return rc == 0 ? 0 : fail(rc);
    }
    VESK_ERROR("BrM: Nothing to be canceled on %s !!", shortDn.c_str());
    return fail(-1);
}

int VeskBrMBackupManager::start(std::string const& dn, std::string const& name,
                                OrlMoNamedAttributeValueContainer_3** parameters) {
    std::string text;
    int rc = -1;
    if (name == "createBackup" || name == "deleteBackup") {
        if (!firstText(parameters, text)) {
            return fail(-1);
        }
        rc = name == "createBackup" ? createBackup(text) : deleteBackup(text);
    } else if (name == "cancelCurrentAction") {
        VESK_ERROR("BrM: Nothing to be canceled.");
    } else if (name == "importBackup") {
        VESK_ERROR("BrM: Backup import not supported yet!");
    } else if (name == "restore") {
        _ongoingBackup = dn.substr(kShortFormAt);
        rc = restoreBackup(_ongoingBackup);
    } else if (name == "export") {
        VESK_ERROR("BrM: Backup export not supported yet!");
    } else {
        VESK_ERROR("BrM: Invalid operation %s received.", name.c_str());
    }
    return rc == 0 ? 0 : fail(rc);
}

int VeskBrMBackupManager::createBackup(std::string const& name) {
    VESK_INFO("BrM:%s (name %s) action started", __func__, name.c_str());
    if (!findBackup(name).empty()) {
        VESK_ERROR("BrM: %s backup with name %s already exist", __func__, name.c_str());
        return -3;
    }
    if (!runHouseKeeping()) {
        VESK_ERROR("BrM: Max backups already made");
        return -1;
    }
    return Vesk_BrMUtils().sendRequest("CREATE", "", name) ? 0 : -10;
}

int VeskBrMBackupManager::deleteBackup(std::string const& name) {
    VESK_INFO("BrM: %s backup %s deletion started", __func__, name.c_str());
    std::string found = findBackup(name);
    if (found.empty()) {
        VESK_ERROR("BrM:%s Failed to delete backup %s. Backup not found", __func__, name.c_str());
        return -2;
    }
    return Vesk_BrMUtils().sendRequest("DELETE", found, name) ? 0 : -10;
}

int VeskBrMBackupManager::restoreBackup(std::string const& backupDn) const {
    VESK_INFO("BrM: restoring backup %s", backupDn.c_str());
    DBObject* backup = IDatabase::getObject(backupDn, 1, 0);
    if (backup == nullptr) {
        VESK_ERROR("BrM:Failed to get BrmBackup not found");
        return -2;
    }
    std::string name;
    if (Vesk_BrMUtils::readAttribute(backup, "backupName", name) == Vesk_BrMUtils::kWrongType) {
        VESK_ERROR("BrM: %s. boost::bad_get", __func__);
    }
    delete backup;
    return Vesk_BrMUtils().sendRequest("RESTORE", backupDn, name) ? 0 : -10;
}

int VeskBrMBackupManager::cancelCurrentAction() {
    VESK_INFO("BrM:current action canceled");
    return Vesk_BrMUtils().sendRequest("cancelCurrentAction", "", "") ? 0 : -1;
}

int VeskBrMBackupManager::importBackup(std::string const& uri, std::string const&) {
    VESK_INFO("BrM: Backup import not supported yet!");
    VESK_INFO("BrM: backup import from uri %s started", uri.c_str());
    return -1;
}

int VeskBrMBackupManager::exportBackup(std::string const& name, std::string const&,
                                       std::string const&) const {
    VESK_INFO("BrM: export backup %s to URI", name.c_str());
    return -1;
}

std::string VeskBrMBackupManager::findBackup(std::string const& name) const {
    std::list<DBObject*> objects = backups("findBackup");
    VESK_INFO("BrM: findBackup, name %s, backups count %d", name.c_str(),
              static_cast<int>(objects.size()));
    std::string found;
    for (DBObject* object : objects) {
        std::string backupName;
        Vesk_BrMUtils::Read read = Vesk_BrMUtils::readAttribute(object, "backupName", backupName);
        if (read == Vesk_BrMUtils::kWrongType) {
            VESK_ERROR("BrM: %s. boost::bad_get", "findBackup");
        }
        if (found.empty() && read == Vesk_BrMUtils::kRead && backupName == name) {
            VESK_INFO("BrM: findBackup: name %s found!", name.c_str());
            found = object->dn;
        }
        delete object;
    }
    if (found.empty()) {
        VESK_INFO("BrM: %s: name %s not found", "findBackup", name.c_str());
    }
    return found;
}

bool VeskBrMBackupManager::finalizeOperation(bool success, std::string const& operation,
                                             std::string const& dn) {
    VESK_INFO("BrM: %s, operation %s, dn %s", __func__, operation.c_str(), dn.c_str());
    if (operation.empty()) {
        VESK_ERROR("BrM: No ongoing operation");
        fail(0);
        return false;
    }
    if (operation == "RESTORE" && success) {
        return true;
    }
    Vesk_BrMUtils utils;
    DBObject* manager = utils.getDBObject(kManager, 1);
    bool found = manager != nullptr;
    if (!found) {
        VESK_ERROR("BrM:Failed to get BrmBackupManager=1 from DB");
    } else {
        utils.updateAttribute("activeBackup", AttributeVariant(std::string()), IPCData::AVT_STRING,
                              manager);
        utils.updateDbObj(manager);
        delete manager;
    }
    fail(0);
    return found;
}

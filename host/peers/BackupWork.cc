// The backup operations of the software management peer: archives of the station's state, their
// MOs and progress reports, the restore that puts one back and restarts the agent on it.
#include <cstdio>
#include <filesystem>

#include "host/Host.h"
#include "host/peers/BackupArchive.h"
#include "host/peers/SoftwareManagement.h"
#include "host/peers/StationRecords.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/VeskMessages.h"
#include "station/database/Database.h"

namespace vesk {
namespace host {
namespace peers {

using namespace records;
using VESK::Messages::VESK_BrMOperationReq;

namespace {

const char* const kBrMDn = "ManagedElement=1,SystemFunctions=1,BrM=1";
const char* const kTempZip = "BRM_TEMP_BACKUP.zip";
const char* const kRollbackZip = "BRM_ROLLBACK_BACKUP.zip";
const char* const kWaiting = ", restoration waiting 'confirmRestore' action";
// Values of the progress report's enumerations.
const int kRunning = 2;
const int kFinished = 3;
const int kSuccess = 1;
const int kFailure = 2;
const int kNotAvailable = 3;
const int kComplete = 1;
const int kIncomplete = 2;

Value enumeration(int value) {
    return number(value, IPCData::AVT_ENUM);
}

Value percent(int value) {
    return number(value, IPCData::AVT_UINT8);
}

std::string inStore(const std::string& file) {
    return SoftwareManagement::storePath() + "/" + file;
}

// The backup's name as a file name: letters, digits, '.', '-' and '_' kept, the rest '_'.
std::string fileNameFor(int id, const std::string& name) {
    std::string safe;
    for (char c : name) {
        bool plain = std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-';
        safe.push_back(plain ? c : '_');
    }
    return "backup-" + std::to_string(id) + (safe.empty() ? "" : "-" + safe) + ".zip";
}

// The full dn of the backup named `name`, else that of `activeBackup`, else "".
std::string backupDn(const std::string& name) {
    for (const std::string& id : IDatabase::getMOClassWithParent(kManagerDn, "BrmBackup", 0)) {
        std::string dn = std::string(kManagerDn) + ",BrmBackup=" + id;
        if (!name.empty() && textOf(dn, "backupName") == name) {
            return dn;
        }
    }
    std::string active = textOf(kManagerDn, "activeBackup");
    return active.empty() ? std::string() : std::string(kManagerDn) + "," + active;
}

bool inBrM(const std::string& dn) {
    return dn.rfind(kBrMDn, 0) == 0 &&
           (dn.size() == std::string(kBrMDn).size() || dn[std::string(kBrMDn).size()] == ',');
}

void ended(const std::string& dn, int result, const std::string& info) {
    updateReport(dn, {{"state", enumeration(kFinished)},
                      {"result", enumeration(result)},
                      {"progressInfo", text(info)},
                      {"timeActionCompleted", text(now())}});
}

}  // namespace

void SoftwareManagement::backupRequest(const VESK_BrMOperationReq& request, size_t record) {
    const std::string& operation = request.operation;
    Outcome outcome;
    if (operation == "cancelCurrentAction") {
        _cancel = false;
        outcome.success = _cancelledWork;
        outcome.info = _cancelledWork ? "the work under way was cancelled" : "nothing to cancel";
        outcome.code = _cancelledWork ? 0 : 1;
    } else if (operation == "CREATE") {
        outcome = createBackup(request.backupName);
    } else {
        std::string dn = backupDn(request.backupName);
        if (dn.empty() || IDatabase::isPresentInDB(dn, 1) == 0) {
            outcome.code = 2;
            outcome.info = "no backup named '" + request.backupName + "'";
        } else if (operation == "DELETE") {
            outcome = deleteBackup(dn);
        } else if (operation == "RESTORE") {
            outcome = restoreBackup(dn);
        } else if (operation == "confirmRestore") {
            outcome = confirmRestore(dn);
        } else {
            outcome.code = 3;
            outcome.info = "unknown operation";
        }
    }
    if (stopping()) {
        return;
    }
    _cancelledWork = operation != "cancelCurrentAction" && outcome.code == 4;
    VESK::Messages::VESK_BrMOperationResp reply;
    reply.success = outcome.success;
    reply.code = outcome.code;
    reply.operation = operation;
    reply.dn = outcome.dn;
    answer(reply, record,
           Json{{"success", outcome.success},
                {"code", outcome.code},
                {"dn", outcome.dn},
                {"info", outcome.info}});
}

SoftwareManagement::Outcome SoftwareManagement::createBackup(const std::string& name) {
    const int id = nextId(kManagerDn, "BrmBackup");
    const std::string rdn = "BrmBackup=" + std::to_string(id);
    Outcome outcome;
    outcome.dn = std::string(kManagerDn) + "," + rdn;
    const std::string file = fileNameFor(id, name);
    const std::string started = now();
    if (!createObject(kManagerDn, rdn,
                      {{"brmBackupId", text(std::to_string(id))},
                       {"backupName", text(name)},
                       {"creationTime", text(started)},
                       {"fileName", text(file)},
                       {"status", enumeration(kIncomplete)}},
                      {{"actionName", text("CREATE")},
                       {"state", enumeration(kRunning)},
                       {"result", enumeration(kNotAvailable)},
                       {"progressInfo", text("Backup " + name + " started")},
                       {"progressPercentage", percent(0)},
                       {"timeActionStarted", text(started)}})) {
        outcome.code = 1;
        outcome.info = "the backup MO could not be made";
        return outcome;
    }
    // A restarted agent sees the backup as the operation under way.
    update(kManagerDn, {{"activeBackup", text(rdn)}});
    std::string error;
    bool done = pace() && !failing() && archiveStation(file, outcome.dn, name, &error);
    if (done) {
        update(outcome.dn, {{"status", enumeration(kComplete)}});
        ended(outcome.dn, kSuccess, "Backup " + name + " created");
        updateReport(outcome.dn, {{"progressPercentage", percent(100)}});
        outcome.success = true;
        outcome.info = file;
        return outcome;
    }
    if (stopping()) {
        return outcome;
    }
    // A backup that did not complete is no backup: neither its MO nor a file stays.
    IDatabase::deleteObj(outcome.dn, 1, 0);
    std::remove(inStore(file).c_str());
    outcome.code = cancelled() ? 4 : 5;
    outcome.info = cancelled() ? "cancelled" : failing() ? "failed mid-way" : error;
    return outcome;
}

bool SoftwareManagement::archiveStation(const std::string& file, const std::string& dn,
                                        const std::string& name, std::string* error) {
    std::error_code ignored;
    std::filesystem::create_directories(storePath(), ignored);
    std::vector<db::ObjectPtr> objects = db::snapshot();
    int told = 0;
    Progress progress;
    progress.told = [&](double done) {
        int now = static_cast<int>(done * 100);
        if (!dn.empty() && now >= told + 10 && now < 100) {
            told = now;
            updateReport(dn, {{"progressPercentage", percent(now)},
                              {"progressInfo", text("Backup " + name + ": writing the archive, " +
                                                    std::to_string(objects.size()) + " objects")}});
        }
    };
    progress.cancelled = [this] { return cancelled(); };
    Json manifest{{"backupName", name}, {"creationTime", now()}};
    const std::string temp = inStore(kTempZip);
    if (!writeBackupArchive(temp, objects, manifest, progress, error)) {
        std::remove(temp.c_str());
        return false;
    }
    if (std::rename(temp.c_str(), inStore(file).c_str()) != 0) {
        *error = "cannot name the archive " + file;
        std::remove(temp.c_str());
        return false;
    }
    return true;
}

SoftwareManagement::Outcome SoftwareManagement::deleteBackup(const std::string& dn) {
    Outcome outcome;
    outcome.dn = dn;
    const std::string file = textOf(dn, "fileName");
    outcome.success = IDatabase::deleteObj(dn, 1, 0) != 0;
    if (!file.empty()) {
        std::remove(inStore(file).c_str());
    }
    outcome.code = outcome.success ? 0 : 1;
    outcome.info = outcome.success ? "deleted " + file : "the MO could not be deleted";
    return outcome;
}

SoftwareManagement::Outcome SoftwareManagement::restoreBackup(const std::string& dn) {
    Outcome outcome;
    outcome.dn = dn;
    const std::string name = textOf(dn, "backupName");
    updateReport(dn, {{"actionName", text("RESTORE")},
                      {"state", enumeration(kRunning)},
                      {"result", enumeration(kNotAvailable)},
                      {"progressInfo", text("Restore of " + name + " started")},
                      {"progressPercentage", percent(0)},
                      {"timeActionStarted", text(now())}});
    std::vector<db::StoredObject> objects;
    Json manifest;
    std::string error;
    if (!readBackupArchive(inStore(textOf(dn, "fileName")), &objects, &manifest, &error)) {
        outcome.code = 2;
        outcome.info = "refused: " + error;
        ended(dn, kFailure, "Restore of " + name + " refused: " + error);
        return outcome;
    }
    updateReport(dn, {{"progressPercentage", percent(50)},
                      {"progressInfo", text("Restore of " + name + ": archive read, " +
                                            std::to_string(objects.size()) + " objects")}});
    // The running configuration, for a roll back until the restore is confirmed.
    bool kept = pace() && !failing() && archiveStation(kRollbackZip, "", name, &error);
    if (!kept) {
        outcome.code = cancelled() ? 4 : 5;
        outcome.info = cancelled() ? "cancelled" : failing() ? "failed mid-way" : error;
        ended(dn, kFailure,
              "Restore of " + name + " stopped (" + outcome.info +
                  "): the configuration is unchanged");
        return outcome;
    }
    bool restarted = _host.restartAgentAround(
        [&](std::string* reason) {
            if (!db::replace(std::move(objects), inBrM, reason)) {
                return false;
            }
            ended(dn, kSuccess, "Backup " + name + " restored" + kWaiting);
            updateReport(dn, {{"progressPercentage", percent(100)}});
            return true;
        },
        &error);
    outcome.success = restarted;
    outcome.code = restarted ? 0 : 6;
    outcome.info = restarted ? "restored, the agent restarted" : error;
    if (!restarted) {
        ended(dn, kFailure, "Restore of " + name + " failed: " + error);
    }
    return outcome;
}

SoftwareManagement::Outcome SoftwareManagement::confirmRestore(const std::string& dn) {
    Outcome outcome;
    outcome.dn = dn;
    const std::string info =
        textOf(dn + "," + dn.substr(dn.rfind(',') + 1) + ":progressReport", "progressInfo");
    if (info.find(kWaiting) == std::string::npos) {
        outcome.code = 1;
        outcome.info = "no restore waits for confirmation";
        return outcome;
    }
    const std::string name = textOf(dn, "backupName");
    ended(dn, kSuccess, "Backup " + name + " restored and confirmed");
    std::remove(inStore(kRollbackZip).c_str());
    outcome.success = true;
    outcome.info = "confirmed";
    return outcome;
}

void SoftwareManagement::stateOpened() {
    if (!vesk::db::isOpen()) {
        return;
    }
    bool cleared = false;
    for (const std::string& id : IDatabase::getMOClassWithParent(kManagerDn, "BrmBackup", 0)) {
        const std::string dn = std::string(kManagerDn) + ",BrmBackup=" + id;
        const std::string report = dn + ",BrmBackup=" + id + ":progressReport";
        int state = numberOf(report, "state", kFinished);
        if (state != 1 && state != kRunning) {
            continue;
        }
        const std::string action = textOf(report, "actionName");
        VESK_WARNING("peer swm: %s of %s was interrupted by a stop of the station", action.c_str(),
                     dn.c_str());
        note(Json{{"recovered", dn}, {"operation", action}});
        if (action == "CREATE" || action == "DELETE") {
            deleteBackup(dn);
        } else {
            ended(dn, kFailure, action + " interrupted by a stop of the station");
        }
        cleared = true;
    }
    std::remove(inStore(kTempZip).c_str());
    if (cleared) {
        update(kManagerDn, {{"activeBackup", text("")}});
    }
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

// Backup, restore and upgrade packages of the real agent on the demo station, through the
// host's `action` command, with the host's software management component doing the work: real
// zip archives in a store of the test's own, restores that restart the agent, the rotation of
// the store, refusals, a silent component and a host stopped in the middle of a backup.
#include <gtest/gtest.h>

#include <fstream>

#include "e2e/HostFixture.h"
#include "host/peers/BackupArchive.h"
#include "host/peers/StationRecords.h"
#include "station/framework/FrameworkControl.h"

namespace {

using namespace vesk::e2e;
using vesk::host::peers::records::numberOf;
using vesk::host::peers::records::textOf;

const std::string kManager = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1";
const std::string kRollback = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmRollbackAtRestore=1";
const std::string kBackupSwM = "ManagedElement=1,SystemFunctions=1,SwM=1";

class BackupTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        _store = _dir + "/backups";
        std::filesystem::create_directories(_store);
        vesk::station::setTimeScale(0.01);
        startAgentShell();
    }
    void TearDown() override {
        HostFixture::TearDown();
        vesk::station::setTimeScale(1);
    }
    Json act(const std::string& dnAndName) { return run("action " + dnAndName); }
    // The action's INT32 result, once the component has answered it and the agent has taken
    // the answer (nothing is then active, unless a restore waits for its confirmation).
    int backupAction(const std::string& dnAndName, bool idle = true) {
        size_t before = run("peer swm show")["result"].size();
        Json answer = act(dnAndName);
        int result = answer["result"]["result"];
        if (result == 0) {
            EXPECT_TRUE(eventually([&] {
                Json shown = run("peer swm show")["result"];
                return shown.size() > before && shown.back().contains("answer") &&
                       (!idle || textOf(kManager, "activeBackup").empty());
            })) << dnAndName;
            vesk::station::waitForIdleQueues(2000);
        }
        return result;
    }
    std::string backupOf(const std::string& name) {
        Json listed = run("ls " + kManager + " BrmBackup")["result"];
        for (const Json& found : listed) {
            std::string dn = found.get<std::string>();
            if (textOf(dn, "backupName") == name)
                return dn;
        }
        return "";
    }
    std::string report(const std::string& dn) {
        return textOf(dn + dn.substr(dn.rfind(',')) + ":progressReport", "progressInfo");
    }
    std::string label() { return run("get ManagedElement=1 userLabel")["result"]["userLabel"]; }

    std::string _store;
};

// Three backups as real archives, a change, the restore of the first with the agent restarted
// on it, and its confirmation; stray zips go at the first use of the backup actions.
TEST_F(BackupTest, BackupsRestoreAndConfirmThroughTheComponent) {
    for (const char* stray :
         {"A.ZIP", "a;touch x.zip", "notes.txt", "BRM_TEMP_BACKUP.zip", "BRM_ROLLBACK_BACKUP.zip"})
        std::ofstream(_store + "/" + stray) << "x";
    // No backup of that name: refused, and nothing reaches the component.
    EXPECT_EQ(backupAction(kManager + " deleteBackup name=none"), -1);
    for (const char* stray : {"A.ZIP", "a;touch x.zip"})
        EXPECT_FALSE(std::filesystem::exists(_store + "/" + stray)) << stray;
    for (const char* kept : {"notes.txt", "BRM_TEMP_BACKUP.zip", "BRM_ROLLBACK_BACKUP.zip"})
        EXPECT_TRUE(std::filesystem::exists(_store + "/" + kept)) << kept;
    EXPECT_FALSE(std::filesystem::exists("x.zip"));
    EXPECT_EQ(run("peer swm show")["result"].size(), 0u);

    ASSERT_EQ(run("set ManagedElement=1 userLabel first")["code"], "OrlOk");
    for (const char* name : {"b1", "b2", "b3"})
        ASSERT_EQ(backupAction(kManager + " createBackup name=" + name), 0) << name;
    EXPECT_EQ(run("count " + kManager + " BrmBackup")["result"], 4);
    std::vector<vesk::db::StoredObject> objects;
    vesk::e2e::Json manifest;
    std::string error;
    const std::string first = backupOf("b1");
    ASSERT_TRUE(vesk::host::peers::readBackupArchive(_store + "/" + textOf(first, "fileName"),
                                                     &objects, &manifest, &error))
        << error;
    EXPECT_EQ(manifest["backupName"], "b1");
    EXPECT_GT(objects.size(), 100u);
    EXPECT_LT(textOf(first, "creationTime"), textOf(backupOf("b3"), "creationTime"));
    EXPECT_EQ(
        numberOf(first + ",BrmBackup=" + first.substr(first.rfind('=') + 1) + ":progressReport",
                 "state", 0),
        3);

    ASSERT_EQ(run("set ManagedElement=1 userLabel second")["code"], "OrlOk");
    EXPECT_EQ(backupAction(first + " restore", false), 0);
    EXPECT_EQ(label(), "first");
    EXPECT_NE(report(first).find(" restoration waiting 'confirmRestore' action"),
              std::string::npos);
    EXPECT_EQ(textOf(kManager, "activeBackup"), first.substr(60));
    // The restored station still knows every backup, made before or after the one restored.
    EXPECT_EQ(run("count " + kManager + " BrmBackup")["result"], 4);
    // Nothing else starts before the restore is confirmed.
    EXPECT_EQ(act(kManager + " createBackup name=b4")["result"]["result"], -1);
    EXPECT_EQ(act(kRollback + " confirmRestore")["result"]["result"], 0);
    EXPECT_EQ(report(first), "Backup b1 restored and confirmed");
    EXPECT_EQ(textOf(kManager, "activeBackup"), "");
    EXPECT_FALSE(std::filesystem::exists(_store + "/BRM_ROLLBACK_BACKUP.zip"));
    EXPECT_EQ(backupAction(kManager + " createBackup name=b4"), 0);
}

// The agent's checks and the rotation, row by row on one station; each row's requests as the
// component saw them.
TEST_F(BackupTest, RotationAndRefusals) {
    struct Row {
        const char* setup;  // a command run first, or ""
        std::string action;
        int result;
        const char* code;
        const char* requests;  // operations the component received
    };
    const std::string keeping = "set " + kManager + ",BrmBackupHousekeeping=1 ";
    const Row rows[] = {
        {"", kManager + " createBackup name=b1", 0, "OrlOk", "CREATE"},
        {"", kManager + " createBackup name=b1", -1, "OrlOk", ""},  // that name exists
        {"", kManager + " importBackup uri=sftp://x", -1, "OrlOk", ""},
        {"", kManager + " cancelCurrentAction", -1, "OrlOk", ""},  // nothing under way
        {"", kManager + ",BrmBackup=1 cancelCurrentAction", -1, "OrlOk", ""},
        {"", kManager + " export uri=sftp://x", -1, "OrlOk", ""},
        {"", kManager + ",BrmBackup=1 export uri=sftp://x", -1, "OrlOk", ""},
        // At the limit the oldest (the demo's own, of 2026-11-20) goes before the new one.
        {"maxStoredManualBackups 2", kManager + " createBackup name=b2", 0, "OrlOk",
         "DELETE CREATE"},
        {"autoDelete 0", kManager + " createBackup name=b3", -1, "OrlOk", ""},
        {"autoDelete 1", kManager + " createBackup name=b3", 0, "OrlOk", "DELETE CREATE"},
        {"", kManager + " deleteBackup name=b2", 0, "OrlOk", "DELETE"},
        {"peer swm refuse", kManager + " createBackup name=b5", -1, "OrlSendFailed", "CREATE"},
        {"", kManager + " createBackup name=b6", 0, "OrlOk", "CREATE"},  // below the limit
        {"maxStoredManualBackups 3", kManager + " createBackup name=b7", 0, "OrlOk", "CREATE"},
        // Under a lowered limit every backup beyond it goes, oldest first.
        {"maxStoredManualBackups 1", kManager + " createBackup name=b8", 0, "OrlOk",
         "DELETE DELETE DELETE CREATE"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.action);
        run("peer swm ok");
        if (*row.setup)
            run(row.setup[0] == 'p' ? row.setup : keeping + row.setup);
        size_t before = run("peer swm show")["result"].size();
        Json answer = act(row.action);
        EXPECT_EQ(answer["code"], row.code) << answer.dump();
        EXPECT_EQ(answer["result"]["result"], row.result);
        EXPECT_TRUE(eventually([&] {
            Json shown = run("peer swm show")["result"];
            return shown.empty() || shown.back().contains("answer") ||
                   shown.back().contains("refused");
        }));
        ASSERT_TRUE(eventually([&] { return textOf(kManager, "activeBackup").empty(); }));
        vesk::station::waitForIdleQueues(2000);
        std::string seen;
        Json shown = run("peer swm show")["result"];
        for (size_t i = before; i < shown.size(); ++i)
            seen += (seen.empty() ? "" : " ") + shown[i]["operation"].get<std::string>();
        EXPECT_EQ(seen, row.requests);
    }
    EXPECT_EQ(run("count " + kManager + " BrmBackup")["result"], 1);
    EXPECT_NE(backupOf("b8"), "");
}

// A damaged archive, a component that fails mid-way and one that stays silent: the running
// configuration is untouched and each wait ends.
TEST_F(BackupTest, DamageFailureAndSilence) {
    ASSERT_EQ(run("set ManagedElement=1 userLabel kept")["code"], "OrlOk");
    ASSERT_EQ(backupAction(kManager + " createBackup name=b1"), 0);
    const std::string backup = backupOf("b1");
    const std::string zip = _store + "/" + textOf(backup, "fileName");
    {
        std::fstream file(zip, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(std::filesystem::file_size(zip) / 2));
        file.write("damage", 6);
    }
    ASSERT_EQ(run("set ManagedElement=1 userLabel changed")["code"], "OrlOk");
    EXPECT_EQ(backupAction(backup + " restore"), 0);  // sent; the component refuses it
    EXPECT_EQ(report(backup).rfind("Restore of b1 refused: ", 0), 0u) << report(backup);
    EXPECT_EQ(label(), "changed");
    run("peer swm fail");
    EXPECT_EQ(backupAction(kManager + " createBackup name=b2"), 0);
    EXPECT_EQ(backupOf("b2"), "");
    EXPECT_EQ(run("peer swm show")["result"].back()["answer"]["info"], "failed mid-way");
    // An answer naming another request is not taken: the wait ends as without one.
    run("peer swm stale");
    Json stale = act(kBackupSwM + ",UpgradePackage=1 prepare");
    EXPECT_EQ(stale["code"], "OrlFailure");
    EXPECT_NE(stale["reasons"].dump().find("don't match request id"), std::string::npos);
    // No answer: the waits end (30 s and 10 s on the test's fast clock).
    run("peer swm silent");
    EXPECT_EQ(act(kBackupSwM + ",UpgradePackage=1 prepare")["code"], "OrlFailure");
    EXPECT_EQ(act(kRollback + " confirmRestore")["result"]["result"], -1);
}

// Created, prepared, verified, activated and confirmed; a running package is not removed.
TEST_F(BackupTest, UpgradePackageThroughItsStates) {
    Json created = act(kBackupSwM + " createUpgradePackage uri=sftp://oss/r2.zip password=p");
    EXPECT_EQ(created["result"], Json({{"id", 2}})) << created.dump();
    EXPECT_EQ(act(kBackupSwM + " createUpgradePackage uri=sftp://oss/r2.zip password=p")["result"],
              Json({{"id", 0}}));
    const std::string package = kBackupSwM + ",UpgradePackage=2";
    const std::pair<const char*, int> steps[] = {
        {"prepare", 3}, {"verify", 3}, {"activate", 6}, {"confirm", 7}};
    for (const auto& step : steps) {
        Json answer = act(kBackupSwM + ",UpgradePackage=1 " + step.first);
        EXPECT_EQ(answer["result"], Json({{"ok", true}})) << step.first << answer.dump();
        EXPECT_EQ(numberOf(package, "state", 0), step.second) << step.first;
    }
    Json removed = act(kBackupSwM + " removeUpgradePackage");
    EXPECT_EQ(removed["code"], "OrlOk");
    EXPECT_EQ(removed["result"], Json({{"ok", false}}));
    EXPECT_EQ(run("peer swm show")["result"].back()["answer"]["upgradePackageState"], 2);
}

// A backup cancelled while it is written; the host stops while another is being written; at the
// next start the half-made backup is gone, nothing is active, and backups work again.
TEST_F(BackupTest, HostRestartInTheMiddleOfABackup) {
    run("peer swm slow 600000");
    // A cancel on the backup under way ends it at once, and nothing of it stays.
    EXPECT_EQ(act(kManager + " createBackup name=dropped")["result"]["result"], 0);
    ASSERT_TRUE(eventually([&] { return !textOf(kManager, "activeBackup").empty(); }));
    EXPECT_EQ(act(backupOf("dropped") + " cancelCurrentAction")["result"]["result"], 0);
    ASSERT_EQ(run("peer swm wait")["ok"], true);
    EXPECT_EQ(backupOf("dropped"), "");
    EXPECT_EQ(run("peer swm show")["result"][0]["answer"]["code"], 4);
    run("peer swm slow 600000");
    EXPECT_EQ(act(kManager + " createBackup name=cut")["result"]["result"], 0);
    ASSERT_TRUE(eventually([&] { return !backupOf("cut").empty(); }));
    closeHost();
    openHost();
    ASSERT_NO_FATAL_FAILURE(loadModel(false));
    ASSERT_NO_FATAL_FAILURE(loadPlugin(VESK_AGENT_PATH));
    ASSERT_EQ(_host->start(), OrlOk);
    openShell();
    EXPECT_EQ(backupOf("cut"), "");
    EXPECT_EQ(textOf(kManager, "activeBackup"), "");
    EXPECT_EQ(backupAction(kManager + " createBackup name=again"), 0);
    EXPECT_NE(backupOf("again"), "");
}

}  // namespace

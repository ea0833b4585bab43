// The MO "BrmBackupManager=1": what a backup action means, which operation is going on, the
// limit on stored backups, and after a restart the backup store and the database brought back
// into step. The work itself is software management's (destination 7): this class sends it
// requests and reads what it writes.
//
// Threads: execute runs on a host thread, finalizeOperation on the backup machine's; VeskBrM
// never runs both at once (it holds its lock around each).
#pragma once

#include <list>
#include <string>

#include "platform/DBObject.h"
#include "platform/orl/OrlAttributeValue.h"

class VeskBrMBackupManager {
  public:
    VeskBrMBackupManager() = default;
    // Keeps `managerName` ("BrmBackupManager=1"), then syncs the store and takes over an
    // operation that the database shows as running.
    explicit VeskBrMBackupManager(std::string managerName);

    // One action on the manager's dn or a backup's: 0 started, -1 refused, -2 no such backup,
    // -3 a backup of that name exists, -10 not sent. A refusal forgets the ongoing operation.
    int execute(std::string const& dn, std::string const& name,
                OrlMoNamedAttributeValueContainer_3** parameters);

    int createBackup(std::string const& name);
    int deleteBackup(std::string const& name);
    int restoreBackup(std::string const& backupDn) const;
    // 0 if the request went out, -1 otherwise.
    int cancelCurrentAction();
    // Both -1 at once; not reached by execute.
    int importBackup(std::string const& uri, std::string const&);
    int exportBackup(std::string const&, std::string const&, std::string const&) const;

    // The short dn (`BrmBackup=<id>`) of the backup named `name`, or "".
    std::string findBackup(std::string const& name) const;
    // The backup objects of the database, owned by the caller.
    std::list<DBObject*> getBackupsFromDb() const;
    // Makes room for one more backup, asking for the oldest to be deleted when "autoDelete" is
    // 1; false when the store is full and may not be thinned.
    bool runHouseKeeping();
    // An answer of software management: false when there was no operation or the manager MO
    // is missing. A successful "RESTORE" keeps everything: it waits for "confirmRestore".
    bool finalizeOperation(bool success, std::string const& operation, std::string const& dn);
    // Removes zip files of the store that no backup MO names (all when no backup is known),
    // except the two of software management's own.
    void initExistingBackups();
    // Takes over the operation that the progress report of "activeBackup" shows as running.
    void initOngoingOperation();
    // "resetOngoing" of "OAM"; false when it cannot be read.
    bool isResetOngoing() const;

    std::string const& ongoingOperation() const { return _ongoingOperation; }
    std::string const& ongoingBackup() const { return _ongoingBackup; }

  private:
    // Forgets the ongoing operation and answers `code`.
    int fail(int code);
    // The action of `name` once it is the ongoing operation.
    int start(std::string const& dn, std::string const& name,
              OrlMoNamedAttributeValueContainer_3** parameters);
    // The walk of the backup objects, with the log lines of `caller`.
    std::list<DBObject*> backups(char const* caller) const;

    std::string _ongoingOperation;
    std::string _ongoingBackup;
    std::string _managerName;
};

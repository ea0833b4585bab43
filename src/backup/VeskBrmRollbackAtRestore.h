// The action "confirmRestore" of "BrmRollbackAtRestore=1": makes a restore final. Unlike the
// other backup actions it waits (100 polls of 100 ms through the station's sleep) for software
// management's answer before it returns.
//
// Threads: confirmRestore on a host thread; confirmRestoreResponseReceived on the backup
// machine's thread. The answer's fields are stored before the flag that releases them.
#pragma once

#include <atomic>
#include <string>

class VeskBrmRollbackAtRestore {
  public:
    // 0 confirmed, -1 refused, no answer or nothing to confirm, 2 no "activeBackup" attribute,
    // -10 not sent.
    int confirmRestore();
    int sendConfirmRestoreCommand(std::string const& backupDn);
    // Stores the answer for the waiting host thread and empties "activeBackup".
    void confirmRestoreResponseReceived(bool success);

  private:
    std::atomic<bool> _responseReceived{false};
    std::atomic<bool> _responseResult{false};
};

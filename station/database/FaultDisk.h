// The station's failing disk, for fault injection in tests and trials: a SQLite VFS over the
// default one, made the default while a FaultDisk lives, so that every file operation of the store
// opened meanwhile passes through it. It counts writes and syncs, injects faults, and keeps each
// file's bytes as of its last successful sync, so that a loss of power can be played:
// restoreSynced() puts every file back to that. It does not call the real sync: what survives a
// loss of power is its own record. One at a time per process; any thread.
#pragma once

#include <sqlite3.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace vesk {
namespace db {

class FaultDisk {
  public:
    FaultDisk();
    ~FaultDisk();
    FaultDisk(const FaultDisk&) = delete;
    FaultDisk& operator=(const FaultDisk&) = delete;

    // Faults, counted from the call: the `nth` write fails with EIO; the `nth` sync fails and
    // syncs nothing; every write that would grow a file fails with "disk full" until clear(); the
    // `nth` write or sync and everything after it fail: the power is off until restoreSynced().
    void failWrite(int nth);
    void failSync(int nth);
    void fillDisk();
    void cutPower(int nth);
    // No fault from now on (the power stays off until restoreSynced()).
    void clear();
    bool powerIsOff() const;
    // Power back: every file as of its last successful sync (or as it was when first opened);
    // files never synced are gone. Call with no store open.
    void restoreSynced();
    // Writes into the folder `to` the files of the folder `from` as a loss of power would leave
    // them now.
    void copySynced(const std::string& from, const std::string& to) const;

    // Counts since construction or the last resetCounts(); the files synced, in order.
    int writes() const;
    std::vector<std::string> synced() const;
    void resetCounts();

    struct File;  // one open file of this disk

  private:
    struct Image {
        bool exists = false;
        std::string bytes;
    };
    static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out);
    static int remove(sqlite3_vfs* vfs, const char* name, int syncDirectory);
    static int write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset);
    static int sync(sqlite3_file* file, int flags);
    static int truncate(sqlite3_file* file, sqlite3_int64 size);
    static int close(sqlite3_file* file);
    // Counts one write or sync; SQLITE_IOERR when a fault set for it hits, else SQLITE_OK.
    int nextOperation(bool isSync);
    void keepSynced(File* file);
    void arm();

    sqlite3_vfs _vfs;
    sqlite3_vfs* _real;
    mutable std::mutex _mutex;
    std::map<std::string, Image> _images;
    std::vector<std::string> _synced;
    int _writes = 0;
    int _armedWrites = 0, _armedSyncs = 0;  // since the last fault was set
    int _failWriteAt = 0, _failSyncAt = 0, _cutAt = 0;
    bool _diskFull = false, _powerOff = false;
};

}  // namespace db
}  // namespace vesk

// The durable half of the store: one SQLite file in WAL mode whose log is synced at every commit,
// so that a commit that succeeded is on stable storage. Every row carries a checksum, checked when
// it is loaded. Not thread-safe: the owner serialises every call (the commit lock of the Engine).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "station/database/AttributeCodec.h"
#include "station/database/StoredObject.h"

struct sqlite3;
struct sqlite3_stmt;

namespace vesk {
namespace db {

class SqliteStore {
  public:
    // The log is folded into the main file by fold() once it holds this many pages, and by the
    // commit itself once it holds kLogLimitPages (when nobody folds it).
    static constexpr int kFoldPages = 1000;
    static constexpr int kLogLimitPages = 8000;

    SqliteStore() = default;
    ~SqliteStore();
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    // Opens the store file `path`. A missing file becomes a new, empty store when `mayCreate`,
    // made under a temporary name and renamed when complete. Refused (false, with the file and
    // the reason in `error`, the file left as it is): a missing file without `mayCreate`, an empty
    // file, a file that is not a store of this kind, or one that fails SQLite's quick check.
    bool open(const std::string& path, bool mayCreate, std::string* error);
    // Calls `sink` for every stored object, in insertion order, after checking its columns and
    // its checksum (and those of the attribute layouts). `sink` answers false, leaving the object
    // as it was, for a dn it already has. False, with the object's dn and the reason in
    // `error`, at the first row that fails.
    bool loadAll(const std::function<bool(StoredObject&&)>& sink, std::string* error);
    // About the number of stored objects, for sizing before loadAll(), found without reading the
    // rows: the highest seq, bounded by what the file's pages can hold. 0 if unknown.
    size_t objectsAtMost();

    // Writes `puts` and removes the rows of `removes` (by seq) in one transaction, synced before
    // it returns: all or nothing. After a failure the log records it left are overwritten, so that
    // no recovery can bring them back; while that has not succeeded, every apply fails.
    bool apply(const std::vector<ObjectPtr>& puts, const std::vector<uint64_t>& removes,
               std::string* error);
    // Copies the log into the main file and syncs it, when the log holds kFoldPages or more, or
    // always with `force`. True when there was nothing to do.
    bool fold(bool force, std::string* error);
    void close();

    const std::string& path() const { return _path; }

  private:
    bool create(const std::string& path, std::string* error);
    bool configure(std::string* error);
    bool exec(const char* sql, std::string* error);
    bool prepare(const char* sql, sqlite3_stmt** statement, std::string* error);
    bool checkSchema(std::string* error);
    bool quickCheck(std::string* error);
    bool checkFormat(std::string* error);
    bool convert(int from, std::string* error);
    bool loadLayouts(std::string* error);
    // The rows of `objects` as `format` (1, 2 or 3) stores them.
    bool readObjects(int format, const std::function<bool(StoredObject&&)>& sink,
                     std::string* error);
    bool readRow(sqlite3_stmt* row, int format, StoredObject* object, std::string* error) const;
    bool writeObject(sqlite3_stmt* statement, const StoredObject& object, std::string* error);
    bool writeLayouts(sqlite3_stmt* statement, std::string* error);
    bool removeObject(uint64_t seq, std::string* error);
    bool withdraw(std::string* error);
    std::string reason(const char* what) const;
    static int onCommit(void* self, sqlite3* db, const char* name, int pages);

    sqlite3* _db = nullptr;
    sqlite3_stmt* _put = nullptr;
    sqlite3_stmt* _putLayout = nullptr;
    sqlite3_stmt* _remove = nullptr;
    Layouts _layouts;
    std::string _path;
    int _logPages = 0;              // pages in the log since the last fold
    bool _withdrawPending = false;  // a failed commit's log records may still be valid
};

// The checksum of one attribute layout: CRC-32 of its id (8 bytes, least significant first) and
// its body.
uint32_t layoutChecksum(uint32_t id, const void* body, size_t size);

// The checksum of one stored row: CRC-32 of seq, the six integer fields (each as 8 bytes, least
// significant first), dn and the attribute encoding, in that order.
uint32_t rowChecksum(uint64_t seq, const int64_t (&fields)[6], const char* dn, size_t dnSize,
                     const void* attrs, size_t attrsSize);

}  // namespace db
}  // namespace vesk

// The durable half of the store: one SQLite file in WAL mode. Not thread-safe: the owner
// serialises every call (the commit lock of the Engine).
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "station/database/StoredObject.h"

struct sqlite3;
struct sqlite3_stmt;

namespace vesk {
namespace db {

class SqliteStore {
  public:
    SqliteStore() = default;
    ~SqliteStore();
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    // Opens or creates `path`. False with the file and the reason in `error`; a file that is not
    // a store of this kind, or that SQLite reports corrupt, is refused and left as it is.
    bool open(const std::string& path, std::string* error);
    // Calls `sink` for every stored object, in insertion order. False (with `error`) if a row
    // cannot be read or decoded.
    bool loadAll(const std::function<void(StoredObject&&)>& sink, std::string* error);

    // Writes `puts` and removes `removes` in one SQLite transaction: all or nothing.
    bool apply(const std::vector<ObjectPtr>& puts, const std::vector<std::string>& removes,
               std::string* error);
    // Copies the write-ahead log into the main file.
    bool checkpoint(std::string* error);
    void close();

    const std::string& path() const { return _path; }

  private:
    bool exec(const char* sql, std::string* error);
    bool prepare(const char* sql, sqlite3_stmt** statement, std::string* error);
    bool checkSchema(std::string* error);
    bool writeObject(const StoredObject& object, std::string* error);
    bool removeObject(const std::string& dn, std::string* error);
    std::string reason(const char* what) const;

    sqlite3* _db = nullptr;
    sqlite3_stmt* _put = nullptr;
    sqlite3_stmt* _remove = nullptr;
    std::string _path;
};

}  // namespace db
}  // namespace vesk

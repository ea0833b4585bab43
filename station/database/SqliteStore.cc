#include "station/database/SqliteStore.h"

#include <sqlite3.h>

#include <cstring>

namespace vesk {
namespace db {

namespace {

const char* kSchema =
    "CREATE TABLE IF NOT EXISTS vesk_meta (name TEXT PRIMARY KEY, value TEXT NOT NULL);"
    "INSERT OR IGNORE INTO vesk_meta VALUES ('format', '1');"
    "CREATE TABLE IF NOT EXISTS objects (seq INTEGER PRIMARY KEY, dn TEXT NOT NULL UNIQUE,"
    " instance INTEGER NOT NULL, visible INTEGER NOT NULL, flag_b INTEGER NOT NULL,"
    " op_state INTEGER NOT NULL, admin_state INTEGER NOT NULL, class_instance INTEGER NOT NULL,"
    " attrs BLOB NOT NULL);";

}  // namespace

SqliteStore::~SqliteStore() {
    close();
}

std::string SqliteStore::reason(const char* what) const {
    return _path + ": " + what + ": " + (_db != nullptr ? sqlite3_errmsg(_db) : "cannot open");
}

bool SqliteStore::exec(const char* sql, std::string* error) {
    char* message = nullptr;
    if (sqlite3_exec(_db, sql, nullptr, nullptr, &message) == SQLITE_OK)
        return true;
    *error = _path + ": " + (message != nullptr ? message : "error");
    sqlite3_free(message);
    return false;
}

bool SqliteStore::prepare(const char* sql, sqlite3_stmt** statement, std::string* error) {
    if (sqlite3_prepare_v2(_db, sql, -1, statement, nullptr) == SQLITE_OK)
        return true;
    *error = reason("cannot prepare");
    return false;
}

bool SqliteStore::open(const std::string& path, std::string* error) {
    _path = path;
    int rc =
        sqlite3_open_v2(path.c_str(), &_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (rc != SQLITE_OK) {
        *error = reason("cannot open");
        close();
        return false;
    }
    sqlite3_busy_timeout(_db, 5000);
    // A file that is not a database fails on the first statement that reads it. A commit reaches
    // the log before it returns (safe from a crash of the process); the log is synced to the disk
    // at each checkpoint.
    bool ok = exec("PRAGMA journal_mode=WAL;", error) &&
              exec("PRAGMA synchronous=NORMAL;", error) && checkSchema(error) &&
              exec(kSchema, error) &&
              prepare("INSERT OR REPLACE INTO objects VALUES (?,?,?,?,?,?,?,?,?)", &_put, error) &&
              prepare("DELETE FROM objects WHERE dn = ?", &_remove, error);
    if (!ok)
        close();
    return ok;
}

// A file with tables but without ours, or of another format, is someone else's: refused.
bool SqliteStore::checkSchema(std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare("SELECT count(*), sum(name = 'objects'), sum(name = 'vesk_meta')"
                 " FROM sqlite_master WHERE type = 'table'",
                 &statement, error)) {
        return false;
    }
    bool ok = sqlite3_step(statement) == SQLITE_ROW;
    int tables = ok ? sqlite3_column_int(statement, 0) : 0;
    bool ours =
        ok && sqlite3_column_int(statement, 1) == 1 && sqlite3_column_int(statement, 2) == 1;
    if (!ok)
        *error = reason("cannot read the schema");
    sqlite3_finalize(statement);
    if (ok && tables > 0 && !ours) {
        *error = _path + ": not a station configuration store (unknown tables)";
        return false;
    }
    return ok;
}

bool SqliteStore::loadAll(const std::function<void(StoredObject&&)>& sink, std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare("SELECT dn, seq, instance, visible, flag_b, op_state, admin_state,"
                 " class_instance, attrs FROM objects ORDER BY seq",
                 &statement, error)) {
        return false;
    }
    int rc;
    bool ok = true;
    while (ok && (rc = sqlite3_step(statement)) == SQLITE_ROW) {
        StoredObject object;
        object.fullDn = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        object.seq = static_cast<uint64_t>(sqlite3_column_int64(statement, 1));
        object.instance = sqlite3_column_int(statement, 2);
        object.visible = sqlite3_column_int(statement, 3) != 0;
        object.flagB = sqlite3_column_int(statement, 4) != 0;
        object.operationalState = sqlite3_column_int(statement, 5);
        object.adminState = sqlite3_column_int(statement, 6);
        object.classInstance = sqlite3_column_int(statement, 7);
        const char* blob = static_cast<const char*>(sqlite3_column_blob(statement, 8));
        size_t size = static_cast<size_t>(sqlite3_column_bytes(statement, 8));
        if (!decodeAttributes(blob, size, &object)) {
            *error = _path + ": corrupt attributes of '" + object.fullDn + "'";
            ok = false;
        } else {
            sink(std::move(object));
        }
    }
    if (ok && rc != SQLITE_DONE) {
        *error = reason("cannot read objects");
        ok = false;
    }
    sqlite3_finalize(statement);
    return ok;
}

bool SqliteStore::writeObject(const StoredObject& o, std::string* error) {
    std::string attrs = encodeAttributes(o);
    sqlite3_reset(_put);
    sqlite3_bind_int64(_put, 1, static_cast<sqlite3_int64>(o.seq));
    sqlite3_bind_text(_put, 2, o.fullDn.data(), static_cast<int>(o.fullDn.size()), SQLITE_STATIC);
    sqlite3_bind_int(_put, 3, o.instance);
    sqlite3_bind_int(_put, 4, o.visible ? 1 : 0);
    sqlite3_bind_int(_put, 5, o.flagB ? 1 : 0);
    sqlite3_bind_int(_put, 6, o.operationalState);
    sqlite3_bind_int(_put, 7, o.adminState);
    sqlite3_bind_int(_put, 8, o.classInstance);
    sqlite3_bind_blob(_put, 9, attrs.data(), static_cast<int>(attrs.size()), SQLITE_STATIC);
    if (sqlite3_step(_put) == SQLITE_DONE)
        return true;
    *error = reason("cannot write");
    return false;
}

bool SqliteStore::removeObject(const std::string& dn, std::string* error) {
    sqlite3_reset(_remove);
    sqlite3_bind_text(_remove, 1, dn.data(), static_cast<int>(dn.size()), SQLITE_STATIC);
    if (sqlite3_step(_remove) == SQLITE_DONE)
        return true;
    *error = reason("cannot delete");
    return false;
}

bool SqliteStore::apply(const std::vector<ObjectPtr>& puts, const std::vector<std::string>& removes,
                        std::string* error) {
    if (_db == nullptr) {
        *error = _path + ": store is closed";
        return false;
    }
    if (!exec("BEGIN IMMEDIATE", error))
        return false;
    bool ok = true;
    for (const std::string& dn : removes) {
        if (ok)
            ok = removeObject(dn, error);
    }
    for (const ObjectPtr& object : puts) {
        if (ok)
            ok = writeObject(*object, error);
    }
    if (ok && exec("COMMIT", error))
        return true;
    std::string ignored;
    exec("ROLLBACK", &ignored);
    return false;
}

bool SqliteStore::checkpoint(std::string* error) {
    if (_db == nullptr) {
        *error = _path + ": store is closed";
        return false;
    }
    if (sqlite3_wal_checkpoint_v2(_db, nullptr, SQLITE_CHECKPOINT_FULL, nullptr, nullptr) ==
        SQLITE_OK) {
        return true;
    }
    *error = reason("cannot checkpoint");
    return false;
}

void SqliteStore::close() {
    sqlite3_finalize(_put);
    sqlite3_finalize(_remove);
    _put = _remove = nullptr;
    if (_db != nullptr)
        sqlite3_close(_db);
    _db = nullptr;
}

}  // namespace db
}  // namespace vesk

#include "station/database/SqliteStore.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/Logger.h"
#include "station/database/LegacyCodec.h"

namespace vesk {
namespace db {

namespace {

// Format 3: attribute layouts kept once (see AttributeCodec.h); one checksum per row and per
// layout, stored as a signed 32-bit number; rows are found by seq alone.
// The tables of format 3, the objects' under `objects`.
std::string tables(const char* objects) {
    return std::string(
               "CREATE TABLE layouts (id INTEGER PRIMARY KEY, body BLOB NOT NULL,"
               " sum INTEGER NOT NULL);"
               "CREATE TABLE ") +
           objects +
           " (seq INTEGER PRIMARY KEY, dn TEXT NOT NULL, instance INTEGER NOT NULL,"
           " visible INTEGER NOT NULL, flag_b INTEGER NOT NULL, op_state INTEGER NOT NULL,"
           " admin_state INTEGER NOT NULL, class_instance INTEGER NOT NULL, attrs BLOB NOT NULL,"
           " sum INTEGER NOT NULL);";
}

const char* kColumnNames[] = {"seq",      "dn",          "instance",       "visible", "flag_b",
                              "op_state", "admin_state", "class_instance", "attrs",   "sum"};
constexpr int kAttrsColumn = 8;
constexpr int kSumColumn = 9;

// What each format added, for the line that tells of a conversion.
const char* kConversionNews[] = {"", "row checksums added, compact attributes",
                                 "compact attributes"};

int64_t storedSum(uint32_t sum) {
    return static_cast<int32_t>(sum);
}

bool syncDirectoryOf(const std::string& path) {
    size_t slash = path.rfind('/');
    std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool ok = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0)
        ::close(fd);
    return ok;
}

}  // namespace

uint32_t layoutChecksum(uint32_t id, const void* body, size_t size) {
    unsigned char number[8] = {};
    for (int b = 0; b < 4; ++b)
        number[b] = static_cast<unsigned char>(id >> (8 * b));
    uLong crc = crc32_z(0L, number, sizeof number);
    if (size > 0)
        crc = crc32_z(crc, static_cast<const Bytef*>(body), size);
    return static_cast<uint32_t>(crc);
}

uint32_t rowChecksum(uint64_t seq, const int64_t (&fields)[6], const char* dn, size_t dnSize,
                     const void* attrs, size_t attrsSize) {
    unsigned char numbers[7 * 8];
    for (int i = 0; i < 7; ++i) {
        uint64_t value = i == 0 ? seq : static_cast<uint64_t>(fields[i - 1]);
        for (int b = 0; b < 8; ++b)
            numbers[i * 8 + b] = static_cast<unsigned char>(value >> (8 * b));
    }
    uLong crc = crc32_z(0L, numbers, sizeof numbers);
    // zlib restarts the sum for a null buffer, whatever its length.
    if (dnSize > 0)
        crc = crc32_z(crc, reinterpret_cast<const Bytef*>(dn), dnSize);
    if (attrsSize > 0)
        crc = crc32_z(crc, static_cast<const Bytef*>(attrs), attrsSize);
    return static_cast<uint32_t>(crc);
}

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

bool SqliteStore::open(const std::string& path, bool mayCreate, std::string* error) {
    _path = path;
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        if (errno != ENOENT) {
            *error = path + ": " + std::strerror(errno);
            return false;
        }
        if (!mayCreate) {
            *error =
                path + ": there is no store (a new one is made only in an empty state directory)";
            return false;
        }
        if (!create(path, error))
            return false;
    } else if (S_ISREG(info.st_mode) && info.st_size == 0) {
        *error = path + ": the store file is empty (damaged or never finished)";
        return false;
    }
    // The owner serialises every call, so SQLite's own locking of the connection is left out.
    if (sqlite3_open_v2(path.c_str(), &_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK) {
        *error = reason("cannot open");
        close();
        return false;
    }
    // Nothing is written before the file is known to be a sound store of ours.
    bool ok =
        configure(error) && checkSchema(error) && quickCheck(error) &&
        exec("PRAGMA journal_mode=WAL;", error) && checkFormat(error) &&
        prepare("INSERT OR REPLACE INTO objects VALUES (?,?,?,?,?,?,?,?,?,?)", &_put, error) &&
        prepare("INSERT INTO layouts VALUES (?,?,?)", &_putLayout, error) &&
        prepare("DELETE FROM objects WHERE seq = ?", &_remove, error);
    if (!ok)
        close();
    return ok;
}

// A new store is made whole under a temporary name and then renamed, so that a store file that
// exists is always a complete one.
bool SqliteStore::create(const std::string& path, std::string* error) {
    const std::string temporary = path + ".new";
    for (const char* suffix : {"", "-journal", "-wal", "-shm"})
        ::unlink((temporary + suffix).c_str());
    _path = temporary;
    int rc = sqlite3_open_v2(temporary.c_str(), &_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                             nullptr);
    const std::string schema =
        "BEGIN;" + tables("objects") +
        "CREATE TABLE vesk_meta (name TEXT PRIMARY KEY, value TEXT NOT NULL);"
        "INSERT INTO vesk_meta VALUES ('format', '3');"
        "COMMIT;";
    bool ok = rc == SQLITE_OK && exec("PRAGMA synchronous=FULL;", error) &&
              exec(schema.c_str(), error) && exec("PRAGMA journal_mode=WAL;", error);
    if (rc != SQLITE_OK)
        *error = reason("cannot create");
    close();
    _path = path;
    if (ok && (::rename(temporary.c_str(), path.c_str()) != 0 || !syncDirectoryOf(path))) {
        *error = path + ": cannot create: " + std::strerror(errno);
        ok = false;
    }
    return ok;
}

// The log is synced at every commit, and folded by fold() or, past kLogLimitPages, by the commit
// that finds it so long (see onCommit); SQLite's own automatic fold is replaced by that hook.
bool SqliteStore::configure(std::string* error) {
    sqlite3_busy_timeout(_db, 5000);
    sqlite3_wal_hook(_db, &SqliteStore::onCommit, this);
    return exec("PRAGMA synchronous=FULL;", error) &&
           exec("PRAGMA journal_size_limit=16777216;", error);
}

int SqliteStore::onCommit(void* self, sqlite3* db, const char*, int pages) {
    auto* store = static_cast<SqliteStore*>(self);
    store->_logPages = pages;
    if (pages >= kLogLimitPages && sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE,
                                                             nullptr, nullptr) == SQLITE_OK) {
        store->_logPages = 0;
    }
    return SQLITE_OK;  // the commit itself is done: a failed fold is retried later
}

// Our tables and no others (a store older than format 3 has no layouts), or the file is someone
// else's.
bool SqliteStore::checkSchema(std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare("SELECT count(*), sum(name = 'objects'), sum(name = 'vesk_meta'),"
                 " sum(name = 'layouts') FROM sqlite_master WHERE type = 'table'",
                 &statement, error)) {
        return false;
    }
    bool ok = sqlite3_step(statement) == SQLITE_ROW;
    bool ours = ok && sqlite3_column_int(statement, 1) == 1 &&
                sqlite3_column_int(statement, 2) == 1 &&
                sqlite3_column_int(statement, 0) == 2 + sqlite3_column_int(statement, 3);
    if (!ok)
        *error = reason("cannot read the schema");
    sqlite3_finalize(statement);
    if (ok && !ours)
        *error = _path + ": not a station configuration store (unknown tables)";
    return ok && ours;
}

bool SqliteStore::quickCheck(std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare("PRAGMA quick_check(1)", &statement, error))
        return false;
    bool ok = false;
    if (sqlite3_step(statement) != SQLITE_ROW) {
        *error = reason("cannot check the file");
    } else {
        const char* verdict = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        ok = verdict != nullptr && std::strcmp(verdict, "ok") == 0;
        if (!ok)
            *error = _path + ": damaged: " + (verdict != nullptr ? verdict : "no verdict");
    }
    sqlite3_finalize(statement);
    return ok;
}

// Formats 1 and 2 are converted here, once; anything else but 3 is refused.
bool SqliteStore::checkFormat(std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare("SELECT value FROM vesk_meta WHERE name = 'format'", &statement, error))
        return false;
    std::string format;
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_type(statement, 0) == SQLITE_TEXT) {
        format = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    }
    sqlite3_finalize(statement);
    if (format == "3")
        return true;
    if (format == "1" || format == "2")
        return convert(format == "1" ? 1 : 2, error);
    *error = _path + ": unknown store format '" + format + "'";
    return false;
}

// One transaction writes every row again in format 3 after checking it as its own format allows;
// then the space of the old rows is given back. A row that fails leaves the file as it was.
bool SqliteStore::convert(int from, std::string* error) {
    sqlite3_stmt* insert = nullptr;
    sqlite3_stmt* insertLayout = nullptr;
    std::string writeError;
    bool ok =
        exec("BEGIN IMMEDIATE", error) && exec(tables("converted").c_str(), error) &&
        prepare("INSERT INTO converted VALUES (?,?,?,?,?,?,?,?,?,?)", &insert, error) &&
        prepare("INSERT INTO layouts VALUES (?,?,?)", &insertLayout, error) &&
        readObjects(
            from, [&](StoredObject&& object) { return writeObject(insert, object, &writeError); },
            error) &&
        writeLayouts(insertLayout, error) &&
        exec(
            "DROP TABLE objects; ALTER TABLE converted RENAME TO objects;"
            " UPDATE vesk_meta SET value = '3' WHERE name = 'format'; COMMIT;",
            error);
    sqlite3_finalize(insert);
    sqlite3_finalize(insertLayout);
    std::string ignored;
    if (!ok) {
        if (!writeError.empty())
            *error = writeError;
        exec("ROLLBACK", &ignored);
        _layouts.clear();
        return false;
    }
    _layouts.commitPending();
    VESK_INFO("IDatabase: %s: converted from format %d to 3 (%s)", _path.c_str(), from,
              kConversionNews[from]);
    if (!exec("VACUUM", &ignored) || !fold(true, &ignored))
        VESK_WARNING("IDatabase: %s: the space of the old rows stays in the file: %s",
                     _path.c_str(), ignored.c_str());
    return true;
}

bool SqliteStore::loadAll(const std::function<bool(StoredObject&&)>& sink, std::string* error) {
    return loadLayouts(error) && readObjects(3, sink, error);
}

size_t SqliteStore::objectsAtMost() {
    // A row takes more than 32 bytes of its page (its header, seq, dn, fields and sum).
    constexpr int64_t kRowsPerPageAtMost = 128;
    sqlite3_stmt* statement = nullptr;
    std::string ignored;
    if (!prepare("SELECT (SELECT max(seq) FROM objects), page_count, page_size"
                 " FROM pragma_page_count, pragma_page_size",
                 &statement, &ignored)) {
        return 0;
    }
    int64_t bound = 0;
    if (sqlite3_step(statement) == SQLITE_ROW) {
        int64_t pages = sqlite3_column_int64(statement, 1);
        int64_t rowsPerPage =
            std::min<int64_t>(kRowsPerPageAtMost, sqlite3_column_int64(statement, 2) / 32);
        bound = std::min<int64_t>(sqlite3_column_int64(statement, 0), pages * rowsPerPage);
    }
    sqlite3_finalize(statement);
    return bound > 0 ? static_cast<size_t>(bound) : 0;
}

// Every layout is checked and decoded before any row that names it.
bool SqliteStore::loadLayouts(std::string* error) {
    _layouts.clear();
    sqlite3_stmt* statement = nullptr;
    if (!prepare("SELECT id, body, sum FROM layouts ORDER BY id", &statement, error))
        return false;
    int rc;
    bool ok = true;
    while (ok && (rc = sqlite3_step(statement)) == SQLITE_ROW) {
        int64_t id = sqlite3_column_int64(statement, 0);
        const std::string who = _path + ": layout " + std::to_string(id) + ": ";
        const void* body = sqlite3_column_blob(statement, 1);
        size_t size = static_cast<size_t>(sqlite3_column_bytes(statement, 1));
        if (sqlite3_column_type(statement, 1) != SQLITE_BLOB ||
            sqlite3_column_type(statement, 2) != SQLITE_INTEGER || id <= 0 || id > UINT32_MAX) {
            *error = who + "a column has the wrong type";
            ok = false;
        } else if (sqlite3_column_int64(statement, 2) !=
                   storedSum(layoutChecksum(static_cast<uint32_t>(id), body, size))) {
            *error = who + "checksum mismatch";
            ok = false;
        } else if (!_layouts.load(static_cast<uint32_t>(id), static_cast<const char*>(body),
                                  size)) {
            *error = who + "does not decode";
            ok = false;
        }
    }
    if (ok && rc != SQLITE_DONE) {
        *error = reason("cannot read layouts");
        ok = false;
    }
    sqlite3_finalize(statement);
    return ok;
}

bool SqliteStore::readObjects(int format, const std::function<bool(StoredObject&&)>& sink,
                              std::string* error) {
    sqlite3_stmt* statement = nullptr;
    if (!prepare(format == 1 ? "SELECT seq, dn, instance, visible, flag_b, op_state, admin_state,"
                               " class_instance, attrs FROM objects ORDER BY seq"
                             : "SELECT seq, dn, instance, visible, flag_b, op_state, admin_state,"
                               " class_instance, attrs, sum FROM objects ORDER BY seq",
                 &statement, error)) {
        return false;
    }
    int rc;
    bool ok = true;
    while (ok && (rc = sqlite3_step(statement)) == SQLITE_ROW) {
        StoredObject object;
        ok = readRow(statement, format, &object, error);
        if (ok && !sink(std::move(object))) {
            *error = _path + ": object '" + object.fullDn + "': stored twice";
            ok = false;
        }
    }
    if (ok && rc != SQLITE_DONE) {
        *error = reason("cannot read objects");
        ok = false;
    }
    sqlite3_finalize(statement);
    return ok;
}

// Checks the types of every column, then the checksum (format 1 has none), then decodes the
// attributes.
bool SqliteStore::readRow(sqlite3_stmt* row, int format, StoredObject* object,
                          std::string* error) const {
    object->seq = static_cast<uint64_t>(sqlite3_column_int64(row, 0));
    bool dnIsText = sqlite3_column_type(row, 1) == SQLITE_TEXT;
    if (dnIsText) {
        object->fullDn.assign(reinterpret_cast<const char*>(sqlite3_column_text(row, 1)),
                              static_cast<size_t>(sqlite3_column_bytes(row, 1)));
    }
    auto who = [&] {
        return _path + ": object " +
               (dnIsText ? "'" + object->fullDn + "'" : "with seq " + std::to_string(object->seq)) +
               ": ";
    };
    const int columns = format == 1 ? kSumColumn : kSumColumn + 1;
    for (int i = 0; i < columns; ++i) {
        int wanted = i == 1 ? SQLITE_TEXT : i == kAttrsColumn ? SQLITE_BLOB : SQLITE_INTEGER;
        int type = sqlite3_column_type(row, i);
        if (type != wanted) {
            *error = who() + "column " + kColumnNames[i] +
                     (type == SQLITE_NULL ? " is NULL" : " has the wrong type");
            return false;
        }
    }
    int64_t fields[6];
    for (int i = 0; i < 6; ++i)
        fields[i] = sqlite3_column_int64(row, 2 + i);
    const char* attrs = static_cast<const char*>(sqlite3_column_blob(row, kAttrsColumn));
    size_t size = static_cast<size_t>(sqlite3_column_bytes(row, kAttrsColumn));
    if (format != 1) {
        uint32_t sum = rowChecksum(object->seq, fields, object->fullDn.data(),
                                   object->fullDn.size(), attrs, size);
        int64_t expected = format == 2 ? static_cast<int64_t>(sum) : storedSum(sum);
        if (sqlite3_column_int64(row, kSumColumn) != expected) {
            *error = who() + "checksum mismatch";
            return false;
        }
    }
    object->instance = static_cast<int>(fields[0]);
    object->visible = fields[1] != 0;
    object->flagB = fields[2] != 0;
    object->operationalState = static_cast<int>(fields[3]);
    object->adminState = static_cast<int>(fields[4]);
    object->classInstance = static_cast<int>(fields[5]);
    bool decoded = format == 3 ? decodeAttributes(attrs, size, _layouts, object)
                               : decodeLegacyAttributes(attrs, size, object);
    if (!decoded) {
        *error = who() + "attributes do not decode";
        return false;
    }
    return true;
}

// Writes `o` with `statement` (an insert of every column); a layout it is the first to have is
// pending until the transaction ends.
bool SqliteStore::writeObject(sqlite3_stmt* statement, const StoredObject& o, std::string* error) {
    uint32_t layout = _layouts.idOf(Layouts::bodyOf(o));
    if (layout == 0) {
        *error = _path + ": object '" + o.fullDn + "': attributes cannot be encoded";
        return false;
    }
    std::string attrs = encodeAttributes(o, layout);
    int64_t fields[6] = {o.instance,         o.visible ? 1 : 0, o.flagB ? 1 : 0,
                         o.operationalState, o.adminState,      o.classInstance};
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, static_cast<sqlite3_int64>(o.seq));
    sqlite3_bind_text(statement, 2, o.fullDn.data(), static_cast<int>(o.fullDn.size()),
                      SQLITE_STATIC);
    for (int i = 0; i < 6; ++i)
        sqlite3_bind_int64(statement, 3 + i, fields[i]);
    sqlite3_bind_blob(statement, 9, attrs.data(), static_cast<int>(attrs.size()), SQLITE_STATIC);
    sqlite3_bind_int64(statement, 10,
                       storedSum(rowChecksum(o.seq, fields, o.fullDn.data(), o.fullDn.size(),
                                             attrs.data(), attrs.size())));
    if (sqlite3_step(statement) == SQLITE_DONE)
        return true;
    *error = reason("cannot write");
    return false;
}

// The layouts that the transaction's objects were the first to have.
bool SqliteStore::writeLayouts(sqlite3_stmt* statement, std::string* error) {
    for (const auto& entry : _layouts.pending()) {
        const std::string& body = entry.second;
        sqlite3_reset(statement);
        sqlite3_bind_int64(statement, 1, entry.first);
        sqlite3_bind_blob(statement, 2, body.data(), static_cast<int>(body.size()), SQLITE_STATIC);
        sqlite3_bind_int64(statement, 3,
                           storedSum(layoutChecksum(entry.first, body.data(), body.size())));
        if (sqlite3_step(statement) != SQLITE_DONE) {
            *error = reason("cannot write");
            return false;
        }
    }
    return true;
}

bool SqliteStore::removeObject(uint64_t seq, std::string* error) {
    sqlite3_reset(_remove);
    sqlite3_bind_int64(_remove, 1, static_cast<sqlite3_int64>(seq));
    if (sqlite3_step(_remove) == SQLITE_DONE)
        return true;
    *error = reason("cannot delete");
    return false;
}

bool SqliteStore::apply(const std::vector<ObjectPtr>& puts, const std::vector<uint64_t>& removes,
                        std::string* error) {
    if (_db == nullptr) {
        *error = _path + ": store is closed";
        return false;
    }
    if (_withdrawPending && !withdraw(error))
        return false;
    bool ok = exec("BEGIN IMMEDIATE", error);
    for (size_t i = 0; ok && i < removes.size(); ++i)
        ok = removeObject(removes[i], error);
    for (size_t i = 0; ok && i < puts.size(); ++i)
        ok = writeObject(_put, *puts[i], error);
    if (ok && writeLayouts(_putLayout, error) && exec("COMMIT", error)) {
        _layouts.commitPending();
        return true;
    }
    _layouts.dropPending();
    std::string ignored;
    exec("ROLLBACK", &ignored);
    _withdrawPending = true;
    withdraw(&ignored);
    return false;
}

// SQLite writes the next commit where the failed one began in the log, with a checksum chain of
// its own: once that commit is synced, no recovery can replay what the failed one left there
// (all of it, when its sync is what failed).
bool SqliteStore::withdraw(std::string* error) {
    bool ok = exec("BEGIN IMMEDIATE", error) &&
              exec(
                  "INSERT INTO vesk_meta VALUES ('withdrawn', '1')"
                  " ON CONFLICT(name) DO UPDATE SET value = value + 1",
                  error) &&
              exec("COMMIT", error);
    if (!ok) {
        std::string ignored;
        exec("ROLLBACK", &ignored);
    }
    _withdrawPending = !ok;
    return ok;
}

bool SqliteStore::fold(bool force, std::string* error) {
    if (_db == nullptr) {
        *error = _path + ": store is closed";
        return false;
    }
    if (!force && _logPages < kFoldPages)
        return true;
    if (sqlite3_wal_checkpoint_v2(_db, nullptr, SQLITE_CHECKPOINT_FULL, nullptr, nullptr) !=
        SQLITE_OK) {
        *error = reason("cannot fold the log into the main file");
        return false;
    }
    _logPages = 0;
    return true;
}

void SqliteStore::close() {
    sqlite3_finalize(_put);
    sqlite3_finalize(_putLayout);
    sqlite3_finalize(_remove);
    _put = _putLayout = _remove = nullptr;
    if (_db != nullptr) {
        std::string ignored;
        if (_withdrawPending)
            withdraw(&ignored);
        sqlite3_close(_db);
    }
    _db = nullptr;
    _layouts.clear();
    _logPages = 0;
    _withdrawPending = false;
}

}  // namespace db
}  // namespace vesk

// Durability: what a reopen restores, and what the store refuses at open.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <random>
#include <sstream>

#include "station/database/Database.h"
#include "station/database/FaultDisk.h"
#include "station/database/SqliteStore.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

const std::string kFormat2Store = VESK_TEST_DATA_DIR "/format2-store.db";

struct Sample {
    const char* name;
    AttributeVariant value;
    IPCData::AttributeValueType type;
};

std::vector<Sample> everyAlternative() {
    return {
        {"v00", AttributeVariant('x'), IPCData::AVT_INT8},
        {"v01", AttributeVariant(static_cast<short>(-12345)), IPCData::AVT_INT16},
        {"v02", AttributeVariant(-7), IPCData::AVT_ENUM},
        {"v03", AttributeVariant(-1234567890123LL), IPCData::AVT_INT64},
        {"v04", AttributeVariant(1.25f), IPCData::AVT_FLOAT},
        {"v05", AttributeVariant(-3.5e100), IPCData::AVT_DECIMAL64},
        {"v06", AttributeVariant(std::string("a;b,\xc3\xa9\0z", 8)), IPCData::AVT_STRING_LIST},
        {"v07", AttributeVariant(static_cast<unsigned char>(250)), IPCData::AVT_UINT8},
        {"v08", AttributeVariant(static_cast<unsigned short>(65535)), IPCData::AVT_UINT16},
        {"v09", AttributeVariant(4000000000u), IPCData::AVT_UINT32},
        {"v10", AttributeVariant(18000000000000000000ULL), IPCData::AVT_UINT64},
        {"v11", AttributeVariant(true), IPCData::AVT_BOOL},
        {"v12", AttributeVariant(static_cast<char const*>("")), IPCData::AVT_STRUCT},
    };
}

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

class DatabaseStoreTest : public DatabaseTest {};

// Every alternative with its type, a hidden attribute with an id, a pending value with its slot,
// object fields away from their defaults, children in an order of their own (one deleted) whose
// references give their parent a reservedBy. Written by the release of format 2 as
// data/format2-store.db.
void putSampleStore() {
    put("OAM", "", {attr("a", "one")});
    auto item = std::make_unique<DBObject>("Item=1", 3, false, true, IPCData::OPSTATE_ENABLED,
                                           IPCData::ADMSTATE_LOCKED, "", 2);
    for (const Sample& s : everyAlternative())
        item->addAttribute(*attr(s.name, s.value, s.type));
    item->addAttribute(*new Attribute(true, "hidden", AttributeVariant(3), 9, true,
                                      IPCData::AVT_INT32, true, false));
    Attribute* pending = attr("v02", 11, IPCData::AVT_ENUM);
    pending->alternateSlot = 2;
    item->addAlternateAttribute(*pending);
    ASSERT_NE(0, IDatabase::insert(item.get(), 0));
    for (const char* key : {"Cell=9", "Cell=2", "Cell=5"}) {
        auto cell = std::make_unique<DBObject>(key, 1, true, false, IPCData::OPSTATE_DISABLED,
                                               IPCData::ADMSTATE_UNLOCKED, "Item=1", 1);
        cell->addAttribute(*attr("ref", std::string("Item=1"), IPCData::AVT_REFERENCE));
        cell->addAttribute(*attr("n", std::string(key)));
        ASSERT_NE(0, IDatabase::insert(cell.get(), 0));
    }
    ASSERT_NE(0, IDatabase::deleteObj("Item=1,Cell=5", 1, 0));
}

// Everything a reader sees of the sample store.
std::string dumpSampleStore() {
    std::ostringstream out;
    out << std::setprecision(17);
    for (const char* dn : {"OAM", "Item=1", "Item=1,Cell=9", "Item=1,Cell=2", "Item=1,Cell=5"}) {
        std::unique_ptr<DBObject> o(IDatabase::getObject(dn, 1, 0));
        if (o == nullptr) {
            out << dn << " absent\n";
            continue;
        }
        out << o->dn << " " << o->parentDn << " " << o->instance << o->visible << o->flagB
            << o->operationalState << o->adminState << o->classInstance << "\n";
        for (const auto* map : {&o->attributes, &o->alternateAttributes}) {
            for (const auto& entry : *map) {
                const Attribute& a = *entry.second;
                out << " " << entry.first << "=" << a.value << " which " << a.value.which()
                    << " type " << a.type << " id " << a.attributeId << " slot " << a.alternateSlot
                    << (a.hidden ? " hidden" : "") << "\n";
            }
        }
    }
    for (const std::string& id : IDatabase::getMOClassWithParent("Item=1", "Cell", 0))
        out << "Cell=" << id << " ";
    return out.str();
}

TEST_F(DatabaseStoreTest, ReopenRestoresEveryAlternativeWithItsTypeAndTheObjectFields) {
    putSampleStore();
    const std::string written = dumpSampleStore();
    reopen();
    EXPECT_EQ(written, dumpSampleStore());
    std::unique_ptr<DBObject> back(IDatabase::getObject("Item=1", 1, 0));
    ASSERT_NE(nullptr, back);
    for (const Sample& s : everyAlternative()) {
        Attribute* a = back->getAttribute(s.name);
        ASSERT_NE(nullptr, a) << s.name;
        EXPECT_EQ(s.type, a->type) << s.name;
        if (s.value.which() == AV_CSTRING) {  // kept as the string it points to
            EXPECT_EQ(AttributeVariant(std::string()), a->value);
        } else {
            EXPECT_EQ(s.value.which(), a->value.which()) << s.name;
            EXPECT_TRUE(s.value == a->value) << s.name;
        }
    }
    ASSERT_NE(nullptr, back->getAttribute("hidden"));
    EXPECT_TRUE(back->getAttribute("hidden")->hidden);
    EXPECT_EQ(9, back->getAttribute("hidden")->attributeId);
    ASSERT_NE(nullptr, back->getAlternateAttribute("v02"));
    EXPECT_EQ(11, boost::get<int>(back->getAlternateAttribute("v02")->value));
    EXPECT_EQ(2, back->getAlternateAttribute("v02")->alternateSlot);
}

TEST_F(DatabaseStoreTest, ReopenKeepsCommittedWritesOrderAndDeletesButNotOpenTransactions) {
    for (const char* key : {"Cell=9", "Cell=2", "Cell=5"})
        put(key, "");
    ASSERT_NE(0, IDatabase::setAttribute("Cell=2", 1, "x", AttributeVariant(1), false,
                                         IPCData::AVT_INT32, false, 0));
    ASSERT_NE(0, IDatabase::deleteObj("Cell=5", 1, 0));
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    auto lost = object("Cell=7", "");
    ASSERT_NE(0, IDatabase::insert(lost.get(), h));
    reopen();  // close rolls the open handle back
    EXPECT_EQ(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ((std::list<std::string>{"9", "2"}), IDatabase::getMOClassWithParent("", "Cell", 0));
    EXPECT_EQ("1", committedString("Cell=2", "x"));
    put("Cell=1", "");
    EXPECT_EQ((std::list<std::string>{"9", "2", "1"}),
              IDatabase::getMOClassWithParent("", "Cell", 0));
    // More objects than the open hands over at once.
    std::list<std::string> ports;
    h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int i = 700; i > 0; --i) {
        ports.push_back(std::to_string(i));
        ASSERT_NE(0, IDatabase::insert(object("Port=" + ports.back(), "Cell=2").get(), h));
    }
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    reopen();
    EXPECT_EQ(ports, IDatabase::getMOClassWithParent("Cell=2", "Port", 0));
}

// Gives every row of the store file the checksum of what it holds now.
void resum(const std::string& file) {
    sqlite3* raw = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &raw));
    sqlite3_stmt* rows = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_prepare_v2(raw,
                                            "SELECT seq, instance, visible, flag_b, op_state,"
                                            " admin_state, class_instance, dn, attrs FROM objects",
                                            -1, &rows, nullptr));
    std::string sql;
    while (sqlite3_step(rows) == SQLITE_ROW) {
        int64_t fields[6];
        for (int i = 0; i < 6; ++i)
            fields[i] = sqlite3_column_int64(rows, 1 + i);
        uint32_t sum = db::rowChecksum(sqlite3_column_int64(rows, 0), fields,
                                       reinterpret_cast<const char*>(sqlite3_column_text(rows, 7)),
                                       sqlite3_column_bytes(rows, 7), sqlite3_column_blob(rows, 8),
                                       sqlite3_column_bytes(rows, 8));
        sql += "UPDATE objects SET sum = " + std::to_string(static_cast<int32_t>(sum)) +
               " WHERE seq = " + std::to_string(sqlite3_column_int64(rows, 0)) + ";";
    }
    sqlite3_finalize(rows);
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(raw, sql.c_str(), nullptr, nullptr, nullptr));
    sqlite3_close(raw);
}

// Runs `sql` on the store file with SQLite alone, outside the station.
void edit(const std::string& file, const std::string& sql) {
    sqlite3* raw = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &raw));
    char* message = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(raw, sql.c_str(), nullptr, nullptr, &message))
        << (message != nullptr ? message : "") << " in " << sql;
    sqlite3_free(message);
    sqlite3_close(raw);
}

TEST_F(DatabaseStoreTest, DamagedForeignEmptyOrMissingStoresAreRefusedAndLeftAsTheyAre) {
    put("OAM", "", {attr("a", "one")});
    put("Cell=1", "", {attr("a", "two")});
    db::close();
    const std::string file = _dir.path() + "/config.db";
    const std::string pristine = fileBytes(file);
    struct Row {
        const char* damage;
        std::function<void()> apply;
        std::string reason;
    } rows[] = {
        {"not a database", [&] { std::ofstream(file, std::ios::trunc) << std::string(4096, 'Z'); },
         ": file is not a database"},
        {"foreign tables",
         [&] {
             std::filesystem::remove(file);
             edit(file, "CREATE TABLE t(x)");
         },
         ": not a station configuration store"},
        {"empty file", [&] { std::ofstream(file, std::ios::trunc); }, ": the store file is empty"},
        {"truncated file", [&] { std::filesystem::resize_file(file, 4096); },
         ": database disk image is malformed"},
        {"NULL dn",
         [&] {
             edit(file,
                  "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = replace(sql,"
                  " 'dn TEXT NOT NULL', 'dn TEXT') WHERE name = 'objects';");
             edit(file, "UPDATE objects SET dn = NULL WHERE dn = 'OAM'");
         },
         ": object with seq 1: column dn is NULL"},
        {"wrong type",
         [&] { edit(file, "UPDATE objects SET instance = 'one' WHERE dn = 'Cell=1'"); },
         ": object 'Cell=1': column instance has the wrong type"},
        {"checksum",
         [&] {
             edit(file,
                  "UPDATE objects SET attrs = (SELECT attrs FROM objects WHERE dn = 'OAM')"
                  " WHERE dn = 'Cell=1'");
         },
         ": object 'Cell=1': checksum mismatch"},
        {"a dn stored twice",
         [&] {
             edit(file, "UPDATE objects SET dn = 'OAM' WHERE dn = 'Cell=1'");
             resum(file);
         },
         ": object 'OAM': stored twice"},
        {"format", [&] { edit(file, "UPDATE vesk_meta SET value = '9' WHERE name = 'format'"); },
         ": unknown store format '9'"},
        {"an older format, damaged",
         [&] {
             std::filesystem::copy_file(kFormat2Store, file,
                                        std::filesystem::copy_options::overwrite_existing);
             edit(file, "UPDATE objects SET instance = 7 WHERE dn = 'OAM'");
         },
         ": object 'OAM': checksum mismatch"},
        {"no store, other files",
         [&] {
             std::filesystem::remove(file);
             std::ofstream(_dir.path() + "/notes.txt") << "x";
         },
         ": there is no store"},
        {"a folder in its place",
         [&] {
             std::filesystem::remove(file);
             std::filesystem::create_directory(file);
         },
         ": cannot open: unable to open database file"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.damage);
        std::filesystem::remove(_dir.path() + "/notes.txt");
        std::ofstream(file, std::ios::binary | std::ios::trunc) << pristine;
        row.apply();
        const std::string damaged = fileBytes(file);
        std::string error;
        log::LogCapture capture;
        EXPECT_FALSE(db::open(_dir.path(), &error));
        EXPECT_EQ(0u, error.find(file + row.reason)) << error;
        EXPECT_EQ(1u, capture.count("IDatabase: the store is refused: " + error, VESK_LOG_ERROR));
        EXPECT_EQ(1u, capture.lines().size());
        EXPECT_TRUE(damaged == fileBytes(file)) << "the file was changed";
        EXPECT_FALSE(db::isOpen());
    }
}

// Format 1 is format 2 without the checksums.
const char* kToFormat1 =
    "CREATE TABLE old (seq INTEGER PRIMARY KEY, dn TEXT NOT NULL UNIQUE, instance INTEGER"
    " NOT NULL, visible INTEGER NOT NULL, flag_b INTEGER NOT NULL, op_state INTEGER NOT"
    " NULL, admin_state INTEGER NOT NULL, class_instance INTEGER NOT NULL, attrs BLOB NOT"
    " NULL); INSERT INTO old SELECT seq, dn, instance, visible, flag_b, op_state,"
    " admin_state, class_instance, attrs FROM objects; DROP TABLE objects;"
    " ALTER TABLE old RENAME TO objects;"
    " UPDATE vesk_meta SET value = '1' WHERE name = 'format';";

TEST_F(DatabaseStoreTest, StoresOfFormats1And2AreConvertedOnceAndKeepEverything) {
    putSampleStore();
    const std::string expected = dumpSampleStore();
    db::close();
    const std::string file = _dir.path() + "/config.db";
    for (int format : {1, 2}) {
        SCOPED_TRACE("format " + std::to_string(format));
        std::filesystem::remove(file + "-wal");
        std::filesystem::copy_file(kFormat2Store, file,
                                   std::filesystem::copy_options::overwrite_existing);
        if (format == 1)
            edit(file, kToFormat1);
        for (size_t converted : {1u, 0u}) {
            log::LogCapture capture;
            std::string error;
            ASSERT_TRUE(db::open(_dir.path(), &error)) << error;
            EXPECT_EQ(converted, capture.countContaining(": converted from format " +
                                                         std::to_string(format) + " to 3"));
            EXPECT_EQ(expected, dumpSampleStore());
            // An object of a new layout after the converted ones.
            put("Extra=" + std::to_string(converted), "",
                {attr("new" + std::to_string(converted), 1, IPCData::AVT_INT32)});
            db::close();
        }
        ASSERT_TRUE(db::open(_dir.path(), nullptr));
        EXPECT_EQ((std::list<std::string>{"1", "0"}),
                  IDatabase::getMOClassWithParent("", "Extra", 0));
        db::close();
    }
}

// A loss of power at each write or sync of a conversion in turn, until one completes: the store
// then opens with everything it held, converted or still of format 2.
TEST_F(DatabaseStoreTest, APowerCutDuringAConversionLeavesAStoreThatOpensWithEverything) {
    putSampleStore();
    const std::string expected = dumpSampleStore();
    db::close();
    const std::string file = _dir.path() + "/config.db";
    bool completed = false;
    int cuts = 0;
    for (int nth = 1; !completed && nth < 500 && !HasFailure(); ++nth) {
        SCOPED_TRACE("power cut at operation " + std::to_string(nth));
        std::filesystem::remove(file + "-wal");
        std::filesystem::copy_file(kFormat2Store, file,
                                   std::filesystem::copy_options::overwrite_existing);
        db::FaultDisk disk;
        std::string error;
        {
            log::LogCapture quiet;
            disk.cutPower(nth);
            bool opened = db::open(_dir.path(), &error);
            completed = !disk.powerIsOff();
            EXPECT_TRUE(opened || !completed) << error;
            db::close();
        }
        cuts += completed ? 0 : 1;
        disk.restoreSynced();
        ASSERT_TRUE(db::open(_dir.path(), &error)) << error;
        EXPECT_EQ(expected, dumpSampleStore());
        db::close();
    }
    EXPECT_TRUE(completed);
    EXPECT_GT(cuts, 3);
}

// Each of 200 copies of a store has one byte changed at random: each is refused, or loads exactly
// what was stored.
TEST_F(DatabaseStoreTest, RandomByteChangesAreRefusedOrLoadNothingWrong) {
    for (int i = 0; i < 40; ++i) {
        auto o = object("Cell=" + std::to_string(i), "");
        for (int a = 0; a < 10; ++a)
            o->addAttribute(
                *attr("attribute" + std::to_string(a), i * 100 + a, IPCData::AVT_INT32));
        ASSERT_NE(0, IDatabase::insert(o.get(), 0));
    }
    auto everything = [] {
        std::string text;
        for (DBObject* o : IDatabase::getMOClass("Cell", 0)) {
            text += o->dn + std::to_string(o->instance) + std::to_string(o->visible);
            for (const auto& a : o->attributes)
                text += a.first + std::to_string(boost::get<int>(a.second->value)) + ",";
            delete o;
        }
        return text;
    };
    const std::string expected = everything();
    db::close();
    const std::string file = _dir.path() + "/config.db", pristine = fileBytes(file);
    const unsigned kSeed = 4242;
    std::mt19937 random(kSeed);
    int refused = 0;
    for (int i = 0; i < 200 && !HasFailure(); ++i) {
        std::string damaged = pristine;
        size_t at = random() % damaged.size();
        damaged[at] = static_cast<char>(damaged[at] ^ (1 + random() % 255));
        std::filesystem::remove(file + "-wal");
        std::ofstream(file, std::ios::binary | std::ios::trunc) << damaged;
        std::string error;
        log::LogCapture capture;
        if (!db::open(_dir.path(), &error)) {
            ++refused;
            EXPECT_EQ(0u, error.find(file + ": ")) << error;
            continue;
        }
        EXPECT_EQ(expected, everything()) << "seed " << kSeed << ", byte " << at;
        EXPECT_EQ(1u, capture.count("IDatabase: opened " + file + " with 40 objects"))
            << "seed " << kSeed << ", byte " << at;
        db::close();
    }
    RecordProperty("refused", refused);
    EXPECT_GT(refused, 0);
}

TEST_F(DatabaseStoreTest, OperationsOnAClosedDatabaseFailWithOneErrorLine) {
    put("OAM", "");
    db::close();
    log::LogCapture capture;
    EXPECT_EQ(0, IDatabase::isPresentInDB("OAM", 1));
    EXPECT_EQ(nullptr, IDatabase::getObject("OAM", 1, 0));
    EXPECT_EQ(0, IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false));
    EXPECT_EQ(0, IDatabase::deleteObj("OAM", 1, 0));
    EXPECT_EQ(0, IDatabase::storePersistentDump(false, false));
    EXPECT_EQ(5u, capture.countContaining("the database is not open", VESK_LOG_ERROR));
    EXPECT_EQ(5u, capture.lines().size());
    std::string error;
    ASSERT_TRUE(db::open(_dir.path(), &error)) << error;
    EXPECT_EQ(1, IDatabase::isPresentInDB("OAM", 1));
    EXPECT_FALSE(db::open(_dir.path(), &error));  // one store per process
}

// Rows that the main file alone holds (the log left out, as a copy of that file alone has it).
int rowsInMainFile(const std::string& dir) {
    std::filesystem::copy_file(dir + "/config.db", dir + "/copy.db",
                               std::filesystem::copy_options::overwrite_existing);
    sqlite3* copy = nullptr;
    sqlite3_open((dir + "/copy.db").c_str(), &copy);
    sqlite3_stmt* count = nullptr;
    sqlite3_prepare_v2(copy, "SELECT count(*) FROM objects", -1, &count, nullptr);
    int rows = sqlite3_step(count) == SQLITE_ROW ? sqlite3_column_int(count, 0) : -1;
    sqlite3_finalize(count);
    sqlite3_close(copy);
    return rows;
}

TEST_F(DatabaseStoreTest, DumpFoldsTheLogIntoTheMainFileOnceItIsLong) {
    put("Cell=0", "");
    ASSERT_NE(0, IDatabase::storePersistentDump(false, false));
    EXPECT_EQ(0, rowsInMainFile(_dir.path())) << "a short log stays";
    int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    for (int i = 1; i <= 1000; ++i) {
        auto o = object("Cell=" + std::to_string(i), "", {attr("text", std::string(5000, 'x'))});
        ASSERT_NE(0, IDatabase::insert(o.get(), h));
    }
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, h, false));
    EXPECT_EQ(0, rowsInMainFile(_dir.path()));
    ASSERT_NE(0, IDatabase::storePersistentDump(false, false));
    EXPECT_EQ(1001, rowsInMainFile(_dir.path()));
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

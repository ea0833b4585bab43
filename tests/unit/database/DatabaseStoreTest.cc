// Durability: what a reopen restores, and what the store refuses at open.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "station/database/Database.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace dbtest {
namespace {

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

TEST_F(DatabaseStoreTest, ReopenRestoresEveryAlternativeWithItsTypeAndTheObjectFields) {
    auto item = object("Item=1", "");
    item->visible = false;
    for (const Sample& s : everyAlternative())
        item->addAttribute(*attr(s.name, s.value, s.type));
    item->addAttribute(*new Attribute(true, "hidden", AttributeVariant(3), 9, true,
                                      IPCData::AVT_INT32, true, false));
    Attribute* pending = attr("v02", 11, IPCData::AVT_ENUM);
    pending->alternateSlot = 2;
    item->addAlternateAttribute(*pending);
    ASSERT_NE(0, IDatabase::insert(item.get(), 0));
    reopen();
    std::unique_ptr<DBObject> back(IDatabase::getObject("Item=1", 1, 0));
    ASSERT_NE(nullptr, back);
    EXPECT_FALSE(back->visible);
    EXPECT_EQ("", back->parentDn);
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
}

TEST_F(DatabaseStoreTest, CorruptOrForeignOrUnreadableStoresAreRefusedAndLeftAsTheyAre) {
    put("OAM", "");
    db::close();
    std::string file = _dir.path() + "/config.db";
    std::filesystem::remove(file + "-wal");
    std::filesystem::remove(file + "-shm");
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << std::string(4096, 'Z');
    }
    std::string error;
    log::LogCapture capture;
    EXPECT_FALSE(db::open(_dir.path(), &error));
    EXPECT_NE(std::string::npos, error.find(file)) << error;
    EXPECT_NE(std::string::npos, error.find("not a database")) << error;
    EXPECT_EQ(1u, capture.count("IDatabase: the store is refused: " + error, VESK_LOG_ERROR));
    EXPECT_EQ(1u, capture.lines().size());
    EXPECT_EQ(std::string(4096, 'Z'), fileBytes(file));
    EXPECT_FALSE(db::isOpen());

    std::filesystem::remove(file);
    sqlite3* foreign = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &foreign));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(foreign, "CREATE TABLE t(x)", nullptr, nullptr, nullptr));
    sqlite3_close(foreign);
    EXPECT_FALSE(db::open(_dir.path(), &error));
    EXPECT_NE(std::string::npos, error.find("not a station configuration store")) << error;

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_FALSE(db::open(_dir.path(), &error));
    EXPECT_NE(std::string::npos, error.find(file)) << error;
    EXPECT_TRUE(std::filesystem::is_directory(file));
    std::filesystem::remove(file);
    ASSERT_TRUE(db::open(_dir.path(), &error)) << error;  // an absent store starts empty
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

TEST_F(DatabaseStoreTest, DumpCheckpointsTheLogIntoTheMainFile) {
    for (int i = 0; i < 50; ++i)
        put("Cell=" + std::to_string(i), "");
    std::string wal = _dir.path() + "/config.db-wal";
    ASSERT_NE(0, IDatabase::storePersistentDump(false, false));
    // After a full checkpoint the main file alone holds every object.
    std::filesystem::copy_file(_dir.path() + "/config.db", _dir.path() + "/copy.db");
    sqlite3* copy = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open((_dir.path() + "/copy.db").c_str(), &copy));
    sqlite3_stmt* count = nullptr;
    ASSERT_EQ(SQLITE_OK,
              sqlite3_prepare_v2(copy, "SELECT count(*) FROM objects", -1, &count, nullptr));
    ASSERT_EQ(SQLITE_ROW, sqlite3_step(count));
    EXPECT_EQ(50, sqlite3_column_int(count, 0));
    sqlite3_finalize(count);
    sqlite3_close(copy);
}

}  // namespace
}  // namespace dbtest
}  // namespace vesk

#include "unit/database/DatabaseTestSupport.h"

#include <cstdlib>
#include <filesystem>

#include "station/database/Database.h"

namespace vesk {
namespace dbtest {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vesk-db-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    if (made == nullptr)
        throw std::runtime_error("mkdtemp failed");
    _path = made;
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(_path, ec);
}

Attribute* attr(const std::string& name, AttributeVariant value, IPCData::AttributeValueType type) {
    return new Attribute(false, name, value, 0, true, type, true, false);
}

Attribute* number(const std::string& name, int value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT32);
}

Attribute* text(const std::string& name, const std::string& value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_STRING);
}

std::unique_ptr<DBObject> object(const std::string& key, const std::string& parentDn,
                                 std::initializer_list<Attribute*> attributes) {
    auto made = std::make_unique<DBObject>(key, 1, true, false, IPCData::OPSTATE_DISABLED,
                                           IPCData::ADMSTATE_UNLOCKED, parentDn, 1);
    for (Attribute* a : attributes)
        made->addAttribute(*a);
    return made;
}

void put(const std::string& key, const std::string& parentDn,
         std::initializer_list<Attribute*> attributes, int handle) {
    auto made = object(key, parentDn, attributes);
    ASSERT_NE(0, IDatabase::insert(made.get(), handle)) << parentDn << "," << key;
}

void putDn(const std::string& dn, std::initializer_list<Attribute*> attributes, int handle,
           std::initializer_list<Attribute*> alternates) {
    std::string::size_type comma = dn.rfind(',');
    std::string parent = comma == std::string::npos ? "" : dn.substr(0, comma);
    auto made = object(dn.substr(comma == std::string::npos ? 0 : comma + 1), parent, attributes);
    for (Attribute* a : alternates)
        made->addAlternateAttribute(*a);
    ASSERT_NE(0, IDatabase::insert(made.get(), handle)) << dn;
}

std::string committedString(const std::string& dn, const std::string& name) {
    std::unique_ptr<DBObject> copy(IDatabase::getObject(dn, 1, 0));
    if (copy == nullptr)
        return "<no object>";
    Attribute* a = copy->getAttribute(name);
    if (a == nullptr)
        return "<absent>";
    return a->ToStr();
}

void DatabaseTest::SetUp() {
    std::string error;
    ASSERT_TRUE(db::open(_dir.path(), &error)) << error;
}

void DatabaseTest::TearDown() {
    db::close();
}

void DatabaseTest::reopen() {
    db::close();
    std::string error;
    ASSERT_TRUE(db::open(_dir.path(), &error)) << error;
}

}  // namespace dbtest
}  // namespace vesk

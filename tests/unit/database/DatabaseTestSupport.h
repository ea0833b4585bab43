// Shared set-up of the database tests: each test gets its own state folder with an open store.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

namespace vesk {
namespace dbtest {

// A fresh folder under the system's temporary folder, removed with everything in it at the end.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    const std::string& path() const { return _path; }

  private:
    std::string _path;
};

// An attribute as the agent builds one: not hidden, value set, modified.
Attribute* attr(const std::string& name, AttributeVariant value,
                IPCData::AttributeValueType type = IPCData::AVT_STRING);
// An INT32 and a STRING attribute made by attr().
Attribute* number(const std::string& name, int value);
Attribute* text(const std::string& name, const std::string& value);

// A new visible object `key` under `parentDn` with the given attributes.
std::unique_ptr<DBObject> object(const std::string& key, const std::string& parentDn,
                                 std::initializer_list<Attribute*> attributes = {});

// Inserts `key` under `parentDn` through `handle` (0: committed at once); asserts success.
void put(const std::string& key, const std::string& parentDn,
         std::initializer_list<Attribute*> attributes = {}, int handle = 0);

// Inserts the object at the full `dn` (its parent is what precedes the last comma) with the
// attributes and pending `alternates`, through `handle`; asserts success.
void putDn(const std::string& dn, std::initializer_list<Attribute*> attributes, int handle = 0,
           std::initializer_list<Attribute*> alternates = {});

// The string value of an attribute of the committed object; "<absent>" when the attribute is
// missing, "<no object>" when the object is.
std::string committedString(const std::string& dn, const std::string& name);

class DatabaseTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
    // Closes and opens the same state folder again.
    void reopen();

    TempDir _dir;
};

}  // namespace dbtest
}  // namespace vesk

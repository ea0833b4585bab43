// Small database and message helpers that the backup classes share. No state: made on the stack
// where needed. Any thread.
#pragma once

#include <string>

#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/IPCData.h"

class Vesk_BrMUtils {
  public:
    // How readAttribute went.
    enum Read { kMissing, kRead, kWrongType };

    // IDatabase::getObject(dn, instance, 0): a copy owned by the caller, or null.
    DBObject* getDBObject(std::string const& dn, int instance) const;
    // Writes the object's modified attributes at once, outside any host transaction: 1, or 0
    // (with an error line) for a null object or a refused update.
    int updateDbObj(DBObject* object) const;
    // Gives `object` the attribute `name` with `value` (made if missing), marked modified.
    void updateAttribute(std::string const& name, AttributeVariant value,
                         IPCData::AttributeValueType type, DBObject* object) const;
    void createAttribute(std::string const& name, AttributeVariant value, DBObject* object,
                         IPCData::AttributeValueType type) const;
    // Writes "activeBackup" of the manager (when `backupDn` is not empty), then sends
    // VESK_BrMOperationReq with `operation` and `backupName` to software management. True if
    // the message went out.
    bool sendRequest(std::string const& operation, std::string const& backupDn,
                     std::string const& backupName) const;

    // True for a name of 5 characters or more that ends in ".zip", in any case.
    static bool isZipFile(std::string const& name);

    // The value of `name` in `object` as exactly T; a null object counts as missing.
    template <typename T>
    static Read readAttribute(DBObject* object, std::string const& name, T& out) {
        Attribute* attribute = object != nullptr ? object->getAttribute(name) : nullptr;
        if (attribute == nullptr) {
            return kMissing;
        }
        T const* value = boost::get<T>(&attribute->value);
        if (value == nullptr) {
            return kWrongType;
        }
        out = *value;
        return kRead;
    }
};

// The fixed names of the backup branch.
namespace VeskBrMNames {
extern char const* const kManagerDn;     // ...,BrM=1,BrmBackupManager=1 (59 characters)
extern char const* const kBackupPrefix;  // ...,BrmBackupManager=1,BrmBackup= (70 characters)
extern char const* const kRollbackDn;    // ...,BrM=1,BrmRollbackAtRestore=1
extern char const* const kManager;       // "BrmBackupManager=1"
const size_t kShortFormAt = 60;          // where `BrmBackup=<id>` starts in a backup's dn
}  // namespace VeskBrMNames

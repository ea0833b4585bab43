#include "host/peers/StationRecords.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "host/peers/Peer.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"

namespace vesk {
namespace host {
namespace peers {
namespace records {

const char* const kManagerDn = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1";
const char* const kSwMDn = "ManagedElement=1,SystemFunctions=1,SwM=1";

namespace {
void put(DBObject* object, const Values& values) {
    for (const auto& entry : values) {
        Attribute* attribute = object->getAttribute(entry.first);
        if (attribute != nullptr) {
            attribute->value = entry.second.value;
            attribute->type = entry.second.type;
            attribute->modified = true;
            continue;
        }
        // The object takes the attribute.
        object->addAttribute(*new Attribute(false, entry.first, entry.second.value, 0, true,
                                            entry.second.type, true, false));
    }
}

std::string reportKey(const std::string& dn) {
    return dn.substr(dn.rfind(',') + 1) + ":progressReport";
}
}  // namespace

Value text(const std::string& value) {
    return Value{AttributeVariant(value), IPCData::AVT_STRING};
}

Value number(int value, IPCData::AttributeValueType type) {
    if (type == IPCData::AVT_UINT8) {
        return Value{AttributeVariant(static_cast<unsigned char>(value)), type};
    }
    return Value{AttributeVariant(value), type};
}

bool createObject(const std::string& parentDn, const std::string& rdn, const Values& values,
                  const Values& report) {
    const std::string dn = parentDn + "," + rdn;
    DBObject object(rdn, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                    parentDn, 1);
    Values all = values;
    const std::string childKey = reportKey(dn);
    if (!report.empty()) {
        all["progressReport"] = Value{AttributeVariant(dn + "," + childKey), IPCData::AVT_STRUCT};
    }
    put(&object, all);
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    bool ok = handle != 0 && IDatabase::insert(&object, handle) != 0;
    if (ok && !report.empty()) {
        DBObject child(childKey, 1, false, false, IPCData::OPSTATE_DISABLED,
                       IPCData::ADMSTATE_UNLOCKED, dn, 1);
        put(&child, report);
        ok = IDatabase::insert(&child, handle) != 0;
    }
    if (handle != 0) {
        ok = IDatabase::transaction(ok ? IPCData::OP_TX_COMMIT : IPCData::OP_TX_ROLLBACK, handle,
                                    false) != 0 &&
             ok;
    }
    return ok;
}

bool update(const std::string& dn, const Values& values) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (!object) {
        return false;
    }
    put(object.get(), values);
    return IDatabase::update(object.get(), 0) != 0;
}

bool updateReport(const std::string& dn, const Values& values) {
    return update(dn + "," + reportKey(dn), values);
}

std::string textOf(const std::string& dn, const std::string& name, const std::string& fallback) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    Attribute* attribute = object ? object->getAttribute(name) : nullptr;
    const std::string* value = attribute ? boost::get<std::string>(&attribute->value) : nullptr;
    return value != nullptr ? *value : fallback;
}

int numberOf(const std::string& dn, const std::string& name, int fallback) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    Attribute* attribute = object ? object->getAttribute(name) : nullptr;
    const int* value = attribute ? boost::get<int>(&attribute->value) : nullptr;
    return value != nullptr ? *value : fallback;
}

int nextId(const std::string& parentDn, const std::string& className) {
    int last = 0;
    for (const std::string& id : IDatabase::getMOClassWithParent(parentDn, className, 0)) {
        last = std::max(last, std::atoi(id.c_str()));
    }
    return last + 1;
}

std::string now() {
    return timeText();
}

}  // namespace records
}  // namespace peers
}  // namespace host
}  // namespace vesk

#include "backup/Vesk_BrMUtils.h"

#include <algorithm>
#include <cctype>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"

namespace VeskBrMNames {
char const* const kManagerDn = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1";
char const* const kBackupPrefix =
    "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1,BrmBackup=";
char const* const kRollbackDn = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmRollbackAtRestore=1";
char const* const kManager = "BrmBackupManager=1";
}  // namespace VeskBrMNames

namespace {
const int kSoftwareManagement = 7;
}

DBObject* Vesk_BrMUtils::getDBObject(std::string const& dn, int instance) const {
    return IDatabase::getObject(dn, instance, 0);
}

int Vesk_BrMUtils::updateDbObj(DBObject* object) const {
    if (object == nullptr) {
        VESK_ERROR("BrM:updateDbObj failed. obj == NULL");
        return 0;
    }
    if (IDatabase::update(object, 0) == 0) {
        VESK_ERROR("BrM:updateDbObj (dn %s) failed", object->dn.c_str());
        return 0;
    }
    return 1;
}

void Vesk_BrMUtils::updateAttribute(std::string const& name, AttributeVariant value,
                                    IPCData::AttributeValueType type, DBObject* object) const {
    if (object == nullptr) {
        VESK_ERROR("BrM: updateAttribute obj == NULL");
        return;
    }
    Attribute* attribute = object->getAttribute(name);
    if (attribute == nullptr) {
        createAttribute(name, value, object, type);
        return;
    }
    attribute->value = value;
    attribute->modified = true;
}

void Vesk_BrMUtils::createAttribute(std::string const& name, AttributeVariant value,
                                    DBObject* object, IPCData::AttributeValueType type) const {
    // The object takes the attribute.
    Attribute* attribute = new Attribute(false, name, value, 0, true, type, true, false);
    if (!object->addAttribute(*attribute)) {
        VESK_ERROR("Failed to create attribute %s", name.c_str());
    }
}

bool Vesk_BrMUtils::sendRequest(std::string const& operation, std::string const& backupDn,
                                std::string const& backupName) const {
    VESK_INFO("BrM: sendRequest, operation: %s backupDn: %s", operation.c_str(), backupDn.c_str());
    DBObject* manager = getDBObject(VeskBrMNames::kManager, 1);
    if (manager != nullptr && !backupDn.empty()) {
        updateAttribute("activeBackup", AttributeVariant(backupDn), IPCData::AVT_STRING, manager);
        updateDbObj(manager);
    }
    delete manager;
    VESK::Messages::VESK_BrMOperationReq request;
    request.operation = operation;
    request.backupName = backupName;
    if (VESK::Framework::Messaging::sendVeskMessage(kSoftwareManagement, request) != 0) {
        VESK_INFO("BrM: BrM operation req sent, operation: %s backupDn: %s, backupName: %s",
                  operation.c_str(), backupDn.c_str(), backupName.c_str());
        return true;
    }
    VESK_ERROR("BrM: FAILED to send BrM operation req. operation: %s backupDn: %s, backupName: %s",
               operation.c_str(), backupDn.c_str(), backupName.c_str());
    return false;
}

bool Vesk_BrMUtils::isZipFile(std::string const& name) {
    if (name.size() < 5) {
        return false;
    }
    std::string tail = name.substr(name.size() - 4);
    std::transform(tail.begin(), tail.end(), tail.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return tail == ".ZIP";
}

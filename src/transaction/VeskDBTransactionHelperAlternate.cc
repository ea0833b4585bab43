// When a change takes effect, and the audit attributes kept on every write.
#include <boost/variant/get.hpp>
#include <memory>

#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "transaction/VeskDBTransactionHelper.h"

namespace TibVeskCM {

namespace {

// Slot of values that wait for the node's restart.
const int kNodeRestartSlot = 2;

// Attributes of a cell that take effect at once even though their model waits for the lock.
bool takesEffectAtOnce(const std::string& attributeName) {
    return attributeName == "physicalLayerCellIdGroup" || attributeName == "physicalLayerSubCellId";
}

// The slot of a "Cell lock/unlock" change: 0 while the cell is locked or absent, else the
// cell's own slot.
int cellLockSlot(const std::string& dn, const std::string& attributeName) {
    if (takesEffectAtOnce(attributeName))
        return 0;
    std::string cellDn = VeskDBTransactionHelper::instance()->getEutrancellFDD(dn);
    if (cellDn.empty())
        return 0;
    int adminState = 1;
    Toolbox::getDbObjAttrValue<int>(cellDn, "administrativeState", adminState, 1);
    if (adminState == 0)
        return 0;
    int cellSlot = 0;
    Toolbox::getDbObjAttrValue<int>(cellDn, "alternateStorageSlot", cellSlot, 1);
    return cellSlot;
}

}  // namespace

int VeskDBTransactionHelper::checkTakesEffect(char const* dn, char const* attributeName,
                                              int& slot) {
    // An object created in this transaction is written at once.
    if (!IDatabase::isPresentInDB(dn, 1))
        return 0;
    VeskModelRepository::TakesEffectValue takesEffect = VeskModelRepository::TAKES_EFFECT_NONE;
    VeskModelRepository::instance()->getAttributeTakesEffectValue(dn, attributeName, takesEffect);
    switch (takesEffect) {
        case VeskModelRepository::TAKES_EFFECT_CELL_LOCK:
            slot = cellLockSlot(dn, attributeName);
            return 0;
        case VeskModelRepository::TAKES_EFFECT_NODE_RESTART:
            slot = kNodeRestartSlot;
            return 0;
        case VeskModelRepository::TAKES_EFFECT_OBJECT_LOCK: {
            int adminState = 0;
            Toolbox::getDbObjAttrValue<int>(dn, "administrativeState", adminState, 1);
            if (adminState == 0) {
                slot = 0;
            } else if (adminState == 1) {
                return -5;  // the object must be locked first
            }
            return 0;
        }
        default:
            slot = 0;
            return 0;
    }
}

std::string VeskDBTransactionHelper::getEutrancellFDD(std::string dn) {
    for (std::string::size_type comma = dn.rfind(','); comma != std::string::npos;
         comma = dn.rfind(',')) {
        std::string pair = dn.substr(comma + 1);
        if (pair.substr(0, pair.rfind('=')) == "EUtranCellFDD")
            return dn;
        dn.erase(comma);
    }
    return "";
}

int VeskDBTransactionHelper::getReferenceValueFromAlternateStorage(char const* dn,
                                                                   char const* attributeName) {
    std::string name(attributeName);
    std::string checkAttribute = name == "includeInSystemInformation"
                                     ? "includeInSystemInformationRel9"
                                     : "includeInSystemInformation";
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (!object) {
        VESK_TRACE("returning REFERENCEVALUE_NOT_FOUND");
        return REFERENCEVALUE_NOT_FOUND;
    }
    int result = REFERENCEVALUE_NOT_FOUND;
    int refValue = -1;
    Attribute* pending = object->getAlternateAttribute(checkAttribute);
    if (pending != nullptr) {
        try {
            refValue = boost::get<bool>(pending->value) ? 1 : 0;
            result = refValue;
        } catch (boost::bad_get&) {
            VESK_ERROR("VeskDBTransactionHelper::%s, Boost Bad Get! When reading value of %s.",
                       __func__, checkAttribute.c_str());
        }
    }
    VESK_INFO(
        "getAlternateAttribute() Attribute: %s. strCheckAttribute: %s. refValue: %d retVal: %d",
        attributeName, checkAttribute.c_str(), refValue, result);
    return result;
}

int VeskDBTransactionHelper::handleCreatedByAttribute(std::string dn, int handle) {
    VeskModelRepository* repository = VeskModelRepository::instance();
    bool exists = false;
    OrlReturnT rc = repository->checkAttributeExist(dn.c_str(), "createdBy", exists);
    if (rc != 0 || !exists)
        return rc;
    int value = -1;
    rc = repository->getEnumValueByLiteralName(dn.c_str(), "createdBy", "OPERATOR", value);
    if (rc != 0)
        return rc;
    if (!IDatabase::setAttribute(dn, 1, "createdBy", AttributeVariant(value), false,
                                 IPCData::AVT_ENUM, true, handle)) {
        return -1;
    }
    return 0;
}

int VeskDBTransactionHelper::handleLastModificationAttribute(std::string dn, Operation operation,
                                                             int handle) {
    if (dn.find(':') != std::string::npos)
        return 0;  // a struct child has no audit attributes
    VeskModelRepository* repository = VeskModelRepository::instance();
    bool exists = false;
    OrlReturnT rc = repository->checkAttributeExist(dn.c_str(), "lastModification", exists);
    if (rc != 0)
        return rc;
    if (!exists)
        return 0;
    int value = -1;
    switch (operation) {
        case NOT_MODIFIED:
            rc = repository->getEnumValueByLiteralName(dn.c_str(), "lastModification",
                                                       "NOT_MODIFIED", value);
            break;
        case OPERATOR_MODIFICATION:
            rc = repository->getEnumValueByLiteralName(dn.c_str(), "lastModification", "OPERATOR",
                                                       value);
            if (value == -1) {
                rc = repository->getEnumValueByLiteralName(dn.c_str(), "lastModification",
                                                           "OPERATOR_MODIFICATION", value);
            }
            break;
        case OPERATOR_DELETE:
            rc = repository->getEnumValueByLiteralName(dn.c_str(), "lastModification",
                                                       "OPERATOR_DELETE", value);
            break;
    }
    if (rc == -2)
        return 0;  // the enumeration lacks the literal: nothing to record
    if (rc != 0)
        return rc;
    if (value < 0)
        return -1;
    if (!IDatabase::setAttribute(dn, 1, "lastModification", AttributeVariant(value), false,
                                 IPCData::AVT_ENUM, true, handle)) {
        return -1;
    }
    return 0;
}

void VeskDBTransactionHelper::initReadOnlyAttributes(std::list<attrNameValuePair>& pairs) {
    pairs.push_back({"timeOfCreation", AttributeVariant(std::string()), IPCData::AVT_STRING});
    pairs.push_back(
        {"timeOfLastModification", AttributeVariant(std::string()), IPCData::AVT_STRING});
    pairs.push_back({"reservedBy", AttributeVariant(std::string()), IPCData::AVT_REFERENCE_LIST});
    pairs.push_back({"maximumTransmissionPower", AttributeVariant(0), IPCData::AVT_INT32});
}

int VeskDBTransactionHelper::createReadOnlyAttributes(std::string dn, int handle) {
    std::list<attrNameValuePair> pairs;
    initReadOnlyAttributes(pairs);
    for (const attrNameValuePair& pair : pairs) {
        bool exists = false;
        if (VeskModelRepository::instance()->checkAttributeExist(dn.c_str(), pair.name, exists) !=
            0) {
            return -1;
        }
        if (!exists)
            continue;
        VESK_TRACE("create attribute, name : %s, value type: %d ", pair.name.c_str(), pair.type);
        IDatabase::setAttribute(dn, 1, pair.name, pair.value, false, pair.type, true, handle);
    }
    return 0;
}

int VeskDBTransactionHelper::createOtherRequiredAttributes(std::string dn, Operation operation,
                                                           int handle) {
    int rc = createReadOnlyAttributes(dn, handle);
    if (rc != 0) {
        VESK_ERROR(
            "VeskDBTransactionHelper::%s, Failed to create read only attributes for MO '%s'.",
            __func__, dn.c_str());
        return rc;
    }
    rc = handleCreatedByAttribute(dn, handle);
    if (rc != 0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to handle 'createdBy' attribute.",
                   __func__);
        return rc;
    }
    rc = handleLastModificationAttribute(dn, operation, handle);
    if (rc != 0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to handle 'lastModification' attribute.",
                   __func__);
    }
    return rc;
}

}  // namespace TibVeskCM

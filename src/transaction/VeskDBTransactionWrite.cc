// The transaction's write operations: create, set and delete of MOs in the open database
// transaction. The front has decided that the change is allowed and opened the database
// transaction before it calls here. Objects under the certificate branch go to the security
// component instead of the database; commit and rollback tell it the outcome.
#include <cctype>
#include <memory>

#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/ISec.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "plugin/VeskOrlHelper.h"
#include "transaction/VeskDBTransaction.h"
#include "transaction/VeskDBTransactionHelper.h"
#include "validation/VeskCheckExceptions.h"

namespace TibVeskCM {

namespace {

// Objects kept by the security component, not by the database.
bool isSecurityDn(const std::string& dn) {
    return dn.find("CertM=1") != std::string::npos;
}

// The operations the log lines of their private pieces name.
const char kCreateMo[] = "createMo";
const char kSetMoAttribute[] = "setMoAttribute";

// The name of a reserving attribute that a delete empties instead of removing.
const char kReservedBy[] = "reservedBy";

// `text` without any white space.
std::string withoutBlanks(const std::string& text) {
    std::string cleaned;
    for (char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c)))
            cleaned += c;
    }
    return cleaned;
}

// The stored form of the first value of a single attribute of `hostType`; false for types that
// have none (struct and unknown types).
bool singleVariant(int hostType, OrlMoAttributeValue_3 const& value, AttributeVariant& out) {
    Attribute scratch(false, "", AttributeVariant(0), 0, true, IPCData::AVT_UNKNOWN, true, false);
    if (!IAttribute::storeSingleValue(&scratch, hostType, value))
        return false;
    out = scratch.value;
    return true;
}

bool isList(const std::string& dn, const std::string& attributeName, OrlReturnT* rc) {
    bool list = false;
    OrlReturnT code = VeskModelRepository::instance()->checkAttributeListType(
        dn.c_str(), attributeName.c_str(), list);
    if (rc != nullptr)
        *rc = code;
    return list;
}

}  // namespace

// ---- createMo ----

int VeskDBTransaction::createMo(char const* parentDn, char const* className,
                                char const* keyAttributeName, char const* keyAttributeValue,
                                OrlMoNamedAttributeValueContainer_3** attributes) {
    VeskCheckExceptions exceptions;
    if (!exceptions.checkMoCreation(parentDn, className, keyAttributeValue)) {
        VESK_WARNING("VeskDBTransaction::%s(): Mo Object already exists. dn:%s", __func__,
                     parentDn);
        return -1;
    }
    std::string parentRdn, grandParent;
    if (!Toolbox::splitFdn(parentDn, parentRdn, grandParent)) {
        VESK_WARNING(
            "VeskDBTransaction::%s(): Cannot continue: Did not manage to extract struct object's "
            "rdn from dn:%s",
            __func__, parentDn);
        return -1;
    }
    std::string rdn = std::string(className) + "=" + keyAttributeValue;
    std::string newDn = std::string(parentDn) + "," + rdn;
    std::unique_ptr<DBObject> object(new DBObject(rdn, 1, true, false, IPCData::OPSTATE_DISABLED,
                                                  IPCData::ADMSTATE_UNLOCKED, parentDn, 1));
    object->addAttribute(*new Attribute(false, keyAttributeName,
                                        AttributeVariant(std::string(keyAttributeValue)), 0, true,
                                        IPCData::AVT_STRING, true, false));
    for (OrlMoNamedAttributeValueContainer_3** it = attributes; it != nullptr && *it != nullptr;
         ++it)
        addCreatedAttribute(object.get(), newDn, className, **it);

    OrlReturnT rc = VeskModelRepository::instance()->createMOWithDefaultValues(
        newDn.c_str(), object.get(), databaseTxHandle);
    if (rc != 0) {
        VESK_WARNING("VeskDBTransaction::%s, createMOWithDefaultValues failed", __func__);
        return rc;
    }
    if (isSecurityDn(newDn) && VeskOrlHelper::getAiConfigParsed()) {
        secUsed = true;
        if (ISec::createMo(databaseTxHandle, object.get()) != 1)
            VESK_ERROR("VeskDBTransaction::%s(): CreateMo from SEC returns failed", __func__);
        return 0;
    }
    if (isSecurityDn(newDn))
        VESK_TRACE("Dynamic ICF file handling is ongoing, don't forward CertM fragment MO");
    IDatabase::insert(object.get(), databaseTxHandle);
    object.reset();
    return completeCreatedMo(newDn);
}

void VeskDBTransaction::addCreatedAttribute(DBObject* object, const std::string& newDn,
                                            char const* className,
                                            OrlMoNamedAttributeValueContainer_3 const& named) {
    OrlMoAttributeValueContainer_3 const& value = named.attributeValue;
    if (value.nrOfValues == 0 || named.attributeName == nullptr)
        return;
    std::string name = named.attributeName;
    bool list = isList(newDn, name, nullptr);
    VESK_TRACE("%s: className: %s, attrName: %s, attrType: %d, isList: %s", kCreateMo, className,
               name.c_str(), static_cast<int>(value.type), list ? "Yes" : "No");
    const bool isStruct = value.type == OrlOamSpiMoAttributeType_3_STRUCT;
    if (isStruct) {
        // The struct objects hang under the MO, so it must be in the transaction first.
        IDatabase::insert(object, databaseTxHandle);
        bool ok = list ? handleStructListAttribute(newDn, name, &value, "") == 0
                       : iAttr.setAttribute(object, newDn, name, &value, databaseTxHandle);
        if (!list && !ok)
            VESK_ERROR("VeskDBTransaction::%s(): handling struct attribute: %s::%s failed.",
                       kCreateMo, className, name.c_str());
        // The list's dns were written to the stored object; the copy in hand is stored last and
        // must carry them too.
        Attribute* written =
            list && ok ? IDatabase::getAttribute(newDn, name, databaseTxHandle) : nullptr;
        if (written != nullptr)
            object->addAttribute(*new Attribute(*written));
        return;
    }
    Attribute* attribute = nullptr;
    if (list) {
        std::string dn = newDn;
        std::string text = createListAttributeString(&value, dn, "", "");
        attribute = updateNewListAttribute(name, text, value.type, true);
    } else {
        attribute = updateNewAttribute(newDn, name, value, true);
    }
    if (attribute != nullptr)
        object->addAttribute(*attribute);
}

int VeskDBTransaction::completeCreatedMo(const std::string& newDn) {
    VeskDBTransactionHelper* helper = VeskDBTransactionHelper::instance();
    int rc = helper->createReadOnlyAttributes(newDn, databaseTxHandle);
    if (rc != 0) {
        VESK_TRACE("Failed to create read only attributes. retval: %d", rc);
        return rc;
    }
    rc = helper->handleCreatedByAttribute(newDn, databaseTxHandle);
    if (rc != 0) {
        VESK_TRACE("Failed to handle 'createdBy' attribute. retval: %d", rc);
        return rc;
    }
    rc = helper->handleLastModificationAttribute(newDn, VeskDBTransactionHelper::NOT_MODIFIED,
                                                 databaseTxHandle);
    if (rc != 0) {
        VESK_TRACE("Failed to handle 'lastModification' attribute. retval: %d", rc);
        return rc;
    }
    rc =
        VeskModelRepository::instance()->createSystemCreatedSubMOs(newDn.c_str(), databaseTxHandle);
    if (rc != 0)
        VESK_TRACE("Failed to create system created sub MO's. retval: %d", rc);
    return rc;
}

// ---- setMoAttribute ----

int VeskDBTransaction::setMoAttribute(std::string const& dn, std::string const& attributeName,
                                      OrlMoAttributeValueContainer_3 const* value) {
    VeskDBTransactionHelper* helper = VeskDBTransactionHelper::instance();
    int slot = 0;
    int rc = helper->checkTakesEffect(dn.c_str(), attributeName.c_str(), slot);
    if (rc != 0) {
        VESK_TRACE("checkTakesEffect returns %d", rc);
        return rc;
    }
    VeskCheckExceptions exceptions;
    if (exceptions.checkMeasurementReaderAttributeExistance(dn.c_str(), attributeName.c_str())) {
        VESK_TRACE("%s::%s exists. Cannot change.", dn.c_str(), attributeName.c_str());
        return -1;
    }
    // An object created in this transaction keeps its creation marking.
    if (attributeName != "lastModification" && IDatabase::isPresentInDB(dn, 1) &&
        helper->handleLastModificationAttribute(dn, VeskDBTransactionHelper::OPERATOR_MODIFICATION,
                                                databaseTxHandle) != 0)
        return -1;
    if (slot > 0)
        return setPendingAttribute(dn, attributeName, value, slot);

    OrlReturnT listRc = 0;
    bool list = isList(dn, attributeName, &listRc);
    if (listRc != 0) {
        VESK_ERROR(
            "VeskDBTransaction::%s(): Cannot set attribute %s::%s. Failed to check the attribute "
            "of list type.",
            __func__, dn.c_str(), attributeName.c_str());
        return listRc;
    }
    if (value == nullptr || value->nrOfValues == 0)
        return deleteAttributeValue(dn, attributeName, value);
    if (value->nrOfValues == 1 && !list)
        return isSecurityDn(dn) ? setSecuritySingle(dn, attributeName, value)
                                : setSingleValue(dn, attributeName, value);
    return setListValue(dn, attributeName, value);
}

int VeskDBTransaction::setPendingAttribute(std::string const& dn, std::string const& attributeName,
                                           OrlMoAttributeValueContainer_3 const* value, int slot) {
    VESK_TRACE("%s: %s::%s goes to slot %d", kSetMoAttribute, dn.c_str(), attributeName.c_str(),
               slot);
    VeskCheckExceptions exceptions;
    const char* d = dn.c_str();
    const char* a = attributeName.c_str();
    const bool setsTrue = value != nullptr && value->nrOfValues > 0 &&
                          value->type == OrlOamSpiMoAttributeType_3_BOOL &&
                          value->values[0].theBool;
    if (setsTrue && exceptions.isIt_includeInSystemInformationEtc(d, a)) {
        VESK_TRACE("%s: checking the pending system information flags", kSetMoAttribute);
        if (exceptions.checkAltStorage_includeInSystemInformationAndRel9AttributeValidity(d, a,
                                                                                          true)) {
            VESK_WARNING(
                "dn:%s attributeName:%s may not be set because the reference value has been set "
                "as true into Alternate Storage.",
                d, a);
            return -8;
        }
        int reference =
            VeskDBTransactionHelper::instance()->getReferenceValueFromAlternateStorage(d, a);
        if (reference == 1) {
            VESK_WARNING(
                "dn:%s attributeName:%s may not be set because the reference value has been\tset "
                "as true in Alternate Storage",
                d, a);
            return -8;
        }
        if (reference == VeskDBTransactionHelper::REFERENCEVALUE_NOT_FOUND &&
            exceptions.check_includeInSystemInformationAndRel9AttributeValidity(d, a, true)) {
            VESK_WARNING(
                "dn:%s attributeName:%s may not be set because the reference value has been\tset "
                "as true into Database and reference value is not found from Alternate Storage",
                d, a);
            return -8;
        }
    }
    VESK_TRACE("%s: writing %s::%s to alternate storage", kSetMoAttribute, d, a);
    return VeskDBTransactionHelper::instance()->setAlternateStorage(dn, attributeName,
                                                                    databaseTxHandle, value, slot);
}

int VeskDBTransaction::deleteAttributeValue(std::string const& dn, std::string const& attributeName,
                                            OrlMoAttributeValueContainer_3 const* value) {
    VESK_INFO("VeskDBTransaction::%s():Deleting attribute %s dn: %s from database.",
              kSetMoAttribute, attributeName.c_str(), dn.c_str());
    if (value != nullptr && value->type == OrlOamSpiMoAttributeType_3_STRUCT) {
        iAttr.deleteAttribute(dn, attributeName, databaseTxHandle);
        return 0;
    }
    if (attributeName == kReservedBy) {
        IDatabase::setAttribute(dn, 1, attributeName,
                                AttributeVariant(static_cast<char const*>("")), false,
                                IPCData::AVT_REFERENCE_LIST, true, databaseTxHandle);
        return 0;
    }
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, databaseTxHandle));
    if (object && object->getAttribute(attributeName) != nullptr)
        IDatabase::deleteAttribute(attributeName, dn, "", databaseTxHandle);
    if (value != nullptr && value->type == OrlOamSpiMoAttributeType_3_REFERENCE)
        removeFromReferenceList(dn, attributeName);
    return 0;
}

int VeskDBTransaction::setSecuritySingle(std::string const& dn, std::string const& attributeName,
                                         OrlMoAttributeValueContainer_3 const* value) {
    std::unique_ptr<Attribute> attribute(updateNewAttribute(dn, attributeName, *value, true));
    if (!attribute)
        return 0;
    secUsed = true;
    if (ISec::editMo(databaseTxHandle, dn, attribute.get()) != 1) {
        VESK_ERROR("VeskDBTransaction::%s(): SEC returned failure. Cannot set attribute %s::%s",
                   kSetMoAttribute, dn.c_str(), attributeName.c_str());
        return -1;
    }
    return 0;
}

int VeskDBTransaction::setSingleValue(std::string const& dn, std::string const& attributeName,
                                      OrlMoAttributeValueContainer_3 const* value) {
    const int type = value->type;
    OrlMoAttributeValue_3 const& first = value->values[0];
    AttributeVariant stored;
    if (type == OrlOamSpiMoAttributeType_3_STRUCT) {
        handleStructAttribute(dn, attributeName, value, false, nullptr, nullptr, "", "");
        return 0;
    }
    if (!singleVariant(type, first, stored)) {
        VESK_ERROR(
            "VeskDBTransaction::%s():Unknown attribute type: %d. Cannot set value for attribute: "
            "%s::%s",
            kSetMoAttribute, type, dn.c_str(), attributeName.c_str());
        return 0;
    }
    if (type == OrlOamSpiMoAttributeType_3_UINT16) {
        VeskCheckExceptions exceptions;
        if (!exceptions.checkBrMHousekeepingAttributeValidity(attributeName, first.u16)) {
            VESK_ERROR("VeskDBTransaction::%s Given value out of bounds for attribute %s",
                       kSetMoAttribute, attributeName.c_str());
            return -8;
        }
    }
    if (type == OrlOamSpiMoAttributeType_3_REFERENCE) {
        std::string given = first.moRef != nullptr ? first.moRef : "";
        removeFromReferenceList(dn, attributeName);
        addToReferenceList(dn, attributeName, given);
        stored = AttributeVariant(withoutBlanks(given));
    }
    IDatabase::setAttribute(dn, 1, attributeName, stored, false,
                            static_cast<IPCData::AttributeValueType>(type), true, databaseTxHandle);
    return 0;
}

int VeskDBTransaction::setListValue(std::string const& dn, std::string const& attributeName,
                                    OrlMoAttributeValueContainer_3 const* value) {
    std::string rdn, parent;
    if (!Toolbox::splitFdn(dn.c_str(), rdn, parent)) {
        VESK_ERROR(
            "VeskDBTransaction::%s(): Cannot set attribute. Unable to determine object's RDN from "
            "DN:%s",
            kSetMoAttribute, dn.c_str());
        return 0;
    }
    std::string objectDn = dn;
    std::string text = createListAttributeString(value, objectDn, rdn, attributeName);
    IPCData::AttributeValueType listType = getAttributeValueType(value->type, true);
    const bool isStruct = value->type == OrlOamSpiMoAttributeType_3_STRUCT;
    if (!isSecurityDn(dn)) {
        if (isStruct)
            return handleStructListAttribute(dn, attributeName, value, text);
        if (listType != IPCData::AVT_UNKNOWN)
            IDatabase::setAttribute(dn, 1, attributeName, AttributeVariant(text), false, listType,
                                    true, databaseTxHandle);
        return 0;
    }
    std::unique_ptr<Attribute> attribute;
    if (isStruct) {
        handleStructListAttribute(dn, attributeName, value, text);
        std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, databaseTxHandle));
        Attribute* held = object ? object->getAttribute(attributeName) : nullptr;
        if (held != nullptr)
            attribute.reset(new Attribute(*held));  // outlives the object copy
    } else {
        attribute.reset(updateNewListAttribute(attributeName, text, value->type, true));
    }
    if (!attribute)
        return 0;
    secUsed = true;
    if (ISec::editMo(databaseTxHandle, dn, attribute.get()) != 1) {
        VESK_WARNING("VeskDBTransaction::%s(): editMo from SEC returns failed", kSetMoAttribute);
        return -1;
    }
    return 0;
}

// ---- deleteMo ----

int VeskDBTransaction::deleteMo(std::string const& dn) {
    VeskCheckExceptions exceptions;
    if (!exceptions.checkMoDeletion(dn, "")) {
        VESK_TRACE("Object: %s cannot be deleted", dn.c_str());
        return -1;
    }
    int rc = VeskDBTransactionHelper::instance()->handleLastModificationAttribute(
        dn, VeskDBTransactionHelper::OPERATOR_DELETE, databaseTxHandle);
    if (isSecurityDn(dn)) {
        secUsed = true;
        if (ISec::deleteMO(databaseTxHandle, dn) == 1)
            rc = 0;
    } else if (IDatabase::deleteObj(dn, 1, databaseTxHandle) != 0) {
        rc = 0;
    }
    return rc;
}

}  // namespace TibVeskCM

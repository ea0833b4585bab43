#include "validation/VeskCheckExceptions.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/variant/get.hpp>
#include <list>
#include <memory>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {

namespace {

const char kIncludeFlag[] = "includeInSystemInformation";
const char kIncludeRel9Flag[] = "includeInSystemInformationRel9";

bool icontains(const std::string& text, const char* word) {
    return boost::algorithm::icontains(text, word);
}

// The text from the last "," on (the comma included), or "" when there is none.
std::string lastPairWithComma(const std::string& dn) {
    std::string::size_type comma = dn.rfind(',');
    return comma == std::string::npos ? std::string() : dn.substr(comma);
}

// The class of the last "Class=id" pair (of the whole text without a comma).
std::string lastPairClass(const std::string& dn) {
    std::string::size_type comma = dn.rfind(',');
    std::string pair = comma == std::string::npos ? dn : dn.substr(comma + 1);
    return pair.substr(0, pair.find('='));
}

}  // namespace

char VeskCheckExceptions::toLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool VeskCheckExceptions::existsMo(const char* dn) {
    std::list<std::string> pairs;
    if (!Toolbox::readStringToList(dn, ',', pairs, false) || pairs.empty())
        return false;
    return IDatabase::isPresentInDB(pairs.front(), 1) != 0;
}

bool VeskCheckExceptions::checkMoCreation(std::string parentDn, std::string className,
                                          std::string keyValue) {
    // An upgrade package comes over the host interface only as a record the node already has.
    if (className == "UpgradePackage")
        return existsMo(("UpgradePackage=" + keyValue).c_str());
    return checkMeasurementReaderCanBeCreated(parentDn, className);
}

bool VeskCheckExceptions::checkMeasurementReaderCanBeCreated(std::string parentDn,
                                                             std::string className) {
    if (icontains(className, "MeasurementReader"))
        return !existsMo(parentDn.c_str());
    VESK_TRACE("icontains did not find MeasurementReader, string: %s", className.c_str());
    return true;
}

bool VeskCheckExceptions::checkMoDeletion(std::string dn, std::string parentDn) {
    bool upgradePackageOk = checkUpgradePackageDeletion(dn, parentDn);
    bool pmJobOk = checkPmJobDeletion(dn, parentDn);
    bool ratOk = checkRatDeletion(dn, parentDn);
    return upgradePackageOk && pmJobOk && ratOk;
}

bool VeskCheckExceptions::checkUpgradePackageDeletion(std::string dn, std::string parentDn) {
    if (!parentDn.empty())
        return !icontains(parentDn, "UpgradePackage");
    std::string tail = lastPairWithComma(dn);
    if (tail.empty())
        return true;
    return !icontains(tail, "UpgradePackage");
}

bool VeskCheckExceptions::isThisPmJob(std::string dn) {
    std::string tail = lastPairWithComma(dn);
    if (tail.empty())
        return false;
    if (icontains(tail, "PmJob")) {
        VESK_INFO("VeskCheckExceptions::%s found PmJob, returning TRUE: %s", __func__, dn.c_str());
        return true;
    }
    VESK_INFO("VeskCheckExceptions::%s did NOT found PmJob, returning FALSE: %s", __func__,
              dn.c_str());
    return false;
}

bool VeskCheckExceptions::checkPmJobDeletion(std::string dn, std::string parentDn) {
    if (parentDn.empty() && isThisPmJob(dn)) {
        VESK_INFO("VeskCheckExceptions::%s can be removed, 'cause this is PmJob parent: %s",
                  __func__, dn.c_str());
        return true;
    }
    // The children of a PM job go only with the job.
    return !icontains(dn, "PmJob");
}

bool VeskCheckExceptions::anyEnabledCell(const std::string& cellClass, const std::string& dn) {
    bool found = false;
    std::list<DBObject*> cells = IDatabase::getMOClass(cellClass, 0);
    for (DBObject* cell : cells) {
        // Struct objects of a cell carry ":" in their key.
        if (cell->dn.find(':') == std::string::npos) {
            int state = -1;
            Toolbox::getAttrValueFromObj<int>(cell, "operationalState", state);
            if (state == 1) {
                VESK_INFO(
                    "VeskCheckExceptions::%s %s can't be removed, enabled cells found under it",
                    "checkRatDeletion", dn.c_str());
                found = true;
            }
        }
        delete cell;
    }
    return found;
}

bool VeskCheckExceptions::checkRatDeletion(std::string dn, std::string parentDn) {
    if (!parentDn.empty())
        return true;
    std::string className = lastPairClass(dn);
    const char* cellClass = nullptr;
    if (className == "ENodeBFunction") {
        cellClass = "EUtranCellFDD";  // TDD cells do not hold the function back
    } else if (className == "NodeBFunction") {
        cellClass = "NodeBLocalCell";
    } else {
        return true;
    }
    if (anyEnabledCell(cellClass, dn))
        return false;
    VESK_INFO("VeskCheckExceptions::%s Enabled cells not found under %s, can be removed", __func__,
              dn.c_str());
    return true;
}

bool VeskCheckExceptions::checkKeyAttribute(std::string objDn, std::string attrName) {
    std::string className = lastPairClass(objDn);
    if (className.empty()) {
        VESK_INFO(
            "VeskCheckExceptions::%s, couldn't determine class name from dn, don't know if the "
            "attribute is key or not.",
            __func__);
        return false;
    }
    className[0] = toLower(className[0]);
    return className + "Id" == attrName;
}

bool VeskCheckExceptions::checkMeasurementReaderAttributeExistance(const char* dn,
                                                                   const char* attributeName) {
    if (!icontains(dn, "MeasurementReader"))
        return false;
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (!object)
        return false;
    return object->getAttribute(attributeName) != nullptr;
}

bool VeskCheckExceptions::checkBrMHousekeepingAttributeValidity(std::string attributeName,
                                                                unsigned short value) {
    if (attributeName != "maxStoredManualBackups")
        return true;
    return value >= 1 && value <= 5;
}

bool VeskCheckExceptions::isIt_includeInSystemInformationEtc(const char* dn,
                                                             const char* attributeName) {
    std::string name(attributeName);
    if (name != kIncludeFlag && name != kIncludeRel9Flag)
        return false;
    return icontains(dn, "Cdma20001xRttCellRelation=");
}

std::string VeskCheckExceptions::otherFlag(const std::string& attributeName) {
    if (attributeName == kIncludeFlag)
        return kIncludeRel9Flag;
    if (attributeName == kIncludeRel9Flag)
        return kIncludeFlag;
    return "";
}

// Reads the other flag of the pair from the committed object, from its regular or its alternate
// slots; false (after the caller's error line) when the object, either flag or a bool is missing.
bool VeskCheckExceptions::readOtherFlag(const char* dn, const char* attributeName, bool alternate,
                                        const char* fn, bool* value) {
    const std::string other = otherFlag(attributeName);
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (!object) {
        VESK_TRACE("returning FALSE");
        return false;
    }
    auto slot = [&](const std::string& name) {
        return alternate ? object->getAlternateAttribute(name) : object->getAttribute(name);
    };
    for (const std::string& name : {std::string(attributeName), other}) {
        if (slot(name) == nullptr) {
            VESK_ERROR("VeskCheckExceptions::%s, Failed to get %sattribute %s.", fn,
                       alternate ? "alternate " : "", name.c_str());
            return false;
        }
    }
    try {
        *value = boost::get<bool>(slot(other)->value);
    } catch (boost::bad_get&) {
        VESK_ERROR("VeskCheckExceptions::%s, Boost Bad Get! When reading value of %s.", fn,
                   other.c_str());
        return false;
    }
    return true;
}

bool VeskCheckExceptions::check_includeInSystemInformationAndRel9AttributeValidity(
    const char* dn, const char* attributeName, bool value) {
    bool stored = false;
    if (!readOtherFlag(dn, attributeName, false, __func__, &stored))
        return false;
    bool conflict = stored && value;
    VESK_INFO(
        "VeskCheckExceptions::%s dn: %s attribute: %s check from DB  attribute: %s, returning "
        "retVal: %d",
        __func__, dn, attributeName, otherFlag(attributeName).c_str(), conflict);
    return conflict;
}

bool VeskCheckExceptions::checkAltStorage_includeInSystemInformationAndRel9AttributeValidity(
    const char* dn, const char* attributeName, bool value) {
    bool pending = false;
    if (!readOtherFlag(dn, attributeName, true, __func__, &pending))
        return false;
    bool conflict = pending && value;
    VESK_INFO(
        "VeskCheckExceptions::%s dn: %s alternate attribute: %s check from Alternate storage "
        "attribute: %s, returning retVal: %d refValue: %d",
        __func__, dn, attributeName, otherFlag(attributeName).c_str(), conflict, pending);
    return conflict;
}

bool VeskCheckExceptions::checkEUtranFreqRelationDeletion(std::string dn) {
    std::string::size_type at = dn.find("EUtranFreqRelation");
    if (at == std::string::npos)
        return true;
    if (dn.find(',', at) != std::string::npos)
        return true;  // a child of the relation
    bool isDefault = false;
    if (checkIsDefaultFreq(dn, isDefault) != 0) {
        VESK_ERROR("VeskCheckExceptions::%s, Failed to check default frequency of cell.", __func__);
        return true;
    }
    if (isDefault) {
        VESK_INFO(
            "VeskCheckExceptions::%s, Object '%s' cannot be deleted, because it is default "
            "frequency.",
            __func__, dn.c_str());
        return false;
    }
    return true;
}

template <typename T>
int VeskCheckExceptions::readCommitted(const std::string& dn, const char* attrName, T& out) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (!object) {
        VESK_ERROR("VeskCheckExceptions::%s, Failed to get MO '%s' from database.",
                   "checkIsDefaultFreq", dn.c_str());
        return -1;
    }
    Attribute* attribute = object->getAttribute(attrName);
    if (attribute == nullptr) {
        VESK_ERROR("VeskCheckExceptions::%s, Failed to get attribute %s.", "checkIsDefaultFreq",
                   attrName);
        return -2;
    }
    try {
        out = boost::get<T>(attribute->value);
    } catch (boost::bad_get&) {
        VESK_ERROR("VeskCheckExceptions::%s, Boost Bad Get! When reading value of %s.",
                   "checkIsDefaultFreq", attrName);
        return -3;
    }
    return 0;
}

int VeskCheckExceptions::checkIsDefaultFreq(std::string dn, bool& isDefault) {
    std::string frequencyDn;
    int rc = readCommitted(dn, "eutranFrequencyRef", frequencyDn);
    if (rc != 0)
        return rc;
    // The relation lives directly under its cell.
    std::string cellDn = dn.substr(0, dn.rfind(','));
    int cellEarfcn = 0;
    rc = readCommitted(cellDn, "earfcndl", cellEarfcn);
    if (rc != 0)
        return rc;
    int frequencyEarfcn = 0;
    rc = readCommitted(frequencyDn, "arfcnValueEUtranDl", frequencyEarfcn);
    if (rc != 0)
        return rc;
    isDefault = cellEarfcn == frequencyEarfcn;
    return 0;
}

}  // namespace TibVeskCM

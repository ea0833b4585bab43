// VeskLTEOI: frequencies and frequency relations. One frequency per channel number; at most
// eight relations under a cell below channel 18000; one relation of a cell per frequency; and at
// commit, an unlocked cell keeps its own frequency and its relation to it.
#include <cstring>

#include "platform/Logger.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const unsigned kLastFddChannel = 17999;
const size_t kMaxFreqRelations = 8;

int frequencyDatabaseTx(unsigned long aTxHandle) {
    return VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
}

// The first named attribute called `name`, or null.
OrlMoNamedAttributeValueContainer_3* findAttribute(OrlMoNamedAttributeValueContainer_3** attributes,
                                                   const char* name) {
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        if (attributes[i]->attributeName != nullptr &&
            std::strcmp(attributes[i]->attributeName, name) == 0) {
            return attributes[i];
        }
    }
    return nullptr;
}

}  // namespace

OrlReturnT VeskLTEOI::validateEUtranFrequencyCreation(
    unsigned long aTxHandle, const char* /*parentDn*/, const char* /*className*/,
    OrlMoNamedAttributeValueContainer_3** attributes) {
    // Marked before anything is judged, and kept when the channel number is refused.
    _band46UpdatePending[static_cast<int>(aTxHandle)] = true;
    OrlMoNamedAttributeValueContainer_3* arfcn = findAttribute(attributes, "arfcnValueEUtranDl");
    return arfcn == nullptr ? OrlOk
                            : validateArfcn(frequencyDatabaseTx(aTxHandle), &arfcn->attributeValue);
}

OrlReturnT VeskLTEOI::validateEUtranFrequencySetAttribute(
    unsigned long aTxHandle, const char* /*dn*/, const char* attributeName,
    const OrlMoAttributeValueContainer_3* value) {
    if (std::strcmp(attributeName, "arfcnValueEUtranDl") != 0) {
        return OrlOk;
    }
    return validateArfcn(frequencyDatabaseTx(aTxHandle), value);
}

OrlReturnT VeskLTEOI::validateArfcn(int dbTx, const OrlMoAttributeValueContainer_3* value) {
    int channel = 0;
    if (!rules::firstInt(value, channel)) {
        VESK_TRACE("VeskLTEOI::%s no channel number to judge", __func__);
        return OrlOk;
    }
    // The frequency being set is among those walked: writing its own number again is refused.
    OrlReturnT rc = OrlOk;
    for (const rules::ObjectPtr& frequency : rules::MoList("EUtranFrequency", dbTx)) {
        if (rules::readInt(frequency.get(), "arfcnValueEUtranDl", -1) == channel) {
            VESK_INFO("VeskLTEOI::%s arfcnValueEUtranDl validation failed (%d)", __func__, channel);
            rc = OrlValidationFailed;
        }
    }
    return rc;
}

OrlReturnT VeskLTEOI::validateFreqRelationCreation(
    unsigned long aTxHandle, const char* parentDn, const char* className,
    OrlMoNamedAttributeValueContainer_3** attributes) {
    if (std::strcmp(className, "EUtranFreqRelation") != 0) {
        return OrlOk;
    }
    _band46UpdatePending[static_cast<int>(aTxHandle)] = true;
    const int dbTx = frequencyDatabaseTx(aTxHandle);
    const int earfcndl = rules::readInt(rules::fetch(parentDn, dbTx).get(), "earfcndl", -1);
    // The limit holds below the 5 GHz channels only; an unreadable cell (-1) skips it too.
    if (static_cast<unsigned>(earfcndl) <= kLastFddChannel &&
        IDatabase::getMOClassWithParent(parentDn, "EUtranFreqRelation", dbTx).size() >=
            kMaxFreqRelations) {
        VESK_INFO("VeskLTEOI::%s Maximum number of EUtranFreqRelation exceeding (8)", __func__);
        return OrlValidationFailed;
    }
    OrlMoNamedAttributeValueContainer_3* ref = findAttribute(attributes, "eutranFrequencyRef");
    if (ref == nullptr) {
        return OrlOk;
    }
    const char* text = rules::firstText(&ref->attributeValue);
    return validateEutranFrequencyRef(parentDn, className, text, aTxHandle);
}

OrlReturnT VeskLTEOI::validateFreqRelationSetAttribute(
    unsigned long aTxHandle, const char* dn, const char* attributeName,
    const OrlMoAttributeValueContainer_3* value) {
    if (std::strcmp(attributeName, "eutranFrequencyRef") != 0) {
        return OrlOk;
    }
    const std::string text = dn;
    const std::string::size_type comma = text.rfind(',');
    const std::string parentDn = comma == std::string::npos ? std::string() : text.substr(0, comma);
    const std::string rdn = comma == std::string::npos ? text : text.substr(comma + 1);
    return validateEutranFrequencyRef_setMo(parentDn, rdn, value, aTxHandle);
}

OrlReturnT VeskLTEOI::validateEutranFrequencyRef(const std::string& parentDn,
                                                 const std::string& className, const char* value,
                                                 unsigned long aTxHandle) {
    if (value == nullptr) {
        return OrlOk;
    }
    return findFrequencyRef(parentDn, className, value, frequencyDatabaseTx(aTxHandle), __func__);
}

OrlReturnT VeskLTEOI::validateEutranFrequencyRef_setMo(const std::string& parentDn,
                                                       const std::string& rdn,
                                                       const OrlMoAttributeValueContainer_3* value,
                                                       unsigned long aTxHandle) {
    const char* given = rules::firstText(value);
    if (given == nullptr || *given == '\0') {
        return OrlOk;  // no reference given: nothing to judge
    }
    const std::string text = given;
    const std::string::size_type lastComma = text.rfind(',');
    const std::string last = lastComma == std::string::npos ? text : text.substr(lastComma + 1);
    if (!IDatabase::isPresentInDB(last, 1)) {
        VESK_INFO("VeskLTEOI::%s Referenced eutranFrequency mo not present in DB", __func__);
        return OrlValidationFailed;
    }
    // Only the first component is compared, so a reference with a leading path matches no
    // stored one; a short "EUtranFrequency=n" form is compared whole, the relation's own value
    // included.
    const std::string first = text.substr(0, text.find(','));
    return findFrequencyRef(parentDn, rdn, first, frequencyDatabaseTx(aTxHandle), __func__);
}

OrlReturnT VeskLTEOI::findFrequencyRef(const std::string& parentDn, const std::string& named,
                                       const std::string& value, int dbTx, const char* rule) {
    OrlReturnT rc = OrlOk;
    for (const rules::ObjectPtr& relation : rules::MoList("EUtranFreqRelation", dbTx)) {
        if (relation->parentDn != parentDn) {
            continue;
        }
        if (rules::readText(relation.get(), "eutranFrequencyRef") == value) {
            VESK_INFO("VeskLTEOI::%s validation %s,%s::eutranFrequencyRef = %s failed", rule,
                      parentDn.c_str(), named.c_str(), value.c_str());
            rc = OrlValidationFailed;
        }
    }
    return rc;
}

OrlReturnT VeskLTEOI::checkEUtranFreqRelationDeletion(int dbTx, const std::string& dn) {
    VESK_INFO("VeskLTEOI::%s validating deletion of %s", __func__, dn.c_str());
    const std::string::size_type comma = dn.rfind(',');
    const std::string parentDn = comma == std::string::npos ? std::string() : dn.substr(0, comma);
    rules::ObjectPtr cell = rules::fetch(parentDn, dbTx);
    if (rules::readInt(cell.get(), "administrativeState", -1) != 1) {
        return OrlOk;
    }
    const int earfcndl = rules::readInt(cell.get(), "earfcndl", -1);
    // The relation is gone from the transaction's view; its committed copy tells its frequency.
    rules::ObjectPtr relation = rules::fetch(dn, 0);
    const std::string ref = rules::readText(relation.get(), "eutranFrequencyRef");
    rules::ObjectPtr frequency = ref.empty() ? nullptr : rules::fetch(ref, dbTx);
    if (rules::readInt(frequency.get(), "arfcnValueEUtranDl", -2) == earfcndl) {
        VESK_INFO("VeskLTEOI::%s deletion of %s is blocked", __func__, dn.c_str());
        return OrlValidationFailed;
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::checkEUtranFrequencyDeletion(int dbTx, const std::string& dn) {
    VESK_INFO("VeskLTEOI::%s validating deletion of %s", __func__, dn.c_str());
    // A frequency the transaction already removed reads as -1 and blocks nothing.
    const int channel = rules::readInt(rules::fetch(dn, dbTx).get(), "arfcnValueEUtranDl", -1);
    if (unlockedCellOn("EUtranCellFDD", "earfcndl", channel, dbTx, dn) ||
        unlockedCellOn("EUtranCellTDD", "earfcn", channel, dbTx, dn)) {
        return OrlValidationFailed;
    }
    return OrlOk;
}

bool VeskLTEOI::unlockedCellOn(const char* cellClass, const char* channelName, int channel,
                               int dbTx, const std::string& dn) {
    for (const rules::ObjectPtr& cell : rules::MoList(cellClass, dbTx)) {
        int cellChannel = -2;
        if (!Toolbox::getAttrValueFromObj<int>(cell.get(), channelName, cellChannel)) {
            continue;
        }
        if (rules::readInt(cell.get(), "administrativeState", -1) == 1 && cellChannel == channel) {
            VESK_INFO("VeskLTEOI::%s deletion of %s is blocked", "checkEUtranFrequencyDeletion",
                      dn.c_str());
            return true;
        }
    }
    return false;
}

}  // namespace TibVeskOI

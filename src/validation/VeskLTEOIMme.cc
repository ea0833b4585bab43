// VeskLTEOI: the MME terminations. At most 16; the two addresses of a new one differ; no address
// other than "0.0.0.0" is used twice; an unlocked one stays.
#include <cstring>

#include "platform/Logger.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const size_t kMaxMmes = 16;
const char kNoAddress[] = "0.0.0.0";
const char kMmeParent[] = "ManagedElement=1,ENodeBFunction=1";

int mmeDatabaseTx(unsigned long aTxHandle) {
    return VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
}

// The first text of a string value with at least one value, or null.
const char* address(const OrlMoAttributeValueContainer_3* value) {
    if (value == nullptr || value->type != OrlOamSpiMoAttributeType_3_STRING) {
        return nullptr;
    }
    const char* text = rules::firstText(value);
    return text != nullptr ? text : (value->nrOfValues > 0 ? "" : nullptr);
}

// Puts the address of `name` into its field of `ips`; false for any other attribute.
bool fillAddress(VeskLTEOI::MMeIPs& ips, const char* name, const char* text) {
    if (std::strcmp(name, "ipAddress1") == 0) {
        ips.ipAddress1 = text;
    } else if (std::strcmp(name, "ipAddress2") == 0) {
        ips.ipAddress2 = text;
    } else {
        return false;
    }
    return true;
}

}  // namespace

OrlReturnT VeskLTEOI::validateTermPointToMmeCreation(
    unsigned long aTxHandle, const char* /*parentDn*/, const char* className,
    OrlMoNamedAttributeValueContainer_3** attributes) {
    if (std::strcmp(className, "TermPointToMme") == 0) {
        const size_t mmes = rules::MoList("TermPointToMme", mmeDatabaseTx(aTxHandle)).size();
        if (mmes >= kMaxMmes) {
            VESK_INFO("VeskLTEOI::%s Number of MMEs %d, rejecting creation of new one", __func__,
                      static_cast<int>(mmes));
            return OrlValidationFailed;
        }
    }
    MMeIPs ips;
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* text = address(&attributes[i]->attributeValue);
        if (text != nullptr && attributes[i]->attributeName != nullptr) {
            fillAddress(ips, attributes[i]->attributeName, text);
        }
    }
    // An address not given is "", so a creation that gives neither is refused here.
    if (ips.ipAddress1 != kNoAddress && ips.ipAddress1 == ips.ipAddress2) {
        VESK_INFO("VeskLTEOI::%s TermPointToMme ipAddresses are the same ip1:%s vs. ip2:%s",
                  __func__, ips.ipAddress1.c_str(), ips.ipAddress2.c_str());
        return OrlValidationFailed;
    }
    return validateMmeIpAdresses(ips, aTxHandle);
}

OrlReturnT VeskLTEOI::validateTermPointToMmeSetAttribute(
    const char* /*dn*/, const char* attributeName, const OrlMoAttributeValueContainer_3* value,
    unsigned long aTxHandle) {
    const char* text = address(value);
    MMeIPs ips;
    if (text == nullptr || !fillAddress(ips, attributeName, text)) {
        return OrlOk;
    }
    // The other field stays "" and is compared too.
    return validateMmeIpAdresses(ips, aTxHandle);
}

OrlReturnT VeskLTEOI::validateMmeIpAdresses(MMeIPs ips, unsigned long aTxHandle) {
    const int dbTx = mmeDatabaseTx(aTxHandle);
    // Every MME is walked, the one being set included.
    for (const std::string& id :
         IDatabase::getMOClassWithParent(kMmeParent, "TermPointToMme", dbTx)) {
        const std::string key = "TermPointToMme=" + id;
        rules::ObjectPtr mme = rules::fetch(key, dbTx);
        if (!mme) {
            VESK_ERROR("VeskLTEOI::%s(): getObject %s returned NULL, database reading error ! ",
                       __func__, key.c_str());
            return OrlValidationFailed;
        }
        const std::string stored1 = rules::readText(mme.get(), "ipAddress1");
        const std::string stored2 = rules::readText(mme.get(), "ipAddress2");
        if (ips.ipAddress1 != kNoAddress &&
            (ips.ipAddress1 == stored1 || ips.ipAddress1 == stored2)) {
            VESK_INFO("VeskLTEOI::%s validation failed, ipAddress1(%s) already in use", __func__,
                      ips.ipAddress1.c_str());
            return OrlValidationFailed;
        }
        if (ips.ipAddress2 != kNoAddress &&
            (ips.ipAddress2 == stored1 || ips.ipAddress2 == stored2)) {
            VESK_INFO("VeskLTEOI::%s validation failed, ipAddress2(%s) already in use", __func__,
                      ips.ipAddress2.c_str());
            return OrlValidationFailed;
        }
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateTermPointToMmeDeletion(unsigned long aTxHandle, const char* dn) {
    rules::ObjectPtr mme = rules::fetch(dn, mmeDatabaseTx(aTxHandle));
    if (!mme) {
        return OrlOk;
    }
    if (rules::readInt(mme.get(), "administrativeState", -1) == 1) {
        VESK_INFO("VeskLTEOI::%s Deletion of %s blocked due to administrative state", __func__, dn);
        return OrlValidationFailed;
    }
    return OrlOk;
}

}  // namespace TibVeskOI

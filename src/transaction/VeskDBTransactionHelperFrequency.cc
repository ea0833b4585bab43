// Default frequency MOs: the EUtranFrequency of a cell's channel and the cell's relation to it,
// made for configuration code that builds a new cell.
#include <memory>

#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "transaction/VeskDBTransactionHelper.h"

namespace TibVeskCM {
namespace {

const char* const kRelationKey = "EUtranFreqRelation=1";

void addTo(DBObject& object, const char* name, AttributeVariant value,
           IPCData::AttributeValueType type) {
    object.addAttribute(*new Attribute(false, name, value, 0, true, type, true, false));
}

}  // namespace

int VeskDBTransactionHelper::createDefaultFrequencyMOs(std::string cellDn, int frequency,
                                                       int handle) {
    std::string rdn;
    int rc = checkEUtranFrequency(frequency, rdn);
    if (rc == 0 && rdn.empty()) {
        return 0;
    }
    if (rc != 0 && rc != -2) {
        return rc;
    }
    bool exists = rc == 0;
    std::string networkDn;
    for (DBObject* network : IDatabase::getMOClass("EUtraNetwork", handle)) {
        networkDn = network->parentDn + "," + network->dn;
        VESK_INFO("VeskDBTransactionHelper::%s eutranetwork_fdn %s", __func__, networkDn.c_str());
        delete network;
    }
    if (!exists) {
        rc = isMOLimitExceeded(networkDn, "EUtranFrequency");
        if (rc == -10) {
            VESK_ERROR("VeskDBTransactionHelper::%s, Limit is exceeded for MO '%s'.", __func__,
                       "EUtranFrequency");
        }
        std::string id;
        if (rc != 0 || (rc = findFreeDn(networkDn, "EUtranFrequency", rdn, id, handle)) != 0) {
            return rc;
        }
        VESK_TRACE("generated dn: '%s' , generated key attribute value: '%s' ", rdn.c_str(),
                   id.c_str());
        rc = createEUtranFrequency(rdn, id, frequency, networkDn + "," + rdn, networkDn, handle);
        if (rc != 0) {
            return rc;
        }
    }
    return createEUtranFreqRelation(cellDn, networkDn + "," + rdn, handle);
}

int VeskDBTransactionHelper::checkEUtranFrequency(int frequency, std::string& rdn) {
    int rc = -2;
    for (DBObject* object : IDatabase::getMOClass("EUtranFrequency", 0)) {
        int value = 0;
        if (rc == -2 && object->dn.find(':') == std::string::npos) {
            if (object->getAttribute("arfcnValueEUtranDl") == nullptr) {
                VESK_ERROR(
                    "VeskDBTransactionHelper::checkEUtranFrequency, Failed to get "
                    "attribute '%s'.",
                    "arfcnValueEUtranDl");
                rc = -1;
            } else if (Toolbox::getAttrValueFromObj(object, "arfcnValueEUtranDl", value) &&
                       value == frequency) {
                rdn = object->dn;
                rc = 0;
            }
        }
        delete object;
    }
    return rc;
}

int VeskDBTransactionHelper::isMOLimitExceeded(std::string parentDn, std::string className) {
    int min = 0;
    int max = 0;
    if (VeskModelRepository::instance()->getMOCardinalityRange(parentDn.c_str(), className.c_str(),
                                                               min, max) != 0) {
        VESK_ERROR(
            "VeskDBTransactionHelper::isMOLimitExceeded, Failed to get MO %s cardinality "
            "information from model repository",
            className.c_str());
        return -1;
    }
    int count = 0;
    for (DBObject* object : IDatabase::getMOClass(className, 0)) {
        ++count;
        delete object;
    }
    return max > count ? 0 : -10;
}

int VeskDBTransactionHelper::findFreeDn(std::string parentDn, std::string className,
                                        std::string& rdn, std::string& id, int handle) {
    int min = 0;
    int max = 0;
    if (VeskModelRepository::instance()->getMOCardinalityRange(parentDn.c_str(), className.c_str(),
                                                               min, max) != 0) {
        return -10;
    }
    for (int index = 1; index <= max; ++index) {
        std::string candidate = generateDn(className, index);
        VESK_TRACE("check is this exist dn: %s.", candidate.c_str());
        std::unique_ptr<DBObject> found(IDatabase::getObject(candidate, 1, handle));
        if (found == nullptr) {
            VESK_TRACE("this dn %s is free, return it.", candidate.c_str());
            rdn = candidate;
            id = std::to_string(index);
            return 0;
        }
    }
    return -10;
}

std::string VeskDBTransactionHelper::generateDn(std::string className, int index) {
    return className + "=" + std::to_string(index);
}

int VeskDBTransactionHelper::createEUtranFrequency(std::string rdn, std::string id, int frequency,
                                                   std::string dn, std::string parentDn,
                                                   int handle) {
    DBObject object(rdn, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                    parentDn, 1);
    addTo(object, "eUtranFrequencyId", AttributeVariant(id), IPCData::AVT_STRING);
    addTo(object, "arfcnValueEUtranDl", AttributeVariant(frequency), IPCData::AVT_INT32);
    int rc =
        VeskModelRepository::instance()->createMOWithDefaultValues(dn.c_str(), &object, handle);
    if (rc != 0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to create MO '%s' with default values.",
                   __func__, dn.c_str());
        return rc;
    }
    if (createOtherRequiredAttributes(rdn, NOT_MODIFIED, handle) != 0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to create other required attributes.",
                   __func__);
    }
    return rc;
}

int VeskDBTransactionHelper::createEUtranFreqRelation(std::string cellDn, std::string frequencyDn,
                                                      int handle) {
    std::string dn = cellDn + "," + kRelationKey;
    DBObject object(kRelationKey, 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED, cellDn, 1);
    addTo(object, "eUtranFreqRelationId", AttributeVariant(std::string("1")), IPCData::AVT_STRING);
    addTo(object, "eutranFrequencyRef", AttributeVariant(frequencyDn), IPCData::AVT_REFERENCE);
    if (VeskModelRepository::instance()->createMOWithDefaultValues(dn.c_str(), &object, handle) !=
        0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to create MO '%s' with default values.",
                   __func__, dn.c_str());
    }
    if (createOtherRequiredAttributes(dn, NOT_MODIFIED, handle) != 0) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to create other required attributes.",
                   __func__);
    }
    std::unique_ptr<DBObject> cell(IDatabase::getObject(cellDn, 1, handle));
    if (cell == nullptr) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to get MO '%s'", __func__, cellDn.c_str());
        return -1;
    }
    int qRxLevMin = 0;
    int bandwidth = 0;
    if (cell->getAttribute("qRxLevMin") == nullptr ||
        cell->getAttribute("ulChannelBandwidth") == nullptr) {
        VESK_ERROR("VeskDBTransactionHelper::%s, Failed to get cell attributes '%s' and '%s'",
                   __func__, "qRxLevMin", "ulChannelBandwidth");
        return -1;
    }
    Toolbox::getAttrValueFromObj(cell.get(), "qRxLevMin", qRxLevMin);
    Toolbox::getAttrValueFromObj(cell.get(), "dlChannelBandwidth", bandwidth);
    VESK_TRACE("qRxLevMin: %d", qRxLevMin);
    VESK_TRACE("dlChannelBandwidth: %d", bandwidth);
    const struct {
        const std::string& dn;
        const char* name;
        int value;
    } writes[] = {{cellDn, "ulChannelBandwidth", bandwidth},
                  {dn, "qRxLevMin", qRxLevMin},
                  {dn, "allowedMeasBandwidth", getAllowedMeasBandwidth(bandwidth)}};
    for (const auto& write : writes) {
        if (IDatabase::setAttribute(write.dn, 1, write.name, AttributeVariant(write.value), false,
                                    IPCData::AVT_INT32, true, handle) == 0) {
            VESK_ERROR("VeskDBTransactionHelper::%s, Failed to set attribute '%s'", __func__,
                       write.name);
            return -1;
        }
    }
    return 0;
}

int VeskDBTransactionHelper::getAllowedMeasBandwidth(int channelBandwidth) {
    static const int kTable[][2] = {{1400, 6},   {3000, 15},  {5000, 25},
                                    {10000, 50}, {15000, 75}, {20000, 100}};
    for (const auto& row : kTable) {
        if (row[0] == channelBandwidth) {
            return row[1];
        }
    }
    VESK_ERROR(
        "VeskDBTransactionHelper::%s, Couldn't get allowedMeasBandwidth value for "
        "ulChannelBandwidth '%d'.",
        __func__, channelBandwidth);
    return 0;
}

}  // namespace TibVeskCM

#include "validation/VeskPMOI.h"

#include <cstring>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {

VeskPMOI* VeskPMOI::instance() {
    static VeskPMOI pm;
    return &pm;
}

void VeskPMOI::initialize() {
    VeskOI* oi = VeskOI::getVeskOI();
    oi->registerAsObjectImplementer("/ManagedElement/SystemFunctions/Pm/PmJob");
    oi->registerAsObjectImplementer("/ManagedElement/SystemFunctions/Pm/PmJob/MeasurementReader");
    oi->registerAsObjectImplementer(
        "/ManagedElement/SystemFunctions/PmEventM/EventProducer/EventJob");
}

OrlReturnT VeskPMOI::validatePMMoCreation(unsigned long txHandle, const char* parentDn,
                                          const char* className,
                                          OrlMoNamedAttributeValueContainer_3** attributes,
                                          std::string /*fdn*/, std::string /*keyAttrValue*/) {
    if (std::strcmp(className, "MeasurementReader") != 0) {
        return OrlOk;  // the job and event job creation rules are still to come
    }
    VeskOI* oi = VeskOI::getVeskOI();
    if (validateMeasurementReaderCreation(attributes) == OrlOk) {
        oi->removeFromInvalidCommits(txHandle, parentDn);
        return OrlOk;
    }
    // The reader is dropped quietly; only a job left without any reader fails its commit.
    oi->setValidated(false);
    const int databaseTx = oi->getVeskDatabaseTransactionId(txHandle);
    if (IDatabase::getMOClassWithParent(parentDn, "MeasurementReader", databaseTx).empty()) {
        oi->insertToInvalidCommits(txHandle, parentDn);
    } else {
        oi->removeFromInvalidCommits(txHandle, parentDn);
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateMeasurementReaderCreation(
    OrlMoNamedAttributeValueContainer_3** attributes) {
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* name = attributes[i]->attributeName;
        if (name != nullptr && std::strcmp(name, "measurementSpecification") == 0) {
            const OrlMoAttributeValueContainer_3& value = attributes[i]->attributeValue;
            if (value.type != OrlOamSpiMoAttributeType_3_STRUCT || value.nrOfValues == 0 ||
                value.values == nullptr) {
                return OrlOk;  // no struct value, nothing that names an MO
            }
            OrlMoAttributeValueContainer_3 first = {value.type, 1, value.values};
            return validateMeasurementSpecification(&first);
        }
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateMeasurementSpecification(const OrlMoAttributeValueContainer_3* value) {
    for (const OrlMoAttributeValueStructMember_3* member = value->values[0].structMember;
         member != nullptr; member = member->nextMember) {
        const OrlMoAttributeValueContainer_3* memberValue = member->memberValue;
        if (memberValue == nullptr || memberValue->nrOfValues == 0) {
            continue;
        }
        const char* dn = rules::firstText(memberValue);
        const std::string named = dn != nullptr ? dn : "";
        if (!IDatabase::isPresentInDB(named, 1)) {
            VESK_ERROR("VeskPMOI::%s %s is not present in DB", __func__, named.c_str());
            return OrlValidationFailed;
        }
    }
    return OrlOk;
}

// The rules below are still to come; each change passes.

OrlReturnT VeskPMOI::validatePMSetAttribute(const char* /*dn*/, const char* /*attrName*/,
                                            const OrlMoAttributeValueContainer_3* /*value*/,
                                            unsigned long /*txHandle*/) {
    return OrlOk;
}

OrlReturnT VeskPMOI::validatePMMoDeletion(unsigned long /*txHandle*/, const char* /*dn*/) {
    return OrlOk;
}

OrlReturnT VeskPMOI::validatePMCommit(std::string /*fdn*/, int /*databaseTxHandle*/) {
    return OrlOk;
}

}  // namespace TibVeskOI

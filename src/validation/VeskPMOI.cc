// The creation rules of the PM MOs and the checks of periods and measurements against the
// station's capabilities.
#include "validation/VeskPMOI.h"

#include <algorithm>
#include <cstring>
#include <list>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const char kPmDn[] = "ManagedElement=1,SystemFunctions=1,Pm=1";
const char kPmCapabilities[] = "PmMeasurementCapabilities=1";

// The MOs of `className` directly under `parentDn` in the view of `handle`, taken to 16 bits.
unsigned short countChildren(const std::string& parentDn, const char* className, int handle) {
    std::list<std::string> ids = IDatabase::getMOClassWithParent(parentDn, className, handle);
    return static_cast<unsigned short>(std::count_if(
        ids.begin(), ids.end(), [](const std::string& id) { return id.find(':') == id.npos; }));
}

// Whether the limit `maxNoOfJobs` of `capabilities` is known and `count` has reached it. The
// test is for equality: a count already above the limit passes.
bool limitReached(const char* capabilities, unsigned short count) {
    unsigned short limit = 0;
    return Toolbox::getDbObjAttrValue<unsigned short>(capabilities, "maxNoOfJobs", limit, 1) &&
           count == limit;
}

// The attribute `name` of a null-terminated array, or null.
const OrlMoAttributeValueContainer_3* named(OrlMoNamedAttributeValueContainer_3** attributes,
                                            const char* name) {
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* given = attributes[i]->attributeName;
        if (given != nullptr && std::strcmp(given, name) == 0) {
            return &attributes[i]->attributeValue;
        }
    }
    return nullptr;
}

}  // namespace

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
                                          std::string fdn, std::string keyAttrValue) {
    VeskOI* oi = VeskOI::getVeskOI();
    const int databaseTx = oi->getVeskDatabaseTransactionId(txHandle);
    if (std::strcmp(className, "PmJob") == 0) {
        return validatePmJobCreation(attributes, databaseTx);
    }
    if (std::strcmp(className, "EventJob") == 0) {
        OrlReturnT rc = validateEventJobCreation(attributes, parentDn, databaseTx, keyAttrValue);
        if (rc == OrlOk) {
            oi->insertToCheckedCommits(txHandle, fdn);
        }
        return rc;
    }
    if (std::strcmp(className, "MeasurementReader") != 0) {
        return OrlOk;
    }
    if (validateMeasurementReaderCreation(attributes) == OrlOk) {
        oi->removeFromInvalidCommits(txHandle, parentDn);
        return OrlOk;
    }
    // The reader is dropped quietly; only a job left without any reader fails its commit.
    oi->setValidated(false);
    if (IDatabase::getMOClassWithParent(parentDn, "MeasurementReader", databaseTx).empty()) {
        oi->insertToInvalidCommits(txHandle, parentDn);
    } else {
        oi->removeFromInvalidCommits(txHandle, parentDn);
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validatePmJobCreation(OrlMoNamedAttributeValueContainer_3** attributes,
                                           int handle) {
    if (limitReached(kPmCapabilities, countChildren(kPmDn, "PmJob", handle))) {
        VESK_ERROR("VeskPMOI::%s Maximum number of PM jobs reached", __func__);
        return OrlValidationFailed;
    }
    // The first period given is judged, and only that one.
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* name = attributes[i]->attributeName;
        const bool granularity = name != nullptr && std::strcmp(name, "granularityPeriod") == 0;
        if (!granularity && (name == nullptr || std::strcmp(name, "reportingPeriod") != 0)) {
            continue;
        }
        int period = 0;
        if (!rules::firstInt(&attributes[i]->attributeValue, period)) {
            return OrlOk;
        }
        return granularity ? validateGranularityPeriod(period) : validateReportingPeriod(period);
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateGranularityPeriod(int value) {
    std::string supported;
    if (Toolbox::getDbObjAttrValue<std::string>(kPmCapabilities, "supportedMeasJobGps", supported,
                                                1) &&
        !checkList(value, supported)) {
        VESK_ERROR("VeskPMOI::%s Unsupported granularityPeriod set", __func__);
        return OrlValidationFailed;
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateReportingPeriod(int value) {
    std::string supported;
    if (Toolbox::getDbObjAttrValue<std::string>(kPmCapabilities, "supportedRopPeriods", supported,
                                                1) &&
        !checkList(value, supported)) {
        VESK_ERROR("VeskPMOI::%s Unsupported reportingPeriod set", __func__);
        return OrlValidationFailed;
    }
    return OrlOk;
}

bool VeskPMOI::checkList(int value, const std::string& list) {
    std::list<int> values;
    if (list.empty()) {
        return false;
    }
    if (!Toolbox::readStringToIntList(list, ',', values)) {
        VESK_ERROR("VeskPMOI::%s could not convert %s to int list", __func__, list.c_str());
        return false;
    }
    return std::find(values.begin(), values.end(), value) != values.end();
}

OrlReturnT VeskPMOI::validateMeasurementReaderCreation(
    OrlMoNamedAttributeValueContainer_3** attributes) {
    const OrlMoAttributeValueContainer_3* value = named(attributes, "measurementSpecification");
    return value != nullptr ? validateMeasurementSpecification(value) : OrlOk;
}

OrlReturnT VeskPMOI::validateMeasurementSpecification(const OrlMoAttributeValueContainer_3* value) {
    if (value == nullptr || value->type != OrlOamSpiMoAttributeType_3_STRUCT ||
        value->nrOfValues == 0 || value->values == nullptr) {
        return OrlOk;  // no struct value, nothing that names an MO
    }
    for (const OrlMoAttributeValueStructMember_3* member = value->values[0].structMember;
         member != nullptr; member = member->nextMember) {
        const OrlMoAttributeValueContainer_3* memberValue = member->memberValue;
        if (memberValue == nullptr || memberValue->nrOfValues == 0) {
            continue;
        }
        const char* dn = rules::firstText(memberValue);
        const std::string mo = dn != nullptr ? dn : "";
        if (!IDatabase::isPresentInDB(mo, 1)) {
            VESK_ERROR("VeskPMOI::%s %s is not present in DB", __func__, mo.c_str());
            return OrlValidationFailed;
        }
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateEventJobCreation(OrlMoNamedAttributeValueContainer_3** attributes,
                                              const std::string& parentDn, int handle,
                                              const std::string& keyAttrValue) {
    static const char* const kJobIds[] = {"10000", "10001", "10002", "10003", "10004", "10005"};
    if (std::none_of(std::begin(kJobIds), std::end(kJobIds),
                     [&](const char* id) { return keyAttrValue == id; })) {
        VESK_ERROR("VeskPMOI::%s Unsupported eventJobId set", __func__);
        VeskOI::getVeskOI()->addMessage("Unsupported EventJobId set");
        return OrlValidationFailed;
    }
    if (limitReached("EventCapabilities=1", countChildren(parentDn, "EventJob", handle))) {
        return refuse(__func__, "Maximum number of Event jobs reached");
    }
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* name = attributes[i]->attributeName;
        int period = 0;
        if (name == nullptr || std::strcmp(name, "reportingPeriod") != 0 ||
            !rules::firstInt(&attributes[i]->attributeValue, period)) {
            continue;
        }
        OrlReturnT rc = validateEventJobReportingPeriods(period, parentDn, handle);
        if (rc != OrlOk) {
            return rc;
        }
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateEventJobReportingPeriods(int value, const std::string& producerDn,
                                                      int handle) {
    const std::string dn = producerDn + ",FilePullCapabilities=1";
    rules::ObjectPtr capabilities = rules::fetch(dn, handle);
    if (!capabilities) {
        VESK_ERROR("VeskPMOI::%s Couldn't find MO %s.", __func__, dn.c_str());
        return OrlFailure;
    }
    std::string name = "supportedReportingPeriods";
    std::string supported;
    if (!Toolbox::getStringFromDBObject(capabilities.get(), name, supported)) {
        VESK_ERROR(
            "VeskPMOI::%s Couldn't get value of EventJob::supportedReportingPeriods attribute .",
            __func__);
        return OrlFailure;
    }
    return checkList(value, supported) ? OrlOk
                                       : refuse(__func__, "Unsupported reportingPeriod set");
}

OrlReturnT VeskPMOI::refuse(const char* function, const std::string& message) {
    VESK_ERROR("VeskPMOI::%s %s", function, message.c_str());
    VeskOI::getVeskOI()->addMessage(message.c_str());
    return OrlValidationFailed;
}

}  // namespace TibVeskOI

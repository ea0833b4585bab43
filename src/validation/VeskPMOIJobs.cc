// The set and delete rules of the PM MOs: periods and measurements of a PmJob, and the job
// control and state that guard an EventJob.
#include <cstring>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "validation/VeskOI.h"
#include "validation/VeskPMOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const int kStopped = 2;
const int kStartStop = 1;
const int kViewOnly = 2;

}  // namespace

OrlReturnT VeskPMOI::validatePMSetAttribute(const char* dn, const char* attrName,
                                            const OrlMoAttributeValueContainer_3* value,
                                            unsigned long txHandle) {
    const std::string target = dn;
    const std::string name = attrName;
    int period = 0;
    if (target.rfind("PmJob") != std::string::npos) {
        if (name == "granularityPeriod") {
            return rules::firstInt(value, period) ? validateGranularityPeriod(period) : OrlOk;
        }
        if (name == "reportingPeriod") {
            return rules::firstInt(value, period) ? validateReportingPeriod(period) : OrlOk;
        }
        if (name == "measurementSpecification") {
            return validateMeasurementSpecification(value);
        }
    }
    if (target.find("EventJob") == std::string::npos) {
        return OrlOk;
    }
    VeskOI* oi = VeskOI::getVeskOI();
    const int handle = oi->getVeskDatabaseTransactionId(txHandle);
    OrlReturnT rc = checkJobControl(target, opSet, handle);
    if (rc == OrlOk && name != "requestedJobState") {
        rc = checkCurrentJobState(target);
    }
    if (rc == OrlOk && name == "reportingPeriod" && rules::firstInt(value, period)) {
        rc = validateEventJobReportingPeriods(period, target.substr(0, target.rfind(',')), handle);
    }
    if (rc == OrlOk) {
        oi->insertToCheckedCommits(txHandle, target);
    }
    return rc;
}

OrlReturnT VeskPMOI::validatePMMoDeletion(unsigned long txHandle, const char* dn) {
    if (std::strstr(dn, "EventJob") == nullptr) {
        return OrlOk;
    }
    const int handle = VeskOI::getVeskOI()->getVeskDatabaseTransactionId(txHandle);
    OrlReturnT rc = checkJobControl(dn, opDelete, handle);
    return rc != OrlOk ? rc : checkCurrentJobState(dn);
}

OrlReturnT VeskPMOI::checkJobControl(const std::string& dn, Operation operation, int handle) {
    rules::ObjectPtr job = rules::fetch(dn, handle);
    if (!job) {
        VESK_ERROR("VeskPMOI::%s Couldn't find MO %s .", __func__, dn.c_str());
        return OrlFailure;
    }
    std::string name = "jobControl";
    std::string text;
    if (!Toolbox::getStringFromDBObject(job.get(), name, text)) {
        VESK_ERROR("VeskPMOI::%s Couldn't get value of EventJob::jobControl attribute .", __func__);
        return OrlFailure;
    }
    int control = 0;
    Toolbox::convertStringToInt(text, control, false);
    if (operation == opDelete && (control == kStartStop || control == kViewOnly)) {
        return refuse(__func__, std::string("jobControl value is '") +
                                    (control == kStartStop ? "STARTSTOP" : "VIEWONLY") +
                                    "', delete operation is not allowed.");
    }
    if (operation == opSet && control == kViewOnly) {
        return refuse(__func__, "jobControl value is 'VIEWONLY', set operation is not allowed.");
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::checkCurrentJobState(const std::string& dn) {
    // The job's committed state: what the station runs, not what this transaction asks for.
    int state = 0;
    if (!Toolbox::getDbObjAttrValue<int>(dn, "currentJobState", state, 1) || state == kStopped) {
        return OrlOk;
    }
    return refuse(__func__,
                  "EventJob (currentJobState) is not in stopped state, operation is not allowed.");
}

}  // namespace TibVeskOI

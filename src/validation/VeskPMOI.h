// The rules of the performance management MOs: PmJob, its MeasurementReader children and
// EventJob. They compare what the operator asks for with what the station says it can do, in
// the capability MOs "PmMeasurementCapabilities=1", "EventCapabilities=1" and the producer's
// "FilePullCapabilities=1": job limits, reporting and granularity periods, the MOs a measurement
// names. An event job is also guarded by its job control and its state (a running job takes
// only a new requestedJobState), and is repaired at commit: a default job group, references and
// filters that lead nowhere dropped (VeskPMOICommit.cc).
//
// Refusals are OrlValidationFailed with an error line, and for event jobs a message for the
// operator; a capability MO or job that cannot be read is OrlFailure. A period list that cannot
// be read, or a change value of a type the rules cannot read, refuses nothing.
//
// Threads: under the front's mutex, like every caller of the validation component. No state.
#pragma once

#include <string>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlOamSpi.h"

class DBObject;

namespace TibVeskOI {

class VeskPMOI {
  public:
    // What checkJobControl is asked about.
    enum Operation { opSet = 2, opDelete = 3 };

    // Made at first use, destroyed at library unload.
    static VeskPMOI* instance();
    virtual ~VeskPMOI() {}

    // Registers the PmJob, MeasurementReader and EventJob paths with VeskOI, in that order.
    void initialize();
    // A creation of `className` under `parentDn`; `fdn` is the new MO's dn. A PmJob within the
    // job limit and with a supported period passes. A MeasurementReader whose
    // measurementSpecification names an MO that is not in the database is accepted but not made,
    // and its job is noted as an invalid commit while the transaction holds no reader under it. An
    // accepted EventJob is noted for the commit repair.
    OrlReturnT validatePMMoCreation(unsigned long txHandle, const char* parentDn,
                                    const char* className,
                                    OrlMoNamedAttributeValueContainer_3** attributes,
                                    std::string fdn, std::string keyAttrValue);
    // A set: periods and measurement specifications of PmJob and MeasurementReader; job control,
    // job state and reporting period of EventJob, which is then noted for the commit repair.
    OrlReturnT validatePMSetAttribute(const char* dn, const char* attrName,
                                      const OrlMoAttributeValueContainer_3* value,
                                      unsigned long txHandle);
    // An EventJob goes only when its job control allows it and it is stopped; others pass.
    OrlReturnT validatePMMoDeletion(unsigned long txHandle, const char* dn);
    // Repairs the EventJob `fdn` in the database transaction and writes it back: OrlOk, or the
    // refusal of a job group that is not allowed (OrlFailure when the job is gone).
    OrlReturnT validatePMCommit(std::string fdn, int databaseTxHandle);
    // OrlValidationFailed when the last filterName of a struct value names no MO.
    OrlReturnT validateEventFilters(const OrlMoAttributeValueContainer_3* value);

  private:
    VeskPMOI() {}
    OrlReturnT validatePmJobCreation(OrlMoNamedAttributeValueContainer_3** attributes, int handle);
    OrlReturnT validateMeasurementReaderCreation(OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT validateEventJobCreation(OrlMoNamedAttributeValueContainer_3** attributes,
                                        const std::string& parentDn, int handle,
                                        const std::string& keyAttrValue);
    OrlReturnT validateGranularityPeriod(int value);
    OrlReturnT validateReportingPeriod(int value);
    // OrlValidationFailed when a member of the struct value names an MO that is not committed.
    OrlReturnT validateMeasurementSpecification(const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateEventJobReportingPeriods(int value, const std::string& producerDn,
                                                int handle);
    // Whether `list` ("5,7") holds `value`; an empty or unreadable list holds nothing.
    static bool checkList(int value, const std::string& list);
    OrlReturnT checkJobControl(const std::string& dn, Operation operation, int handle);
    OrlReturnT checkCurrentJobState(const std::string& dn);
    OrlReturnT checkJobGroup(DBObject* job);
    OrlReturnT checkUnsupportedRefs(DBObject* job, const char* attrName);
    OrlReturnT checkEventFilterTypes(DBObject* job, int handle);
    // Logs `message` as the error of `function`, gives it to the operator, OrlValidationFailed.
    static OrlReturnT refuse(const char* function, const std::string& message);
};

}  // namespace TibVeskOI

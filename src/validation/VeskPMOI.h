// The rules of the performance management MOs: PmJob, its MeasurementReader children and
// EventJob. What is built: the registration of the three MO paths and the judgement of a new
// MeasurementReader, which is what fills the validation component's invalid commits (a job left
// without any valid reader leaves its transaction and the commit is refused). The job limits,
// periods, job control and the commit repair of event jobs land with their own change; until
// then those calls pass (OrlOk).
//
// Threads: under the front's mutex, like every caller of the validation component.
#pragma once

#include <string>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

class VeskPMOI {
  public:
    // Made at first use, destroyed at library unload.
    static VeskPMOI* instance();
    virtual ~VeskPMOI() {}

    // Registers the PmJob, MeasurementReader and EventJob paths with VeskOI, in that order.
    void initialize();
    // A creation of `className` under `parentDn`; `fdn` is the new MO's dn. A MeasurementReader
    // whose specification names an MO that is not in the database is accepted but not made, and
    // its job is noted as an invalid commit while the transaction holds no reader under it.
    OrlReturnT validatePMMoCreation(unsigned long txHandle, const char* parentDn,
                                    const char* className,
                                    OrlMoNamedAttributeValueContainer_3** attributes,
                                    std::string fdn, std::string keyAttrValue);
    // Still to come: OrlOk.
    OrlReturnT validatePMSetAttribute(const char* dn, const char* attrName,
                                      const OrlMoAttributeValueContainer_3* value,
                                      unsigned long txHandle);
    OrlReturnT validatePMMoDeletion(unsigned long txHandle, const char* dn);
    OrlReturnT validatePMCommit(std::string fdn, int databaseTxHandle);

  private:
    VeskPMOI() {}
    OrlReturnT validateMeasurementReaderCreation(OrlMoNamedAttributeValueContainer_3** attributes);
    // OrlValidationFailed when a member of the struct value names an MO that is not committed.
    OrlReturnT validateMeasurementSpecification(const OrlMoAttributeValueContainer_3* value);
};

}  // namespace TibVeskOI

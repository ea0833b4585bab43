// The priority order of the LTE and WCDMA cells and the node's operation mode, kept in step with
// what operators do to the cells. The rules themselves land with their own change; until then
// each call the validation component makes passes (OrlOk) and notes nothing.
//
// Threads: under the front's mutex, like every caller of the validation component.
#pragma once

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

class VeskCellPriority {
  public:
    // Made at first use, destroyed at library unload.
    static VeskCellPriority* instance();
    virtual ~VeskCellPriority() {}

    // After a cell's creation in the database (EUtranCellFDD, EUtranCellTDD, NodeBLocalCell).
    int validateCellCreation(unsigned long aTxHandle, const char* parentDn, const char* aClassName,
                             OrlMoNamedAttributeValueContainer_3** attributes,
                             const char* keyValue);
    // Behind the LTE cell rules and the baseband forwarding, when those accepted.
    int validateCellSetAttribute(unsigned long aTxHandle, const char* aDn,
                                 const char* aAttributeName,
                                 const OrlMoAttributeValueContainer_3* value);
    // Behind the LTE cell deletion notes, and for NodeBLocalCell.
    int validateCellDeletion(unsigned long aTxHandle, const char* dn);
    // At the end of the transaction; the commit's answer is not looked at.
    int commit(unsigned long aTxHandle);
    void abort(unsigned long aTxHandle);

  private:
    VeskCellPriority() {}
};

}  // namespace TibVeskOI

// The rules of the WCDMA MOs that the baseband OAM must accept: NodeBFunction and its local
// cells. The forwarding of the values to the baseband lands with its own change; until then
// every change passes and commit and rollback have nothing to confirm. The registration of
// both MO paths is in place, so every change of these classes already passes through the
// validation component.
//
// Threads: under the front's mutex, like every caller of the validation component.
#pragma once

#include <string>

#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

class VeskBoamOI {
  public:
    // Made at first use, destroyed at library unload.
    static VeskBoamOI* instance();
    virtual ~VeskBoamOI() {}

    // Registers "/ManagedElement/NodeBFunction" and its local cells' path with VeskOI.
    void initialize();
    // The judgement of one set; OrlOk until the forwarding lands.
    OrlReturnT handleBOAMTransaction(std::string dn, std::string attrName,
                                     const OrlMoAttributeValueContainer_3* value,
                                     unsigned long txHandle);
    // Confirm and drop what went to the baseband in the transaction: OrlOk in all cases.
    OrlReturnT commit(unsigned long txHandle);
    OrlReturnT rollback(unsigned long txHandle);

  private:
    VeskBoamOI() {}
};

}  // namespace TibVeskOI

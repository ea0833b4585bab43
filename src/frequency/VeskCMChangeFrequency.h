// The engine behind the MO action "changeFrequency": one singleton, reached through instance().
//
// What it does now: the three entries that the action dispatch calls. Until the frequency change
// lands each of them refuses (-1, with an error line) and changes nothing; the text for the
// operator stays unset.
//
// Threads: called under the managed object front's mutex, one request at a time.
#pragma once

#include <string>

namespace TibVeskCM {

class VeskCMChangeFrequency {
  public:
    // Made at first use, destroyed at library unload.
    static VeskCMChangeFrequency* instance();
    virtual ~VeskCMChangeFrequency() = default;

    // An own LTE cell (dn holds ",EUtranCellFDD=" or ",EUtranCellTDD="): records the new channel
    // in the host transaction `orlTxHandle`, whose database transaction is `dbTxHandle`. 0
    // accepted, -1 refused. `result` may receive a text for the operator.
    int changeLTECellFrequency(unsigned long orlTxHandle, int dbTxHandle, std::string dn,
                               int earfcn, const char** result);
    // An external LTE cell: 0, -1 or -10.
    int changeExternalLTECellFrequency(std::string dn, int earfcn, const char** result);
    // An external UTRAN cell: 0, -1, -7, or the refusal of a helper.
    int changeExternalUtranCellFDDFrequency(std::string dn, int channel, const char** result);

  private:
    VeskCMChangeFrequency() = default;
};

}  // namespace TibVeskCM

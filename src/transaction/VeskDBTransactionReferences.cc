#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

// Placeholder until reference tracking lands: no reference is checked.
bool VeskDBTransaction::validateReferences() {
    return true;
}

}  // namespace TibVeskCM

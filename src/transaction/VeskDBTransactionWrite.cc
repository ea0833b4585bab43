#include "transaction/VeskDBTransaction.h"

#include "platform/Logger.h"

namespace TibVeskCM {

// The three write operations are placeholders: the writes land with the write operations work.
// Until then each refuses with -1 and an error line, so nothing half-written reaches the
// database.

int VeskDBTransaction::createMo(char const*, char const*, char const*, char const*,
                                OrlMoNamedAttributeValueContainer_3**) {
    VESK_ERROR("VeskDBTransaction::%s - not available yet", __func__);
    return -1;
}

int VeskDBTransaction::setMoAttribute(std::string const&, std::string const&,
                                      OrlMoAttributeValueContainer_3 const*) {
    VESK_ERROR("VeskDBTransaction::%s - not available yet", __func__);
    return -1;
}

int VeskDBTransaction::deleteMo(std::string const&) {
    VESK_ERROR("VeskDBTransaction::%s - not available yet", __func__);
    return -1;
}

}  // namespace TibVeskCM

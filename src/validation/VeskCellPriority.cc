#include "validation/VeskCellPriority.h"

#include "platform/Logger.h"

namespace TibVeskOI {

VeskCellPriority* VeskCellPriority::instance() {
    static VeskCellPriority priority;
    return &priority;
}

// The priority and mode rules are still to come: every call passes and notes nothing.

int VeskCellPriority::validateCellCreation(unsigned long aTxHandle, const char* parentDn,
                                           const char* aClassName,
                                           OrlMoNamedAttributeValueContainer_3** /*attributes*/,
                                           const char* keyValue) {
    VESK_TRACE("VeskCellPriority::%s txHandle: %lu MO: %s,%s=%s", __func__, aTxHandle, parentDn,
               aClassName, keyValue);
    return OrlOk;
}

int VeskCellPriority::validateCellSetAttribute(unsigned long /*aTxHandle*/, const char* /*aDn*/,
                                               const char* /*aAttributeName*/,
                                               const OrlMoAttributeValueContainer_3* /*value*/) {
    return OrlOk;
}

int VeskCellPriority::validateCellDeletion(unsigned long /*aTxHandle*/, const char* /*dn*/) {
    return OrlOk;
}

int VeskCellPriority::commit(unsigned long /*aTxHandle*/) {
    return OrlOk;
}

void VeskCellPriority::abort(unsigned long /*aTxHandle*/) {}

}  // namespace TibVeskOI

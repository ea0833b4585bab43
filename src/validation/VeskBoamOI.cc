#include "validation/VeskBoamOI.h"

#include "platform/Logger.h"
#include "platform/VeskStrings.h"
#include "validation/VeskOI.h"

namespace TibVeskOI {

VeskBoamOI* VeskBoamOI::instance() {
    static VeskBoamOI boam;
    return &boam;
}

void VeskBoamOI::initialize() {
    VeskOI::getVeskOI()->registerAsObjectImplementer(VeskConst::NodeBFunctionPath);
    VeskOI::getVeskOI()->registerAsObjectImplementer(VeskConst::NodeBLocalCellPath);
}

OrlReturnT VeskBoamOI::handleBOAMTransaction(std::string dn, std::string attrName,
                                             const OrlMoAttributeValueContainer_3* /*value*/,
                                             unsigned long txHandle) {
    // Nothing goes to the baseband yet, so nothing can be refused.
    VESK_TRACE("VeskBoamOI::%s %s::%s txHandle: %lu", __func__, dn.c_str(), attrName.c_str(),
               txHandle);
    return OrlOk;
}

OrlReturnT VeskBoamOI::commit(unsigned long /*txHandle*/) {
    return OrlOk;
}

OrlReturnT VeskBoamOI::rollback(unsigned long /*txHandle*/) {
    return OrlOk;
}

}  // namespace TibVeskOI

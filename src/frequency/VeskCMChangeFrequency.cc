#include "frequency/VeskCMChangeFrequency.h"

#include "platform/Logger.h"

namespace TibVeskCM {

VeskCMChangeFrequency* VeskCMChangeFrequency::instance() {
    static VeskCMChangeFrequency engine;
    return &engine;
}

int VeskCMChangeFrequency::changeLTECellFrequency(unsigned long, int, std::string dn, int earfcn,
                                                  const char**) {
    VESK_ERROR("VeskCMChangeFrequency::%s - not available yet (%s, %d)", __func__, dn.c_str(),
               earfcn);
    return -1;
}

int VeskCMChangeFrequency::changeExternalLTECellFrequency(std::string dn, int earfcn,
                                                          const char**) {
    VESK_ERROR("VeskCMChangeFrequency::%s - not available yet (%s, %d)", __func__, dn.c_str(),
               earfcn);
    return -1;
}

int VeskCMChangeFrequency::changeExternalUtranCellFDDFrequency(std::string dn, int channel,
                                                               const char**) {
    VESK_ERROR("VeskCMChangeFrequency::%s - not available yet (%s, %d)", __func__, dn.c_str(),
               channel);
    return -1;
}

}  // namespace TibVeskCM

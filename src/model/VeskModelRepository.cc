#include "model/VeskModelRepository.h"

namespace TibVeskCM {

VeskModelRepository* VeskModelRepository::instance() {
    static VeskModelRepository repository;
    return &repository;
}

void VeskModelRepository::initialize(OrlOamSpiModelRepository_2* repository2,
                                     OrlOamSpiModelRepository_3* repository3) {
    _repository2 = repository2;
    _repository3 = repository3;
}

}  // namespace TibVeskCM

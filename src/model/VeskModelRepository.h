// The agent's view of the host's model repository. For now it only keeps the two repository
// records that the agent's start hands over; the model questions come with the model work.
//
// VeskOrlHelper's attribute type lookup is not installed here yet: answering it needs the walk
// from a dn to its class and attribute, which belongs to those questions. Until then the value
// helpers see every attribute as of unknown type.
#pragma once

#include "platform/orl/OrlModelRepository.h"

namespace TibVeskCM {

class VeskModelRepository {
  public:
    // Made at first use, destroyed at library unload.
    static VeskModelRepository* instance();

    // Keeps the two records; they belong to the host and outlive the agent. Called by the
    // agent's start, before requests that need the model arrive.
    void initialize(OrlOamSpiModelRepository_2* repository2,
                    OrlOamSpiModelRepository_3* repository3);

    OrlOamSpiModelRepository_2* repository2() const { return _repository2; }
    OrlOamSpiModelRepository_3* repository3() const { return _repository3; }

  private:
    VeskModelRepository() = default;

    OrlOamSpiModelRepository_2* _repository2 = nullptr;
    OrlOamSpiModelRepository_3* _repository3 = nullptr;
};

}  // namespace TibVeskCM

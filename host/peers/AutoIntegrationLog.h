// The station's auto-integration log writer, destination 8: keeps each
// VESK_WriteAutointegrationLog line (the references a NETCONF commit of the integration found
// missing). `record` (the default) or `refuse` (the send fails).
#pragma once

#include "host/peers/Peer.h"

namespace vesk {
namespace host {
namespace peers {

class AutoIntegrationLog : public Peer {
  public:
    AutoIntegrationLog();
    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

// The peers every reference host plays. A new peer is one line here.
#include <memory>

#include "host/peers/AutoIntegrationLog.h"
#include "host/peers/BasebandOam.h"
#include "host/peers/ConfigurationManager.h"
#include "host/peers/FaultManager.h"
#include "host/peers/Peers.h"
#include "host/peers/ResetComponent.h"
#include "host/peers/SecurityComponent.h"
#include "host/peers/SoftwareManagement.h"
#include "host/peers/WifiModule.h"

namespace vesk {
namespace host {
namespace peers {

void addStationPeers(Host& host, Peers& peers) {
    peers.add(std::make_unique<ResetComponent>(host));
    peers.add(std::make_unique<AutoIntegrationLog>());
    peers.add(std::make_unique<FaultManager>());
    peers.add(std::make_unique<WifiModule>());
    peers.add(std::make_unique<SecurityComponent>());
    peers.add(std::make_unique<BasebandOam>());
    peers.add(std::make_unique<ConfigurationManager>());
    peers.add(std::make_unique<SoftwareManagement>(host));
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

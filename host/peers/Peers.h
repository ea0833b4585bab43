// The station's components that the host plays (Peer), each registered with the station's
// message bus for its destination number: what the agent sends there is decoded with the
// station's message codec and given to the peer. One Peers per host; the peers live as long as
// it does.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/peers/Peer.h"

namespace vesk {
namespace host {

class Host;

namespace peers {

class Peers {
  public:
    Peers() = default;
    // Unregisters every destination, waiting for deliveries under way, before the peers go.
    ~Peers();
    Peers(const Peers&) = delete;
    Peers& operator=(const Peers&) = delete;

    // Takes `peer` and, if it has a destination, makes it that destination's component. Null,
    // with an error line, when a peer of that name or destination is there already.
    Peer* add(std::unique_ptr<Peer> peer);
    Peer* find(const std::string& name) const;
    // Tells every peer that the station's state is open; asks every peer to stop its work.
    void stateOpened();
    void stopAll();
    // In the order they were added.
    std::vector<Peer*> all() const;
    // Whether the agent waits now for an answer one of the peers holds back.
    bool waitedOn() const;

  private:
    std::vector<std::unique_ptr<Peer>> _peers;
};

// The station's peers of the reference host: reset component (9), auto-integration log
// writer (8), fault manager (3), WiFi module, security component, baseband OAM (6),
// configuration manager (2) and software management (7).
void addStationPeers(Host& host, Peers& peers);

}  // namespace peers
}  // namespace host
}  // namespace vesk

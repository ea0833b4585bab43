#include "host/peers/Peers.h"

#include "platform/Logger.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"

namespace vesk {
namespace host {
namespace peers {

Peers::~Peers() {
    stopAll();
    for (const std::unique_ptr<Peer>& peer : _peers) {
        if (peer->destination() != 0) {
            vesk::station::unregisterComponent(peer->destination());
        }
    }
}

Peer* Peers::add(std::unique_ptr<Peer> peer) {
    for (const std::unique_ptr<Peer>& known : _peers) {
        if (known->name() == peer->name() ||
            (peer->destination() != 0 && known->destination() == peer->destination())) {
            VESK_ERROR("host: peer %s (destination %d) clashes with peer %s", peer->name().c_str(),
                       peer->destination(), known->name().c_str());
            return nullptr;
        }
    }
    Peer* added = peer.get();
    _peers.push_back(std::move(peer));
    if (added->destination() != 0) {
        vesk::station::registerComponent(
            added->destination(), [added](int, const uint8_t* data, size_t size, int flag) {
                std::string error;
                auto message = VESK::Messages::decodeMessage(data, size, error);
                if (message == nullptr) {
                    VESK_ERROR("peer %s: a message that does not decode: %s", added->name().c_str(),
                               error.c_str());
                    return false;
                }
                return added->receive(*message, flag);
            });
    }
    return added;
}

void Peers::stateOpened() {
    for (const std::unique_ptr<Peer>& peer : _peers) {
        peer->stateOpened();
    }
}

void Peers::stopAll() {
    for (const std::unique_ptr<Peer>& peer : _peers) {
        peer->stop();
    }
}

Peer* Peers::find(const std::string& name) const {
    for (const std::unique_ptr<Peer>& peer : _peers) {
        if (peer->name() == name) {
            return peer.get();
        }
    }
    return nullptr;
}

bool Peers::waitedOn() const {
    for (const std::unique_ptr<Peer>& peer : _peers) {
        if (peer->waitedOn()) {
            return true;
        }
    }
    return false;
}

std::vector<Peer*> Peers::all() const {
    std::vector<Peer*> result;
    for (const std::unique_ptr<Peer>& peer : _peers) {
        result.push_back(peer.get());
    }
    return result;
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

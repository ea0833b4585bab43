// The station's reset component, destination 9: takes VESK_ResetRBS and records each reset
// (cause, kind, text, parameter, time). Behaviours: `record` (the default), `restart` (records,
// then restarts the agent once every host transaction open at the reset has ended, as the
// station would after its restart: stop, terminate, unload, load, init and start on the same
// state), `refuse` (the send fails).
#pragma once

#include <atomic>

#include "host/peers/Peer.h"

namespace vesk {
namespace host {

class Host;

namespace peers {

class ResetComponent : public Peer {
  public:
    // `host` restarts the agent; it must outlive the peer.
    explicit ResetComponent(Host& host);

    bool receive(const VESK::Messages::SerializableMessage& message, int flag) override;

  private:
    // On the thread that ended the last of those transactions.
    void restart(size_t record);

    Host& _host;
    std::atomic<bool> _restartDue{false};  // one restart for the resets of one transaction
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

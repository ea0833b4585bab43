// The station's WiFi module, which the agent reaches through ITransport: `ok` (the default)
// makes its restart and factory reset succeed, `fail` makes them fail. `show` gives what the
// module saw: factory resets, restarts and the last restart's mode.
#pragma once

#include "host/peers/Peer.h"

namespace vesk {
namespace host {
namespace peers {

class WifiModule : public Peer {
  public:
    // Starts from a module that has seen nothing and succeeds.
    WifiModule();
    Json show() const override;

  protected:
    void behaviourSet(const std::string& behaviour) override;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

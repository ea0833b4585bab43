// The station's security component, which keeps the certificate MOs (the station's ISec
// stand-in). `ok` (the default) lets its executeAction succeed, `fail` makes it fail. `show`
// gives the actions it took: name, dn and each attribute as text.
#pragma once

#include "host/peers/Peer.h"

namespace vesk {
namespace host {
namespace peers {

class SecurityComponent : public Peer {
  public:
    SecurityComponent();
    // Leaves the stand-in's actions succeeding.
    ~SecurityComponent() override;
    Json show() const override;

  protected:
    void behaviourSet(const std::string& behaviour) override;
};

}  // namespace peers
}  // namespace host
}  // namespace vesk

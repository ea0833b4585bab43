// The host's own object implementers: adds them (a component with the host, then a registration
// with the agent's "OrlOamSpiRegisterObjectImplementer" record, version "2"), changes their
// behaviour, lists them and removes them (unregistration, then the component goes). Used from
// the thread that drives the host (the command line or a test).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/oi/ObjectImplementer.h"

namespace vesk {
namespace host {

class Host;

namespace oi {

class Implementers {
  public:
    // `host` must outlive this object.
    explicit Implementers(Host& host) : _host(host) {}
    ~Implementers();
    Implementers(const Implementers&) = delete;
    Implementers& operator=(const Implementers&) = delete;

    // Adds an implementer for dn or MO path `name` and registers it with the agent. Its id
    // into *id. A refusal of the agent (or no agent, OrlNotExist; no free slot, OrlFailure)
    // leaves nothing behind; the reason is in `error`.
    OrlReturnT add(Scope scope, const std::string& name, const Behaviour& behaviour, int* id,
                   std::string* error);
    // Unregisters it and forgets it; OrlNotExist for an unknown id. The agent's answer
    // otherwise; the implementer goes in any case.
    OrlReturnT remove(int id, std::string* error);
    // Unregisters and forgets every implementer (before the agent stops).
    void removeAll();

    ObjectImplementer* find(int id) const;
    std::vector<ObjectImplementer*> all() const;

  private:
    // The agent's registration record, or null.
    OrlOamSpiRegisterObjectImplementer_2* registration() const;

    Host& _host;
    std::vector<std::unique_ptr<ObjectImplementer>> _implementers;  // in the order added
};

}  // namespace oi
}  // namespace host
}  // namespace vesk

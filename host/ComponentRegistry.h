// The components that plug-ins registered with the host, their provided records, and the order
// in which they were started.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/orl/OrlMgmtSpi.h"

namespace vesk {
namespace host {

class ComponentRegistry {
  public:
    ComponentRegistry() = default;
    ComponentRegistry(const ComponentRegistry&) = delete;
    ComponentRegistry& operator=(const ComponentRegistry&) = delete;

    // Makes the component's provided records reachable at once. The record stays the caller's
    // and must outlive its registration. OrlOk for a new component and for the same record
    // again; OrlFailure for null, or for another record under a name already taken.
    OrlReturnT add(OrlMgmtSpiComponent* component);
    // OrlNotExist when the record is not registered.
    OrlReturnT remove(OrlMgmtSpiComponent* component);
    // Forgets every component (their records are about to go away); returns their names.
    std::vector<std::string> removeAll();

    // The provided record (interfaceName, version) of the component named `componentName`, or
    // null.
    void* find(const std::string& componentName, const std::string& interfaceName,
               const std::string& version) const;
    // Every provided record with this interface name and version, in registration order.
    std::vector<void*> findAll(const std::string& interfaceName, const std::string& version) const;

    // Starts, in registration order, every component not yet started, including those that
    // register while another one starts. Stops at the first non-zero result, which it returns
    // with the component's name in `failed`. Calls out without holding the registry's lock.
    OrlReturnT startAll(OrlStateChangeReason reason, std::string* failed);
    // Stops the started components, last started first.
    void stopAll(OrlStateChangeReason reason);

    std::vector<std::string> names() const;
    std::vector<std::string> started() const;
    size_t size() const;

  private:
    struct Entry {
        OrlMgmtSpiComponent* component;
        bool started;
    };

    OrlMgmtSpiComponent* nextToStart();
    void markStarted(OrlMgmtSpiComponent* component);

    mutable std::mutex _mutex;
    std::vector<Entry> _entries;                    // registration order
    std::vector<OrlMgmtSpiComponent*> _startOrder;  // started, first started first
};

}  // namespace host
}  // namespace vesk

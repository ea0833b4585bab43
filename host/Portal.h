// The interface portal that plug-ins receive: the host's services by service name, the records
// of registered components by component name, and the registration of components. Its C records
// reach the one live Portal of the process.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "host/ComponentRegistry.h"
#include "platform/orl/OrlMgmtSpi.h"

namespace vesk {
namespace host {

// (service or component name, interface name, version).
using InterfaceKey = std::tuple<std::string, std::string, std::string>;

class Portal {
  public:
    // Becomes the process's live portal; a second one while this one lives is a logic error.
    Portal();
    ~Portal();
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

    // What a plug-in's init receives; its getPortal("1") answers record().
    OrlMgmtSpiInterfacePortalAccessor* accessor();
    OrlMgmtSpiInterfacePortal_1* record();

    // Offers a host service under its header triple (the header's first text is the service
    // name), replacing one offered before under the same triple. The record must outlive the
    // portal.
    void addService(OrlMgmtSpiInterface_1* record);

    // Every later fetch of this triple answers `code` (non-zero) until clearRefusals().
    void refuse(const std::string& service, const std::string& interfaceName,
                const std::string& version, OrlReturnT code);
    void clearRefusals();
    // Number of fetches of this triple asked so far, refused or not.
    int fetchCount(const std::string& name, const std::string& interfaceName,
                   const std::string& version) const;

    // The operations of the record, callable from any thread and from inside a component's
    // start. OrlNotExist when nothing answers to the triple.
    OrlReturnT getInterface(const char* name, const char* interfaceName, const char* version,
                            void** out);
    // *out is always a null-terminated array, owned by the portal and valid until the next call
    // for the same name and version; OrlNotExist when it is empty.
    OrlReturnT getInterfaceArray(const char* interfaceName, const char* version, void*** out);

    ComponentRegistry& components() { return _components; }

  private:
    OrlMgmtSpiInterfacePortalAccessor _accessor;
    OrlMgmtSpiInterfacePortal_1 _record;
    ComponentRegistry _components;

    mutable std::mutex _mutex;
    std::map<InterfaceKey, OrlMgmtSpiInterface_1*> _services;
    std::map<InterfaceKey, OrlReturnT> _refusals;
    std::map<InterfaceKey, int> _fetches;
    std::map<std::pair<std::string, std::string>, std::vector<void*>> _arrays;
};

}  // namespace host
}  // namespace vesk

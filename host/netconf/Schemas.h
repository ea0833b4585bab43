// The model library context of the NETCONF server: the station model beside the protocol's own
// modules (operations, monitoring, notifications) and the module of the change notifications.
// It is separate from the host's model context, whose nodes carry the host's own data. Loaded
// once before the server starts, read-only afterwards (parsing and printing may run on any
// thread).
#pragma once

#include <string>
#include <vector>

struct ly_ctx;
struct lys_module;

namespace vesk {
namespace host {
namespace netconf {

class Schemas {
  public:
    Schemas() = default;
    ~Schemas();
    Schemas(const Schemas&) = delete;
    Schemas& operator=(const Schemas&) = delete;

    // Loads module "vesk-station" from `modelDirectory` and the protocol's modules from
    // `protocolDirectory`. False, with the model library's reason in `error`, otherwise.
    bool load(const std::string& modelDirectory, const std::string& protocolDirectory,
              std::string* error);

    ly_ctx* context() const { return _context; }
    const lys_module* station() const { return _station; }
    const lys_module* notifications() const { return _notifications; }
    const lys_module* netconf() const { return _netconf; }

    // The capabilities that name the station's modules (the main module and what it imports
    // and includes), "NAMESPACE?module=NAME&revision=DATE".
    std::vector<std::string> stationCapabilities() const;

  private:
    ly_ctx* _context = nullptr;
    const lys_module* _station = nullptr;
    const lys_module* _notifications = nullptr;
    const lys_module* _netconf = nullptr;
};

}  // namespace netconf
}  // namespace host
}  // namespace vesk

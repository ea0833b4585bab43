#include "host/netconf/Schemas.h"

#include <libyang/libyang.h>

namespace vesk {
namespace host {
namespace netconf {

namespace {

// The last error the model library recorded for `context`, or a general line.
std::string lastError(const ly_ctx* context, const std::string& what) {
    const char* message = context != nullptr ? ly_errmsg(context) : nullptr;
    return "cannot load " + what + (message != nullptr ? std::string(": ") + message : "");
}

std::string capability(const lys_module* module) {
    std::string text = std::string(module->ns) + "?module=" + module->name;
    if (module->revision != nullptr) {
        text += std::string("&revision=") + module->revision;
    }
    return text;
}

}  // namespace

Schemas::~Schemas() {
    if (_context != nullptr) {
        ly_ctx_destroy(_context);
    }
}

bool Schemas::load(const std::string& modelDirectory, const std::string& protocolDirectory,
                   std::string* error) {
    if (ly_ctx_new(protocolDirectory.c_str(), LY_CTX_DISABLE_SEARCHDIR_CWD, &_context) !=
            LY_SUCCESS ||
        ly_ctx_set_searchdir(_context, modelDirectory.c_str()) != LY_SUCCESS) {
        *error = lastError(_context, "the NETCONF modules");
        return false;
    }
    // The operations this server carries: writes to running, rollback-on-error, validation
    // by test-option, XPath filters.
    const char* netconfFeatures[] = {"writable-running", "rollback-on-error", "validate", "xpath",
                                     nullptr};
    _netconf = ly_ctx_load_module(_context, "ietf-netconf", nullptr, netconfFeatures);
    const char* modules[] = {"ietf-netconf-monitoring", "notifications", "nc-notifications",
                             "vesk-notifications"};
    for (const char* name : modules) {
        const lys_module* module = ly_ctx_load_module(_context, name, nullptr, nullptr);
        if (module == nullptr) {
            *error = lastError(_context, name);
            return false;
        }
    }
    _notifications = ly_ctx_get_module_implemented(_context, "vesk-notifications");
    _station = ly_ctx_load_module(_context, "vesk-station", nullptr, nullptr);
    if (_netconf == nullptr || _station == nullptr) {
        *error = lastError(_context, _netconf == nullptr ? "ietf-netconf" : "vesk-station");
        return false;
    }
    return true;
}

std::vector<std::string> Schemas::stationCapabilities() const {
    std::vector<std::string> result{capability(_station)};
    for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(_station->parsed->imports); ++i) {
        result.push_back(capability(_station->parsed->imports[i].module));
    }
    return result;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

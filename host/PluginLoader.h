// One plug-in library: opened with dlopen, its two exported entries found by name, closed on
// unload. The library's handle is announced to the station so that it finds the plug-in's other
// exported entries.
#pragma once

#include <string>

#include "platform/orl/OrlMgmtSpi.h"

namespace vesk {
namespace host {

class PluginLoader {
  public:
    enum Status { kLoaded, kCannotOpen, kMissingSymbol };

    PluginLoader() = default;
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    // Opens `path` and finds "orlLCMinit" and "orlLCMterminate". On failure nothing stays open
    // and `error` says what is missing.
    Status open(const std::string& path, std::string* error);
    bool isOpen() const { return _handle != nullptr; }
    const std::string& path() const { return _path; }

    // Calls the plug-in's init with the portal accessor.
    OrlReturnT init(OrlMgmtSpiInterfacePortalAccessor* accessor);
    // Calls the plug-in's terminate, once; later calls do nothing.
    void terminate();
    bool terminated() const { return _terminated; }
    // Closes the library (without calling terminate). Safe when nothing is open.
    void close();

    // Another symbol of the open library, or null.
    void* symbol(const char* name) const;

  private:
    using InitFn = OrlReturnT (*)(OrlMgmtSpiInterfacePortalAccessor*, const char*);
    using TerminateFn = void (*)();

    void* _handle = nullptr;
    std::string _path;
    InitFn _init = nullptr;
    TerminateFn _terminate = nullptr;
    bool _terminated = false;
};

}  // namespace host
}  // namespace vesk

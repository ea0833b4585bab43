#include "host/PluginLoader.h"

#include <dlfcn.h>

#include "platform/Logger.h"
#include "station/messages/MessageBus.h"

namespace vesk {
namespace host {

PluginLoader::~PluginLoader() {
    close();
}

PluginLoader::Status PluginLoader::open(const std::string& path, std::string* error) {
    close();
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* why = dlerror();
        *error = "cannot load plug-in " + path + ": " + (why != nullptr ? why : "unknown reason");
        return kCannotOpen;
    }
    auto init = reinterpret_cast<InitFn>(dlsym(handle, "orlLCMinit"));
    auto terminate = reinterpret_cast<TerminateFn>(dlsym(handle, "orlLCMterminate"));
    if (init == nullptr || terminate == nullptr) {
        *error = "plug-in " + path + " does not export " +
                 (init == nullptr ? "orlLCMinit" : "orlLCMterminate");
        dlclose(handle);
        return kMissingSymbol;
    }
    _handle = handle;
    _path = path;
    _init = init;
    _terminate = terminate;
    _terminated = false;
    vesk::station::addAgentLibraryHandle(_handle);
    VESK_INFO("host: plug-in %s loaded", path.c_str());
    return kLoaded;
}

OrlReturnT PluginLoader::init(OrlMgmtSpiInterfacePortalAccessor* accessor) {
    return _init != nullptr ? _init(accessor, "") : OrlFailure;
}

void PluginLoader::terminate() {
    if (_terminate != nullptr && !_terminated) {
        _terminated = true;
        _terminate();
    }
}

void PluginLoader::close() {
    if (_handle == nullptr) {
        return;
    }
    vesk::station::removeAgentLibraryHandle(_handle);
    dlclose(_handle);
    VESK_INFO("host: plug-in %s unloaded", _path.c_str());
    _handle = nullptr;
    _init = nullptr;
    _terminate = nullptr;
}

void* PluginLoader::symbol(const char* name) const {
    return _handle != nullptr ? dlsym(_handle, name) : nullptr;
}

}  // namespace host
}  // namespace vesk

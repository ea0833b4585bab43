#include "host/ComponentRegistry.h"

#include <algorithm>
#include <cstring>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace {

bool sameText(const char* a, const std::string& b) {
    return a != nullptr && b == a;
}

// The provided record of `component` with this interface name and version, or null.
void* providedRecord(const OrlMgmtSpiComponent* component, const std::string& interfaceName,
                     const std::string& version) {
    if (component->interfaceArray == nullptr) {
        return nullptr;
    }
    for (OrlMgmtSpiInterface_1** it = component->interfaceArray; *it != nullptr; ++it) {
        if (sameText((*it)->interfaceName, interfaceName) &&
            sameText((*it)->interfaceVersion, version)) {
            return *it;
        }
    }
    return nullptr;
}

}  // namespace

OrlReturnT ComponentRegistry::add(OrlMgmtSpiComponent* component) {
    if (component == nullptr || component->componentName == nullptr) {
        VESK_ERROR("host: refused to register a component without a name");
        return OrlFailure;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    for (const Entry& entry : _entries) {
        if (entry.component == component) {
            return OrlOk;
        }
        if (std::strcmp(entry.component->componentName, component->componentName) == 0) {
            VESK_ERROR("host: component %s is already registered", component->componentName);
            return OrlFailure;
        }
    }
    _entries.push_back(Entry{component, false});
    VESK_INFO("host: component %s registered", component->componentName);
    return OrlOk;
}

OrlReturnT ComponentRegistry::remove(OrlMgmtSpiComponent* component) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = std::find_if(_entries.begin(), _entries.end(),
                           [component](const Entry& e) { return e.component == component; });
    if (it == _entries.end()) {
        return OrlNotExist;
    }
    _entries.erase(it);
    _startOrder.erase(std::remove(_startOrder.begin(), _startOrder.end(), component),
                      _startOrder.end());
    VESK_INFO("host: component %s unregistered", component->componentName);
    return OrlOk;
}

std::vector<std::string> ComponentRegistry::removeAll() {
    std::vector<std::string> removed = names();
    std::lock_guard<std::mutex> lock(_mutex);
    _entries.clear();
    _startOrder.clear();
    return removed;
}

void* ComponentRegistry::find(const std::string& componentName, const std::string& interfaceName,
                              const std::string& version) const {
    std::lock_guard<std::mutex> lock(_mutex);
    for (const Entry& entry : _entries) {
        if (sameText(entry.component->componentName, componentName)) {
            return providedRecord(entry.component, interfaceName, version);
        }
    }
    return nullptr;
}

std::vector<void*> ComponentRegistry::findAll(const std::string& interfaceName,
                                              const std::string& version) const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<void*> records;
    for (const Entry& entry : _entries) {
        if (void* record = providedRecord(entry.component, interfaceName, version)) {
            records.push_back(record);
        }
    }
    return records;
}

OrlMgmtSpiComponent* ComponentRegistry::nextToStart() {
    std::lock_guard<std::mutex> lock(_mutex);
    for (const Entry& entry : _entries) {
        if (!entry.started) {
            return entry.component;
        }
    }
    return nullptr;
}

void ComponentRegistry::markStarted(OrlMgmtSpiComponent* component) {
    std::lock_guard<std::mutex> lock(_mutex);
    for (Entry& entry : _entries) {
        if (entry.component == component) {
            entry.started = true;
            _startOrder.push_back(component);
        }
    }
}

OrlReturnT ComponentRegistry::startAll(OrlStateChangeReason reason, std::string* failed) {
    while (OrlMgmtSpiComponent* component = nextToStart()) {
        OrlReturnT result = OrlOk;
        if (component->start != nullptr) {
            VESK_INFO("host: starting component %s", component->componentName);
            result = component->start(reason);
        }
        if (result != OrlOk) {
            VESK_ERROR("host: component %s failed to start (%d)", component->componentName, result);
            if (failed != nullptr) {
                *failed = component->componentName;
            }
            return result;
        }
        markStarted(component);
    }
    return OrlOk;
}

void ComponentRegistry::stopAll(OrlStateChangeReason reason) {
    for (;;) {
        OrlMgmtSpiComponent* component = nullptr;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            if (_startOrder.empty()) {
                return;
            }
            component = _startOrder.back();
            _startOrder.pop_back();
            for (Entry& entry : _entries) {
                if (entry.component == component) {
                    entry.started = false;
                }
            }
        }
        VESK_INFO("host: stopping component %s", component->componentName);
        if (component->stop != nullptr) {
            OrlReturnT result = component->stop(reason);
            if (result != OrlOk) {
                VESK_WARNING("host: component %s stopped with %d", component->componentName,
                             result);
            }
        }
    }
}

std::vector<std::string> ComponentRegistry::names() const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<std::string> names;
    for (const Entry& entry : _entries) {
        names.push_back(entry.component->componentName);
    }
    return names;
}

std::vector<std::string> ComponentRegistry::started() const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<std::string> names;
    for (OrlMgmtSpiComponent* component : _startOrder) {
        names.push_back(component->componentName);
    }
    return names;
}

size_t ComponentRegistry::size() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _entries.size();
}

}  // namespace host
}  // namespace vesk

#include "host/Portal.h"

#include <atomic>
#include <stdexcept>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace {

std::atomic<Portal*> g_portal{nullptr};

const char kPortalName[] = "OrlMgmtSpiInterfacePortal";

Portal* live() {
    return g_portal.load();
}

OrlMgmtSpiInterfacePortal_1* c_getPortal(const char* version) {
    Portal* portal = live();
    if (portal == nullptr || version == nullptr || std::string(version) != "1") {
        return nullptr;
    }
    return portal->record();
}

OrlReturnT c_getInterface(const char* name, const char* interfaceName, const char* version,
                          void** out) {
    Portal* portal = live();
    return portal != nullptr ? portal->getInterface(name, interfaceName, version, out) : OrlFailure;
}

OrlReturnT c_getInterfaceArray(const char* interfaceName, const char* version, void*** out) {
    Portal* portal = live();
    return portal != nullptr ? portal->getInterfaceArray(interfaceName, version, out) : OrlFailure;
}

OrlReturnT c_registerComponent(OrlMgmtSpiComponent* component) {
    Portal* portal = live();
    return portal != nullptr ? portal->components().add(component) : OrlFailure;
}

OrlReturnT c_unregisterComponent(OrlMgmtSpiComponent* component) {
    Portal* portal = live();
    return portal != nullptr ? portal->components().remove(component) : OrlFailure;
}

InterfaceKey keyOf(const char* name, const char* interfaceName, const char* version) {
    return InterfaceKey(name, interfaceName, version);
}

}  // namespace

Portal::Portal() {
    Portal* expected = nullptr;
    if (!g_portal.compare_exchange_strong(expected, this)) {
        throw std::logic_error("only one host portal may live at a time");
    }
    _accessor.getPortal = c_getPortal;
    _record.header = OrlMgmtSpiInterface_1{kPortalName, kPortalName, "1"};
    _record.getInterface = c_getInterface;
    _record.getInterfaceArray = c_getInterfaceArray;
    _record.registerComponent = c_registerComponent;
    _record.unregisterComponent = c_unregisterComponent;
}

Portal::~Portal() {
    g_portal.store(nullptr);
}

OrlMgmtSpiInterfacePortalAccessor* Portal::accessor() {
    return &_accessor;
}

OrlMgmtSpiInterfacePortal_1* Portal::record() {
    return &_record;
}

void Portal::addService(OrlMgmtSpiInterface_1* record) {
    std::lock_guard<std::mutex> lock(_mutex);
    _services[keyOf(record->componentName, record->interfaceName, record->interfaceVersion)] =
        record;
}

void Portal::refuse(const std::string& service, const std::string& interfaceName,
                    const std::string& version, OrlReturnT code) {
    std::lock_guard<std::mutex> lock(_mutex);
    _refusals[InterfaceKey(service, interfaceName, version)] = code;
}

void Portal::clearRefusals() {
    std::lock_guard<std::mutex> lock(_mutex);
    _refusals.clear();
}

int Portal::fetchCount(const std::string& name, const std::string& interfaceName,
                       const std::string& version) const {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _fetches.find(InterfaceKey(name, interfaceName, version));
    return it == _fetches.end() ? 0 : it->second;
}

OrlReturnT Portal::getInterface(const char* name, const char* interfaceName, const char* version,
                                void** out) {
    if (name == nullptr || interfaceName == nullptr || version == nullptr || out == nullptr) {
        return OrlFailure;
    }
    InterfaceKey key = keyOf(name, interfaceName, version);
    {
        std::lock_guard<std::mutex> lock(_mutex);
        ++_fetches[key];
        auto refused = _refusals.find(key);
        if (refused != _refusals.end()) {
            VESK_INFO("host: refused fetch of {%s,%s,%s} with %d", name, interfaceName, version,
                      refused->second);
            return refused->second;
        }
        auto service = _services.find(key);
        if (service != _services.end()) {
            *out = service->second;
            return OrlOk;
        }
    }
    void* record = _components.find(name, interfaceName, version);
    if (record == nullptr) {
        VESK_WARNING("host: no interface {%s,%s,%s}", name, interfaceName, version);
        return OrlNotExist;
    }
    *out = record;
    return OrlOk;
}

OrlReturnT Portal::getInterfaceArray(const char* interfaceName, const char* version, void*** out) {
    if (interfaceName == nullptr || version == nullptr || out == nullptr) {
        return OrlFailure;
    }
    std::vector<void*> records = _components.findAll(interfaceName, version);
    bool empty = records.empty();
    records.push_back(nullptr);
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<void*>& kept = _arrays[std::make_pair(interfaceName, version)];
    kept.swap(records);
    *out = kept.data();
    return empty ? OrlNotExist : OrlOk;
}

}  // namespace host
}  // namespace vesk

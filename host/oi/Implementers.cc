#include "host/oi/Implementers.h"

#include "host/Host.h"
#include "host/ThreadContext.h"
#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace oi {

Implementers::~Implementers() {
    removeAll();
}

OrlOamSpiRegisterObjectImplementer_2* Implementers::registration() const {
    void* record = nullptr;
    if (_host.agentComponent().empty() ||
        _host.portal().getInterface(_host.agentComponent().c_str(),
                                    "OrlOamSpiRegisterObjectImplementer", "2", &record) != OrlOk) {
        return nullptr;
    }
    return static_cast<OrlOamSpiRegisterObjectImplementer_2*>(record);
}

OrlReturnT Implementers::add(Scope scope, const std::string& name, const Behaviour& behaviour,
                             int* id, std::string* error) {
    if (!ObjectImplementer::slotFree()) {
        *error =
            "no more than " + std::to_string(ObjectImplementer::kSlots) + " implementers at a time";
        return OrlFailure;
    }
    OrlOamSpiRegisterObjectImplementer_2* agent = registration();
    auto operation = agent == nullptr      ? nullptr
                     : scope == Scope::kDn ? agent->registerDn
                                           : agent->registerClass;
    if (operation == nullptr) {
        *error = "the agent takes no object implementers";
        return OrlNotExist;
    }
    auto oi = std::make_unique<ObjectImplementer>(scope, name, behaviour);
    if (_host.components().add(oi->component()) != OrlOk) {
        *error = "cannot add component " + std::string(oi->component()->componentName);
        return OrlFailure;
    }
    // One request of the calling thread: the operator messages start afresh.
    ThreadContext::beginRequest();
    OrlReturnT code = operation(oi->moInterface(), oi->txInterface(), name.c_str());
    if (code != OrlOk) {
        _host.components().remove(oi->component());
        *error = "the agent refused the registration of " + name;
        return code;
    }
    *id = oi->id();
    _implementers.push_back(std::move(oi));
    return OrlOk;
}

OrlReturnT Implementers::remove(int id, std::string* error) {
    for (auto it = _implementers.begin(); it != _implementers.end(); ++it) {
        ObjectImplementer& oi = **it;
        if (oi.id() != id) {
            continue;
        }
        OrlOamSpiRegisterObjectImplementer_2* agent = registration();
        auto operation = agent == nullptr           ? nullptr
                         : oi.scope() == Scope::kDn ? agent->unRegisterDn
                                                    : agent->unRegisterClass;
        ThreadContext::beginRequest();
        OrlReturnT code = operation == nullptr
                              ? OrlNotExist
                              : operation(oi.moInterface(), oi.txInterface(), oi.name().c_str());
        if (code != OrlOk) {
            *error = "the agent refused the unregistration of " + oi.name();
        }
        _host.components().remove(oi.component());
        _implementers.erase(it);
        return code;
    }
    *error = "no implementer " + std::to_string(id);
    return OrlNotExist;
}

void Implementers::removeAll() {
    while (!_implementers.empty()) {
        std::string ignored;
        remove(_implementers.back()->id(), &ignored);
    }
}

ObjectImplementer* Implementers::find(int id) const {
    for (const auto& oi : _implementers) {
        if (oi->id() == id) {
            return oi.get();
        }
    }
    return nullptr;
}

std::vector<ObjectImplementer*> Implementers::all() const {
    std::vector<ObjectImplementer*> list;
    for (const auto& oi : _implementers) {
        list.push_back(oi.get());
    }
    return list;
}

}  // namespace oi
}  // namespace host
}  // namespace vesk

// Outbound: the registry of components by destination and the send functions.
#include "station/messages/MessageBus.h"

#include <map>
#include <memory>
#include <mutex>

#include "platform/Logger.h"
#include "platform/Messaging.h"

namespace vesk {
namespace station {
namespace {

struct Component {
    std::recursive_mutex callMutex;  // serialises calls; lets a receiver send to itself
    MessageReceiver receiver;
    bool active = true;
};

struct Registry {
    std::mutex mutex;
    std::map<int, std::shared_ptr<Component>> components;
};

Registry& registry() {
    static Registry* r = new Registry();  // never destroyed: sends may come at exit
    return *r;
}

std::shared_ptr<Component> find(int destination) {
    std::lock_guard<std::mutex> lock(registry().mutex);
    auto it = registry().components.find(destination);
    return it == registry().components.end() ? nullptr : it->second;
}

}  // namespace

void registerComponent(int destination, MessageReceiver receiver) {
    auto component = std::make_shared<Component>();
    component->receiver = std::move(receiver);
    std::shared_ptr<Component> old;
    {
        std::lock_guard<std::mutex> lock(registry().mutex);
        old = registry().components[destination];
        registry().components[destination] = component;
    }
    if (old) {
        std::lock_guard<std::recursive_mutex> call(old->callMutex);
        old->active = false;
    }
}

void unregisterComponent(int destination) {
    std::shared_ptr<Component> old;
    {
        std::lock_guard<std::mutex> lock(registry().mutex);
        auto it = registry().components.find(destination);
        if (it == registry().components.end())
            return;
        old = it->second;
        registry().components.erase(it);
    }
    std::lock_guard<std::recursive_mutex> call(old->callMutex);
    old->active = false;
}

}  // namespace station
}  // namespace vesk

namespace VESK {
namespace Framework {
namespace Messaging {
namespace {

int deliver(int destination, Messages::SerializableMessage const& message, int flag) {
    std::shared_ptr<vesk::station::Component> component = vesk::station::find(destination);
    if (component) {
        std::vector<uint8_t> bytes = message.serialize();
        std::lock_guard<std::recursive_mutex> call(component->callMutex);
        if (component->active) {
            if (component->receiver(destination, bytes.data(), bytes.size(), flag))
                return 1;
            VESK_ERROR("Messaging: destination %d refused message %u", destination,
                       message.messageId);
            return 0;
        }
    }
    VESK_ERROR("Messaging: no component for destination %d, message %u not sent", destination,
               message.messageId);
    return 0;
}

}  // namespace

int sendVeskMessage(int destination, Messages::SerializableMessage const& message, int flag) {
    return deliver(destination, message, flag);
}

int sendVeskMessage(int destination, Messages::SerializableMessage const* message, int flag) {
    if (message == nullptr) {
        VESK_ERROR("Messaging: no message to send to destination %d", destination);
        return 0;
    }
    return deliver(destination, *message, flag);
}

int sendVeskMessage_v2(int destination, Messages::SerializableMessage const& message, int flag) {
    return deliver(destination, message, flag);
}

}  // namespace Messaging
}  // namespace Framework
}  // namespace VESK

// Inbound: answers from peers to the agent's machines and exported entries.
#include <dlfcn.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

#include "platform/AgentEntries.h"
#include "platform/EventWithMessage.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"

namespace vesk {
namespace station {
namespace {

using VESK::Framework::EventWithMessage;
using VESK::Framework::IEventAware;
using VESK::Messages::SerializableMessage;

struct Route {
    int eventId;
    IEventAware* machine;
};

struct Router {
    std::mutex mutex;  // held while enqueueing, so that unsubscribe waits for a delivery
    std::map<uint32_t, Route> routes;
    std::vector<void*> handles;
    // Shared while a direct answer runs in the agent's code or writes its memory; taken whole
    // before a handle goes, so that the library is not closed under such a call.
    std::shared_mutex inAgent;
};

Router& router() {
    static Router* r = new Router();
    return *r;
}

void* findAgentSymbol(const char* name) {
    std::vector<void*> handles;
    {
        std::lock_guard<std::mutex> lock(router().mutex);
        handles = router().handles;
    }
    for (void* handle : handles) {
        if (void* symbol = dlsym(handle, name))
            return symbol;
    }
    return dlsym(RTLD_DEFAULT, name);
}

bool routeToMachine(std::unique_ptr<SerializableMessage> message) {
    uint32_t id = message->messageId;
    std::lock_guard<std::mutex> lock(router().mutex);
    auto it = router().routes.find(id);
    if (it == router().routes.end()) {
        VESK_ERROR("InboundRouter: no machine takes message %u", id);
        return false;
    }
    EventWithMessage event(it->second.eventId, message.release());
    if (!it->second.machine->enqueueEvent(event, false)) {
        event.cleanup();
        VESK_ERROR("InboundRouter: message %u not delivered, the machine refused event %d", id,
                   it->second.eventId);
        return false;
    }
    return true;
}

}  // namespace

void subscribeInbound(uint32_t messageId, int eventId, IEventAware* machine) {
    std::lock_guard<std::mutex> lock(router().mutex);
    router().routes[messageId] = Route{eventId, machine};
}

void unsubscribeInbound(IEventAware* machine) {
    std::lock_guard<std::mutex> lock(router().mutex);
    for (auto it = router().routes.begin(); it != router().routes.end();) {
        it = it->second.machine == machine ? router().routes.erase(it) : std::next(it);
    }
}

void addAgentLibraryHandle(void* handle) {
    std::lock_guard<std::mutex> lock(router().mutex);
    router().handles.push_back(handle);
}

void removeAgentLibraryHandle(void* handle) {
    std::unique_lock<std::shared_mutex> calls(router().inAgent);
    std::lock_guard<std::mutex> lock(router().mutex);
    auto& h = router().handles;
    h.erase(std::remove(h.begin(), h.end(), handle), h.end());
}

bool deliverFrequencyValidationAnswer(bool valid) {
    std::shared_lock<std::shared_mutex> call(router().inAgent);
    using Entry = void (*)(int);
    auto entry = reinterpret_cast<Entry>(findAgentSymbol("vesk_cm_frequencyValidationResponse"));
    if (entry == nullptr) {
        VESK_ERROR("InboundRouter: the agent exports no vesk_cm_frequencyValidationResponse");
        return false;
    }
    entry(valid ? 1 : 0);
    return true;
}

bool deliverBoamSetAttributeStatus(int status) {
    std::shared_lock<std::shared_mutex> call(router().inAgent);
    auto mailbox = static_cast<int*>(findAgentSymbol("boamSetAttributeReponseStatus"));
    if (mailbox == nullptr) {
        VESK_ERROR("InboundRouter: the agent exports no boamSetAttributeReponseStatus");
        return false;
    }
    vesk::boamStatusStore(mailbox, status);
    return true;
}

bool deliverInbound(const uint8_t* data, size_t size) {
    using namespace VESK::Messages;
    std::string error;
    std::unique_ptr<SerializableMessage> message = decodeMessage(data, size, error);
    if (!message) {
        VESK_ERROR("InboundRouter: message of %zu bytes not decoded: %s", size, error.c_str());
        return false;
    }
    switch (message->messageId) {
        case VESK_BrMOperationResp::MESSAGE_ID:
        case VESK_InitialiseSWResp::MESSAGE_ID:
        case VESK_SwOssUpdateResp::MESSAGE_ID:
            return routeToMachine(std::move(message));
        case VESK_ValidateFrequencyResp::MESSAGE_ID:
            return deliverFrequencyValidationAnswer(
                static_cast<VESK_ValidateFrequencyResp&>(*message).valid);
        case VESK_BoamSetAttributeResp::MESSAGE_ID:
            return deliverBoamSetAttributeStatus(
                static_cast<VESK_BoamSetAttributeResp&>(*message).status);
        default:
            VESK_ERROR("InboundRouter: message %u is no answer", message->messageId);
            return false;
    }
}

bool deliverInbound(const std::vector<uint8_t>& bytes) {
    return deliverInbound(bytes.data(), bytes.size());
}

}  // namespace station
}  // namespace vesk

namespace VESK {
namespace Framework {
namespace Messaging {

void subscribeInbound(uint32_t messageId, int eventId, IEventAware* machine) {
    vesk::station::subscribeInbound(messageId, eventId, machine);
}

void unsubscribeInbound(IEventAware* machine) {
    vesk::station::unsubscribeInbound(machine);
}

}  // namespace Messaging
}  // namespace Framework
}  // namespace VESK

#include "host/events/EventRouter.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace events {
namespace {

EventRouter* g_router = nullptr;

OrlReturnT cNotify(uint32_t producer, unsigned long consumer, const char* type,
                   OrlNameValuePair** filter, void* notification) {
    return g_router->notify(producer, consumer, type, filter, notification);
}
OrlReturnT cRegisterConsumer(OrlOamSpiEventDeliver_1 deliver, unsigned long* handle) {
    return g_router->registerConsumer(deliver, handle);
}
OrlReturnT cUnregisterConsumer(unsigned long consumer) {
    return g_router->removeConsumer(consumer);
}
OrlReturnT cSubscribe(unsigned long consumer, const char* type, OrlNameValuePair** filter) {
    return g_router->subscribeArray(consumer, type, filter);
}
OrlReturnT cUnsubscribe(unsigned long consumer, const char* type, OrlNameValuePair** filter) {
    return g_router->unsubscribeArray(consumer, type, filter);
}
OrlReturnT cRegisterProducer(OrlOamSpiEventProducer_1* producer, uint32_t* handle) {
    return g_router->registerProducer(producer, handle);
}
OrlReturnT cAddProducerEvent(uint32_t producer, const char* type) {
    return g_router->addProducerEvent(producer, type);
}
OrlReturnT cRemoveProducerEvent(uint32_t producer, const char* type) {
    return g_router->removeProducerEvent(producer, type);
}
OrlReturnT cUnregisterProducer(uint32_t handle, OrlOamSpiEventProducer_1* producer) {
    return g_router->unregisterProducer(handle, producer);
}

}  // namespace

EventRouter::EventRouter()
    : _record{{"OrlOamSpiEventService", "OrlOamSpiEventRouter", "1"},
              cNotify,
              cRegisterConsumer,
              cUnregisterConsumer,
              cSubscribe,
              cUnsubscribe,
              cRegisterProducer,
              cAddProducerEvent,
              cRemoveProducerEvent,
              cUnregisterProducer} {
    g_router = this;
}

EventRouter::~EventRouter() {
    std::vector<unsigned long> handles;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        for (const auto& entry : _consumers) {
            handles.push_back(entry.first);
        }
    }
    for (unsigned long handle : handles) {
        removeConsumer(handle);
    }
    if (g_router == this) {
        g_router = nullptr;
    }
}

void EventRouter::refuseRegistration(OrlReturnT code) {
    std::lock_guard<std::mutex> lock(_mutex);
    _registrationRefusal = code;
}

OrlReturnT EventRouter::refuseDeliveries(unsigned long consumer, OrlReturnT code) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto found = _consumers.find(consumer);
    if (found == _consumers.end()) {
        return OrlNotExist;
    }
    found->second.refusal = code;
    return OrlOk;
}

unsigned long EventRouter::addConsumer(const std::string& name, Deliver deliver) {
    std::lock_guard<std::mutex> lock(_mutex);
    unsigned long handle = _nextConsumer++;
    _consumers[handle].queue.reset(new ConsumerQueue(handle, name, std::move(deliver)));
    return handle;
}

std::unique_ptr<EventRouter::Subscription> EventRouter::makeSubscription(
    unsigned long consumer, const std::string& eventType,
    const std::vector<std::string>& patterns) {
    std::unique_ptr<Subscription> subscription(new Subscription);
    subscription->consumer = consumer;
    subscription->eventType = eventType;
    subscription->patterns = patterns;
    subscription->callerFilter = nullptr;
    for (const std::string& pattern : subscription->patterns) {
        subscription->pairs.push_back({"dn", pattern.c_str()});
    }
    for (OrlNameValuePair& pair : subscription->pairs) {
        subscription->array.push_back(&pair);
    }
    // No pattern: an array whose first entry is the end, which matches everything.
    subscription->array.push_back(nullptr);
    return subscription;
}

OrlReturnT EventRouter::subscribe(unsigned long consumer, const std::string& eventType,
                                  const std::vector<std::string>& patterns) {
    std::unique_ptr<Subscription> subscription = makeSubscription(consumer, eventType, patterns);
    std::vector<OrlOamSpiEventProducer_1*> producers;
    Subscription* kept = subscription.get();
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_consumers.count(consumer) == 0) {
            return OrlNotExist;
        }
        producers = producersOf(eventType);
        _subscriptions.push_back(std::move(subscription));
    }
    addFilters(*kept, producers);
    return OrlOk;
}

OrlReturnT EventRouter::removeConsumer(unsigned long consumer) {
    std::shared_ptr<ConsumerQueue> queue;
    std::vector<std::unique_ptr<Subscription>> gone;
    std::vector<std::vector<OrlOamSpiEventProducer_1*>> producers;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto found = _consumers.find(consumer);
        if (found == _consumers.end()) {
            return OrlNotExist;
        }
        queue = std::move(found->second.queue);
        _consumers.erase(found);
        for (auto it = _subscriptions.begin(); it != _subscriptions.end();) {
            if ((*it)->consumer == consumer) {
                producers.push_back(producersOf((*it)->eventType));
                gone.push_back(std::move(*it));
                it = _subscriptions.erase(it);
            } else {
                ++it;
            }
        }
    }
    // From here notify no longer finds the consumer; once its filters are gone no producer
    // holds a pointer into its arrays.
    for (size_t i = 0; i < gone.size(); ++i) {
        removeFilters(*gone[i], producers[i]);
    }
    queue->stop();
    return OrlOk;
}

std::vector<OrlOamSpiEventProducer_1*> EventRouter::producersOf(const std::string& type) const {
    std::vector<OrlOamSpiEventProducer_1*> records;
    for (const auto& entry : _producers) {
        if (entry.second.eventTypes.count(type) != 0) {
            records.push_back(entry.second.record);
        }
    }
    return records;
}

void EventRouter::addFilters(const Subscription& subscription,
                             const std::vector<OrlOamSpiEventProducer_1*>& producers) {
    auto* array = const_cast<OrlNameValuePair**>(subscription.array.data());
    for (OrlOamSpiEventProducer_1* producer : producers) {
        OrlReturnT rc =
            producer->addFilter(subscription.consumer, subscription.eventType.c_str(), array);
        if (rc != OrlOk) {
            VESK_WARNING("host: a producer refused the filter of consumer %lu (%d)",
                         subscription.consumer, rc);
        }
    }
}

void EventRouter::removeFilters(const Subscription& subscription,
                                const std::vector<OrlOamSpiEventProducer_1*>& producers) {
    auto* array = const_cast<OrlNameValuePair**>(subscription.array.data());
    for (OrlOamSpiEventProducer_1* producer : producers) {
        OrlReturnT rc =
            producer->removeFilter(subscription.consumer, subscription.eventType.c_str(), array);
        if (rc != OrlOk) {
            VESK_WARNING("host: a producer did not know the filter of consumer %lu (%d)",
                         subscription.consumer, rc);
        }
    }
}

std::vector<ConsumerInfo> EventRouter::consumers() const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<ConsumerInfo> result;
    for (const auto& entry : _consumers) {
        ConsumerInfo info{entry.first,
                          entry.second.queue->name(),
                          {},
                          entry.second.queue->queued(),
                          entry.second.queue->delivered(),
                          entry.second.refusal};
        for (const auto& subscription : _subscriptions) {
            if (subscription->consumer == entry.first) {
                info.filters.push_back(subscription->patterns);
            }
        }
        result.push_back(std::move(info));
    }
    return result;
}

size_t EventRouter::producerCount() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _producers.size();
}

bool EventRouter::waitIdle(unsigned ms) const {
    auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        bool idle = true;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            for (const auto& entry : _consumers) {
                idle = idle && entry.second.queue->idle();
            }
        }
        if (idle) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void EventRouter::detachProducers() {
    std::vector<std::shared_ptr<ConsumerQueue>> queues;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _producers.clear();
        for (auto& entry : _consumers) {
            queues.push_back(entry.second.queue);
        }
    }
    for (const std::shared_ptr<ConsumerQueue>& queue : queues) {
        for (const Held& held : queue->drain()) {
            release(held);
        }
    }
}

}  // namespace events
}  // namespace host
}  // namespace vesk

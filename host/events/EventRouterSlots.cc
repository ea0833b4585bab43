// The slots of the router's record: what producers call, and the consumer side for consumers
// that reach the router through the record.
#include "host/events/EventRouter.h"
#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace events {

OrlReturnT EventRouter::notify(uint32_t producerHandle, unsigned long consumer,
                               const char* eventType, OrlNameValuePair** /*filter*/,
                               void* notification) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto producer = _producers.find(producerHandle);
    auto found = _consumers.find(consumer);
    if (producer == _producers.end() || found == _consumers.end() || notification == nullptr ||
        eventType == nullptr) {
        return OrlNotExist;
    }
    if (found->second.refusal != OrlOk) {
        return found->second.refusal;
    }
    // Only the types the producer announced; their names are kept for the queued notifications.
    auto type = _eventTypeNames.find(eventType);
    if (producer->second.eventTypes.count(eventType) == 0 || type == _eventTypeNames.end()) {
        return OrlNotExist;
    }
    Held held{producer->second.record, producerHandle, type->c_str(), notification};
    return found->second.queue->push(std::move(held)) ? OrlOk : OrlNotExist;
}

OrlReturnT EventRouter::registerProducer(OrlOamSpiEventProducer_1* producer, uint32_t* handle) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_registrationRefusal != OrlOk) {
        VESK_WARNING("host: producer registration refused (%d)", _registrationRefusal);
        return _registrationRefusal;
    }
    if (producer == nullptr || handle == nullptr || producer->addFilter == nullptr ||
        producer->removeFilter == nullptr || producer->doneWithValue == nullptr) {
        VESK_ERROR("host: a producer record without its operations cannot register");
        return OrlFailure;
    }
    *handle = _nextProducer++;
    _producers[*handle] = Producer{producer, {}};
    VESK_INFO("host: producer %u registered", *handle);
    return OrlOk;
}

OrlReturnT EventRouter::addProducerEvent(uint32_t producerHandle, const char* eventType) {
    std::vector<Subscription*> waiting;
    OrlOamSpiEventProducer_1* record = nullptr;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto producer = _producers.find(producerHandle);
        if (producer == _producers.end() || eventType == nullptr) {
            return OrlNotExist;
        }
        _eventTypeNames.insert(eventType);
        if (!producer->second.eventTypes.insert(eventType).second) {
            return OrlOk;
        }
        record = producer->second.record;
        for (const auto& subscription : _subscriptions) {
            if (subscription->eventType == eventType) {
                waiting.push_back(subscription.get());
            }
        }
    }
    // Consumers that subscribed before the producer came get its notifications too.
    for (Subscription* subscription : waiting) {
        addFilters(*subscription, {record});
    }
    return OrlOk;
}

OrlReturnT EventRouter::removeProducerEvent(uint32_t producerHandle, const char* eventType) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto producer = _producers.find(producerHandle);
    if (producer == _producers.end() || eventType == nullptr ||
        producer->second.eventTypes.erase(eventType) == 0) {
        return OrlNotExist;
    }
    return OrlOk;
}

OrlReturnT EventRouter::unregisterProducer(uint32_t producerHandle,
                                           OrlOamSpiEventProducer_1* producer) {
    std::vector<std::shared_ptr<ConsumerQueue>> queues;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto found = _producers.find(producerHandle);
        if (found == _producers.end() || found->second.record != producer) {
            return OrlNotExist;
        }
        _producers.erase(found);
        for (auto& entry : _consumers) {
            queues.push_back(entry.second.queue);
        }
    }
    // What its consumers still queue goes back to it now. A delivery in progress is given back
    // by its consumer's thread, which is why the host detaches producers before unloading.
    for (const std::shared_ptr<ConsumerQueue>& queue : queues) {
        for (const Held& held : queue->take(producerHandle)) {
            release(held);
        }
    }
    VESK_INFO("host: producer %u unregistered", producerHandle);
    return OrlOk;
}

OrlReturnT EventRouter::registerConsumer(OrlOamSpiEventDeliver_1 deliver, unsigned long* handle) {
    if (deliver == nullptr || handle == nullptr) {
        return OrlFailure;
    }
    *handle = addConsumer("consumer", [deliver](unsigned long consumer, const char* eventType,
                                                const void* notification) {
        deliver(consumer, eventType, const_cast<void*>(notification));
    });
    return OrlOk;
}

OrlReturnT EventRouter::subscribeArray(unsigned long consumer, const char* eventType,
                                       OrlNameValuePair** filter) {
    if (eventType == nullptr) {
        return OrlFailure;
    }
    std::vector<std::string> patterns;
    for (OrlNameValuePair** pair = filter; pair != nullptr && *pair != nullptr; ++pair) {
        if ((*pair)->value == nullptr) {
            break;  // a null value ends what the producer reads
        }
        patterns.push_back((*pair)->value);
    }
    std::unique_ptr<Subscription> subscription = makeSubscription(consumer, eventType, patterns);
    subscription->callerFilter = filter;
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

OrlReturnT EventRouter::unsubscribeArray(unsigned long consumer, const char* eventType,
                                         OrlNameValuePair** filter) {
    if (eventType == nullptr) {
        return OrlFailure;
    }
    std::unique_ptr<Subscription> gone;
    std::vector<OrlOamSpiEventProducer_1*> producers;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        producers = producersOf(eventType);
        for (auto it = _subscriptions.begin(); it != _subscriptions.end(); ++it) {
            if ((*it)->consumer == consumer && (*it)->eventType == eventType &&
                (*it)->callerFilter == filter) {
                gone = std::move(*it);
                _subscriptions.erase(it);
                break;
            }
        }
    }
    if (gone != nullptr) {
        removeFilters(*gone, producers);
        return OrlOk;
    }
    // An array this router never took: the producers are asked with it as it is, and their
    // answer is the answer.
    OrlReturnT answer = OrlNotExist;
    for (OrlOamSpiEventProducer_1* producer : producers) {
        answer = producer->removeFilter(consumer, eventType, filter);
    }
    return answer;
}

}  // namespace events
}  // namespace host
}  // namespace vesk

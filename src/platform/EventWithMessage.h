// An event that carries a received message.
#pragma once

#include <cstdint>

#include "platform/Event.h"

namespace VESK {
namespace Messages {
class SerializableMessage;
}

namespace Framework {

// The inbound router builds one of these for each answer that it delivers, with the decoded
// message allocated by `new`. Ownership moves with the event: the copy on the machine's queue
// owns the message, and the handler that processes it (result 1) reads the fields and deletes
// the message. An event that is not handled (result 0), or is dropped, is released by cleanup(),
// which deletes the message. A machine's nested EventWithParams_<name> is an alias of this
// class; the router guarantees that `message` has the class of the event's answer.
class EventWithMessage : public Event {
  public:
    EventWithMessage(int32_t aEventId, Messages::SerializableMessage* aMessage)
        : Event(aEventId), message(aMessage) {}
    // Deletes the message and forgets it.
    void cleanup() override;
    // Copies the pointer, not the message: one owner at a time.
    Event* copyEvent() const override { return new EventWithMessage(eventId, message); }

    template <class M>
    M* messageAs() const {
        return dynamic_cast<M*>(message);
    }

    Messages::SerializableMessage* message;
};

}  // namespace Framework
}  // namespace VESK

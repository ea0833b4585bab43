// The send functions of the station's message bus, and the subscription of machines to answers.
#pragma once

#include <cstdint>

#include "platform/SerializableMessage.h"

namespace VESK {
namespace Framework {
class IEventAware;

namespace Messaging {

// Serialises `message` and hands the bytes to the component registered for `destination`
// (2, 3, 6, 7, 8, 9) before returning; the caller keeps the message. Non-zero when the message
// was handed over; 0, with an error line, when no component is registered there or it refused.
// Nothing is retried. `flag` is passed on to the component.
int sendVeskMessage(int destination, Messages::SerializableMessage const& message, int flag = 0);
int sendVeskMessage(int destination, Messages::SerializableMessage const* message, int flag = 0);
// The same; used for fault notifications, with flag 1.
int sendVeskMessage_v2(int destination, Messages::SerializableMessage const& message, int flag);

// Answers whose message identity is `messageId` are enqueued on `machine` as an
// EventWithMessage with `eventId` (1014, 1015 or 1016). One machine per identity; a later
// subscription replaces an earlier one. The machine must unsubscribe before it is destroyed.
void subscribeInbound(uint32_t messageId, int eventId, IEventAware* machine);
// Removes every subscription of `machine`.
void unsubscribeInbound(IEventAware* machine);

}  // namespace Messaging
}  // namespace Framework
}  // namespace VESK

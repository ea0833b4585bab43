// The station's message bus: which component receives the messages of each destination number,
// and the delivery of peers' answers to the agent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/IEventAware.h"

namespace vesk {
namespace station {

// Receives the bytes of one message (docs/messages.md) on the sender's thread, before the send
// returns. `flag` is the send's third argument. Return false to refuse the message.
using MessageReceiver =
    std::function<bool(int destination, const uint8_t* data, size_t size, int flag)>;

// Makes `receiver` the component of `destination`, replacing any earlier one. Calls to one
// destination's receiver are serialised; a receiver may send to other destinations.
void registerComponent(int destination, MessageReceiver receiver);
// Removes the component of `destination` and waits until no call to it is in progress, so that
// what the receiver uses may be destroyed afterwards. Not from within that receiver.
void unregisterComponent(int destination);

// Delivers an answer from a peer (bytes of one message) to the agent. The three answers with
// events go, as an EventWithMessage carrying the decoded message, on the queue of the machine
// subscribed for their identity; VESK_ValidateFrequencyResp calls the agent's
// vesk_cm_frequencyValidationResponse; VESK_BoamSetAttributeResp writes the agent's
// boamSetAttributeReponseStatus. True if delivered; false, with an error line, for bytes that do
// not decode, a message that is no answer, or an answer that nobody takes.
bool deliverInbound(const uint8_t* data, size_t size);
bool deliverInbound(const std::vector<uint8_t>& bytes);

// The same subscription as VESK::Framework::Messaging::subscribeInbound.
void subscribeInbound(uint32_t messageId, int eventId, VESK::Framework::IEventAware* machine);
void unsubscribeInbound(VESK::Framework::IEventAware* machine);

// The answers that are no events, given directly. False, with an error line, when the agent's
// symbol is not found.
bool deliverFrequencyValidationAnswer(bool valid);
bool deliverBoamSetAttributeStatus(int status);

// Handles (from dlopen) searched, before the global scope, for the agent's exported symbols.
// The embedding program adds the agent's handle after loading it and removes it before closing;
// the removal waits for a direct answer still running in the agent.
void addAgentLibraryHandle(void* handle);
void removeAgentLibraryHandle(void* handle);

}  // namespace station
}  // namespace vesk

// Decoding of the message byte form; the encoding is SerializableMessage::serialize.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/BoamMsg.h"
#include "platform/SerializableMessage.h"

namespace VESK {
namespace Messages {

// Bytes of the header: identity (4), flag (1), length of the fields (4).
constexpr size_t kMessageHeaderSize = 9;

// A default-built message of identity `messageId`; null if the identity is unknown.
std::unique_ptr<SerializableMessage> createMessage(uint32_t messageId);
// A default-built BoamMsg of `msgType`; null if unknown.
std::unique_ptr<BoamMsg> createBoamMsg(uint16_t msgType);

// Decodes one whole message. Null, with the reason in `error`, if the bytes are truncated,
// carry an unknown identity, a field that does not decode, or bytes beyond the fields.
// Never reads outside [data, data + size).
std::unique_ptr<SerializableMessage> decodeMessage(const uint8_t* data, size_t size,
                                                   std::string& error);

}  // namespace Messages
}  // namespace VESK

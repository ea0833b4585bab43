// The base of every message between the station's components.
#pragma once

#include <cstdint>
#include <vector>

namespace VESK {
namespace Messages {

class ByteWriter;
class ByteReader;

// A message is built by the sender, handed to a send function, which serialises it before it
// returns, and destroyed by the sender. The byte form is in docs/messages.md.
class SerializableMessage {
  public:
    explicit SerializableMessage(uint32_t aMessageId) : flag(false), messageId(aMessageId) {}
    virtual ~SerializableMessage() {}

    // Header and fields.
    std::vector<uint8_t> serialize() const;
    // The fields behind the header, in order.
    virtual void writeFields(ByteWriter& out) const = 0;
    // Reads the fields in order; false if the bytes do not hold them.
    virtual bool readFields(ByteReader& in) = 0;
    uint32_t getMessageId() const { return messageId; }

    bool flag;  // false at sending
    uint32_t messageId;
};

}  // namespace Messages
}  // namespace VESK

// Declares the two field operations of a message class.
#define VESK_MESSAGE_FIELDS                                           \
    void writeFields(VESK::Messages::ByteWriter& out) const override; \
    bool readFields(VESK::Messages::ByteReader& in) override

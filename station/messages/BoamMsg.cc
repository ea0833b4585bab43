#include "platform/BoamMsg.h"

#include <cstring>

#include "station/messages/ByteCodec.h"

namespace VESK {
namespace Messages {

int BoamMsg::serialize(char* buffer, int size) const {
    int total = getMsgSize();
    if (buffer == nullptr || size < total)
        return -1;
    putU32(buffer, static_cast<uint32_t>(total));
    putU16(buffer + 4, msgType);
    putU16(buffer + 6, 0);
    putU32(buffer + 8, transactionId);
    writeBody(buffer + HEADER_SIZE);
    return total;
}

int BoamMsg::deserialize(char* buffer) {
    if (buffer == nullptr)
        return -1;
    if (getU32(buffer) != static_cast<uint32_t>(getMsgSize()) || getU16(buffer + 4) != msgType) {
        return -1;
    }
    transactionId = getU32(buffer + 8);
    return readBody(buffer + HEADER_SIZE) ? getMsgSize() : -1;
}

void BoamMsg_objectOperation::writeBody(char* p) const {
    putU16(p, desObClass);
    putU16(p + 2, desObInstance);
    putU16(p + 4, operationCount);
    putU16(p + 6, reserved);
}

bool BoamMsg_objectOperation::readBody(const char* p) {
    desObClass = getU16(p);
    desObInstance = getU16(p + 2);
    operationCount = getU16(p + 4);
    reserved = getU16(p + 6);
    return true;
}

void ConfMsg_setAttributeReq::writeBody(char* p) const {
    putU16(p, desObClass);
    putU16(p + 2, desObInstance);
    putU16(p + 4, operationCount);
    putU16(p + 6, reserved);
    putU16(p + 8, numberOfAttributes);
    std::memset(p + 10, 0, 2);
    char* slot = p + 12;
    for (const AttributeSlot& a : attributes) {
        putU16(slot, a.attributeId);
        putU16(slot + 2, a.length);
        std::memcpy(slot + 4, a.data, DATA_SIZE);
        slot += SLOT_SIZE;
    }
}

bool ConfMsg_setAttributeReq::readBody(const char* p) {
    desObClass = getU16(p);
    desObInstance = getU16(p + 2);
    operationCount = getU16(p + 4);
    reserved = getU16(p + 6);
    numberOfAttributes = getU16(p + 8);
    const char* slot = p + 12;
    for (AttributeSlot& a : attributes) {
        a.attributeId = getU16(slot);
        a.length = getU16(slot + 2);
        std::memcpy(a.data, slot + 4, DATA_SIZE);
        slot += SLOT_SIZE;
        if (a.length > DATA_SIZE)
            return false;
    }
    return numberOfAttributes <= SLOT_COUNT;
}

}  // namespace Messages
}  // namespace VESK

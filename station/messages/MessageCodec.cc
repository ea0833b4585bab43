#include "station/messages/MessageCodec.h"

#include "platform/VeskMessages.h"
#include "station/messages/ByteCodec.h"

namespace VESK {
namespace Messages {

std::vector<uint8_t> SerializableMessage::serialize() const {
    std::vector<uint8_t> bytes;
    bytes.reserve(64);
    ByteWriter out(bytes);
    out.u32(messageId);
    out.boolean(flag);
    out.u32(0);  // length of the fields, patched below
    writeFields(out);
    out.patchU32(5, static_cast<uint32_t>(bytes.size() - kMessageHeaderSize));
    return bytes;
}

VESK_BoamMsgContainer::VESK_BoamMsgContainer(BoamMsg* message)
    : SerializableMessage(MESSAGE_ID), _message(message), _owned(false) {}

VESK_BoamMsgContainer::~VESK_BoamMsgContainer() {
    if (_owned)
        delete _message;
}

void VESK_BoamMsgContainer::writeFields(ByteWriter& out) const {
    int size = _message != nullptr ? _message->getMsgSize() : 0;
    size_t at = out.size();
    out.u32(0);  // length of the record, patched below
    if (size <= 0)
        return;
    int written = _message->serialize(out.append(size), size);
    out.patchU32(at, static_cast<uint32_t>(written < 0 ? 0 : written));
}

bool VESK_BoamMsgContainer::readFields(ByteReader& in) {
    uint32_t length = 0;
    const uint8_t* record = nullptr;
    if (!in.u32(length) || !in.view(record, length))
        return false;
    if (length < static_cast<uint32_t>(BoamMsg::HEADER_SIZE))
        return false;
    const char* chars = reinterpret_cast<const char*>(record);
    std::unique_ptr<BoamMsg> message = createBoamMsg(getU16(chars + 4));
    if (!message || static_cast<uint32_t>(message->getMsgSize()) != length)
        return false;
    // deserialize only reads its buffer.
    if (message->deserialize(const_cast<char*>(chars)) < 0)
        return false;
    if (_owned)
        delete _message;
    _message = message.release();
    _owned = true;
    return true;
}

std::unique_ptr<BoamMsg> createBoamMsg(uint16_t msgType) {
    switch (msgType) {
        case ConfMsg_setAttributeReq::MSG_TYPE:
            return std::make_unique<ConfMsg_setAttributeReq>();
        case BoamMsg_commitAttributeReq::MSG_TYPE:
            return std::make_unique<BoamMsg_commitAttributeReq>();
        case BoamMsg_cancelAttributeReq::MSG_TYPE:
            return std::make_unique<BoamMsg_cancelAttributeReq>();
        default:
            return nullptr;
    }
}

namespace {
template <class M>
std::unique_ptr<SerializableMessage> make() {
    return std::make_unique<M>();
}
}  // namespace

std::unique_ptr<SerializableMessage> createMessage(uint32_t messageId) {
    switch (messageId) {
        case VESK_BrMOperationReq::MESSAGE_ID:
            return make<VESK_BrMOperationReq>();
        case VESK_InitialiseSWReq::MESSAGE_ID:
            return make<VESK_InitialiseSWReq>();
        case VESK_SwmCmd::MESSAGE_ID:
            return make<VESK_SwmCmd>();
        case VESK_ResetRBS::MESSAGE_ID:
            return make<VESK_ResetRBS>();
        case VESK_ValidateFrequencyReq::MESSAGE_ID:
            return make<VESK_ValidateFrequencyReq>();
        case VESK_FaultNotification::MESSAGE_ID:
            return make<VESK_FaultNotification>();
        case VESK_WriteAutointegrationLog::MESSAGE_ID:
            return make<VESK_WriteAutointegrationLog>();
        case VESK_BoamMsgContainer::MESSAGE_ID:
            return make<VESK_BoamMsgContainer>();
        case VESK_BrMOperationResp::MESSAGE_ID:
            return make<VESK_BrMOperationResp>();
        case VESK_InitialiseSWResp::MESSAGE_ID:
            return make<VESK_InitialiseSWResp>();
        case VESK_SwOssUpdateResp::MESSAGE_ID:
            return make<VESK_SwOssUpdateResp>();
        case VESK_ValidateFrequencyResp::MESSAGE_ID:
            return make<VESK_ValidateFrequencyResp>();
        case VESK_BoamSetAttributeResp::MESSAGE_ID:
            return make<VESK_BoamSetAttributeResp>();
        default:
            return nullptr;
    }
}

std::unique_ptr<SerializableMessage> decodeMessage(const uint8_t* data, size_t size,
                                                   std::string& error) {
    ByteReader header(data, size);
    uint32_t id = 0, length = 0;
    bool flag = false;
    if (data == nullptr || !header.u32(id) || !header.boolean(flag) || !header.u32(length)) {
        error = "truncated or malformed header";
        return nullptr;
    }
    if (length != header.remaining()) {
        error = "field length " + std::to_string(length) + " does not match the " +
                std::to_string(header.remaining()) + " bytes that follow";
        return nullptr;
    }
    std::unique_ptr<SerializableMessage> message = createMessage(id);
    if (!message) {
        error = "unknown message identity " + std::to_string(id);
        return nullptr;
    }
    ByteReader fields(data + kMessageHeaderSize, length);
    if (!message->readFields(fields) || !fields.atEnd()) {
        error = "fields of message " + std::to_string(id) + " do not decode";
        return nullptr;
    }
    message->flag = flag;
    return message;
}

}  // namespace Messages
}  // namespace VESK

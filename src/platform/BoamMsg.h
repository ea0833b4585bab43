// Messages for the baseband OAM. They travel inside VESK_BoamMsgContainer as fixed records whose
// layout is in docs/messages.md.
#pragma once

#include <cstdint>

namespace VESK {
namespace Messages {

class BoamMsg {
  public:
    // Size of the record header: length (4), msgType (2), zero (2), transactionId (4).
    static constexpr int HEADER_SIZE = 12;

    explicit BoamMsg(unsigned int aMsgType) : msgType(static_cast<uint16_t>(aMsgType)) {}
    virtual ~BoamMsg() {}
    // Writes the record into `buffer`; the number of bytes written, or -1 if `size` is smaller
    // than getMsgSize().
    virtual int serialize(char* buffer, int size) const;
    // Reads a record of getMsgSize() bytes; the number of bytes read, or -1 if its header does
    // not match this message (length or msgType) or its body is impossible (a slot longer than
    // its data). The caller checks that the bytes exist.
    virtual int deserialize(char* buffer);
    virtual int getMsgSize() const { return HEADER_SIZE; }

    uint16_t msgType;
    uint32_t transactionId = 0;

  protected:
    // The part behind the header.
    virtual void writeBody(char* /*buffer*/) const {}
    // False if the body holds values that the record cannot have.
    virtual bool readBody(const char* /*buffer*/) { return true; }
};

// The four fields of a commit or cancel.
class BoamMsg_objectOperation : public BoamMsg {
  public:
    static constexpr int BODY_SIZE = 8;
    explicit BoamMsg_objectOperation(unsigned int aMsgType) : BoamMsg(aMsgType) {}
    int getMsgSize() const override { return HEADER_SIZE + BODY_SIZE; }

    uint16_t desObClass = 0;
    uint16_t desObInstance = 0;
    uint16_t operationCount = 1;
    uint16_t reserved = 0;

  protected:
    void writeBody(char* buffer) const override;
    bool readBody(const char* buffer) override;
};

class BoamMsg_commitAttributeReq : public BoamMsg_objectOperation {
  public:
    static constexpr unsigned MSG_TYPE = 4099;
    BoamMsg_commitAttributeReq() : BoamMsg_objectOperation(MSG_TYPE) {}
};

class BoamMsg_cancelAttributeReq : public BoamMsg_objectOperation {
  public:
    static constexpr unsigned MSG_TYPE = 4101;
    BoamMsg_cancelAttributeReq() : BoamMsg_objectOperation(MSG_TYPE) {}
};

// One large record; allocate it with new.
class ConfMsg_setAttributeReq : public BoamMsg {
  public:
    static constexpr unsigned MSG_TYPE = 4096;
    static constexpr int SLOT_COUNT = 100;
    static constexpr int DATA_SIZE = 2000;
    static constexpr int SLOT_SIZE = 4 + DATA_SIZE;                // 2,004
    static constexpr int BODY_SIZE = 12 + SLOT_COUNT * SLOT_SIZE;  // fields, pad, slots
    static constexpr int RECORD_SIZE = HEADER_SIZE + BODY_SIZE;    // 200,424

    struct AttributeSlot {
        uint16_t attributeId = 0;
        uint16_t length = 0;  // bytes of data in use
        char data[DATA_SIZE] = {};
    };

    ConfMsg_setAttributeReq() : BoamMsg(MSG_TYPE) {}
    int getMsgSize() const override { return RECORD_SIZE; }

    uint16_t desObClass = 0;
    uint16_t desObInstance = 0;
    uint16_t operationCount = 1;
    uint16_t reserved = 0;
    uint16_t numberOfAttributes = 0;
    AttributeSlot attributes[SLOT_COUNT];

  protected:
    void writeBody(char* buffer) const override;
    bool readBody(const char* buffer) override;
};

}  // namespace Messages
}  // namespace VESK

// The messages that the agent sends to, and receives from, the station's components.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/SerializableMessage.h"

namespace VESK {
namespace Messages {

class BoamMsg;

// Destination numbers of the send functions.
enum VeskDestination {
    VESK_DEST_CONFIGURATION_MANAGER = 2,
    VESK_DEST_FAULT_MANAGER = 3,
    VESK_DEST_BASEBAND_OAM = 6,
    VESK_DEST_SOFTWARE_MANAGEMENT = 7,
    VESK_DEST_AUTOINTEGRATION_LOG = 8,
    VESK_DEST_RESET = 9,
};

// Backup and restore request, to 7.
class VESK_BrMOperationReq : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4216;
    VESK_BrMOperationReq() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    std::string operation;
    std::string backupName;
};

struct PardPassword {
    uint32_t word = 0;  // not used by the agent
    std::string password;
};

// Upgrade package creation, to 7.
class VESK_InitialiseSWReq : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4145;
    VESK_InitialiseSWReq() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    std::string uri;
    PardPassword password;
    std::string actionName;
};

// Upgrade package command, to 7.
class VESK_SwmCmd : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8196;
    VESK_SwmCmd() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    int32_t command = 6;
    uint32_t requestId = 0;
    std::vector<std::string> arguments;
    std::string commandName;
};

// Node reset, to 9.
class VESK_ResetRBS : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4123;
    VESK_ResetRBS() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    int32_t resetCause = 12;
    int32_t resetKind = 3;
    std::string reasonText;
    int32_t parameter = -1;
};

// Frequency check of changed cells, to 2.
class VESK_ValidateFrequencyReq : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8214;
    struct sCellFrequency {
        std::string cellDn;
        int32_t channelBandwidth = 0;
        int32_t earfcn = 0;
    };
    VESK_ValidateFrequencyReq() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    std::vector<sCellFrequency> cellFrequencies;
};

// Alarm raise or clear, to 3 (sent with sendVeskMessage_v2).
class VESK_FaultNotification : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4102;
    VESK_FaultNotification() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    int32_t faultId = 0;
    int32_t faultState = 0;
    int32_t faultClass = 2;
    std::string additionalText;
};

// One line of the auto-integration log, to 8.
class VESK_WriteAutointegrationLog : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8195;
    VESK_WriteAutointegrationLog() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    std::string text;
};

// Carries a BoamMsg to 6. Built by a sender around its own BoamMsg, which the container neither
// owns nor touches after the send. A container decoded from bytes owns the message it holds.
class VESK_BoamMsgContainer : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8200;
    explicit VESK_BoamMsgContainer(BoamMsg* message = nullptr);
    ~VESK_BoamMsgContainer() override;
    VESK_BoamMsgContainer(const VESK_BoamMsgContainer&) = delete;
    VESK_BoamMsgContainer& operator=(const VESK_BoamMsgContainer&) = delete;
    VESK_MESSAGE_FIELDS;
    BoamMsg* getBoamMsg() const { return _message; }

  private:
    BoamMsg* _message;
    bool _owned;
};

// Answers, delivered to the agent by the inbound router.

// Answer to VESK_BrMOperationReq: event 1015.
class VESK_BrMOperationResp : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4217;
    VESK_BrMOperationResp() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    bool success = false;
    int32_t code = 0;
    std::string operation;
    std::string dn;
};

// Answer to VESK_InitialiseSWReq: event 1014.
class VESK_InitialiseSWResp : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 4146;
    VESK_InitialiseSWResp() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    bool success = false;
    int32_t failureCode = 0;
    int32_t upgradePackageId = 0;
};

// Answer to VESK_SwmCmd: event 1016.
class VESK_SwOssUpdateResp : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8197;
    VESK_SwOssUpdateResp() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    bool success = false;
    int32_t upgradePackageState = 0;
    uint32_t requestId = 0;
};

// Answer to VESK_ValidateFrequencyReq; the router passes `valid` to the agent's entry.
class VESK_ValidateFrequencyResp : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8215;
    VESK_ValidateFrequencyResp() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    bool valid = false;
};

// The baseband OAM's verdict on a ConfMsg_setAttributeReq (0 accepted, -1 refused); the router
// writes `status` into the agent's mailbox.
class VESK_BoamSetAttributeResp : public SerializableMessage {
  public:
    static constexpr uint32_t MESSAGE_ID = 8201;
    VESK_BoamSetAttributeResp() : SerializableMessage(MESSAGE_ID) {}
    VESK_MESSAGE_FIELDS;
    uint32_t transactionId = 0;
    int32_t status = 0;
};

}  // namespace Messages
}  // namespace VESK

#include "platform/VeskMessages.h"

#include "platform/BoamMsg.h"
#include "station/messages/ByteCodec.h"

namespace VESK {
namespace Messages {
namespace {

void writeStrings(ByteWriter& out, const std::vector<std::string>& v) {
    out.u32(static_cast<uint32_t>(v.size()));
    for (const auto& s : v)
        out.str(s);
}

bool readStrings(ByteReader& in, std::vector<std::string>& v) {
    uint32_t n = 0;
    if (!in.count(n, 4))
        return false;
    v.assign(n, std::string());
    for (auto& s : v) {
        if (!in.str(s))
            return false;
    }
    return true;
}

}  // namespace

void VESK_BrMOperationReq::writeFields(ByteWriter& out) const {
    out.str(operation);
    out.str(backupName);
}

bool VESK_BrMOperationReq::readFields(ByteReader& in) {
    return in.str(operation) && in.str(backupName);
}

void VESK_InitialiseSWReq::writeFields(ByteWriter& out) const {
    out.str(uri);
    out.u32(password.word);
    out.str(password.password);
    out.str(actionName);
}

bool VESK_InitialiseSWReq::readFields(ByteReader& in) {
    return in.str(uri) && in.u32(password.word) && in.str(password.password) && in.str(actionName);
}

void VESK_SwmCmd::writeFields(ByteWriter& out) const {
    out.i32(command);
    out.u32(requestId);
    writeStrings(out, arguments);
    out.str(commandName);
}

bool VESK_SwmCmd::readFields(ByteReader& in) {
    return in.i32(command) && in.u32(requestId) && readStrings(in, arguments) &&
           in.str(commandName);
}

void VESK_ResetRBS::writeFields(ByteWriter& out) const {
    out.i32(resetCause);
    out.i32(resetKind);
    out.str(reasonText);
    out.i32(parameter);
}

bool VESK_ResetRBS::readFields(ByteReader& in) {
    return in.i32(resetCause) && in.i32(resetKind) && in.str(reasonText) && in.i32(parameter);
}

void VESK_ValidateFrequencyReq::writeFields(ByteWriter& out) const {
    out.u32(static_cast<uint32_t>(cellFrequencies.size()));
    for (const auto& c : cellFrequencies) {
        out.str(c.cellDn);
        out.i32(c.channelBandwidth);
        out.i32(c.earfcn);
    }
}

bool VESK_ValidateFrequencyReq::readFields(ByteReader& in) {
    uint32_t n = 0;
    if (!in.count(n, 12))
        return false;
    cellFrequencies.assign(n, sCellFrequency());
    for (auto& c : cellFrequencies) {
        if (!(in.str(c.cellDn) && in.i32(c.channelBandwidth) && in.i32(c.earfcn)))
            return false;
    }
    return true;
}

void VESK_FaultNotification::writeFields(ByteWriter& out) const {
    out.i32(faultId);
    out.i32(faultState);
    out.i32(faultClass);
    out.str(additionalText);
}

bool VESK_FaultNotification::readFields(ByteReader& in) {
    return in.i32(faultId) && in.i32(faultState) && in.i32(faultClass) && in.str(additionalText);
}

void VESK_WriteAutointegrationLog::writeFields(ByteWriter& out) const {
    out.str(text);
}

bool VESK_WriteAutointegrationLog::readFields(ByteReader& in) {
    return in.str(text);
}

void VESK_BrMOperationResp::writeFields(ByteWriter& out) const {
    out.boolean(success);
    out.i32(code);
    out.str(operation);
    out.str(dn);
}

bool VESK_BrMOperationResp::readFields(ByteReader& in) {
    return in.boolean(success) && in.i32(code) && in.str(operation) && in.str(dn);
}

void VESK_InitialiseSWResp::writeFields(ByteWriter& out) const {
    out.boolean(success);
    out.i32(failureCode);
    out.i32(upgradePackageId);
}

bool VESK_InitialiseSWResp::readFields(ByteReader& in) {
    return in.boolean(success) && in.i32(failureCode) && in.i32(upgradePackageId);
}

void VESK_SwOssUpdateResp::writeFields(ByteWriter& out) const {
    out.boolean(success);
    out.i32(upgradePackageState);
    out.u32(requestId);
}

bool VESK_SwOssUpdateResp::readFields(ByteReader& in) {
    return in.boolean(success) && in.i32(upgradePackageState) && in.u32(requestId);
}

void VESK_ValidateFrequencyResp::writeFields(ByteWriter& out) const {
    out.boolean(valid);
}

bool VESK_ValidateFrequencyResp::readFields(ByteReader& in) {
    return in.boolean(valid);
}

void VESK_BoamSetAttributeResp::writeFields(ByteWriter& out) const {
    out.u32(transactionId);
    out.i32(status);
}

bool VESK_BoamSetAttributeResp::readFields(ByteReader& in) {
    return in.u32(transactionId) && in.i32(status);
}

}  // namespace Messages
}  // namespace VESK

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "platform/BoamMsg.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageCodec.h"

namespace {

using namespace VESK::Messages;

// One row per message: a message with values off the defaults, and a check of the decoded one.
struct Row {
    const char* name;
    uint32_t id;
    std::function<std::unique_ptr<SerializableMessage>()> build;
    std::function<void(const SerializableMessage&)> check;
};

template <class M>
const M& as(const SerializableMessage& m) {
    const M* p = dynamic_cast<const M*>(&m);
    EXPECT_NE(nullptr, p);
    return *p;
}

std::vector<Row> rows() {
    std::vector<Row> r;
    r.push_back({"BrMOperationReq", 4216,
                 [] {
                     auto m = std::make_unique<VESK_BrMOperationReq>();
                     m->operation = "RESTORE";
                     m->backupName = "nightly";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     EXPECT_EQ("RESTORE", as<VESK_BrMOperationReq>(m).operation);
                     EXPECT_EQ("nightly", as<VESK_BrMOperationReq>(m).backupName);
                 }});
    r.push_back({"InitialiseSWReq", 4145,
                 [] {
                     auto m = std::make_unique<VESK_InitialiseSWReq>();
                     m->uri = "sftp://h/p";
                     m->password.word = 0xdeadbeef;
                     m->password.password = std::string("p\0w", 3);
                     m->actionName = "createUpgradePackage";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_InitialiseSWReq>(m);
                     EXPECT_EQ("sftp://h/p", x.uri);
                     EXPECT_EQ(0xdeadbeefu, x.password.word);
                     EXPECT_EQ(std::string("p\0w", 3), x.password.password);
                     EXPECT_EQ("createUpgradePackage", x.actionName);
                 }});
    r.push_back({"SwmCmd", 8196,
                 [] {
                     auto m = std::make_unique<VESK_SwmCmd>();
                     m->command = 5;
                     m->requestId = 4000000000u;
                     m->arguments = {"a", ""};
                     m->commandName = "removeUpgradePackage";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_SwmCmd>(m);
                     EXPECT_EQ(5, x.command);
                     EXPECT_EQ(4000000000u, x.requestId);
                     EXPECT_EQ((std::vector<std::string>{"a", ""}), x.arguments);
                     EXPECT_EQ("removeUpgradePackage", x.commandName);
                 }});
    r.push_back({"ResetRBS", 4123,
                 [] {
                     auto m = std::make_unique<VESK_ResetRBS>();
                     m->resetCause = 27;
                     m->resetKind = 1;
                     m->reasonText = "why";
                     m->parameter = -5;
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_ResetRBS>(m);
                     EXPECT_EQ(27, x.resetCause);
                     EXPECT_EQ(1, x.resetKind);
                     EXPECT_EQ("why", x.reasonText);
                     EXPECT_EQ(-5, x.parameter);
                 }});
    r.push_back({"ValidateFrequencyReq", 8214,
                 [] {
                     auto m = std::make_unique<VESK_ValidateFrequencyReq>();
                     m->cellFrequencies.push_back({"ManagedElement=1,EUtranCellFDD=1", 5000, 6300});
                     m->cellFrequencies.push_back({"ManagedElement=1,EUtranCellTDD=2", -1, 46890});
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_ValidateFrequencyReq>(m);
                     ASSERT_EQ(2u, x.cellFrequencies.size());
                     EXPECT_EQ("ManagedElement=1,EUtranCellTDD=2", x.cellFrequencies[1].cellDn);
                     EXPECT_EQ(-1, x.cellFrequencies[1].channelBandwidth);
                     EXPECT_EQ(46890, x.cellFrequencies[1].earfcn);
                     EXPECT_EQ(5000, x.cellFrequencies[0].channelBandwidth);
                 }});
    r.push_back({"FaultNotification", 4102,
                 [] {
                     auto m = std::make_unique<VESK_FaultNotification>();
                     m->faultId = 20752;
                     m->faultState = 1;
                     m->additionalText = "cell";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_FaultNotification>(m);
                     EXPECT_EQ(20752, x.faultId);
                     EXPECT_EQ(1, x.faultState);
                     EXPECT_EQ(2, x.faultClass);
                     EXPECT_EQ("cell", x.additionalText);
                 }});
    r.push_back({"WriteAutointegrationLog", 8195,
                 [] {
                     auto m = std::make_unique<VESK_WriteAutointegrationLog>();
                     m->text = "Reference to missing MO: a:b";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     EXPECT_EQ("Reference to missing MO: a:b",
                               as<VESK_WriteAutointegrationLog>(m).text);
                 }});
    r.push_back({"BrMOperationResp", 4217,
                 [] {
                     auto m = std::make_unique<VESK_BrMOperationResp>();
                     m->success = true;
                     m->code = -3;
                     m->operation = "CREATE";
                     m->dn = "BrmBackup=4";
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_BrMOperationResp>(m);
                     EXPECT_TRUE(x.success);
                     EXPECT_EQ(-3, x.code);
                     EXPECT_EQ("CREATE", x.operation);
                     EXPECT_EQ("BrmBackup=4", x.dn);
                 }});
    r.push_back({"InitialiseSWResp", 4146,
                 [] {
                     auto m = std::make_unique<VESK_InitialiseSWResp>();
                     m->failureCode = 1;
                     m->upgradePackageId = 0x10007;
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_InitialiseSWResp>(m);
                     EXPECT_FALSE(x.success);
                     EXPECT_EQ(1, x.failureCode);
                     EXPECT_EQ(0x10007, x.upgradePackageId);
                 }});
    r.push_back({"SwOssUpdateResp", 8197,
                 [] {
                     auto m = std::make_unique<VESK_SwOssUpdateResp>();
                     m->success = true;
                     m->upgradePackageState = 2;
                     m->requestId = 1790000000u;
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     auto& x = as<VESK_SwOssUpdateResp>(m);
                     EXPECT_TRUE(x.success);
                     EXPECT_EQ(2, x.upgradePackageState);
                     EXPECT_EQ(1790000000u, x.requestId);
                 }});
    r.push_back({"ValidateFrequencyResp", 8215,
                 [] {
                     auto m = std::make_unique<VESK_ValidateFrequencyResp>();
                     m->valid = true;
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     EXPECT_TRUE(as<VESK_ValidateFrequencyResp>(m).valid);
                 }});
    r.push_back({"BoamSetAttributeResp", 8201,
                 [] {
                     auto m = std::make_unique<VESK_BoamSetAttributeResp>();
                     m->transactionId = 300;
                     m->status = -1;
                     return m;
                 },
                 [](const SerializableMessage& m) {
                     EXPECT_EQ(300u, as<VESK_BoamSetAttributeResp>(m).transactionId);
                     EXPECT_EQ(-1, as<VESK_BoamSetAttributeResp>(m).status);
                 }});
    return r;
}

std::unique_ptr<SerializableMessage> decode(const std::vector<uint8_t>& bytes, size_t size) {
    // An exact-size heap copy, so that AddressSanitizer sees any read past the end.
    std::unique_ptr<uint8_t[]> copy(new uint8_t[size]);
    std::memcpy(copy.get(), bytes.data(), size);
    std::string error;
    auto m = decodeMessage(copy.get(), size, error);
    EXPECT_EQ(m == nullptr, !error.empty());
    return m;
}

TEST(MessageCodec, EveryMessageRoundTripsAndEveryTruncationIsRejected) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name);
        auto message = row.build();
        message->flag = true;
        EXPECT_EQ(row.id, message->messageId);
        std::vector<uint8_t> bytes = message->serialize();
        auto decoded = decode(bytes, bytes.size());
        ASSERT_NE(nullptr, decoded);
        EXPECT_EQ(row.id, decoded->messageId);
        EXPECT_TRUE(decoded->flag);
        row.check(*decoded);
        EXPECT_EQ(bytes, decoded->serialize());
        for (size_t n = 0; n < bytes.size(); ++n)
            EXPECT_EQ(nullptr, decode(bytes, n)) << n;
        bytes.push_back(0);
        EXPECT_EQ(nullptr, decode(bytes, bytes.size()));
    }
}

TEST(MessageCodec, MalformedFieldsAreRejected) {
    VESK_BrMOperationResp resp;
    std::vector<uint8_t> bytes = resp.serialize();
    bytes[9] = 2;  // the first field is a bool
    EXPECT_EQ(nullptr, decode(bytes, bytes.size()));

    VESK_SwmCmd cmd;
    bytes = cmd.serialize();
    std::memset(&bytes[9 + 8], 0xff, 4);  // a count of arguments that cannot fit
    EXPECT_EQ(nullptr, decode(bytes, bytes.size()));

    bytes = resp.serialize();
    bytes[0] = 0x11;  // unknown identity
    std::string error;
    EXPECT_EQ(nullptr, decodeMessage(bytes.data(), bytes.size(), error));
    EXPECT_NE(std::string::npos, error.find("unknown message identity"));
    EXPECT_EQ(nullptr, decodeMessage(nullptr, 0, error));
}

TEST(BoamMsg, RecordsTravelInTheContainerAndRoundTrip) {
    auto request = std::make_unique<ConfMsg_setAttributeReq>();
    EXPECT_EQ(4096, request->msgType);
    EXPECT_EQ(200424, request->getMsgSize());
    for (const auto& slot : request->attributes)
        ASSERT_EQ(0, slot.length);
    request->transactionId = 256;
    request->desObClass = 130;
    request->numberOfAttributes = 1;
    request->attributes[0].attributeId = 4126;
    request->attributes[0].length = 8;
    request->attributes[0].data[0] = static_cast<char>(0xfc);
    request->attributes[99].data[1999] = 7;

    std::vector<uint8_t> bytes = VESK_BoamMsgContainer(request.get()).serialize();
    request.reset();  // the sender deletes its record; the bytes stand alone
    auto decoded = decode(bytes, bytes.size());
    ASSERT_NE(nullptr, decoded);
    auto* received =
        dynamic_cast<ConfMsg_setAttributeReq*>(as<VESK_BoamMsgContainer>(*decoded).getBoamMsg());
    ASSERT_NE(nullptr, received);
    EXPECT_EQ(256u, received->transactionId);
    EXPECT_EQ(130, received->desObClass);
    EXPECT_EQ(1, received->numberOfAttributes);
    EXPECT_EQ(4126, received->attributes[0].attributeId);
    EXPECT_EQ(8, received->attributes[0].length);
    EXPECT_EQ(static_cast<char>(0xfc), received->attributes[0].data[0]);
    EXPECT_EQ(7, received->attributes[99].data[1999]);
    EXPECT_EQ(bytes, decoded->serialize());

    // A slot that claims more than its data is refused, and so is a short buffer.
    std::vector<char> record(200424);
    ASSERT_EQ(200424, received->serialize(record.data(), 200424));
    EXPECT_EQ(-1, received->serialize(record.data(), 200423));
    record[12 + 12 + 2] = static_cast<char>(0xd1);  // slot 0 length 2001
    record[12 + 12 + 3] = 0x07;
    ConfMsg_setAttributeReq fresh;
    EXPECT_EQ(-1, fresh.deserialize(record.data()));

    BoamMsg_cancelAttributeReq cancel;
    cancel.transactionId = 65535;
    cancel.desObClass = 132;
    bytes = VESK_BoamMsgContainer(&cancel).serialize();
    decoded = decode(bytes, bytes.size());
    ASSERT_NE(nullptr, decoded);
    auto* back =
        dynamic_cast<BoamMsg_cancelAttributeReq*>(as<VESK_BoamMsgContainer>(*decoded).getBoamMsg());
    ASSERT_NE(nullptr, back);
    EXPECT_EQ(4101, back->msgType);
    EXPECT_EQ(65535u, back->transactionId);
    EXPECT_EQ(132, back->desObClass);
    EXPECT_EQ(0, back->desObInstance);
    EXPECT_EQ(1, back->operationCount);
    EXPECT_EQ(4099, BoamMsg_commitAttributeReq().msgType);
    for (size_t n = 0; n < bytes.size(); ++n)
        EXPECT_EQ(nullptr, decode(bytes, n)) << n;
}

}  // namespace

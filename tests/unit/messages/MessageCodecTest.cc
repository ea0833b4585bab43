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

template <class M>
M& as(SerializableMessage& m) {
    M* p = dynamic_cast<M*>(&m);
    EXPECT_NE(nullptr, p);
    return *p;
}

// Sets `f` to `value` when filling a message, else expects `f` to hold `value`.
template <class F, class V>
void field(bool fill, F& f, const V& value) {
    if (fill)
        f = value;
    else
        EXPECT_EQ(F(value), f);
}

// One row per message: `fields` fills a new message with values off the defaults, or expects
// them of the decoded one.
struct Row {
    const char* name;
    uint32_t id;
    std::function<std::unique_ptr<SerializableMessage>()> build;
    std::function<void(SerializableMessage&)> check;
};

template <class M>
Row row(const char* name, uint32_t id, void (*fields)(M&, bool)) {
    return {name, id,
            [fields] {
                auto m = std::make_unique<M>();
                fields(*m, true);
                return std::unique_ptr<SerializableMessage>(std::move(m));
            },
            [fields](SerializableMessage& m) { fields(as<M>(m), false); }};
}

std::vector<Row> rows() {
    return {
        row<VESK_BrMOperationReq>("BrMOperationReq", 4216,
                                  [](auto& m, bool fill) {
                                      field(fill, m.operation, "RESTORE");
                                      field(fill, m.backupName, "nightly");
                                  }),
        row<VESK_InitialiseSWReq>("InitialiseSWReq", 4145,
                                  [](auto& m, bool fill) {
                                      field(fill, m.uri, "sftp://h/p");
                                      field(fill, m.password.word, 0xdeadbeefu);
                                      field(fill, m.password.password, std::string("p\0w", 3));
                                      field(fill, m.actionName, "createUpgradePackage");
                                  }),
        row<VESK_SwmCmd>("SwmCmd", 8196,
                         [](auto& m, bool fill) {
                             field(fill, m.command, 5);
                             field(fill, m.requestId, 4000000000u);
                             field(fill, m.arguments, std::vector<std::string>{"a", ""});
                             field(fill, m.commandName, "removeUpgradePackage");
                         }),
        row<VESK_ResetRBS>("ResetRBS", 4123,
                           [](auto& m, bool fill) {
                               field(fill, m.resetCause, 27);
                               field(fill, m.resetKind, 1);
                               field(fill, m.reasonText, "why");
                               field(fill, m.parameter, -5);
                           }),
        row<VESK_ValidateFrequencyReq>(
            "ValidateFrequencyReq", 8214,
            [](auto& m, bool fill) {
                if (fill)
                    m.cellFrequencies.resize(2);
                ASSERT_EQ(2u, m.cellFrequencies.size());
                field(fill, m.cellFrequencies[0].cellDn, "ManagedElement=1,EUtranCellFDD=1");
                field(fill, m.cellFrequencies[0].channelBandwidth, 5000);
                field(fill, m.cellFrequencies[0].earfcn, 6300);
                field(fill, m.cellFrequencies[1].cellDn, "ManagedElement=1,EUtranCellTDD=2");
                field(fill, m.cellFrequencies[1].channelBandwidth, -1);
                field(fill, m.cellFrequencies[1].earfcn, 46890);
            }),
        row<VESK_FaultNotification>("FaultNotification", 4102,
                                    [](auto& m, bool fill) {
                                        field(fill, m.faultId, 20752);
                                        field(fill, m.faultState, 1);
                                        field(fill, m.additionalText, "cell");
                                        EXPECT_EQ(2, m.faultClass);
                                    }),
        row<VESK_WriteAutointegrationLog>(
            "WriteAutointegrationLog", 8195,
            [](auto& m, bool fill) { field(fill, m.text, "Reference to missing MO: a:b"); }),
        row<VESK_BrMOperationResp>("BrMOperationResp", 4217,
                                   [](auto& m, bool fill) {
                                       field(fill, m.success, true);
                                       field(fill, m.code, -3);
                                       field(fill, m.operation, "CREATE");
                                       field(fill, m.dn, "BrmBackup=4");
                                   }),
        row<VESK_InitialiseSWResp>("InitialiseSWResp", 4146,
                                   [](auto& m, bool fill) {
                                       field(fill, m.failureCode, 1);
                                       field(fill, m.upgradePackageId, 0x10007);
                                       EXPECT_FALSE(m.success);
                                   }),
        row<VESK_SwOssUpdateResp>("SwOssUpdateResp", 8197,
                                  [](auto& m, bool fill) {
                                      field(fill, m.success, true);
                                      field(fill, m.upgradePackageState, 2);
                                      field(fill, m.requestId, 1790000000u);
                                  }),
        row<VESK_ValidateFrequencyResp>("ValidateFrequencyResp", 8215,
                                        [](auto& m, bool fill) { field(fill, m.valid, true); }),
        row<VESK_BoamSetAttributeResp>("BoamSetAttributeResp", 8201,
                                       [](auto& m, bool fill) {
                                           field(fill, m.transactionId, 300u);
                                           field(fill, m.status, -1);
                                       }),
    };
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

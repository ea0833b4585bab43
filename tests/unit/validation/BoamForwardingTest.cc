// The forwarding of WCDMA attributes to the baseband OAM, against a station database of the
// test's own with a baseband of the test's own at destination 6: the record of each attribute
// as the baseband receives it, and the answers, time-out and commit or cancel per class.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/AgentEntries.h"
#include "platform/BoamMsg.h"
#include "platform/VeskMessages.h"
#include "station/framework/FrameworkControl.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskBoamOI.h"

namespace {

using TibVeskOI::VeskBoamOI;
using vesk::dbtest::attr;
using vesk::dbtest::putDn;
using namespace VESK::Messages;

const std::string kNode = "ManagedElement=1,NodeBFunction=1";
const std::string kCell1 = kNode + ",NodeBLocalCellGroup=1,NodeBLocalCell=1";
const std::string kCell2 = kNode + ",NodeBLocalCellGroup=1,NodeBLocalCell=2";

Attribute* int32(const std::string& name, int value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT32);
}
Attribute* int16(const std::string& name, short value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT16);
}

// One message the baseband received: the set's class, attribute and data in hex, or the
// commit's ("c") or cancel's ("x") class.
struct Seen {
    uint32_t txId;
    std::string text;
};

// A cell with its RoT coverage, starving UEs, eAgch minimum and a noise floor lock on itself; a
// second cell with nothing stored; the node with its scheduling rate.
class BoamForwarding : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        putDn("BOAM", {int32("state", 2)});
        putDn("BOMOMapping", {int32("hsdpaPowerBudget", 4125), int32("orthLossComp", 4135),
                              int32("noLayout", 4200)});
        putDn("ManagedElement=1", {});
        putDn(kNode, {int32("eulMaxAllowedSchRate", 3000)});
        putDn(kNode + ",NodeBLocalCellGroup=1", {});
        putDn(kCell1,
              {int32("eulMaxRoTCoverage", 120),
               int16("rtwpInformation.hsuLoadIncreaseStarvingUes", 7), int16("eAgchMinPower", -150),
               attr("eulOptimalNoiseFloorLock", AttributeVariant(kCell1)),
               int32("eulOptimalNoiseFloorEstimate", -1048)});
        putDn(kCell2, {});
        vesk::station::registerComponent(
            6, [this](int, const uint8_t* data, size_t size, int) { return receive(data, size); });
        vesk::station::setTimeScale(0.001);
    }
    void TearDown() override {
        vesk::station::unregisterComponent(6);
        vesk::station::setTimeScale(1);
        DatabaseTest::TearDown();
    }

    bool receive(const uint8_t* data, size_t size) {
        std::string error;
        std::unique_ptr<SerializableMessage> message = decodeMessage(data, size, error);
        auto* container = dynamic_cast<VESK_BoamMsgContainer*>(message.get());
        BoamMsg* record = container ? container->getBoamMsg() : nullptr;
        if (auto* set = dynamic_cast<ConfMsg_setAttributeReq*>(record)) {
            const ConfMsg_setAttributeReq::AttributeSlot& slot = set->attributes[0];
            std::string text =
                std::to_string(set->desObClass) + " " + std::to_string(slot.attributeId) + " ";
            for (int i = 0; i < slot.length; ++i) {
                char byte[3];
                std::snprintf(byte, sizeof(byte), "%02x", static_cast<uint8_t>(slot.data[i]));
                text += byte;
            }
            _seen.push_back({set->transactionId, text});
            if (_answer != 1) {
                vesk::boamStatusStore(&boamSetAttributeReponseStatus, _answer);
            }
        } else if (auto* op = dynamic_cast<BoamMsg_objectOperation*>(record)) {
            const bool commit = op->msgType == BoamMsg_commitAttributeReq::MSG_TYPE;
            _seen.push_back({op->transactionId,
                             std::string(commit ? "c " : "x ") + std::to_string(op->desObClass)});
        }
        return record != nullptr;
    }

    // Sets `name` of `dn` to `number` (no value when `empty`) in host transaction `tx`.
    int set(unsigned long tx, const std::string& dn, const std::string& name, int number,
            int type = 3, bool empty = false) {
        OrlMoAttributeValue_3 slot{};
        if (type == 2)
            slot.i16 = static_cast<int16_t>(number);
        else
            slot.i32 = number;
        OrlMoAttributeValueContainer_3 value{type, empty ? 0u : 1u, empty ? nullptr : &slot};
        return VeskBoamOI::instance()->handleBOAMTransaction(dn, name, &value, tx);
    }
    std::string texts() const {
        std::string all;
        for (const Seen& seen : _seen)
            all += (all.empty() ? "" : "; ") + seen.text;
        return all;
    }

    int _answer = 0;  // what the baseband writes into the mailbox; 1 for nothing
    std::vector<Seen> _seen;
};

// Each row in the transaction given; rows of one transaction carry the pair's ends set before.
TEST_F(BoamForwarding, EachAttributeTravelsAsTheBasebandsRecord) {
    struct Row {
        unsigned long tx;
        std::string dn, name;
        int number, type;
        bool empty;
        int rc;
        const char* record;  // "" nothing sent
    } rows[] = {
        // Noise floor of the locked cell, the load, starving UEs, zero byte, the stored RoT.
        {101, kCell1, "eulMaxOwnUuLoad", 65, 3, false, 0, "130 4126 e8fb410007007800"},
        // Nothing stored, no lock, a deletion: the defaults -1020, 5 and 100; the load is the
        // one set last, in a transaction that has not ended.
        {102, kCell2, "eulMaxRoTCoverage", 0, 3, true, 0, "130 4126 04fc410005006400"},
        // A maximum with the stored minimum, then the minimum with the maximum just set.
        {103, kCell1, "eAgchMaxPower", -100, 2, false, 0, "130 4132 6aff9cff"},
        {103, kCell1, "eAgchMinPower", -120, 2, false, 0, "130 4132 88ff9cff"},
        {104, kCell2, "hsScchMinCodePower", 0, 2, true, 0, "130 4131 ecffecff"},
        {104, kCell2, "eRgchMinPower", -130, 2, false, 0, "130 4133 7eff74ff"},
        {105, kCell2, "eHichMaxPower2msTti", -70, 3, false, 0, "130 4219 b0ffffffbaffffff"},
        {105, kCell2, "eAgchMinPower2msTti", -90, 3, false, 0, "130 4218 a6ffffffb0ffffff"},
        // The rates are read from the node whatever the dn.
        {106, kNode, "eulDchMaxAllowedSchRate", 2048, 3, false, 0, "132 4212 b80b000000080000"},
        {106, kNode, "hsdpaPowerBudget", 30, 3, false, 0, "132 4125 1e000000"},
        {106, kNode, "orthLossComp", 0, 3, true, 0, "132 4135 04000000"},
        // Not the baseband's, and an id without a record.
        {107, kCell1, "userLabel", 0, 9, true, 0, ""},
        {107, kCell1, "noLayout", 1, 3, false, -1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        _seen.clear();
        EXPECT_EQ(set(row.tx, row.dn, row.name, row.number, row.type, row.empty), row.rc);
        EXPECT_EQ(texts(), row.record);
        if (!_seen.empty()) {
            EXPECT_EQ(_seen[0].txId, static_cast<uint32_t>(VeskBoamOI::instance()->boamTxId()));
        }
    }
    VeskBoamOI::instance()->rollback(107);
}

// One transaction after another, each step with the baseband's answer (1: none) and what the
// baseband received; 'c' commits and 'r' rolls back the transaction.
TEST_F(BoamForwarding, AnswersTimeOutAndOneCommitOrCancelPerClassTouched) {
    struct Step {
        char op;
        unsigned long tx;
        std::string dn, name;
        int number, answer, rc;
        const char* seen;
    } steps[] = {
        {'s', 201, kCell1, "eAgchMaxPower", -100, 0, 0, "130 4132 6aff9cff"},
        {'s', 201, kCell2, "eulMaxOwnUuLoad", 70, 0, 0, "130 4126 04fc460005006400"},
        {'s', 201, kNode, "eulMaxAllowedSchRate", 4000, 0, 0, "132 4212 a00f000040060000"},
        // Refused: a minimum above the maximum of this transaction, then another attribute.
        {'s', 201, kCell1, "eAgchMinPower", -90, -1, -9, "130 4132 a6ff9cff"},
        {'s', 201, kCell2, "eulMaxRoTCoverage", 90, -1, -1, "130 4126 04fc460005005a00"},
        {'s', 201, kCell2, "eRgchMinPower", -100, -1, -1, "130 4133 9cff74ff"},
        // No answer within the (shortened) second: the host is to try again.
        {'s', 201, kCell2, "eHichMinPower", -130, 1, 1, "130 4134 7eff74ff"},
        {'c', 201, "", "", 0, 0, 0, "c 130; c 132"},
        // Nothing accepted: no commit.
        {'s', 202, kCell1, "eulMaxRoTCoverage", 100, -1, -1, "130 4126 e8fb500007006400"},
        {'c', 202, "", "", 0, 0, 0, ""},
        // A second transaction takes the baseband's over: the first's commit finds nothing.
        {'s', 203, kCell1, "eHichMaxPower", -110, 0, 0, "130 4134 74ff92ff"},
        {'s', 204, kNode, "eulDchMaxAllowedSchRate", 1000, 0, 0, "132 4212 b80b0000e8030000"},
        {'c', 203, "", "", 0, 0, 0, ""},
        {'r', 204, "", "", 0, 0, 0, "x 130; x 132"},
    };
    VeskBoamOI& boam = *VeskBoamOI::instance();
    int32_t lastId = -1;
    unsigned long lastTx = 0;
    for (const Step& step : steps) {
        SCOPED_TRACE(std::to_string(step.tx) + " " + step.name);
        _seen.clear();
        _answer = step.answer;
        int rc = step.op == 's'   ? set(step.tx, step.dn, step.name, step.number)
                 : step.op == 'c' ? boam.commit(step.tx)
                                  : boam.rollback(step.tx);
        EXPECT_EQ(rc, step.rc);
        EXPECT_EQ(texts(), step.seen);
        for (const Seen& seen : _seen)
            EXPECT_EQ(seen.txId, static_cast<uint32_t>(step.op == 's' ? boam.boamTxId() : lastId));
        if (step.op == 's' && step.tx != lastTx && lastId != -1) {
            EXPECT_EQ(boam.boamTxId(), lastId + 1) << "one new id per host transaction";
        }
        if (step.op == 's') {
            lastId = boam.boamTxId();
            lastTx = step.tx;
        }
    }
    EXPECT_EQ(boam.trAttributesNow().tr_eHichMaxPower, 999) << "cleared at the rollback";
}

}  // namespace

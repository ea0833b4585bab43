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

// A cell with its RoT coverage, starving UEs, eAgch minimum and a noise floor lock on itself; a
// second cell with nothing stored; the node with its scheduling rate. The test's baseband at 6
// notes each message as text and writes `_answer` into the mailbox (1: it stays silent).
class BoamForwarding : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        putDn("BOAM", {int32("state", 2)});
        putDn("BOMOMapping", {int32("hsdpaPowerBudget", 4125), int32("orthLossComp", 4135),
                              int32("noLayout", 4200)});
        putDn(kNode, {int32("eulMaxAllowedSchRate", 3000)});
        putDn(kCell1, {int32("eulMaxRoTCoverage", 120),
                       int32("rtwpInformation.hsuLoadIncreaseStarvingUes", 7),
                       int32("eAgchMinPower", -150), int32("eulOptimalNoiseFloorEstimate", -1048),
                       attr("eulOptimalNoiseFloorLock", AttributeVariant(kCell1))});
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
        std::string error, text;
        std::unique_ptr<SerializableMessage> message = decodeMessage(data, size, error);
        auto* container = dynamic_cast<VESK_BoamMsgContainer*>(message.get());
        BoamMsg* record = container ? container->getBoamMsg() : nullptr;
        if (auto* set = dynamic_cast<ConfMsg_setAttributeReq*>(record)) {
            const ConfMsg_setAttributeReq::AttributeSlot& slot = set->attributes[0];
            text = std::to_string(set->desObClass) + " " + std::to_string(slot.attributeId) + " ";
            for (int i = 0; i < slot.length; ++i) {
                char byte[3];
                std::snprintf(byte, sizeof(byte), "%02x", static_cast<uint8_t>(slot.data[i]));
                text += byte;
            }
            if (_answer != 1)
                vesk::boamStatusStore(&boamSetAttributeReponseStatus, _answer);
        } else if (auto* op = dynamic_cast<BoamMsg_objectOperation*>(record)) {
            const bool commit = op->msgType == BoamMsg_commitAttributeReq::MSG_TYPE;
            text = std::string(commit ? "c " : "x ") + std::to_string(op->desObClass);
        }
        _seen += (_seen.empty() ? "" : "; ") + text;
        _ids.push_back(record ? record->transactionId : 0);
        return record != nullptr;
    }
    // Sets `name` of `dn` to `number` (no value when `empty`) in host transaction `tx`.
    int set(unsigned long tx, const std::string& dn, const std::string& name, int number, int type,
            bool empty) {
        OrlMoAttributeValue_3 slot{};
        if (type == 2)
            slot.i16 = static_cast<int16_t>(number);
        else
            slot.i32 = number;
        OrlMoAttributeValueContainer_3 value{type, empty ? 0u : 1u, empty ? nullptr : &slot};
        return VeskBoamOI::instance()->handleBOAMTransaction(dn, name, &value, tx);
    }

    int _answer = 0;
    std::string _seen;
    std::vector<uint32_t> _ids;
};

// Host transactions one after another: each set with the baseband's answer, its result and the
// record the baseband received (class, attribute id, data in hex); 'c' commits and 'r' rolls back
// a transaction ("c 130": a commit of class 130, "x": a cancel).
TEST_F(BoamForwarding, RecordsAnswersAndOneCommitOrCancelPerClass) {
    const int S = 's';
    struct Step {
        int op;
        unsigned long tx;
        std::string dn, name;
        int number, type;
        bool empty;
        int answer, rc;
        const char* seen;
    } steps[] = {
        // Noise floor of the locked cell, the load, starving UEs, zero byte, the stored RoT.
        {S, 101, kCell1, "eulMaxOwnUuLoad", 65, 3, false, 0, 0, "130 4126 e8fb410007007800"},
        // A maximum with the stored minimum, then the minimum with the maximum just set.
        {S, 101, kCell1, "eAgchMaxPower", -100, 2, false, 0, 0, "130 4132 6aff9cff"},
        {S, 101, kCell1, "eAgchMinPower", -120, 2, false, 0, 0, "130 4132 88ff9cff"},
        // The rates are read from the node; the defaults of two single values.
        {S, 101, kNode, "eulDchMaxAllowedSchRate", 2048, 3, false, 0, 0,
         "132 4212 b80b000000080000"},
        {S, 101, kNode, "hsdpaPowerBudget", 30, 3, false, 0, 0, "132 4125 1e000000"},
        {S, 101, kNode, "orthLossComp", 0, 3, true, 0, 0, "132 4135 04000000"},
        // Not the baseband's, an id without a record, a refusal with the minimum above the
        // maximum of this transaction, another refusal, no answer.
        {S, 101, kCell1, "userLabel", 0, 9, true, 0, 0, ""},
        {S, 101, kCell1, "noLayout", 1, 3, false, 0, -1, ""},
        {S, 101, kCell1, "eAgchMinPower", -90, 2, false, -1, -9, "130 4132 a6ff9cff"},
        {S, 101, kCell2, "eRgchMinPower", -100, 2, false, -1, -1, "130 4133 9cff74ff"},
        {S, 101, kCell2, "eHichMaxPower2msTti", -70, 3, false, 1, 1, "130 4219 b0ffffffbaffffff"},
        {'c', 101, "", "", 0, 0, false, 0, 0, "c 130; c 132"},
        // Nothing stored, no lock, a deletion: the defaults -1020, 80, 5 and 100. Refused:
        // nothing accepted, no commit.
        {S, 102, kCell2, "eulMaxRoTCoverage", 0, 3, true, -1, -1, "130 4126 04fc500005006400"},
        {'c', 102, "", "", 0, 0, false, 0, 0, ""},
        // A second transaction takes the baseband's over: the first's commit finds nothing.
        {S, 103, kCell2, "hsScchMinCodePower", 0, 2, true, 0, 0, "130 4131 ecffecff"},
        {S, 104, kNode, "eulMaxAllowedSchRate", 1000, 3, false, 0, 0, "132 4212 e803000040060000"},
        {'c', 103, "", "", 0, 0, false, 0, 0, ""},
        {'r', 104, "", "", 0, 0, false, 0, 0, "x 130; x 132"},
    };
    VeskBoamOI& boam = *VeskBoamOI::instance();
    std::vector<uint32_t> ids;
    for (const Step& step : steps) {
        SCOPED_TRACE(std::to_string(step.tx) + " " + step.name);
        _seen.clear();
        _ids.clear();
        _answer = step.answer;
        int rc = step.op == S ? set(step.tx, step.dn, step.name, step.number, step.type, step.empty)
                 : step.op == 'c' ? boam.commit(step.tx)
                                  : boam.rollback(step.tx);
        EXPECT_EQ(rc, step.rc);
        EXPECT_EQ(_seen, step.seen);
        for (uint32_t id : _ids)
            EXPECT_EQ(id, static_cast<uint32_t>(boam.boamTxId()));
        if (step.op == S && (ids.empty() || ids.back() != static_cast<uint32_t>(boam.boamTxId())))
            ids.push_back(boam.boamTxId());
    }
    // One id per host transaction, counted up.
    EXPECT_EQ(ids, (std::vector<uint32_t>{ids[0], ids[0] + 1, ids[0] + 2, ids[0] + 3}));
    EXPECT_EQ(boam.trAttributesNow().tr_eAgchMaxPower, 999)
        << "cleared at the end of a transaction";
}

}  // namespace

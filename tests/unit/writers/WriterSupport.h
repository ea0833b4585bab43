// Shared set-up of the writer tests: the station model, a station database in a fresh folder
// with a few MOs committed, an open transaction, host values built with the records' own
// allocation, and a text form of a read container.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"
#include "unit/agent_model/AgentModelSupport.h"
#include "unit/transaction/TransactionTestSupport.h"

namespace writer_test {

using Container = OrlMoAttributeValueContainer_3;
using TibVeskCM::VeskOrlHelper;

const std::string kMe = "ManagedElement=1";
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const std::string kRel = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1,EUtranFreqRelation=1";

// One host value: numbers or texts by type. The record owns its storage.
struct Value {
    Value(int aType, std::vector<double> aNums, std::vector<std::string> aTexts = {})
        : type(aType), nums(std::move(aNums)), texts(std::move(aTexts)) {}
    int type;
    std::vector<double> nums;
    std::vector<std::string> texts;
};

// One struct member: name and value.
struct Member {
    std::string name;
    Value value;
};
using Struct = std::vector<Member>;

// Fills `slot` with element `i` of `v`.
inline void fillSlot(OrlMoAttributeValue_3& slot, const Value& v, size_t i) {
    double n = i < v.nums.size() ? v.nums[i] : 0;
    switch (v.type) {
        case 1:
            slot.i8 = int8_t(n);
            break;
        case 2:
            slot.i16 = int16_t(n);
            break;
        case 3:
            slot.i32 = int32_t(n);
            break;
        case 4:
            slot.i64 = int64_t(n);
            break;
        case 5:
            slot.u8 = uint8_t(n);
            break;
        case 6:
            slot.u16 = uint16_t(n);
            break;
        case 7:
            slot.u32 = uint32_t(n);
            break;
        case 8:
            slot.u64 = uint64_t(n);
            break;
        case 9:
            slot.theString = VeskOrlHelper::ownStrDup(v.texts[i].c_str());
            break;
        case 10:
            slot.theBool = n != 0;
            break;
        case 11:
            slot.moRef = VeskOrlHelper::ownStrDup(v.texts[i].c_str());
            break;
        case 12:
            slot.theEnum = int64_t(n);
            break;
        case 16:
            slot.decimal64 = n;
            break;
        default:
            slot.u64 = 0;
    }
}

inline void fill(Container& c, const Value& v) {
    c.type = v.type;
    c.nrOfValues = uint32_t(v.type == 9 || v.type == 11 ? v.texts.size() : v.nums.size());
    c.values = c.nrOfValues ? static_cast<OrlMoAttributeValue_3*>(
                                  calloc(c.nrOfValues, sizeof(OrlMoAttributeValue_3)))
                            : nullptr;
    for (uint32_t i = 0; i < c.nrOfValues; ++i)
        fillSlot(c.values[i], v, i);
}

inline OrlMoAttributeValueStructMember_3* chain(const Struct& s) {
    OrlMoAttributeValueStructMember_3* head = nullptr;
    OrlMoAttributeValueStructMember_3** tail = &head;
    for (const Member& m : s) {
        auto* value = static_cast<Container*>(calloc(1, sizeof(Container)));
        fill(*value, m.value);
        *tail = VeskOrlHelper::newOrlMoAttributeValueStructMember(m.name, value);
        tail = &(*tail)->nextMember;
    }
    return head;
}

// A host container that frees itself.
class HostValue {
  public:
    explicit HostValue(const Value& v) { fill(_c, v); }
    explicit HostValue(const std::vector<Struct>& items) {
        _c.type = OrlOamSpiMoAttributeType_3_STRUCT;
        _c.nrOfValues = uint32_t(items.size());
        _c.values = static_cast<OrlMoAttributeValue_3*>(
            calloc(items.size() + 1, sizeof(OrlMoAttributeValue_3)));
        for (size_t i = 0; i < items.size(); ++i)
            _c.values[i].structMember = chain(items[i]);
    }
    ~HostValue() {
        if (_c.nrOfValues)
            VeskOrlHelper::freeAttrValueContainer(&_c);
        else
            free(_c.values);
    }
    HostValue(const HostValue&) = delete;
    HostValue& operator=(const HostValue&) = delete;
    Container* get() { return &_c; }

  private:
    Container _c{0, 0, nullptr};
};

using vesk::txtest::render;

// The station model, a database with ManagedElement=1 and the LTE MOs down to a frequency
// relation committed, and an open transaction.
class WriterFixture : public vesk::txtest::TransactionTest {
  protected:
    void SetUp() override {
        TransactionTest::SetUp();
        commitObject("ENodeBFunction=1", kMe);
        commitObject("EUtranCellFDD=1", kEnb);
        commitObject("EUtranFreqRelation=1", kCell);
    }
    void commitObject(const std::string& rdn, const std::string& parent) {
        put(rdn, parent, {}, true);
    }
    // Commits the open transaction and opens the next one.
    void commitAndReopen() {
        ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle(), false), 0);
        _tx.reset(new TibVeskCM::VeskDBTransaction(12, _portal));
        ASSERT_EQ(_tx->startTransactionToDB(), 0);
    }
    // getMoAttribute in the transaction's view, as text.
    std::string read(const std::string& dn, const std::string& name) {
        OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
        _tx->getMoAttribute(dn, name, &result);
        std::string text = render(result.container);
        if (result.release)
            result.release(result.container);
        return text;
    }
    // The stored attribute as "type:text" ("absent" / "no object"), regular or pending.
    std::string stored(const std::string& dn, const std::string& name, bool pending = false) {
        std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle()));
        if (!object)
            return "no object";
        Attribute* a = pending ? object->getAlternateAttribute(name) : object->getAttribute(name);
        if (a == nullptr)
            return "absent";
        return std::to_string(a->type) + ":" + a->ToStr();
    }
    bool exists(const std::string& dn) {
        std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle()));
        return object != nullptr;
    }

    agent_model_test::ModelHarness _model{agent_model_test::stationSchema(),
                                          agent_model_test::kTestDataDir + "/none.xml"};
};

}  // namespace writer_test

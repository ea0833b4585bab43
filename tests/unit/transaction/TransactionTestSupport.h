// Shared set-up of the tests of the agent's transaction: a station database in a fresh folder with
// "ManagedElement=1" committed, an open VeskDBTransaction over it, and a text form of the
// containers the transaction hands out.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"
#include "transaction/VeskDBTransaction.h"

namespace vesk::txtest {

// An attribute as the agent builds one: not hidden, value set, modified.
inline Attribute* attr(const std::string& name, AttributeVariant value, int type) {
    return new Attribute(false, name, value, 0, true,
                         static_cast<IPCData::AttributeValueType>(type), true, false);
}

std::string render(const OrlMoAttributeValueContainer_3* c, int as);

inline std::string renderValue(const OrlMoAttributeValue_3& v, int as) {
    std::ostringstream out;
    switch (as) {
        case 1:
            out << int(v.i8);
            break;
        case 2:
            out << v.i16;
            break;
        case 3:
            out << v.i32;
            break;
        case 4:
            out << v.i64;
            break;
        case 5:
            out << unsigned(v.u8);
            break;
        case 6:
            out << v.u16;
            break;
        case 7:
            out << v.u32;
            break;
        case 8:
            out << v.u64;
            break;
        case 9:
            out << '"' << v.theString << '"';
            break;
        case 10:
            out << (v.theBool ? "true" : "false");
            break;
        case 11:
            out << '"' << v.moRef << '"';
            break;
        case 12:
            out << v.theEnum;
            break;
        case 16:
            out << v.decimal64;
            break;
        case 14:
            out << '{';
            for (auto* m = v.structMember; m != nullptr; m = m->nextMember) {
                out << m->memberName << '=' << render(m->memberValue, m->memberValue->type)
                    << (m->nextMember ? " " : "");
            }
            out << '}';
            break;
        default:
            out << '?';
    }
    return out.str();
}

// "type:[v1,v2]" with each value read as `as` says; strings quoted, structs as {name=type:[...]}.
inline std::string render(const OrlMoAttributeValueContainer_3* c, int as) {
    if (c == nullptr)
        return "null";
    std::ostringstream out;
    out << c->type << ":[";
    for (uint32_t i = 0; i < c->nrOfValues; ++i)
        out << (i ? "," : "") << (c->values ? renderValue(c->values[i], as) : "no-values");
    out << ']';
    return out.str();
}

// Each value read as the container's own type says.
inline std::string render(const OrlMoAttributeValueContainer_3* c) {
    return render(c, c == nullptr ? 0 : c->type);
}

// A station database in its own folder with "ManagedElement=1" committed, and transaction 7
// started on it.
class TransactionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-tx-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        std::string error;
        ASSERT_TRUE(vesk::db::open(_dir, &error)) << error;
        DBObject me("ManagedElement=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED);
        ASSERT_NE(IDatabase::insert(&me, 0), 0);
        _tx.reset(new TibVeskCM::VeskDBTransaction(7, _portal));
        ASSERT_EQ(_tx->startTransactionToDB(), 0);
    }
    void TearDown() override {
        _tx.reset();
        vesk::db::close();
        std::filesystem::remove_all(_dir);
    }
    int handle() const { return _tx->getDatabaseTxHandle(); }
    // Inserts `key` under `parent` with the attributes, in the transaction (or committed).
    void put(const std::string& key, const std::string& parent,
             std::initializer_list<Attribute*> attributes, bool committed = false) {
        DBObject object(key, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                        parent, 1);
        for (Attribute* a : attributes)
            object.addAttribute(*a);
        ASSERT_NE(IDatabase::insert(&object, committed ? 0 : handle()), 0) << key;
    }

    std::string _dir;
    OrlMgmtSpiInterfacePortal_1 _portal{};
    std::unique_ptr<TibVeskCM::VeskDBTransaction> _tx;
};

}  // namespace vesk::txtest

// The change gates and the object implementer routing of the real agent, loaded in the reference
// host on the demo station: which session may write at which AI phase, what registered
// implementers receive and in which order, and how their answers are waited out or stop a write.
// Writes that pass end in the transaction's own write; what that does is not looked at here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <string>
#include <tuple>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "station/framework/FrameworkControl.h"
#include "station/log/LogControl.h"

namespace {

using namespace vesk::e2e;
using vesk::host::Host;
using vesk::log::LogCapture;
typedef OrlOamSpiManagedObject_3 Mo;

const char* const kAttempts = "DOLM_NUM_OI_SETMOATTR_ATTEMPTS";

// What the test implementers saw, in call order: "<id>:<operation>:<details>".
std::vector<std::string> g_calls;

// One test implementer: a managed object and a transactional resource record whose answers the
// test sets. A dn implementer reads values in the host's form, a class implementer in the older
// one (enumerations cut to 16 bits), so each records the enumeration it reads.
struct Behaviour {
    OrlReturnT join = OrlOk;
    std::deque<OrlReturnT> setAnswers;  // then setDefault
    OrlReturnT setDefault = OrlOk;
    OrlReturnT create = OrlOk;
    OrlReturnT remove = OrlOk;
    bool readsOldForm = false;
};

template <int N>
struct Implementer {
    static Behaviour behaviour;
    static Mo mo;
    static OrlOamSpiTransactionalResource_2 tx;
    static std::string name() { return "TestOI" + std::to_string(N); }

    static OrlReturnT join(OrlTxHandleT) {
        g_calls.push_back(std::to_string(N) + ":join");
        return behaviour.join;
    }
    static OrlReturnT set(OrlTxHandleT, const char* dn, const char* attr,
                          const OrlMoAttributeValueContainer_3* value) {
        long long seen =
            behaviour.readsOldForm
                ? reinterpret_cast<const OrlMoAttributeValueContainer*>(value)->values[0].theEnum
                : value->values[0].theEnum;
        g_calls.push_back(std::to_string(N) + ":set:" + dn + ":" + attr + "=" +
                          std::to_string(seen));
        if (behaviour.setAnswers.empty())
            return behaviour.setDefault;
        OrlReturnT rc = behaviour.setAnswers.front();
        behaviour.setAnswers.pop_front();
        return rc;
    }
    static OrlReturnT create(OrlTxHandleT, const char* parent, const char* cls, const char*,
                             const char* key, OrlMoNamedAttributeValueContainer_3**) {
        g_calls.push_back(std::to_string(N) + ":create:" + parent + "," + cls + "=" + key);
        return behaviour.create;
    }
    static OrlReturnT remove(OrlTxHandleT, const char* dn) {
        g_calls.push_back(std::to_string(N) + ":delete:" + dn);
        return behaviour.remove;
    }
    // Offers both records to the host's portal with the managed object version given.
    static void offer(Host& host, const char* moVersion) {
        static std::string component;
        component = name();
        behaviour = Behaviour();
        mo = Mo();
        mo.header = {component.c_str(), "OrlOamSpiManagedObject", moVersion};
        mo.setMoAttribute = set;
        mo.createMo = create;
        mo.deleteMo = remove;
        tx = OrlOamSpiTransactionalResource_2();
        tx.header = {component.c_str(), "OrlOamSpiTransactionalResource", "2"};
        tx.join = join;
        host.provideService(&mo.header);
        host.provideService(&tx.header);
    }
};
template <int N>
Behaviour Implementer<N>::behaviour;
template <int N>
Mo Implementer<N>::mo;
template <int N>
OrlOamSpiTransactionalResource_2 Implementer<N>::tx;

typedef Implementer<1> DnOI;
typedef Implementer<2> ClassOI;
typedef Implementer<3> OtherClassOI;

class GatesTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
        void* record = nullptr;
        ASSERT_EQ(_host->portal().getInterface("VESKCMSAcomponent",
                                               "OrlOamSpiRegisterObjectImplementer", "2", &record),
                  OrlOk);
        _register = static_cast<OrlOamSpiRegisterObjectImplementer_2*>(record);
        DnOI::offer(*_host, "1");
        ClassOI::offer(*_host, "3");
        OtherClassOI::offer(*_host, "3");
        ClassOI::behaviour.readsOldForm = OtherClassOI::behaviour.readsOldForm = true;
        g_calls.clear();
        unsetenv(kAttempts);
        vesk::station::setTimeScale(0);
    }
    void TearDown() override {
        if (_host)
            _host->closeSession();
        HostFixture::TearDown();
        unsetenv(kAttempts);
        vesk::station::setTimeScale(1);
    }
    void setPhase(int phase) {
        ASSERT_NE(IDatabase::setAttribute("OAM", 1, "AI_phase", AttributeVariant(phase), false,
                                          IPCData::AVT_INT32, false, 0),
                  0);
    }
    // Sets an enumeration attribute whose value does not fit the older 16-bit form.
    OrlReturnT setEnum(OrlTxHandleT tx, const std::string& dn, const char* attr) {
        OrlMoAttributeValue_3 value = {};
        value.theEnum = 0x10005;
        OrlMoAttributeValueContainer_3 container = {OrlOamSpiMoAttributeType_3_ENUM, 1, &value};
        return _host->callAgent(&Mo::setMoAttribute, tx, dn.c_str(), attr, &container);
    }
    OrlReturnT setUInt(OrlTxHandleT tx, const std::string& dn, const char* attr, uint32_t v) {
        OrlMoAttributeValue_3 value = {};
        value.u32 = v;
        OrlMoAttributeValueContainer_3 container = {OrlOamSpiMoAttributeType_3_UINT32, 1, &value};
        return _host->callAgent(&Mo::setMoAttribute, tx, dn.c_str(), attr, &container);
    }
    OrlReturnT create(OrlTxHandleT tx, const char* cls, const char* key) {
        OrlMoNamedAttributeValueContainer_3* none[] = {nullptr};
        return _host->callAgent(&Mo::createMo, tx, kEnb.c_str(), cls, "id", key, none);
    }
    template <int N>
    OrlReturnT registerDn(const std::string& dn) {
        return _register->registerDn(Implementer<N>::mo.header, Implementer<N>::tx.header,
                                     dn.c_str());
    }
    template <int N>
    OrlReturnT registerClass(const std::string& path) {
        return _register->registerClass(Implementer<N>::mo.header, Implementer<N>::tx.header,
                                        path.c_str());
    }

    OrlOamSpiRegisterObjectImplementer_2* _register = nullptr;
};

// The gate table below the integrated phase: each row is a session (or none) and whether a write
// of "tac", a write of "rbsConfigLevel", a creation and a deletion pass.
enum Op { kSetTac, kSetLevel, kCreate, kDelete };
struct GateRow {
    const char* label;
    int phase;
    int protocol;  // -1: no session bound
    const char* user;
    bool allowed[4];
};
const GateRow kRows[] = {
    {"NoSession", 2, -1, "", {true, true, true, false}},
    {"Protocol0Oper", 2, vesk::host::kProtocolUnknown, "oper", {true, true, true, false}},
    {"NetconfIcfa", 2, vesk::host::kProtocolNetconf, "icfa", {true, true, true, false}},
    {"NetconfOper", 2, vesk::host::kProtocolNetconf, "oper", {false, true, false, false}},
    {"CliIcfa", 2, vesk::host::kProtocolCli, "icfa", {false, true, false, false}},
    {"CliOper", 2, vesk::host::kProtocolCli, "oper", {false, true, false, false}},
    {"MissingPhaseCliOper", -2, vesk::host::kProtocolCli, "oper", {false, true, false, false}},
    {"IntegratedCliOper", 4, vesk::host::kProtocolCli, "oper", {true, true, true, true}},
};
// Failure messages name the row, not its bytes.
void PrintTo(const GateRow& row, std::ostream* os) {
    *os << row.label;
}

const char* const kOpNames[] = {"SetTac", "SetRbsConfigLevel", "Create", "Delete"};

class GateTableTest : public GatesTest,
                      public ::testing::WithParamInterface<std::tuple<GateRow, Op>> {};

TEST_P(GateTableTest, RefusesWithTryAgainAndSaysWhy) {
    const GateRow& row = std::get<0>(GetParam());
    const Op op = std::get<1>(GetParam());
    if (row.phase == -2) {
        ASSERT_NE(IDatabase::deleteObj("OAM", 1, 0), 0);
    } else {
        setPhase(row.phase);
    }
    OrlTxHandleT tx = begin();
    if (row.protocol >= 0)
        _host->openSession(row.protocol, row.user);
    LogCapture log;
    OrlReturnT rc = OrlOk;
    std::string refusal;
    const std::string phase = std::to_string(row.phase);
    switch (op) {
        case kSetTac:
        case kSetLevel: {
            const char* attr = op == kSetTac ? "tac" : "rbsConfigLevel";
            rc = setUInt(tx, kCell, attr, 7);
            refusal = std::string("VeskMoImpl::setMoAttribute(): Cannot set attribute ") + attr +
                      ", MO " + kCell + ", AI_phase is " + phase + " ";
            break;
        }
        case kCreate:
            rc = create(tx, "EUtranCellFDD", "9");
            refusal = "VeskMoImpl::createMo(): Cannot create MO '" + kEnb +
                      ",EUtranCellFDD', AI_phase is " + phase + " ";
            break;
        case kDelete:
            rc = _host->callAgent(&Mo::deleteMo, tx, kCell.c_str());
            refusal = "VeskMoImpl::deleteMo(): Cannot delete MO, AI_phase is " + phase + " ";
            break;
    }
    if (row.allowed[op]) {
        EXPECT_NE(rc, OrlTryAgain);
        EXPECT_EQ(log.countContaining("Cannot "), 0u);
    } else {
        EXPECT_EQ(rc, OrlTryAgain);
        EXPECT_EQ(log.count(refusal, VESK_LOG_ERROR), 1u);
    }
    // Below the integrated phase set and create say that they look for an exception.
    const bool looked = op != kDelete && row.phase < 4;
    EXPECT_EQ(log.count("VeskMoImpl::IsDatabaseChangeAllowed()-> AI phase is " + phase +
                            ", AI_completed not yet reached, checking MOM change exception cases.",
                        VESK_LOG_INFO),
              looked ? 1u : 0u);
    EXPECT_EQ(log.count("VeskMoImpl::IsDatabaseChangeAllowed()-> AIM icf parsing ongoing"),
              looked && std::string(row.label) == "NetconfIcfa" ? 1u : 0u);
    _host->abort(tx);
}

INSTANTIATE_TEST_SUITE_P(PhaseProtocolUser, GateTableTest,
                         ::testing::Combine(::testing::ValuesIn(kRows),
                                            ::testing::Values(kSetTac, kSetLevel, kCreate,
                                                              kDelete)),
                         [](const ::testing::TestParamInfo<std::tuple<GateRow, Op>>& info) {
                             return std::string(std::get<0>(info.param).label) + "_" +
                                    kOpNames[std::get<1>(info.param)];
                         });

TEST_F(GatesTest, ImplementersAreJoinedAndAskedDnFirstThenClassesInAddressOrder) {
    setPhase(4);
    ASSERT_EQ(registerDn<1>(kCell), OrlOk);
    ASSERT_EQ(registerClass<2>(kCellPath), OrlOk);
    ASSERT_EQ(registerClass<3>(kCellPath), OrlOk);
    ASSERT_EQ(registerClass<2>(kCellPath + "/Other"), OrlOk);  // another path: never asked
    setenv(kAttempts, "3", 1);
    DnOI::behaviour.setAnswers = {OrlTryAgain, OrlTryAgain, OrlOk};
    DnOI::behaviour.join = OrlAlreadyJoined;
    OrlTxHandleT tx = begin();
    LogCapture log;
    EXPECT_NE(setEnum(tx, kCell, "administrativeState"), OrlTryAgain);

    const bool twoFirst = &ClassOI::tx < reinterpret_cast<void*>(&OtherClassOI::tx);
    const std::string a = twoFirst ? "2" : "3", b = twoFirst ? "3" : "2";
    const std::string dnSet = "1:set:" + kCell + ":administrativeState=65541";
    const std::string classSet = ":set:" + kCell + ":administrativeState=5";
    const std::vector<std::string> expected = {
        "1:join", dnSet, dnSet, dnSet, a + ":join", b + ":join", a + classSet, b + classSet};
    EXPECT_EQ(g_calls, expected);
    EXPECT_EQ(log.countContaining("Object Implementer's setMoAttribute() returned:1...delaying "
                                  "0,5 sec before continuing.",
                                  VESK_LOG_TRACE),
              2u);

    // An implementer of another dn or path is not asked.
    g_calls.clear();
    EXPECT_NE(setEnum(tx, kEnb + ",EUtranCellFDD=2", "administrativeState"), OrlTryAgain);
    EXPECT_EQ(g_calls.size(), 4u);  // two joins and two sets of the class implementers
    _host->abort(tx);
}

TEST_F(GatesTest, DnImplementerOnlyDelaysAWriteWhileAClassImplementerStopsIt) {
    setPhase(4);
    ASSERT_EQ(registerDn<1>(kCell), OrlOk);
    ASSERT_EQ(registerClass<2>(kCellPath), OrlOk);
    setenv(kAttempts, "3", 1);
    DnOI::behaviour.setDefault = OrlTryAgain;  // never gives in
    ClassOI::behaviour.setDefault = OrlValidationFailed;
    OrlTxHandleT tx = begin();
    LogCapture log;
    EXPECT_EQ(setEnum(tx, kCell, "administrativeState"), OrlValidationFailed);
    EXPECT_EQ(
        std::count(g_calls.begin(), g_calls.end(), "1:set:" + kCell + ":administrativeState=65541"),
        3);
    EXPECT_EQ(log.count("Object Implementer's setMoAttribute() returned failure:1", VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(g_calls.back(), "2:set:" + kCell + ":administrativeState=5");
    EXPECT_EQ(log.count("VeskMoImpl::checkSetMoAttributeClassOI(): Object Implementer's "
                        "setMoAttribute() returned failure: -9",
                        VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(log.count("VeskMoImpl::setMoAttribute - Unable to set attribute administrativeState "
                        "to " +
                            kCell + " - txHandle: " + std::to_string(tx) + " return: -9",
                        VESK_LOG_INFO),
              1u);

    // A class implementer that keeps asking for time fails the write with 1 after the attempts.
    ClassOI::behaviour.setDefault = OrlTryAgain;
    DnOI::behaviour.setDefault = OrlOk;
    g_calls.clear();
    EXPECT_EQ(setEnum(tx, kCell, "administrativeState"), OrlTryAgain);
    EXPECT_EQ(log.count("VeskMoImpl::checkSetMoAttributeClassOI(): Object Implementer's "
                        "setMoAttribute() returned: 1...delaying 0,5 sec before continuing.",
                        VESK_LOG_INFO),
              2u);

    // Not a number: 200 attempts. Zero: the implementer is not called and the write fails.
    setenv(kAttempts, "abc", 1);
    g_calls.clear();
    EXPECT_EQ(setEnum(tx, kCell, "administrativeState"), OrlTryAgain);
    EXPECT_EQ(
        std::count(g_calls.begin(), g_calls.end(), "2:set:" + kCell + ":administrativeState=5"),
        200);
    setenv(kAttempts, "0", 1);
    g_calls.clear();
    EXPECT_EQ(setEnum(tx, kCell, "administrativeState"), OrlTryAgain);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"1:join", "2:join"}));

    // A class implementer that cannot join stops the write before anything is asked.
    setenv(kAttempts, "3", 1);
    ClassOI::behaviour.join = OrlFailure;
    g_calls.clear();
    EXPECT_EQ(setEnum(tx, kCell, "administrativeState"), OrlFailure);
    EXPECT_EQ(g_calls.back(), "2:join");
    EXPECT_EQ(log.count("VeskMoImpl::checkSetMoAttributeClassOI(): Failed(-1) to join Object "
                        "Implementer in transaction.",
                        VESK_LOG_ERROR),
              1u);
    _host->abort(tx);
}

TEST_F(GatesTest, CreateAndDeleteGoToTheClassImplementerOfTheirPath) {
    setPhase(4);
    ASSERT_EQ(registerClass<2>(kCellPath), OrlOk);
    OrlTxHandleT tx = begin();
    ClassOI::behaviour.create = OrlValidationFailed;
    ClassOI::behaviour.remove = OrlValidationFailed;
    LogCapture log;
    EXPECT_EQ(create(tx, "EUtranCellFDD", "9"), OrlValidationFailed);
    EXPECT_EQ(_host->callAgent(&Mo::deleteMo, tx, kCell.c_str()), OrlValidationFailed);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"2:create:" + kEnb + ",EUtranCellFDD=9",
                                                 "2:delete:" + kCell}));
    EXPECT_EQ(log.count("VeskMoImpl::deleteMo - Unable to deleteMo dn " + kCell +
                            " - txHandle: " + std::to_string(tx) + " return: -9",
                        VESK_LOG_ERROR),
              1u);

    // An unknown transaction: create and delete answer OrlOk once the implementer agrees, and a
    // set answers OrlNotExist without asking anyone.
    ClassOI::behaviour = Behaviour();
    g_calls.clear();
    EXPECT_EQ(create(4242, "EUtranCellFDD", "9"), OrlOk);
    EXPECT_EQ(_host->callAgent(&Mo::deleteMo, 4242, kCell.c_str()), OrlOk);
    EXPECT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(setEnum(4242, kCell, "administrativeState"), OrlNotExist);
    EXPECT_EQ(g_calls.size(), 2u);
    _host->abort(tx);
}

TEST_F(GatesTest, DuplicateQciIsRefusedAgainstCommittedData) {
    setPhase(4);
    const std::string odq = kEnb + ",QciProfileOperatorDefined=1";
    DBObject object("QciProfileOperatorDefined=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED, kEnb, 1);
    object.addAttribute(*new Attribute(false, "qci", AttributeVariant(5), 0, true,
                                       IPCData::AVT_INT32, true, false));
    ASSERT_NE(IDatabase::insert(&object, 0), 0);
    OrlTxHandleT tx = begin();
    LogCapture log;
    // The object's own committed value counts as a duplicate.
    EXPECT_EQ(setUInt(tx, odq, "qci", 5), OrlValidationFailed);
    EXPECT_EQ(log.count("VeskLTEOI::validateQciProfileOperatorDefinedQci Duplicate qci:5 found for "
                        "QciProfileOperatorDefined: qci: 5",
                        VESK_LOG_INFO),
              1u);
    EXPECT_EQ(log.countContaining("Unable to set attribute"), 0u);
    EXPECT_NE(setUInt(tx, odq, "qci", 6), OrlValidationFailed);
    // Without a transaction the check alone decides.
    EXPECT_EQ(setUInt(4242, odq, "qci", 6), OrlOk);
    EXPECT_EQ(setUInt(4242, odq, "qci", 5), OrlValidationFailed);

    // A creation is checked in the transaction's view (where the first object now holds 6); the
    // last object of the class is taken as the new one and left out.
    DBObject second("QciProfileOperatorDefined=2", 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED, kEnb, 1);
    second.addAttribute(*new Attribute(false, "qci", AttributeVariant(6), 0, true,
                                       IPCData::AVT_INT32, true, false));
    ASSERT_NE(IDatabase::insert(&second, 0), 0);
    OrlMoNamedAttributeValueContainer_3 qci = {const_cast<char*>("qci"),
                                               {OrlOamSpiMoAttributeType_3_UINT32, 1, nullptr}};
    OrlMoAttributeValue_3 value = {};
    qci.attributeValue.values = &value;
    OrlMoNamedAttributeValueContainer_3* attributes[] = {&qci, nullptr};
    const char* cls = "QciProfileOperatorDefined";
    value.u32 = 6;
    EXPECT_EQ(_host->callAgent(&Mo::createMo, tx, kEnb.c_str(), cls, "id", "3", attributes),
              OrlValidationFailed);
    EXPECT_EQ(log.countContaining("Duplicate ODQ found at startup for qci:6 matching with qci: 6",
                                  VESK_LOG_TRACE),
              2u);
    value.u32 = 7;
    EXPECT_EQ(_host->callAgent(&Mo::createMo, tx, kEnb.c_str(), cls, "id", "3", attributes), OrlOk);
    _host->abort(tx);
}

TEST_F(GatesTest, RegistrationChecksVersionsKeepsPairsOnceAndWarnsOnUnknownPairs) {
    setPhase(4);
    LogCapture log;
    // Wrong versions are ignored, and the caller hears OrlOk.
    EXPECT_EQ(_register->registerClass(DnOI::mo.header, DnOI::tx.header, kCellPath.c_str()), OrlOk);
    EXPECT_EQ(log.count("registerClassOI(): Received Object Implementer class registration for "
                        "unsupported interface versions. Registration ignored.",
                        VESK_LOG_WARNING),
              1u);
    EXPECT_EQ(log.count("registerClassOI(): MO interface {TestOI1,OrlOamSpiManagedObject,1}, "
                        "TxResource interface {TestOI1,OrlOamSpiTransactionalResource,2}",
                        VESK_LOG_WARNING),
              1u);
    EXPECT_EQ(_register->registerDn(ClassOI::mo.header, ClassOI::tx.header, kCell.c_str()), OrlOk);
    EXPECT_EQ(log.count("Received Object Implementer Dn registration for unsupported interface "
                        "versions. Registration ignored.",
                        VESK_LOG_WARNING),
              1u);
    OrlTxHandleT tx = begin();
    setEnum(tx, kCell, "administrativeState");
    EXPECT_TRUE(g_calls.empty());

    // Twice the same pair: one element, asked once; one unregistration removes it.
    ASSERT_EQ(registerDn<1>(kCell), OrlOk);
    ASSERT_EQ(registerDn<1>(kCell), OrlOk);
    setEnum(tx, kCell, "administrativeState");
    EXPECT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(_register->unRegisterDn(DnOI::mo.header, DnOI::tx.header, kCell.c_str()), OrlOk);
    g_calls.clear();
    setEnum(tx, kCell, "administrativeState");
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(_register->unRegisterDn(DnOI::mo.header, DnOI::tx.header, kCell.c_str()), OrlOk);
    EXPECT_EQ(log.count("Received Object Implementer Dn unregistration but no registered dn and "
                        "interface pair is found for TxResource interface",
                        VESK_LOG_WARNING),
              1u);
    EXPECT_EQ(
        log.count("MO Interface interface {TestOI1,OrlOamSpiManagedObject,1}", VESK_LOG_WARNING),
        1u);
    EXPECT_EQ(_register->unRegisterClass(ClassOI::mo.header, ClassOI::tx.header, "/X"), OrlOk);
    EXPECT_EQ(log.count("unRegisterClassOI(): TxResource interface "
                        "{TestOI2,OrlOamSpiTransactionalResource,2}",
                        VESK_LOG_WARNING),
              1u);

    // A record the portal refuses: its code comes back and nothing is registered.
    _host->portal().refuse("TestOI2", "OrlOamSpiManagedObject", "3", OrlNotExist);
    EXPECT_EQ(registerClass<2>(kCellPath), OrlNotExist);
    EXPECT_EQ(log.count("registerClassOI(): Failed(-2) to get {TestOI2,OrlOamSpiManagedObject,3} "
                        "interface from Orl interface portal",
                        VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(
        log.count("registerClassOI(): Object Implementer DN registration failed.", VESK_LOG_ERROR),
        1u);
    _host->portal().clearRefusals();
    g_calls.clear();
    setEnum(tx, kCell, "administrativeState");
    EXPECT_TRUE(g_calls.empty());
    _host->abort(tx);
}

}  // namespace

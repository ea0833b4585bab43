// The real agent library loaded in the reference host: init, start and stop of both of its
// components, the interface fetches of start and their refusals, the session callbacks, the
// producer's registration with the event router, and what the library exports.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/orl/OrlEventRouter.h"
#include "station/log/LogControl.h"

namespace {

using namespace vesk::e2e;
using vesk::host::Host;
using vesk::log::LogCapture;

const char* const kInitLine = "[libtib_oam_cm_sa.so] -- tibLCMinit ...  \n";
const char* const kAlreadyStarted = "VeskCMComponent: received start when already started.";

const int kThreadContextStep = 5;

class AgentSpineTest : public HostFixture {
  protected:
    void load() { loadPlugin(VESK_AGENT_PATH); }
    // Error lines other than the host's own and the producer's note that this empty station
    // has no ManagedElement to name.
    size_t errors() {
        size_t n = 0;
        for (const vesk::log::LogLine& line : _log.lines()) {
            n += line.level == VESK_LOG_ERROR && line.text.rfind("host: ", 0) != 0 &&
                         line.text.find("ManagedElement=1 does not exist in DB!") ==
                             std::string::npos
                     ? 1
                     : 0;
        }
        return n;
    }
    // Puts "OAM" with one attribute into the committed database.
    void putOam(const std::string& name, AttributeVariant value, IPCData::AttributeValueType type) {
        DBObject oam("OAM", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED);
        oam.addAttribute(*new Attribute(false, name, value, 0, true, type, true, false));
        ASSERT_NE(IDatabase::insert(&oam, 0), 0);
    }

    LogCapture _log;
};

TEST_F(AgentSpineTest, InitRegistersTheAgentWithItsRecordsAndAsksNothingMore) {
    load();
    EXPECT_EQ(_log.count(kInitLine, VESK_LOG_INFO), 1u);
    EXPECT_EQ(_host->agentComponent(), "VESKCMSAcomponent");
    EXPECT_EQ(_host->components().names(), Names{"VESKCMSAcomponent"});
    for (const Fetch& t : kStartFetches) {
        EXPECT_EQ(fetches(t), 0) << t.interfaceName << " " << t.version;
    }

    OrlOamSpiManagedObject_3* mo = _host->agentManagedObject();
    ASSERT_NE(mo, nullptr);
    EXPECT_STREQ(mo->header.interfaceVersion, "3");
    void* const* moSlots = reinterpret_cast<void* const*>(&mo->setMoAttribute);
    for (int slot = 0; slot < 11; ++slot) {
        EXPECT_NE(moSlots[slot], nullptr) << "managed object slot " << slot + 1;
    }
    OrlOamSpiTransactionalResource_2* tx = _host->agentTransactionalResource();
    ASSERT_NE(tx, nullptr);
    void* const* txSlots = reinterpret_cast<void* const*>(&tx->join);
    for (int slot = 0; slot < 6; ++slot) {
        EXPECT_NE(txSlots[slot], nullptr) << "transactional resource slot " << slot + 1;
    }
    auto* reg = static_cast<OrlOamSpiRegisterObjectImplementer_2*>(
        _host->components().find("VESKCMSAcomponent", "OrlOamSpiRegisterObjectImplementer", "2"));
    ASSERT_NE(reg, nullptr);
    EXPECT_TRUE(reg->registerClass && reg->registerDn && reg->unRegisterClass && reg->unRegisterDn);
    EXPECT_EQ(tx->validate(7), OrlOk);

    // Requests reach the agent's front; a null dn throws into the caller.
    bool exists = true;
    EXPECT_EQ(
        _host->callAgent(&OrlOamSpiManagedObject_3::existsMo, 1ul, "ManagedElement=1", &exists),
        OrlNotExist);
    EXPECT_FALSE(exists);
    EXPECT_THROW(_host->callAgent(&OrlOamSpiManagedObject_3::deleteMo, 1ul,
                                  static_cast<const char*>(nullptr)),
                 std::logic_error);
    EXPECT_THROW(_host->callAgent(&OrlOamSpiManagedObject_3::getMoAttribute, 1ul,
                                  static_cast<const char*>(nullptr), "userLabel",
                                  static_cast<OrlMoAttributeValueResult_3*>(nullptr)),
                 std::logic_error);
}

TEST_F(AgentSpineTest, StartBringsUpBothComponentsAndStopOnlyReleasesTheCallbacks) {
    load();
    ASSERT_EQ(_host->start(), OrlOk);
    EXPECT_EQ(_host->components().started(), (Names{"VESKCMSAcomponent", "VESKOIcomponent"}));
    for (int step = 0; step < 7; ++step) {
        // The implementer component fetches the thread context in its init and again when the
        // host starts it.
        EXPECT_EQ(fetches(kStartFetches[step]), step == kThreadContextStep ? 3 : 1) << step;
    }
    EXPECT_EQ(fetches({"OrlOamSpiEventService", "OrlOamSpiEventRouter", "1"}), 1);
    EXPECT_EQ(_host->sessions().callbackCount(), 1u);
    EXPECT_EQ(_log.count("VeskMoImpl::initialize", VESK_LOG_INFO), 1u);
    EXPECT_TRUE(eventually([&] { return _log.count("VeskBrM: Entering stReady") == 1; }));
    EXPECT_EQ(_log.count("VeskBrM: Entering initial", VESK_LOG_INFO), 1u);
    EXPECT_EQ(_log.count("VeskBrM: Processing event evStartToOperate", VESK_LOG_INFO), 1u);
    EXPECT_TRUE(eventually([&] { return _log.countContaining("VeskSwM: Entering stReady") == 1; }));
    EXPECT_TRUE(eventually([&] {
        return _log.count(
                   "VeskCmEventProducer::FUNCTION_STATE_ENTER stInitialize ticketToDSet:0 "
                   "ticketTIBStatus:0 ",
                   VESK_LOG_INFO) == 1;
    }));
    EXPECT_EQ(errors(), 0u);

    auto* oiMo = static_cast<OrlOamSpiManagedObject_3*>(
        _host->components().find("VESKOIcomponent", "OrlOamSpiManagedObject", "3"));
    auto* oiTx = static_cast<OrlOamSpiTransactionalResource_2*>(
        _host->components().find("VESKOIcomponent", "OrlOamSpiTransactionalResource", "2"));
    ASSERT_TRUE(oiMo != nullptr && oiTx != nullptr);
    EXPECT_TRUE(oiMo->setMoAttribute && oiMo->createMo && oiMo->deleteMo);
    EXPECT_FALSE(oiMo->getMoAttribute || oiMo->action || oiMo->existsMo);
    EXPECT_TRUE(oiTx->join && oiTx->commit && oiTx->abort);
    EXPECT_FALSE(oiTx->prepare || oiTx->finish || oiTx->validate);
    EXPECT_EQ(oiTx->commit(3), OrlOk);

    _host->stop();
    EXPECT_EQ(_log.count(" VeskCMComponent::stop, unregistering session callbacks.", VESK_LOG_INFO),
              1u);
    EXPECT_EQ(_host->sessions().callbackCount(), 0u);
    EXPECT_TRUE(eventually([&] {
        return _log.count("VeskCmEventProducer evQuit - Unregister database notifications") == 1;
    }));

    // Stop cleared nothing: the next start only warns and fetches nothing of its own.
    ASSERT_EQ(_host->start(), OrlOk);
    EXPECT_EQ(_log.count(kAlreadyStarted, VESK_LOG_WARNING), 1u);
    EXPECT_EQ(fetches(kStartFetches[0]), 1);
    EXPECT_EQ(fetches(kStartFetches[6]), 1);
    EXPECT_EQ(_host->sessions().callbackCount(), 0u);
    EXPECT_EQ(_log.count("VeskMoImpl::initialize"), 1u);
    EXPECT_EQ(errors(), 0u);
    // The stop after it repeats the first with what is left: the registration is gone and the
    // producer has ended.
    _host->stop();
    EXPECT_EQ(_log.count(" VeskCMComponent::stop, Failed to unregister session callbacks",
                         VESK_LOG_ERROR),
              1u);
    EXPECT_EQ(_log.count("ReactiveStateMachine: event 1000 refused, the machine has terminated",
                         VESK_LOG_ERROR),
              1u);
    // This station has no "OAM": the producer still holds both its tickets (it registered them
    // before the host was up), which the first stop released.
    EXPECT_EQ(_log.countContaining("IDatabase::unRegisterToNotif: no subscription with ticket",
                                   VESK_LOG_ERROR),
              2u);

    _host->terminate();
    EXPECT_EQ(_host->components().names(), Names{"VESKOIcomponent"});
    _host->unload();
    EXPECT_EQ(errors(), 4u);
}

TEST_F(AgentSpineTest, TerminateBeforeStartUnregistersAndEnqueuesNothing) {
    load();
    _host->terminate();
    EXPECT_TRUE(_host->components().names().empty());
    _host->unload();
    EXPECT_EQ(_log.countContaining("VeskBrM"), 0u);
    EXPECT_EQ(_log.countContaining("VeskSwM"), 0u);
    EXPECT_EQ(_log.countContaining("ReactiveStateMachine"), 0u);
    EXPECT_EQ(errors(), 0u);
}

TEST_F(AgentSpineTest, RefusedInitIsLoggedAndReturned) {
    // A component of the same name already registered makes the host refuse the agent's record.
    static OrlMgmtSpiComponent squatter = {"VESKCMSAcomponent",
                                           "OrlMgmtSpiComponent",
                                           "1",
                                           nullptr,
                                           nullptr,
                                           nullptr,
                                           nullptr,
                                           nullptr};
    ASSERT_EQ(_host->components().add(&squatter), OrlOk);
    std::string error;
    EXPECT_EQ(_host->load(VESK_AGENT_PATH, &error), Host::kInitFailed);
    EXPECT_EQ(_log.count("VsekCMComponent: failed(-1) to register component", VESK_LOG_ERROR), 1u);
    _host->unload();
}

struct RefusalCase {
    int step;
    const char* text;
};
void PrintTo(const RefusalCase& c, std::ostream* out) {
    *out << "step " << c.step;
}

class AgentRefusalTest : public AgentSpineTest,
                         public ::testing::WithParamInterface<RefusalCase> {};

TEST_P(AgentRefusalTest, RefusedFetchEndsStartWithItsCodeAndTheStartedFlagFollowsTheStep) {
    const RefusalCase& c = GetParam();
    const Fetch& refused = kStartFetches[c.step];
    const OrlReturnT code = -20 - c.step;
    load();
    _host->refuseInterface(refused.service, refused.interfaceName, refused.version, code);
    EXPECT_EQ(_host->start(), code);
    char text[200];
    snprintf(text, sizeof text, c.text, code);
    EXPECT_EQ(_log.count(text, VESK_LOG_ERROR), 1u) << text;
    EXPECT_EQ(errors(), 1u);
    for (int step = c.step + 1; step < 7; ++step) {
        EXPECT_EQ(fetches(kStartFetches[step]), 0) << step;
    }
    EXPECT_EQ(_host->components().names(), Names{"VESKCMSAcomponent"});
    EXPECT_EQ(_host->sessions().callbackCount(), 0u);
    EXPECT_EQ(_log.count("VeskMoImpl::initialize"), 0u);

    _host->clearRefusals();
    EXPECT_EQ(_host->start(), OrlOk);
    if (c.step < kThreadContextStep) {
        // Not yet started: the second start runs in full.
        EXPECT_EQ(_log.count(kAlreadyStarted), 0u);
        EXPECT_EQ(fetches(refused), 2);
        EXPECT_EQ(_host->sessions().callbackCount(), 1u);
        EXPECT_EQ(_log.count("VeskMoImpl::initialize"), 1u);
        EXPECT_EQ(_host->components().started(), (Names{"VESKCMSAcomponent", "VESKOIcomponent"}));
    } else {
        // Marked started before the failed fetch: the next start only warns.
        EXPECT_EQ(_log.count(kAlreadyStarted, VESK_LOG_WARNING), 1u);
        EXPECT_EQ(fetches(refused), 1);
        EXPECT_EQ(_host->sessions().callbackCount(), 0u);
        EXPECT_EQ(_log.count("VeskMoImpl::initialize"), 0u);
        EXPECT_EQ(_log.countContaining("VeskBrM"), 0u);
        EXPECT_EQ(_host->components().started(), Names{"VESKCMSAcomponent"});
        // Without a session interface, stop says so and still succeeds.
        _host->stop();
        EXPECT_EQ(_log.count(" VeskCMComponent::stop, SPI session IF is NULL", VESK_LOG_ERROR), 1u);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EachStep, AgentRefusalTest,
    ::testing::Values(
        RefusalCase{0, "VeskCMComponent: failed(%i) to get OrlOamSpiTransaction_1T interface"},
        RefusalCase{1, "VeskCMComponent: failed(%i) to get OrlOamSpiTransaction_1T interface"},
        RefusalCase{2, "VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository interface"},
        RefusalCase{3, "VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository 2T interface"},
        RefusalCase{4, "VeskCMComponent: failed(%i) to get OrlOamSpiModelRepository 3T interface"},
        RefusalCase{5, "VeskCMComponent: failed(%i) to get OrlMgmtSpiThreadContext_2 interface"},
        RefusalCase{6, "VeskCMComponent: failed(%i) to get OrlMgmtSpiSession_1T interface"}),
    [](const ::testing::TestParamInfo<RefusalCase>& info) {
        return "Step" + std::to_string(info.param.step);
    });

TEST_F(AgentSpineTest, SessionCallbacksMarkTheOssConnectionOnceOverNetconf) {
    load();
    ASSERT_EQ(_host->start(), OrlOk);

    // Before the first configuration is parsed a session is only noted.
    uint64_t first = _host->openSession(vesk::host::kProtocolNetconf, "icfa");
    EXPECT_EQ(_log.count("Session variable found : TibSessionVariableProtocol_1 and Communication "
                         "protocol : 1 ",
                         VESK_LOG_INFO),
              1u);
    EXPECT_EQ(IDatabase::isPresentInDB("OAM", 1), 0);
    ASSERT_EQ(_host->closeSession(), OrlOk);
    char destroyed[100];
    snprintf(destroyed, sizeof destroyed, "VeskMoImpl::sessionDestroyedCallback - Handle %llu",
             static_cast<unsigned long long>(first));
    EXPECT_EQ(_log.count(destroyed, VESK_LOG_INFO), 1u);

    putOam("aiConfigParsed", AttributeVariant(true), IPCData::AVT_BOOL);
    _host->openSession(vesk::host::kProtocolUnknown, "someone");
    EXPECT_EQ(_log.count(" VeskMoImpl::sessionCreatedCallback(), Communication protocol was "
                         "unspecified.",
                         VESK_LOG_INFO),
              1u);
    _host->closeSession();
    _host->openSession(vesk::host::kProtocolCli, "operator");
    _host->closeSession();
    EXPECT_EQ(IDatabase::getAttribute("OAM", "ossConnectionEstablished", 0), nullptr);

    _host->openSession(vesk::host::kProtocolNetconf, "oss");
    Attribute* marker = IDatabase::getAttribute("OAM", "ossConnectionEstablished", 0);
    ASSERT_NE(marker, nullptr);
    EXPECT_TRUE(marker->value == AttributeVariant(true));
    EXPECT_EQ(_log.count(" VeskMoImpl::sessionCreatedCallback() ossConnectionEstablished = true "
                         "inserted to vesk database ",
                         VESK_LOG_INFO),
              1u);
    _host->closeSession();

    // Once marked, later sessions read no variable.
    const size_t found = _log.countContaining("Session variable found");
    _host->openSession(vesk::host::kProtocolNetconf, "oss");
    _host->closeSession();
    EXPECT_EQ(_log.countContaining("Session variable found"), found);
    EXPECT_EQ(_log.countContaining("Assumed that OSS connection already established."), 1u);
    EXPECT_EQ(errors(), 0u);
}

TEST_F(AgentSpineTest, SessionAtAiPhaseFourAssumesTheConnectionWithoutWriting) {
    putOam("AI_phase", AttributeVariant(4), IPCData::AVT_INT32);
    load();
    ASSERT_EQ(_host->start(), OrlOk);
    _host->openSession(vesk::host::kProtocolNetconf, "oss");
    _host->closeSession();
    EXPECT_EQ(_log.countContaining("Assumed that OSS connection already established."), 1u);
    EXPECT_EQ(_log.countContaining("Session variable found"), 0u);
    EXPECT_EQ(IDatabase::getAttribute("OAM", "ossConnectionEstablished", 0), nullptr);
}

// A router of the test's own that records what the producer does with it.
struct FakeRouter {
    static std::vector<std::string> calls;
    static OrlOamSpiEventProducer_1* producer;
    static OrlReturnT registerProducer(OrlOamSpiEventProducer_1* p, uint32_t* handle) {
        producer = p;
        *handle = 42;
        calls.push_back("register");
        return OrlOk;
    }
    static OrlReturnT addEvent(uint32_t handle, const char* type) {
        calls.push_back("add " + std::to_string(handle) + " " + type);
        return OrlOk;
    }
    static OrlReturnT removeEvent(uint32_t handle, const char* type) {
        calls.push_back("remove " + std::to_string(handle) + " " + type);
        return OrlOk;
    }
    static OrlReturnT unregisterProducer(uint32_t handle, OrlOamSpiEventProducer_1* p) {
        calls.push_back("unregister " + std::to_string(handle) + (p == producer ? " same" : ""));
        return OrlOk;
    }
};
std::vector<std::string> FakeRouter::calls;
OrlOamSpiEventProducer_1* FakeRouter::producer = nullptr;

TEST_F(AgentSpineTest, ProducerRegistersWithTheRouterAndLeavesItAtUnload) {
    static OrlOamSpiEventRouter_1 router = {{"OrlOamSpiEventService", "OrlOamSpiEventRouter", "1"},
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            FakeRouter::registerProducer,
                                            FakeRouter::addEvent,
                                            FakeRouter::removeEvent,
                                            FakeRouter::unregisterProducer};
    FakeRouter::calls.clear();
    _host->provideService(&router.header);
    load();
    ASSERT_EQ(_host->start(), OrlOk);
    EXPECT_EQ(FakeRouter::calls, (Names{"register", "add 42 OrlOamSpiCmEvent_Notification_1"}));
    OrlOamSpiEventProducer_1* producer = FakeRouter::producer;
    ASSERT_NE(producer, nullptr);
    ASSERT_TRUE(producer->addFilter && producer->removeFilter && producer->clearAll &&
                producer->doneWithValue);

    // Filters are told apart by consumer and by the very array given.
    OrlNameValuePair pair = {"dn", ".*"};
    OrlNameValuePair* filter[] = {&pair, nullptr};
    OrlNameValuePair* equalFilter[] = {&pair, nullptr};
    EXPECT_EQ(producer->addFilter(5, "OrlOamSpiCmEvent_Notification_1", filter), 0);
    EXPECT_EQ(producer->clearAll(), 0);
    EXPECT_EQ(producer->removeFilter(5, "OrlOamSpiCmEvent_Notification_1", equalFilter), -8);
    EXPECT_EQ(producer->removeFilter(6, "OrlOamSpiCmEvent_Notification_1", filter), -8);
    EXPECT_EQ(producer->removeFilter(5, "OrlOamSpiCmEvent_Notification_1", filter), 0);
    EXPECT_EQ(producer->removeFilter(5, "OrlOamSpiCmEvent_Notification_1", filter), -8);

    _host->stop();
    EXPECT_EQ(FakeRouter::calls.size(), 2u);  // stop leaves the registration in place
    _host->unload();
    EXPECT_EQ(FakeRouter::calls,
              (Names{"register", "add 42 OrlOamSpiCmEvent_Notification_1",
                     "remove 42 OrlOamSpiCmEvent_Notification_1", "unregister 42 same"}));
}

TEST(AgentExportsTest, EntryPointsAreExportedByTheirCNamesAndNothingElse) {
    std::string command = std::string("nm -D --defined-only ") + VESK_AGENT_PATH;
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::set<std::string> functions;
    std::vector<std::string> data;
    char line[1024];
    while (fgets(line, sizeof line, pipe) != nullptr) {
        char type = 0;
        char name[900];
        if (sscanf(line, "%*s %c %899s", &type, name) != 2) {
            continue;
        }
        std::string symbol = name;
        if (type == 'T' || type == 'W') {
            functions.insert(symbol);
        } else if (symbol.rfind("_ZT", 0) != 0) {
            // Besides the exception types' vtables and type info, which must stay visible
            // for catching across libraries, no data is exported.
            data.push_back(symbol);
        }
    }
    ASSERT_EQ(pclose(pipe), 0);
    // The life-cycle functions and the 25 entry points by their C names; besides them only the
    // function the station resolves by name.
    const std::set<std::string> others = {"orlLCMinit",
                                          "orlLCMterminate",
                                          "_init",
                                          "_fini",
                                          "vesk_cm_frequencyValidationResponse",
                                          "vesk_cm_createDefaultFrequencyMOs"};
    size_t entries = 0;
    for (const std::string& f : functions) {
        bool entry =
            (f.rfind("vesk_cm_", 0) == 0 || f.rfind("vsek_cm_", 0) == 0) && others.count(f) == 0;
        entries += entry ? 1 : 0;
        EXPECT_TRUE(entry || others.count(f) == 1) << "exported function " << f;
    }
    EXPECT_EQ(entries, 25u);
    EXPECT_TRUE(functions.count("orlLCMinit") == 1 && functions.count("orlLCMterminate") == 1);
    for (const std::string& d : data) {
        EXPECT_EQ(d, "boamSetAttributeReponseStatus") << "exported symbol " << d;
    }
}

}  // namespace

// The host driven through its C++ API with the probe plug-in loaded: lifecycle, interface
// fetches, re-entrant registration, sessions, operator messages and the transaction order.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/OrlController.h"

namespace {

using vesk::host::Host;

// One participant of the test's own, recording what the coordinator calls.
struct Recorder {
    static std::vector<std::string> calls;
    static OrlReturnT commitAnswer;
    static OrlReturnT note(const char* what, OrlReturnT answer) {
        calls.push_back(what);
        return answer;
    }
    static OrlReturnT validate(OrlTxHandleT) { return note("validate", OrlOk); }
    static OrlReturnT prepare(OrlTxHandleT) { return note("prepare", OrlOk); }
    static OrlReturnT commit(OrlTxHandleT) { return note("commit", commitAnswer); }
    static OrlReturnT abort(OrlTxHandleT) { return note("abort", OrlOk); }
    static OrlReturnT finish(OrlTxHandleT) { return note("finish", OrlOk); }
};
std::vector<std::string> Recorder::calls;
OrlReturnT Recorder::commitAnswer = OrlOk;

OrlOamSpiTransactionalResource_2 g_recorder = {
    {"TESTcomponent", "OrlOamSpiTransactionalResource", "2"},
    nullptr,
    Recorder::prepare,
    Recorder::commit,
    Recorder::abort,
    Recorder::finish,
    Recorder::validate};

class HostProbeTest : public vesk::e2e::HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        if (HasFatalFailure())
            return;
        load();
        Recorder::calls.clear();
        Recorder::commitAnswer = OrlOk;
    }
    void load() { loadPlugin(VESK_PROBE_PATH); }
    // Everything the probe noted since the last call, then forgets it.
    std::string journal() {
        auto read = reinterpret_cast<const char* (*)()>(_host->pluginSymbol("probe_journal"));
        auto clear = reinterpret_cast<void (*)()>(_host->pluginSymbol("probe_clear"));
        std::string text = read();
        clear();
        return text;
    }
    void answer(const char* name, int value) {
        auto set = reinterpret_cast<void (*)(const char*, int)>(_host->pluginSymbol("probe_set"));
        set(name, value);
    }
    OrlReturnT addRecorder(OrlTxHandleT tx) {
        void* record = nullptr;
        OrlReturnT rc = _host->portal().getInterface("OrlOamSpiTransactionService",
                                                     "OrlOamSpiTransaction", "2", &record);
        EXPECT_EQ(rc, OrlOk);
        return static_cast<OrlOamSpiTransaction_2*>(record)->registerParticipant(tx, &g_recorder);
    }
};

using Names = std::vector<std::string>;

TEST_F(HostProbeTest, LifecycleStartsBothComponentsAndStopsThemInReverse) {
    EXPECT_EQ(journal(), "init;");
    EXPECT_EQ(_host->agentComponent(), "PROBEcomponent");
    EXPECT_EQ(_host->components().names(), Names{"PROBEcomponent"});

    ASSERT_EQ(_host->start(), OrlOk);
    // The implementer component registered inside the agent's start, was found by its component
    // name at once, and was started after it.
    EXPECT_EQ(journal(),
              "start 0;callbacks 0;router 0;oi-registered 0;register-class /Probe/Thing 0;"
              "oi.start 0;");
    EXPECT_EQ(_host->components().started(), (Names{"PROBEcomponent", "PROBEOIcomponent"}));
    EXPECT_EQ(OrlController::getStatus(), OrlController::TIB_RUNNING);
    EXPECT_EQ(_host->sessions().callbackCount(), 1u);

    EXPECT_EQ(_host->start(), OrlOk);  // nothing left to start
    EXPECT_EQ(journal(), "");

    _host->stop();
    EXPECT_EQ(journal(), "oi.stop 0;stop 0;uncallbacks 0;");
    EXPECT_EQ(OrlController::getStatus(), OrlController::TIB_SHUTTING_DOWN);
    EXPECT_EQ(_host->sessions().callbackCount(), 0u);

    ASSERT_EQ(_host->start(), OrlOk);  // a second start reaches both components again
    EXPECT_EQ(journal(), "start 0;already-started;oi.start 0;");
    _host->stop();
    journal();

    _host->terminate();
    EXPECT_EQ(journal(), "terminate;unregistered 0;");
    EXPECT_EQ(_host->components().names(), Names{"PROBEOIcomponent"});
    _host->unload();
    EXPECT_TRUE(_host->components().names().empty());
    EXPECT_EQ(OrlController::getStatus(), OrlController::TIB_STOPPED);
}

TEST_F(HostProbeTest, TerminateBeforeStartUnregistersWithoutStarting) {
    _host->terminate();
    EXPECT_EQ(journal(), "init;terminate;unregistered 0;");
    EXPECT_TRUE(_host->components().names().empty());
    EXPECT_EQ(_host->start(), OrlOk);
    EXPECT_EQ(journal(), "");
}

TEST_F(HostProbeTest, ComponentRecordsAreReachableByComponentName) {
    ASSERT_EQ(_host->start(), OrlOk);
    void* record = nullptr;
    ASSERT_EQ(_host->portal().getInterface("PROBEOIcomponent", "OrlOamSpiTransactionalResource",
                                           "2", &record),
              OrlOk);
    auto* oiTx = static_cast<OrlOamSpiTransactionalResource_2*>(record);
    EXPECT_STREQ(oiTx->header.componentName, "PROBEOIcomponent");
    EXPECT_EQ(_host->portal().getInterface("PROBEOIcomponent", "OrlOamSpiTransactionalResource",
                                           "3", &record),
              OrlNotExist);

    void** array = nullptr;
    ASSERT_EQ(_host->portal().getInterfaceArray("OrlOamSpiManagedObject", "3", &array), OrlOk);
    ASSERT_NE(array[0], nullptr);
    ASSERT_NE(array[1], nullptr);
    EXPECT_EQ(array[2], nullptr);
    EXPECT_EQ(array[0], _host->agentManagedObject());
    EXPECT_STREQ(static_cast<OrlMgmtSpiInterface_1*>(array[1])->componentName, "PROBEOIcomponent");
}

TEST_F(HostProbeTest, RefusedFetchAtEachStepFailsStartUntilAllowed) {
    const vesk::e2e::Fetch* steps = vesk::e2e::kStartFetches;
    for (int step = 0; step < vesk::e2e::kStartFetchCount; ++step) {
        SCOPED_TRACE(step + 1);
        _host->refuseInterface(steps[step].service, steps[step].interfaceName, steps[step].version,
                               -7);
        journal();
        std::string error;
        EXPECT_EQ(_host->start(&error), -7);
        EXPECT_EQ(error, "component PROBEcomponent failed to start (-7)");
        EXPECT_EQ(journal(), "start 0;start-failed " + std::to_string(step + 1) + " -7;");
        EXPECT_TRUE(_host->components().started().empty());
        if (step < 6) {
            EXPECT_EQ(fetches(steps[step + 1]), 0) << "no fetch after the refused one";
        }
        _host->clearRefusals();
    }
    EXPECT_EQ(_host->start(), OrlOk);
    EXPECT_EQ(_host->components().started().size(), 2u);
}

TEST_F(HostProbeTest, SessionsReachThePluginAndMessagesStayWithTheirThread) {
    ASSERT_EQ(_host->start(), OrlOk);
    journal();
    uint64_t session = _host->openSession(vesk::host::kProtocolNetconf, "icfa");
    EXPECT_EQ(journal(), "created " + std::to_string(session) + " 1 icfa;");

    OrlMoAttributeValueContainer_3 value{OrlOamSpiMoAttributeType_3_INT32, 0, nullptr};
    EXPECT_EQ(
        _host->callAgent(&OrlOamSpiManagedObject_3::setMoAttribute, 0ul, "Probe=1", "x", &value),
        OrlOk);
    EXPECT_EQ(journal(), "set 0 Probe=1 x by icfa/1;");
    EXPECT_EQ(_host->messages(), Names{"probe saw x"});

    std::thread other([this, &value] {
        // No session is bound here, and the first thread's messages are not this request's.
        EXPECT_EQ(_host->callAgent(&OrlOamSpiManagedObject_3::setMoAttribute, 0ul, "Probe=1", "y",
                                   &value),
                  OrlOk);
        EXPECT_EQ(_host->messages(), Names{"probe saw y"});
    });
    other.join();
    EXPECT_EQ(journal(), "set 0 Probe=1 y by -/-1;");
    EXPECT_EQ(_host->messages(), Names{"probe saw x"});

    bool exists = false;
    EXPECT_EQ(_host->callAgent(&OrlOamSpiManagedObject_3::existsMo, 0ul, "Probe=1", &exists),
              OrlOk);
    EXPECT_TRUE(exists);
    EXPECT_TRUE(_host->messages().empty()) << "a new request starts without messages";
    uint64_t count = 0;
    EXPECT_EQ(
        _host->callAgent(&OrlOamSpiManagedObject_3::countMoChildren, 0ul, "Probe=1", "X", &count),
        OrlFailure)
        << "a null slot is not called";

    EXPECT_EQ(_host->closeSession(), OrlOk);
    EXPECT_EQ(_host->closeSession(), OrlNotExist);
    journal();
    _host->stop();
    journal();
    _host->openSession(vesk::host::kProtocolCli, "operator");
    _host->closeSession();
    EXPECT_EQ(journal(), "") << "callbacks were unregistered at stop";
}

TEST_F(HostProbeTest, CoordinatorDrivesParticipantsInOrderAndAbortsAllOnFailure) {
    ASSERT_EQ(_host->start(), OrlOk);
    journal();

    OrlTxHandleT tx = 0;
    ASSERT_EQ(_host->begin(&tx), OrlOk);
    EXPECT_EQ(journal(), "join " + std::to_string(tx) + ";");
    EXPECT_EQ(_host->transactions().join(tx, _host->agentTransactionalResource()),
              OrlAlreadyJoined);
    EXPECT_EQ(journal(), "") << "never joined twice";
    ASSERT_EQ(addRecorder(tx), OrlOk);
    ASSERT_EQ(addRecorder(tx), OrlOk);  // kept once
    EXPECT_EQ(_host->commit(tx), OrlOk);
    std::string t = std::to_string(tx);
    EXPECT_EQ(journal(), "validate " + t + ";prepare " + t + ";commit " + t + ";oi.commit " + t +
                             ";finish " + t + ";");
    EXPECT_EQ(Recorder::calls, (Names{"validate", "prepare", "commit", "finish"}));
    EXPECT_EQ(_host->commit(tx), OrlNotExist);

    // The probe refuses at prepare: everyone gets one abort, the recorder is never prepared.
    Recorder::calls.clear();
    answer("prepare", OrlValidationFailed);
    ASSERT_EQ(_host->begin(&tx), OrlOk);
    ASSERT_EQ(addRecorder(tx), OrlOk);
    EXPECT_EQ(_host->commit(tx), OrlValidationFailed);
    t = std::to_string(tx);
    EXPECT_EQ(journal(), "join " + t + ";validate " + t + ";prepare " + t + ";abort " + t +
                             ";oi.abort " + t + ";finish " + t + ";");
    EXPECT_EQ(Recorder::calls, (Names{"validate", "abort", "finish"}));

    // The recorder refuses at commit after the probe committed.
    Recorder::calls.clear();
    answer("prepare", OrlOk);
    Recorder::commitAnswer = OrlFailure;
    ASSERT_EQ(_host->begin(&tx), OrlOk);
    ASSERT_EQ(addRecorder(tx), OrlOk);
    EXPECT_EQ(_host->commit(tx), OrlFailure);
    t = std::to_string(tx);
    EXPECT_EQ(journal(), "join " + t + ";validate " + t + ";prepare " + t + ";commit " + t +
                             ";oi.commit " + t + ";abort " + t + ";oi.abort " + t + ";finish " + t +
                             ";");
    EXPECT_EQ(Recorder::calls, (Names{"validate", "prepare", "commit", "abort", "finish"}));
    EXPECT_FALSE(_host->transactions().isOpen(tx));
}

TEST_F(HostProbeTest, DiscardAndFailedJoinEndTheTransaction) {
    ASSERT_EQ(_host->start(), OrlOk);
    journal();
    OrlTxHandleT tx = 0;
    ASSERT_EQ(_host->begin(&tx), OrlOk);
    EXPECT_EQ(_host->abort(tx), OrlOk);
    std::string t = std::to_string(tx);
    EXPECT_EQ(journal(), "join " + t + ";abort " + t + ";oi.abort " + t + ";finish " + t + ";");

    answer("join", OrlFailure);
    EXPECT_EQ(_host->begin(&tx), OrlFailure);
    t = std::to_string(tx);
    EXPECT_EQ(journal(), "join " + t + ";abort " + t + ";oi.abort " + t + ";finish " + t + ";");
    EXPECT_FALSE(_host->transactions().isOpen(tx));
}

}  // namespace

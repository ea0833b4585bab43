// The host driven through its C++ API and its shell with the probe plug-in loaded: lifecycle,
// interface fetches, re-entrant registration, sessions, operator messages, the transaction order,
// and the write commands with the host's own object implementers.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/OrlController.h"

namespace {

using namespace vesk::e2e;

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

class HostProbeTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        if (HasFatalFailure())
            return;
        loadPlugin(VESK_PROBE_PATH);
        Recorder::calls.clear();
        Recorder::commitAnswer = OrlOk;
    }
    OrlReturnT addRecorder(OrlTxHandleT tx) {
        void* record = nullptr;
        OrlReturnT rc = _host->portal().getInterface("OrlOamSpiTransactionService",
                                                     "OrlOamSpiTransaction", "2", &record);
        EXPECT_EQ(rc, OrlOk);
        return static_cast<OrlOamSpiTransaction_2*>(record)->registerParticipant(tx, &g_recorder);
    }
};

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

TEST_F(HostProbeTest, RefusedFetchAtEachStepFailsStartUntilAllowed) {
    const Fetch* steps = kStartFetches;
    for (int step = 0; step < kStartFetchCount; ++step) {
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

// The write commands of the host's shell with the probe: what the plug-in is asked, its refusals
// and operator messages as the operator sees them, registration through the plug-in's record.
class ProbeWriteTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_PROBE_PATH, false));
        openShell();
        journal();
    }
};

TEST_F(ProbeWriteTest, RefusalsShowTheCodeByNameAndTheOperatorMessages) {
    answer("set", OrlValidationFailed);
    Json refused = run("set " + kCell + " userLabel \"east cell\"");
    EXPECT_EQ(refused["code"], "OrlValidationFailed");
    EXPECT_EQ(refused["rc"], OrlValidationFailed);
    EXPECT_EQ(refused["ok"], false);
    EXPECT_EQ(refused["error"], "cannot set userLabel of " + kCell);
    EXPECT_EQ(refused["messages"], Json::array({"probe saw userLabel"}));
    std::string seen = journal();
    EXPECT_NE(seen.find("set 1 " + kCell + " userLabel by operator/2;abort 1"), std::string::npos)
        << seen;

    // The same answer for people.
    openShell(false);
    EXPECT_EQ(runText("set " + kCell + " userLabel x"),
              "OrlValidationFailed: cannot set userLabel of " + kCell +
                  "\nmessage: probe saw userLabel\n");
    answer("set", OrlOk);
    EXPECT_EQ(runText("set " + kCell + " userLabel x"), "OrlOk\nmessage: probe saw userLabel\n");
}

TEST_F(ProbeWriteTest, InputThatDoesNotFitIsRefusedBeforeThePlugInIsAsked) {
    const std::string commands[] = {
        "set " + kCell + " administrativeState OPEN",
        "set " + kCell + " cellId 1 2",
        "set " + kCell + " colour red",
        "set ManagedElement=1,EUtranCellFDD=1 userLabel x",
        "create " + kEnb + " EUtranCellFDD",
        "create " + kEnb + " Nothing=3",
        "create " + kEnb + " EUtranCellFDD=3 cellId=many",
        "create " + kEnb + " EUtranCellFDD=3 cellId",
        "delete " + kEnb + ",",
        "oi add dn " + kCell + " sometimes",
    };
    for (const std::string& command : commands) {
        Json refused = run(command);
        EXPECT_EQ(refused["ok"], false) << command;
        EXPECT_FALSE(refused.contains("code")) << command;
    }
    EXPECT_EQ(journal(), "");
}

TEST_F(ProbeWriteTest, ImplementersRegisterThroughThePlugInsRecordAndLeaveCleanly) {
    size_t components = _host->components().size();
    Json added = run("oi add class /ManagedElement/ENodeBFunction tryagain 2");
    ASSERT_EQ(added["code"], "OrlOk") << added.dump();
    EXPECT_EQ(added["result"]["behaviour"], "tryagain 2");
    // The probe fetched both records back through the portal by their triples.
    EXPECT_EQ(journal(), "register-class /ManagedElement/ENodeBFunction 0;");
    EXPECT_EQ(_host->components().size(), components + 1);
    Json listed = run("oi list");
    ASSERT_EQ(listed["result"].size(), 1u);
    EXPECT_EQ(listed["result"][0]["scope"], "class");
    int id = listed["result"][0]["id"];

    // The probe takes no dn implementers: nothing is left of the attempt.
    Json refused = run("oi add dn " + kCell + " ok");
    EXPECT_EQ(refused["code"], "OrlNotExist");
    EXPECT_EQ(run("oi list")["result"].size(), 1u);
    EXPECT_EQ(_host->components().size(), components + 1);

    EXPECT_EQ(run("oi set " + std::to_string(id) + " fail OrlFailure")["result"]["behaviour"],
              "fail OrlFailure");
    // The probe cannot unregister either; the implementer goes all the same.
    Json removed = run("oi remove " + std::to_string(id));
    EXPECT_EQ(removed["code"], "OrlNotExist");
    EXPECT_EQ(run("oi list")["result"], Json::array());
    EXPECT_EQ(_host->components().size(), components);
    EXPECT_EQ(run("oi show " + std::to_string(id))["error"],
              "no implementer '" + std::to_string(id) + "'");
}

}  // namespace

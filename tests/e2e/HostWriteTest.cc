// The host's write commands and its own object implementers, driven through the command shell
// in this process: with the probe plug-in (what the agent is asked, its refusals and operator
// messages as the operator sees them, registration through the agent's record) and with the real
// agent on the demo station (writes end to end, implementers called by the agent).
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "host/Host.h"
#include "host/cli/Shell.h"
#include "host/model/StationLoader.h"

namespace {

using vesk::host::Host;
using Json = nlohmann::ordered_json;
namespace cli = vesk::host::cli;
namespace oi = vesk::host::oi;

const std::string kData = VESK_DATA_DIR;
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";

// A host with the station model, one plug-in and a shell answering in JSON.
class WriteFixture : public ::testing::Test {
  protected:
    void open(const char* plugin, bool station) {
        char pattern[] = "/tmp/vesk-write-e2e-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        _host.reset(new Host);
        std::string error;
        ASSERT_TRUE(_host->openState(_dir, &error)) << error;
        ASSERT_TRUE(_host->loadModel(kData + "/model", &error)) << error;
        if (station) {
            vesk::host::model::StationLoader loader(*_host->model());
            ASSERT_TRUE(loader.load(kData + "/station/demo-station.xml",
                                    kData + "/station/station-objects.xml", &error))
                << error;
        }
        ASSERT_EQ(_host->load(plugin, &error), Host::kLoaded) << error;
        ASSERT_EQ(_host->start(&error), OrlOk) << error;
        // As the console does: the operator's session, bound to this thread.
        _host->openSession(vesk::host::kProtocolCli, "operator");
        _view.reset(new cli::ModelView(*_host->model()));
        cli::ShellOptions options;
        options.json = true;
        _shell.reset(new cli::Shell(*_host, *_view, options, _out));
    }
    void TearDown() override {
        _shell.reset();
        _host.reset();
        if (!_dir.empty()) {
            std::filesystem::remove_all(_dir);
        }
    }
    // Runs one command and returns its JSON answer.
    Json run(const std::string& command) {
        _out.str("");
        _shell->runCommand(command);
        return Json::parse(_out.str());
    }

    std::string _dir;
    std::unique_ptr<Host> _host;
    std::unique_ptr<cli::ModelView> _view;
    std::ostringstream _out;
    std::unique_ptr<cli::Shell> _shell;
};

class ProbeWriteTest : public WriteFixture {
  protected:
    void SetUp() override {
        open(VESK_PROBE_PATH, false);
        journal();
    }
    std::string journal() {
        auto read = reinterpret_cast<const char* (*)()>(_host->pluginSymbol("probe_journal"));
        auto clear = reinterpret_cast<void (*)()>(_host->pluginSymbol("probe_clear"));
        std::string text = read();
        clear();
        return text;
    }
    void answer(const char* name, int value) {
        reinterpret_cast<void (*)(const char*, int)>(_host->pluginSymbol("probe_set"))(name, value);
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
    _shell.reset();
    cli::ShellOptions options;
    _shell.reset(new cli::Shell(*_host, *_view, options, _out));
    _out.str("");
    _shell->runCommand("set " + kCell + " userLabel x");
    EXPECT_EQ(_out.str(), "OrlValidationFailed: cannot set userLabel of " + kCell +
                              "\nmessage: probe saw userLabel\n");

    answer("set", OrlOk);
    _out.str("");
    _shell->runCommand("set " + kCell + " userLabel x");
    EXPECT_EQ(_out.str(), "OrlOk\nmessage: probe saw userLabel\n");
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

// The real agent on the demo station.
class AgentWriteTest : public WriteFixture {
  protected:
    void SetUp() override {
        unsetenv("DOLM_NUM_OI_SETMOATTR_ATTEMPTS");
        open(VESK_AGENT_PATH, true);
    }
};

TEST_F(AgentWriteTest, SetChangesTheStation) {
    Json set = run("set " + kCell + " userLabel \"east cell\"");
    ASSERT_EQ(set["code"], "OrlOk") << set.dump();
    EXPECT_EQ(run("get " + kCell + " userLabel")["result"]["userLabel"], "east cell");
    EXPECT_EQ(run("set " + kCell + " userLabel")["code"], "OrlOk");
    EXPECT_TRUE(run("get " + kCell + " userLabel")["result"]["userLabel"].is_null());
}

TEST_F(AgentWriteTest, CreateAndDeleteChangeTheStation) {
    Json created = run("create " + kEnb + " EUtranCellFDD=9 cellId=9");
    ASSERT_EQ(created["code"], "OrlOk") << created.dump();
    EXPECT_EQ(run("get " + kEnb + ",EUtranCellFDD=9 cellId")["result"]["cellId"], 9);
    Json deleted = run("delete " + kEnb + ",EUtranCellFDD=9");
    EXPECT_EQ(deleted["code"], "OrlOk") << deleted.dump();
    EXPECT_EQ(run("exists " + kEnb + ",EUtranCellFDD=9")["result"], false);
}

TEST_F(AgentWriteTest, ImplementersSeeTheAgentsCallsAndTheirAnswersCount) {
    setenv("DOLM_NUM_OI_SETMOATTR_ATTEMPTS", "5", 1);
    Json added = run("oi add dn " + kCell + " tryagain 2");
    ASSERT_EQ(added["code"], "OrlOk") << added.dump();
    int dnId = added["result"]["id"];
    Json set = run("set " + kCell + " userLabel west");
    oi::ObjectImplementer* dnOi = _host->implementers().find(dnId);
    ASSERT_NE(dnOi, nullptr);
    // Two waits, then the answer that lets the write through, whatever the agent's own write
    // answers.
    ASSERT_EQ(dnOi->calls(), 3u);
    EXPECT_EQ(dnOi->received()[2].value, "west");
    EXPECT_EQ(dnOi->received()[2].answer, OrlOk);
    EXPECT_GE(dnOi->txCounts().join, 1);

    // A class implementer that fails stops the write before the agent's own.
    Json classAdded = run("oi add class /ManagedElement/ENodeBFunction/EUtranCellFDD fail -9");
    ASSERT_EQ(classAdded["code"], "OrlOk") << classAdded.dump();
    Json refused = run("set " + kCell + " userLabel north");
    EXPECT_EQ(refused["code"], "OrlValidationFailed") << refused.dump();
    oi::ObjectImplementer* classOi = _host->implementers().find(classAdded["result"]["id"]);
    ASSERT_NE(classOi, nullptr);
    ASSERT_EQ(classOi->calls(), 1u);
    EXPECT_EQ(classOi->received()[0].value, "north");

    EXPECT_EQ(set["code"], "OrlOk") << set.dump();
    EXPECT_EQ(run("get " + kCell + " userLabel")["result"]["userLabel"], "west");
    unsetenv("DOLM_NUM_OI_SETMOATTR_ATTEMPTS");
}

}  // namespace

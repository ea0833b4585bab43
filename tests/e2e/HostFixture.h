// Shared set-up of the host's end-to-end tests: a host of the test's own over a fresh state
// folder (removed with everything in it at the end), the demo station and a command shell on
// it, and vesk-host run as a child process.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/Host.h"
#include "host/cli/Shell.h"
#include "host/model/StationLoader.h"

namespace vesk {
namespace e2e {

using Json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

const std::string kData = VESK_DATA_DIR;
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";
const std::string kCellPath = "/ManagedElement/ENodeBFunction/EUtranCellFDD";

// One interface a component fetches from the host's portal.
struct Fetch {
    const char* service;
    const char* interfaceName;
    const char* version;
};

// The fetches an agent makes in its start, in order; each may be refused.
inline const Fetch kStartFetches[] = {
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1"},
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "1"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "3"},
    {"OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2"},
    {"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"},
};
inline const int kStartFetchCount = 7;

// `text` with each short name of `names` replaced by its value.
inline std::string expand(std::string text,
                          const std::vector<std::pair<std::string, std::string>>& names) {
    for (const auto& [name, value] : names) {
        for (size_t at = text.find(name); at != std::string::npos;
             at = text.find(name, at + value.size()))
            text.replace(at, name.size(), value);
    }
    return text;
}

inline std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Polls `done` for up to twenty seconds (a loaded machine is slow, a passing test never waits
// that long).
inline bool eventually(const std::function<bool()>& done) {
    for (int i = 0; i < 2000 && !done(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return done();
}

// A folder of the test's own; the fixture removes it with everything in it. The backup store
// is its "backups" folder, never the station's own.
class TempDirFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-e2e-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        setenv("VESK_BRM_BACKUP_PATH", (_dir + "/backups").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("VESK_BRM_BACKUP_PATH");
        std::filesystem::remove_all(_dir);
    }

    std::string _dir;
};

// A host over a fresh state folder; tests load a plug-in, the model and the station as needed.
class HostFixture : public TempDirFixture {
  protected:
    void SetUp() override {
        TempDirFixture::SetUp();
        openHost();
    }
    void TearDown() override {
        closeHost();
        TempDirFixture::TearDown();
    }
    void openHost() {
        _host.reset(new host::Host);
        std::string error;
        ASSERT_TRUE(_host->openState(_dir, &error)) << error;
    }
    void closeHost() {
        _shell.reset();
        _view.reset();
        _host.reset();
    }
    // Loads the plug-in at `path`; asserts that it loaded.
    void loadPlugin(const char* path) {
        std::string error;
        ASSERT_EQ(_host->load(path, &error), host::Host::kLoaded) << error;
    }
    // Loads the station model, and the demo station into the database when `station` is true.
    void loadModel(bool station) {
        std::string error;
        ASSERT_TRUE(_host->loadModel(kData + "/model", &error)) << error;
        if (!station)
            return;
        host::model::StationLoader loader(*_host->model());
        ASSERT_TRUE(loader.load(kData + "/station/demo-station.xml",
                                kData + "/station/station-objects.xml", &error))
            << error;
    }
    // The model (and the demo station), then the plug-in at `path`, started.
    void startOnStation(const char* path, bool station = true) {
        ASSERT_NO_FATAL_FAILURE(loadModel(station));
        ASSERT_NO_FATAL_FAILURE(loadPlugin(path));
        std::string error;
        ASSERT_EQ(_host->start(&error), OrlOk) << error;
    }
    // As the console does: the operator's session bound to this thread, and a shell on it.
    void openShell(bool json = true) {
        _host->openSession(host::kProtocolCli, "operator");
        _view.reset(new host::cli::ModelView(*_host->model()));
        host::cli::ShellOptions options;
        options.json = json;
        _shell.reset(new host::cli::Shell(*_host, *_view, options, _out));
    }
    // The agent started on the demo station and the operator's shell on it; `integrated` sets
    // phase 4 through the shell, so that the agent has seen the station integrated.
    void startAgentShell(bool integrated = false) {
        ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
        openShell();
        if (integrated)
            ok("phase 4");
    }
    // Runs one command and returns its text answer.
    std::string runText(const std::string& command) {
        _out.str("");
        _shell->runCommand(command);
        return _out.str();
    }
    // Runs one command and returns its JSON answer.
    Json run(const std::string& command) { return Json::parse(runText(command)); }
    // Runs one command that must succeed and returns its JSON answer.
    Json ok(const std::string& command) {
        Json answer = run(command);
        EXPECT_EQ(answer["ok"], true) << command << "\n" << answer.dump();
        return answer;
    }
    OrlTxHandleT begin() {
        OrlTxHandleT tx = 0;
        EXPECT_EQ(_host->begin(&tx), OrlOk);
        return tx;
    }
    int fetches(const Fetch& f) {
        return _host->portal().fetchCount(f.service, f.interfaceName, f.version);
    }
    // Everything the probe plug-in noted since the last call, then forgets it.
    std::string journal() {
        auto read = reinterpret_cast<const char* (*)()>(_host->pluginSymbol("probe_journal"));
        auto clear = reinterpret_cast<void (*)()>(_host->pluginSymbol("probe_clear"));
        std::string text = read();
        clear();
        return text;
    }
    // Makes the probe answer `value` to the call `name`.
    void answer(const char* name, int value) {
        reinterpret_cast<void (*)(const char*, int)>(_host->pluginSymbol("probe_set"))(name, value);
    }

    std::unique_ptr<host::Host> _host;
    std::unique_ptr<host::cli::ModelView> _view;
    std::ostringstream _out;
    std::unique_ptr<host::cli::Shell> _shell;
};

// What a run of vesk-host left: its exit status, its output and its log file.
struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
    std::string log;
    // The JSON answers of standard output, one a line.
    std::vector<Json> answers() const {
        std::vector<Json> result;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);) {
            result.push_back(Json::parse(line));
        }
        return result;
    }
};

// vesk-host run as a child process in the test's folder.
class ProgramFixture : public TempDirFixture {
  protected:
    // Runs vesk-host with `arguments` (and `environment` before it) with `input` as its input;
    // its log goes to a file of the folder.
    Outcome program(const std::string& arguments, const std::string& input = "",
                    const std::string& environment = "") {
        std::ofstream(_dir + "/in") << input;
        std::filesystem::remove(_dir + "/log");
        std::string command = environment + " " + VESK_HOST_PATH + " " + arguments + " < " + _dir +
                              "/in > " + _dir + "/out 2> " + _dir + "/err";
        int raw = std::system(command.c_str());
        Outcome outcome;
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        outcome.out = slurp(_dir + "/out");
        outcome.err = slurp(_dir + "/err");
        outcome.log = slurp(_dir + "/log");
        return outcome;
    }
    // vesk-host with the agent on the folder's state, running `commands` with -c.
    Outcome agent(const std::string& commands, const std::string& options = "") {
        return program(std::string("--state ") + _dir + "/state --plugin " + VESK_AGENT_PATH + " " +
                       options + " -c '" + commands + "'");
    }
    // The JSON answers of `commands` run on the agent, which must end cleanly with `count`
    // answers (missing ones are null); the whole run in `outcome` when given.
    std::vector<Json> answers(const std::string& commands, size_t count,
                              const std::string& options = "", Outcome* outcome = nullptr) {
        Outcome o = agent(commands, "--json " + options);
        EXPECT_EQ(o.status, 0) << o.err;
        std::vector<Json> result = o.answers();
        EXPECT_EQ(result.size(), count) << o.out << o.err;
        result.resize(count);
        if (outcome != nullptr)
            *outcome = o;
        return result;
    }
};

// vesk-host as a child process on a state of the folder that holds the demo station.
class StationProgramFixture : public ProgramFixture {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(ProgramFixture::SetUp());
        Outcome loaded =
            program("--state " + _dir + "/state --load " + kData + "/station/demo-station.xml");
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
};

}  // namespace e2e
}  // namespace vesk

// The program vesk-host run as a child process with the probe plug-in: exit status, messages
// and the log file.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class HostProgramTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-host-run-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(_dir); }

    // Runs vesk-host with `arguments` (and `environment` before it), input closed.
    Outcome run(const std::string& arguments, const std::string& environment = "") {
        std::string command = environment + " " + VESK_HOST_PATH + " " + arguments +
                              " < /dev/null > " + _dir + "/out 2> " + _dir + "/err";
        int raw = std::system(command.c_str());
        int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        return Outcome{status, slurp(_dir + "/out"), slurp(_dir + "/err")};
    }
    std::string state() const { return " --state " + _dir + "/state"; }

    std::string _dir;
};

TEST_F(HostProgramTest, CleanRunStartsComponentsAndWritesTheLogFile) {
    Outcome o = run(std::string("--plugin ") + VESK_PROBE_PATH + state() + " --log-file " + _dir +
                    "/log --log-level trace");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "vesk-host: up, components: PROBEcomponent PROBEOIcomponent\n");
    std::string log = slurp(_dir + "/log");
    EXPECT_NE(log.find("host: status TIB_RUNNING"), std::string::npos) << log;
    EXPECT_LT(log.find("stopping component PROBEOIcomponent"),
              log.find("stopping component PROBEcomponent"));
    EXPECT_TRUE(std::filesystem::exists(_dir + "/state")) << "the database opened there";
}

TEST_F(HostProgramTest, FailuresEndWithTheirOwnExitStatus) {
    Outcome missing = run("--plugin " + _dir + "/none.so" + state());
    EXPECT_EQ(missing.status, 3);
    EXPECT_NE(missing.err.find("vesk-host: cannot load plug-in " + _dir + "/none.so"),
              std::string::npos)
        << missing.err;

    Outcome nosym = run(std::string("--plugin ") + VESK_NOSYM_PATH + state());
    EXPECT_EQ(nosym.status, 3);
    EXPECT_NE(nosym.err.find("does not export orlLCMinit"), std::string::npos) << nosym.err;

    Outcome init = run(std::string("--plugin ") + VESK_PROBE_PATH + state(), "VESK_PROBE_INIT=-1");
    EXPECT_EQ(init.status, 4);
    EXPECT_NE(init.err.find("refused to initialise (-1)"), std::string::npos) << init.err;

    Outcome start =
        run(std::string("--plugin ") + VESK_PROBE_PATH + state(), "VESK_PROBE_START=-10");
    EXPECT_EQ(start.status, 5);
    EXPECT_NE(start.err.find("component PROBEcomponent failed to start (-10)"), std::string::npos)
        << start.err;

    Outcome usage = run("--plugin");
    EXPECT_EQ(usage.status, 1);
    EXPECT_EQ(run(state()).status, 1) << "--plugin is required";
    EXPECT_EQ(run(std::string("--plugin ") + VESK_PROBE_PATH + " --log-level loud").status, 1);
}

TEST_F(HostProgramTest, HelpDocumentsEveryOption) {
    Outcome help = run("--help");
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--plugin", "--state", "--log-level", "--log-file"}) {
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    }
}

}  // namespace

// The program vesk-host run as a child process with the probe plug-in: exit status, messages
// and the log file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "e2e/HostFixture.h"

namespace {

using namespace vesk::e2e;

class HostProgramTest : public ProgramFixture {
  protected:
    std::string probe() const {
        return std::string("--plugin ") + VESK_PROBE_PATH + " --state " + _dir +
               "/state --create-state";
    }
};

TEST_F(HostProgramTest, CleanRunStartsComponentsAndWritesTheLogFile) {
    Outcome o = program(probe() + " --log-file " + _dir + "/log --log-level trace");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "vesk-host: up, components: PROBEcomponent PROBEOIcomponent\n");
    EXPECT_NE(o.log.find("host: status TIB_RUNNING"), std::string::npos) << o.log;
    EXPECT_LT(o.log.find("stopping component PROBEOIcomponent"),
              o.log.find("stopping component PROBEcomponent"));
    EXPECT_TRUE(std::filesystem::exists(_dir + "/state")) << "the database opened there";
}

TEST_F(HostProgramTest, FailuresEndWithTheirOwnExitStatusAndHelpNamesEveryOption) {
    Outcome missing =
        program("--plugin " + _dir + "/none.so --state " + _dir + "/state --create-state");
    EXPECT_EQ(missing.status, 3);
    EXPECT_NE(missing.err.find("vesk-host: cannot load plug-in " + _dir + "/none.so"),
              std::string::npos)
        << missing.err;

    Outcome nosym = program(std::string("--plugin ") + VESK_NOSYM_PATH + " --state " + _dir +
                            "/state --create-state");
    EXPECT_EQ(nosym.status, 3);
    EXPECT_NE(nosym.err.find("does not export orlLCMinit"), std::string::npos) << nosym.err;

    Outcome init = program(probe(), "", "VESK_PROBE_INIT=-1");
    EXPECT_EQ(init.status, 4);
    EXPECT_NE(init.err.find("refused to initialise (-1)"), std::string::npos) << init.err;

    Outcome start = program(probe(), "", "VESK_PROBE_START=-10");
    EXPECT_EQ(start.status, 5);
    EXPECT_NE(start.err.find("component PROBEcomponent failed to start (-10)"), std::string::npos)
        << start.err;

    EXPECT_EQ(program("--plugin").status, 1);
    EXPECT_EQ(program("--state " + _dir).status, 1) << "--plugin is required";
    EXPECT_EQ(program(probe() + " --log-level loud").status, 1);

    Outcome help = program("--help");
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--plugin", "--state", "--log-level", "--log-file"}) {
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    }
}

}  // namespace

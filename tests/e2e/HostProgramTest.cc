// The program vesk-host run as a child process: with the probe plug-in, its exit status, messages
// and log file; its --load of the demo station and the state directory it is given.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "e2e/HostFixture.h"
#include "station/database/Database.h"

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

// Each run: its arguments ($DIR the folder, $PROBE the probe on a fresh state), its environment,
// the exit status and what it says on either output. The runs go in order on one folder.
TEST_F(HostProgramTest, EachFailureEndsWithItsOwnExitStatusAndSaysWhy) {
    std::filesystem::create_directory(_dir + "/m");
    std::ofstream(_dir + "/m/vesk-station.yang") << "module vesk-station {\n  oops;\n}\n";
    const std::string load = "--load " + kData + "/station/demo-station.xml --state $DIR/s";
    struct Row {
        std::string arguments;
        std::string environment;
        int status;
        std::string said;
    };
    const Row rows[] = {
        {"--plugin $DIR/none.so --state $DIR/state --create-state", "", 3,
         "vesk-host: cannot load plug-in $DIR/none.so"},
        {std::string("--plugin ") + VESK_NOSYM_PATH + " --state $DIR/state --create-state", "", 3,
         "does not export orlLCMinit"},
        {"$PROBE", "VESK_PROBE_INIT=-1", 4, "refused to initialise (-1)"},
        {"$PROBE", "VESK_PROBE_START=-10", 5, "component PROBEcomponent failed to start (-10)"},
        {"--plugin", "", 1, ""},
        {"--state $DIR", "", 1, ""},  // --plugin is required
        {"$PROBE --log-level loud", "", 1, ""},
        {load, "", 0, "vesk-host: loaded "},
        {load, "", 7, "vesk-host: the state directory $DIR/s is not empty"},
        // A bad model stops the run before the state opens.
        {load + "2 --model $DIR/m", "", 6,
         "vesk-host: cannot load the model: $DIR/m/vesk-station.yang:2: "},
        {"--help", "", 0, "--log-file"},
    };
    for (const Row& row : rows) {
        const auto expanded = [&](const std::string& text) {
            return expand(text, {{"$PROBE", probe()}, {"$DIR", _dir}});
        };
        Outcome o = program(expanded(row.arguments), "", row.environment);
        EXPECT_EQ(o.status, row.status) << row.arguments;
        EXPECT_NE((o.out + o.err).find(expanded(row.said)), std::string::npos)
            << row.arguments << "\n"
            << o.out << o.err;
    }
    EXPECT_FALSE(std::filesystem::exists(_dir + "/s2"));
    const std::string help = program("--help").out;
    for (const char* option : {"--plugin", "--state", "--log-level"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

// A second process on a state directory in use is refused before it loads anything.
TEST_F(HostProgramTest, ABusyStateDirectoryIsRefusedAtOnce) {
    std::string error;
    ASSERT_TRUE(vesk::db::open(_dir + "/s", &error)) << error;
    const std::string start = "--plugin " + _dir + "/none.so --create-state --state " + _dir + "/s";
    Outcome busy = program(start);
    EXPECT_EQ(busy.status, 2);
    EXPECT_NE(busy.err.find("vesk-host: the state directory " + _dir + "/s is in use by process " +
                            std::to_string(getpid()) + "\n"),
              std::string::npos)
        << busy.err;
    vesk::db::close();
    EXPECT_EQ(program(start).status, 3) << "past the state, at the missing plug-in";
}

}  // namespace

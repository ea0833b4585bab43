// The command line of vesk-host.
#include <gtest/gtest.h>

#include <sstream>

#include "host/HostOptions.h"

namespace {

using vesk::host::HostOptions;
using vesk::host::parseHostOptions;

bool parse(std::vector<const char*> args, HostOptions* options, std::string* error) {
    args.insert(args.begin(), "vesk-host");
    return parseHostOptions(static_cast<int>(args.size()), args.data(), options, error);
}

TEST(HostOptionsTest, ReadsEveryOption) {
    HostOptions o;
    std::string error;
    ASSERT_TRUE(
        parse({"--plugin", "a.so", "--state", "/s", "--log-level", "warning", "--log-file", "/l"},
              &o, &error))
        << error;
    EXPECT_EQ(o.plugin, "a.so");
    EXPECT_EQ(o.stateDirectory, "/s");
    EXPECT_EQ(o.logLevel, 4);
    EXPECT_EQ(o.logFile, "/l");
    EXPECT_FALSE(o.help);

    HostOptions defaults;
    ASSERT_TRUE(parse({"-p", "b.so", "-l", "32"}, &defaults, &error)) << error;
    EXPECT_EQ(defaults.stateDirectory, "./state");
    EXPECT_EQ(defaults.logLevel, 32);
    EXPECT_EQ(defaults.logFile, "");
    EXPECT_EQ(defaults.journal, 1000u);
    ASSERT_TRUE(parse({"-p", "b.so", "--journal", "5", "--no-journal"}, &defaults, &error));
    EXPECT_EQ(defaults.journal, 0u) << "--no-journal keeps none";
}

TEST(HostOptionsTest, RefusesWhatItCannotUse) {
    HostOptions o;
    std::string error;
    EXPECT_FALSE(parse({}, &o, &error));
    EXPECT_EQ(error, "the option '--plugin' is required");
    EXPECT_FALSE(parse({"--plugin", "a.so", "--log-level", "loud"}, &o, &error));
    EXPECT_EQ(error, "unknown log level 'loud'");
    EXPECT_FALSE(parse({"--plugin", "a.so", "--colour"}, &o, &error));
    EXPECT_FALSE(parse({"--plugin", "a.so", "--journal", "0"}, &o, &error));
    EXPECT_EQ(error, "--journal takes 1 to 1000000 notifications (--no-journal keeps none)");
    HostOptions help;
    EXPECT_TRUE(parse({"--help"}, &help, &error)) << "help needs no plug-in";
    EXPECT_TRUE(help.help);
}

}  // namespace

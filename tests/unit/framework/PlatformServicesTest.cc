#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/ExecuteCmd.h"
#include "platform/FrameworkInit.h"
#include "platform/GetPath.h"
#include "platform/ITransport.h"
#include "platform/OperationMode.h"
#include "platform/OrlController.h"
#include "platform/StationSleep.h"
#include "station/StationConfig.h"
#include "station/framework/FrameworkControl.h"
#include "station/log/LogControl.h"

namespace {

namespace fs = std::filesystem;

// Each test gets a fresh state directory.
class PlatformServices : public testing::Test {
  protected:
    void SetUp() override {
        _dir = fs::path(testing::TempDir()) /
               ("vesk_fw_" +
                std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(_dir);
        vesk::station::setStateDirectory(_dir.string());
    }
    void TearDown() override { fs::remove_all(_dir); }

    std::string readFile(const fs::path& path) {
        std::ifstream in(path);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }

    fs::path _dir;
};

TEST_F(PlatformServices, OperationModeIsKeptInTheStateDirectory) {
    vesk::log::LogCapture capture;
    int mode = -7;
    ASSERT_EQ(0, mw_api_operation_mode_get(2, &mode));
    EXPECT_EQ(1, mode);  // never set: "mixed"
    ASSERT_EQ(0, mw_api_operation_mode_set(2, 0));
    ASSERT_EQ(0, mw_api_operation_mode_get(2, &mode));
    EXPECT_EQ(0, mode);
    EXPECT_EQ("0\n", readFile(_dir / "operation_mode"));

    // What another run of the station wrote is what is read.
    std::ofstream(_dir / "operation_mode") << "1\n";
    ASSERT_EQ(0, mw_api_operation_mode_get(2, &mode));
    EXPECT_EQ(1, mode);

    EXPECT_EQ(-1, mw_api_operation_mode_set(3, 1));
    EXPECT_EQ(-1, mw_api_operation_mode_set(2, 5));
    EXPECT_EQ(-1, mw_api_operation_mode_get(2, nullptr));
    EXPECT_EQ(1u, capture.count("mw_api_operation_mode_set: unknown mode kind 3", 2));
    EXPECT_EQ("1\n", readFile(_dir / "operation_mode"));

    std::ofstream(_dir / "operation_mode") << "mixed\n";
    EXPECT_EQ(-1, mw_api_operation_mode_get(2, &mode));
    EXPECT_EQ(1u, capture.countContaining("operation_mode is unreadable", 2));
}

TEST_F(PlatformServices, ExecuteCmdRunsTheShellAndReportsTheExitStatus) {
    vesk::log::LogCapture capture;
    fs::create_directories(_dir);
    std::string out = (_dir / "out.txt").string();
    EXPECT_EQ(0, executeCmd(e_eComp_VeskCM, "echo one; echo two 1>&2", out, false));
    EXPECT_EQ(0, executeCmd(13, "echo three", out, false));
    EXPECT_EQ("one\ntwo\nthree\n", readFile(out));
    EXPECT_EQ(3, executeCmd(13, "touch " + (_dir / "made").string() + "; exit 3", "", false));
    EXPECT_TRUE(fs::exists(_dir / "made"));
    EXPECT_EQ(1u, capture.count("executeCmd: component 13 runs 'echo three'", 8));
    EXPECT_EQ(1u, capture.count("executeCmd: 'echo three' exited with status 0", 8));

    vesk::station::setCommandTimeLimitMs(100);
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(-1, executeCmd(13, "sleep 5; echo late", out, false));
    vesk::station::setCommandTimeLimitMs(300000);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_EQ(1u, capture.count("executeCmd: 'sleep 5; echo late' was stopped after 100 ms", 2));
    EXPECT_EQ(std::string::npos, readFile(out).find("late"));
}

TEST_F(PlatformServices, PathsStatusWifiAndDescriptor) {
    setenv("VESK_FW_TEST_PATH", "/tmp/elsewhere", 1);
    EXPECT_EQ("/tmp/elsewhere", getPath("VESK_FW_TEST_PATH", "/var/default"));
    setenv("VESK_FW_TEST_PATH", "", 1);
    EXPECT_EQ("/var/default", getPath("VESK_FW_TEST_PATH", "/var/default"));
    unsetenv("VESK_FW_TEST_PATH");
    EXPECT_EQ("/var/default", getPath("VESK_FW_TEST_PATH", "/var/default"));

    EXPECT_EQ(3, OrlController::getStatus());
    vesk::station::setHostStatus(4);
    EXPECT_EQ(4, OrlController::getStatus());
    EXPECT_EQ("TIB_SHUTTING_DOWN", OrlController::OrlStatusLiteral(OrlController::getStatus()));
    vesk::station::setHostStatus(3);
    EXPECT_EQ("TIB_RUNNING", OrlController::OrlStatusLiteral(3));
    EXPECT_EQ("TIB_UNKNOWN_STATUS", OrlController::OrlStatusLiteral(77));

    vesk::station::resetWifi();
    EXPECT_NE(0, ITransport::wifiRestart(2));
    vesk::station::setWifiAnswer(false);
    EXPECT_EQ(0, ITransport::wifiRestart(5));
    EXPECT_EQ(0, ITransport::wifiResetToFactory());
    auto record = vesk::station::wifiRecord();
    EXPECT_EQ(2, record.restarts);
    EXPECT_EQ(5, record.lastRestartMode);
    EXPECT_EQ(1, record.factoryResets);
    vesk::station::resetWifi();
    EXPECT_NE(0, ITransport::wifiResetToFactory());

    FrameworkInitSAInterfaceT* descriptor = getFrameworkInitSAInterfaceT();
    ASSERT_NE(nullptr, descriptor);
    EXPECT_EQ(descriptor, getFrameworkInitSAInterfaceT());
    EXPECT_STREQ("1", descriptor->interfaceVersion);
}

TEST_F(PlatformServices, StationSleepFollowsTheTimeScale) {
    using Clock = std::chrono::steady_clock;
    vesk::station::setTimeScale(0.001);
    auto begin = Clock::now();
    VESK::Framework::stationSleepMs(30000);  // 30 ms
    auto scaled = Clock::now() - begin;
    EXPECT_GE(scaled, std::chrono::milliseconds(30));
    EXPECT_LT(scaled, std::chrono::seconds(2));

    begin = Clock::now();
    for (int i = 0; i < 100; ++i)
        VESK::Framework::stationSleepUs(10000);  // 100 x 10 us
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(1));

    vesk::station::setTimeScale(1.0);
    begin = Clock::now();
    VESK::Framework::stationSleepMs(20);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(20));
    vesk::station::setTimeScale(-3);
    EXPECT_EQ(0.0, vesk::station::timeScale());
    vesk::station::setTimeScale(1.0);
}

}  // namespace

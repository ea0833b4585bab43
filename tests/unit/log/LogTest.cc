#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(Log, CaptureSeesEveryLevelWithExactTextAndComponent) {
    vesk::log::LogCapture capture;
    mw_api_log_impl(13, VESK_LOG_ERROR, 1, "VeskMoImpl::%s - TransactionHandle %lu was not found",
                    "join", 42ul);
    VESK_TRACE("%s: %s", "VeskMoImpl", "join");
    auto lines = capture.lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("VeskMoImpl::join - TransactionHandle 42 was not found", lines[0].text);
    EXPECT_EQ(13, lines[0].component);
    EXPECT_EQ(VESK_LOG_ERROR, lines[0].level);
    EXPECT_EQ(VESK_LOG_TRACE, lines[1].level);
    EXPECT_EQ(0u, lines[1].text.rfind("[LogTest.cc:", 0)) << lines[1].text;
    EXPECT_NE(std::string::npos, lines[1].text.find("] VeskMoImpl: join"));
    EXPECT_EQ(
        1u, capture.count("VeskMoImpl::join - TransactionHandle 42 was not found", VESK_LOG_ERROR));
    EXPECT_EQ(
        0u, capture.count("VeskMoImpl::join - TransactionHandle 42 was not found", VESK_LOG_INFO));
}

TEST(Log, FileSinkHonoursThresholdAndLongLines) {
    std::string path = testing::TempDir() + "/vesk_log_test.log";
    std::remove(path.c_str());
    ASSERT_TRUE(vesk::log::setSinkFile(path));
    int old = vesk::log::threshold();
    vesk::log::setThreshold(VESK_LOG_WARNING);
    std::string big(3000, 'x');
    mw_api_log_impl(13, VESK_LOG_WARNING, 1, "big %s end", big.c_str());
    mw_api_log_impl(13, VESK_LOG_INFO, 1, "filtered out");
    vesk::log::setThreshold(old);
    vesk::log::setSinkStderr();

    std::string text = readFile(path);
    EXPECT_NE(std::string::npos, text.find(" WARNING [13] big " + big + " end\n"));
    EXPECT_EQ(std::string::npos, text.find("filtered out"));
    EXPECT_FALSE(vesk::log::setSinkFile("/nonexistent-dir/x.log"));
}

TEST(Log, LevelNames) {
    EXPECT_EQ(VESK_LOG_ERROR, vesk::log::levelFromName("error"));
    EXPECT_EQ(VESK_LOG_TRACE, vesk::log::levelFromName("trace"));
    EXPECT_EQ(16, vesk::log::levelFromName("16"));
    EXPECT_EQ(-1, vesk::log::levelFromName("loud"));
    EXPECT_STREQ("WARNING", vesk::log::levelName(VESK_LOG_WARNING));
}

TEST(Log, ConcurrentWritersAllCaptured) {
    vesk::log::LogCapture capture;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i)
                mw_api_log_impl(13, VESK_LOG_TRACE, 1, "t%d %d", t, i);
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(800u, capture.countContaining("t", VESK_LOG_TRACE));
    EXPECT_EQ(1u, capture.count("t3 199"));
}

}  // namespace

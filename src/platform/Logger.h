// The station's log call, as the agent sees it.
#pragma once

namespace VESK {
namespace Framework {
// Component number passed with every log line of this library.
extern int g_thisComponentForLogging;
}  // namespace Framework
}  // namespace VESK

// Log levels.
enum VeskLogLevel {
    VESK_LOG_ERROR = 2,
    VESK_LOG_WARNING = 4,
    VESK_LOG_INFO = 8,
    VESK_LOG_TRACE = 32
};

// Writes one log line. `flag` is always 1. Safe from any thread; never throws.
extern "C" void mw_api_log_impl(int component, int level, int flag, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#define VESK_LOG(level, fmt, ...) \
    mw_api_log_impl(VESK::Framework::g_thisComponentForLogging, (level), 1, fmt, ##__VA_ARGS__)
#define VESK_ERROR(fmt, ...) VESK_LOG(VESK_LOG_ERROR, fmt, ##__VA_ARGS__)
#define VESK_WARNING(fmt, ...) VESK_LOG(VESK_LOG_WARNING, fmt, ##__VA_ARGS__)
#define VESK_INFO(fmt, ...) VESK_LOG(VESK_LOG_INFO, fmt, ##__VA_ARGS__)
// Trace lines begin with "[file:line] ".
#define VESK_TRACE(fmt, ...)                                                                       \
    mw_api_log_impl(VESK::Framework::g_thisComponentForLogging, VESK_LOG_TRACE, 1, "[%s:%d] " fmt, \
                    __FILE_NAME__, __LINE__, ##__VA_ARGS__)

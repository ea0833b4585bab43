#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace VESK {
namespace Framework {
int g_thisComponentForLogging = 13;
}  // namespace Framework
}  // namespace VESK

namespace vesk {
namespace log {
namespace {

struct LogState {
    std::mutex mutex;
    FILE* sink = nullptr;  // null means stderr
    std::vector<LogCapture*> captures;
};

LogState& state() {
    static LogState* s = new LogState();  // never destroyed: logging may happen at exit
    return *s;
}

int initialThreshold() {
    const char* env = std::getenv("VESK_LOG_LEVEL");
    if (env != nullptr) {
        int level = levelFromName(env);
        if (level >= 0)
            return level;
    }
    return VESK_LOG_INFO;
}

std::atomic<int> g_threshold{initialThreshold()};
// The highest level any live capture wants; -1 when there is none.
std::atomic<int> g_captureLevel{-1};

// Called with the state's mutex held.
void updateCaptureLevel(const std::vector<LogCapture*>& captures) {
    int level = -1;
    for (const LogCapture* c : captures) {
        level = std::max(level, c->maxLevel());
    }
    g_captureLevel.store(level);
}

void writeLine(int component, int level, const std::string& text) {
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    struct tm tmv;
    gmtime_r(&tv.tv_sec, &tmv);
    char stamp[32];
    strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &tmv);
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    FILE* out = s.sink != nullptr ? s.sink : stderr;
    bool newline = !text.empty() && text.back() == '\n';
    fprintf(out, "%s.%06ldZ %s [%d] %s%s", stamp, static_cast<long>(tv.tv_usec), levelName(level),
            component, text.c_str(), newline ? "" : "\n");
    fflush(out);
}

}  // namespace

void setThreshold(int maxLevel) {
    g_threshold.store(maxLevel);
}
int threshold() {
    return g_threshold.load();
}

int levelFromName(const std::string& name) {
    if (name == "error")
        return VESK_LOG_ERROR;
    if (name == "warning")
        return VESK_LOG_WARNING;
    if (name == "info")
        return VESK_LOG_INFO;
    if (name == "trace")
        return VESK_LOG_TRACE;
    if (!name.empty() && std::all_of(name.begin(), name.end(), ::isdigit) && name.size() < 6) {
        return std::atoi(name.c_str());
    }
    return -1;
}

const char* levelName(int level) {
    switch (level) {
        case VESK_LOG_ERROR:
            return "ERROR";
        case VESK_LOG_WARNING:
            return "WARNING";
        case VESK_LOG_INFO:
            return "INFO";
        case VESK_LOG_TRACE:
            return "TRACE";
        default:
            return "DEBUG";
    }
}

void setSinkStderr() {
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.sink != nullptr)
        fclose(s.sink);
    s.sink = nullptr;
}

bool setSinkFile(const std::string& path) {
    FILE* f = fopen(path.c_str(), "a");
    if (f == nullptr)
        return false;
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.sink != nullptr)
        fclose(s.sink);
    s.sink = f;
    return true;
}

LogCapture::LogCapture(int maxLevel, bool divert) : _maxLevel(maxLevel), _divert(divert) {
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.captures.push_back(this);
    updateCaptureLevel(s.captures);
}

LogCapture::~LogCapture() {
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.captures.erase(std::remove(s.captures.begin(), s.captures.end(), this), s.captures.end());
    updateCaptureLevel(s.captures);
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _lines;
}

size_t LogCapture::count(const std::string& text, int level) const {
    std::lock_guard<std::mutex> lock(_mutex);
    return std::count_if(_lines.begin(), _lines.end(), [&](const LogLine& l) {
        return l.text == text && (level == 0 || l.level == level);
    });
}

size_t LogCapture::countContaining(const std::string& part, int level) const {
    std::lock_guard<std::mutex> lock(_mutex);
    return std::count_if(_lines.begin(), _lines.end(), [&](const LogLine& l) {
        return l.text.find(part) != std::string::npos && (level == 0 || l.level == level);
    });
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(_mutex);
    _lines.clear();
}

bool LogCapture::add(const LogLine& line) {
    if (line.level > _maxLevel) {
        return false;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    _lines.push_back(line);
    return _divert;
}

}  // namespace log
}  // namespace vesk

extern "C" void mw_api_log_impl(int component, int level, int /*flag*/, const char* format, ...) {
    using namespace vesk::log;
    bool write = level <= g_threshold.load(std::memory_order_relaxed);
    bool capture = level <= g_captureLevel.load(std::memory_order_relaxed);
    if ((!write && !capture) || format == nullptr)
        return;

    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    char small[512];
    int n = vsnprintf(small, sizeof small, format, args);
    va_end(args);
    std::string text;
    if (n < 0) {
        text = format;
    } else if (static_cast<size_t>(n) < sizeof small) {
        text.assign(small, n);
    } else {
        text.resize(n + 1);
        vsnprintf(&text[0], n + 1, format, copy);
        text.resize(n);
    }
    va_end(copy);

    if (capture) {
        LogState& s = state();
        std::lock_guard<std::mutex> lock(s.mutex);
        for (LogCapture* c : s.captures) {
            if (c->add(LogLine{component, level, text}))
                write = false;
        }
    }
    if (write)
        writeLine(component, level, text);
}

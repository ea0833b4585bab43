// Control of the station's log call: threshold, sink and capture for tests.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace vesk {
namespace log {

// Lines whose level is numerically at most the threshold are written. Default 8 (information),
// or the value of the environment variable VESK_LOG_LEVEL when it is set at load.
void setThreshold(int maxLevel);
int threshold();

// Maps "error", "warning", "info", "trace" (or a number) to a level; -1 if unknown.
int levelFromName(const std::string& name);
const char* levelName(int level);

// Sends lines to standard error (the default).
void setSinkStderr();
// Appends lines to `path`. Returns false, and keeps the old sink, if it cannot be opened.
bool setSinkFile(const std::string& path);

struct LogLine {
    int component;
    int level;
    std::string text;  // the formatted text, without time, level or component
};

// While alive, receives every line of every level, whatever the threshold. Captures may nest
// and may be read from any thread.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    // Number of captured lines whose text equals `text` (and level, when given).
    size_t count(const std::string& text, int level = 0) const;
    // Number of captured lines whose text contains `part`.
    size_t countContaining(const std::string& part, int level = 0) const;
    void clear();

    void add(const LogLine& line);

  private:
    mutable std::mutex _mutex;
    std::vector<LogLine> _lines;
};

}  // namespace log
}  // namespace vesk

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

// While alive, receives every line of every level up to `maxLevel` (all by default), whatever
// the threshold. A diverting capture keeps the lines it takes from the sink: they are the
// capturer's to show. Captures may nest and may be read from any thread.
class LogCapture {
  public:
    explicit LogCapture(int maxLevel = kAllLevels, bool divert = false);
    ~LogCapture();
    static constexpr int kAllLevels = 0x7fffffff;
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    // Number of captured lines whose text equals `text` (and level, when given).
    size_t count(const std::string& text, int level = 0) const;
    // Number of captured lines whose text contains `part`.
    size_t countContaining(const std::string& part, int level = 0) const;
    void clear();

    int maxLevel() const { return _maxLevel; }
    // Takes the line if its level is one the capture wants; true if the capture diverts it.
    bool add(const LogLine& line);

  private:
    const int _maxLevel;
    const bool _divert;
    mutable std::mutex _mutex;
    std::vector<LogLine> _lines;
};

}  // namespace log
}  // namespace vesk

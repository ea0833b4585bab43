// The next operation mode, kept as one number in the file "operation_mode" of the state
// directory, durable once a write has answered.
#include "platform/OperationMode.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

#include "platform/Logger.h"
#include "station/StationConfig.h"

namespace {
constexpr int kModeKind = 2;
constexpr int kDefaultMode = 1;  // "mixed"

std::mutex g_mutex;

std::string modeFile() {
    return vesk::station::stateDirectory() + "/operation_mode";
}

bool checkKind(int kind, const char* function) {
    if (kind == kModeKind)
        return true;
    VESK_ERROR("%s: unknown mode kind %d", function, kind);
    return false;
}

// The stored mode, or kDefaultMode if none was stored; false if the file is unreadable.
bool readMode(int& mode) {
    std::ifstream in(modeFile());
    if (!in) {
        mode = kDefaultMode;
        return true;
    }
    std::string text;
    in >> text;
    if (text != "0" && text != "1")
        return false;
    mode = text[0] - '0';
    return true;
}

// Replaces the file atomically and waits until the new mode and its name are on stable
// storage, so that a power cut after an answer of success cannot bring the old mode back.
bool writeMode(int mode) {
    std::error_code ec;
    std::filesystem::create_directories(vesk::station::stateDirectory(), ec);
    const std::string tmp = modeFile() + ".tmp";
    const std::string text = std::to_string(mode) + "\n";
    int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    bool ok = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
              ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    if (!ok || std::rename(tmp.c_str(), modeFile().c_str()) != 0)
        return false;
    int dir = ::open(vesk::station::stateDirectory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0)
        return false;
    ok = ::fsync(dir) == 0;
    ::close(dir);
    return ok;
}
}  // namespace

extern "C" int mw_api_operation_mode_get(int kind, int* mode) {
    if (!checkKind(kind, "mw_api_operation_mode_get"))
        return -1;
    if (mode == nullptr) {
        VESK_ERROR("mw_api_operation_mode_get: no place for the mode");
        return -1;
    }
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!readMode(*mode)) {
        VESK_ERROR("mw_api_operation_mode_get: %s is unreadable", modeFile().c_str());
        return -1;
    }
    return 0;
}

extern "C" int mw_api_operation_mode_set(int kind, int mode) {
    if (!checkKind(kind, "mw_api_operation_mode_set"))
        return -1;
    if (mode != 0 && mode != 1) {
        VESK_ERROR("mw_api_operation_mode_set: unknown mode %d", mode);
        return -1;
    }
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!writeMode(mode)) {
        VESK_ERROR("mw_api_operation_mode_set: cannot write %s", modeFile().c_str());
        return -1;
    }
    VESK_INFO("mw_api_operation_mode_set: next operation mode %d", mode);
    return 0;
}

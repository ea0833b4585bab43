// The next operation mode, kept as one number in the file "operation_mode" of the state
// directory.
#include "platform/OperationMode.h"

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

bool writeMode(int mode) {
    std::error_code ec;
    std::filesystem::create_directories(vesk::station::stateDirectory(), ec);
    std::string tmp = modeFile() + ".tmp";
    {
        std::ofstream out(tmp, std::ios::trunc);
        out << mode << "\n";
        out.flush();
        if (!out)
            return false;
    }
    return std::rename(tmp.c_str(), modeFile().c_str()) == 0;
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

#include "station/StationConfig.h"

#include <mutex>

namespace vesk {
namespace station {
namespace {
std::mutex g_mutex;
std::string& directory() {
    static std::string* d = new std::string("./state");
    return *d;
}
}  // namespace

void setStateDirectory(const std::string& path) {
    std::lock_guard<std::mutex> lock(g_mutex);
    directory() = path;
}

std::string stateDirectory() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return directory();
}

}  // namespace station
}  // namespace vesk

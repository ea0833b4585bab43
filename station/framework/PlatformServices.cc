// Host status, WiFi module, station sleep, paths and the framework descriptor.
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "platform/FrameworkInit.h"
#include "platform/GetPath.h"
#include "platform/ITransport.h"
#include "platform/Logger.h"
#include "platform/OrlController.h"
#include "platform/StationSleep.h"
#include "station/framework/FrameworkControl.h"

namespace {
std::atomic<double> g_timeScale{1.0};
std::atomic<int> g_hostStatus{OrlController::TIB_RUNNING};

struct Wifi {
    std::mutex mutex;
    bool succeeds = true;
    vesk::station::WifiRecord record;
};
Wifi& wifi() {
    static Wifi* w = new Wifi();
    return *w;
}
}  // namespace

namespace vesk {
namespace station {

void setTimeScale(double scale) {
    g_timeScale = scale > 0 ? scale : 0.0;
}
double timeScale() {
    return g_timeScale;
}
void setHostStatus(int status) {
    g_hostStatus = status;
}

void setWifiAnswer(bool succeeds) {
    std::lock_guard<std::mutex> lock(wifi().mutex);
    wifi().succeeds = succeeds;
}

WifiRecord wifiRecord() {
    std::lock_guard<std::mutex> lock(wifi().mutex);
    return wifi().record;
}

void resetWifi() {
    std::lock_guard<std::mutex> lock(wifi().mutex);
    wifi().succeeds = true;
    wifi().record = WifiRecord();
}

}  // namespace station
}  // namespace vesk

namespace VESK {
namespace Framework {

namespace {
void sleepScaled(double us) {
    double scaled = std::floor(us * g_timeScale.load());
    if (scaled < 1) {
        std::this_thread::yield();
        return;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(static_cast<int64_t>(scaled)));
}
}  // namespace

void stationSleepUs(unsigned us) {
    sleepScaled(us);
}

void stationSleepMs(unsigned ms) {
    sleepScaled(1000.0 * ms);
}

}  // namespace Framework
}  // namespace VESK

int OrlController::getStatus() {
    return g_hostStatus;
}

std::string OrlController::OrlStatusLiteral(int status) {
    switch (status) {
        case TIB_NOT_STARTED:
            return "TIB_NOT_STARTED";
        case TIB_STARTING:
            return "TIB_STARTING";
        case TIB_INITIALIZING:
            return "TIB_INITIALIZING";
        case TIB_RUNNING:
            return "TIB_RUNNING";
        case TIB_SHUTTING_DOWN:
            return "TIB_SHUTTING_DOWN";
        case TIB_STOPPED:
            return "TIB_STOPPED";
        default:
            return "TIB_UNKNOWN_STATUS";
    }
}

int ITransport::wifiRestart(int mode) {
    std::lock_guard<std::mutex> lock(wifi().mutex);
    ++wifi().record.restarts;
    wifi().record.lastRestartMode = mode;
    VESK_INFO("ITransport: WiFi module restart (%d): %s", mode, wifi().succeeds ? "ok" : "failed");
    return wifi().succeeds ? 1 : 0;
}

int ITransport::wifiResetToFactory() {
    std::lock_guard<std::mutex> lock(wifi().mutex);
    ++wifi().record.factoryResets;
    VESK_INFO("ITransport: WiFi module reset to factory: %s", wifi().succeeds ? "ok" : "failed");
    return wifi().succeeds ? 1 : 0;
}

std::string getPath(char const* environmentVariable, std::string defaultPath) {
    const char* value = environmentVariable != nullptr ? std::getenv(environmentVariable) : nullptr;
    if (value == nullptr || *value == '\0')
        return defaultPath;
    return value;
}

FrameworkInitSAInterfaceT* getFrameworkInitSAInterfaceT() {
    static FrameworkInitSAInterfaceT descriptor = {"VeskFrameworkService", "VeskFrameworkInit",
                                                   "1"};
    return &descriptor;
}

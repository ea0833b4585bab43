// Station-side settings of the platform services, for the embedding program and for tests.
#pragma once

namespace vesk {
namespace station {

// The factor applied to every station sleep: 1 is real time, 0.001 makes a 30 s wait take
// 30 ms, 0 makes sleeps return at once. Negative values count as 0. Any thread.
void setTimeScale(double scale);
double timeScale();

// The host status that OrlController::getStatus() gives (3 up, 4 shutting down).
void setHostStatus(int status);

// Waits until no machine's queue holds or runs an event, at most `ms` milliseconds of real time
// (not scaled). False on time-out. Not from a machine's own thread.
bool waitForIdleQueues(unsigned ms);

// The simulated WiFi module: whether its operations succeed (default true), and what it saw.
struct WifiRecord {
    int restarts = 0;
    int lastRestartMode = -1;
    int factoryResets = 0;
};
void setWifiAnswer(bool succeeds);
WifiRecord wifiRecord();
void resetWifi();

// The time limit of executeCmd in milliseconds of real time (default 300,000).
void setCommandTimeLimitMs(unsigned ms);

}  // namespace station
}  // namespace vesk

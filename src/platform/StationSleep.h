// The one sleep of the agent. Every wait and poll goes through it, so that tests can shorten
// time while keeping the number of polls.
#pragma once

namespace VESK {
namespace Framework {

// Sleeps `ms` milliseconds times the station's time scale (1 unless a test changed it).
void stationSleepMs(unsigned ms);
// The same in microseconds, for the place of a usleep.
void stationSleepUs(unsigned us);

}  // namespace Framework
}  // namespace VESK

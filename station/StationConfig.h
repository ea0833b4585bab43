// Settings of the station layer that the embedding program gives at start.
#pragma once

#include <string>

namespace vesk {
namespace station {

// The folder that holds the station's durable state (database, operation mode, ...).
// Set by the embedding program before the station is used; default "./state".
void setStateDirectory(const std::string& path);
std::string stateDirectory();

}  // namespace station
}  // namespace vesk

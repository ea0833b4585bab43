// The command line's view of the station's fault manager: `alarms` lists the active faults,
// `alarms history` the raises and clears it was told of. Whether it takes notifications is set
// as for every peer, with `peer fault record|refuse`.
#pragma once

#include <string>
#include <vector>

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

// alarms [history]
void runAlarms(Shell& shell, const std::vector<std::string>& args, Answer* answer);

}  // namespace cli
}  // namespace host
}  // namespace vesk

// The command line's view of the station's fault manager: `alarms` lists the active faults,
// `alarms history` the raises and clears it was told of, `alarms refuse` and `alarms accept` make
// it refuse or take the fault notifications that follow.
#pragma once

#include <string>
#include <vector>

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

// alarms [history | refuse | accept]
void runAlarms(Shell& shell, const std::vector<std::string>& args, Answer* answer);

}  // namespace cli
}  // namespace host
}  // namespace vesk

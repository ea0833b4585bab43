// The command line's MO actions and the station's peers. Each command checks its input against
// the model (or the host's peers) before anything is asked, and leaves its answer in the Answer;
// the command table in Commands.cc lists them.
#pragma once

#include <string>
#include <vector>

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

// action DN NAME [PARAM=VALUE...]: the action as the model declares it, parameters typed like
// writes and passed in model order.
void runAction(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// peer | peer NAME show | peer NAME BEHAVIOUR | peer NAME SUBCOMMAND...
void runPeer(Shell& shell, const std::vector<std::string>& args, Answer* answer);

}  // namespace cli
}  // namespace host
}  // namespace vesk

// The command line's write commands (set, create, delete) and the commands of the host's own
// object implementers (oi). Each checks its input against the model before the agent is asked
// and leaves its answer in the Answer; the command table in Commands.cc lists them.
#pragma once

#include <string>
#include <vector>

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

// set DN ATTR [VALUE...]: no value deletes the attribute's value.
void runSet(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// create PARENT_DN CLASS=ID [ATTR=VALUE...]
void runCreate(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// delete DN
void runDelete(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// oi add dn|class DN_OR_PATH BEHAVIOUR | oi set ID BEHAVIOUR | oi list | oi show ID |
// oi remove ID, where BEHAVIOUR is ok, tryagain N or fail CODE.
void runImplementer(Shell& shell, const std::vector<std::string>& args, Answer* answer);

}  // namespace cli
}  // namespace host
}  // namespace vesk

// The command line's MO actions and the station's peers. Each command checks its input against
// the model (or the host's peers) before anything is asked, and leaves its answer in the Answer;
// the command table in Commands.cc lists them.
#pragma once

#include <string>
#include <vector>

#include "host/cli/Answer.h"
#include "host/cli/ValueParser.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

using Pairs = std::vector<std::pair<std::string, std::string>>;

// The parameters of `action` from `given` (name and text each) as the agent takes them: typed
// like writes, in the model's order (the agent reads them by position), optional ones left out
// when not given. False, with the reason, for an unknown, repeated, ill-typed or missing
// mandatory parameter.
bool actionParameters(const ModelView& model, Id action, const Pairs& given,
                      NamedValues* parameters, std::string* error);

// action DN NAME [PARAM=VALUE...]: the action as the model declares it, parameters typed like
// writes and passed in model order.
void runAction(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// peer | peer NAME show | peer NAME BEHAVIOUR | peer NAME SUBCOMMAND...
void runPeer(Shell& shell, const std::vector<std::string>& args, Answer* answer);

}  // namespace cli
}  // namespace host
}  // namespace vesk

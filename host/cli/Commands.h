// The command table of the command line. Each command names its arguments, how many it takes,
// one line of help and the function that runs it. A command checks its input against the model
// before the agent is asked, and leaves its answer (values, refusal, notes) in the Answer.
// New commands (writes, implementer commands) are new rows and functions; nothing else changes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

struct Command {
    const char* name;
    const char* usage;    // the arguments, as help shows them
    const char* summary;  // one line
    size_t minArgs;
    size_t maxArgs;  // kAnyCount for no limit
    void (*run)(Shell& shell, const std::vector<std::string>& args, Answer* answer);
};

constexpr size_t kAnyCount = static_cast<size_t>(-1);

// All commands, in the order help lists them.
const std::vector<Command>& commandTable();
// The command of this name, or null.
const Command* findCommand(const std::string& name);

}  // namespace cli
}  // namespace host
}  // namespace vesk

// Where the command line's input comes from: the commands of -c, the lines of a script, or the
// operator's input (with line editing and history on a terminal, plain lines otherwise). Runs
// them on a started host through one Shell, inside the operator's session.
#pragma once

#include <signal.h>

#include <string>

#include "host/Host.h"
#include "host/cli/Shell.h"

namespace vesk {
namespace host {
namespace cli {

struct ConsoleOptions {
    ShellOptions shell;
    std::string commands;    // -c: ";"-separated commands
    std::string script;      // --script: a file of commands, one or more a line
    int* endedBy = nullptr;  // when given: set to the signal that ended the input, or 0

    // Whether the run is non-interactive: it ends when the commands are done.
    bool batch() const { return !commands.empty() || !script.empty(); }
};

// The protocol number of a --protocol name (netconf 1, cli 2, none 0); false for another name.
bool protocolNumber(const std::string& name, int32_t* protocol);

// Opens the operator's session (unless the protocol is "none"), runs the -c commands, then the
// script; without either, reads input lines until end of input, quit, or one of `signals`
// (blocked by the caller). Aborts a transaction left open, closes the session and returns the
// exit status: 0, kCommandFailed for a failure under strict, 1 for an unreadable script.
int runConsole(Host& host, const ConsoleOptions& options, const sigset_t& signals);

}  // namespace cli
}  // namespace host
}  // namespace vesk

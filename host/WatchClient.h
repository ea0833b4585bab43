// vesk-host --watch: a watcher of the host that runs on a state directory, in a process of its
// own. It opens neither the station nor a plug-in: it listens on "<pid>.sock" in the state
// directory's "watchers" folder, tells every host that connects its pattern, and prints the
// notifications the hosts send (one line of text each, or the JSON objects as they come) until
// SIGINT or SIGTERM. Hosts that come and go are noted on standard error.
#pragma once

#include <signal.h>

#include <string>

namespace vesk {
namespace host {

// Runs the watcher; the exit status: 0 after a signal, 1 for a malformed pattern or a socket
// that cannot be made. `signals` are blocked by the caller.
int runWatcher(const std::string& stateDirectory, const std::string& pattern, bool json,
               const sigset_t& signals);

}  // namespace host
}  // namespace vesk

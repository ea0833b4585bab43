// What vesk-host does for its NETCONF options: make a users file entry, and start the server
// beside the command line.
#pragma once

#include <signal.h>

#include <iostream>
#include <memory>
#include <string>

#include "host/HostOptions.h"
#include "host/netconf/NetconfServer.h"

namespace vesk {
namespace host {
namespace netconf {

// Reads a password from `in` (without echo at a terminal, after a prompt on `prompt`) and
// writes "USER:HASH" to `out`. 0, or 1 when no password or hash could be had.
int printUserEntry(const std::string& user, std::istream& in, std::ostream& out,
                   std::ostream& prompt);

// Starts the server of --netconf on `host` (started); null, with the reason, when it cannot.
std::unique_ptr<NetconfServer> startNetconf(Host& host, const cli::ModelView& model,
                                            const HostOptions& options, std::string* error);

// Waits for one of `signals` (blocked by the caller): the server serves on meanwhile.
void serveUntilSignalled(const sigset_t& signals);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

// The command line of vesk-host.
#pragma once

#include <ostream>
#include <string>

namespace vesk {
namespace host {

struct HostOptions {
    std::string plugin;          // --plugin: the plug-in library to load
    std::string stateDirectory;  // --state: the station's state directory
    int logLevel = -1;           // --log-level as a level number; -1 leaves the threshold
    std::string logFile;         // --log-file: append log lines here instead of stderr
    bool help = false;           // --help: print the options and exit
};

// Parses the arguments. False, with the reason in `error`, for an unknown option, a bad value or
// a missing --plugin (unless --help was asked). The option help goes to `help`.
bool parseHostOptions(int argc, const char* const* argv, HostOptions* options, std::string* error);
// Writes the option help.
void printHostHelp(std::ostream& out);

}  // namespace host
}  // namespace vesk

// The command line of vesk-host.
#pragma once

#include <ostream>
#include <string>

namespace vesk {
namespace host {

// The environment variable through which the agent finds the system-created instance file
// instead of its station path; vesk-host sets it from --system-created-mos.
constexpr char kSystemCreatedMosVariable[] = "VESK_SYSTEM_CREATED_MOS";

struct HostOptions {
    std::string plugin;            // --plugin: the plug-in library to load
    std::string stateDirectory;    // --state: the station's state directory
    bool createState = false;      // --create-state: open it even when it holds no station
    int logLevel = -1;             // --log-level as a level number; -1 leaves the threshold
    std::string logFile;           // --log-file: append log lines here instead of stderr
    bool help = false;             // --help: print the options and exit
    std::string modelDirectory;    // --model: the folder of the station model's YANG files
    std::string systemCreatedMos;  // --system-created-mos: the instance file for the agent
    std::string loadStation;       // --load: a station data file to load into an empty state
    std::string stationObjects;    // --station-objects: the non-MO objects loaded with --load
    // The operator's command line (host/cli).
    std::string commands;           // -c: ";"-separated commands to run, then exit
    std::string script;             // --script: a file of commands to run, then exit
    bool strict = false;            // --strict: stop with a non-zero status at the first failure
    bool json = false;              // --json: one JSON object per answer
    std::string protocol = "cli";   // --protocol: netconf, cli or none
    std::string user = "operator";  // --user: the session's user name
    // The NETCONF server (host/netconf).
    std::string netconf;          // --netconf: [ADDR:]PORT to listen on
    std::string netconfUsers;     // --netconf-users: the users file
    std::string netconfHashUser;  // --netconf-hash-password: print an entry for this user
    // --journal: how many change notifications the host keeps; 0 with --no-journal.
    size_t journal = 1000;
    // --watch: watch the host that runs on the state directory instead of running one.
    bool watch = false;
    std::string watchPattern;  // its pattern; empty for every notification
};

// Parses the arguments. False, with the reason in `error`, for an unknown option, a bad value or
// a missing --plugin (unless --help, --load, --watch or --netconf-hash-password was asked),
// --netconf without --netconf-users, --watch with --plugin or --load, a --protocol other than
// netconf, cli or none, or a --journal outside 1 to 1,000,000. Without --station-objects, --load
// takes station-objects.xml beside its file. The option help goes to `help`.
bool parseHostOptions(int argc, const char* const* argv, HostOptions* options, std::string* error);
// Writes the option help.
void printHostHelp(std::ostream& out);

}  // namespace host
}  // namespace vesk

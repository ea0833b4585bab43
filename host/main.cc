// vesk-host: loads one plug-in, starts its components, runs the operator's commands (from -c,
// --script, or standard input until it ends or SIGINT or SIGTERM arrives), then stops the
// components, terminates the plug-in and exits. Meanwhile watchers in other processes get its
// change notifications. With --watch it is such a watcher instead.
//
// Exit status: 0 after a clean run; 1 bad options or log file; 2 the state directory or its
// database cannot be opened, holds no station (unless --create-state), or another process has the
// directory; 3 the plug-in cannot be loaded (no file, or no entry symbol); 4 its init refused; 5 a
// component failed to start; 6 the station model is missing or invalid; 7 the station data file
// given with --load could not be loaded; 8 a command failed under --strict; 9 the NETCONF server
// cannot start.
//
// With --netconf the NETCONF server runs beside the command line; when the command line ends,
// the server serves on until SIGINT or SIGTERM.
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/WatchClient.h"
#include "host/cli/Answer.h"
#include "host/cli/Console.h"
#include "host/cli/NotificationView.h"
#include "host/events/WatchRelay.h"
#include "host/model/StationLoader.h"
#include "host/netconf/NetconfMain.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace {

enum ExitCode {
    kOk = 0,
    kUsage = 1,
    kState = 2,
    kLoad = 3,
    kInit = 4,
    kStart = 5,
    kModel = 6,
    kStation = 7,
    kNetconf = 9
};

int fail(int code, const std::string& message) {
    std::cerr << "vesk-host: " << message << "\n";
    return code;
}

// Whether the log level was chosen, by --log-level or by the environment.
bool logLevelChosen(const vesk::host::HostOptions& options) {
    const char* variable = std::getenv("VESK_LOG_LEVEL");
    return options.logLevel >= 0 ||
           (variable != nullptr && vesk::log::levelFromName(variable) >= 0);
}

// Without a chosen level only warnings and errors are written.
bool applyLogOptions(const vesk::host::HostOptions& options, std::string* error) {
    if (options.logLevel >= 0) {
        vesk::log::setThreshold(options.logLevel);
    } else if (!logLevelChosen(options)) {
        vesk::log::setThreshold(VESK_LOG_WARNING);
    }
    if (!options.logFile.empty() && !vesk::log::setSinkFile(options.logFile)) {
        *error = "cannot open log file " + options.logFile;
        return false;
    }
    return true;
}

std::string noStation(const std::string& directory) {
    return "no station in " + directory + ": load one with --load";
}

// A directory that is missing or empty holds no station; looked at before the database is
// opened, so that a mistyped --state leaves nothing behind.
bool holdsNothing(const std::string& directory) {
    std::error_code code;
    return !std::filesystem::exists(directory, code) || std::filesystem::is_empty(directory, code);
}

// Puts a state directory that a failed --load found missing or empty back as it was.
void forgetState(const std::string& directory, bool existed) {
    std::error_code code;
    if (!existed) {
        std::filesystem::remove_all(directory, code);
        return;
    }
    for (const auto& entry : std::filesystem::directory_iterator(directory, code)) {
        std::filesystem::remove_all(entry.path(), code);
    }
}

// Loads the station data file of --load into the (empty) open state.
int loadStation(const vesk::host::Host& host, const vesk::host::HostOptions& options) {
    std::string error;
    vesk::host::model::StationLoader loader(*host.model());
    if (!loader.load(options.loadStation, options.stationObjects, &error)) {
        return fail(kStation, "cannot load " + options.loadStation + ": " + error);
    }
    std::cout << "vesk-host: loaded " << loader.objectCount() << " objects into "
              << options.stateDirectory << std::endl;
    return kOk;
}

// The model, the state and the station of --load: kOk, or the exit status.
int prepare(vesk::host::Host& host, const vesk::host::HostOptions& options) {
    std::string error;
    if (!options.loadStation.empty() &&
        !vesk::host::model::StationLoader::isEmptyStateDirectory(options.stateDirectory, &error)) {
        return fail(kStation, error);
    }
    if (!host.loadModel(options.modelDirectory, &error)) {
        return fail(kModel, "cannot load the model: " + error);
    }
    bool checkStation = options.loadStation.empty() && !options.createState;
    if (checkStation && holdsNothing(options.stateDirectory)) {
        return fail(kState, noStation(options.stateDirectory));
    }
    if (!host.openState(options.stateDirectory, &error, options.createState)) {
        return fail(kState, error);
    }
    if (checkStation && !vesk::host::model::StationLoader::holdsStation(*host.model())) {
        return fail(kState, noStation(options.stateDirectory));
    }
    return options.loadStation.empty() ? kOk : loadStation(host, options);
}

// The host's own journal of change notifications (unless --no-journal), kept from before the
// agent starts, as the operator sees them in `notifications`.
void keepJournal(vesk::host::Host& host, const vesk::host::HostOptions& options) {
    if (options.journal == 0) {
        return;
    }
    auto view = std::make_shared<vesk::host::cli::ModelView>(*host.model());
    host.keepJournal(options.journal, [view](const OrlOamSpiCmEvent_Notification_1T& notification) {
        return vesk::host::cli::dumpJson(vesk::host::cli::notificationJson(notification, *view));
    });
}

int run(const vesk::host::HostOptions& options, const sigset_t& signals) {
    // The backups of the station live beside its state unless the environment says otherwise.
    std::error_code unresolved;
    std::string backups =
        std::filesystem::absolute(options.stateDirectory + "/brm_backup", unresolved);
    setenv("VESK_BRM_BACKUP_PATH", backups.c_str(), 0);
    vesk::host::Host host;
    int prepared = prepare(host, options);
    if (prepared != kOk || options.plugin.empty()) {
        return prepared;
    }
    std::error_code ignored;
    std::string instanceFile = std::filesystem::absolute(options.systemCreatedMos, ignored);
    setenv(vesk::host::kSystemCreatedMosVariable, instanceFile.c_str(), 1);
    std::string error;
    switch (host.load(options.plugin, &error)) {
        case vesk::host::Host::kLoaded:
            break;
        case vesk::host::Host::kInitFailed:
            return fail(kInit, error);
        default:
            return fail(kLoad, error);
    }
    keepJournal(host, options);
    if (host.start(&error) != OrlOk) {
        return fail(kStart, error);
    }
    vesk::host::cli::ConsoleOptions console;
    console.shell = {options.json, options.strict, options.protocol, options.user};
    // Unless the operator chose a level or a file, the lines a command logs are its reasons.
    console.shell.divertLog = !logLevelChosen(options) && options.logFile.empty();
    console.commands = options.commands;
    console.script = options.script;
    int endedBy = 0;
    console.endedBy = &endedBy;
    // A batch run keeps standard output for its answers.
    std::ostream& up = console.batch() ? std::cerr : std::cout;
    up << "vesk-host: up, components:";
    for (const std::string& name : host.components().started()) {
        up << " " << name;
    }
    up << std::endl;
    // Watchers in other processes (vesk-host --watch) see this host's notifications.
    vesk::host::cli::ModelView view(*host.model());
    vesk::host::events::WatchRelay relay(
        host.events(), options.stateDirectory,
        [&view](const OrlOamSpiCmEvent_Notification_1T& notification) {
            return vesk::host::cli::notificationJson(notification, view).dump();
        });
    relay.start();
    std::unique_ptr<vesk::host::netconf::NetconfServer> netconf;
    if (!options.netconf.empty()) {
        netconf = vesk::host::netconf::startNetconf(host, view, options, &error);
        if (!netconf) {
            relay.stop();
            return fail(kNetconf, "cannot serve NETCONF: " + error);
        }
        up << "vesk-host: NETCONF on " << options.netconf << std::endl;
    }
    int status = vesk::host::cli::runConsole(host, console, signals);
    if (netconf) {
        // Input that ended on its own leaves the server serving until a signal comes.
        if (endedBy == 0) {
            vesk::host::netconf::serveUntilSignalled(signals);
        }
        netconf->stop();
    }
    host.settleNotifications();
    relay.stop();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    vesk::host::HostOptions options;
    std::string error;
    if (!vesk::host::parseHostOptions(argc, argv, &options, &error)) {
        vesk::host::printHostHelp(std::cerr);
        return fail(kUsage, error);
    }
    if (options.help) {
        vesk::host::printHostHelp(std::cout);
        return kOk;
    }
    if (!options.netconfHashUser.empty()) {
        return vesk::host::netconf::printUserEntry(options.netconfHashUser, std::cin, std::cout,
                                                   std::cerr);
    }
    if (!applyLogOptions(options, &error)) {
        return fail(kUsage, error);
    }
    // Blocked before any thread starts, so that every thread of the plug-in inherits the mask
    // and the console alone takes the signals.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    if (options.watch) {
        return vesk::host::runWatcher(options.stateDirectory, options.watchPattern, options.json,
                                      signals);
    }
    std::error_code ignored;
    bool existed = std::filesystem::exists(options.stateDirectory, ignored);
    bool fresh = !options.loadStation.empty() && holdsNothing(options.stateDirectory);
    int status = run(options, signals);
    if (status == kStation && fresh) {
        forgetState(options.stateDirectory, existed);
    }
    return status;
}

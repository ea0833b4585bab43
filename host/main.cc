// vesk-host: loads one plug-in, starts its components, serves until end of input or SIGINT or
// SIGTERM, then stops the components, terminates the plug-in and exits.
//
// Exit status: 0 after a clean run; 1 bad options or log file; 2 the state directory or its
// database cannot be opened; 3 the plug-in cannot be loaded (no file, or no entry symbol); 4 its
// init refused; 5 a component failed to start.
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <iostream>
#include <string>

#include "host/Host.h"
#include "host/HostOptions.h"
#include "station/log/LogControl.h"

namespace {

enum ExitCode { kOk = 0, kUsage = 1, kState = 2, kLoad = 3, kInit = 4, kStart = 5 };

int fail(int code, const std::string& message) {
    std::cerr << "vesk-host: " << message << "\n";
    return code;
}

bool applyLogOptions(const vesk::host::HostOptions& options, std::string* error) {
    if (options.logLevel >= 0) {
        vesk::log::setThreshold(options.logLevel);
    }
    if (!options.logFile.empty() && !vesk::log::setSinkFile(options.logFile)) {
        *error = "cannot open log file " + options.logFile;
        return false;
    }
    return true;
}

// Returns when standard input ends or one of the blocked signals arrives.
void serve(const sigset_t& signals) {
    char buffer[256];
    for (;;) {
        timespec now{0, 0};
        if (sigtimedwait(&signals, nullptr, &now) > 0) {
            return;
        }
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, 100) > 0 && read(STDIN_FILENO, buffer, sizeof buffer) <= 0) {
            return;
        }
    }
}

int run(const vesk::host::HostOptions& options, const sigset_t& signals) {
    vesk::host::Host host;
    std::string error;
    if (!host.openState(options.stateDirectory, &error)) {
        return fail(kState, "cannot open state directory " + options.stateDirectory + ": " + error);
    }
    switch (host.load(options.plugin, &error)) {
        case vesk::host::Host::kLoaded:
            break;
        case vesk::host::Host::kInitFailed:
            return fail(kInit, error);
        default:
            return fail(kLoad, error);
    }
    if (host.start(&error) != OrlOk) {
        return fail(kStart, error);
    }
    std::cout << "vesk-host: up, components:";
    for (const std::string& name : host.components().started()) {
        std::cout << " " << name;
    }
    std::cout << std::endl;
    serve(signals);
    return kOk;
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
    if (!applyLogOptions(options, &error)) {
        return fail(kUsage, error);
    }
    // Blocked before any thread starts, so that every thread of the plug-in inherits the mask
    // and serve() alone takes the signals.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return run(options, signals);
}

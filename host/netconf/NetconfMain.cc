#include "host/netconf/NetconfMain.h"

#include <termios.h>
#include <unistd.h>

namespace vesk {
namespace host {
namespace netconf {

int printUserEntry(const std::string& user, std::istream& in, std::ostream& out,
                   std::ostream& prompt) {
    const bool terminal = &in == &std::cin && isatty(STDIN_FILENO);
    termios saved{};
    if (terminal) {
        prompt << "password for " << user << ": " << std::flush;
        tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= ~ECHO;
        tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    std::string password;
    std::getline(in, password);
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        prompt << "\n";
    }
    std::string hash = password.empty() ? std::string() : Users::hash(password);
    if (hash.empty() || user.empty() || user.find(':') != std::string::npos) {
        prompt << "vesk-host: no entry made (a user name without ':' and a password are needed)\n";
        return 1;
    }
    out << user << ":" << hash << std::endl;
    return 0;
}

std::unique_ptr<NetconfServer> startNetconf(Host& host, const cli::ModelView& model,
                                            const HostOptions& options, std::string* error) {
    NetconfConfig config;
    if (!parseListen(options.netconf, &config, error)) {
        return nullptr;
    }
    config.usersFile = options.netconfUsers;
    config.stateDirectory = options.stateDirectory;
    config.modelDirectory = options.modelDirectory;
    config.protocolDirectory = VESK_DATA_DIR "/netconf";
    auto server = std::make_unique<NetconfServer>(host, model);
    if (!server->start(config, error)) {
        return nullptr;
    }
    return server;
}

void serveUntilSignalled(const sigset_t& signals) {
    int taken = 0;
    sigwait(&signals, &taken);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

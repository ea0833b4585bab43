#include "host/cli/Console.h"

#include <poll.h>
#include <readline/history.h>
#include <readline/readline.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "host/Sessions.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

const char* const kPrompt = "vesk> ";

// True when one of `signals` is pending (and takes it).
bool signalled(const sigset_t& signals) {
    timespec now{0, 0};
    return sigtimedwait(&signals, nullptr, &now) > 0;
}

// True when standard input has something to read within 100 ms.
bool inputReady() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 100) > 0;
}

bool runScript(Shell& shell, const std::string& path, std::ostream& err) {
    std::ifstream in(path);
    if (!in) {
        err << "vesk-host: cannot read script " << path << std::endl;
        return false;
    }
    std::string line;
    while (std::getline(in, line) && shell.runText(line)) {
    }
    return true;
}

// Plain lines from a pipe or a file.
void readLines(Shell& shell, const sigset_t& signals) {
    std::string pending;
    char buffer[4096];
    while (!shell.stopped() && !signalled(signals)) {
        if (!inputReady()) {
            continue;
        }
        ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0) {
            shell.runText(pending);
            return;
        }
        pending.append(buffer, static_cast<size_t>(got));
        for (size_t end; (end = pending.find('\n')) != std::string::npos;) {
            std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            if (!shell.runText(line)) {
                return;
            }
        }
    }
}

// The shell the line editor's callback feeds, and whether input has ended.
Shell* g_editing = nullptr;
bool g_inputEnded = false;

void onEditedLine(char* line) {
    if (line == nullptr) {
        g_inputEnded = true;
        std::printf("\n");
        return;
    }
    if (*line != '\0') {
        add_history(line);
    }
    g_editing->runText(line);
    std::free(line);
}

// A terminal: line editing and history, with the signals still watched between keys.
void editLines(Shell& shell, const sigset_t& signals) {
    g_editing = &shell;
    g_inputEnded = false;
    rl_callback_handler_install(kPrompt, onEditedLine);
    while (!g_inputEnded && !shell.stopped() && !signalled(signals)) {
        if (inputReady()) {
            rl_callback_read_char();
        }
    }
    rl_callback_handler_remove();
    g_editing = nullptr;
}

int runShell(Shell& shell, const ConsoleOptions& options, const sigset_t& signals) {
    if (!options.batch()) {
        if (isatty(STDIN_FILENO)) {
            editLines(shell, signals);
        } else {
            readLines(shell, signals);
        }
        return shell.exitStatus();
    }
    if (!options.commands.empty() && !shell.runText(options.commands)) {
        return shell.exitStatus();
    }
    shell.setEcho(true);
    if (!options.script.empty() && !runScript(shell, options.script, std::cerr)) {
        return 1;
    }
    return shell.exitStatus();
}

}  // namespace

bool protocolNumber(const std::string& name, int32_t* protocol) {
    if (name == "netconf") {
        *protocol = kProtocolNetconf;
    } else if (name == "cli") {
        *protocol = kProtocolCli;
    } else if (name == "none") {
        *protocol = kProtocolUnknown;
    } else {
        return false;
    }
    return true;
}

int runConsole(Host& host, const ConsoleOptions& options, const sigset_t& signals) {
    if (host.model() == nullptr) {
        std::cerr << "vesk-host: the command line needs the station model" << std::endl;
        return 1;
    }
    int32_t protocol = kProtocolUnknown;
    bool session = protocolNumber(options.shell.protocol, &protocol) && protocol != 0;
    if (session) {
        host.openSession(protocol, options.shell.user);
    }
    ModelView model(*host.model());
    int status = 0;
    {
        Shell shell(host, model, options.shell, std::cout);
        status = runShell(shell, options, signals);
        shell.finish();
    }
    if (session) {
        host.closeSession();
    }
    return status;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

#include "host/cli/Console.h"

#include <poll.h>
#include <readline/history.h>
#include <readline/readline.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <vector>

#include "host/Sessions.h"
#include "host/cli/Completion.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

const char* const kPrompt = "vesk> ";

// The one of `signals` that is pending (taken), or 0.
int consoleSignalled(const sigset_t& signals) {
    timespec now{0, 0};
    int taken = sigtimedwait(&signals, nullptr, &now);
    return taken > 0 ? taken : 0;
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

// Plain lines from a pipe or a file. The signal that ended them, or 0.
int readLines(Shell& shell, const sigset_t& signals) {
    std::string pending;
    char buffer[4096];
    while (!shell.stopped()) {
        if (int signal = consoleSignalled(signals)) {
            return signal;
        }
        shell.poll();
        if (!inputReady()) {
            continue;
        }
        ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0) {
            shell.runText(pending);
            return 0;
        }
        pending.append(buffer, static_cast<size_t>(got));
        for (size_t end; (end = pending.find('\n')) != std::string::npos;) {
            std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            if (!shell.runText(line)) {
                return 0;
            }
        }
    }
    return 0;
}

// The shell the line editor's callback feeds, whether input has ended, and whether the last
// key was a Ctrl-C.
Shell* g_editing = nullptr;
bool g_inputEnded = false;
bool g_interrupted = false;

// The words the completion generator hands out.
std::vector<std::string> g_completions;

char* nextCompletion(const char*, int state) {
    static size_t next = 0;
    next = state == 0 ? 0 : next;
    return next < g_completions.size() ? strdup(g_completions[next++].c_str()) : nullptr;
}

// The line editor's completion: ours only, never file names. What the agent logs while it
// reads the MOs is not written over the line being typed.
char** completeLine(const char* text, int start, int) {
    rl_attempted_completion_over = 1;
    if (g_editing->busy()) {
        return nullptr;  // the agent is in the middle of a commit
    }
    vesk::log::LogCapture quiet(VESK_LOG_WARNING, true);
    Completions found = complete(*g_editing, std::string(rl_line_buffer, start), text);
    g_completions = found.words;
    rl_completion_suppress_append = found.space ? 0 : 1;
    return rl_completion_matches(text, nextCompletion);
}

// Ctrl-C at the prompt: drops the line being typed; on an empty line right after another
// Ctrl-C, ends the input. True when the input ends.
bool interrupt() {
    bool empty = rl_end == 0;
    if (empty && g_interrupted) {
        std::printf("\n");
        return true;
    }
    std::printf(empty ? "^C (Ctrl-C again or Ctrl-D to leave)\n" : "^C\n");
    std::fflush(stdout);
    rl_replace_line("", 0);
    rl_on_new_line();
    rl_redisplay();
    g_interrupted = true;
    return false;
}

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

// A terminal: line editing, history and completion, with the signals still watched between
// keys: SIGINT is Ctrl-C, SIGTERM ends. The signal that ended them, or 0.
int editLines(Shell& shell, const sigset_t& signals) {
    static char breaks[] = " \t;";
    g_editing = &shell;
    g_inputEnded = false;
    g_interrupted = false;
    rl_attempted_completion_function = completeLine;
    rl_completer_word_break_characters = breaks;
    rl_callback_handler_install(kPrompt, onEditedLine);
    int ended = 0;
    while (!g_inputEnded && !shell.stopped()) {
        int signal = consoleSignalled(signals);
        if (signal == SIGTERM || (signal == SIGINT && interrupt())) {
            ended = signal;
            break;
        }
        if (inputReady()) {
            g_interrupted = false;
            rl_callback_read_char();
        } else if (shell.busy()) {
            shell.poll();
            if (!shell.busy()) {
                rl_on_new_line();
                rl_redisplay();
            }
        }
    }
    rl_callback_handler_remove();
    g_editing = nullptr;
    return ended;
}

int runShell(Shell& shell, const ConsoleOptions& options, const sigset_t& signals) {
    if (!options.batch()) {
        int signal = isatty(STDIN_FILENO) ? editLines(shell, signals) : readLines(shell, signals);
        if (options.endedBy != nullptr) {
            *options.endedBy = signal;
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

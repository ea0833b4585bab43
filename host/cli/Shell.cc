#include "host/cli/Shell.h"

#include <algorithm>
#include <chrono>

#include "host/cli/CommandText.h"
#include "host/cli/Commands.h"
#include "host/cli/WatchCommands.h"
#include "host/peers/Peers.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace vesk {
namespace host {
namespace cli {

Shell::Shell(Host& host, const ModelView& model, const ShellOptions& options, std::ostream& out)
    : _host(host), _model(model), _options(options), _out(out), _executor(host, model) {}

Shell::~Shell() {
    finish();
}

bool Shell::runText(const std::string& text) {
    for (const std::string& command : splitCommands(text)) {
        if (!runCommand(command)) {
            return false;
        }
    }
    return !_stopped;
}

bool Shell::runCommand(const std::string& command) {
    if (_stopped) {
        return false;
    }
    Answer answer;
    std::vector<std::string> words;
    bool split = splitWords(command, &words, &answer.error);
    if (split && (words.empty() || words[0][0] == '#')) {
        return true;
    }
    if (busy() && !(split && words[0] == "peer")) {
        awaitCommit();
        if (_stopped) {
            return false;
        }
    }
    if (_options.echo && !_options.json) {
        std::lock_guard<std::mutex> lock(_outputMutex);
        _out << "vesk> " << command << "\n";
    }
    if (!split) {
        answer.command = command;
    } else if (words[0] != "commit") {
        execute(words, &answer);
    } else if (startCommit(words, &answer)) {
        return !_stopped;  // the answer is printed when the commit ends
    }
    conclude(answer);
    return !_stopped;
}

void Shell::conclude(const Answer& answer) {
    print(answer);
    if (answer.failed() && _options.strict) {
        _exitStatus = kCommandFailed;
        _stopped = true;
    }
}

bool Shell::startCommit(const std::vector<std::string>& words, Answer* answer) {
    uint64_t session = 0;
    bool bound = _host.sessions().bound(&session) == OrlOk;
    _backgroundDone = false;
    _background = std::thread([this, words, bound, session] {
        if (bound) {
            _host.sessions().bind(session);
        }
        Answer ended;
        execute(words, &ended);
        _host.sessions().unbind();
        _backgroundAnswer = std::move(ended);
        _backgroundDone = true;
    });
    for (;;) {
        if (_backgroundDone) {
            _background.join();
            *answer = std::move(_backgroundAnswer);
            return false;
        }
        if (_host.peers().waitedOn()) {
            Answer waiting;
            waiting.command = "commit";
            waiting.notes.push_back(
                "the commit waits for a peer's answer; peer commands run meanwhile, others after "
                "it");
            print(waiting);
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void Shell::poll() {
    if (busy() && _backgroundDone) {
        awaitCommit();
    }
}

void Shell::awaitCommit() {
    _background.join();
    Answer ended = std::move(_backgroundAnswer);
    conclude(ended);
}

void Shell::execute(const std::vector<std::string>& words, Answer* answer) {
    answer->command = words[0];
    answer->args.assign(words.begin() + 1, words.end());
    const Command* found = findCommand(words[0]);
    if (found == nullptr) {
        answer->error = "unknown command '" + words[0] + "' (try help)";
        return;
    }
    if (answer->args.size() < found->minArgs || answer->args.size() > found->maxArgs) {
        answer->error = std::string("usage: ") + found->name + " " + found->usage;
        return;
    }
    // Information lines are taken too: a validation rule tells why it refused only at that level,
    // so they are shown with an answer the agent refused.
    vesk::log::LogCapture logged(VESK_LOG_INFO, _options.divertLog);
    found->run(*this, answer->args, answer);
    const bool refused = answer->asked && answer->code != OrlOk;
    for (const vesk::log::LogLine& line : logged.lines()) {
        if (line.level > VESK_LOG_WARNING && !refused) {
            continue;
        }
        std::string text = line.text.substr(0, line.text.find_last_not_of(" \r\n") + 1);
        // A rule retried or a walk repeated logs the same line again; it is shown once.
        if (std::find(answer->reasons.begin(), answer->reasons.end(), text) ==
            answer->reasons.end()) {
            answer->reasons.push_back(text);
        }
    }
}

void Shell::finish() {
    if (_finished) {
        return;
    }
    _finished = true;
    if (busy()) {
        awaitCommit();
    }
    _watches.reset();
    if (!_executor.inTransaction()) {
        return;
    }
    Answer answer;
    answer.command = "abort";
    OrlTxHandleT tx = _executor.transaction();
    _executor.abort(&answer);
    answer.notes.assign(1, "transaction " + std::to_string(tx) + " was open at exit: aborted");
    print(answer);
}

Watches& Shell::watches() {
    if (_watches == nullptr) {
        _watches.reset(new Watches(*this));
    }
    return *_watches;
}

void Shell::print(const Answer& answer) {
    std::lock_guard<std::mutex> lock(_outputMutex);
    if (_options.json) {
        _out << dumpJson(toJson(answer)) << std::endl;
    } else {
        writeText(answer, _out);
    }
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

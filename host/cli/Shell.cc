#include "host/cli/Shell.h"

#include <algorithm>

#include "host/cli/CommandText.h"
#include "host/cli/Commands.h"
#include "host/cli/WatchCommands.h"
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
    if (_options.echo && !_options.json) {
        std::lock_guard<std::mutex> lock(_outputMutex);
        _out << "vesk> " << command << "\n";
    }
    if (!split) {
        answer.command = command;
    } else {
        execute(words, &answer);
    }
    print(answer);
    if (answer.failed() && _options.strict) {
        _exitStatus = kCommandFailed;
        _stopped = true;
    }
    return !_stopped;
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

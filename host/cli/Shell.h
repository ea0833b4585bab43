// The command line's interpreter: takes one command at a time (words split as CommandText
// does), runs it from the command table and prints its answer, as text or as one JSON object a
// line. It owns the executor, so at most one transaction opened with `begin`; finish() aborts
// one still open, with a line saying so. Used from one thread, the one the session is bound to.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "host/Host.h"
#include "host/cli/Answer.h"
#include "host/cli/Executor.h"
#include "host/cli/ModelView.h"

namespace vesk {
namespace host {
namespace cli {

struct ShellOptions {
    bool json = false;             // one JSON object per answer instead of text
    bool strict = false;           // stop at the first failed command
    std::string protocol = "cli";  // as bound to the requests' session: netconf, cli or none
    std::string user;
    bool echo = false;  // text answers are preceded by the prompt and the command (scripts)
    // The warning and error lines logged while a command runs are shown with its answer as
    // reasons; when `divertLog` is set they are not written to the log as well.
    bool divertLog = false;
};

// Exit status of a run stopped by a failed command under `strict`.
constexpr int kCommandFailed = 8;

class Watches;

class Shell {
  public:
    // `host` (started) and `model` must outlive the shell; answers go to `out`.
    Shell(Host& host, const ModelView& model, const ShellOptions& options, std::ostream& out);
    ~Shell();
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    // Runs each ";"-separated command of `text` until one stops the shell. False once the
    // shell has stopped (quit, or a failure under strict).
    bool runText(const std::string& text);
    // Runs one command (a blank one or a comment beginning with "#" does nothing).
    bool runCommand(const std::string& command);

    // Collects a commit that ran on while the agent waited for a peer, once it has ended, and
    // prints its answer. Between input lines; never blocks.
    void poll();
    // Whether such a commit runs on now: until it ends only `peer` commands run at once, any
    // other command first waits for it.
    bool busy() const { return _background.joinable(); }

    bool stopped() const { return _stopped; }
    // 0, or kCommandFailed when a failure stopped a strict run.
    int exitStatus() const { return _exitStatus; }
    // Ends the watches, then aborts a transaction still open, with a line saying so. Called
    // once at exit.
    void finish();

    // For the commands.
    Executor& executor() { return _executor; }
    const ModelView& model() const { return _model; }
    Host& host() { return _host; }
    const ShellOptions& options() const { return _options; }
    void requestQuit() { _stopped = true; }
    void setEcho(bool echo) { _options.echo = echo; }
    // The watches of change notifications, made at first use. They print from their own
    // threads to out() while holding outputMutex(), as the shell's answers are printed.
    Watches& watches();
    std::ostream& out() { return _out; }
    std::mutex& outputMutex() { return _outputMutex; }

  private:
    // Runs the command of `words` into `answer`, with the lines it logs as reasons.
    void execute(const std::vector<std::string>& words, Answer* answer);
    void print(const Answer& answer);
    // Prints the answer and stops a strict run on a failure.
    void conclude(const Answer& answer);
    // Runs the commit of `words` on a thread of its own, bound to the operator's session, and
    // waits for it, unless a peer holds back an answer the agent waits for: then true, and the
    // commit runs on (see busy). False with `answer` filled when it ended.
    bool startCommit(const std::vector<std::string>& words, Answer* answer);
    // Waits for a commit that runs on and prints its answer.
    void awaitCommit();

    Host& _host;
    const ModelView& _model;
    ShellOptions _options;
    std::ostream& _out;
    Executor _executor;
    bool _stopped = false;
    bool _finished = false;
    int _exitStatus = 0;
    std::mutex _outputMutex;
    std::thread _background;  // a commit that runs on
    std::atomic<bool> _backgroundDone{false};
    Answer _backgroundAnswer;           // written by _background before _backgroundDone
    std::unique_ptr<Watches> _watches;  // last: its threads print through the members above
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

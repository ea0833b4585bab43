#include "platform/ExecuteCmd.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/Logger.h"
#include "station/framework/FrameworkControl.h"

extern char** environ;

namespace {
std::atomic<unsigned> g_timeLimitMs{300000};

// Starts `/bin/sh -c command` in a process group of its own; -1 on failure.
pid_t spawnShell(const std::string& command, const std::string& outputFile) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const char* out = outputFile.empty() ? "/dev/null" : outputFile.c_str();
    int flags = O_WRONLY | O_CREAT | (outputFile.empty() ? 0 : O_APPEND);
    posix_spawn_file_actions_addopen(&actions, 1, out, flags, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attr, 0);
    const char* argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
    pid_t pid = -1;
    int rc = posix_spawn(&pid, "/bin/sh", &actions, &attr, const_cast<char**>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    if (rc != 0) {
        errno = rc;
        return -1;
    }
    return pid;
}

// Waits for `pid` up to the time limit; true with its wait status, false after killing it.
bool waitLimited(pid_t pid, int& status) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(g_timeLimitMs);
    auto step = std::chrono::microseconds(500);
    for (;;) {
        pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid || (done < 0 && errno != EINTR))
            return done == pid;
        if (std::chrono::steady_clock::now() >= deadline)
            break;
        std::this_thread::sleep_for(step);
        step = std::min(step * 2, std::chrono::microseconds(50000));
    }
    kill(-pid, SIGKILL);
    waitpid(pid, &status, 0);
    return false;
}
}  // namespace

namespace vesk {
namespace station {
void setCommandTimeLimitMs(unsigned ms) {
    g_timeLimitMs = ms;
}
}  // namespace station
}  // namespace vesk

int executeCmd(int component, std::string const& command, std::string const& second, bool flag) {
    VESK_INFO("executeCmd: component %d runs '%s'%s", component, command.c_str(),
              flag ? " (flag set)" : "");
    pid_t pid = spawnShell(command, second);
    if (pid < 0) {
        VESK_ERROR("executeCmd: '%s' could not be started: %s", command.c_str(),
                   std::strerror(errno));
        return -1;
    }
    int status = 0;
    if (!waitLimited(pid, status)) {
        VESK_ERROR("executeCmd: '%s' was stopped after %u ms", command.c_str(),
                   g_timeLimitMs.load());
        return -1;
    }
    if (!WIFEXITED(status)) {
        VESK_ERROR("executeCmd: '%s' ended by signal %d", command.c_str(), WTERMSIG(status));
        return -1;
    }
    VESK_INFO("executeCmd: '%s' exited with status %d", command.c_str(), WEXITSTATUS(status));
    return WEXITSTATUS(status);
}

int executeCmd(e_eComp component, std::string const& command, std::string const& second,
               bool flag) {
    return executeCmd(static_cast<int>(component), command, second, flag);
}

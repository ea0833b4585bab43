#include "platform/ExecuteCmd.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
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
// "rm [-f|-r|-rf] PATH" is carried out here, with everything after the options as one path
// ("DIR/*": every entry of DIR), so that a file name never reaches a shell, whatever it holds.
// False for any other command. `status` is rm's: 0 done, 1 not.
bool removeInProcess(const std::string& command, int* status) {
    if (command.rfind("rm ", 0) != 0)
        return false;
    std::string path = command.substr(3);
    bool recursive = false;
    for (const char* option : {"-rf ", "-fr ", "-r ", "-f "}) {
        if (path.rfind(option, 0) == 0) {
            recursive = std::string(option).find('r') != std::string::npos;
            path = path.substr(std::strlen(option));
            break;
        }
    }
    std::error_code ec;
    bool ok = true;
    if (path.size() >= 2 && path.compare(path.size() - 2, 2, "/*") == 0) {
        std::filesystem::path folder = path.substr(0, path.size() - 2);
        for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
            std::error_code one;
            recursive ? std::filesystem::remove_all(entry.path(), one)
                      : std::filesystem::remove(entry.path(), one);
            ok = ok && !one;
        }
        ok = ok && !ec;
    } else if (recursive) {
        std::filesystem::remove_all(path, ec);
        ok = !ec;
    } else {
        // As rm: a folder only with -r.
        ok = !std::filesystem::is_directory(std::filesystem::symlink_status(path, ec)) &&
             std::filesystem::remove(path, ec);
    }
    *status = ok ? 0 : 1;
    return true;
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
    int removed = 0;
    if (removeInProcess(command, &removed)) {
        VESK_INFO("executeCmd: '%s' exited with status %d", command.c_str(), removed);
        return removed;
    }
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

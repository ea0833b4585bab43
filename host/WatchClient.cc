#include "host/WatchClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <iostream>
#include <vector>

#include "host/cli/NotificationView.h"
#include "host/events/WatchRelay.h"

namespace vesk {
namespace host {
namespace {

// One host that connected, and the part of a line it has sent so far.
struct Peer {
    int fd;
    std::string pending;
    std::string name = "a host";
};

bool signalled(const sigset_t& signals) {
    timespec now{0, 0};
    return sigtimedwait(&signals, nullptr, &now) > 0;
}

// Prints one line a host sent: its greeting on standard error, a notification on standard output.
void printLine(Peer& peer, const std::string& line, bool json) {
    cli::Json value = cli::Json::parse(line, nullptr, false);
    if (value.is_discarded() || !value.is_object()) {
        std::cerr << "vesk-host: unreadable line from " << peer.name << std::endl;
        return;
    }
    if (value.contains("host")) {
        peer.name = "host " + value["host"].dump();
        std::cerr << "vesk-host: " << peer.name << " joined" << std::endl;
        return;
    }
    std::cout << (json ? line : cli::notificationText(value)) << std::endl;
}

// Reads what `peer` sent; false when it has gone.
bool readPeer(Peer& peer, bool json) {
    char buffer[4096];
    ssize_t n = read(peer.fd, buffer, sizeof buffer);
    if (n <= 0) {
        return false;
    }
    peer.pending.append(buffer, static_cast<size_t>(n));
    for (size_t end; (end = peer.pending.find('\n')) != std::string::npos;) {
        printLine(peer, peer.pending.substr(0, end), json);
        peer.pending.erase(0, end + 1);
    }
    return true;
}

// The listening socket at `path`, or -1 with the reason on standard error.
int listenAt(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        std::cerr << "vesk-host: the state directory's path is too long for a socket: " << path
                  << std::endl;
        return -1;
    }
    std::strcpy(address.sun_path, path.c_str());
    unlink(path.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, 8) != 0) {
        std::cerr << "vesk-host: cannot listen at " << path << ": " << std::strerror(errno)
                  << std::endl;
        if (fd >= 0) {
            close(fd);
        }
        return -1;
    }
    return fd;
}

void serve(int listener, const std::string& pattern, bool json, const sigset_t& signals) {
    std::vector<Peer> peers;
    while (!signalled(signals)) {
        std::vector<pollfd> fds{{listener, POLLIN, 0}};
        for (const Peer& peer : peers) {
            fds.push_back({peer.fd, POLLIN, 0});
        }
        if (poll(fds.data(), fds.size(), 100) <= 0) {
            continue;
        }
        for (size_t i = peers.size(); i > 0; --i) {
            if (fds[i].revents != 0 && !readPeer(peers[i - 1], json)) {
                std::cerr << "vesk-host: " << peers[i - 1].name << " left" << std::endl;
                close(peers[i - 1].fd);
                peers.erase(peers.begin() + static_cast<long>(i - 1));
            }
        }
        if (fds[0].revents & POLLIN) {
            int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            std::string hello = pattern + "\n";
            if (fd >= 0 && send(fd, hello.data(), hello.size(), MSG_NOSIGNAL) ==
                               static_cast<ssize_t>(hello.size())) {
                peers.push_back({fd, std::string()});
            } else if (fd >= 0) {
                close(fd);
            }
        }
    }
    for (const Peer& peer : peers) {
        close(peer.fd);
    }
}

}  // namespace

int runWatcher(const std::string& stateDirectory, const std::string& pattern, bool json,
               const sigset_t& signals) {
    std::string bad = cli::filterPatternError(pattern);
    if (!bad.empty()) {
        std::cerr << "vesk-host: bad --watch pattern '" << pattern << "': " << bad << std::endl;
        return 1;
    }
    std::string folder = events::watcherFolder(stateDirectory);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::string path = folder + "/" + std::to_string(getpid()) + ".sock";
    int listener = listenAt(path);
    if (listener < 0) {
        return 1;
    }
    std::cerr << "vesk-host: watching the host on " << stateDirectory << " for "
              << (pattern.empty() ? std::string("every notification")
                                  : "dns matching '" + pattern + "'")
              << " (interrupt to end)" << std::endl;
    serve(listener, pattern, json, signals);
    close(listener);
    unlink(path.c_str());
    return 0;
}

}  // namespace host
}  // namespace vesk

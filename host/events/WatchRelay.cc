#include "host/events/WatchRelay.h"

#include <dirent.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace events {
namespace {

const int kScanMs = 100;
const int kHelloMs = 1000;

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Writes all of `text`; false when the watcher cannot take it.
bool writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = send(fd, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

// The watcher's first line, within a second; false when none comes.
bool readLine(int fd, std::string* line) {
    auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(kHelloMs);
    char c = 0;
    while (std::chrono::steady_clock::now() < limit) {
        pollfd in{fd, POLLIN, 0};
        if (poll(&in, 1, 50) <= 0) {
            continue;
        }
        ssize_t n = read(fd, &c, 1);
        if (n <= 0) {
            return false;
        }
        if (c == '\n') {
            return true;
        }
        *line += c;
    }
    return false;
}

}  // namespace

std::string watcherFolder(const std::string& stateDirectory) {
    return stateDirectory + "/watchers";
}

WatchRelay::WatchRelay(EventRouter& router, const std::string& stateDirectory, Format format)
    : _router(router), _folder(watcherFolder(stateDirectory)), _format(std::move(format)) {}

WatchRelay::~WatchRelay() {
    stop();
}

void WatchRelay::start() {
    scan();
    _thread = std::thread([this] { run(); });
}

void WatchRelay::stop() {
    _stopping = true;
    if (_thread.joinable()) {
        _thread.join();
    }
    std::lock_guard<std::mutex> lock(_mutex);
    for (auto& remote : _remotes) {
        end(*remote);
    }
    _remotes.clear();
}

size_t WatchRelay::watchers() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _remotes.size();
}

void WatchRelay::run() {
    while (!_stopping) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kScanMs));
        reap();
        scan();
    }
}

void WatchRelay::scan() {
    DIR* folder = opendir(_folder.c_str());
    if (folder == nullptr) {
        return;
    }
    std::vector<std::string> paths;
    while (dirent* entry = readdir(folder)) {
        std::string name = entry->d_name;
        if (endsWith(name, ".sock")) {
            paths.push_back(_folder + "/" + name);
        }
    }
    closedir(folder);
    for (const std::string& path : paths) {
        bool known = false;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            for (const auto& remote : _remotes) {
                known = known || remote->path == path;
            }
        }
        if (!known) {
            connectTo(path);
        }
    }
}

void WatchRelay::connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return;
    }
    std::strcpy(address.sun_path, path.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::string pattern;
    if (fd < 0 || connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        !readLine(fd, &pattern)) {
        // A socket left by a watcher that ended: nobody listens there.
        if (fd >= 0) {
            close(fd);
        }
        return;
    }
    std::unique_ptr<Remote> remote(new Remote);
    remote->fd = fd;
    remote->path = path;
    Remote* target = remote.get();
    remote->consumer = _router.addConsumer(
        "watcher " + path.substr(_folder.size() + 1),
        [this, target](unsigned long, const char*, const void* notification) {
            const auto* record = static_cast<const OrlOamSpiCmEvent_Notification_1T*>(notification);
            if (!target->broken && !writeAll(target->fd, _format(*record) + "\n")) {
                target->broken = true;
            }
        });
    std::vector<std::string> patterns;
    if (!pattern.empty()) {
        patterns.push_back(pattern);
    }
    _router.subscribe(remote->consumer, kCmEventType, patterns);
    writeAll(fd, "{\"host\":" + std::to_string(getpid()) +
                     ",\"consumer\":" + std::to_string(remote->consumer) + "}\n");
    VESK_INFO("host: watcher %s connected, pattern '%s'", path.c_str(), pattern.c_str());
    std::lock_guard<std::mutex> lock(_mutex);
    _remotes.push_back(std::move(remote));
}

void WatchRelay::reap() {
    std::lock_guard<std::mutex> lock(_mutex);
    for (auto it = _remotes.begin(); it != _remotes.end();) {
        Remote& remote = **it;
        pollfd in{remote.fd, POLLIN, 0};
        char byte = 0;
        // A watcher sends nothing after its pattern: readable means it has gone.
        bool gone =
            remote.broken || (poll(&in, 1, 0) > 0 && recv(remote.fd, &byte, 1, MSG_DONTWAIT) <= 0);
        if (gone) {
            VESK_INFO("host: watcher %s left", remote.path.c_str());
            end(remote);
            it = _remotes.erase(it);
        } else {
            ++it;
        }
    }
}

void WatchRelay::end(Remote& remote) {
    // A delivery blocked on a full socket returns once the socket is shut.
    shutdown(remote.fd, SHUT_RDWR);
    _router.removeConsumer(remote.consumer);
    close(remote.fd);
}

}  // namespace events
}  // namespace host
}  // namespace vesk

// Watchers in other processes. `vesk-host --watch` does not open the station (one process owns
// a state directory): it listens on a socket of its own, "<pid>.sock" in the folder "watchers"
// of the state directory, and the host that runs there connects to it. The relay looks for such
// sockets when it starts and every 100 ms after; for each one it reads the watcher's pattern (one
// line), adds a router consumer with that filter and writes every notification the consumer
// gets to the watcher as one line. A watcher that goes away ends its consumer; a slow watcher
// only fills its own consumer's queue.
//
// Lines to a watcher: first {"host": PID, "consumer": HANDLE}, then one notification each, as
// `format` makes it (one JSON object, no line end).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/events/EventRouter.h"

namespace vesk {
namespace host {
namespace events {

// The folder of watcher sockets of a state directory.
std::string watcherFolder(const std::string& stateDirectory);

class WatchRelay {
  public:
    using Format = std::function<std::string(const OrlOamSpiCmEvent_Notification_1T&)>;

    // `router` must outlive the relay.
    WatchRelay(EventRouter& router, const std::string& stateDirectory, Format format);
    // stop().
    ~WatchRelay();
    WatchRelay(const WatchRelay&) = delete;
    WatchRelay& operator=(const WatchRelay&) = delete;

    // Connects to the watchers already there, then keeps looking on a thread of its own.
    void start();
    // Ends the thread and every watcher's consumer (what they still queue is given back).
    void stop();
    // The watchers connected now.
    size_t watchers() const;

  private:
    struct Remote {
        int fd;
        unsigned long consumer;
        std::string path;
        std::atomic<bool> broken{false};  // a write failed
    };

    void run();
    // Connects to every socket of the folder not connected yet.
    void scan();
    void connectTo(const std::string& path);
    // Ends the consumers of watchers that left or could not be written to.
    void reap();
    void end(Remote& remote);

    EventRouter& _router;
    const std::string _folder;
    Format _format;
    mutable std::mutex _mutex;
    std::vector<std::unique_ptr<Remote>> _remotes;
    std::atomic<bool> _stopping{false};
    std::thread _thread;
};

}  // namespace events
}  // namespace host
}  // namespace vesk

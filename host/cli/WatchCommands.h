// The command line's watches of change notifications: `watch [REGEX]` adds a consumer to the
// host's event router that prints every notification whose dn matches REGEX as a whole (every
// notification without one), as it arrives; `unwatch [N]` ends watch N, or all. The shell owns
// its watches; they end with it. `notifications` shows what the host's journal kept.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/cli/Answer.h"
#include "platform/orl/OrlEventRouter.h"

namespace vesk {
namespace host {
namespace cli {

class Shell;

class Watches {
  public:
    explicit Watches(Shell& shell) : _shell(shell) {}
    // Ends every watch.
    ~Watches();
    Watches(const Watches&) = delete;
    Watches& operator=(const Watches&) = delete;

    // A new watch on `pattern` (empty: everything); its number, or 0 with the reason in `error`
    // when the pattern is malformed or the router refuses.
    int add(const std::string& pattern, std::string* error);
    // Lets the notifications of commits already made arrive, then ends watch `id`; false when
    // there is no such watch. Its number of notifications printed in `printed`.
    bool remove(int id, uint64_t* printed);
    std::vector<int> ids() const;

  private:
    // On the consumer's thread: prints one notification of watch `id`.
    void print(int id, const OrlOamSpiCmEvent_Notification_1T& notification);

    Shell& _shell;
    std::map<int, unsigned long> _consumers;  // watch number to router consumer
    int _next = 1;
};

// watch [REGEX]
void runWatch(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// unwatch [N]
void runUnwatch(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// notifications [N] [REGEX]: the last N (10 without N) notifications of the host's journal whose
// dn matches REGEX as a whole, oldest first, each as a watch prints it.
void runNotifications(Shell& shell, const std::vector<std::string>& args, Answer* answer);
// The router's consumers and producers and the journal's size, for `status`.
Json eventStatus(Shell& shell);

}  // namespace cli
}  // namespace host
}  // namespace vesk

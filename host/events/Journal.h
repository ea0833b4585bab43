// The host's own consumer of every change notification: a journal of the last `capacity` ones,
// as a management host keeps for its northbound side, so that every notification has a taker
// from the moment the agent is up, whether or not an operator watches. Each entry is the
// notification's dn and the line `format` makes of it on the consumer's thread; the oldest entry
// goes when a new one comes to a full journal. The record itself is given back to its producer
// as soon as it has been formatted (the router's consumer queue does that).
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "host/events/EventRouter.h"

namespace vesk {
namespace host {
namespace events {

class Journal {
  public:
    using Format = std::function<std::string(const OrlOamSpiCmEvent_Notification_1T&)>;
    struct Entry {
        std::string dn;
        std::string line;  // what `format` made
    };

    // Adds and subscribes the journal's consumer to every change notification. `router` must
    // outlive the journal; `format` runs on the consumer's thread. `capacity` is at least 1.
    Journal(EventRouter& router, size_t capacity, Format format);
    // Removes the consumer (what it still queues is given back unrecorded).
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // The last `count` entries whose dn matches `pattern` as a whole (every entry when it is
    // empty), oldest first. `pattern` must be one the producer's filters accept.
    std::vector<Entry> last(size_t count, const std::string& pattern) const;
    size_t size() const;
    size_t capacity() const { return _capacity; }
    // Every notification recorded since the start, dropped ones included.
    uint64_t recorded() const;

  private:
    void record(const OrlOamSpiCmEvent_Notification_1T& notification);

    EventRouter& _router;
    const size_t _capacity;
    Format _format;
    mutable std::mutex _mutex;
    std::deque<Entry> _entries;
    uint64_t _recorded = 0;
    unsigned long _consumer = 0;
};

}  // namespace events
}  // namespace host
}  // namespace vesk

// The framework's plain event.
#pragma once

#include <cstdint>

namespace VESK {
namespace Framework {

class Event {
  public:
    explicit Event(int32_t aEventId) : eventId(aEventId) {}
    virtual ~Event() {}
    // Releases what a derived event carries; nothing in the base.
    virtual void cleanup() {}
    // A new copy, owned by the caller.
    virtual Event* copyEvent() const { return new Event(eventId); }
    int32_t getEventId() const { return eventId; }

    int32_t eventId;
};

}  // namespace Framework
}  // namespace VESK

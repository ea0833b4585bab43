// Everything that can be given an event.
#pragma once

#include "platform/Event.h"

namespace VESK {
namespace Framework {

class IEventAware {
  public:
    virtual ~IEventAware() {}
    virtual bool allowEnqueue() const { return true; }
    // Takes a copy of `event` for later processing; returns false if it was not accepted.
    // May be called from any thread.
    virtual bool enqueueEvent(Event const& event, bool flag) = 0;
    // Handles one event; 1 if handled, 0 if not.
    virtual int processEvent(Event& event) = 0;
};

}  // namespace Framework
}  // namespace VESK

// The interface of a state machine driven by events.
#pragma once

#include "platform/IEventAware.h"

namespace VESK {
namespace Framework {

class IStateMachine : public IEventAware {
  public:
    ~IStateMachine() override {}
    // Runs the enter action of `state` and makes it the current state.
    virtual void onEnter(int state) = 0;
    // Runs the leave action of the current state, if the machine has one.
    virtual void onExit() = 0;
    // Called by processEvent for an event that the current state does not handle.
    virtual void onUnhandledEvent(Event& event) = 0;
    // Enters the initial state. Called once, after construction and before start().
    virtual void initializeStateMachine() = 0;
    // Lets the machine begin to process its queue.
    virtual void start() {}
    virtual bool hasTerminated() const = 0;
};

}  // namespace Framework
}  // namespace VESK

// Shared pieces of the notifier, ISec and Toolbox tests: the database fixture that also stops
// the notifier, and a subscriber that keeps copies of what it receives.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/IDatabase.h"
#include "platform/IEventAware.h"
#include "station/database/Database.h"
#include "station/database/Notifier.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace test {

using Ev4 = IDatabase::EventClass_ev4Notification;

// Keeps a copy of every event; `onEvent`, when set, runs inside enqueueEvent.
class CountingSubscriber : public VESK::Framework::IEventAware {
  public:
    bool enqueueEvent(VESK::Framework::Event const& event, bool) override {
        if (onEvent)
            onEvent(event);
        std::lock_guard<std::mutex> lock(_mutex);
        _events.emplace_back(event.copyEvent());
        _changed.notify_all();
        return true;
    }
    int processEvent(VESK::Framework::Event&) override { return 1; }

    size_t count() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _events.size();
    }
    // The i-th event received, as a change event (copied).
    Ev4 at(size_t i) {
        std::lock_guard<std::mutex> lock(_mutex);
        return Ev4(dynamic_cast<Ev4&>(*_events.at(i)));
    }
    bool waitFor(size_t n) {
        std::unique_lock<std::mutex> lock(_mutex);
        return _changed.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return _events.size() >= n; });
    }

    std::function<void(VESK::Framework::Event const&)> onEvent;

  private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<std::unique_ptr<VESK::Framework::Event>> _events;
};

// The database open in a fresh folder; closing it at the end ends all subscriptions.
class DatabaseFixture : public dbtest::DatabaseTest {
  protected:
    void TearDown() override {
        DatabaseTest::TearDown();
        vesk::db::notifierStop();
    }
};

}  // namespace test
}  // namespace vesk

// Waiting in tests for what another thread does.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vesk {
namespace test {

// Polls `done` every millisecond for up to five seconds; true as soon as it holds.
inline bool eventually(const std::function<bool()>& done) {
    for (int i = 0; i < 5000 && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return done();
}

}  // namespace test
}  // namespace vesk

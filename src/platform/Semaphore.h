// A counting semaphore.
#pragma once

#include <condition_variable>
#include <mutex>

namespace VESK {
namespace Framework {

class Semaphore {
  public:
    explicit Semaphore(unsigned initialCount = 0);
    ~Semaphore();
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    // Blocks, with no time limit, until the count is positive, then decrements it.
    void wait();
    // Like wait, but gives up after `ms` milliseconds of real time; true if decremented.
    bool waitFor(unsigned ms);
    // Decrements the count if it is positive; never blocks.
    bool tryWait();
    // Increments the count and wakes one waiter. Any thread.
    void post();

  private:
    std::mutex _mutex;
    std::condition_variable _cond;
    unsigned _count;
};

}  // namespace Framework
}  // namespace VESK

// Counts the malloc, calloc and free calls made by the code linked into this test program (the
// agent's objects and the tests), through the linker's --wrap. While a tracker is alive, every
// block allocated must be freed exactly once; frees of blocks the tracker never saw are counted.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <unordered_set>

namespace vesk_test {

class AllocationTracker {
  public:
    AllocationTracker();
    ~AllocationTracker();
    AllocationTracker(const AllocationTracker&) = delete;
    AllocationTracker& operator=(const AllocationTracker&) = delete;

    size_t allocations() const { return _allocations; }
    size_t frees() const { return _frees; }
    // Blocks allocated under the tracker and not yet freed.
    size_t live() const { return _live.size(); }
    bool isLive(const void* block) const { return _live.count(block) != 0; }
    // Frees of blocks that were not live: double frees, or blocks from before the tracker.
    size_t unknownFrees() const { return _unknownFrees; }

    // Success when every block is freed and no unknown block was; else says what is left.
    ::testing::AssertionResult balanced() const;

    void onAllocate(void* block);
    void onFree(void* block);

  private:
    std::unordered_set<const void*> _live;
    size_t _allocations = 0;
    size_t _frees = 0;
    size_t _unknownFrees = 0;
};

}  // namespace vesk_test

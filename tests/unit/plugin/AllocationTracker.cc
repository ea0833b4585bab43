#include "AllocationTracker.h"

#include <cstdlib>

namespace vesk_test {
namespace {
AllocationTracker* s_active = nullptr;
bool s_inside = false;  // the tracker's own bookkeeping must not be counted
}  // namespace

AllocationTracker::AllocationTracker() {
    s_active = this;
}
AllocationTracker::~AllocationTracker() {
    s_active = nullptr;
}

void AllocationTracker::onAllocate(void* block) {
    if (block == nullptr)
        return;
    ++_allocations;
    _live.insert(block);
}

void AllocationTracker::onFree(void* block) {
    if (block == nullptr)
        return;
    ++_frees;
    if (_live.erase(block) == 0)
        ++_unknownFrees;
}

::testing::AssertionResult AllocationTracker::balanced() const {
    if (_live.empty() && _unknownFrees == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << _live.size() << " blocks live, " << _unknownFrees << " unknown frees";
}

}  // namespace vesk_test

using vesk_test::s_active;
using vesk_test::s_inside;

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void __real_free(void* block);

void* __wrap_malloc(size_t size) {
    void* block = __real_malloc(size);
    if (s_active != nullptr && !s_inside) {
        s_inside = true;
        s_active->onAllocate(block);
        s_inside = false;
    }
    return block;
}

void* __wrap_calloc(size_t count, size_t size) {
    void* block = __real_calloc(count, size);
    if (s_active != nullptr && !s_inside) {
        s_inside = true;
        s_active->onAllocate(block);
        s_inside = false;
    }
    return block;
}

void __wrap_free(void* block) {
    if (s_active != nullptr && !s_inside) {
        s_inside = true;
        s_active->onFree(block);
        s_inside = false;
    }
    __real_free(block);
}
}

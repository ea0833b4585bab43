#include "platform/Semaphore.h"

#include "platform/WrapperTemplate.h"

#include <chrono>

namespace VESK {
namespace Framework {

Semaphore::Semaphore(unsigned initialCount) : _count(initialCount) {}

Semaphore::~Semaphore() {}

void Semaphore::wait() {
    std::unique_lock<std::mutex> lock(_mutex);
    _cond.wait(lock, [this] { return _count > 0; });
    --_count;
}

bool Semaphore::waitFor(unsigned ms) {
    std::unique_lock<std::mutex> lock(_mutex);
    if (!_cond.wait_for(lock, std::chrono::milliseconds(ms), [this] { return _count > 0; })) {
        return false;
    }
    --_count;
    return true;
}

bool Semaphore::tryWait() {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_count == 0)
        return false;
    --_count;
    return true;
}

void Semaphore::post() {
    {
        std::lock_guard<std::mutex> lock(_mutex);
        ++_count;
    }
    _cond.notify_one();
}

}  // namespace Framework
}  // namespace VESK

namespace WrapperTemplate {

Wrapper::Wrapper() : _requestSemaphore(1), _responseSemaphore(0), _mapSemaphore(1) {}

Wrapper::~Wrapper() {
    for (auto& entry : _responses)
        delete entry.second;
}

}  // namespace WrapperTemplate

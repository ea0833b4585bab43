#include "host/events/Journal.h"

#include <Poco/RegularExpression.h>

#include <algorithm>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace events {

Journal::Journal(EventRouter& router, size_t capacity, Format format)
    : _router(router), _capacity(std::max<size_t>(capacity, 1)), _format(std::move(format)) {
    _consumer = _router.addConsumer(
        "journal", [this](unsigned long, const char*, const void* notification) {
            record(*static_cast<const OrlOamSpiCmEvent_Notification_1T*>(notification));
        });
    OrlReturnT rc = _router.subscribe(_consumer, kCmEventType, {});
    if (rc != OrlOk) {
        VESK_ERROR("host: the notification journal could not subscribe (%d)", rc);
    }
}

Journal::~Journal() {
    _router.removeConsumer(_consumer);
}

void Journal::record(const OrlOamSpiCmEvent_Notification_1T& notification) {
    const OrlOamSpiCmEvent_1T* event =
        notification.events != nullptr ? notification.events[0] : nullptr;
    Entry entry{event != nullptr && event->dn != nullptr ? event->dn : "", _format(notification)};
    std::lock_guard<std::mutex> lock(_mutex);
    if (_entries.size() == _capacity) {
        _entries.pop_front();
    }
    _entries.push_back(std::move(entry));
    ++_recorded;
}

std::vector<Journal::Entry> Journal::last(size_t count, const std::string& pattern) const {
    // Compiled as the producer compiles a consumer's filter; match() covers the whole dn.
    Poco::RegularExpression expression(pattern, 0, true);
    std::vector<Entry> result;
    std::lock_guard<std::mutex> lock(_mutex);
    for (auto it = _entries.rbegin(); it != _entries.rend() && result.size() < count; ++it) {
        if (pattern.empty() || expression.match(it->dn, 0)) {
            result.push_back(*it);
        }
    }
    std::reverse(result.begin(), result.end());
    return result;
}

size_t Journal::size() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _entries.size();
}

uint64_t Journal::recorded() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _recorded;
}

}  // namespace events
}  // namespace host
}  // namespace vesk

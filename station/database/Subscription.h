// One subscription to change events, and the event it makes of one object's change.
#pragma once

#include <cstdint>
#include <string>

#include "platform/IDatabase.h"
#include "platform/IEventAware.h"
#include "station/database/ChangeFeed.h"

namespace vesk {
namespace db {

// className "" matches every class. attributeName "" asks for one event per changed object
// (insert 18, update 23, delete 9, with the changed attributes); a name asks for the new value of
// that attribute alone, carried in the event's value fields, when an insert or update sets it.
struct Subscription {
    int32_t ticket;
    std::string className;
    std::string attributeName;
    VESK::Framework::IEventAware* subscriber;

    bool isStatus() const { return !attributeName.empty(); }
};

// Fills `event` with what `subscription` receives for `change`; false when it receives nothing.
// Objects that hold struct values (not visible) and pending values (alternate slot set) make no
// events.
bool buildEvent(const Subscription& subscription, const ObjectChange& change,
                IDatabase::EventClass_ev4Notification& event);

}  // namespace db
}  // namespace vesk

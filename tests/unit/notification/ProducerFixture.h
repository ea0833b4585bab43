// Shared set-up of the producer tests: a fresh store, the host's event router, and a producer
// registered with it in stRunning (its database subscription taken as made, so the test hands it
// the events). Consumers record what they get as lines of text.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "host/events/EventRouter.h"
#include "notification/VeskCmEventProducer.h"
#include "unit/database/DatabaseTestSupport.h"

namespace vesk {
namespace notificationtest {

using Producer = TibVeskCM::VeskCmEventProducer;
using Event = IDatabase::EventClass_ev4Notification;
using Change = IDatabase::attrNameValuePair;

// A change of `name`; `flags` may hold 'h' (hidden) and 'd' (deleted).
inline Change change(const std::string& name, AttributeVariant value,
                     IPCData::AttributeValueType type, const std::string& flags = "") {
    return Change{name, value,
                  type, flags.find('d') != std::string::npos ? 9 : 0,
                  0,    flags.find('h') != std::string::npos};
}

inline Event event(IPCData::EOperations operation, const std::string& dn,
                   const std::vector<Change>& changes) {
    Event result;
    result.objOperation = operation;
    result.dn = dn;
    result.notifications.assign(changes.begin(), changes.end());
    return result;
}

// "tx event dn name=value ..." with values as "5", "\"text\"", "[a,b]", "{m=v}" or "-".
std::string render(const OrlOamSpiCmEvent_Notification_1T& notification);

class ProducerFixture : public dbtest::DatabaseTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    // A consumer of the router whose filter is `patterns`; what it gets goes to seen().
    unsigned long consume(const std::vector<std::string>& patterns);
    // Hands `e` to the producer as its queue would.
    void deliver(Event e) { _producer->processEvent(e); }
    // The lines the consumers got so far (after the router has delivered all it holds).
    std::vector<std::string> seen();
    size_t held() const { return _producer->_producerIf->_notifValueList.size(); }

    host::events::EventRouter _router;
    OrlMgmtSpiInterfacePortal_1 _portal{};
    std::unique_ptr<Producer> _producer;
    std::mutex _mutex;
    std::vector<std::string> _seen;
};

}  // namespace notificationtest
}  // namespace vesk

// The producer's machine on its own queue thread: it waits for the clock and the host's status
// through database subscriptions and orders the change notifications once, when both hold.
#include <chrono>
#include <thread>

#include "platform/OrlController.h"
#include "station/framework/FrameworkControl.h"
#include "station/log/LogControl.h"
#include "unit/Eventually.h"
#include "unit/notification/ProducerFixture.h"

namespace vesk {
namespace notificationtest {
namespace {

using vesk::test::eventually;

const char kOrdering[] =
    "VeskCmEventProducer::subcribeDbNotif: Ordering attribute changed notifications from "
    "Database.";
const char kWaitingBoth[] =
    "VeskCmEventProducer::stInitialize - Waiting for ToD and TIBStatus before ordering "
    "notifications";
const char kWaitingStatus[] =
    "VeskCmEventProducer::stInitialize - Waiting for TIBStatus before ordering notifications";

OrlReturnT nothing(const char*, const char*, const char*, void**) {
    return OrlNotExist;
}

class ProducerLifecycleTest : public dbtest::DatabaseTest {
  protected:
    void start(bool todSet, int status) {
        dbtest::put("OAM", "",
                    {dbtest::attr("ToDSet", todSet, IPCData::AVT_BOOL),
                     dbtest::attr("TIBStatus", status, IPCData::AVT_INT32)});
        station::setHostStatus(status);
        _portal.getInterface = nothing;
        _producer.reset(new Producer(&_portal));
        _producer->initializeStateMachine();
        _producer->start();
    }
    void write(const char* name, AttributeVariant value, IPCData::AttributeValueType type) {
        ASSERT_NE(IDatabase::setAttribute("OAM", 1, name, value, false, type, false, 0), 0);
    }
    bool running() { return _producer->currentState == Producer::stRunning; }
    void TearDown() override {
        _producer->terminate();
        _producer.reset();
        station::setHostStatus(OrlController::TIB_RUNNING);
        DatabaseTest::TearDown();
    }

    log::LogCapture _log;
    OrlMgmtSpiInterfacePortal_1 _portal{};
    std::unique_ptr<Producer> _producer;
};

TEST_F(ProducerLifecycleTest, BothConditionsHoldingAtStartOrderAtOnce) {
    start(true, OrlController::TIB_RUNNING);
    ASSERT_TRUE(eventually([&] { return _log.count(kOrdering, VESK_LOG_INFO) == 1; }));
    EXPECT_TRUE(running());
    EXPECT_EQ(_producer->ticketToDSet, 0);
    EXPECT_EQ(_producer->ticketTIBStatus, 0);
    EXPECT_EQ(_log.countContaining("Waiting for"), 0u);
}

TEST_F(ProducerLifecycleTest, WaitsForTheClockThenForStatusThreeAndOrdersOnce) {
    start(false, OrlController::TIB_STARTING);
    ASSERT_TRUE(eventually([&] { return _log.count(kWaitingBoth, VESK_LOG_INFO) == 1; }));

    write("ToDSet", true, IPCData::AVT_BOOL);
    ASSERT_TRUE(eventually([&] { return _log.count(kWaitingStatus, VESK_LOG_INFO) >= 1; }));
    EXPECT_EQ(_producer->ticketToDSet, 0);

    // Another status is no reason to move on.
    write("TIBStatus", OrlController::TIB_INITIALIZING, IPCData::AVT_INT32);
    ASSERT_TRUE(eventually([&] {
        return _log.countContaining("Unknown notification received with ticket",
                                    VESK_LOG_WARNING) == 1;
    }));
    EXPECT_FALSE(running());

    station::setHostStatus(OrlController::TIB_RUNNING);
    write("TIBStatus", OrlController::TIB_RUNNING, IPCData::AVT_INT32);
    ASSERT_TRUE(eventually([&] { return running(); }));
    ASSERT_TRUE(eventually([&] { return _log.count(kOrdering, VESK_LOG_INFO) == 1; }));
    EXPECT_EQ(_log.count(kOrdering), 1u);
}

}  // namespace
}  // namespace notificationtest
}  // namespace vesk

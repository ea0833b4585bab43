// Delivery through the host's event router, on its threads: what the producer holds for slow or
// refusing consumers, the memory it gives back, the host's journal, a router that refuses the
// producer, and filters that change while deliveries run.
#include <malloc.h>

#include <atomic>
#include <thread>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' runtime counts the bytes its allocator hands out.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

#include "host/events/Journal.h"
#include "station/log/LogControl.h"
#include "unit/notification/ProducerFixture.h"

namespace vesk {
namespace notificationtest {
namespace {

const std::string kDeliveryCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";

size_t allocatedBytes() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

class DeliveryTest : public ProducerFixture {
  protected:
    void updates(int count) {
        for (int i = 0; i < count; ++i) {
            deliver(event(IPCData::OP_UPDATE, kDeliveryCell,
                          {change("userLabel", std::string("label ") + std::to_string(i),
                                  IPCData::AVT_STRING)}));
        }
    }
    // A consumer that takes one notification and then waits until open() is called.
    unsigned long consumeSlowly() {
        unsigned long consumer =
            _router.addConsumer("slow", [this](unsigned long, const char*, const void*) {
                std::unique_lock<std::mutex> lock(_gateMutex);
                _gateChanged.wait(lock, [this] { return _open; });
            });
        EXPECT_EQ(_router.subscribe(consumer, host::events::kCmEventType, {}), OrlOk);
        return consumer;
    }
    void setOpen(bool open) {
        std::lock_guard<std::mutex> lock(_gateMutex);
        _open = open;
        _gateChanged.notify_all();
    }
    size_t queuedFor(unsigned long consumer) {
        for (const host::events::ConsumerInfo& info : _router.consumers()) {
            if (info.handle == consumer) {
                return info.queued;
            }
        }
        return 0;
    }

    std::mutex _gateMutex;
    std::condition_variable _gateChanged;
    bool _open = false;
};

TEST_F(DeliveryTest, SlowConsumerHoldsEveryRecordUntilItIsDoneAndThenAllAreFreed) {
    unsigned long slow = consumeSlowly();
    size_t before = 0;
    // The first round grows the queues to their size; the second must end where it began.
    for (int round = 0; round < 2; ++round) {
        setOpen(false);
        before = allocatedBytes();
        updates(200);
        // The producer's thread never waited: everything is queued for the slow consumer.
        EXPECT_GE(queuedFor(slow), 199u);
        EXPECT_EQ(held(), 200u);
        EXPECT_GT(allocatedBytes(), before + 200 * 100);
        setOpen(true);
        ASSERT_TRUE(_router.waitIdle(5000));
        EXPECT_EQ(held(), 0u);
    }
    EXPECT_LT(allocatedBytes(), before + 512);
}

TEST_F(DeliveryTest, RefusedDeliveryIsNotWaitedFor) {
    unsigned long taking = consume({});
    unsigned long refusing = consume({});
    ASSERT_EQ(_router.refuseDeliveries(refusing, OrlFailure), OrlOk);
    log::LogCapture log;
    updates(3);
    EXPECT_EQ(seen().size(), 3u);
    EXPECT_EQ(held(), 0u);
    // With only the refusing consumer left the record is freed at once.
    _router.removeConsumer(taking);
    updates(1);
    EXPECT_EQ(held(), 0u);
    EXPECT_EQ(log.count("VeskCmEventProducer::notificationsReceived: notif sending fails",
                        VESK_LOG_ERROR),
              1u);
}

TEST_F(DeliveryTest, JournalGivesEveryRecordBackAndKeepsTheLastWhileItIsRead) {
    host::events::Journal journal(_router, 3, render);
    std::thread reader([&journal] {
        for (int i = 0; i < 200; ++i) {
            EXPECT_LE(journal.last(9, ".*FDD=1").size(), 3u);
        }
    });
    updates(20);
    reader.join();
    ASSERT_TRUE(_router.waitIdle(5000));
    EXPECT_EQ(held(), 0u);
    EXPECT_EQ(journal.recorded(), 20u);
    std::vector<host::events::Journal::Entry> last = journal.last(9, "");
    ASSERT_EQ(last.size(), 3u);
    EXPECT_NE(last.front().line.find("\"label 17\""), std::string::npos) << last.front().line;
    EXPECT_NE(last.back().line.find("\"label 19\""), std::string::npos) << last.back().line;
}

TEST_F(DeliveryTest, ProducerRefusedByTheRouterDeliversNothing) {
    _producer.reset();
    _router.refuseRegistration(OrlFailure);
    _producer.reset(new Producer(&_portal));
    _producer->_subscribed = true;
    _producer->currentState = Producer::stRunning;
    EXPECT_EQ(_producer->_producerIf->_producerHandle, 0u);
    consume({});
    log::LogCapture log;
    updates(2);
    EXPECT_TRUE(seen().empty());
    EXPECT_EQ(log.countContaining("notificationsReceived: no _producerHandle", VESK_LOG_TRACE), 2u);
}

TEST_F(DeliveryTest, UnknownFilterArrayIsRefusedByTheProducer) {
    unsigned long consumer = consume({});
    OrlNameValuePair pair{"dn", ".*"};
    OrlNameValuePair* foreign[] = {&pair, nullptr};
    EXPECT_EQ(_router.record()->unsubscribe(consumer, host::events::kCmEventType, foreign), -8);
    updates(1);
    EXPECT_EQ(seen().size(), 1u);
}

TEST_F(DeliveryTest, FiltersChangeWhileDeliveriesRun) {
    consume({".*EUtranCellFDD=1"});
    std::atomic<bool> done{false};
    std::atomic<int> churned{0};
    std::thread churn([&] {
        while (!done) {
            unsigned long consumer = _router.addConsumer(
                "churn", [&](unsigned long, const char*, const void*) { ++churned; });
            _router.subscribe(consumer, host::events::kCmEventType, {".*"});
            _router.removeConsumer(consumer);
        }
    });
    updates(300);
    done = true;
    churn.join();
    EXPECT_EQ(seen().size(), 300u);
    EXPECT_EQ(held(), 0u);
}

}  // namespace
}  // namespace notificationtest
}  // namespace vesk

// Subscriptions and delivery of change events: content and order, status subscriptions, the end
// of a subscription while events flow, and bad input.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "EventTestSupport.h"
#include "platform/Logger.h"
#include "station/database/ChangeFeed.h"
#include "station/log/LogControl.h"

namespace {

using vesk::db::AttributeChange;
using vesk::db::ObjectChange;
using vesk::test::CountingSubscriber;
using vesk::test::Ev4;

AttributeChange attr(const std::string& name, AttributeVariant value,
                     IPCData::AttributeValueType type, bool deleted = false, bool hidden = false,
                     int slot = -1) {
    return AttributeChange{name, value, type, deleted, hidden, slot};
}

ObjectChange change(IPCData::EOperations op, const std::string& dn,
                    std::vector<AttributeChange> attributes, bool visible = true) {
    std::string rdn = dn.substr(dn.rfind(',') == std::string::npos ? 0 : dn.rfind(',') + 1);
    return ObjectChange{op, dn, rdn, rdn.substr(0, rdn.find('=')), visible, attributes};
}

void publish(ObjectChange c) {
    std::vector<ObjectChange> batch;
    batch.push_back(std::move(c));
    vesk::db::publishChanges(std::move(batch));
}

int32_t subscribeAll(CountingSubscriber& sub) {
    return IDatabase::registerToNotif(1004, "", 1, &sub, "", 0, 2, 1);
}

class NotifierTest : public ::testing::Test {
  protected:
    void TearDown() override { vesk::db::notifierStop(); }
};

TEST_F(NotifierTest, AllChangesArriveInOrderWithTheirAttributes) {
    CountingSubscriber sub;
    int32_t ticket = subscribeAll(sub);
    ASSERT_GT(ticket, 0);
    const std::string dn = "ManagedElement=1,Foo=1";
    std::vector<ObjectChange> first;
    first.push_back(change(IPCData::OP_INSERT, dn,
                           {attr("a", 1, IPCData::AVT_INT32),
                            attr("b", std::string("x"), IPCData::AVT_STRING, false, true)}));
    first.push_back(change(IPCData::OP_UPDATE, dn,
                           {attr("a", 2, IPCData::AVT_INT32),
                            attr("b", std::string(), IPCData::AVT_STRING, true, true)}));
    vesk::db::publishChanges(std::move(first));
    publish(change(IPCData::OP_DELETE, dn, {}));
    vesk::db::notifierFlush();
    ASSERT_EQ(sub.count(), 3u);

    Ev4 insert = sub.at(0);
    EXPECT_EQ(insert.ticket, ticket);
    EXPECT_EQ(insert.objOperation, IPCData::OP_INSERT);
    EXPECT_EQ(insert.dn, dn);
    EXPECT_EQ(insert.rdn, "Foo=1");
    EXPECT_EQ(insert.valueKind, 12);
    ASSERT_EQ(insert.notifications.size(), 2u);
    EXPECT_EQ(insert.notifications.front().attrName, "a");
    EXPECT_TRUE(insert.notifications.front().attrValue == AttributeVariant(1));
    EXPECT_EQ(insert.notifications.front().attrType, IPCData::AVT_INT32);
    EXPECT_FALSE(insert.notifications.front().hidden);
    EXPECT_TRUE(insert.notifications.back().hidden);

    Ev4 update = sub.at(1);
    EXPECT_EQ(update.objOperation, IPCData::OP_UPDATE);
    ASSERT_EQ(update.notifications.size(), 2u);
    EXPECT_TRUE(update.notifications.front().attrValue == AttributeVariant(2));
    EXPECT_NE(update.notifications.front().attrOperation, 9);
    EXPECT_EQ(update.notifications.back().attrOperation, 9);

    EXPECT_EQ(sub.at(2).objOperation, IPCData::OP_DELETE);
    EXPECT_TRUE(sub.at(2).notifications.empty());
}

TEST_F(NotifierTest, StructObjectsAndPendingValuesMakeNoEvents) {
    CountingSubscriber sub;
    subscribeAll(sub);
    publish(change(IPCData::OP_INSERT, "ManagedElement=1,Foo=1:bar",
                   {attr("m", 1, IPCData::AVT_INT32)}, false));
    publish(change(IPCData::OP_UPDATE, "ManagedElement=1,Foo=1",
                   {attr("p", 5, IPCData::AVT_INT32, false, false, 2)}));
    publish(change(
        IPCData::OP_INSERT, "ManagedElement=1,Foo=2",
        {attr("p", 5, IPCData::AVT_INT32, false, false, 2), attr("q", 6, IPCData::AVT_INT32)}));
    vesk::db::notifierFlush();
    ASSERT_EQ(sub.count(), 1u);
    Ev4 insert = sub.at(0);
    EXPECT_EQ(insert.dn, "ManagedElement=1,Foo=2");
    ASSERT_EQ(insert.notifications.size(), 1u);
    EXPECT_EQ(insert.notifications.front().attrName, "q");
}

TEST_F(NotifierTest, StatusSubscriptionCarriesTheNewValueOfItsAttributeOnly) {
    CountingSubscriber status;
    CountingSubscriber all;
    int32_t tib = IDatabase::registerToNotif(1004, "OAM", 1, &status, "TIBStatus", 0, 0, 0);
    int32_t tod = IDatabase::registerToNotif(1004, "OAM", 1, &status, "ToDSet", 0, 0, 0);
    subscribeAll(all);
    ASSERT_GT(tib, 0);
    ASSERT_GT(tod, 0);
    EXPECT_NE(tib, tod);

    publish(change(IPCData::OP_UPDATE, "OAM", {attr("AI_phase", 4, IPCData::AVT_INT32)}));
    publish(change(IPCData::OP_UPDATE, "Other=1", {attr("TIBStatus", 3, IPCData::AVT_INT32)}));
    publish(change(IPCData::OP_UPDATE, "OAM", {attr("TIBStatus", 3, IPCData::AVT_INT32)}));
    publish(change(IPCData::OP_UPDATE, "OAM", {attr("ToDSet", true, IPCData::AVT_BOOL)}));
    publish(change(IPCData::OP_DELETE, "OAM", {attr("TIBStatus", 3, IPCData::AVT_INT32)}));
    vesk::db::notifierFlush();

    ASSERT_EQ(status.count(), 2u);
    Ev4 first = status.at(0);
    EXPECT_EQ(first.ticket, tib);
    EXPECT_EQ(first.valueKind, AV_INT);
    EXPECT_EQ(first.valueSize, 4);
    EXPECT_EQ(boost::get<int>(first.getAttrValue()), 3);
    EXPECT_EQ(first.dn, "OAM");
    Ev4 second = status.at(1);
    EXPECT_EQ(second.ticket, tod);
    EXPECT_EQ(second.valueKind, AV_BOOL);
    EXPECT_EQ(second.valueSize, 1);
    EXPECT_TRUE(boost::get<bool>(second.getAttrValue()));
    EXPECT_EQ(all.count(), 5u);  // the all-changes subscriber sees every object change
}

TEST_F(NotifierTest, BadInputFailsWithOneErrorLine) {
    CountingSubscriber sub;
    CountingSubscriber other;
    vesk::log::LogCapture capture;
    EXPECT_EQ(IDatabase::registerToNotif(1005, "", 1, &sub, "", 0, 2, 1), -1);
    EXPECT_EQ(IDatabase::registerToNotif(1004, "", 1, nullptr, "", 0, 2, 1), -1);
    int32_t ticket = subscribeAll(sub);
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticket + 100, 1004, &sub), 0);
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticket, 1004, &other), 0);
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticket, 1003, &sub), 0);
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticket, 1004, nullptr), 0);
    EXPECT_EQ(IDatabase::unRegisterToNotif("OAM", 1, "ToDSet", 0, 0, 0), 0);
    EXPECT_EQ(
        capture.count("IDatabase::registerToNotif: unsupported event class 1005", VESK_LOG_ERROR),
        1u);
    EXPECT_EQ(capture.count("IDatabase::registerToNotif: null subscriber", VESK_LOG_ERROR), 1u);
    EXPECT_EQ(capture.countContaining("IDatabase::unRegisterToNotif:", VESK_LOG_ERROR), 5u);
    EXPECT_EQ(capture.lines().size(), 7u);
    // The failed calls ended nothing.
    publish(change(IPCData::OP_INSERT, "A=1", {attr("a", 1, IPCData::AVT_INT32)}));
    vesk::db::notifierFlush();
    EXPECT_EQ(sub.count(), 1u);
}

TEST_F(NotifierTest, EachFormOfUnsubscribingEndsDeliveryAtOnce) {
    CountingSubscriber a, b, c;
    int32_t ticketA = subscribeAll(a);
    subscribeAll(b);
    IDatabase::registerToNotif(1004, "", 1, &c, "x", 0, 0, 0);
    auto publishX = [] {
        publish(change(IPCData::OP_UPDATE, "A=1", {attr("x", 1, IPCData::AVT_INT32)}));
    };
    publishX();
    ASSERT_EQ(IDatabase::unRegisterToNotif(ticketA, 1004, &a), 1);
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticketA, 1004, &a), 0);  // already ended
    publishX();
    vesk::db::notifierFlush();
    EXPECT_LE(a.count(), 1u);
    EXPECT_EQ(b.count(), 2u);
    EXPECT_EQ(c.count(), 2u);

    // The class form ends every all-changes subscription, and only those.
    size_t before = a.count();
    ASSERT_EQ(IDatabase::unRegisterToNotif("", 1, "", 0, 2, 1), 1);
    publishX();
    vesk::db::notifierFlush();
    EXPECT_EQ(a.count(), before);
    EXPECT_EQ(b.count(), 2u);
    EXPECT_EQ(c.count(), 3u);

    EXPECT_EQ(IDatabase::unRegisterToAllNotifs(), 1);
    publishX();
    vesk::db::notifierFlush();
    EXPECT_EQ(c.count(), 3u);
}

TEST_F(NotifierTest, SubscriberMayUnsubscribeFromInsideEnqueueEvent) {
    CountingSubscriber sub;
    int32_t ticket = subscribeAll(sub);
    std::atomic<int> result{-1};
    sub.onEvent = [&](VESK::Framework::Event const&) {
        if (result < 0)
            result = IDatabase::unRegisterToNotif(ticket, 1004, &sub);
    };
    for (int i = 0; i < 5; ++i) {
        publish(change(IPCData::OP_UPDATE, "A=1", {attr("x", i, IPCData::AVT_INT32)}));
    }
    vesk::db::notifierFlush();
    EXPECT_EQ(result, 1);
    EXPECT_EQ(sub.count(), 1u);
}

// Unsubscribing from another thread while a publisher keeps publishing: once the call returns,
// no delivery to the subscriber is in progress and none follows.
TEST_F(NotifierTest, UnsubscribeWhileEventsFlowWaitsForTheDeliveryInProgress) {
    CountingSubscriber sub;
    std::atomic<bool> ended{false};
    std::atomic<bool> inside{false};
    std::atomic<int> late{0};
    sub.onEvent = [&](VESK::Framework::Event const&) {
        inside = true;
        if (ended)
            ++late;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        inside = false;
    };
    int32_t ticket = subscribeAll(sub);
    std::atomic<bool> stop{false};
    std::thread publisher([&] {
        for (int i = 0; !stop; ++i) {
            publish(change(IPCData::OP_UPDATE, "A=1", {attr("x", i, IPCData::AVT_INT32)}));
            std::this_thread::yield();
        }
    });
    EXPECT_TRUE(sub.waitFor(20));
    EXPECT_EQ(IDatabase::unRegisterToNotif(ticket, 1004, &sub), 1);
    EXPECT_FALSE(inside);
    ended = true;
    size_t atEnd = sub.count();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    stop = true;
    publisher.join();
    vesk::db::notifierFlush();
    EXPECT_EQ(late, 0);
    EXPECT_EQ(sub.count(), atEnd);
}

TEST_F(NotifierTest, StopEndsSubscriptionsAndTheNextSubscriptionStartsAgain) {
    CountingSubscriber sub;
    subscribeAll(sub);
    publish(change(IPCData::OP_INSERT, "A=1", {attr("x", 1, IPCData::AVT_INT32)}));
    vesk::db::notifierStop();  // delivers what is queued first
    EXPECT_EQ(sub.count(), 1u);
    publish(change(IPCData::OP_INSERT, "A=2", {attr("x", 1, IPCData::AVT_INT32)}));
    vesk::db::notifierFlush();
    EXPECT_EQ(sub.count(), 1u);
    ASSERT_GT(subscribeAll(sub), 0);
    publish(change(IPCData::OP_INSERT, "A=3", {attr("x", 1, IPCData::AVT_INT32)}));
    vesk::db::notifierFlush();
    ASSERT_EQ(sub.count(), 2u);
    EXPECT_EQ(sub.at(1).dn, "A=3");
}

// Through the store: a committed transaction and a handle-0 write reach the subscriber.
using NotifierStoreTest = vesk::test::DatabaseFixture;

TEST_F(NotifierStoreTest, CommitsOfTheStoreArriveInCommitOrder) {
    CountingSubscriber sub;
    CountingSubscriber status;
    subscribeAll(sub);
    IDatabase::registerToNotif(1004, "OAM", 1, &status, "TIBStatus", 0, 0, 0);

    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(handle, 0);
    vesk::dbtest::put("ManagedElement=1", "", {vesk::dbtest::attr("userLabel", std::string("one"))},
                      handle);
    ASSERT_NE(IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false), 0);
    ASSERT_NE(IDatabase::setAttribute("ManagedElement=1", 1, "userLabel",
                                      AttributeVariant(std::string("two")), false,
                                      IPCData::AVT_STRING, true, 0),
              0);
    vesk::dbtest::put("OAM", "", {vesk::dbtest::attr("TIBStatus", 3, IPCData::AVT_INT32)});
    ASSERT_NE(IDatabase::deleteObj("ManagedElement=1", 1, 0), 0);
    vesk::db::notifierFlush();

    ASSERT_EQ(sub.count(), 4u);
    EXPECT_EQ(sub.at(0).objOperation, IPCData::OP_INSERT);
    EXPECT_EQ(sub.at(0).dn, "ManagedElement=1");
    Ev4 update = sub.at(1);
    EXPECT_EQ(update.objOperation, IPCData::OP_UPDATE);
    ASSERT_EQ(update.notifications.size(), 1u);
    EXPECT_TRUE(update.notifications.front().attrValue == AttributeVariant(std::string("two")));
    EXPECT_EQ(sub.at(2).dn, "OAM");
    EXPECT_EQ(sub.at(3).objOperation, IPCData::OP_DELETE);
    ASSERT_EQ(status.count(), 1u);
    EXPECT_EQ(boost::get<int>(status.at(0).getAttrValue()), 3);
}

}  // namespace

// The portal on its own: services, refusals, component records and the stub services.
#include <gtest/gtest.h>

#include "host/Portal.h"
#include "host/StubServices.h"

namespace {

using vesk::host::Portal;

OrlMgmtSpiInterface_1 g_service = {"SomeService", "SomeInterface", "1"};
OrlMgmtSpiInterface_1 g_mo = {"X", "OrlOamSpiManagedObject", "3"};
OrlMgmtSpiInterface_1 g_tx = {"X", "OrlOamSpiTransactionalResource", "2"};
OrlMgmtSpiInterface_1 g_mo2 = {"Y", "OrlOamSpiManagedObject", "3"};
OrlMgmtSpiInterface_1* g_xRecords[] = {&g_mo, &g_tx, nullptr};
OrlMgmtSpiInterface_1* g_yRecords[] = {&g_mo2, nullptr};
OrlMgmtSpiComponent g_x = {
    "X", "OrlMgmtSpiComponent", "1", g_xRecords, nullptr, nullptr, nullptr, nullptr};
OrlMgmtSpiComponent g_y = {
    "Y", "OrlMgmtSpiComponent", "1", g_yRecords, nullptr, nullptr, nullptr, nullptr};
OrlMgmtSpiComponent g_otherX = {
    "X", "OrlMgmtSpiComponent", "1", g_yRecords, nullptr, nullptr, nullptr, nullptr};

TEST(PortalTest, ServicesAndRefusals) {
    Portal portal;
    ASSERT_EQ(portal.accessor()->getPortal("1"), portal.record());
    EXPECT_EQ(portal.accessor()->getPortal("2"), nullptr);
    OrlMgmtSpiInterfacePortal_1* record = portal.record();
    portal.addService(&g_service);

    void* out = nullptr;
    EXPECT_EQ(record->getInterface("SomeService", "SomeInterface", "1", &out), OrlOk);
    EXPECT_EQ(out, &g_service);
    EXPECT_EQ(record->getInterface("SomeService", "SomeInterface", "2", &out), OrlNotExist);

    portal.refuse("SomeService", "SomeInterface", "1", -10);
    out = nullptr;
    EXPECT_EQ(record->getInterface("SomeService", "SomeInterface", "1", &out), -10);
    EXPECT_EQ(out, nullptr) << "a refusal hands out nothing";
    EXPECT_EQ(record->getInterface("SomeService", "SomeInterface", "1", &out), -10);
    EXPECT_EQ(portal.fetchCount("SomeService", "SomeInterface", "1"), 3);
    portal.clearRefusals();
    EXPECT_EQ(record->getInterface("SomeService", "SomeInterface", "1", &out), OrlOk);
    EXPECT_THROW(Portal(), std::logic_error) << "one live portal per process";
}

TEST(PortalTest, ComponentsRegisterOncePerNameAndTheirRecordsFollowThem) {
    Portal portal;
    OrlMgmtSpiInterfacePortal_1* record = portal.record();
    void** array = nullptr;
    EXPECT_EQ(record->getInterfaceArray("OrlOamSpiManagedObject", "3", &array), OrlNotExist);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array[0], nullptr);

    EXPECT_EQ(record->registerComponent(&g_x), OrlOk);
    EXPECT_EQ(record->registerComponent(&g_x), OrlOk);
    EXPECT_EQ(record->registerComponent(&g_otherX), OrlFailure);
    EXPECT_EQ(record->registerComponent(&g_y), OrlOk);
    EXPECT_EQ(portal.components().names(), (std::vector<std::string>{"X", "Y"}));

    void* out = nullptr;
    EXPECT_EQ(record->getInterface("X", "OrlOamSpiTransactionalResource", "2", &out), OrlOk);
    EXPECT_EQ(out, &g_tx);
    EXPECT_EQ(record->getInterface("Y", "OrlOamSpiTransactionalResource", "2", &out), OrlNotExist);
    ASSERT_EQ(record->getInterfaceArray("OrlOamSpiManagedObject", "3", &array), OrlOk);
    EXPECT_EQ(array[0], &g_mo);
    EXPECT_EQ(array[1], &g_mo2);
    EXPECT_EQ(array[2], nullptr);

    EXPECT_EQ(record->unregisterComponent(&g_x), OrlOk);
    EXPECT_EQ(record->unregisterComponent(&g_x), OrlNotExist);
    EXPECT_EQ(record->getInterface("X", "OrlOamSpiTransactionalResource", "2", &out), OrlNotExist);
}

TEST(PortalTest, StubServicesAnswerNoneAndLeaveOutputs) {
    vesk::host::StubServices stubs;
    OrlOamSpiMocHandleT moc = 77;
    EXPECT_EQ(stubs.repository3()->getMocByDn("ManagedElement=1", &moc), OrlNotExist);
    EXPECT_EQ(moc, 77u);
    const char* name = "kept";
    EXPECT_EQ(stubs.repository2()->getName(1, &name), OrlNotExist);
    EXPECT_STREQ(name, "kept");
    EXPECT_EQ(stubs.repository2()->getNextEnumLiteral(1, &moc), OrlNotExist);
}

}  // namespace

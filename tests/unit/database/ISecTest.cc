// The security component's stand-in: changes staged per handle, applied to its store and to the
// database on committed, dropped on rollback; actions recorded; failures injected.
#include <gtest/gtest.h>

#include <memory>

#include "EventTestSupport.h"
#include "platform/ISec.h"
#include "platform/Logger.h"
#include "station/database/ISecControl.h"
#include "station/log/LogControl.h"

namespace {

const char kParent[] = "ManagedElement=1,SystemFunctions=1,SecM=1";
const char kCertM[] = "ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1";

using vesk::dbtest::text;

class ISecTest : public vesk::test::DatabaseFixture {
  protected:
    void SetUp() override {
        vesk::test::DatabaseFixture::SetUp();
        vesk::isec::reset();
        // The parents of the certificate MOs, as the station's data holds them.
        vesk::dbtest::put("ManagedElement=1", "");
        vesk::dbtest::put("SystemFunctions=1", "ManagedElement=1");
        vesk::dbtest::put("SecM=1", "ManagedElement=1,SystemFunctions=1");
    }
    void TearDown() override {
        vesk::isec::reset();
        vesk::test::DatabaseFixture::TearDown();
    }
    static DBObject certM(const std::string& label) {
        DBObject object("CertM=1", 1, true, false, IPCData::OPSTATE_DISABLED,
                        IPCData::ADMSTATE_UNLOCKED, kParent, 1);
        object.addAttribute(*text("userLabel", label));
        return object;
    }
};

TEST_F(ISecTest, StagedChangesApplyOnCommittedOnly) {
    DBObject object = certM("first");
    ASSERT_EQ(ISec::createMo(7, &object), 1);
    EXPECT_EQ(vesk::isec::stagedCount(7), 1u);
    EXPECT_TRUE(vesk::isec::storedDns().empty());
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "<no object>");

    ASSERT_EQ(ISec::committed(7), 1);
    EXPECT_EQ(vesk::isec::stagedCount(7), 0u);
    EXPECT_EQ(vesk::isec::storedDns(), std::vector<std::string>{kCertM});
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "first");

    // An edit that is rolled back changes nothing; one that is committed reaches both stores.
    std::unique_ptr<Attribute> second(text("userLabel", "second"));
    ASSERT_EQ(ISec::editMo(8, kCertM, second.get()), 1);
    ASSERT_EQ(ISec::rollback(8), 1);
    EXPECT_EQ(ISec::committed(8), 1);  // nothing left to confirm
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "first");
    std::unique_ptr<Attribute> third(text("userLabel", "third"));
    ASSERT_EQ(ISec::editMo(9, kCertM, third.get()), 1);
    ASSERT_EQ(ISec::committed(9), 1);
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "third");
    std::unique_ptr<DBObject> stored(vesk::isec::storedObject(kCertM));
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(boost::get<std::string>(stored->getAttribute("userLabel")->value), "third");

    // The MO below goes with it.
    DBObject category("TrustCategory=1", 1, true, false, IPCData::OPSTATE_DISABLED,
                      IPCData::ADMSTATE_UNLOCKED, kCertM, 1);
    ASSERT_EQ(ISec::createMo(0, &category), 1);
    ASSERT_EQ(ISec::deleteMO(10, kCertM), 1);
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "third");
    ASSERT_EQ(ISec::committed(10), 1);
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "<no object>");
    EXPECT_EQ(vesk::dbtest::committedString(std::string(kCertM) + ",TrustCategory=1", "x"),
              "<no object>");
    EXPECT_TRUE(vesk::isec::storedDns().empty());
}

TEST_F(ISecTest, HandleZeroAppliesAtOnceAndUnknownMosFailAtCommit) {
    DBObject object = certM("now");
    ASSERT_EQ(ISec::createMo(0, &object), 1);
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "now");

    vesk::log::LogCapture capture;
    std::unique_ptr<Attribute> label(text("userLabel", "x"));
    ASSERT_EQ(ISec::editMo(3, std::string(kParent) + ",CertM=2", label.get()), 1);
    EXPECT_EQ(ISec::committed(3), 0);
    EXPECT_EQ(capture.countContaining("ISec::applyEdit: no MO", VESK_LOG_ERROR), 1u);
    EXPECT_EQ(ISec::createMo(3, nullptr), 0);
    EXPECT_EQ(ISec::editMo(3, kCertM, nullptr), 0);
    EXPECT_EQ(ISec::deleteMO(3, ""), 0);
}

TEST_F(ISecTest, InjectedFailuresChangeNothing) {
    DBObject object = certM("first");
    vesk::isec::failNext(vesk::isec::Operation::CreateMo, 1);
    EXPECT_EQ(ISec::createMo(5, &object), 0);
    EXPECT_EQ(vesk::isec::stagedCount(5), 0u);
    ASSERT_EQ(ISec::createMo(5, &object), 1);

    vesk::isec::failNext(vesk::isec::Operation::Committed, 1);
    EXPECT_EQ(ISec::committed(5), 0);
    EXPECT_EQ(vesk::isec::stagedCount(5), 1u);
    EXPECT_EQ(vesk::dbtest::committedString(kCertM, "userLabel"), "<no object>");

    vesk::isec::failNext(vesk::isec::Operation::Rollback, 1);
    EXPECT_EQ(ISec::rollback(5), 0);
    EXPECT_EQ(vesk::isec::stagedCount(5), 1u);
    EXPECT_EQ(ISec::rollback(5), 1);
    EXPECT_EQ(vesk::isec::stagedCount(5), 0u);

    vesk::isec::failNext(vesk::isec::Operation::EditMo, 2);
    std::unique_ptr<Attribute> label(text("userLabel", "x"));
    EXPECT_EQ(ISec::editMo(6, kCertM, label.get()), 0);
    EXPECT_EQ(ISec::editMo(6, kCertM, label.get()), 0);
    vesk::isec::failNext(vesk::isec::Operation::DeleteMo, 1);
    EXPECT_EQ(ISec::deleteMO(6, kCertM), 0);
    EXPECT_EQ(vesk::isec::stagedCount(6), 0u);
}

TEST_F(ISecTest, ActionsAreRecordedWithTheirParameters) {
    DBObject parameters(kCertM, 1, true, false, IPCData::OPSTATE_DISABLED,
                        IPCData::ADMSTATE_UNLOCKED);
    parameters.addAttribute(*text("uri", "sftp://host/cert"));
    parameters.addAttribute(
        *new Attribute(false, "timeout", 30, 0, true, IPCData::AVT_INT32, true, false));
    EXPECT_EQ(ISec::executeAction("installTrustedCertFromUri", &parameters), 1);
    EXPECT_EQ(ISec::executeAction("cancel", nullptr), 1);
    vesk::isec::failNext(vesk::isec::Operation::ExecuteAction, 1);
    EXPECT_EQ(ISec::executeAction("refused", nullptr), 0);

    std::vector<vesk::isec::RecordedAction> actions = vesk::isec::recordedActions();
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(actions[0].name, "installTrustedCertFromUri");
    EXPECT_EQ(actions[0].dn, kCertM);
    EXPECT_EQ(actions[0].parameters.at("uri"), "sftp://host/cert");
    EXPECT_EQ(actions[0].parameters.at("timeout"), "30");
    EXPECT_EQ(actions[1].name, "cancel");
    EXPECT_TRUE(actions[1].parameters.empty());
}

}  // namespace

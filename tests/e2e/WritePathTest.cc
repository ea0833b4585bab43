// Writes of the real agent on the demo station, driven through the host's command shell: what a
// committed transaction leaves survives a restart of the host on the same state directory, and an
// aborted one leaves nothing, neither in the database nor in the security component's store.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "host/Host.h"
#include "host/cli/Shell.h"
#include "host/model/StationLoader.h"
#include "station/database/ISecControl.h"

namespace {

using vesk::host::Host;
using Json = nlohmann::ordered_json;
namespace cli = vesk::host::cli;

const std::string kData = VESK_DATA_DIR;
const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";
const std::string kFreqRel = kCell + ",EUtranFreqRelation=1";
const std::string kNewRel = kFreqRel + ",EUtranCellRelation=9";
const std::string kExternalCell =
    kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1,ExternalEUtranCellFDD=2";
const std::string kUtranRel = kCell + ",UtranFreqRelation=1";
const std::string kUtranCellRel = kUtranRel + ",UtranCellRelation=1";
const std::string kJob =
    "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat,EventJob=10000";
const std::string kGroup =
    "ManagedElement=1,SystemFunctions=1,PmEventM=1,EventProducer=Lrat,EventGroup=RrcEvents";
const std::string kCertM = "ManagedElement=1,SystemFunctions=1,SecM=1,CertM=1";

class WritePathTest : public ::testing::Test {
  protected:
    void SetUp() override {
        vesk::isec::reset();
        char pattern[] = "/tmp/vesk-write-path-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        startHost(true);
    }
    void TearDown() override {
        stopHost();
        vesk::isec::reset();
        std::filesystem::remove_all(_dir);
    }
    // A host on the state directory, loaded with the demo station when `load` is true.
    void startHost(bool load) {
        _host.reset(new Host);
        std::string error;
        ASSERT_TRUE(_host->openState(_dir, &error)) << error;
        ASSERT_TRUE(_host->loadModel(kData + "/model", &error)) << error;
        if (load) {
            vesk::host::model::StationLoader loader(*_host->model());
            ASSERT_TRUE(loader.load(kData + "/station/demo-station.xml",
                                    kData + "/station/station-objects.xml", &error))
                << error;
        }
        ASSERT_EQ(_host->load(VESK_AGENT_PATH, &error), Host::kLoaded) << error;
        ASSERT_EQ(_host->start(&error), OrlOk) << error;
        _host->openSession(vesk::host::kProtocolCli, "operator");
        _view.reset(new cli::ModelView(*_host->model()));
        cli::ShellOptions options;
        options.json = true;
        _shell.reset(new cli::Shell(*_host, *_view, options, _out));
    }
    void stopHost() {
        _shell.reset();
        _view.reset();
        _host.reset();
    }
    Json run(const std::string& command) {
        _out.str("");
        _shell->runCommand(command);
        return Json::parse(_out.str());
    }
    void ok(const std::string& command) {
        Json answer = run(command);
        ASSERT_EQ(answer["code"], "OrlOk") << command << "\n" << answer.dump();
    }
    Json get(const std::string& dn, const std::string& attribute) {
        return run("get " + dn + " " + attribute)["result"][attribute];
    }
    bool exists(const std::string& dn) { return run("exists " + dn)["result"] == true; }

    // What the committed transaction of the first test wrote, as seen by the host now.
    void expectCommittedWrites() {
        EXPECT_TRUE(exists(kNewRel));
        EXPECT_EQ(get(kNewRel, "neighborCellRef"), kExternalCell);
        EXPECT_EQ(get(kNewRel, "isHoAllowed"), true);  // a default
        EXPECT_EQ(get(kNewRel, "createdBy"), "OPERATOR");
        EXPECT_EQ(get(kNewRel, "lastModification"), "NOT_MODIFIED");
        EXPECT_EQ(get(kFreqRel, "blackListEntry"),
                  Json::parse(R"([{"startPci":7,"pciRange":2},{"startPci":9,"pciRange":3}])"));
        EXPECT_EQ(get(kEnb, "eNodeBPlmnId"), Json::parse(R"({"mcc":240,"mnc":8,"mncLength":2})"));
        EXPECT_EQ(get(kFreqRel + ",EUtranCellRelation=1", "cellIndividualOffsetEUtran"), -3);
        EXPECT_EQ(get(kFreqRel + ",EUtranCellRelation=1", "lastModification"), "OPERATOR");
        EXPECT_EQ(get(kJob, "eventGroupRef"), Json::array({kGroup}));
        EXPECT_FALSE(exists(kUtranRel));
        EXPECT_FALSE(exists(kUtranCellRel));
        // The cell is unlocked: the bandwidth waits in the cell's slot, and reads show it.
        EXPECT_EQ(get(kCell, "dlChannelBandwidth"), 5000);
    }

    std::string _dir;
    std::unique_ptr<Host> _host;
    std::unique_ptr<cli::ModelView> _view;
    std::ostringstream _out;
    std::unique_ptr<cli::Shell> _shell;
};

TEST_F(WritePathTest, CommittedWritesSurviveARestartOfTheHost) {
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kExternalCell + "\"");
    ok("set " + kFreqRel + " blackListEntry startPci=7,pciRange=2 startPci=9,pciRange=3");
    ok("set " + kEnb + " eNodeBPlmnId mcc=240,mnc=8,mncLength=2");
    ok("set " + kJob + " eventGroupRef " + kGroup);
    ok("set " + kFreqRel + ",EUtranCellRelation=1 cellIndividualOffsetEUtran -3");
    // The host takes the subtree down, children first.
    ok("delete " + kUtranRel);
    ok("set " + kCell + " dlChannelBandwidth 5000");
    ok("set " + kCertM + " userLabel \"trust anchor\"");
    // Certificate MOs reach the security component only when the transaction commits.
    EXPECT_TRUE(vesk::isec::storedDns().empty());
    ok("commit");
    expectCommittedWrites();
    std::unique_ptr<DBObject> cert(vesk::isec::storedObject(kCertM));
    ASSERT_NE(cert, nullptr);
    ASSERT_NE(cert->getAttribute("userLabel"), nullptr);
    EXPECT_EQ(cert->getAttribute("userLabel")->ToStr(), "trust anchor");

    stopHost();
    vesk::isec::reset();
    startHost(false);
    expectCommittedWrites();
    EXPECT_EQ(get(kCertM, "userLabel"), "trust anchor");
}

TEST_F(WritePathTest, AnAbortedTransactionLeavesNothing) {
    Json before = get(kFreqRel, "blackListEntry");
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kExternalCell + "\"");
    ok("set " + kFreqRel + " blackListEntry startPci=7,pciRange=2");
    ok("delete " + kUtranCellRel);
    ok("set " + kCertM + " userLabel revoked");
    ok("create " + kCertM + " TrustCategory=extra");
    ok("abort");

    EXPECT_FALSE(exists(kNewRel));
    EXPECT_TRUE(exists(kUtranCellRel));
    EXPECT_EQ(get(kFreqRel, "blackListEntry"), before);
    EXPECT_TRUE(get(kCertM, "userLabel").is_null());
    EXPECT_FALSE(exists(kCertM + ",TrustCategory=extra"));
    EXPECT_TRUE(vesk::isec::storedDns().empty());

    // The next transaction starts clean: its commit confirms only its own change.
    ok("begin");
    ok("set " + kCertM + " userLabel kept");
    ok("commit");
    EXPECT_EQ(get(kCertM, "userLabel"), "kept");
    EXPECT_FALSE(exists(kCertM + ",TrustCategory=extra"));
}

TEST_F(WritePathTest, AReferenceToAMissingMoFailsTheCommit) {
    // A reference to an MO that does not exist fails the commit, and nothing of it stays.
    ok("begin");
    ok("create " + kFreqRel + " EUtranCellRelation=9 neighborCellRef=\"" + kEnb +
       ",EUtranCellFDD=77\"");
    EXPECT_NE(run("commit")["code"], "OrlOk");
    EXPECT_FALSE(exists(kNewRel));
}

}  // namespace

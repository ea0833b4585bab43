// The LTE commit checks of the real agent through vesk-host on the demo station: bandwidth
// faults at the host's fault manager, carrier aggregation and candidate channels refused at
// commit beside the nearest change that passes, band 46 channels read back in the low numbering,
// and the fault manager's table across a restart of the agent and of the host.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace {

using namespace vesk::e2e;

const std::string kCell2 = kEnb + ",EUtranCellFDD=2", kCell3 = kEnb + ",EUtranCellFDD=3";
const std::string kCa = kEnb + ",CarrierAggregationFunction=1";
const std::string kWifi = kEnb + ",WiFiChannelSelection=1", kNet = kEnb + ",EUtraNetwork=1";
const std::string kLaa = kEnb + ",EUtranCellFDD=4";

// "code cell" of each fault of an `alarms` answer.
std::vector<std::string> faults(const Json& answer) {
    std::vector<std::string> shown;
    for (const Json& fault : answer["result"])
        shown.push_back(std::to_string(fault["code"].get<int>()) + " " +
                        fault["cell"].get<std::string>());
    return shown;
}

// The reasons of an answer, joined.
std::string reasons(const Json& answer) {
    std::string text;
    for (const Json& reason : answer["reasons"])
        text += reason.get<std::string>() + "\n";
    return text;
}

class Faults : public ProgramFixture {
  protected:
    void SetUp() override {
        ProgramFixture::SetUp();
        Outcome loaded =
            program("--state " + _dir + "/state --load " + kData + "/station/demo-station.xml");
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
    // The answers of one run of vesk-host on the state; every command must be answered.
    std::vector<Json> session(const std::vector<std::string>& commands) {
        std::string joined;
        for (const std::string& command : commands)
            joined += command + "; ";
        Outcome o = agent(joined, "--json");
        EXPECT_EQ(o.status, 0) << o.err;
        std::vector<Json> answers = o.answers();
        EXPECT_EQ(answers.size(), commands.size()) << o.out << o.err;
        answers.resize(commands.size());
        return answers;
    }
};

TEST_F(Faults, CommitChecksAndTheFaultManagerAcrossARestartOfTheHost) {
    const std::string laaRelation = kLaa + ",EUtranFreqRelation=_47290";
    std::vector<Json> a = session({
        "begin",
        "set " + kCell + " dlChannelBandwidth 3000",
        "set " + kCell + " ulChannelBandwidth 5000",
        "commit",
        "alarms",
        "set " + kCell + " ulChannelBandwidth 5000",
        "alarms history",
        "set " + kCa + " sCellActDeactDataThresHyst 150",
        "get " + kCa,
        "set " + kCa + " sCellActDeactDataThresHyst 100",
        "create " + kEnb + " EUtranCellFDD=4 cellId=4 earfcndl=47290",
        "set " + kWifi + " candidateChannels channel36=true,channel40=false",
        "get " + kWifi + " candidateChannels",
        "set " + kWifi + " candidateChannels channel36=true,channel40=true,channel44=false",
        "create " + kEnb + " EUtranCellFDD=5 cellId=5 earfcndl=50000",
        "set " + kWifi + " candidateChannels channel40=true",
        "begin",
        "create " + kNet + " EUtranFrequency=255644 arfcnValueEUtranDl=255644",
        "create " + kLaa + " EUtranFreqRelation=_255644 eutranFrequencyRef=" + kNet +
            ",EUtranFrequency=255644",
        "commit",
        "get " + laaRelation + " eutranFrequencyRef",
        "get " + kNet + ",EUtranFrequency=47290 arfcnValueEUtranDl",
        "exists " + kNet + ",EUtranFrequency=255644",
    });
    const std::string refused = "OrlValidationFailed", ok = "OrlOk";
    const std::vector<std::string> bothOnCell = {"20745 " + kCell, "20752 " + kCell};
    EXPECT_EQ(a[3]["code"], ok);
    EXPECT_EQ(faults(a[4]), bothOnCell);
    EXPECT_EQ(a[6]["result"].size(), 2u);  // the same bandwidth raised nothing new
    EXPECT_EQ(a[7]["code"], refused);
    EXPECT_EQ(a[8]["result"]["sCellActDeactDataThresHyst"], 10);
    EXPECT_EQ(a[9]["code"], ok);
    EXPECT_EQ(a[11]["code"], refused);
    EXPECT_EQ(a[12]["result"]["candidateChannels"],
              Json::parse(R"({"channel36":true,"channel40":true,"channel149":false})"));
    EXPECT_EQ(a[13]["code"], ok);
    // A 5 GHz channel in no table is not judged, and says so.
    EXPECT_EQ(a[15]["code"], ok);
    EXPECT_NE(reasons(a[15]).find(kEnb + ",EUtranCellFDD=5::earfcndl 50000 is no candidate"),
              std::string::npos)
        << a[15];
    EXPECT_EQ(a[19]["code"], ok);
    EXPECT_EQ(a[20]["result"]["eutranFrequencyRef"], kNet + ",EUtranFrequency=47290");
    EXPECT_EQ(a[21]["result"]["arfcnValueEUtranDl"], 47290);
    EXPECT_EQ(a[22]["result"], false);

    // A bandwidth the agent cannot read, written while no host runs, counts as 0.
    std::string error;
    ASSERT_TRUE(vesk::db::open(_dir + "/state", &error)) << error;
    IDatabase::setAttribute(kCell3, 1, "dlChannelBandwidth", AttributeVariant(std::string("20")),
                            true, IPCData::AVT_STRING, false, 0);
    vesk::db::close();
    // The restarted agent knows no fault it raised before: no clear, and the table stays.
    a = session({"alarms", "begin", "set " + kCell + " dlChannelBandwidth 5000",
                 "set " + kCell + " ulChannelBandwidth 5000", "commit", "alarms", "alarms refuse",
                 "set " + kCell2 + " dlChannelBandwidth 1400", "alarms", "alarms history",
                 "alarms accept"});
    EXPECT_EQ(faults(a[0]), bothOnCell);
    EXPECT_NE(reasons(a[4]).find("Toolbox::getValue: Boost Bad Get!"), std::string::npos) << a[4];
    const std::vector<std::string> afterRestart = {bothOnCell[0], bothOnCell[1], "20752 " + kCell3};
    EXPECT_EQ(faults(a[5]), afterRestart);
    // A refusing fault manager: the commit passes with the failed sends as its reasons.
    EXPECT_EQ(a[7]["code"], ok);
    EXPECT_NE(reasons(a[7]).find("VeskLTEOI::sendFaultNotif sent fault to FM failed"),
              std::string::npos);
    EXPECT_EQ(faults(a[8]), afterRestart);
    ASSERT_EQ(a[9]["result"].size(), 5u);
    EXPECT_EQ(a[9]["result"][4]["outcome"], "refused");
    EXPECT_EQ(a[9]["result"][4]["cell"], kCell2);
}

// The agent stopped, unloaded, loaded and started again inside one host.
class FaultsInOneHost : public HostFixture {};

TEST_F(FaultsInOneHost, TheTableOutlivesARestartOfTheAgent) {
    ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
    openShell();
    EXPECT_EQ(run("set " + kCell + " dlChannelBandwidth 3000")["code"], "OrlOk");
    _shell.reset();
    _host->closeSession();
    _host->stop();
    _host->unload();
    ASSERT_NO_FATAL_FAILURE(loadPlugin(VESK_AGENT_PATH));
    std::string error;
    ASSERT_EQ(_host->start(&error), OrlOk) << error;
    openShell();
    EXPECT_EQ(run("set " + kCell + " dlChannelBandwidth 10000")["code"], "OrlOk");
    EXPECT_EQ(faults(run("alarms")),
              (std::vector<std::string>{"20745 " + kCell, "20752 " + kCell}));
    EXPECT_EQ(run("alarms history")["result"].size(), 2u);
}

}  // namespace

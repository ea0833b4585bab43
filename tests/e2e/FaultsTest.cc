// The LTE commit checks of the real agent through vesk-host on the demo station: bandwidth
// faults at the host's fault manager, carrier aggregation and candidate channels refused at
// commit beside the nearest change that passes, band 46 channels read back in the low numbering,
// and the fault manager's table across a restart of the host.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "e2e/HostFixture.h"

namespace {

using namespace vesk::e2e;

const std::string kCell2 = kEnb + ",EUtranCellFDD=2";
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

class Faults : public StationProgramFixture {
  protected:
    // The answers of one run of vesk-host on the state; every command must be answered.
    std::vector<Json> session(const std::vector<std::string>& commands) {
        std::string joined;
        for (const std::string& command : commands)
            joined += command + "; ";
        return answers(joined, commands.size());
    }
};

TEST_F(Faults, CommitChecksAndTheFaultManagerAcrossARestartOfTheHost) {
    std::vector<Json> a = session(
        {"begin",
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
         "begin",
         "create " + kNet + " EUtranFrequency=255644 arfcnValueEUtranDl=255644",
         "create " + kLaa + " EUtranFreqRelation=_255644 eutranFrequencyRef=" + kNet +
             ",EUtranFrequency=255644",
         "commit",
         "get " + kLaa + ",EUtranFreqRelation=_47290 eutranFrequencyRef",
         "get " + kNet + ",EUtranFrequency=47290 arfcnValueEUtranDl",
         "exists " + kNet + ",EUtranFrequency=255644"});
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
    EXPECT_EQ(a[17]["code"], ok);
    EXPECT_EQ(a[18]["result"]["eutranFrequencyRef"], kNet + ",EUtranFrequency=47290");
    EXPECT_EQ(a[19]["result"]["arfcnValueEUtranDl"], 47290);
    EXPECT_EQ(a[20]["result"], false);

    // The restarted agent knows no fault it raised before: no clear, and the table stays; a
    // later raise finds it active. A refusing fault manager fails the send, not the commit.
    a = session({"alarms", "begin", "set " + kCell + " dlChannelBandwidth 5000",
                 "set " + kCell + " ulChannelBandwidth 5000", "commit", "alarms",
                 "set " + kCell + " dlChannelBandwidth 3000", "peer fault refuse",
                 "set " + kCell2 + " dlChannelBandwidth 1400", "alarms", "peer fault show"});
    EXPECT_EQ(faults(a[0]), bothOnCell);
    EXPECT_EQ(faults(a[5]), bothOnCell);
    EXPECT_EQ(a[8]["code"], ok);
    EXPECT_NE(a[8]["reasons"].dump().find("sendFaultNotif sent fault to FM failed"),
              std::string::npos);
    EXPECT_EQ(faults(a[9]), bothOnCell);
    const Json& history = a[10]["result"]["history"];
    ASSERT_EQ(history.size(), 6u);
    for (size_t i = 2; i < history.size(); ++i)
        EXPECT_EQ(history[i]["outcome"], i < 4 ? "already active" : "refused") << history[i];
    EXPECT_EQ(history[5]["cell"], kCell2);
}

}  // namespace

// The frequency change of the real agent on the demo station, through the host's `action` and
// `commit` with the configuration manager and reset component peers: the rebuild of frequencies
// and relations as cases over (station before, change) -> (station after), the channel rules,
// the waits on the configuration manager, external cells, and the default frequency MOs.
#include <gtest/gtest.h>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "station/database/FaultDisk.h"

namespace {

using namespace vesk::e2e;

const std::string kFrequencyNet = kEnb + ",EUtraNetwork=1";
const std::string kFreq = kFrequencyNet + ",EUtranFrequency=";
const std::string kExt = kFrequencyNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=";
const std::string kFdd = kEnb + ",EUtranCellFDD=";
const std::string kUtra = kEnb + ",UtraNetwork=1";
const std::string kUtranCell = kUtra + ",UtranFrequency=1,ExternalUtranCellFDD=1";

class FrequencyTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        if (!HasFatalFailure())
            startAgentShell(true);
    }
    // Every JSON answer the command printed (a commit that waits prints two).
    std::vector<Json> answers(const std::string& command) {
        std::vector<Json> result;
        std::istringstream lines(runText(command));
        for (std::string line; std::getline(lines, line);)
            result.push_back(Json::parse(line));
        return result;
    }
    void ok(const std::string& command) {
        Json answer = run(command);
        ASSERT_EQ(answer["ok"], true) << command << "\n" << answer.dump();
    }
    // The ids of the children of class `cls` of `dn`, joined by " ".
    std::string ids(const std::string& dn, const std::string& cls) {
        std::string text;
        for (const std::string& id : vesk_ids(dn, cls))
            text += (text.empty() ? "" : " ") + id;
        return text;
    }
    std::list<std::string> vesk_ids(const std::string& dn, const std::string& cls) {
        return IDatabase::getMOClassWithParent(dn, cls, 0);
    }
    std::string ref(const std::string& dn, const char* name = "eutranFrequencyRef") {
        Json value = run("get " + dn + " " + name)["result"][name];
        return value.is_string() ? value.get<std::string>() : value.dump();
    }
    Json show(const std::string& peer) { return run("peer " + peer + " show")["result"]; }
};

// Each case on a fresh station: commands that set it up, the change, then reads of what is
// there after the commit: the ids of the children of a class ("dn|class") and references (dn, or
// "dn|attribute" for another than eutranFrequencyRef).
TEST_F(FrequencyTest, TheRebuildMovesFrequenciesAndRelations) {
    struct Case {
        const char* name;
        std::vector<std::string> setup;
        std::string dn;
        int channel;
        // dn (and class) -> ids after the commit
        std::vector<std::pair<std::string, std::string>> after;
        // dn (and attribute) -> reference after the commit
        std::vector<std::pair<std::string, std::string>> refs;
    };
    const std::string c1 = kFdd + "1,EUtranFreqRelation=";
    const std::string c3 = kFdd + "3,EUtranFreqRelation=";
    const std::vector<Case> cases = {
        {"own cell to an unused frequency: every relation on the old one gets a twin, the "
         "neighbour relation to the cell follows",
         {},
         kFdd + "2",
         3100,
         {{kFrequencyNet + "|EUtranFrequency", "1 2 3"},
          {kFdd + "1|EUtranFreqRelation", "1 2 _3100"},
          {c1 + "1|EUtranCellRelation", "2"},
          {c1 + "_3100|EUtranCellRelation", "1"},
          {kFdd + "2|EUtranFreqRelation", "1 _3100"},
          {kFdd + "3|EUtranFreqRelation", "1 2 _3100"}},
         {{c1 + "_3100", kFreq + "3"}, {kFdd + "2,EUtranFreqRelation=_3100", kFreq + "3"}}},
        {"own cell to a new channel: the frequency is made with the channel as its id; a "
         "neighbour's relation left empty and not on its own frequency goes",
         {},
         kFdd + "3",
         2850,
         {{kFrequencyNet + "|EUtranFrequency", "1 2 3 2850"},
          {kFdd + "3|EUtranFreqRelation", "1 2 _2850"},
          {kFdd + "1|EUtranFreqRelation", "1 _2850"},
          {c1 + "_2850|EUtranCellRelation", "1"}},
         {{c3 + "_2850", kFreq + "2850"}}},
        {"external cell, last user of its frequency: relation and frequency go, the neighbour "
         "relation moves",
         {"begin", "create " + kFrequencyNet + " EUtranFrequency=9 arfcnValueEUtranDl=2000",
          "create " + kFrequencyNet +
              ",ExternalENodeBFunction=1 ExternalEUtranCellFDD=4 localCellId=4 "
              "physicalLayerCellIdGroup=30 physicalLayerSubCellId=0 tac=100 "
              "eutranFrequencyRef=" +
              kFreq + "9",
          "create " + kFdd + "3 EUtranFreqRelation=9 eutranFrequencyRef=" + kFreq + "9",
          "create " + c3 + "9 EUtranCellRelation=1 neighborCellRef=" + kExt + "4", "commit"},
         kExt + "4",
         3100,
         {{kFrequencyNet + "|EUtranFrequency", "1 2 3"},
          {kFdd + "3|EUtranFreqRelation", "1 2 _3100"},
          {c3 + "_3100|EUtranCellRelation", "1"}},
         {{kExt + "4", kFreq + "3"}, {c3 + "_3100", kFreq + "3"}}},
        {"external UTRAN cell: copied under the new frequency with the relations to it; the old "
         "cell, its frequency and the relation left empty go",
         {},
         kUtranCell,
         10700,
         {{kUtra + "|UtranFrequency", "10700"},
          {kUtra + ",UtranFrequency=10700|ExternalUtranCellFDD", "1"},
          {kFdd + "1|UtranFreqRelation", "10700"},
          {kFdd + "1,UtranFreqRelation=10700|UtranCellRelation", "1"}},
         {{kFdd + "1,UtranFreqRelation=10700|utranFrequencyRef", kUtra + ",UtranFrequency=10700"},
          {kFdd + "1,UtranFreqRelation=10700,UtranCellRelation=1|externalUtranCellRef",
           kUtra + ",UtranFrequency=10700,ExternalUtranCellFDD=1"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        closeHost();
        std::filesystem::remove_all(_dir);
        std::filesystem::create_directory(_dir);
        openHost();
        ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
        openShell();
        run("phase 4");
        for (const std::string& command : c.setup)
            ASSERT_NO_FATAL_FAILURE(ok(command));
        ok("begin");
        ok("action " + c.dn + " changeFrequency earfcn=" + std::to_string(c.channel));
        ok("commit");
        for (const auto& a : c.after) {
            size_t bar = a.first.find('|');
            EXPECT_EQ(ids(a.first.substr(0, bar), a.first.substr(bar + 1)), a.second) << a.first;
        }
        for (const auto& r : c.refs) {
            size_t bar = r.first.find('|');
            std::string name =
                bar == std::string::npos ? "eutranFrequencyRef" : r.first.substr(bar + 1);
            EXPECT_EQ(ref(r.first.substr(0, bar), name.c_str()), r.second) << r.first;
        }
    }
}

// Through one agent: the refused change, the accepted one with its reset before the commit ended,
// the external change refused until the restart, and the waits on the configuration manager.
TEST_F(FrequencyTest, TheConfigurationManagerDecidesAndTheResetFollows) {
    const std::string cell = kFdd + "1";
    // A cell whose bandwidth cannot be read is sent with -1.
    ASSERT_NE(IDatabase::deleteAttribute("dlChannelBandwidth", kFdd + "3", "", 0), 0);
    // One refusing cell refuses the request.
    ok("peer cm refuse " + kFdd + "3");
    ok("begin");
    ok("action " + cell + " changeFrequency earfcn=3100");
    ok("action " + kFdd + "3 changeFrequency earfcn=2850");
    Json refused = run("commit");
    EXPECT_EQ(refused["rc"], -6) << refused.dump();
    Json sent = show("cm")["requests"][0]["cells"];
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0]["bandwidth"], 10000);
    EXPECT_EQ(sent[1]["bandwidth"], -1);
    EXPECT_EQ(run("get " + cell + " earfcndl")["result"]["earfcndl"], 6300);
    EXPECT_EQ(run("get " + kFdd + "3 earfcndl")["result"]["earfcndl"], 1300);
    EXPECT_EQ(show("reset").size(), 0u);

    // Silent: the commit runs on; peer commands answer meanwhile; the hand-given answer ends it.
    ok("peer cm silent");
    ok("peer reset restart");
    ok("begin");
    ok("action " + cell + " changeFrequency earfcn=3100");
    ok("action " + cell + " changeFrequency earfcn=1300");
    std::vector<Json> waiting = answers("commit");
    ASSERT_EQ(waiting.size(), 1u);
    EXPECT_EQ(waiting[0]["ok"], true);
    Json requests = show("cm")["requests"];
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[1]["answer"], "waits");
    EXPECT_EQ(requests[1]["cells"].dump(),
              Json::array({Json{{"dn", cell}, {"bandwidth", 10000}, {"channel", 1300}}}).dump());
    std::vector<Json> answered = answers("peer cm answer true");
    EXPECT_EQ(answered[0]["ok"], true);
    std::vector<Json> ended = answers("get " + cell + " earfcndl");
    ASSERT_EQ(ended.size(), 2u);
    EXPECT_EQ(ended[0]["command"], "commit");
    EXPECT_EQ(ended[0]["ok"], true) << ended[0].dump();
    EXPECT_EQ(ended[1]["result"]["earfcndl"], 1300);
    Json reset = show("reset");
    ASSERT_EQ(reset.size(), 1u);
    EXPECT_EQ(reset[0]["cause"], 27);
    EXPECT_EQ(reset[0]["kind"], 1);
    // Recorded while the transaction was open: the restart waits for its end.
    ASSERT_TRUE(eventually([&] { return show("reset")[0]["restart"] != "due"; }));
    std::string restart = show("reset")[0]["restart"];
    ASSERT_EQ(restart.rfind("done at ", 0), 0u) << restart;
    EXPECT_LT(reset[0]["time"].get<std::string>(), restart.substr(8));
    ok("begin");
    ok("action " + kExt + "3 changeFrequency earfcn=3100");
    ok("commit");
    EXPECT_EQ(ref(kExt + "3"), kFreq + "3");
}

// A neighbour cell with eight relations cannot take a ninth: the commit is refused with -10 and
// the rollback leaves the station as it was.
TEST_F(FrequencyTest, ARelationLimitRefusesTheWholeChange) {
    ok("begin");
    for (int i = 2; i <= 8; ++i) {
        std::string id = std::to_string(10 + i);
        ok("create " + kFrequencyNet + " EUtranFrequency=" + id +
           " arfcnValueEUtranDl=" + std::to_string(2000 + i));
        ok("create " + kFdd + "2 EUtranFreqRelation=" + id + " eutranFrequencyRef=" + kFreq + id);
    }
    ok("commit");
    ok("begin");
    ok("action " + kFdd + "1 changeFrequency earfcn=3100");
    Json answer = run("commit");
    EXPECT_EQ(answer["rc"], -10) << answer.dump();
    EXPECT_NE(answer["reasons"].dump().find("Maximum number of EUtranFreqRelation MOs in use"),
              std::string::npos);
    EXPECT_EQ(run("get " + kFdd + "1 earfcndl")["result"]["earfcndl"], 6300);
    EXPECT_EQ(ids(kFdd + "1", "EUtranFreqRelation"), "1 2");
    EXPECT_EQ(ids(kFdd + "1,EUtranFreqRelation=1", "EUtranCellRelation"), "1 2");
    EXPECT_EQ(show("reset").size(), 0u);
}

// A delayed answer: the commit runs on while peer commands answer, and ends after the delay,
// before the next other command runs. From then on external changes are refused until the agent
// restarts.
TEST_F(FrequencyTest, AfterACellChangeExternalCellsWaitForTheRestart) {
    ok("peer cm delay 1000");
    ok("begin");
    ok("action " + kFdd + "3 changeFrequency earfcn=3100");
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(answers("commit").size(), 1u);
    Json pending = show("cm")["requests"][0];
    EXPECT_EQ(pending["delayMs"], 1000);
    EXPECT_FALSE(pending.contains("answered")) << pending.dump();
    std::vector<Json> ended = answers("get " + kFdd + "3 earfcndl");
    ASSERT_EQ(ended.size(), 2u);
    EXPECT_EQ(ended[0]["ok"], true) << ended[0].dump();
    EXPECT_EQ(ended[1]["result"]["earfcndl"], 3100);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
    ok("begin");
    Json answer = run("action " + kExt + "3 changeFrequency earfcn=3100");
    EXPECT_EQ(answer["code"], "OrlFailure") << answer.dump();
    ok("abort");
    EXPECT_EQ(ref(kExt + "3"), kFreq + "2");
}

// An external UTRAN cell changes in a database transaction of its own: a commit the disk refuses
// answers -7 and leaves the station as it was; one that commits stays when the host aborts.
TEST_F(FrequencyTest, AnExternalUtranCellCommitsOnItsOwn) {
    closeHost();
    std::filesystem::remove_all(_dir);
    std::filesystem::create_directory(_dir);
    vesk::db::FaultDisk disk;  // the store opened from here on writes through it
    struct CloseFirst {        // the store closes before its disk goes, also on an early return
        std::function<void()> close;
        ~CloseFirst() { close(); }
    } closeFirst{[this] { closeHost(); }};
    openHost();
    ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
    openShell();
    run("phase 4");
    ok("begin");
    disk.fillDisk();
    Json full = run("action " + kUtranCell + " changeFrequency earfcn=10700");
    disk.clear();
    EXPECT_EQ(full["rc"], -7) << full.dump();
    EXPECT_EQ(ids(kUtra, "UtranFrequency"), "1");
    EXPECT_EQ(ids(kUtra + ",UtranFrequency=1", "ExternalUtranCellFDD"), "1");
    EXPECT_EQ(ids(kFdd + "1", "UtranFreqRelation"), "1");
    ok("action " + kUtranCell + " changeFrequency earfcn=10700");
    ok("abort");
    EXPECT_EQ(ids(kUtra, "UtranFrequency"), "10700");
}

// Channel rules on entry: (class, given) -> answer and the channel the transaction holds.
TEST_F(FrequencyTest, ChannelsAreCheckedAndTheHighNumberingConverted) {
    ok("begin");
    ok("create " + kEnb + " EUtranCellTDD=1 earfcn=52940 cellId=9");
    ok("commit");
    const struct {
        std::string dn;
        const char* attribute;
        long long given;
        bool accepted;
        long long held;
    } cases[] = {
        {kEnb + ",EUtranCellTDD=1", "earfcn", 255244, true, 46890},
        {kEnb + ",EUtranCellTDD=1", "earfcn", 261894, true, 53540},
        {kEnb + ",EUtranCellTDD=1", "earfcn", 47090, true, 47090},
        {kEnb + ",EUtranCellTDD=1", "earfcn", 255243, false, 52940},
        {kEnb + ",EUtranCellTDD=1", "earfcn", 17999, false, 52940},
        {kFdd + "1", "earfcndl", 17999, true, 17999},
        {kFdd + "1", "earfcndl", 18000, false, 6300},
        {kFdd + "1", "earfcndl", 46890, false, 6300},
        {kFdd + "1", "earfcndl", 255244, false, 6300},
        {kFdd + "1", "earfcndl", -5, false, 6300},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.dn + " " + std::to_string(c.given));
        ok("begin");
        Json answer = run("action " + c.dn + " changeFrequency earfcn=" + std::to_string(c.given));
        EXPECT_EQ(answer["ok"], c.accepted) << answer.dump();
        EXPECT_EQ(run("get " + c.dn + " " + c.attribute)["result"][c.attribute], c.held);
        ok("abort");
    }
    Json missing = run("action " + kFdd + "9 changeFrequency earfcn=100");
    EXPECT_EQ(missing["ok"], false);
    // Committed, the channel, its frequency and the relation to it are in the low numbering.
    ok("begin");
    ok("action " + kEnb + ",EUtranCellTDD=1 changeFrequency earfcn=255444");
    ok("commit");
    EXPECT_EQ(run("get " + kEnb + ",EUtranCellTDD=1 earfcn")["result"]["earfcn"], 47090);
    EXPECT_EQ(ref(kEnb + ",EUtranCellTDD=1,EUtranFreqRelation=_47090"), kFreq + "47090");
}

// The entry for configuration code: a known channel reuses its frequency, a new one takes the
// first free id; the relation gets the cell's measurement bandwidth, unless the cell lacks
// qRxLevMin (the demo cells do): then the relation stays without it and the answer is -1.
TEST_F(FrequencyTest, DefaultFrequencyMOsOfACell) {
    using Entry = int (*)(const char*, int, int);
    auto create = reinterpret_cast<Entry>(_host->pluginSymbol("vesk_cm_createDefaultFrequencyMOs"));
    ASSERT_NE(create, nullptr);
    const struct {
        std::string cell;
        bool withQRxLevMin;
        int channel;
        std::string frequency;
        int rc;
        std::string band;
    } cases[] = {{kFdd + "2", false, 1300, kFreq + "2", -1, "0"},
                 {kFdd + "3", true, 5000, kFreq + "4", 0, "100"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cell);
        int tx = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        IDatabase::deleteObj(c.cell + ",EUtranFreqRelation=1", 1, tx);
        if (c.withQRxLevMin)
            IDatabase::setAttribute(c.cell, 1, "qRxLevMin", AttributeVariant(-120), false,
                                    IPCData::AVT_INT32, true, tx);
        EXPECT_EQ(create(c.cell.c_str(), c.channel, tx), c.rc);
        std::string dn = c.cell + ",EUtranFreqRelation=1";
        Attribute* target = IDatabase::getAttribute(dn, "eutranFrequencyRef", tx);
        ASSERT_NE(target, nullptr) << dn;
        EXPECT_EQ(boost::get<std::string>(target->value), c.frequency);
        Attribute* band = IDatabase::getAttribute(dn, "allowedMeasBandwidth", tx);
        EXPECT_EQ(band != nullptr ? band->ToStr() : "none", c.band);
        IDatabase::transaction(IPCData::OP_TX_ROLLBACK, tx, false);
    }
}

}  // namespace

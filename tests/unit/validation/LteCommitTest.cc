// The LTE commit stage against a station database of the test's own, with the host's fault
// manager as the component of destination 3. The handles are not open transactions, so commit
// reads and writes committed data; the channel checks are given a database transaction.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/peers/FaultManager.h"
#include "host/peers/Peers.h"
#include "station/log/LogControl.h"
#include "transaction/Band46Channels.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskLTEOI.h"

namespace {

using TibVeskOI::VeskLTEOI;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::number;
using vesk::dbtest::putDn;
using vesk::dbtest::text;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1", kNet = kEnb + ",EUtraNetwork=1";
const std::string kFdd = kEnb + ",EUtranCellFDD=1", kTdd = kEnb + ",EUtranCellTDD=1";
const std::string kCa = kEnb + ",CarrierAggregationFunction=1";
const std::string kWifi = kEnb + ",WiFiChannelSelection=1";
const std::string kCandidates = kWifi + ",WiFiChannelSelection=1:candidateChannels";

// Candidate channels from "channel40=1 channel36=0", into the view of `handle`.
void putCandidates(const std::string& members, int handle) {
    auto object = vesk::dbtest::object("WiFiChannelSelection=1:candidateChannels", kWifi);
    std::istringstream words(members);
    for (std::string word; words >> word;) {
        const std::string::size_type equals = word.find('=');
        object->addAttribute(*attr(word.substr(0, equals),
                                   AttributeVariant(word.substr(equals + 1) == "1"),
                                   IPCData::AVT_BOOL));
    }
    ASSERT_NE(IDatabase::insert(object.get(), handle), 0);
}

class LteCommit : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        for (const std::string& dn : {std::string("ManagedElement=1"), kEnb, kNet, kWifi})
            putDn(dn, {});
        putDn("OAM", {number("AI_phase", 4)});
        _faults = static_cast<vesk::host::peers::FaultManager*>(
            _peers.add(std::make_unique<vesk::host::peers::FaultManager>()));
    }
    VeskLTEOI& _lte = *VeskLTEOI::instance();
    vesk::host::peers::Peers _peers;
    vesk::host::peers::FaultManager* _faults = nullptr;
};

// The ten pairs as written in the station's documents, against every place that converts.
TEST_F(LteCommit, ChannelPairs) {
    const struct {
        int high, low;
        const char* channel;
    } pairs[] = {{255244, 46890, "channel32"},  {255444, 47090, "channel36"},
                 {255644, 47290, "channel40"},  {255844, 47490, "channel44"},
                 {256044, 47690, "channel48"},  {261094, 52740, "channel149"},
                 {261294, 52940, "channel153"}, {261494, 53140, "channel157"},
                 {261694, 53340, "channel161"}, {261894, 53540, "channel165"}};
    const std::string rel = kFdd + ",EUtranFreqRelation=_";
    for (const auto& pair : pairs) {
        const std::string high = std::to_string(pair.high), low = std::to_string(pair.low);
        EXPECT_EQ(VeskLTEOI::updateArfcn(pair.high), pair.low) << high;
        EXPECT_EQ(VeskLTEOI::updateArfcn(pair.low), pair.low) << high;
        EXPECT_EQ(VeskLTEOI::updateReservedBy(rel + high + ",EUtranCellRelation=1"), rel + low);
        const TibVeskCM::Band46Channel* row = TibVeskCM::band46ByLow(pair.low);
        EXPECT_STREQ(row ? row->candidateChannel : "", pair.channel) << high;
    }
    EXPECT_EQ(TibVeskCM::kBand46Channels.size(), std::size(pairs));
    // The first number of the table decides, cut at its last occurrence.
    EXPECT_EQ(VeskLTEOI::updateReservedBy("_261894;_255244;_255244x"), "_261894;_255244;_46890");
}

// One commit per step on the FDD cell, with the TDD cell beside it. Flags: 'n' the bandwidth is
// not noted, 'r' the fault manager refuses, 't' the downlink is text (unreadable), 'p' a pending
// downlink of 3000 and a TDD uplink of 10000. `sent` lists what the fault manager was told: +/-
// raise or clear, the code, F or T for the cell, "!" refused, "~" already in that state.
TEST_F(LteCommit, BandwidthFaultsFollowTheirState) {
    const struct {
        int dl, ul;
        std::string flags, sent;
    } steps[] = {
        {3000, 5000, "", "+20745F +20752F"},
        {3000, 5000, "", ""},
        {5000, 5000, "n", ""},
        {1400, 1400, "", "-20752F"},
        {5000, 5000, "r", "-20745F!"},
        {5000, 5000, "", ""},
        {3000, 5000, "t", "+20752F"},
        {5000, 5000, "p", "+20745F~ +20752T"},
        {5000, 5000, "", "-20745F -20752F -20752T"},
    };
    unsigned long tx = 900;
    for (const auto& step : steps) {
        SCOPED_TRACE(tx - 899);
        auto has = [&](char flag) { return step.flags.find(flag) != std::string::npos; };
        Attribute* dl = has('t') ? text("dlChannelBandwidth", std::to_string(step.dl))
                                 : number("dlChannelBandwidth", step.dl);
        if (has('p'))
            putDn(kFdd, {dl, number("ulChannelBandwidth", step.ul)}, 0,
                  {number("dlChannelBandwidth", 3000)});
        else
            putDn(kFdd, {dl, number("ulChannelBandwidth", step.ul)});
        putDn(kTdd, {number("dlChannelBandwidth", 20000),
                     number("ulChannelBandwidth", has('p') ? 10000 : 20000)});
        vesk::host::peers::Json set;
        std::string error;
        ASSERT_TRUE(_faults->command({has('r') ? "refuse" : "record"}, &set, &error));
        const size_t before = _faults->history().size();
        ++tx;
        if (!has('n'))
            _lte.validateCellSetAttribute(tx, kFdd.c_str(), "ulChannelBandwidth", nullptr);
        EXPECT_EQ(_lte.commit(tx), OrlOk);
        std::string sent;
        const std::vector<vesk::host::peers::FaultEvent> history = _faults->history();
        for (size_t i = before; i < history.size(); ++i) {
            const std::string& outcome = history[i].outcome;
            sent += std::string(sent.empty() ? "" : " ") + (history[i].state ? "+" : "-") +
                    std::to_string(history[i].code) + (history[i].cell == kFdd ? "F" : "T") +
                    (outcome == "refused"                     ? "!"
                     : outcome.find("active") != outcome.npos ? "~"
                                                              : "");
        }
        EXPECT_EQ(sent, step.sent);
    }
    EXPECT_TRUE(_faults->active().empty());
    EXPECT_TRUE(_lte.illegalBandwidthAlarmDns().empty() &&
                _lte.inconsistentBandwidthAlarmDns().empty());
    EXPECT_FALSE(_lte.activeAlarm(kFdd, 20744));
}

// The committed candidate channels and those of the transaction, for one FDD cell.
TEST_F(LteCommit, CandidateChannels) {
    const std::string rule = "VeskLTEOI::checkWiFiChannelSelection ";
    const struct {
        int earfcndl;
        std::string committed, changed;
        int rc;
        std::string line = "";
    } rows[] = {
        {47290, "channel40=1", "channel40=0", -9,
         rule + "LAA SCell candidate channel can not be turned off"},
        {47290, "channel40=1", "channel40=1 channel36=0", 0},
        {47290, "channel40=1", "channel36=1", -9},  // left out of the struct: false
        {47290, "channel40=0", "channel40=0", 0,
         rule + "LAA SCell candidate channel is false is database, passing validation"},
        {18000, "channel32=1", "channel32=0", 0},
        {50000, "channel32=1", "channel32=0", 0,
         rule + kFdd + "::earfcndl 50000 is no candidate channel, cell not judged"},
        {46890, "channel32=1 channelFreq5160MHz=1", "channel32=1 channelFreq5160MHz=0", -9},
        {46890, "channel32=1 channelFreq5160MHz=1", "channel32=0 channelFreq5160MHz=1", -9},
        {46890, "channel32=0 channelFreq5160MHz=1", "channel32=1 channelFreq5160MHz=0", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.changed + " over " + row.committed);
        putDn(kFdd, {number("earfcndl", row.earfcndl)});
        putCandidates(row.committed, 0);
        const int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
        putCandidates(row.changed, h);
        vesk::log::LogCapture capture;
        EXPECT_EQ(_lte.checkWiFiChannelSelection(h), row.rc);
        if (!row.line.empty()) {
            EXPECT_EQ(capture.count(row.line), 1u);
        }
        IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false);
    }
    // Before integration channel32 is the master of its second name.
    for (const auto& [changed, alias] :
         {std::pair<const char*, const char*>{"channel32=1 channelFreq5160MHz=0", "1"},
          {"channel32=0 channelFreq5160MHz=1", "0"},
          {"channelFreq5160MHz=1", "1"}}) {
        SCOPED_TRACE(changed);
        putCandidates(changed, 0);
        _lte.synchronizeCandidateChannels(0);
        EXPECT_EQ(committedString(kCandidates, "channelFreq5160MHz"), alias);
    }
}

// Notes of one transaction ('a' carrier aggregation, refused; 'w' candidate channels, passing;
// 'k' a relation deletion that passes, 'r' one that is refused, 'f' a frequency deletion that
// is refused; 'b' the band 46 mark), its answer, the deletions judged, and whether the band 46
// steps ran.
TEST_F(LteCommit, OrderOfTheStage) {
    putDn(kCa, {number("sCellActDeactDataThres", 10), number("sCellActDeactDataThresHyst", 20)});
    putDn(kNet + ",EUtranFrequency=1", {number("arfcnValueEUtranDl", 6300)});
    putDn(kFdd, {number("earfcndl", 6300), number("administrativeState", 1)});
    const std::string own = kFdd + ",EUtranFreqRelation=1", frequency = kNet + ",EUtranFrequency=1";
    putDn(own, {text("eutranFrequencyRef", kNet + ",EUtranFrequency=1")});
    const struct {
        std::string notes;
        int rc;
        size_t judged;
        bool band46;
    } rows[] = {{"a", -9, 0, false},
                {"a w", 0, 0, false},  // the channels' answer replaces the refusal
                {"k r f", -9, 2, false},
                {"a r", -9, 0, false},
                {"a b", -9, 0, true}};
    unsigned long tx = 1000;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.notes);
        ++tx;
        std::istringstream notes(row.notes);
        for (std::string note; notes >> note;) {
            const char* dn = note == "k"   ? "x,EUtranFreqRelation=9"
                             : note == "r" ? own.c_str()
                                           : frequency.c_str();
            if (note == "a")
                _lte.validateCarrierAggregationSetAttribute(tx, kCa.c_str(),
                                                            "sCellActDeactDataThres", nullptr);
            else if (note == "w")
                _lte.validateWiFiChannelSelectionSetAttribute(tx, "", "candidateChannels", nullptr);
            else if (note == "b")
                _lte.validateEUtranFrequencyCreation(tx, kNet.c_str(), "EUtranFrequency", nullptr);
            else if (note == "f")
                _lte.validateEUtranFrequencyDeletion(tx, dn);
            else
                _lte.validateEUtranFreqRelationDeletion(tx, dn);
        }
        vesk::log::LogCapture capture;
        EXPECT_EQ(_lte.commit(tx), row.rc);
        EXPECT_EQ(capture.countContaining("validating deletion of"), row.judged);
        EXPECT_EQ(capture.countContaining("band46FrequencyUpdate enter"), row.band46 ? 1u : 0u);
        // Everything of the transaction is taken; the mark stays, lowered.
        for (const auto* list :
             {&_lte.carrierAggregationCheckTxs(), &_lte.candidateChannelCheckTxs()})
            EXPECT_EQ(std::count(list->begin(), list->end(), tx), 0);
        for (const auto* list : {&_lte.freqRelationDeletions(), &_lte.frequencyDeletions()})
            EXPECT_TRUE(std::none_of(list->begin(), list->end(),
                                     [tx](const auto& entry) { return entry.first == tx; }));
        EXPECT_FALSE(_lte.band46UpdatePending().at(static_cast<int>(tx)));
    }
}

// Objects in the high numbering, normalised; each row's objects stand alone.
TEST_F(LteCommit, Band46Normalisation) {
    const std::string rel = kFdd + ",EUtranFreqRelation=", freq = kNet + ",EUtranFrequency=";
    const std::string black = "EUtranFreqRelation=_53540:blackListEntry=1";
    putDn(kFdd, {});
    putDn(freq + "255244",
          {text("eUtranFrequencyId", "255244"), number("arfcnValueEUtranDl", 255244)});
    putDn(freq + "2552440", {text("eUtranFrequencyId", "2552440")});
    putDn(rel + "_261894",
          {text("eUtranFreqRelationId", "_261894"), text("eutranFrequencyRef", freq + "53540"),
           text("blackListEntry",
                rel + "_261894," + rel.substr(kFdd.size() + 1) + "_261894:blackListEntry=1")});
    putDn(rel + "_261894," + rel.substr(kFdd.size() + 1) + "_261894:blackListEntry=1",
          {number("startPci", 3)});
    putDn(rel + "_255444",
          {text("eUtranFreqRelationId", "_255444"), text("eutranFrequencyRef", freq + "255444")});
    putDn(rel + "x_255244", {text("eUtranFreqRelationId", "x_255244")});
    _lte.band46FreqRelationUpdate(7);
    _lte.band46FrequencyUpdate(7);
    const struct {
        std::string dn, attribute, value;
    } after[] = {
        {freq + "46890", "eUtranFrequencyId", "46890"},
        {freq + "46890", "arfcnValueEUtranDl", "46890"},
        {freq + "255244", "eUtranFrequencyId", "<no object>"},
        {freq + "2552440", "eUtranFrequencyId", "2552440"},
        {rel + "_53540", "eUtranFreqRelationId", "_53540"},
        {rel + "_53540", "eutranFrequencyRef", freq + "53540"},
        {rel + "_53540", "blackListEntry", black},
        {rel + "_53540," + black, "startPci", "3"},
        {rel + "_261894", "eUtranFreqRelationId", "<no object>"},
        {rel + "_47090", "eutranFrequencyRef", freq + "47090"},
        {rel + "x_255244", "eUtranFreqRelationId", "x_255244"},
    };
    for (const auto& row : after)
        EXPECT_EQ(committedString(row.dn, row.attribute), row.value) << row.dn;
}

}  // namespace

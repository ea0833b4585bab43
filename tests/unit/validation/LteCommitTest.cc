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
#include "station/log/LogControl.h"
#include "transaction/Band46Channels.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskLTEOI.h"

namespace {

using TibVeskOI::VeskLTEOI;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::putDn;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1", kNet = kEnb + ",EUtraNetwork=1";
const std::string kFdd = kEnb + ",EUtranCellFDD=1", kTdd = kEnb + ",EUtranCellTDD=1";
const std::string kCa = kEnb + ",CarrierAggregationFunction=1";
const std::string kWifi = kEnb + ",WiFiChannelSelection=1";
const std::string kCandidates = kWifi + ",WiFiChannelSelection=1:candidateChannels";

Attribute* number(const std::string& name, int value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT32);
}
Attribute* text(const std::string& name, const std::string& value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_STRING);
}

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
        _faults.attach();
    }
    VeskLTEOI& _lte = *VeskLTEOI::instance();
    vesk::host::peers::FaultManager _faults{""};
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
    const std::string relation = kFdd + ",EUtranFreqRelation=_";
    for (const auto& pair : pairs) {
        SCOPED_TRACE(pair.high);
        EXPECT_EQ(VeskLTEOI::updateArfcn(pair.high), pair.low);
        EXPECT_EQ(VeskLTEOI::updateArfcn(pair.low), pair.low);
        EXPECT_EQ(VeskLTEOI::updateReservedBy(relation + std::to_string(pair.high) +
                                              ",EUtranCellRelation=1"),
                  relation + std::to_string(pair.low));
        ASSERT_NE(TibVeskCM::band46ByLow(pair.low), nullptr);
        EXPECT_STREQ(TibVeskCM::band46ByLow(pair.low)->candidateChannel, pair.channel);
    }
    EXPECT_EQ(TibVeskCM::kBand46Channels.size(), std::size(pairs));
    // The first number of the table decides, cut at its last occurrence.
    EXPECT_EQ(VeskLTEOI::updateReservedBy("_261894;_255244;_255244x"), "_261894;_255244;_46890");
    EXPECT_EQ(VeskLTEOI::updateReservedBy("_46890"), "_46890");
}

// One commit per step on the FDD cell (and the TDD cell where named). `sent` lists what the
// fault manager was told in that commit: +/- raise or clear, the code, F or T for the cell, then
// "!" when it refused, "~" when it found the fault already in that state.
TEST_F(LteCommit, BandwidthFaultsFollowTheirState) {
    const struct Step {
        const char* name;
        Attribute* dl;
        int ul;
        bool noted;
        std::string sent;
        bool refusing = false;
        Attribute* pendingDl = nullptr;
        int tddUl = 20000;
    } steps[] = {
        {"BothRaised", number("dlChannelBandwidth", 3000), 5000, true, "+20745F +20752F"},
        {"SameStateNothingNew", number("dlChannelBandwidth", 3000), 5000, true, ""},
        {"NotNotedNotJudged", number("dlChannelBandwidth", 5000), 5000, false, ""},
        {"EqualClearsMismatchOnly", number("dlChannelBandwidth", 1400), 1400, true, "-20752F"},
        {"RefusedClearStillFollowed", number("dlChannelBandwidth", 5000), 5000, true, "-20745F!",
         true},
        {"NoClearSentTwice", number("dlChannelBandwidth", 5000), 5000, true, ""},
        {"UnreadableIsZero", text("dlChannelBandwidth", "3000"), 5000, true, "+20752F"},
        {"PendingValueCounts", number("dlChannelBandwidth", 5000), 5000, true, "+20745F~ +20752T",
         false, number("dlChannelBandwidth", 3000), 10000},
        {"AllBackToNormal", number("dlChannelBandwidth", 5000), 5000, true,
         "-20745F -20752F -20752T"},
    };
    unsigned long tx = 900;
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        if (step.pendingDl)
            putDn(kFdd, {step.dl, number("ulChannelBandwidth", step.ul)}, 0, {step.pendingDl});
        else
            putDn(kFdd, {step.dl, number("ulChannelBandwidth", step.ul)});
        putDn(kTdd,
              {number("dlChannelBandwidth", 20000), number("ulChannelBandwidth", step.tddUl)});
        _faults.setRefusing(step.refusing);
        const size_t before = _faults.history().size();
        vesk::log::LogCapture capture;
        if (step.noted)
            _lte.validateCellSetAttribute(++tx, kFdd.c_str(), "ulChannelBandwidth", nullptr);
        EXPECT_EQ(_lte.commit(tx), OrlOk);
        std::string sent;
        const std::vector<vesk::host::peers::FaultEvent> history = _faults.history();
        for (size_t i = before; i < history.size(); ++i) {
            const auto& event = history[i];
            sent += std::string(sent.empty() ? "" : " ") + (event.state ? "+" : "-") +
                    std::to_string(event.code) + (event.cell == kFdd ? "F" : "T") +
                    (event.outcome == "refused"                                ? "!"
                     : event.outcome == "raised" || event.outcome == "cleared" ? ""
                                                                               : "~");
        }
        EXPECT_EQ(sent, step.sent);
        EXPECT_EQ(capture.count("VeskLTEOI::sendFaultNotif sent fault to FM failed"),
                  step.refusing ? 1u : 0u);
        if (std::string(step.name) == "UnreadableIsZero") {
            EXPECT_EQ(capture.count("Toolbox::getValue: Boost Bad Get!", VESK_LOG_ERROR), 1u);
        }
    }
    EXPECT_TRUE(_faults.active().empty());
    EXPECT_TRUE(_lte.illegalBandwidthAlarmDns().empty());
    EXPECT_TRUE(_lte.inconsistentBandwidthAlarmDns().empty());
    EXPECT_FALSE(_lte.activeAlarm(kFdd, 20744));
}

TEST_F(LteCommit, CarrierAggregation) {
    const struct {
        const char* name;
        Attribute* threshold;
        Attribute* hysteresis;
        int rc;
    } rows[] = {
        {"HysteresisAbove", number("sCellActDeactDataThres", 100),
         number("sCellActDeactDataThresHyst", 101), -9},
        {"Equal", number("sCellActDeactDataThres", 100), number("sCellActDeactDataThresHyst", 100),
         0},
        {"ComparedSigned", number("sCellActDeactDataThres", -2),
         number("sCellActDeactDataThresHyst", -1), -9},
        {"UnreadableHysteresisIsMinusOne", number("sCellActDeactDataThres", 0),
         text("sCellActDeactDataThresHyst", "500"), 0},
        {"UnreadableThresholdIsMinusOne", text("sCellActDeactDataThres", "500"),
         number("sCellActDeactDataThresHyst", 0), -9},
    };
    EXPECT_EQ(_lte.checkCarrierAggregation(0), OrlOk);  // no function
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        putDn(kCa, {row.threshold, row.hysteresis});
        EXPECT_EQ(_lte.checkCarrierAggregation(0), row.rc);
    }
}

// The committed candidate channels and those of the transaction, for one FDD cell.
TEST_F(LteCommit, CandidateChannels) {
    const std::string refused =
        "VeskLTEOI::checkWiFiChannelSelection LAA SCell candidate "
        "channel can not be turned off";
    const struct {
        const char* name;
        int earfcndl;
        std::string committed, changed;
        int rc;
        std::string line = "";
    } rows[] = {
        {"InUseTurnedOff", 47290, "channel40=1", "channel40=0", -9, refused},
        {"InUseLeftOn", 47290, "channel40=1", "channel40=1 channel36=0", 0},
        {"InUseLeftOutOfTheStruct", 47290, "channel40=1", "channel36=1", -9},
        {"OffAlready", 47290, "channel40=0", "channel40=0", 0,
         "VeskLTEOI::checkWiFiChannelSelection LAA SCell candidate channel is false is database, "
         "passing validation"},
        {"FddChannelNotJudged", 18000, "channel32=1", "channel32=0", 0},
        {"ChannelInNoTable", 50000, "channel32=1", "channel32=0", 0,
         "VeskLTEOI::checkWiFiChannelSelection " + kFdd +
             "::earfcndl 50000 is no candidate channel, cell not judged"},
        {"SecondNameTurnedOffAlone", 46890, "channel32=1 channelFreq5160MHz=1",
         "channel32=1 channelFreq5160MHz=0", -9},
        {"Channel32TurnedOff", 46890, "channel32=1 channelFreq5160MHz=1",
         "channel32=0 channelFreq5160MHz=1", -9},
        {"BothChangedChannel32Decides", 46890, "channel32=0 channelFreq5160MHz=1",
         "channel32=1 channelFreq5160MHz=0", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
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
        const char* name;
        std::string notes;
        int rc;
        size_t judged;
        bool band46;
    } rows[] = {
        {"CarrierAggregationRefuses", "a", -9, 0, false},
        {"ChannelsReplaceTheRefusal", "a w", 0, 0, false},
        {"DeletionsJudgedUntilARefusal", "k r f", -9, 2, false},
        {"EarlierRefusalLeavesDeletionsUnjudged", "a r", -9, 0, false},
        {"Band46AfterARefusal", "a b", -9, 0, true},
    };
    unsigned long tx = 1000;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
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
        for (const auto* list : {&_lte.carrierAggregationCheckTxs(),
                                 &_lte.candidateChannelCheckTxs(), &_lte.candidateChannelSyncTxs()})
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
    putDn(kFdd, {number("earfcndl", 47090)});
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

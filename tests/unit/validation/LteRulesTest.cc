// The LTE rules, one table per rule family, each change handed to the validation component as the
// front hands it over, against a committed network in a station database of the test's own. The
// handles are not open transactions, so the rules read committed data.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Logger.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"

namespace {

using TibVeskOI::VeskLTEOI;
using TibVeskOI::VeskOI;
using vesk::dbtest::attr;
using vesk::dbtest::committedString;
using vesk::dbtest::putDn;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kNet = kEnb + ",EUtraNetwork=1";
const std::string kF1 = kNet + ",EUtranFrequency=1", kF2 = kNet + ",EUtranFrequency=2";
const std::string kC1 = kEnb + ",EUtranCellFDD=1", kC2 = kEnb + ",EUtranCellFDD=2";
const std::string kC3 = kEnb + ",EUtranCellFDD=3", kTdd = kEnb + ",EUtranCellTDD=1";
const std::string kX1 = kNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=1";
const std::string kX2 = kNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=2";
const std::string kNeighbour = kC1 + ",EUtranFreqRelation=1,EUtranCellRelation=1";
const std::string kMme = kEnb + ",TermPointToMme=";

Attribute* number(const char* name, int value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_INT32);
}
Attribute* text(const char* name, const std::string& value) {
    return attr(name, AttributeVariant(value), IPCData::AVT_STRING);
}

// One host value of one slot (or none): a number or a text of the given type.
struct Val {
    int type;
    long long number;
    std::string text;
    bool empty;
};
Val num(long long n) {
    return {3, n, "", false};
}
Val str(const std::string& s) {
    return {9, 0, s, false};
}
Val dnRef(const std::string& s) {
    return {11, 0, s, false};
}
Val none(int type) {
    return {type, 0, "", true};
}

// The container of a Val; it points into the holder, which must outlive its use.
struct Holder {
    explicit Holder(const Val& v) : slot() {
        if (v.type == 9 || v.type == 11)
            slot.theString = const_cast<char*>(v.text.c_str());
        else
            slot.i64 = v.number;
        container = {v.type, v.empty ? 0u : 1u, v.empty ? nullptr : &slot};
    }
    OrlMoAttributeValue_3 slot;
    OrlMoAttributeValueContainer_3 container;
};

enum Note { kNoNote, kBandwidth, kCarrier, kChannelCheck, kRelationDeletion, kBand46 };

// One change: 's' set (dn, one attribute), 'c' create (parent,Class and its attributes), 'd'
// delete; its answer, the lines of the rule classes above trace, and the note it must leave.
struct Row {
    const char* name;
    char op;
    std::string dn;
    std::vector<std::pair<std::string, Val>> attrs;
    int rc;
    std::vector<std::string> lines;
    Note note;
};

size_t noted(Note note, unsigned long tx) {
    const VeskLTEOI& l = *VeskLTEOI::instance();
    auto count = [tx](const VeskLTEOI::TxList& list) {
        return std::count(list.begin(), list.end(), tx);
    };
    switch (note) {
        case kBandwidth:
            return count(l.bandwidthCheckTxs());
        case kCarrier:
            return count(l.carrierAggregationCheckTxs());
        case kChannelCheck:
            return count(l.candidateChannelCheckTxs());
        case kRelationDeletion:
            return std::count_if(l.freqRelationDeletions().begin(), l.freqRelationDeletions().end(),
                                 [tx](const auto& e) { return e.first == tx; });
        case kBand46:
            return l.band46UpdatePending().count(static_cast<int>(tx));
        case kNoNote:
            break;
    }
    return 0;
}

// A committed network: three frequencies (the third's number unreadable); cells on 17999 and on
// 18000 (unlocked) and one whose channel is unreadable (locked), each with eight relations; a
// locked TDD cell; three MMEs; two external cells, the first one a neighbour of cell 1.
class LteRules : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        putDn("OAM", {number("AI_phase", 4)});
        putDn("StaticParams", {attr("autoLBDisabled", AttributeVariant(false), IPCData::AVT_BOOL)});
        for (const std::string& dn :
             {std::string("ManagedElement=1"), kEnb, kNet, kNet + ",ExternalENodeBFunction=1", kX2})
            putDn(dn, {});
        putDn(kX1, {});
        putDn(kF1, {number("arfcnValueEUtranDl", 17999)});
        putDn(kF2, {number("arfcnValueEUtranDl", 1300)});
        putDn(kNet + ",EUtranFrequency=3", {text("arfcnValueEUtranDl", "3100")});
        putDn(kC1, {number("earfcndl", 17999), number("administrativeState", 1)});
        putDn(kC2, {number("earfcndl", 18000), number("administrativeState", 1)});
        putDn(kC3, {text("earfcndl", "17999"), number("administrativeState", 0)});
        putDn(kTdd, {number("earfcn", 38000), number("administrativeState", 0)});
        for (const std::string& cell : {kC1, kC2, kC3}) {
            putDn(cell + ",EUtranFreqRelation=1", {text("eutranFrequencyRef", kF1)});
            putDn(cell + ",EUtranFreqRelation=2",
                  {text("eutranFrequencyRef", "EUtranFrequency=2")});
            for (int i = 3; i <= 8; ++i)
                putDn(cell + ",EUtranFreqRelation=" + std::to_string(i), {});
        }
        putDn(kNeighbour, {text("neighborCellRef", kX1)});
        putDn(kMme + "1", {text("ipAddress1", "10.0.0.1"), text("ipAddress2", "10.0.0.2"),
                           number("administrativeState", 1)});
        putDn(kMme + "2", {text("ipAddress1", "10.0.0.3"), text("ipAddress2", "0.0.0.0"),
                           number("administrativeState", 0)});
        putDn(kMme + "3", {text("ipAddress1", "10.0.0.4"), text("ipAddress2", "10.0.0.5"),
                           text("administrativeState", "UNLOCKED")});
    }

    // Hands the row's change to the validation component under a handle of its own and checks
    // the answer, the rule classes' lines and the note.
    void check(const Row& row, unsigned long tx) {
        SCOPED_TRACE(row.name);
        vesk::log::LogCapture capture;
        std::vector<Holder*> holders;
        std::vector<OrlMoNamedAttributeValueContainer_3> named;
        for (const auto& [name, value] : row.attrs) {
            holders.push_back(new Holder(value));
            named.push_back({const_cast<char*>(name.c_str()), holders.back()->container});
        }
        std::vector<OrlMoNamedAttributeValueContainer_3*> array;
        for (auto& n : named)
            array.push_back(&n);
        array.push_back(nullptr);
        VeskOI& oi = *VeskOI::getVeskOI();
        const size_t comma = row.dn.rfind(',');
        int rc = row.op == 'd' ? oi.deleteMo(tx, row.dn.c_str())
                 : row.op == 's'
                     ? oi.setMoAttribute(tx, row.dn.c_str(), named[0].attributeName,
                                         &holders[0]->container)
                     : oi.createMo(tx, row.dn.substr(0, comma).c_str(),
                                   row.dn.substr(comma + 1).c_str(), "", "9", array.data());
        EXPECT_EQ(rc, row.rc);
        std::vector<std::string> lines;
        for (const vesk::log::LogLine& line : capture.lines())
            if (line.level <= VESK_LOG_INFO && line.text.rfind("VeskLTEOI::", 0) == 0)
                lines.push_back(line.text);
        EXPECT_EQ(lines, row.lines);
        if (row.note != kNoNote) {
            EXPECT_EQ(noted(row.note, tx), 1u);
        }
        for (Holder* h : holders)
            delete h;
    }
    void checkAll(const std::vector<Row>& rows, unsigned long firstTx) {
        for (size_t i = 0; i < rows.size(); ++i)
            check(rows[i], firstTx + i);
    }
};

TEST_F(LteRules, Frequencies) {
    const std::string refused = "VeskLTEOI::validateArfcn arfcnValueEUtranDl validation failed ";
    const std::string f4 = kNet + ",EUtranFrequency";
    checkAll({{"TakenNumber",
               'c',
               f4,
               {{"arfcnValueEUtranDl", num(17999)}},
               -9,
               {refused + "(17999)"},
               kBand46},
              {"FreeNumber", 'c', f4, {{"arfcnValueEUtranDl", num(2000)}}, 0, {}, kBand46},
              {"NoNumber", 'c', f4, {{"userLabel", str("x")}}, 0, {}, kBand46},
              {"NumberAsText", 'c', f4, {{"arfcnValueEUtranDl", str("17999")}}, 0, {}, kBand46},
              {"OwnNumberAgain",
               's',
               kF2,
               {{"arfcnValueEUtranDl", num(1300)}},
               -9,
               {refused + "(1300)"},
               kNoNote},
              {"NewNumber", 's', kF2, {{"arfcnValueEUtranDl", num(2100)}}, 0, {}, kNoNote},
              {"UnreadableCountsAsMinusOne",
               's',
               kF2,
               {{"arfcnValueEUtranDl", num(-1)}},
               -9,
               {refused + "(-1)"},
               kNoNote},
              {"OtherAttribute", 's', kF2, {{"userLabel", str("x")}}, 0, {}, kNoNote}},
             100);
}

TEST_F(LteRules, FrequencyRelations) {
    const std::string limit =
        "VeskLTEOI::validateFreqRelationCreation Maximum number of EUtranFreqRelation exceeding "
        "(8)";
    const std::string r3 = kC1 + ",EUtranFreqRelation=3";
    const std::string setMo = "VeskLTEOI::validateEutranFrequencyRef_setMo ";
    checkAll({{"NinthBelow18000", 'c', kC1 + ",EUtranFreqRelation", {}, -9, {limit}, kBand46},
              {"NinthAt18000",
               'c',
               kC2 + ",EUtranFreqRelation",
               {{"eutranFrequencyRef", dnRef(kF2)}},
               0,
               {},
               kBand46},
              {"NinthUnreadableCell", 'c', kC3 + ",EUtranFreqRelation", {}, 0, {}, kBand46},
              {"SecondToOneFrequency",
               'c',
               kC2 + ",EUtranFreqRelation",
               {{"eutranFrequencyRef", dnRef(kF1)}},
               -9,
               {"VeskLTEOI::validateEutranFrequencyRef validation " + kC2 +
                ",EUtranFreqRelation::eutranFrequencyRef = " + kF1 + " failed"},
               kBand46},
              {"MissingFrequency",
               's',
               r3,
               {{"eutranFrequencyRef", dnRef(kNet + ",EUtranFrequency=9")}},
               -9,
               {setMo + "Referenced eutranFrequency mo not present in DB"},
               kNoNote},
              {"FullDnComparesItsFirstPair",
               's',
               r3,
               {{"eutranFrequencyRef", dnRef(kF1)}},
               0,
               {},
               kNoNote},
              {"ShortFormComparedWhole",
               's',
               r3,
               {{"eutranFrequencyRef", dnRef("EUtranFrequency=2")}},
               -9,
               {setMo + "validation " + kC1 +
                ",EUtranFreqRelation=3::eutranFrequencyRef = EUtranFrequency=2 failed"},
               kNoNote},
              {"NoValue", 's', r3, {{"eutranFrequencyRef", none(11)}}, 0, {}, kNoNote},
              {"DeletionNoted", 'd', r3, {}, 0, {}, kRelationDeletion}},
             200);
}

TEST_F(LteRules, MmeTerminations) {
    const std::string m4 = kEnb + ",TermPointToMme",
                      inUse = "VeskLTEOI::validateMmeIpAdresses validation failed, ";
    const std::string same =
        "VeskLTEOI::validateTermPointToMmeCreation TermPointToMme ipAddresses are the same ";
    checkAll({{"SameAddresses",
               'c',
               m4,
               {{"ipAddress1", str("10.0.0.9")}, {"ipAddress2", str("10.0.0.9")}},
               -9,
               {same + "ip1:10.0.0.9 vs. ip2:10.0.0.9"},
               kNoNote},
              {"NoAddresses", 'c', m4, {}, -9, {same + "ip1: vs. ip2:"}, kNoNote},
              {"BothUnset",
               'c',
               m4,
               {{"ipAddress1", str("0.0.0.0")}, {"ipAddress2", str("0.0.0.0")}},
               0,
               {},
               kNoNote},
              {"FirstUnsetOnly", 'c', m4, {{"ipAddress1", str("0.0.0.0")}}, 0, {}, kNoNote},
              {"FirstInUse",
               'c',
               m4,
               {{"ipAddress1", str("10.0.0.2")}, {"ipAddress2", str("10.0.0.8")}},
               -9,
               {inUse + "ipAddress1(10.0.0.2) already in use"},
               kNoNote},
              {"SecondInUse",
               'c',
               m4,
               {{"ipAddress1", str("10.0.0.8")}, {"ipAddress2", str("10.0.0.3")}},
               -9,
               {inUse + "ipAddress2(10.0.0.3) already in use"},
               kNoNote},
              {"OwnAddressAgain",
               's',
               kMme + "1",
               {{"ipAddress1", str("10.0.0.1")}},
               -9,
               {inUse + "ipAddress1(10.0.0.1) already in use"},
               kNoNote},
              {"NewAddress", 's', kMme + "1", {{"ipAddress2", str("10.0.0.7")}}, 0, {}, kNoNote},
              {"AddressAsNumber", 's', kMme + "1", {{"ipAddress1", num(1)}}, 0, {}, kNoNote},
              {"DeleteUnlocked",
               'd',
               kMme + "1",
               {},
               -9,
               {"VeskLTEOI::validateTermPointToMmeDeletion Deletion of " + kMme +
                "1 blocked due to administrative state"},
               kNoNote},
              {"DeleteLocked", 'd', kMme + "2", {}, 0, {}, kNoNote},
              {"DeleteUnreadableState", 'd', kMme + "3", {}, 0, {}, kNoNote},
              {"DeleteAbsent", 'd', kMme + "9", {}, 0, {}, kNoNote}},
             300);
    // The sixteenth passes, the seventeenth does not.
    for (int i = 4; i <= 15; ++i)
        putDn(kMme + std::to_string(i),
              {text("ipAddress1", "0.0.0.0"), text("ipAddress2", "0.0.0.0")});
    check({"Sixteenth", 'c', m4, {{"ipAddress1", str("10.0.1.1")}}, 0, {}, kNoNote}, 400);
    putDn(kMme + "16", {text("ipAddress1", "0.0.0.0"), text("ipAddress2", "0.0.0.0")});
    check({"Seventeenth",
           'c',
           m4,
           {{"ipAddress1", str("10.0.1.1")}},
           -9,
           {"VeskLTEOI::validateTermPointToMmeCreation Number of MMEs 16, rejecting creation of "
            "new one"},
           kNoNote},
          401);
}

TEST_F(LteRules, CellRelations) {
    const std::string utran = kEnb + ",UtraNetwork=1,UtranFrequency=1,ExternalUtranCellFDD=1";
    const std::string rel = kC1 + ",EUtranFreqRelation=1,EUtranCellRelation";
    checkAll(
        {{"UtranCellAsNeighbour",
          's',
          kNeighbour,
          {{"neighborCellRef", dnRef("X=1,UtranCell=1")}},
          -9,
          {},
          kNoNote},
         {"ExternalCell", 's', kNeighbour, {{"neighborCellRef", dnRef(kX2)}}, 0, {}, kNoNote},
         {"OwnCellMissingFromDb",
          's',
          kNeighbour,
          {{"neighborCellRef", dnRef(kEnb + ",EUtranCellTDD=7")}},
          0,
          {},
          kNoNote},
         {"NumberAsReference", 's', kNeighbour, {{"neighborCellRef", num(5)}}, -9, {}, kNoNote},
         {"NoValue", 's', kNeighbour, {{"neighborCellRef", none(11)}}, -9, {}, kNoNote},
         {"OtherAttribute", 's', kNeighbour, {{"isHoAllowed", num(0)}}, 0, {}, kNoNote},
         {"UtranRelation",
          'c',
          kC1 + ",UtranFreqRelation=1,UtranCellRelation",
          {{"externalUtranCellRef", dnRef(utran)}},
          0,
          {},
          kNoNote},
         {"CdmaRelationToUtran",
          'c',
          kC1 + ",Cdma2000FreqBandRelation=1,Cdma2000CellRelation",
          {{"externalCdma2000CellRef", dnRef(utran)}},
          -9,
          {},
          kNoNote},
         {"NoReference", 'c', rel, {{"isHoAllowed", num(1)}}, 0, {}, kNoNote},
         {"FirstReferenceOnly",
          'c',
          rel,
          {{"neighborCellRef", dnRef(utran)}, {"neighborCellRef", dnRef(kX2)}},
          -9,
          {},
          kNoNote}},
        500);
}

TEST_F(LteRules, CellsAndTheirFunctions) {
    const std::string restricted =
        "::isDlOnly is handled as restricted attribute, changing not allowed";
    const std::string qci = kEnb + ",QciTable=default,QciProfilePredefined=qci1";
    const std::string raised = "VeskLTEOI::updateLoadBalancingFlag updating flag to TRUE";
    checkAll(
        {{"RestrictedOnCommittedCell",
          's',
          kC1,
          {{"isDlOnly", num(1)}},
          -9,
          {"VeskLTEOI::validateCellSetAttribute " + kC1 + restricted},
          kNoNote},
         {"RestrictedOnTddCell",
          's',
          kTdd,
          {{"isDlOnly", num(1)}},
          -9,
          {"VeskLTEOI::validateCellSetAttribute " + kTdd + restricted},
          kNoNote},
         {"RestrictedOnNewCell",
          's',
          kEnb + ",EUtranCellFDD=7",
          {{"numOfRxAntennas", num(4)}},
          0,
          {},
          kNoNote},
         {"Bandwidth", 's', kC1, {{"dlChannelBandwidth", num(5000)}}, 0, {}, kBandwidth},
         {"Capacity",
          's',
          kC1,
          {{"cellSubscriptionCapacity", num(500)}},
          0,
          {"VeskLTEOI::validateCellSetAttribute " + kC1 +
               "::cellSubscriptionCapacity is updated by user, raising flag",
           raised},
          kNoNote},
         {"CarrierAggregation",
          's',
          kEnb + ",CarrierAggregationFunction=1",
          {{"sCellActDeactDataThresHyst", num(20)}},
          0,
          {},
          kCarrier},
         {"CandidateChannelsIntegrated",
          's',
          kEnb + ",WiFiChannelSelection=1",
          {{"candidateChannels", none(14)}},
          0,
          {},
          kChannelCheck},
         {"QciQuanta",
          's',
          qci,
          {{"qciSubscriptionQuanta", num(3)}},
          0,
          {"VeskLTEOI::validateQciProfilePredefinedSetAttribute " + qci +
               "::qciSubscriptionQuanta is updated by user, raising flag",
           raised},
          kNoNote},
         {"ExternalCellOfANeighbour",
          's',
          kX1,
          {{"eutranFrequencyRef", dnRef(kF2)}},
          -9,
          {"VeskLTEOI::validateEutranFrequencyRef changing " + kX1 +
           "::eutranFrequencyRef failed due to " + kNeighbour + " in pointing"},
          kNoNote},
         {"ExternalCellOfNone", 's', kX2, {{"eutranFrequencyRef", dnRef(kF2)}}, 0, {}, kNoNote}},
        600);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "1");
    // Before integration the channels are only synchronised at commit.
    ASSERT_NE(IDatabase::setAttribute("OAM", 1, "AI_phase", AttributeVariant(3), true,
                                      IPCData::AVT_INT32, false, 0),
              0);
    VeskLTEOI::instance()->validateWiFiChannelSelectionSetAttribute(650, "", "candidateChannels",
                                                                    nullptr);
    const VeskLTEOI::TxList& sync = VeskLTEOI::instance()->candidateChannelSyncTxs();
    EXPECT_EQ(std::count(sync.begin(), sync.end(), 650ul), 1);
    // A flag of the wrong kind is replaced; without the record nothing is written.
    ASSERT_NE(IDatabase::setAttribute("StaticParams", 1, "autoLBDisabled", AttributeVariant(7),
                                      true, IPCData::AVT_INT32, false, 0),
              0);
    VeskLTEOI::instance()->updateLoadBalancingFlag(false, 0);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "0");
    ASSERT_NE(IDatabase::deleteObj("StaticParams", 1, 0), 0);
    VeskLTEOI::instance()->updateLoadBalancingFlag(true, 0);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "<no object>");
}

// The deletion checks of the commit stage, in a database transaction that deleted the MOs.
TEST_F(LteRules, DeletionChecksAtCommit) {
    VeskLTEOI& lte = *VeskLTEOI::instance();
    const int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(h, 0);
    for (const std::string& dn : {kC1 + ",EUtranFreqRelation=1", kC3 + ",EUtranFreqRelation=1"})
        ASSERT_NE(IDatabase::deleteObj(dn, 1, h), 0);
    vesk::log::LogCapture capture;
    // An unlocked cell keeps its relation to its own frequency; a locked one does not.
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC1 + ",EUtranFreqRelation=1"), -9);
    EXPECT_EQ(capture.count("VeskLTEOI::checkEUtranFreqRelationDeletion deletion of " + kC1 +
                                ",EUtranFreqRelation=1 is blocked",
                            VESK_LOG_INFO),
              1u);
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC3 + ",EUtranFreqRelation=1"), 0);
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC1 + ",EUtranFreqRelation=2"), 0);
    // A frequency an unlocked cell is on stays, unless the transaction already removed it.
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF1), -9);
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF2), 0);
    ASSERT_NE(IDatabase::deleteObj(kF1, 1, h), 0);
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF1), 0);
    // The last FDD cell lowers the flag even while a TDD cell remains.
    ASSERT_NE(IDatabase::setAttribute("StaticParams", 1, "autoLBDisabled", AttributeVariant(true),
                                      true, IPCData::AVT_BOOL, false, 0),
              0);
    lte.checkEUtranCellTDDDeletion(h);
    EXPECT_EQ(capture.countContaining("lowering the flag"), 0u);
    for (const std::string& cell : {kC1, kC2, kC3})
        ASSERT_NE(IDatabase::deleteObj(cell, 1, h), 0);
    lte.checkEUtranCellFDDDeletion(h);
    EXPECT_EQ(
        capture.count("VeskLTEOI::checkEUtranCellFDDDeletion cells deleted, lowering the flag",
                      VESK_LOG_INFO),
        1u);
    std::unique_ptr<DBObject> params(IDatabase::getObject("StaticParams", 1, h));
    ASSERT_TRUE(params);
    EXPECT_EQ(params->getAttribute("autoLBDisabled")->ToStr(), "0");
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "1");
    IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false);
}

// Abort drops the first note of each plain list and every deletion of the handle.
TEST_F(LteRules, AbortForgetsTheNotesOfItsTransaction) {
    VeskLTEOI& lte = *VeskLTEOI::instance();
    const unsigned long tx = 700;
    lte.validateCellSetAttribute(tx, kC1.c_str(), "dlChannelBandwidth", nullptr);
    lte.validateCellSetAttribute(tx, kC1.c_str(), "ulChannelBandwidth", nullptr);
    lte.validateEUtranFreqRelationDeletion(tx, (kC1 + ",EUtranFreqRelation=3").c_str());
    lte.validateEUtranFreqRelationDeletion(tx, (kC1 + ",EUtranFreqRelation=4").c_str());
    lte.validateEUtranCellTDDDeletion(tx, kTdd.c_str());
    lte.validateEUtranFrequencyCreation(tx, kNet.c_str(), "EUtranFrequency", nullptr);
    lte.abort(tx);
    EXPECT_EQ(noted(kBandwidth, tx), 1u);
    EXPECT_EQ(noted(kRelationDeletion, tx), 0u);
    EXPECT_EQ(std::count(lte.tddCellDeletionTxs().begin(), lte.tddCellDeletionTxs().end(), tx), 0);
    EXPECT_EQ(noted(kBand46, tx), 1u);
}

}  // namespace

// The LTE rules, one table per rule family, each change handed to the validation component as the
// front hands it over, against a committed network in a station database of the test's own. The
// handles are not open transactions, so the rules read committed data. The refusals that the
// end-to-end sessions show with their log lines are not repeated here; these rows are the edges.
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
using vesk::dbtest::number;
using vesk::dbtest::putDn;
using vesk::dbtest::text;

const std::string kRulesEnb = "ManagedElement=1,ENodeBFunction=1",
                  kRulesNet = kRulesEnb + ",EUtraNetwork=1";
const std::string kF1 = kRulesNet + ",EUtranFrequency=1", kF2 = kRulesNet + ",EUtranFrequency=2";
const std::string kC1 = kRulesEnb + ",EUtranCellFDD=1", kC2 = kRulesEnb + ",EUtranCellFDD=2";
const std::string kC3 = kRulesEnb + ",EUtranCellFDD=3", kRulesTdd = kRulesEnb + ",EUtranCellTDD=1";
const std::string kX1 = kRulesNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=1";
const std::string kX2 = kRulesNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=2";
const std::string kRel = kC1 + ",EUtranFreqRelation=1,EUtranCellRelation=1";
const std::string kMme = kRulesEnb + ",TermPointToMme", kLte = "VeskLTEOI::";

// One host value of one slot (or none): a number, or a text of type 9 or 11.
struct Val {
    int type;
    long long number;
    std::string text;
    bool empty = false;
    mutable OrlMoAttributeValue_3 slot{};
    // The host's container of the value; it points into this Val.
    OrlMoAttributeValueContainer_3 container() const {
        if (type == 9 || type == 11)
            slot.theString = const_cast<char*>(text.c_str());
        else
            slot.i64 = number;
        return {type, empty ? 0u : 1u, empty ? nullptr : &slot};
    }
};
const auto num = [](long long n) { return Val{3, n, ""}; };
const auto str = [](const std::string& s) { return Val{9, 0, s}; };
const auto dnRef = [](const std::string& s) { return Val{11, 0, s}; };
const auto none = [](int type) { return Val{type, 0, "", true}; };

// A list of notes of the rules, by its reader.
typedef const VeskLTEOI::TxList& (VeskLTEOI::*Notes)() const;

size_t noted(Notes notes, unsigned long tx) {
    const VeskLTEOI::TxList& list = (VeskLTEOI::instance()->*notes)();
    return std::count(list.begin(), list.end(), tx);
}
bool marked(unsigned long tx) {
    return VeskLTEOI::instance()->band46UpdatePending().count(static_cast<int>(tx)) == 1;
}

// One change ('s' set, 'c' create of "parent,Class", 'd' delete), its answer, a rule line it must
// write once ("" unchecked) and the list of notes it must join.
struct RuleRow {
    const char* name;
    char op;
    std::string dn;
    std::vector<std::pair<std::string, Val>> attrs;
    int rc;
    std::string line = "";
    Notes notes = nullptr;
};

// A committed network: three frequencies (17999, 1300, and one whose number is a text); cells
// on 17999 and 18000 (unlocked) and one with a text channel (locked), each with eight relations,
// the first to frequency 1 by dn, the second to "EUtranFrequency=2"; a locked TDD cell; three
// MMEs (the third's state a text); two external cells, the first a neighbour of cell 1.
class LteRules : public vesk::dbtest::DatabaseTest {
  protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        putDn("OAM", {number("AI_phase", 4)});
        putDn("StaticParams", {attr("autoLBDisabled", AttributeVariant(false), IPCData::AVT_BOOL)});
        for (const std::string& dn : {std::string("ManagedElement=1"), kRulesEnb, kRulesNet,
                                      kRulesNet + ",ExternalENodeBFunction=1", kX1, kX2})
            putDn(dn, {});
        putDn(kF1, {number("arfcnValueEUtranDl", 17999)});
        putDn(kF2, {number("arfcnValueEUtranDl", 1300)});
        putDn(kRulesNet + ",EUtranFrequency=3", {text("arfcnValueEUtranDl", "3100")});
        putDn(kC1, {number("earfcndl", 17999), number("administrativeState", 1)});
        putDn(kC2, {number("earfcndl", 18000), number("administrativeState", 1)});
        putDn(kC3, {text("earfcndl", "17999"), number("administrativeState", 0)});
        putDn(kRulesTdd, {number("earfcn", 38000), number("administrativeState", 0)});
        for (const std::string& cell : {kC1, kC2, kC3}) {
            putDn(cell + ",EUtranFreqRelation=1", {text("eutranFrequencyRef", kF1)});
            putDn(cell + ",EUtranFreqRelation=2",
                  {text("eutranFrequencyRef", "EUtranFrequency=2")});
            for (int i = 3; i <= 8; ++i)
                putDn(cell + ",EUtranFreqRelation=" + std::to_string(i), {});
        }
        putDn(kRel, {text("neighborCellRef", kX1)});
        putDn(kMme + "=1", {text("ipAddress1", "10.0.0.1"), text("ipAddress2", "10.0.0.2"),
                            number("administrativeState", 1)});
        putDn(kMme + "=2", {text("ipAddress1", "10.0.0.3"), text("ipAddress2", "0.0.0.0"),
                            number("administrativeState", 0)});
        putDn(kMme + "=3", {text("ipAddress1", "10.0.0.4"), text("ipAddress2", "10.0.0.5"),
                            text("administrativeState", "UNLOCKED")});
    }

    // Hands the row's change to the validation component under handle `tx`.
    void check(const RuleRow& row, unsigned long tx) {
        SCOPED_TRACE(row.name);
        vesk::log::LogCapture capture;
        std::vector<OrlMoNamedAttributeValueContainer_3> named;
        for (const auto& [name, value] : row.attrs)
            named.push_back({const_cast<char*>(name.c_str()), value.container()});
        std::vector<OrlMoNamedAttributeValueContainer_3*> array;
        for (auto& n : named)
            array.push_back(&n);
        array.push_back(nullptr);
        VeskOI& oi = *VeskOI::getVeskOI();
        const size_t comma = row.dn.rfind(',');
        const std::string parent = row.dn.substr(0, comma), cls = row.dn.substr(comma + 1);
        int rc = row.op == 'd' ? oi.deleteMo(tx, row.dn.c_str())
                 : row.op == 's'
                     ? oi.setMoAttribute(tx, row.dn.c_str(), named[0].attributeName,
                                         &named[0].attributeValue)
                     : oi.createMo(tx, parent.c_str(), cls.c_str(), "", "9", array.data());
        EXPECT_EQ(rc, row.rc);
        if (!row.line.empty()) {
            EXPECT_EQ(capture.count(kLte + row.line, VESK_LOG_INFO), 1u);
        }
        if (row.notes != nullptr) {
            EXPECT_EQ(noted(row.notes, tx), 1u);
        }
    }
    void setCommitted(const char* dn, const char* name, AttributeVariant value,
                      IPCData::AttributeValueType type) {
        ASSERT_NE(IDatabase::setAttribute(dn, 1, name, value, true, type, false, 0), 0);
    }
    void checkAll(const std::vector<RuleRow>& rows, unsigned long firstTx) {
        for (size_t i = 0; i < rows.size(); ++i)
            check(rows[i], firstTx + i);
    }
};

TEST_F(LteRules, Frequencies) {
    const std::string f = kRulesNet + ",EUtranFrequency", n = "arfcnValueEUtranDl";
    const std::string refused = "validateArfcn arfcnValueEUtranDl validation failed ";
    checkAll(
        {
            {"TakenNumber", 'c', f, {{n, num(17999)}}, -9, refused + "(17999)"},
            {"NumberAsText", 'c', f, {{n, str("2000")}}, 0, ""},
            {"NoNumber", 'c', f, {{"userLabel", str("x")}}, 0, ""},
            {"OwnNumberAgain", 's', kF2, {{n, num(1300)}}, -9, refused + "(1300)"},
            {"UnreadableCountsAsMinusOne", 's', kF2, {{n, num(-1)}}, -9, refused + "(-1)"},
        },
        100);
    EXPECT_TRUE(marked(100) && marked(101) && marked(102));
}

TEST_F(LteRules, FrequencyRelations) {
    const std::string r = ",EUtranFreqRelation", r3 = kC1 + r + "=3", ref = "eutranFrequencyRef";
    const std::string limit =
        "validateFreqRelationCreation Maximum number of EUtranFreqRelation exceeding (8)";
    const std::string shortForm = "validateEutranFrequencyRef_setMo validation " + r3 +
                                  "::eutranFrequencyRef = EUtranFrequency=2 failed";
    checkAll(
        {{"NinthBelow18000", 'c', kC1 + r, {}, -9, limit},
         {"NinthAt18000", 'c', kC2 + r, {{ref, dnRef(kF2)}}, 0, ""},
         {"NinthUnreadableCell", 'c', kC3 + r, {}, 0, ""},
         {"FullDnComparesItsFirstPair", 's', r3, {{ref, dnRef(kF1)}}, 0},
         {"ShortFormComparedWhole", 's', r3, {{ref, dnRef("EUtranFrequency=2")}}, -9, shortForm},
         {"NoValue", 's', r3, {{ref, none(11)}}, 0},
         {"DeletionNoted", 'd', r3, {}, 0}},
        200);
    // Each creation marks its transaction for the band 46 update, refused or not.
    EXPECT_TRUE(marked(200) && marked(201) && marked(202));
    EXPECT_EQ(VeskLTEOI::instance()->freqRelationDeletions().back().first, 206u);
}

TEST_F(LteRules, MmeTerminations) {
    const std::string a1 = "ipAddress1", a2 = "ipAddress2", m1 = kMme + "=1";
    const std::string same =
        "validateTermPointToMmeCreation TermPointToMme ipAddresses are the "
        "same ip1: vs. ip2:";
    const std::string used = "validateMmeIpAdresses validation failed, ";
    const std::string used1 = used + "ipAddress1(10.0.0.1) already in use";
    const Val free = str("10.0.0.8"), unset = str("0.0.0.0");
    checkAll({{"SameAddresses", 'c', kMme, {{a1, str("10.0.0.9")}, {a2, str("10.0.0.9")}}, -9},
              {"NoAddresses", 'c', kMme, {}, -9, same},
              {"BothUnset", 'c', kMme, {{a1, unset}, {a2, unset}}, 0},
              {"FirstUnsetOnly", 'c', kMme, {{a1, unset}}, 0},
              {"OwnAddressAgain", 's', m1, {{a1, str("10.0.0.1")}}, -9, used1},
              {"AddressAsNumber", 's', m1, {{a1, num(1)}}, 0},
              {"DeleteLocked", 'd', kMme + "=2", {}, 0},
              {"DeleteUnreadableState", 'd', kMme + "=3", {}, 0},
              {"DeleteAbsent", 'd', kMme + "=9", {}, 0}},
             300);
    // Up to the sixteenth each passes, the seventeenth does not.
    const std::string full =
        "validateTermPointToMmeCreation Number of MMEs 16, rejecting creation of new one";
    for (int i = 4; i <= 17; ++i) {
        check({"Count", 'c', kMme, {{a1, str("10.0.1.1")}}, i <= 16 ? 0 : -9, i <= 16 ? "" : full},
              400 + i);
        putDn(kMme + "=" + std::to_string(i), {text(a1, "0.0.0.0"), text(a2, "0.0.0.0")});
    }
}

TEST_F(LteRules, CellRelations) {
    const std::string utran = kRulesEnb + ",UtraNetwork=1,UtranFrequency=1,ExternalUtranCellFDD=1";
    const std::string n = "neighborCellRef",
                      utranRel = kC1 + ",UtranFreqRelation=1,UtranCellRelation";
    const std::string cdmaRel = kC1 + ",Cdma2000FreqBandRelation=1,Cdma2000CellRelation";
    const std::string newRel = kC1 + ",EUtranFreqRelation=1,EUtranCellRelation";
    vesk::log::LogCapture capture;
    checkAll(
        {{"UtranCellAsNeighbour", 's', kRel, {{n, dnRef("X=1,UtranCell=1")}}, -9},
         {"ExternalCell", 's', kRel, {{n, dnRef(kX2)}}, 0},
         {"CellNotInDatabase", 's', kRel, {{n, dnRef(kRulesEnb + ",EUtranCellTDD=7")}}, 0},
         {"NumberAsReference", 's', kRel, {{n, num(5)}}, -9},
         {"NoValue", 's', kRel, {{n, none(11)}}, -9},
         {"OtherAttribute", 's', kRel, {{"isHoAllowed", num(0)}}, 0},
         {"UtranRelation", 'c', utranRel, {{"externalUtranCellRef", dnRef(utran)}}, 0},
         {"CdmaRelationToUtran", 'c', cdmaRel, {{"externalCdma2000CellRef", dnRef(utran)}}, -9},
         {"NoReference", 'c', newRel, {{"isHoAllowed", num(1)}}, 0},
         {"FirstReferenceOnly", 'c', newRel, {{n, dnRef(utran)}, {n, dnRef(kX2)}}, -9}},
        500);
    // Only the trace tells why a class is refused.
    EXPECT_EQ(capture.countContaining(kLte, VESK_LOG_INFO), 0u);
}

TEST_F(LteRules, CellsAndTheirFunctions) {
    const std::string qci = kRulesEnb + ",QciTable=default,QciProfilePredefined=qci1";
    const std::string ca = kRulesEnb + ",CarrierAggregationFunction=1",
                      wifi = kRulesEnb + ",WiFiChannelSelection=1";
    const std::string restricted =
        "validateCellSetAttribute " + kRulesTdd +
        "::isDlOnly is handled as restricted attribute, changing not allowed";
    const std::string raised = "updateLoadBalancingFlag updating flag to TRUE";
    checkAll({{"RestrictedOnTddCell", 's', kRulesTdd, {{"isDlOnly", num(1)}}, -9, restricted},
              {"RestrictedOnNewCell",
               's',
               kRulesEnb + ",EUtranCellFDD=7",
               {{"numOfRxAntennas", num(4)}},
               0},
              {"Bandwidth",
               's',
               kC1,
               {{"dlChannelBandwidth", num(5000)}},
               0,
               "",
               &VeskLTEOI::bandwidthCheckTxs},
              {"CarrierAggregation",
               's',
               ca,
               {{"sCellActDeactDataThresHyst", num(9)}},
               0,
               "",
               &VeskLTEOI::carrierAggregationCheckTxs},
              {"CandidateChannels",
               's',
               wifi,
               {{"candidateChannels", none(14)}},
               0,
               "",
               &VeskLTEOI::candidateChannelCheckTxs},
              {"QciQuanta", 's', qci, {{"qciSubscriptionQuanta", num(3)}}, 0, raised},
              {"ExternalCellOfNone", 's', kX2, {{"eutranFrequencyRef", dnRef(kF2)}}, 0}},
             600);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "1");
    // Before integration the channels are only synchronised at commit.
    setCommitted("OAM", "AI_phase", AttributeVariant(3), IPCData::AVT_INT32);
    VeskLTEOI& lte = *VeskLTEOI::instance();
    lte.validateWiFiChannelSelectionSetAttribute(650, "", "candidateChannels", nullptr);
    const VeskLTEOI::TxList& sync = lte.candidateChannelSyncTxs();
    EXPECT_EQ(std::count(sync.begin(), sync.end(), 650ul), 1);
    // A flag of the wrong kind is replaced; without the record nothing is written.
    setCommitted("StaticParams", "autoLBDisabled", AttributeVariant(7), IPCData::AVT_INT32);
    lte.updateLoadBalancingFlag(false, 0);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "0");
    ASSERT_NE(IDatabase::deleteObj("StaticParams", 1, 0), 0);
    lte.updateLoadBalancingFlag(true, 0);
    EXPECT_EQ(committedString("StaticParams", "autoLBDisabled"), "<no object>");
}

// The deletion checks of the commit stage, in a database transaction that deleted the MOs.
TEST_F(LteRules, DeletionChecksAtCommit) {
    VeskLTEOI& lte = *VeskLTEOI::instance();
    const int h = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(h, 0);
    const std::string r1 = ",EUtranFreqRelation=1";
    ASSERT_NE(IDatabase::deleteObj(kC1 + r1, 1, h), 0);
    ASSERT_NE(IDatabase::deleteObj(kC3 + r1, 1, h), 0);
    vesk::log::LogCapture capture;
    // An unlocked cell keeps its relation to its own frequency; a locked one does not.
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC1 + r1), -9);
    EXPECT_EQ(capture.count(kLte + "checkEUtranFreqRelationDeletion deletion of " + kC1 + r1 +
                            " is blocked"),
              1u);
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC3 + r1), 0);
    EXPECT_EQ(lte.checkEUtranFreqRelationDeletion(h, kC1 + ",EUtranFreqRelation=2"), 0);
    // A frequency an unlocked cell is on stays, unless the transaction already removed it.
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF1), -9);
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF2), 0);
    ASSERT_NE(IDatabase::deleteObj(kF1, 1, h), 0);
    EXPECT_EQ(lte.checkEUtranFrequencyDeletion(h, kF1), 0);
    // The last FDD cell lowers the flag in the transaction, even while a TDD cell remains.
    lte.checkEUtranCellTDDDeletion(h);
    EXPECT_EQ(capture.countContaining("lowering the flag"), 0u);
    for (const std::string& cell : {kC1, kC2, kC3})
        ASSERT_NE(IDatabase::deleteObj(cell, 1, h), 0);
    lte.checkEUtranCellFDDDeletion(h);
    EXPECT_EQ(capture.count(kLte + "checkEUtranCellFDDDeletion cells deleted, lowering the flag"),
              1u);
    std::unique_ptr<DBObject> params(IDatabase::getObject("StaticParams", 1, h));
    ASSERT_TRUE(params && params->getAttribute("autoLBDisabled"));
    EXPECT_EQ(params->getAttribute("autoLBDisabled")->ToStr(), "0");
    EXPECT_EQ(IDatabase::transaction(IPCData::OP_TX_ROLLBACK, h, false), 1);
}

// Abort drops the first note of each plain list and every deletion of the handle.
TEST_F(LteRules, AbortForgetsTheNotesOfItsTransaction) {
    VeskLTEOI& lte = *VeskLTEOI::instance();
    const unsigned long tx = 700;
    lte.validateCellSetAttribute(tx, kC1.c_str(), "dlChannelBandwidth", nullptr);
    lte.validateCellSetAttribute(tx, kC1.c_str(), "ulChannelBandwidth", nullptr);
    lte.validateEUtranFreqRelationDeletion(tx, (kC1 + ",EUtranFreqRelation=3").c_str());
    lte.validateEUtranFreqRelationDeletion(tx, (kC1 + ",EUtranFreqRelation=4").c_str());
    lte.validateEUtranFrequencyCreation(tx, kRulesNet.c_str(), "EUtranFrequency", nullptr);
    lte.abort(tx);
    EXPECT_EQ(noted(&VeskLTEOI::bandwidthCheckTxs, tx), 1u);
    EXPECT_TRUE(lte.freqRelationDeletions().empty() ||
                lte.freqRelationDeletions().back().first != tx);
    EXPECT_TRUE(marked(tx));
}

}  // namespace

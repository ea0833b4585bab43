// The validation of the real agent through vesk-host on the demo station: one command-line
// session per rule family with a change each rule refuses and the nearest one it accepts,
// committed and read back; the commit stage with its invalid commits and black list; and input
// the rules cannot read, which takes each rule's start value without harm.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace {

using namespace vesk::e2e;

const std::string kNet = kEnb + ",EUtraNetwork=1";
const std::string kF = kNet + ",EUtranFrequency=";
const std::string kX = kNet + ",ExternalENodeBFunction=1,ExternalEUtranCellFDD=";
const std::string kMme = kEnb + ",TermPointToMme=";
const std::string kCellRel = kCell + ",EUtranFreqRelation=1,EUtranCellRelation=1";
const std::string kUtranCell = kEnb + ",UtraNetwork=1,UtranFrequency=1,ExternalUtranCellFDD=1";
const std::string kPm = "ManagedElement=1,SystemFunctions=1,Pm=1";
const std::string kGroup = kPm + ",PmGroup=EUtranCellFDD";
const std::string kLte = "VeskLTEOI::";

// A creation of a measurement reader under job `job` whose specification names `type`.
std::string reader(const std::string& job, const std::string& type) {
    return "create " + kPm + ",PmJob=" + job + " MeasurementReader=1 " +
           "\"measurementSpecification={measurementTypeRef=\\\"" + kGroup +
           ",MeasurementType=" + type + "\\\"}\"";
}
const std::string kBadReader = "gone", kGoodReader = "pmRrcConnEstabSucc";

// Six more frequencies and relations of cell 1, so that it holds eight.
std::string eightRelations() {
    std::string text = "begin";
    for (int i = 3; i <= 8; ++i) {
        const std::string id = std::to_string(10 + i);
        text += "; create " + kNet + " EUtranFrequency=" + id +
                " arfcnValueEUtranDl=" + std::to_string(200 * i) + "; create " + kCell +
                " EUtranFreqRelation=" + std::to_string(i) + " eutranFrequencyRef=" + kF + id;
    }
    return text + "; commit";
}

// One session: its commands, one letter per answer (O OrlOk, V OrlValidationFailed), the log
// lines it must write once each, values read back (answer, attribute, value), the load balancing
// flag of the station afterwards ("" unchecked) and a change made to the station before it runs.
struct Session {
    const char* name;
    std::string commands;
    std::string codes;
    std::vector<std::string> lines;
    std::vector<std::tuple<size_t, std::string, Json>> reads;
    std::string flag = "";
    std::function<void()> before = nullptr;
};

void PrintTo(const Session& s, std::ostream* out) {
    *out << s.name;
}

// The station's committed attribute as text, read with the station closed to the host.
std::string stored(const std::string& dn, const std::string& name) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    Attribute* a = object ? object->getAttribute(name) : nullptr;
    return a ? a->ToStr() : "<none>";
}

class ValidationSessions : public ProgramFixture, public ::testing::WithParamInterface<Session> {
  protected:
    void SetUp() override {
        ProgramFixture::SetUp();
        Outcome loaded =
            program("--state " + _dir + "/state --load " + kData + "/station/demo-station.xml");
        ASSERT_EQ(loaded.status, 0) << loaded.err;
    }
    // Runs `work` on the station's database while the host is not running.
    void onStation(const std::function<void()>& work) {
        std::string error;
        ASSERT_TRUE(vesk::db::open(_dir + "/state", &error)) << error;
        work();
        vesk::db::close();
    }
};

TEST_P(ValidationSessions, RefusesWhatTheRuleForbidsAndCommitsTheNearestChange) {
    const Session& s = GetParam();
    if (s.before) {
        ASSERT_NO_FATAL_FAILURE(onStation(s.before));
    }
    Outcome o = agent(s.commands, "--json --log-file " + _dir + "/log");
    ASSERT_EQ(o.status, 0) << o.err;
    const std::vector<Json> a = o.answers();
    ASSERT_EQ(a.size(), s.codes.size()) << o.out << o.err;
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i]["code"], s.codes[i] == 'O' ? "OrlOk" : "OrlValidationFailed")
            << i << ": " << a[i].dump();
    }
    for (const std::string& line : s.lines) {
        size_t at = o.log.find("] " + line + "\n");
        EXPECT_NE(at, std::string::npos) << line << "\n" << o.log;
        EXPECT_EQ(o.log.find("] " + line + "\n", at + 1), std::string::npos) << line;
    }
    for (const auto& [index, attribute, value] : s.reads) {
        EXPECT_EQ(attribute.empty() ? a[index]["result"] : a[index]["result"][attribute], value)
            << index << ": " << a[index].dump();
    }
    if (!s.flag.empty()) {
        onStation([&] { EXPECT_EQ(stored("StaticParams", "autoLBDisabled"), s.flag); });
    }
}

INSTANTIATE_TEST_SUITE_P(
    Families, ValidationSessions,
    ::testing::Values(
        Session{"Frequencies",
                "set " + kF + "3 arfcnValueEUtranDl 6300; set " + kF +
                    "3 arfcnValueEUtranDl 3150; get " + kF + "3 arfcnValueEUtranDl; create " +
                    kNet + " EUtranFrequency=4 arfcnValueEUtranDl=1300; create " + kNet +
                    " EUtranFrequency=4 arfcnValueEUtranDl=1850; get " + kF +
                    "4 arfcnValueEUtranDl",
                "VOOVOO",
                {kLte + "validateArfcn arfcnValueEUtranDl validation failed (6300)",
                 kLte + "validateArfcn arfcnValueEUtranDl validation failed (1300)"},
                {{2, "arfcnValueEUtranDl", 3150}, {5, "arfcnValueEUtranDl", 1850}}},
        Session{"FrequencyRelations",
                "create " + kCell + " EUtranFreqRelation=3 eutranFrequencyRef=" + kF +
                    "1; create " + kCell + " EUtranFreqRelation=3 eutranFrequencyRef=" + kF +
                    "3; set " + kCell + ",EUtranFreqRelation=3 eutranFrequencyRef " + kF +
                    "9; get " + kCell + ",EUtranFreqRelation=3 eutranFrequencyRef",
                "VOVO",
                {kLte + "validateEutranFrequencyRef validation " + kCell +
                     ",EUtranFreqRelation::eutranFrequencyRef = " + kF + "1 failed",
                 kLte + "validateEutranFrequencyRef_setMo Referenced eutranFrequency mo not "
                        "present in DB"},
                {{3, "eutranFrequencyRef", kF + "3"}}},
        Session{"FrequencyRelationLimit",
                eightRelations() + "; create " + kCell +
                    " EUtranFreqRelation=9 eutranFrequencyRef=" + kF + "3; delete " + kCell +
                    ",EUtranFreqRelation=8; create " + kCell +
                    " EUtranFreqRelation=9 eutranFrequencyRef=" + kF + "3; count " + kCell +
                    " EUtranFreqRelation",
                std::string(14, 'O') + "VOOO",
                {kLte +
                 "validateFreqRelationCreation Maximum number of EUtranFreqRelation exceeding (8)"},
                {{17, "", 8}}},
        Session{
            "MmeTerminations",
            "create " + kEnb +
                " TermPointToMme=4 ipAddress1=10.20.0.2 ipAddress2=10.20.4.2; create " + kEnb +
                " TermPointToMme=4 ipAddress1=10.20.4.1 ipAddress2=10.20.4.1; create " + kEnb +
                " TermPointToMme=4 ipAddress1=10.20.4.1 ipAddress2=10.20.4.2; get " + kMme +
                "4 ipAddress2; set " + kMme + "2 ipAddress2 10.20.2.1; set " + kMme +
                "2 ipAddress2 10.20.1.9; get " + kMme + "2 ipAddress2; delete " + kMme +
                "1; delete " + kMme + "2; exists " + kMme + "2",
            "VVOOVOOVOO",
            {kLte + "validateMmeIpAdresses validation failed, ipAddress1(10.20.0.2) already in use",
             kLte + "validateTermPointToMmeCreation TermPointToMme ipAddresses are the same "
                    "ip1:10.20.4.1 vs. "
                    "ip2:10.20.4.1",
             kLte + "validateMmeIpAdresses validation failed, ipAddress2(10.20.2.1) already in use",
             kLte + "validateTermPointToMmeDeletion Deletion of " + kMme +
                 "1 blocked due to administrative state"},
            {{3, "ipAddress2", "10.20.4.2"}, {6, "ipAddress2", "10.20.1.9"}, {9, "", false}}},
        Session{"CellRelations",
                "set " + kCellRel + " neighborCellRef " + kUtranCell + "; set " + kCellRel +
                    " neighborCellRef " + kX + "3; get " + kCellRel + " neighborCellRef; create " +
                    kCell + ",UtranFreqRelation=1 UtranCellRelation=2 externalUtranCellRef=" +
                    kCell + "; create " + kCell +
                    ",UtranFreqRelation=1 UtranCellRelation=2 externalUtranCellRef=" + kUtranCell +
                    "; set " + kCellRel + " neighborCellRef " + kX + "99",
                "VOOVOV",
                {"VeskDBTransaction::validateReferences(): Reference pointing to missing MO: " +
                 kX + "99. Rejecting commit."},
                {{2, "neighborCellRef", kX + "3"}}},
        Session{"Cells",
                "set " + kCell + " isDlOnly true; begin; create " + kEnb +
                    " EUtranCellFDD=9 cellId=9 earfcndl=6300; set " + kEnb +
                    ",EUtranCellFDD=9 isDlOnly true; commit; get " + kEnb +
                    ",EUtranCellFDD=9 isDlOnly; set " + kCell +
                    " cellSubscriptionCapacity 500; set " + kCell +
                    " dlChannelBandwidth 5000; get " + kCell + " cellSubscriptionCapacity",
                "VOOOOOOOO",
                {kLte + "validateCellSetAttribute " + kCell +
                     "::isDlOnly is handled as restricted attribute, changing not allowed",
                 kLte + "validateCellSetAttribute " + kCell +
                     "::cellSubscriptionCapacity is updated by user, raising flag"},
                {{5, "isDlOnly", true}, {8, "cellSubscriptionCapacity", 500}},
                "1"},
        Session{"CellFunctions",
                "set " + kEnb +
                    ",CarrierAggregationFunction=1 sCellActDeactDataThresHyst 20; set " + kEnb +
                    ",QciTable=default,QciProfilePredefined=qci1 qciSubscriptionQuanta 2; set " +
                    kEnb + ",WiFiChannelSelection=1 candidateChannels channel36=false; get " +
                    kEnb + ",CarrierAggregationFunction=1 sCellActDeactDataThresHyst; get " + kEnb +
                    ",QciTable=default,QciProfilePredefined=qci1 qciSubscriptionQuanta",
                "OOOOO",
                {kLte + "updateLoadBalancingFlag updating flag to TRUE"},
                {{3, "sCellActDeactDataThresHyst", 20}, {4, "qciSubscriptionQuanta", 2}},
                "1"},
        Session{"ExternalCells",
                "set " + kX + "1 eutranFrequencyRef " + kF + "2; set " + kX +
                    "3 eutranFrequencyRef " + kF + "3; get " + kX + "3 eutranFrequencyRef",
                "VOO",
                {kLte + "validateEutranFrequencyRef changing " + kX +
                 "1::eutranFrequencyRef failed due to " + kCell +
                 ",EUtranFreqRelation=1,EUtranCellRelation=2 in pointing"},
                {{2, "eutranFrequencyRef", kF + "3"}}},
        Session{"BlackListedCommitWritesNothing",
                "begin; create " + kPm + " PmJob=A; " + reader("A", kBadReader) +
                    "; commit; exists " + kPm + ",PmJob=A",
                "OOOVO",
                {"VeskPMOI::validateMeasurementSpecification " + kGroup +
                     ",MeasurementType=gone is not present in DB",
                 "VeskOI::checkBlackList 1 is black listed"},
                {{4, "", false}}},
        Session{"InvalidJobLeavesTheCommit",
                "begin; create " + kPm + " PmJob=A; " + reader("A", kBadReader) + "; create " +
                    kPm + " PmJob=B; " + reader("B", kGoodReader) + "; commit; exists " + kPm +
                    ",PmJob=A; ls " + kPm + ",PmJob=B MeasurementReader",
                "OOOOOOOO",
                {},
                {{6, "", false}, {7, "", Json::array({kPm + ",PmJob=B,MeasurementReader=1"})}}},
        Session{"RollbackEmptiesTheLists",
                "begin; create " + kPm + " PmJob=A; " + reader("A", kBadReader) + "; set " + kCell +
                    " dlChannelBandwidth 5000; abort; begin; create " + kPm + " PmJob=A; " +
                    reader("A", kGoodReader) + "; set " + kCell +
                    " dlChannelBandwidth 5000; commit; exists " + kPm + ",PmJob=A",
                "OOOOOOOOOOO",
                {},
                {{10, "", true}}},
        Session{
            "UnreadableAttributesTakeTheStartValue",
            eightRelations() + "; create " + kCell + " EUtranFreqRelation=9 eutranFrequencyRef=" +
                kF + "3; delete " + kMme + "1; exists " + kMme + "1",
            std::string(17, 'O'),
            {},
            {{16, "", false}},
            "",
            [] {
                // The state and the channel as texts: no integer to read.
                IDatabase::setAttribute(kMme + "1", 1, "administrativeState",
                                        AttributeVariant(std::string("UNLOCKED")), true,
                                        IPCData::AVT_STRING, false, 0);
                IDatabase::setAttribute(kCell, 1, "earfcndl", AttributeVariant(std::string("6300")),
                                        true, IPCData::AVT_STRING, false, 0);
            }}),
    [](const ::testing::TestParamInfo<Session>& info) { return info.param.name; });

// Values of a type the rules do not read, given to the agent as a host implementer would.
class ValidationBadInput : public HostFixture {};

TEST_F(ValidationBadInput, ValuesOfAnotherTypeTakeTheRulesStartValue) {
    ASSERT_NO_FATAL_FAILURE(startOnStation(VESK_AGENT_PATH));
    struct Row {
        std::string dn, attribute;
        int type;
        int number;
        OrlReturnT rc;
    };
    const Row rows[] = {
        {kF + "3", "arfcnValueEUtranDl", 9, 0, OrlOk},             // no number: nothing to compare
        {kMme + "2", "ipAddress1", 3, 7, OrlOk},                   // no address: accepted
        {kCellRel, "neighborCellRef", 3, 7, OrlValidationFailed},  // no class: refused
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.attribute);
        OrlTxHandleT tx = begin();
        OrlMoAttributeValue_3 slot{};
        char digits[] = "6300";
        if (row.type == 9)
            slot.theString = digits;
        else
            slot.i32 = row.number;
        OrlMoAttributeValueContainer_3 value{row.type, 1, &slot};
        EXPECT_EQ(_host->callAgent(&OrlOamSpiManagedObject_3::setMoAttribute, tx, row.dn.c_str(),
                                   row.attribute.c_str(), &value),
                  row.rc);
        EXPECT_EQ(_host->abort(tx), OrlOk);
    }
}

}  // namespace

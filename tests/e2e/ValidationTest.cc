// The validation of the real agent through vesk-host on the demo station: one command-line
// session per rule family with a change each rule refuses and the nearest one it accepts,
// committed and read back; the commit stage with its invalid commits and black list; and
// attributes the rules cannot read, which take each rule's start value.
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

const std::string kValidationPm = "ManagedElement=1,SystemFunctions=1,Pm=1";

// Commands and log lines are written with short names: $E the LTE function, $N its network, $F
// a frequency, $X an external cell, $M an MME, $C cell 1, $R a cell relation of cell 1, $P the PM
// function, $G a PM group.
std::string expand(const std::string& text) {
    return vesk::e2e::expand(
        text, {{"$F", kEnb + ",EUtraNetwork=1,EUtranFrequency="},
               {"$X", kEnb + ",EUtraNetwork=1,ExternalENodeBFunction=1,ExternalEUtranCellFDD="},
               {"$R", kCell + ",EUtranFreqRelation=1,EUtranCellRelation="},
               {"$N", kEnb + ",EUtraNetwork=1"},
               {"$M", kEnb + ",TermPointToMme="},
               {"$C", kCell},
               {"$E", kEnb},
               {"$G", kValidationPm + ",PmGroup=EUtranCellFDD"},
               {"$P", kValidationPm}});
}

// A creation of a measurement reader under PM job `job` whose measurementSpecification names
// `type`.
std::string reader(const std::string& job, const std::string& type) {
    return "create $P,PmJob=" + job +
           " MeasurementReader=1 \"measurementSpecification={measurementTypeRef=\\\"$G," +
           "MeasurementType=" + type + "\\\"}\"";
}

// Six more frequencies and relations of cell 1 in one transaction, so that it holds eight.
std::string eightRelations() {
    std::string text = "begin";
    for (int i = 3; i <= 8; ++i) {
        const std::string n = std::to_string(i);
        text += "; create $N EUtranFrequency=1" + n + " arfcnValueEUtranDl=" + n +
                "00; create $C " + "EUtranFreqRelation=" + n + " eutranFrequencyRef=$F1" + n;
    }
    return text + "; commit";
}

// One session: its commands, one letter per answer (O OrlOk, V OrlValidationFailed, H refused by
// the host from the model before the agent is asked: the agent's own limits and classes of
// references are proven by the unit tables), the log
// lines it writes once each, values read back (answer, attribute or "" for the whole result,
// value), the load balancing flag afterwards ("" unchecked) and a change to the station before.
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

class ValidationSessions : public StationProgramFixture,
                           public ::testing::WithParamInterface<Session> {
  protected:
    // Runs `work` on the station's database while no host has it open.
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
    Outcome o;
    const std::vector<Json> a = answers(expand(s.commands), s.codes.size(),
                                        "--log-level info --log-file " + _dir + "/log", &o);
    for (size_t i = 0; i < a.size(); ++i) {
        if (s.codes[i] == 'H') {  // refused by the host from the model, the agent not asked
            EXPECT_EQ(a[i]["ok"], false) << a[i];
            EXPECT_TRUE(a[i]["error"].is_string()) << a[i];
            continue;
        }
        EXPECT_EQ(a[i].value("code", ""), s.codes[i] == 'O' ? "OrlOk" : "OrlValidationFailed")
            << a[i];
    }
    for (const std::string& line : s.lines) {
        const std::string text = "] " + expand(line) + "\n";
        const size_t at = o.log.find(text);
        EXPECT_NE(at, std::string::npos) << text << o.log;
        EXPECT_EQ(o.log.find(text, at + 1), std::string::npos) << text;
    }
    for (const auto& [i, attribute, value] : s.reads) {
        const Json& result = a[i]["result"];
        EXPECT_EQ(attribute.empty() ? result : result[attribute], value) << a[i];
    }
    if (!s.flag.empty()) {
        onStation([&] {
            std::unique_ptr<DBObject> params(IDatabase::getObject("StaticParams", 1, 0));
            ASSERT_TRUE(params && params->getAttribute("autoLBDisabled"));
            EXPECT_EQ(params->getAttribute("autoLBDisabled")->ToStr(), s.flag);
        });
    }
}

const std::string kLte = "VeskLTEOI::";

INSTANTIATE_TEST_SUITE_P(
    Families, ValidationSessions,
    ::testing::Values(
        Session{
            "Frequencies",
            "set $F3 arfcnValueEUtranDl 6300; set $F3 arfcnValueEUtranDl 3150; get $F3 "
            "arfcnValueEUtranDl; create $N EUtranFrequency=4 arfcnValueEUtranDl=1300; create $N "
            "EUtranFrequency=4 arfcnValueEUtranDl=1850; get $F4 arfcnValueEUtranDl",
            "VOOVOO",
            {kLte + "validateArfcn arfcnValueEUtranDl validation failed (6300)",
             kLte + "validateArfcn arfcnValueEUtranDl validation failed (1300)"},
            {{2, "arfcnValueEUtranDl", 3150}, {5, "arfcnValueEUtranDl", 1850}}},
        Session{
            "FrequencyRelations",
            "create $C EUtranFreqRelation=3 eutranFrequencyRef=$F1; create $C EUtranFreqRelation=3 "
            "eutranFrequencyRef=$F3; set $C,EUtranFreqRelation=3 eutranFrequencyRef $F9; get "
            "$C,EUtranFreqRelation=3 eutranFrequencyRef; delete $C,EUtranFreqRelation=3; " +
                eightRelations() +
                "; create $C EUtranFreqRelation=9 eutranFrequencyRef=$F3; delete "
                "$C,EUtranFreqRelation=8; create $C EUtranFreqRelation=9 eutranFrequencyRef=$F3",
            "VOVOO" + std::string(14, 'O') + "HOO",
            {kLte + "validateEutranFrequencyRef validation $C,EUtranFreqRelation::"
                    "eutranFrequencyRef = $F1 failed",
             kLte + "validateEutranFrequencyRef_setMo Referenced eutranFrequency mo not present in "
                    "DB"},
            {{3, "eutranFrequencyRef", expand("$F3")}}},
        Session{
            "MmeTerminations",
            "create $E TermPointToMme=4 ipAddress1=10.20.0.2 ipAddress2=10.20.4.2; create $E "
            "TermPointToMme=4 ipAddress1=10.20.4.1 ipAddress2=10.20.4.1; create $E "
            "TermPointToMme=4 "
            "ipAddress1=10.20.4.1 ipAddress2=10.20.4.2; get $M4 ipAddress2; set $M2 ipAddress2 "
            "10.20.2.1; set $M2 ipAddress2 10.20.1.9; get $M2 ipAddress2; delete $M1; delete $M2; "
            "exists $M2",
            "VVOOVOOVOO",
            {kLte + "validateMmeIpAdresses validation failed, ipAddress1(10.20.0.2) already in use",
             kLte + "validateTermPointToMmeCreation TermPointToMme ipAddresses are the same "
                    "ip1:10.20.4.1 vs. ip2:10.20.4.1",
             kLte + "validateMmeIpAdresses validation failed, ipAddress2(10.20.2.1) already in use",
             kLte + "validateTermPointToMmeDeletion Deletion of $M1 blocked due to administrative "
                    "state"},
            {{3, "ipAddress2", "10.20.4.2"}, {6, "ipAddress2", "10.20.1.9"}, {9, "", false}}},
        // A reference to an MO that does not exist passes the rule and fails the commit.
        Session{
            "CellRelations",
            "set $R1 neighborCellRef $E,UtraNetwork=1,UtranFrequency=1,ExternalUtranCellFDD=1; set "
            "$R1 neighborCellRef $X3; get $R1 neighborCellRef; create $C,UtranFreqRelation=1 "
            "UtranCellRelation=2 externalUtranCellRef=$C; create $C,UtranFreqRelation=1 "
            "UtranCellRelation=2 externalUtranCellRef=$E,UtraNetwork=1,UtranFrequency=1,"
            "ExternalUtranCellFDD=1; set $R1 neighborCellRef $X99",
            "HOOHOV",
            {"VeskDBTransaction::validateReferences(): Reference pointing to missing MO: $X99. "
             "Rejecting commit."},
            {{2, "neighborCellRef", expand("$X3")}}},
        Session{
            "CellsAndTheirFunctions",
            "set $C isDlOnly true; begin; create $E EUtranCellFDD=9 cellId=9 earfcndl=6300; set "
            "$E,EUtranCellFDD=9 isDlOnly true; commit; get $E,EUtranCellFDD=9 isDlOnly; set $C "
            "cellSubscriptionCapacity 500; get $C cellSubscriptionCapacity; set $C "
            "dlChannelBandwidth "
            "5000; set $E,CarrierAggregationFunction=1 sCellActDeactDataThresHyst 20; set "
            "$E,WiFiChannelSelection=1 candidateChannels channel36=false; set "
            "$E,QciTable=default,QciProfilePredefined=qci1 qciSubscriptionQuanta 2",
            "VOOOOOOOOOOO",
            {kLte + "validateCellSetAttribute $C::isDlOnly is handled as restricted attribute, "
                    "changing not allowed",
             kLte + "validateCellSetAttribute $C::cellSubscriptionCapacity is updated by user, "
                    "raising flag"},
            {{5, "isDlOnly", true}, {7, "cellSubscriptionCapacity", 500}},
            "1"},
        Session{"ExternalCells",
                "set $X1 eutranFrequencyRef $F2; set $X3 eutranFrequencyRef $F3; get $X3 "
                "eutranFrequencyRef",
                "VOO",
                {kLte + "validateEutranFrequencyRef changing $X1::eutranFrequencyRef failed due to "
                        "$R2 in pointing"},
                {{2, "eutranFrequencyRef", expand("$F3")}}},
        // Refused at commit with nothing written; after a rollback the same objects commit.
        Session{"BlackListedCommit",
                "begin; create $P PmJob=A; " + reader("A", "gone") +
                    "; commit; exists $P,PmJob=A; begin; "
                    "create $P PmJob=A; " +
                    reader("A", "lost") + "; abort; begin; create $P PmJob=A; " +
                    reader("A", "pmRrcConnEstabSucc") + "; commit; exists $P,PmJob=A",
                "OOOVOOOOOOOOOO",
                {"VeskPMOI::validateMeasurementSpecification $G,MeasurementType=gone is not "
                 "present in DB",
                 "VeskOI::checkBlackList 1 is black listed"},
                {{4, "", false}, {13, "", true}}},
        // A job without a valid reader leaves the transaction, which commits the rest.
        Session{"InvalidJobLeavesTheCommit",
                "begin; create $P PmJob=A; " + reader("A", "gone") + "; create $P PmJob=B; " +
                    reader("B", "pmRrcConnEstabSucc") +
                    "; commit; exists $P,PmJob=A; ls $P,PmJob=B " + "MeasurementReader",
                "OOOOOOOO",
                {},
                {{6, "", false},
                 {7, "", Json::array({kValidationPm + ",PmJob=B,MeasurementReader=1"})}}},
        // A channel and a state that are texts: the ninth relation passes, the MME goes.
        Session{"UnreadableAttributesTakeTheStartValue",
                eightRelations() +
                    "; create $C EUtranFreqRelation=9 eutranFrequencyRef=$F3; delete $M1; "
                    "exists $M1",
                std::string(17, 'O'),
                {},
                {{16, "", false}},
                "",
                [] {
                    const auto text = [](const std::string& dn, const char* name,
                                         const char* value) {
                        IDatabase::setAttribute(expand(dn), 1, name,
                                                AttributeVariant(std::string(value)), true,
                                                IPCData::AVT_STRING, false, 0);
                    };
                    text("$M1", "administrativeState", "UNLOCKED");
                    text("$C", "earfcndl", "6300");
                }}),
    [](const ::testing::TestParamInfo<Session>& info) { return info.param.name; });

}  // namespace

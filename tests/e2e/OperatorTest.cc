// vesk-host as an operator meets it, with the real agent on the demo station: what the model
// forbids refused before the agent is asked, the reasons of refusals, text that is not UTF-8,
// state directories without a station, comments and quotes, and at a terminal Ctrl-C and
// completion. One row per case; each row runs vesk-host as a child process.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "e2e/HostFixture.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace {

using namespace vesk::e2e;

const std::string kOperatorRelation = kCell + ",EUtranFreqRelation=1";
const std::string kOperatorFrequency = kEnb + ",EUtraNetwork=1,EUtranFrequency=1";

using Lines = std::vector<std::string>;

enum Run {
    kText,      // -c INPUT on the demo station, answers as text
    kJson,      // the same with --json; every line must parse
    kTerminal,  // INPUT typed at a pseudo-terminal
    kArgs,      // each line of INPUT is the arguments of one run ($DIR, $STATE, $AGENT, $DATA)
};

struct Case {
    const char* name;
    Run run;
    std::string input;
    Lines expect;  // found in the output, in this order
    Lines absent;
    int status = 0;
    // Changes the folder (the demo station is in DIR/state) before the run.
    void (*prepare)(const std::string& dir) = nullptr;
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

Case row(const char* name, Run run, std::string input, Lines expect, Lines absent = {},
         int status = 0, void (*prepare)(const std::string&) = nullptr) {
    return Case{name, run, input, expect, absent, status, prepare};
}

// `text` as one word of the shell.
std::string quote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

// Writes a user label holding a byte that is not UTF-8 straight into the station's database.
void storeBadLabel(const std::string& dir) {
    std::string error;
    ASSERT_TRUE(vesk::db::open(dir + "/state", &error)) << error;
    EXPECT_NE(IDatabase::setAttribute("ManagedElement=1", 1, "userLabel",
                                      AttributeVariant(std::string("a\xff"
                                                                   "b")),
                                      false, IPCData::AVT_STRING, false, 0),
              0);
    vesk::db::close();
}

void makeEmptyDir(const std::string& dir) {
    std::filesystem::create_directory(dir + "/empty");
}

std::string blackList(int entries) {
    std::string words;
    for (int i = 0; i < entries; ++i) {
        words += " startPci=" + std::to_string(i) + ",pciRange=1";
    }
    return "set " + kOperatorRelation + " blackListEntry" + words;
}

// A class no validation rule guards, so the refusal comes from the reference check at commit.
const std::string kMissingRef = kEnb + ",UtraNetwork=1,UtranFrequency=7";
const std::string kSetMissingRef =
    "set " + kCell + ",UtranFreqRelation=1 utranFrequencyRef " + kMissingRef;
const std::string kSession = "--plugin $AGENT --state $STATE --script $DATA/demo/";

const Case kCases[] = {
    // What the model forbids, refused before the agent writes anything.
    row("ConfigFalseAttribute", kText, "set " + kCell + " operationalState DISABLED; get " + kCell,
        {"error: operationalState of EUtranCellFDD is read-only (config false)", "ENABLED"}),
    row("ConfigFalseClass", kJson,
        "create ManagedElement=1,SystemFunctions=1,SwM=1 UpgradePackage=2",
        {"\"ok\":false,\"error\":\"class UpgradePackage is read-only (config false)"}),
    row("KeyAttribute", kText,
        "set " + kCell + " eUtranCellFDDId 7; get " + kCell + " eUtranCellFDDId",
        {"error: eUtranCellFDDId is the key of EUtranCellFDD", "eUtranCellFDDId: 1"}),
    row("CreateOfAnMoThatExists", kText,
        "create " + kEnb + " EUtranCellFDD=1 cellId=4 earfcndl=1300; get " + kCell,
        {"error: " + kCell + " exists already", "earfcndl: 6300", "UNLOCKED", "tac: 100"}),
    row("ParentThatDoesNotExist", kText,
        "create " + kEnb +
            ",EUtranCellFDD=9 EUtranFreqRelation=1 eutranFrequencyRef=" + kOperatorFrequency,
        {"error: no MO " + kEnb + ",EUtranCellFDD=9: the parent must exist first"}),
    row("ChildCardinality", kText,
        "create ManagedElement=1 ENodeBFunction=2 eNBId=2; count ManagedElement=1 ENodeBFunction",
        {"error: ManagedElement=1 holds 1 ENodeBFunction already, the most the model allows "
         "(max-elements 1)",
         "OrlOk\n1\n"}),
    row("ListCardinality", kText, blackList(200),
        {"error: blackListEntry takes at most 16 values (max-elements), not 200"}),
    row("StructMembers", kText,
        "set " + kEnb + " eNodeBPlmnId mcc=1,mcc=2; set " + kEnb + " eNodeBPlmnId mcc=1,colour=2",
        {"error: member 'mcc' of eNodeBPlmnId is given twice",
         "error: unknown member 'colour' of eNodeBPlmnId"}),
    row("StructListKeyTwice", kText,
        "set " + kOperatorRelation + " blackListEntry startPci=7 startPci=7,pciRange=2",
        {"error: blackListEntry: startPci '7' is given twice"}),
    row("ReferenceToTheWrongClass", kText,
        "set " + kOperatorRelation + " eutranFrequencyRef " + kCell + "; get " + kOperatorRelation,
        {"error: eutranFrequencyRef: " + kCell +
             " is of class EUtranCellFDD; the model allows EUtranFrequency",
         "eutranFrequencyRef: \"" + kOperatorFrequency}),
    row("MalformedIds", kText,
        "create " + kEnb + " EUtranCellFDD=a:b cellId=4 earfcndl=6300; get '" + kEnb +
            ",EUtranCellFDD=x;y'",
        {"error: id 'a:b' of EUtranCellFDD: an MO id is not empty and holds no",
         "error: malformed dn '" + kEnb + ",EUtranCellFDD=x;y': id 'x;y' of EUtranCellFDD"}),
    row("MandatoryValues", kText,
        "set " + kCell + " cellId; create " + kEnb + " EUtranCellFDD=5 cellId=5",
        {"error: cellId is mandatory: its value cannot be deleted",
         "error: earfcndl of EUtranCellFDD is mandatory: give it with the create"}),
    // Whether a referenced MO exists is the agent's to judge at commit; its lines tell why.
    row("ReasonOfARefusedCommit", kText, kSetMissingRef,
        {"OrlValidationFailed: transaction",
         "did not commit\nreason: ", "Reference pointing to missing MO: " + kMissingRef},
        {"ERROR", "WARNING"}),
    row("ReasonsInJson", kJson, kSetMissingRef,
        {"\"code\":\"OrlValidationFailed\"",
         "\"reasons\":[\"VeskDBTransaction::validateReferences(): Reference"}),
    row("LogLevelStillRules", kArgs,
        "--plugin $AGENT --state $STATE --log-level warning -c " + quote(kSetMissingRef),
        {"reason: VeskDBTransaction::validateReferences()",
         "] VeskDBTransaction::validateReferences()"}),
    row("DemoSessionsAreQuiet", kArgs,
        kSession + "read-session.txt\n" + kSession + "write-session.txt\n" + kSession +
            "gates-session.txt",
        {"reason: VeskMoImpl::setMoAttribute(): Cannot set attribute userLabel"},
        {"ERROR", "WARNING", "INFO"}),
    // Text that is not UTF-8.
    row("BytesRoundTripInText", kText,
        "get ManagedElement=1 userLabel; set ManagedElement=1 userLabel \"a\\xffb\"",
        {"userLabel: \"a\\xffb\"\n", "is not UTF-8 text"}, {}, 0, storeBadLabel),
    row("BytesRoundTripInJson", kJson,
        "get ManagedElement=1 userLabel; set ManagedElement=1 userLabel a\xff"
        "b",
        {"\"result\":{\"userLabel\":\"a\\\\xffb\"}",
         "\"args\":[\"ManagedElement=1\",\"userLabel\",\"a\\\\xffb\"]",
         "\"error\":\"userLabel: value 'a\\\\xffb' is not UTF-8 text (string)\""},
        {}, 0, storeBadLabel),
    // State directories.
    row("NoStationInAMissingDirectory", kArgs, "--plugin $AGENT --state $DIR/typo -c status",
        {"vesk-host: no station in $DIR/typo: load one with --load"}, {}, 2),
    row("NoStationInAnEmptyDirectory", kArgs,
        "--plugin $AGENT --state $DIR/empty -c status\n--plugin $AGENT --state $DIR/empty "
        "--create-state -c status",
        {"no station in $DIR/empty: load one with --load", "transaction: none"}, {}, 0,
        makeEmptyDir),
    row("FailedLoadLeavesTheDirectory", kArgs,
        "--load $DATA/none.xml --state $DIR/fresh\n--load $DATA/none.xml --state $DIR/empty\n"
        "--load $DATA/station/demo-station.xml --state $DIR/fresh\n--load "
        "$DATA/station/demo-station.xml --state $DIR/empty",
        {"none.xml: cannot open the file", "none.xml: cannot open the file",
         "objects into $DIR/fresh", "objects into $DIR/empty"},
        {"not empty"}, 0, makeEmptyDir),
    // Comments and quotes.
    row("CommentsAndQuotes", kText,
        "set ManagedElement=1 userLabel 'a#b;c'; get ManagedElement=1 userLabel # comment; status",
        {"userLabel: \"a#b;c\""}, {"transaction:", "error"}),
    // At a terminal.
    row("CtrlCCancelsTheLine", kTerminal, "get ManagedElement=1 userLabel\x03status\nquit\n",
        {"^C\n", "transaction: none"}, {"Demo station"}),
    row("SecondCtrlCOnAnEmptyLineEnds", kTerminal, "begin\n\x03status\n\x03\x03",
        {"(Ctrl-C again or Ctrl-D to leave)", "transaction: ", "was open at exit: aborted"}),
    row("CtrlDEnds", kTerminal, "begin\n\x04", {"was open at exit: aborted"}),
    row("CompletesCommandsDnsAndAttributes", kTerminal, "ge\tM\t\t,ENodeBF\t\t eNB\t\nquit\n",
        {"eNBId: 4711"}),
    row("CompletesClassesAndLiterals", kTerminal,
        "ls " + kEnb + " EUtranCellF\t\nset ManagedElement=1 rbsConfigLevel READY_F\t\ncreate " +
            kEnb + " EUtranCellF\t5 cellI\t5 earfcnd\t6300 administrativeState=LOC\t\nquit\n",
        {kCell, "OrlOk", "created " + kEnb + ",EUtranCellFDD=5"}, {"error"}),
    row("CompletesActionsAndPeers", kTerminal,
        "action ManagedElement=1,Equipment=1,RbsUnit=1,WifiModule=1 rest\t restartR\t2\n"
        "peer wi\t sh\t\nquit\n",
        {"restarts: 1", "lastRestartMode: 2"}, {"error"}),
};

class OperatorTest : public StationProgramFixture, public ::testing::WithParamInterface<Case> {
  protected:
    std::string expand(const std::string& text) const {
        return vesk::e2e::expand(text, {{"$DIR", _dir},
                                        {"$STATE", _dir + "/state"},
                                        {"$AGENT", VESK_AGENT_PATH},
                                        {"$DATA", kData}});
    }

    // Reads the terminal into _out until `done` holds, it ends or ten quiet seconds pass; false
    // once it has ended.
    bool read(int master, const std::function<bool()>& done) {
        for (int quiet = 0; quiet < 100 && !done();) {
            pollfd ready{master, POLLIN, 0};
            char buffer[4096];
            ssize_t got = poll(&ready, 1, 100) > 0 ? ::read(master, buffer, sizeof buffer) : 0;
            if (got < 0 || (got == 0 && (ready.revents & POLLHUP) != 0)) {
                return false;
            }
            quiet = got > 0 ? 0 : quiet + 1;
            _out.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
        }
        return true;
    }

    // Types `keys` at vesk-host on a pseudo-terminal, waiting for each line's answer (and for
    // what was typed to be read before a Ctrl-C, which drops unread input).
    int terminal(const std::string& keys) {
        int master = -1;
        winsize size{50, 400, 0, 0};
        pid_t child = forkpty(&master, nullptr, nullptr, &size);
        if (child == 0) {
            std::string state = _dir + "/state";
            setenv("TERM", "dumb", 1);
            execl(VESK_HOST_PATH, VESK_HOST_PATH, "--plugin", VESK_AGENT_PATH, "--state",
                  state.c_str(), nullptr);
            _exit(127);
        }
        const auto prompts = [&] { return std::count(_out.begin(), _out.end(), '>'); };
        bool open = read(master, [&] { return prompts() > 0; });
        for (size_t at = 0; open && at < keys.size();) {
            size_t end = keys.find_first_of("\n\x03\x04", at);
            end = end == std::string::npos ? keys.size() : end + (end == at || keys[end] != '\x03');
            std::string chunk = keys.substr(at, end - at);
            at = end;
            EXPECT_EQ(write(master, chunk.data(), chunk.size()),
                      static_cast<ssize_t>(chunk.size()));
            auto before = prompts();
            size_t echoed = _out.size() + chunk.size();
            open = std::string("\n\x03").find(chunk.back()) != std::string::npos
                       ? read(master, [&] { return prompts() > before; })
                       : read(master, [&] { return _out.size() >= echoed; });
        }
        while (open && read(master, [] { return false; })) {
        }
        close(master);
        _out.erase(std::remove(_out.begin(), _out.end(), '\r'), _out.end());
        int raw = 0;
        waitpid(child, &raw, 0);
        return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    }

    // Runs the case; its output (standard output, then standard error) goes to _out.
    int run(const Case& c) {
        if (c.run == kTerminal) {
            return terminal(expand(c.input));
        }
        std::string runs =
            c.run == kArgs ? c.input : "--plugin $AGENT --state $STATE -c " + quote(c.input);
        int status = 0;
        std::istringstream lines(expand(runs) + (c.run == kJson ? " --json" : ""));
        for (std::string line; std::getline(lines, line);) {
            Outcome o = program(line);
            if (c.run == kJson) {
                EXPECT_NO_THROW(o.answers()) << o.out;
            }
            _out += o.out + o.err;
            status = o.status;
        }
        return status;
    }

    std::string _out;
};

TEST_P(OperatorTest, Case) {
    const Case& c = GetParam();
    if (c.prepare != nullptr) {
        ASSERT_NO_FATAL_FAILURE(c.prepare(_dir));
    }
    EXPECT_EQ(run(c), c.status) << _out;
    size_t at = 0;
    for (const std::string& part : c.expect) {
        size_t found = _out.find(expand(part), at);
        ASSERT_NE(found, std::string::npos)
            << "no '" << expand(part) << "' after " << at << " in:\n"
            << _out;
        at = found + expand(part).size();
    }
    for (const std::string& part : c.absent) {
        EXPECT_EQ(_out.find(part), std::string::npos) << part << " in:\n" << _out;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, OperatorTest, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             return info.param.name;
                         });

}  // namespace

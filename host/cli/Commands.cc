#include "host/cli/Commands.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "host/cli/ActionCommands.h"
#include "host/cli/Shell.h"
#include "host/cli/WatchCommands.h"
#include "host/cli/WriteCommands.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/OperationMode.h"
#include "platform/Toolbox.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Args = std::vector<std::string>;

// The class of `dn`; false, with the reason in the answer, when the model refuses it.
bool classOf(Shell& shell, const std::string& dn, Id* moc, Answer* answer) {
    return shell.model().resolveDn(dn, moc, &answer->error);
}

void runGet(Shell& shell, const Args& args, Answer* answer) {
    Id moc = kNone;
    if (!classOf(shell, args[0], &moc, answer)) {
        return;
    }
    std::vector<Id> attributes;
    for (size_t i = 1; i < args.size(); ++i) {
        Id attribute = kNone;
        if (!shell.model().resolveAttribute(moc, args[i], &attribute, &answer->error)) {
            return;
        }
        attributes.push_back(attribute);
    }
    if (attributes.empty()) {
        attributes = shell.model().attributes(moc);
    }
    shell.executor().get(args[0], attributes, answer);
}

// The dn and the child class of `ls` and `count`, checked.
bool dnAndChildClass(Shell& shell, const Args& args, Answer* answer) {
    Id moc = kNone;
    Id child = kNone;
    return classOf(shell, args[0], &moc, answer) &&
           shell.model().resolveChildClass(moc, args[1], &child, &answer->error);
}

void runList(Shell& shell, const Args& args, Answer* answer) {
    if (dnAndChildClass(shell, args, answer)) {
        shell.executor().list(args[0], args[1], answer);
    }
}

void runCount(Shell& shell, const Args& args, Answer* answer) {
    if (dnAndChildClass(shell, args, answer)) {
        shell.executor().count(args[0], args[1], answer);
    }
}

void runExists(Shell& shell, const Args& args, Answer* answer) {
    Id moc = kNone;
    if (classOf(shell, args[0], &moc, answer)) {
        shell.executor().exists(args[0], answer);
    }
}

void runBegin(Shell& shell, const Args&, Answer* answer) {
    shell.executor().begin(answer);
}
void runCommit(Shell& shell, const Args&, Answer* answer) {
    shell.executor().commit(answer);
}
void runAbort(Shell& shell, const Args&, Answer* answer) {
    shell.executor().abort(answer);
}

void runStatus(Shell& shell, const Args&, Answer* answer) {
    Executor& executor = shell.executor();
    Json status = Json::object();
    status["transaction"] = executor.inTransaction() ? Json(executor.transaction()) : Json("none");
    status["protocol"] = shell.options().protocol;
    status["user"] = shell.options().protocol == "none" ? "-" : shell.options().user;
    status["agent"] = shell.host().agentComponent();
    status["components"] = shell.host().components().started();
    status["events"] = eventStatus(shell);
    answer->data = status;
}

// phase [N]: the station's auto-integration phase, "AI_phase" of the object "OAM", instance 1,
// read or written straight in the station database. A write is committed at once, outside any
// transaction, as the integration would write it; the agent reads it at its next change.
void runPhase(Shell&, const Args& args, Answer* answer) {
    if (!args.empty()) {
        errno = 0;
        char* end = nullptr;
        long phase = std::strtol(args[0].c_str(), &end, 10);
        if (end == args[0].c_str() || *end != '\0' || errno != 0 || phase < INT32_MIN ||
            phase > INT32_MAX) {
            answer->error = "the phase is a whole number, not '" + args[0] + "'";
            return;
        }
        if (IDatabase::setAttribute("OAM", 1, "AI_phase", AttributeVariant(static_cast<int>(phase)),
                                    false, IPCData::AVT_INT32, false, 0) == 0) {
            answer->error = "cannot write AI_phase of OAM";
            return;
        }
        answer->notes.push_back("AI_phase set to " + std::to_string(phase));
    }
    std::unique_ptr<DBObject> oam(IDatabase::getObject("OAM", 1, 0));
    std::string name = "AI_phase";
    int phase = 0;
    if (oam == nullptr || !Toolbox::getIntFromDBObject(oam.get(), name, phase)) {
        answer->error = "the station has no AI_phase";
        return;
    }
    answer->data = phase;
}

// opmode [VALUE]: the station's next operation mode, "mixed" or "hc_lte", read or written in the
// station's own store (kept in the state directory across restarts). The agent sets it at a
// commit whose cells call for another mode.
void runOperationMode(Shell&, const Args& args, Answer* answer) {
    static const char* const kNames[] = {"hc_lte", "mixed"};
    const int kModeKind = 2;
    if (!args.empty()) {
        const int mode = args[0] == "mixed" ? 1 : args[0] == "hc_lte" ? 0 : -1;
        if (mode < 0) {
            answer->error = "the operation mode is mixed or hc_lte, not '" + args[0] + "'";
            return;
        }
        if (mw_api_operation_mode_set(kModeKind, mode) != 0) {
            answer->error = "cannot store the operation mode";
            return;
        }
        answer->notes.push_back(std::string("next operation mode set to ") + kNames[mode]);
    }
    int mode = 0;
    if (mw_api_operation_mode_get(kModeKind, &mode) != 0) {
        answer->error = "the station's operation mode cannot be read";
        return;
    }
    answer->data = kNames[mode == 1 ? 1 : 0];
}

void runHelp(Shell&, const Args& args, Answer* answer) {
    answer->data = Json::array();
    for (const Command& command : commandTable()) {
        if (args.empty() || args[0] == command.name) {
            std::string usage = std::string(command.name) + " " + command.usage;
            usage.resize(std::max<size_t>(usage.size() + 1, 22), ' ');
            answer->data.push_back(usage + command.summary);
        }
    }
    if (answer->data.empty()) {
        answer->error = "unknown command '" + args[0] + "'";
    }
}

void runQuit(Shell& shell, const Args&, Answer*) {
    shell.requestQuit();
}

}  // namespace

const std::vector<Command>& commandTable() {
    static const std::vector<Command> table = {
        {"get", "DN [ATTR...]", "read attributes of an MO (all of its class when none is named)", 1,
         kAnyCount, runGet},
        {"ls", "DN CLASS", "list the children of class CLASS of an MO", 2, 2, runList},
        {"exists", "DN", "tell whether an MO exists", 1, 1, runExists},
        {"count", "DN CLASS", "count the children of class CLASS of an MO", 2, 2, runCount},
        {"set", "DN ATTR [VALUE...]",
         "set an attribute (several values for a list, none to delete the value)", 2, kAnyCount,
         runSet},
        {"create", "PARENT_DN CLASS=ID [ATTR=VALUE...]", "create an MO", 2, kAnyCount, runCreate},
        {"delete", "DN", "delete an MO", 1, 1, runDelete},
        {"action", "DN NAME [PARAM=VALUE...]", "run an action of an MO", 2, kAnyCount, runAction},
        {"peer", "[NAME show|BEHAVIOUR|...]",
         "list the station's peers, show what one received, or set its behaviour", 0, kAnyCount,
         runPeer},
        {"oi",
         "add dn|class DN_OR_PATH ok|tryagain N|fail CODE | set ID BEHAVIOUR | list | show ID | "
         "remove ID",
         "the host's own object implementers", 1, kAnyCount, runImplementer},
        {"begin", "", "open a transaction for the commands that follow", 0, 0, runBegin},
        {"commit", "", "commit the open transaction", 0, 0, runCommit},
        {"abort", "", "abort the open transaction", 0, 0, runAbort},
        {"phase", "[N]", "show or set the station's auto-integration phase (AI_phase of OAM)", 0, 1,
         runPhase},
        {"opmode", "[mixed|hc_lte]", "show or set the station's next operation mode", 0, 1,
         runOperationMode},
        {"watch", "[REGEX]",
         "print change notifications of the MOs whose dn matches REGEX (all without one)", 0, 1,
         runWatch},
        {"unwatch", "[N]", "end watch N (all without N)", 0, 1, runUnwatch},
        {"notifications", "[N] [REGEX]",
         "show the last N (10) notifications the host kept whose dn matches REGEX", 0, 2,
         runNotifications},
        {"status", "", "show the open transaction, the session, the components and the consumers",
         0, 0, runStatus},
        {"help", "[COMMAND]", "list the commands", 0, 1, runHelp},
        {"quit", "", "leave (an open transaction is aborted)", 0, 0, runQuit},
        {"exit", "", "leave (an open transaction is aborted)", 0, 0, runQuit},
    };
    return table;
}

const Command* findCommand(const std::string& name) {
    for (const Command& command : commandTable()) {
        if (name == command.name) {
            return &command;
        }
    }
    return nullptr;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

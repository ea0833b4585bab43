#include "host/cli/ActionCommands.h"

#include <map>

#include "host/cli/CommandText.h"
#include "host/cli/Shell.h"
#include "host/cli/ValueParser.h"
#include "host/peers/Peers.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Args = std::vector<std::string>;

// The parameter `name` among those of the action; false, with the reason, when it has none.
bool findParameter(const ModelView& model, Id action, const std::string& name, Id* parameter,
                   std::string* error) {
    std::string known;
    for (Id it : model.actionParameters(action)) {
        if (model.attributeName(it) == name) {
            *parameter = it;
            return true;
        }
        known += (known.empty() ? "" : ", ") + model.attributeName(it);
    }
    *error = model.actionName(action) + " has no parameter '" + name + "'" +
             (known.empty() ? " (it takes none)" : " (it takes " + known + ")");
    return false;
}

// The typed parameters of `args` (from the third on), by parameter; false with the reason.
bool parseParameters(const ModelView& model, Id action, const Args& args,
                     std::map<Id, ParsedValue>* values, std::string* error) {
    for (size_t i = 2; i < args.size(); ++i) {
        std::string name;
        std::string text;
        Id parameter = kNone;
        if (!splitPair(args[i], &name, &text)) {
            *error = "a parameter must be written PARAM=VALUE, not '" + args[i] + "'";
            return false;
        }
        if (!findParameter(model, action, name, &parameter, error)) {
            return false;
        }
        if (values->count(parameter) != 0) {
            *error = name + " is given twice";
            return false;
        }
        if (!ValueParser(model).parseWords(parameter, {text}, &(*values)[parameter], error)) {
            return false;
        }
    }
    return true;
}

}  // namespace

void runAction(Shell& shell, const Args& args, Answer* answer) {
    const ModelView& model = shell.model();
    Id moc = kNone;
    Id action = kNone;
    std::map<Id, ParsedValue> values;
    if (!model.resolveDn(args[0], &moc, &answer->error) ||
        !model.resolveAction(moc, args[1], &action, &answer->error) ||
        !parseParameters(model, action, args, &values, &answer->error)) {
        return;
    }
    // The agent reads parameters by position: they go in model order.
    NamedValues parameters;
    for (Id parameter : model.actionParameters(action)) {
        const std::string& name = model.attributeName(parameter);
        auto given = values.find(parameter);
        if (given != values.end()) {
            parameters.add(name, &given->second);
        } else if (model.tables().attributes[parameter].mandatory) {
            answer->error =
                name + " of " + args[1] + " is mandatory: give it as " + name + "=VALUE";
            return;
        }
    }
    shell.executor().action(args[0], args[1], model.actionResult(action), parameters.list(),
                            answer);
}

void runPeer(Shell& shell, const Args& args, Answer* answer) {
    peers::Peers& peers = shell.host().peers();
    if (args.empty()) {
        answer->data = Json::array();
        for (peers::Peer* peer : peers.all()) {
            Json entry{{"name", peer->name()}, {"behaviour", peer->behaviour()}};
            if (peer->destination() != 0) {
                entry["destination"] = peer->destination();
            }
            entry["usage"] = peer->usage();
            answer->data.push_back(entry);
        }
        return;
    }
    peers::Peer* peer = peers.find(args[0]);
    if (peer == nullptr) {
        std::string known;
        for (peers::Peer* each : peers.all()) {
            known += (known.empty() ? "" : ", ") + each->name();
        }
        answer->error = "no peer '" + args[0] + "' (peers: " + known + ")";
    } else if (args.size() == 1) {
        answer->error = "usage: peer " + args[0] + " " + peer->usage();
    } else {
        peer->command(Args(args.begin() + 1, args.end()), &answer->data, &answer->error);
    }
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

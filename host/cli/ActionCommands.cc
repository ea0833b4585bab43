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

}  // namespace

bool actionParameters(const ModelView& model, Id action, const Pairs& given,
                      NamedValues* parameters, std::string* error) {
    std::map<Id, ParsedValue> values;
    for (const auto& [name, text] : given) {
        Id parameter = kNone;
        if (!findParameter(model, action, name, &parameter, error)) {
            return false;
        }
        if (values.count(parameter) != 0) {
            *error = name + " is given twice";
            return false;
        }
        if (!ValueParser(model).parseWords(parameter, {text}, &values[parameter], error)) {
            return false;
        }
    }
    // The agent reads parameters by position: they go in model order.
    for (Id parameter : model.actionParameters(action)) {
        const std::string& name = model.attributeName(parameter);
        auto found = values.find(parameter);
        if (found != values.end()) {
            parameters->add(name, &found->second);
        } else if (model.tables().attributes[parameter].mandatory) {
            *error = name + " of " + model.actionName(action) + " is mandatory: give it as " +
                     name + "=VALUE";
            return false;
        }
    }
    return true;
}

void runAction(Shell& shell, const Args& args, Answer* answer) {
    const ModelView& model = shell.model();
    Id moc = kNone;
    Id action = kNone;
    if (!model.resolveDn(args[0], &moc, &answer->error) ||
        !model.resolveAction(moc, args[1], &action, &answer->error)) {
        return;
    }
    Pairs given;
    for (size_t i = 2; i < args.size(); ++i) {
        std::string name;
        std::string text;
        if (!splitPair(args[i], &name, &text)) {
            answer->error = "a parameter must be written PARAM=VALUE, not '" + args[i] + "'";
            return;
        }
        given.emplace_back(name, text);
    }
    NamedValues parameters;
    if (actionParameters(model, action, given, &parameters, &answer->error)) {
        shell.executor().action(args[0], args[1], model.actionResult(action), parameters.list(),
                                answer);
    }
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

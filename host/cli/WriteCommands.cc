#include "host/cli/WriteCommands.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "host/cli/CommandText.h"
#include "host/cli/ModelRules.h"
#include "host/cli/Shell.h"
#include "host/cli/ValueParser.h"
#include "host/oi/Implementers.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Args = std::vector<std::string>;

// The value words of attribute `name` of class `moc`, parsed; false with the reason otherwise,
// also when the operator may not write the attribute.
bool parseValue(Shell& shell, Id moc, const std::string& name, const Args& words,
                ParsedValue* value, std::string* error) {
    Id attribute = kNone;
    return shell.model().resolveAttribute(moc, name, &attribute, error) &&
           ModelRules(shell.model()).writable(moc, attribute, error) &&
           ValueParser(shell.model()).parseWords(attribute, words, value, error);
}

// The class and id of `CLASS=ID`, a child of `parent` that an operator may create.
bool newChild(Shell& shell, Id parent, const std::string& word, Id* moc, std::string* id,
              std::string* error) {
    std::string className;
    if (!splitPair(word, &className, id)) {
        *error = "the new MO must be written CLASS=ID, not '" + word + "'";
        return false;
    }
    return shell.model().resolveChildClass(parent, className, moc, error) &&
           ModelRules(shell.model()).creatable(*moc, error) &&
           shell.model().checkId(*moc, *id, error);
}

}  // namespace

void runSet(Shell& shell, const Args& args, Answer* answer) {
    Id moc = kNone;
    if (!shell.model().resolveDn(args[0], &moc, &answer->error)) {
        return;
    }
    ParsedValue value;
    if (parseValue(shell, moc, args[1], Args(args.begin() + 2, args.end()), &value,
                   &answer->error)) {
        shell.executor().set(args[0], args[1], value.container(), answer);
    }
}

void runCreate(Shell& shell, const Args& args, Answer* answer) {
    Id parent = kNone;
    Id moc = kNone;
    std::string id;
    if (!shell.model().resolveDn(args[0], &parent, &answer->error) ||
        !newChild(shell, parent, args[1], &moc, &id, &answer->error)) {
        return;
    }
    NamedValues attributes;
    std::set<std::string> given;
    for (size_t i = 2; i < args.size(); ++i) {
        std::string name;
        std::string text;
        if (!splitPair(args[i], &name, &text)) {
            answer->error =
                "an initial attribute must be written ATTR=VALUE, not '" + args[i] + "'";
            return;
        }
        ParsedValue value;
        if (!parseValue(shell, moc, name, {text}, &value, &answer->error)) {
            return;
        }
        if (!given.insert(name).second) {
            answer->error = name + " is given twice";
            return;
        }
        attributes.add(name, &value);
    }
    if (!ModelRules(shell.model()).mandatoryGiven(moc, given, &answer->error)) {
        return;
    }
    const std::string& keyName = shell.model().attributeName(shell.model().attributes(moc)[0]);
    shell.executor().create(args[0], moc, parent, keyName, id, attributes.list(), answer);
}

void runDelete(Shell& shell, const Args& args, Answer* answer) {
    Id moc = kNone;
    if (shell.model().resolveDn(args[0], &moc, &answer->error)) {
        shell.executor().remove(args[0], moc, answer);
    }
}

namespace {

Json implementerJson(const oi::ObjectImplementer& oi) {
    oi::TxCounts tx = oi.txCounts();
    return Json{{"id", oi.id()},       {"scope", oi.scope() == oi::Scope::kDn ? "dn" : "class"},
                {"name", oi.name()},   {"behaviour", oi.behaviour().text()},
                {"calls", oi.calls()}, {"joins", tx.join}};
}

Json receivedJson(const oi::Received& received) {
    return Json{{"operation", received.operation},
                {"tx", received.tx},
                {"dn", received.dn},
                {"attribute", received.attribute},
                {"value", received.value},
                {"answer", returnCodeName(received.answer)}};
}

// The implementer named by `word`; null, with the reason in the answer, when there is none.
oi::ObjectImplementer* implementerOf(Shell& shell, const std::string& word, Answer* answer) {
    char* end = nullptr;
    long id = std::strtol(word.c_str(), &end, 10);
    oi::ObjectImplementer* oi =
        *end == '\0' && end != word.c_str() ? shell.host().implementers().find(id) : nullptr;
    if (oi == nullptr) {
        answer->error = "no implementer '" + word + "'";
    }
    return oi;
}

void addImplementer(Shell& shell, const Args& args, Answer* answer) {
    oi::Behaviour behaviour;
    if (args.size() < 4 || (args[1] != "dn" && args[1] != "class")) {
        answer->error = "usage: oi add dn|class DN_OR_PATH ok|tryagain N|fail CODE";
        return;
    }
    if (!oi::parseBehaviour(Args(args.begin() + 3, args.end()), &behaviour, &answer->error)) {
        return;
    }
    oi::Scope scope = args[1] == "dn" ? oi::Scope::kDn : oi::Scope::kClass;
    int id = 0;
    std::string why;
    OrlReturnT code = shell.host().implementers().add(scope, args[2], behaviour, &id, &why);
    answer->messages = shell.host().messages();
    if (code != OrlOk) {
        answer->refuse(code, why);
        return;
    }
    answer->asked = true;
    answer->data = implementerJson(*shell.host().implementers().find(id));
}

}  // namespace

void runImplementer(Shell& shell, const Args& args, Answer* answer) {
    const std::string& verb = args[0];
    oi::Implementers& implementers = shell.host().implementers();
    oi::ObjectImplementer* oi = nullptr;
    if (verb == "add") {
        addImplementer(shell, args, answer);
    } else if (verb == "list" && args.size() == 1) {
        answer->data = Json::array();
        for (oi::ObjectImplementer* each : implementers.all()) {
            answer->data.push_back(implementerJson(*each));
        }
        if (answer->data.empty()) {
            answer->notes.push_back("no implementers");
        }
    } else if (verb == "show" && args.size() == 2) {
        if ((oi = implementerOf(shell, args[1], answer)) != nullptr) {
            answer->data = Json::array();
            for (const oi::Received& received : oi->received()) {
                answer->data.push_back(receivedJson(received));
            }
        }
    } else if (verb == "set" && args.size() >= 3) {
        oi::Behaviour behaviour;
        if ((oi = implementerOf(shell, args[1], answer)) != nullptr &&
            oi::parseBehaviour(Args(args.begin() + 2, args.end()), &behaviour, &answer->error)) {
            oi->setBehaviour(behaviour);
            answer->data = implementerJson(*oi);
        }
    } else if (verb == "remove" && args.size() == 2) {
        if ((oi = implementerOf(shell, args[1], answer)) != nullptr) {
            std::string why;
            std::string name = oi->name();
            OrlReturnT code = implementers.remove(oi->id(), &why);
            answer->messages = shell.host().messages();
            answer->asked = true;
            answer->code = code;
            answer->error = why;
            answer->notes.push_back("implementer " + args[1] + " of " + name + " removed");
        }
    } else {
        answer->error = "usage: oi add|set|list|show|remove ...";
    }
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

#include "host/cli/Completion.h"

#include "host/cli/CommandText.h"
#include "host/cli/Commands.h"
#include "host/cli/ModelRules.h"
#include "host/cli/Shell.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Words = std::vector<std::string>;

// The words of the command the cursor is in; false inside an open quote.
bool currentWords(const std::string& before, Words* words) {
    std::vector<std::string> commands = splitCommands(before + "x");
    std::string error;
    if (commands.empty() || !splitWords(commands.back(), words, &error)) {
        return false;
    }
    words->pop_back();  // the "x" that stood for the word being completed
    return true;
}

// Adds `prefix` + each of `names` that begins with `partial` (which includes the prefix).
void addMatching(const Words& names, const std::string& prefix, const std::string& partial,
                 const std::string& suffix, Completions* out) {
    for (const std::string& name : names) {
        std::string word = prefix + name + suffix;
        if (word.compare(0, partial.size(), partial) == 0) {
            out->words.push_back(word);
        }
    }
}

Words childClasses(const ModelView& model, Id moc) {
    Words names;
    const model::ModelTables& tables = model.tables();
    for (Id c = tables.mocs[moc].firstContainment; c != kNone; c = tables.containments[c].next) {
        names.push_back(tables.mocName(tables.containments[c].child));
    }
    return names;
}

// A dn: the child classes of the dn before the last ",", then the MOs of the class typed.
void completeDn(Shell& shell, const std::string& partial, Completions* out) {
    const ModelView& model = shell.model();
    size_t comma = partial.rfind(',');
    std::string parentDn = comma == std::string::npos ? "" : partial.substr(0, comma);
    std::string prefix = comma == std::string::npos ? "" : parentDn + ",";
    std::string error;
    Id parent = kNone;
    if (!parentDn.empty() && !model.resolveDn(parentDn, &parent, &error)) {
        return;
    }
    Words classes =
        parent == kNone ? Words{model.className(model.tables().root)} : childClasses(model, parent);
    out->space = false;
    size_t equals = partial.find('=', prefix.size());
    if (equals == std::string::npos) {
        addMatching(classes, prefix, partial, "=", out);
        return;
    }
    std::string className = partial.substr(prefix.size(), equals - prefix.size());
    for (const std::string& known : classes) {
        if (known == className) {
            addMatching(shell.executor().childDns(parentDn, className), "", partial, "", out);
        }
    }
}

// The attributes of the class of `dn`; only those an operator may write when `writable`.
Words attributesOf(Shell& shell, const std::string& dn, bool writable) {
    Words names;
    Id moc = kNone;
    std::string error;
    if (!shell.model().resolveDn(dn, &moc, &error)) {
        return names;
    }
    for (Id attribute : shell.model().attributes(moc)) {
        if (!writable || ModelRules(shell.model()).writable(moc, attribute, &error)) {
            names.push_back(shell.model().attributeName(attribute));
        }
    }
    return names;
}

// The literals of attribute `name` of the class of `dn`: enumeration literals, or the booleans.
Words valuesOf(Shell& shell, const std::string& dn, const std::string& name) {
    Id moc = kNone;
    Id attribute = kNone;
    std::string error;
    if (!shell.model().resolveDn(dn, &moc, &error) ||
        !shell.model().resolveAttribute(moc, name, &attribute, &error)) {
        return Words();
    }
    if (shell.model().baseType(attribute) == OrlOamSpiMoAttributeType_3_BOOL) {
        return Words{"true", "false"};
    }
    return shell.model().literals(attribute);
}

// The words of create after its parent: CLASS=, then ATTR= and ATTR=LITERAL.
void completeCreate(Shell& shell, const Words& words, const std::string& partial,
                    Completions* out) {
    Id parent = kNone;
    std::string error;
    if (!shell.model().resolveDn(words[1], &parent, &error)) {
        return;
    }
    out->space = false;
    if (words.size() == 2) {
        addMatching(childClasses(shell.model(), parent), "", partial, "=", out);
        return;
    }
    std::string dn = words[1] + "," + words[2];
    size_t equals = partial.find('=');
    if (equals == std::string::npos) {
        addMatching(attributesOf(shell, dn, true), "", partial, "=", out);
        return;
    }
    std::string name = partial.substr(0, equals);
    out->space = true;
    addMatching(valuesOf(shell, dn, name), name + "=", partial, "", out);
}

// The words of action after its dn: NAME, then PARAM=.
void completeAction(Shell& shell, const Words& words, const std::string& partial,
                    Completions* out) {
    const ModelView& model = shell.model();
    Id moc = kNone;
    Id action = kNone;
    std::string error;
    if (!model.resolveDn(words[1], &moc, &error)) {
        return;
    }
    Words names;
    if (words.size() == 2) {
        for (Id each : model.actions(moc)) {
            names.push_back(model.actionName(each));
        }
        addMatching(names, "", partial, "", out);
    } else if (model.resolveAction(moc, words[2], &action, &error)) {
        for (Id parameter : model.actionParameters(action)) {
            names.push_back(model.attributeName(parameter));
        }
        out->space = false;
        addMatching(names, "", partial, "=", out);
    }
}

// The peers' names, then the words the peer takes.
void completePeer(Shell& shell, const Words& words, const std::string& partial, Completions* out) {
    Words names;
    for (peers::Peer* peer : shell.host().peers().all()) {
        if (words.size() == 1) {
            names.push_back(peer->name());
        } else if (words.size() == 2 && peer->name() == words[1]) {
            std::string usage = peer->usage();
            for (size_t start = 0, bar; start <= usage.size(); start = bar + 1) {
                bar = usage.find('|', start);
                bar = bar == std::string::npos ? usage.size() : bar;
                names.push_back(usage.substr(start, bar - start));
            }
        }
    }
    addMatching(names, "", partial, "", out);
}

Words commandNames() {
    Words names;
    for (const Command& command : commandTable()) {
        names.push_back(command.name);
    }
    return names;
}

}  // namespace

Completions complete(Shell& shell, const std::string& before, const std::string& partial) {
    Completions out;
    Words words;
    if (!currentWords(before, &words)) {
        return out;
    }
    const std::string command = words.empty() ? "" : words[0];
    const size_t position = words.size();
    if (position == 0 || (command == "help" && position == 1)) {
        addMatching(commandNames(), "", partial, "", &out);
    } else if (command == "opmode" && position == 1) {
        addMatching({"mixed", "hc_lte"}, "", partial, "", &out);
    } else if (command == "peer") {
        completePeer(shell, words, partial, &out);
    } else if (position == 1 && command != "oi" && command != "phase") {
        completeDn(shell, partial, &out);
    } else if (command == "oi" && position == 1) {
        addMatching({"add", "set", "list", "show", "remove"}, "", partial, "", &out);
    } else if (command == "get" || (command == "set" && position == 2)) {
        addMatching(attributesOf(shell, words[1], command == "set"), "", partial, "", &out);
    } else if (command == "set") {
        addMatching(valuesOf(shell, words[1], words[2]), "", partial, "", &out);
    } else if ((command == "ls" || command == "count") && position == 2) {
        Id moc = kNone;
        std::string error;
        if (shell.model().resolveDn(words[1], &moc, &error)) {
            addMatching(childClasses(shell.model(), moc), "", partial, "", &out);
        }
    } else if (command == "create") {
        completeCreate(shell, words, partial, &out);
    } else if (command == "action") {
        completeAction(shell, words, partial, &out);
    }
    return out;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

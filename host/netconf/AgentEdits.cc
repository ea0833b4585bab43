#include "host/netconf/AgentEdits.h"

#include <set>

namespace vesk {
namespace host {
namespace netconf {

using cli::Id;
using cli::Json;

namespace {

bool invalid(const std::string& dn, const std::string& error, EditRefusal* refusal) {
    refusal->tag = EditRefusal::kInvalidValue;
    refusal->dn = dn;
    refusal->message = error;
    return false;
}

}  // namespace

bool AgentEdits::exists(const std::string& dn) {
    cli::Answer answer;
    _executor.exists(dn, &answer);
    return !answer.failed() && answer.data.is_boolean() && answer.data.get<bool>();
}

Json AgentEdits::value(const std::string& dn, Id attribute) {
    cli::Answer answer;
    _executor.get(dn, {attribute}, &answer);
    if (answer.failed() || !answer.data.is_object()) {
        return Json();
    }
    return answer.data.value(_model.attributeName(attribute), Json());
}

std::vector<std::string> AgentEdits::children(const std::string& dn, Id moc) {
    return _executor.childDns(dn, _model.className(moc));
}

bool AgentEdits::parse(Id moc, Id attribute, const Json& value, cli::ParsedValue* parsed,
                       std::string* error) const {
    if (attribute == cli::kNone) {
        *error = "no such attribute";
        return false;
    }
    if (!_rules.writable(moc, attribute, error)) {
        return false;
    }
    if (value.is_null()) {
        return _parser.parseWords(attribute, {}, parsed, error);
    }
    return _parser.parse(attribute, cli::renderText(value), parsed, error);
}

bool AgentEdits::taken(const cli::Answer& answer, const std::string& dn, EditRefusal* refusal) {
    if (!answer.failed()) {
        return true;
    }
    refusal->tag = answer.asked ? EditRefusal::kOperationFailed : EditRefusal::kInvalidValue;
    refusal->dn = dn;
    refusal->asked = answer.asked;
    refusal->code = answer.code;
    refusal->message = answer.error;
    for (const std::string& message : answer.messages) {
        refusal->message += "\nmessage: " + message;
    }
    return false;
}

bool AgentEdits::create(const std::string& parentDn, Id parent, Id moc, const std::string& id,
                        const std::vector<std::pair<Id, Json>>& attributes, EditRefusal* refusal) {
    const std::string dn =
        (parentDn.empty() ? "" : parentDn + ",") + _model.className(moc) + "=" + id;
    std::string error;
    if (!_rules.creatable(moc, &error) || !_model.checkId(moc, id, &error)) {
        return invalid(dn, error, refusal);
    }
    cli::NamedValues named;
    std::set<std::string> given;
    for (const auto& attribute : attributes) {
        cli::ParsedValue parsed;
        const std::string& name = _model.attributeName(attribute.first);
        if (!parse(moc, attribute.first, attribute.second, &parsed, &error)) {
            return invalid(dn, name + ": " + error, refusal);
        }
        given.insert(name);
        named.add(name, &parsed);
    }
    if (!_rules.mandatoryGiven(moc, given, &error)) {
        return invalid(dn, error, refusal);
    }
    const std::string& keyName = _model.attributeName(_model.attributes(moc)[0]);
    cli::Answer answer;
    _executor.create(parentDn, moc, parent, keyName, id, named.list(), &answer);
    return taken(answer, dn, refusal);
}

bool AgentEdits::set(const std::string& dn, Id moc, Id attribute, const Json& value,
                     EditRefusal* refusal) {
    cli::ParsedValue parsed;
    std::string error;
    const std::string& name = _model.attributeName(attribute);
    if (!parse(moc, attribute, value, &parsed, &error)) {
        return invalid(dn, name + " of " + dn + ": " + error, refusal);
    }
    cli::Answer answer;
    _executor.set(dn, name, parsed.container(), &answer);
    return taken(answer, dn, refusal);
}

bool AgentEdits::remove(const std::string& dn, Id moc, EditRefusal* refusal) {
    cli::Answer answer;
    _executor.remove(dn, moc, &answer);
    return taken(answer, dn, refusal);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

// The edits of one edit-config carried out on the agent through the command line's executor,
// inside the transaction the executor has open: the same model rules and value parsing as the
// command line's set, create and delete, then the agent's own answer. Used on the thread of
// one NETCONF request.
#pragma once

#include "host/cli/Executor.h"
#include "host/cli/ModelRules.h"
#include "host/cli/ValueParser.h"
#include "host/netconf/EditMapper.h"

namespace vesk {
namespace host {
namespace netconf {

class AgentEdits : public EditTarget {
  public:
    // `executor` has a transaction open; it and `model` must outlive this.
    AgentEdits(cli::Executor& executor, const cli::ModelView& model)
        : _executor(executor), _model(model), _rules(model), _parser(model) {}

    bool exists(const std::string& dn) override;
    cli::Json value(const std::string& dn, cli::Id attribute) override;
    std::vector<std::string> children(const std::string& dn, cli::Id moc) override;
    bool create(const std::string& parentDn, cli::Id parent, cli::Id moc, const std::string& id,
                const std::vector<std::pair<cli::Id, cli::Json>>& attributes,
                EditRefusal* refusal) override;
    bool set(const std::string& dn, cli::Id moc, cli::Id attribute, const cli::Json& value,
             EditRefusal* refusal) override;
    bool remove(const std::string& dn, cli::Id moc, EditRefusal* refusal) override;

  private:
    // `value` as a container for `attribute` of `moc`, checked as the command line checks it.
    bool parse(cli::Id moc, cli::Id attribute, const cli::Json& value, cli::ParsedValue* parsed,
               std::string* error) const;
    // Whether the agent took the call; the refusal from its answer otherwise.
    static bool taken(const cli::Answer& answer, const std::string& dn, EditRefusal* refusal);

    cli::Executor& _executor;
    const cli::ModelView& _model;
    cli::ModelRules _rules;
    cli::ValueParser _parser;
};

}  // namespace netconf
}  // namespace host
}  // namespace vesk

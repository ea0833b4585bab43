// Reads the running datastore from the agent into a data tree of the NETCONF context: every MO
// as a list entry of its class, its attributes as leaves, leaf-lists and struct containers or
// lists, the values as the command line's executor reads them (in one host transaction, aborted
// at the end). Used on the thread of one NETCONF request.
#pragma once

#include <string>

#include "host/cli/Executor.h"
#include "host/cli/ModelView.h"

struct lyd_node;
struct lys_module;

namespace vesk {
namespace host {
namespace netconf {

class StationReader {
  public:
    // `withState` reads the attributes only the station writes (config false) too.
    StationReader(cli::Executor& executor, const cli::ModelView& model, const lys_module* station,
                  bool withState)
        : _executor(executor), _model(model), _station(station), _withState(withState) {}

    // Reads the MO `dn` and everything below it ("" for the whole station) into `tree`, which
    // receives the entries of the MOs above it with their keys alone. OrlNotExist, with the reason
    // in `error`, when `dn` names no MO; the agent's code when a read fails.
    OrlReturnT read(const std::string& dn, lyd_node** tree, std::string* error);

  private:
    OrlReturnT readMo(const std::string& dn, cli::Id moc, lyd_node* parent, lyd_node** tree,
                      std::string* error);
    // A list entry of class `moc` keyed by the last id of `dn`, below `parent` or at the top.
    lyd_node* entry(const std::string& dn, cli::Id moc, lyd_node* parent, lyd_node** tree);
    void addValue(lyd_node* entry, cli::Id attribute, const cli::Json& value);
    bool wanted(cli::Id attribute) const;

    cli::Executor& _executor;
    const cli::ModelView& _model;
    const lys_module* _station;
    bool _withState;
};

// The canonical text of one value as the model library takes it: strings as they are, numbers
// and booleans as JSON writes them.
std::string scalarText(const cli::Json& value);
// A list key predicate "[name='value']" (double quotes when the value holds a single one).
std::string keyPredicate(const std::string& name, const std::string& value);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

// Filters of get, get-config and create-subscription. A subtree filter becomes a set of XPath
// expressions (each selection or containment path, with the content matches of its level as
// predicates); an XPath filter is its expression. Selecting from a data tree keeps the chosen
// nodes with their ancestors and the ancestors' keys.
#pragma once

#include <string>
#include <vector>

#include "host/cli/ModelView.h"

struct ly_ctx;
struct lyd_node;

namespace vesk {
namespace host {
namespace netconf {

struct Filter {
    bool all = true;                  // no filter: everything
    std::vector<std::string> xpaths;  // the nodes chosen, when not `all`
    // For a subtree filter, the deepest MO whose whole path it gives by list keys (key content
    // matches of single containment steps); "" otherwise. Reading can start there.
    std::string scope;
};

// The filter of the anyxml `filter` node of a request (null: no filter). False, with the reason,
// for a filter type other than subtree or xpath, or an xpath filter without its expression.
bool readFilter(const lyd_node* filter, const cli::ModelView& model, Filter* out,
                std::string* error);

// The nodes of `tree` that `filter` chooses, as a new tree (null when none); `tree` stays the
// caller's. False, with the model library's reason, for an expression it cannot evaluate.
bool applyFilter(const Filter& filter, const lyd_node* tree, lyd_node** out, std::string* error);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

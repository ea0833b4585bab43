// <action>: the action node of the request, below its MO entries, run on the agent as the command
// line's action command runs it: the dn from the entries' keys, the parameters typed from the
// model and passed in the model's order, the result as the action's output.
#include <libyang/libyang.h>

#include "host/cli/ActionCommands.h"
#include "host/cli/Executor.h"
#include "host/netconf/DataNodes.h"
#include "host/netconf/Operations.h"
#include "host/netconf/Replies.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace vesk {
namespace host {
namespace netconf {

using cli::Id;

namespace {

// The dn of the MO entry that holds `action`, and its class; false, with the reason.
bool actionDn(const cli::ModelView& model, const lyd_node* action, std::string* dn, Id* moc,
              std::string* error) {
    std::vector<const lyd_node*> entries;
    for (const lyd_node* node = lyd_parent(action); node != nullptr; node = lyd_parent(node)) {
        entries.insert(entries.begin(), node);
    }
    *moc = cli::kNone;
    for (const lyd_node* entry : entries) {
        const std::string name = entry->schema->name;
        if (entry->schema->nodetype != LYS_LIST || lyd_child(entry) == nullptr) {
            *error = name + " is not an MO entry";
            return false;
        }
        if (*moc == cli::kNone) {
            *moc = model.tables().root;
            if (name != model.className(*moc)) {
                *error = "no class " + name + " at the top";
                return false;
            }
        } else if (!model.resolveChildClass(*moc, name, moc, error)) {
            return false;
        }
        *dn += (dn->empty() ? "" : ",") + name + "=" + nodeValue(lyd_child(entry));
    }
    if (*moc == cli::kNone) {
        *error = "an action belongs to an MO entry";
        return false;
    }
    return true;
}

// The reply of an action that ran: its output leaves, or ok when it gives none.
nc_server_reply* resultReply(const lyd_node* action, const cli::Json& result) {
    lyd_node* output = nullptr;
    if (!result.is_object() || result.empty() ||
        lyd_dup_single(action, nullptr, LYD_DUP_WITH_PARENTS, &output) != LY_SUCCESS) {
        return nc_server_reply_ok();
    }
    bool any = false;
    for (const auto& [name, value] : result.items()) {
        // A result the action does not declare (the gate's refusal) has no output leaf.
        any = lyd_new_term(output, nullptr, name.c_str(), cli::renderText(value).c_str(), 1,
                           nullptr) == LY_SUCCESS ||
              any;
    }
    if (!any) {
        lyd_free_all(output);
        return nc_server_reply_ok();
    }
    // The reply holds the action node alone (the library prints its output leaves and frees the
    // node with them); the copies of the MO entries above it are freed here.
    lyd_node* top = output;
    while (lyd_parent(top) != nullptr) {
        top = lyd_parent(top);
    }
    lyd_unlink_tree(output);
    if (top != output) {
        lyd_free_all(top);
    }
    return nc_server_reply_data(output, NC_WD_EXPLICIT, NC_PARAMTYPE_FREE);
}

}  // namespace

const lyd_node* actionNode(const lyd_node* rpc) {
    const lyd_node* found = nullptr;
    const lyd_node* node = nullptr;
    LYD_TREE_DFS_BEGIN(rpc, node) {
        if (found == nullptr && node->schema != nullptr && node->schema->nodetype == LYS_ACTION) {
            found = node;
        }
        LYD_TREE_DFS_END(rpc, node);
    }
    return found;
}

nc_server_reply* runAction(NetconfServer& server, const lyd_node* action) {
    const ly_ctx* context = LYD_CTX(action);
    const cli::ModelView& model = server.model();
    std::string dn;
    Id moc = cli::kNone;
    Id declared = cli::kNone;
    std::string error;
    cli::Pairs given;
    for (const lyd_node* child = lyd_child(action); child != nullptr; child = child->next) {
        given.emplace_back(child->schema->name, nodeValue(child));
    }
    cli::NamedValues parameters;
    if (!actionDn(model, action, &dn, &moc, &error) ||
        !model.resolveAction(moc, action->schema->name, &declared, &error) ||
        !cli::actionParameters(model, declared, given, &parameters, &error)) {
        return errorReply(context, NC_ERR_INVALID_VALUE, error);
    }
    log::LogCapture logged(VESK_LOG_INFO);
    cli::Executor executor(server.host(), model);
    cli::Answer answer;
    executor.action(dn, action->schema->name, model.actionResult(declared), parameters.list(),
                    &answer);
    if (answer.failed()) {
        std::string message = answer.error;
        for (const std::string& line : answer.messages) {
            message += "\nmessage: " + line;
        }
        message += reasonText(logged, answer.asked);
        return errorReply(context, NC_ERR_OP_FAILED, message, answer.asked, answer.code);
    }
    return resultReply(action, answer.data);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

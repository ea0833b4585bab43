// <edit-config>: the edit is parsed again, strictly, against the station model (what does not
// fit is refused before the agent is asked), then mapped onto the agent in one host transaction:
// begun and joined, the writes, then prepare and commit, or an abort at the first refusal.
#include <libyang/libyang.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "host/netconf/AgentEdits.h"
#include "host/netconf/Operations.h"
#include "host/netconf/Replies.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

struct EditOptions {
    EditOp defaultOp = EditOp::kMerge;
    bool testOnly = false;
    bool keepGoing = false;  // continue-on-error
};

std::string leafText(const lyd_node* rpc, const char* name) {
    for (const lyd_node* child = lyd_child(rpc); child != nullptr; child = child->next) {
        if (std::strcmp(child->schema->name, name) == 0) {
            const char* value = lyd_get_value(child);
            return value != nullptr ? value : "";
        }
    }
    return "";
}

const lyd_node* configOf(const lyd_node* rpc) {
    for (const lyd_node* child = lyd_child(rpc); child != nullptr; child = child->next) {
        if (std::strcmp(child->schema->name, "config") == 0) {
            return child;
        }
    }
    return nullptr;
}

EditOptions optionsOf(const lyd_node* rpc) {
    EditOptions options;
    editOpNamed(leafText(rpc, "default-operation"), &options.defaultOp);
    options.testOnly = leafText(rpc, "test-option") == "test-only";
    options.keepGoing = leafText(rpc, "error-option") == "continue-on-error";
    return options;
}

// The edit's data parsed against the station model. False, with the model library's reason.
bool parseEdit(const lyd_node* config, lyd_node** edit, std::string* error) {
    const ly_ctx* context = LYD_CTX(config);
    const auto* any = reinterpret_cast<const lyd_node_any*>(config);
    char* xml = nullptr;
    // The edit is printed whole (each top node with its namespace) and read again.
    LY_ERR printed = any->value_type == LYD_ANYDATA_DATATREE
                         ? lyd_print_mem(&xml, any->value.tree, LYD_XML,
                                         LYD_PRINT_WITHSIBLINGS | LYD_PRINT_SHRINK)
                         : lyd_any_value_str(config, &xml);
    if (printed != LY_SUCCESS) {
        *error = "cannot read the edit";
        return false;
    }
    LY_ERR parsed =
        lyd_parse_data_mem(context, xml != nullptr ? xml : "", LYD_XML,
                           LYD_PARSE_ONLY | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, 0, edit);
    std::free(xml);
    if (parsed != LY_SUCCESS) {
        const char* message = ly_errmsg(context);
        const char* path = ly_errpath(context);
        *error = std::string("the edit does not fit the model: ") +
                 (message != nullptr ? message : "invalid data") +
                 (path != nullptr ? std::string(" (at ") + path + ")" : "");
        return false;
    }
    return true;
}

NC_ERR tagOf(EditRefusal::Tag tag) {
    switch (tag) {
        case EditRefusal::kInvalidValue:
            return NC_ERR_INVALID_VALUE;
        case EditRefusal::kDataExists:
            return NC_ERR_DATA_EXISTS;
        case EditRefusal::kDataMissing:
            return NC_ERR_DATA_MISSING;
        default:
            return NC_ERR_OP_FAILED;
    }
}

nc_server_reply* refusalReply(const ly_ctx* context, const std::vector<EditRefusal>& refusals,
                              const log::LogCapture& logged) {
    bool agentRefused =
        std::any_of(refusals.begin(), refusals.end(), [](const EditRefusal& r) { return r.asked; });
    const std::string reasons = reasonText(logged, agentRefused);
    nc_server_reply* reply = nullptr;
    for (const EditRefusal& refusal : refusals) {
        std::string message = refusal.message + (&refusal == &refusals.back() ? reasons : "");
        if (reply == nullptr) {
            reply = errorReply(context, tagOf(refusal.tag), message, refusal.asked, refusal.code);
        } else {
            addError(reply, context, tagOf(refusal.tag), message, refusal.asked, refusal.code);
        }
    }
    return reply;
}

// Runs the edit in one transaction; the refusals of the mapper and of the commit.
std::vector<EditRefusal> runEdit(NetconfServer& server, const lyd_node* edit,
                                 const EditOptions& options) {
    std::vector<EditRefusal> refusals;
    cli::Executor executor(server.host(), server.model());
    cli::Answer answer;
    executor.begin(&answer);
    if (answer.failed()) {
        refusals.push_back({EditRefusal::kOperationFailed, answer.error, "", answer.code, true});
        return refusals;
    }
    AgentEdits target(executor, server.model());
    bool ok = EditMapper(server.model(), target)
                  .apply(edit, options.defaultOp, options.keepGoing, &refusals);
    cli::Answer ended;
    if ((!ok && !options.keepGoing) || options.testOnly) {
        executor.abort(&ended);
        return refusals;
    }
    executor.commit(&ended);
    if (ended.failed()) {
        std::string message = ended.error;
        for (const std::string& line : ended.messages) {
            message += "\nmessage: " + line;
        }
        refusals.push_back({EditRefusal::kOperationFailed, message, "", ended.code, true});
    }
    return refusals;
}

}  // namespace

std::string reasonText(const log::LogCapture& logged, bool agentRefused) {
    std::vector<std::string> reasons;
    std::string text;
    for (const log::LogLine& line : logged.lines()) {
        if (line.level > VESK_LOG_WARNING && !agentRefused) {
            continue;
        }
        std::string reason = line.text.substr(0, line.text.find_last_not_of(" \r\n") + 1);
        if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
            reasons.push_back(reason);
            text += "\nreason: " + reason;
        }
    }
    return text;
}

nc_server_reply* editConfig(NetconfServer& server, const lyd_node* rpc, nc_session* session) {
    const ly_ctx* context = LYD_CTX(rpc);
    uint32_t holder = server.lockHolder();
    if (holder != 0 && holder != nc_session_get_id(session)) {
        return lockedReply(context, NC_ERR_IN_USE, holder);
    }
    const lyd_node* config = configOf(rpc);
    if (config == nullptr) {
        return errorReply(context, NC_ERR_OP_NOT_SUPPORTED, "this server takes edits as <config>");
    }
    lyd_node* edit = nullptr;
    std::string error;
    if (!parseEdit(config, &edit, &error)) {
        return errorReply(context, NC_ERR_INVALID_VALUE, error);
    }
    log::LogCapture logged(VESK_LOG_INFO);
    std::vector<EditRefusal> refusals = runEdit(server, edit, optionsOf(rpc));
    lyd_free_siblings(edit);
    return refusals.empty() ? nc_server_reply_ok() : refusalReply(context, refusals, logged);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

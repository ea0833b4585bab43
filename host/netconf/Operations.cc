#include "host/netconf/Operations.h"

#include <cstdlib>
#include <cstring>
#include <map>

#include "host/netconf/Filter.h"
#include "host/netconf/Replies.h"
#include "host/netconf/StationReader.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

// The child `name` of `node`, or null.
const lyd_node* childNamed(const lyd_node* node, const char* name) {
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
        if (std::strcmp(child->schema->name, name) == 0) {
            return child;
        }
    }
    return nullptr;
}

// Whether the datastore named below `container` ("source", "target") is running.
bool onRunning(const lyd_node* rpc, const char* container) {
    const lyd_node* holder = childNamed(rpc, container);
    return holder != nullptr && childNamed(holder, "running") != nullptr;
}

nc_server_reply* notRunning(const lyd_node* rpc) {
    return errorReply(LYD_CTX(rpc), NC_ERR_OP_NOT_SUPPORTED,
                      "this server has the running datastore only");
}

// get and get-config: the station read through the agent in a transaction of its own, then
// filtered.
nc_server_reply* readData(NetconfServer& server, const lyd_node* rpc, bool withState) {
    const ly_ctx* context = LYD_CTX(rpc);
    Filter filter;
    std::string error;
    if (!readFilter(childNamed(rpc, "filter"), server.model(), &filter, &error)) {
        return errorReply(context, NC_ERR_INVALID_VALUE, error);
    }
    cli::Executor executor(server.host(), server.model());
    cli::Answer begun;
    executor.begin(&begun);
    if (begun.failed()) {
        return errorReply(context, NC_ERR_OP_FAILED, begun.error, begun.asked, begun.code);
    }
    StationReader reader(executor, server.model(), server.schemas().station(), withState);
    lyd_node* tree = nullptr;
    OrlReturnT code = reader.read(filter.scope, &tree, &error);
    cli::Answer ended;
    executor.abort(&ended);
    // A filter that names an MO the station lacks chooses nothing.
    if (code != OrlOk && !(code == OrlNotExist && !filter.scope.empty())) {
        lyd_free_siblings(tree);
        return errorReply(context, NC_ERR_OP_FAILED, error, true, code);
    }
    lyd_node* chosen = tree;
    if (!filter.all) {
        bool applied = applyFilter(filter, tree, &chosen, &error);
        lyd_free_siblings(tree);
        if (!applied) {
            return errorReply(context, NC_ERR_INVALID_VALUE, error);
        }
    }
    return dataReply(rpc, chosen);
}

nc_server_reply* lockRunning(NetconfServer& server, const lyd_node* rpc, nc_session* session) {
    if (!onRunning(rpc, "target")) {
        return notRunning(rpc);
    }
    uint32_t holder = 0;
    if (!server.lock(nc_session_get_id(session), &holder)) {
        return lockedReply(LYD_CTX(rpc), NC_ERR_LOCK_DENIED, holder);
    }
    return nc_server_reply_ok();
}

nc_server_reply* unlockRunning(NetconfServer& server, const lyd_node* rpc, nc_session* session) {
    if (!onRunning(rpc, "target")) {
        return notRunning(rpc);
    }
    if (!server.unlock(nc_session_get_id(session))) {
        return errorReply(LYD_CTX(rpc), NC_ERR_OP_FAILED,
                          "this session does not hold the running datastore's lock");
    }
    return nc_server_reply_ok();
}

nc_server_reply* killSession(NetconfServer& server, const lyd_node* rpc, nc_session* session) {
    const lyd_node* id = childNamed(rpc, "session-id");
    uint32_t target = id != nullptr ? std::strtoul(lyd_get_value(id), nullptr, 10) : 0;
    if (target == nc_session_get_id(session)) {
        return errorReply(LYD_CTX(rpc), NC_ERR_INVALID_VALUE,
                          "a session ends itself with close-session");
    }
    if (!server.kill(target, nc_session_get_id(session))) {
        return errorReply(LYD_CTX(rpc), NC_ERR_INVALID_VALUE,
                          "no session " + std::to_string(target));
    }
    return nc_server_reply_ok();
}

// get-schema of a module or submodule of the context, as YANG text.
nc_server_reply* getSchema(const lyd_node* rpc) {
    const ly_ctx* context = LYD_CTX(rpc);
    const lyd_node* id = childNamed(rpc, "identifier");
    const lyd_node* version = childNamed(rpc, "version");
    const lyd_node* format = childNamed(rpc, "format");
    const std::string name = id != nullptr ? lyd_get_value(id) : "";
    const char* revision =
        version != nullptr && *lyd_get_value(version) ? lyd_get_value(version) : nullptr;
    if (format != nullptr && std::string(lyd_get_value(format)).find("yang") == std::string::npos) {
        return errorReply(context, NC_ERR_INVALID_VALUE, "schemas are given as YANG only");
    }
    const lys_module* module = revision != nullptr
                                   ? ly_ctx_get_module(context, name.c_str(), revision)
                                   : ly_ctx_get_module_latest(context, name.c_str());
    const lysp_submodule* submodule =
        module == nullptr ? ly_ctx_get_submodule(context, name.c_str(), revision) : nullptr;
    char* text = nullptr;
    ly_out* out = nullptr;
    ly_out_new_memory(&text, 0, &out);
    LY_ERR printed = module != nullptr ? lys_print_module(out, module, LYS_OUT_YANG, 0, 0)
                     : submodule != nullptr
                         ? lys_print_submodule(out, submodule, LYS_OUT_YANG, 0, 0)
                         : LY_ENOTFOUND;
    ly_out_free(out, nullptr, 0);
    lyd_node* output = nullptr;
    if (printed != LY_SUCCESS || lyd_dup_single(rpc, nullptr, 0, &output) != LY_SUCCESS ||
        lyd_new_any(output, nullptr, "data", text, 1, LYD_ANYDATA_STRING, 1, nullptr) !=
            LY_SUCCESS) {
        std::free(text);
        lyd_free_tree(output);
        return errorReply(context, NC_ERR_INVALID_VALUE, "no schema " + name);
    }
    return nc_server_reply_data(output, NC_WD_EXPLICIT, NC_PARAMTYPE_FREE);
}

// Binds the request's host session to the serving thread while the request runs.
class BoundSession {
  public:
    BoundSession(Sessions& sessions, uint64_t session) : _sessions(sessions) {
        _sessions.bind(session);
    }
    ~BoundSession() { _sessions.unbind(); }

  private:
    Sessions& _sessions;
};

}  // namespace

nc_server_reply* handleRpc(NetconfServer& server, const lyd_node* rpc, nc_session* session) {
    auto* data = static_cast<NetconfSession*>(nc_session_get_data(session));
    const std::string name = rpc->schema->name;
    if (data == nullptr) {
        return errorReply(LYD_CTX(rpc), NC_ERR_OP_FAILED, "the session is closing");
    }
    BoundSession bound(server.host().sessions(), data->hostSession);
    if (rpc->schema->nodetype != LYS_RPC) {
        const lyd_node* action = actionNode(rpc);
        return action != nullptr ? runAction(server, action)
                                 : errorReply(LYD_CTX(rpc), NC_ERR_OP_NOT_SUPPORTED,
                                              "this server does not carry " + name);
    }
    if (name == "get-schema") {
        return getSchema(rpc);
    }
    if (name == "get-config") {
        return onRunning(rpc, "source") ? readData(server, rpc, false) : notRunning(rpc);
    }
    if (name == "get") {
        return readData(server, rpc, true);
    }
    if (name == "edit-config") {
        return editConfig(server, rpc, session);
    }
    if (name == "lock") {
        return lockRunning(server, rpc, session);
    }
    if (name == "unlock") {
        return unlockRunning(server, rpc, session);
    }
    if (name == "kill-session") {
        return killSession(server, rpc, session);
    }
    if (name == "create-subscription") {
        return createSubscription(server, rpc, session);
    }
    if (name == "validate" && onRunning(rpc, "source")) {
        return nc_server_reply_ok();  // running is valid by construction: every commit was
    }
    return errorReply(LYD_CTX(rpc), NC_ERR_OP_NOT_SUPPORTED, "this server does not carry " + name);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

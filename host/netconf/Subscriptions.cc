// <create-subscription>: the station's change notifications, through a consumer of the host's
// event router, sent to the session as vesk-notifications:mo-change notifications. The consumer
// takes every change; the subscription's filter chooses among them here.
#include <libyang/libyang.h>

#include <cstring>
#include <memory>

#include "host/cli/NotificationView.h"
#include "host/events/EventRouter.h"
#include "host/netconf/DataNodes.h"
#include "host/netconf/Filter.h"
#include "host/netconf/Operations.h"
#include "host/netconf/Replies.h"
#include "host/netconf/StationReader.h"
#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

constexpr char kStream[] = "NETCONF";

const lyd_node* subscriptionChild(const lyd_node* node, const char* name) {
    for (const lyd_node* child = firstChild(node); child != nullptr; child = child->next) {
        if (nodeName(child) == name) {
            return child;
        }
    }
    return nullptr;
}

// The notification as a data tree of vesk-notifications:mo-change.
lyd_node* notificationTree(const lys_module* module, const cli::Json& json) {
    lyd_node* tree = nullptr;
    if (lyd_new_inner(nullptr, module, "mo-change", 0, &tree) != LY_SUCCESS) {
        return nullptr;
    }
    lyd_new_term(tree, nullptr, "notification",
                 json.value("notification", cli::Json(0)).dump().c_str(), 0, nullptr);
    lyd_new_term(tree, nullptr, "dn", json.value("dn", std::string()).c_str(), 0, nullptr);
    if (json.contains("event")) {
        lyd_new_term(tree, nullptr, "event", json["event"].get<std::string>().c_str(), 0, nullptr);
    }
    const cli::Json attributes = json.value("attributes", cli::Json::object());
    for (auto it = attributes.begin(); it != attributes.end(); ++it) {
        lyd_node* entry = nullptr;
        if (lyd_new_list2(tree, nullptr, "attribute", keyPredicate("name", it.key()).c_str(), 0,
                          &entry) == LY_SUCCESS &&
            !it->is_null()) {
            lyd_new_term(entry, nullptr, "value", cli::renderText(*it).c_str(), 0, nullptr);
        }
    }
    return tree;
}

// Whether the subtree filter `node` (a mo-change) chooses the notification: each content match
// equals its field, and each attribute entry named is among the changed attributes.
bool chooses(const lyd_node* node, const cli::Json& json) {
    if (nodeName(node) != "mo-change") {
        return false;
    }
    for (const lyd_node* match = firstChild(node); match != nullptr; match = match->next) {
        const std::string field = nodeName(match);
        if (field == "attribute") {
            const lyd_node* name = subscriptionChild(match, "name");
            if (name != nullptr &&
                !json.value("attributes", cli::Json::object()).contains(nodeValue(name))) {
                return false;
            }
        } else if (!nodeValue(match).empty() &&
                   scalarText(json.value(field, cli::Json(""))) != nodeValue(match)) {
            return false;
        }
    }
    return true;
}

// Sends one change notification to `session` when `filter` chooses it.
void deliver(NetconfServer& server, nc_session* session, const Filter& filter,
             const lyd_node* subtree, const OrlOamSpiCmEvent_Notification_1T& record) {
    const cli::Json json = cli::notificationJson(record, server.model());
    if (subtree != nullptr && !chooses(subtree, json)) {
        return;
    }
    lyd_node* tree = notificationTree(server.schemas().notifications(), json);
    if (tree == nullptr) {
        return;
    }
    if (!filter.all && subtree == nullptr) {
        lyd_node* chosen = nullptr;
        std::string ignored;
        applyFilter(filter, tree, &chosen, &ignored);
        if (chosen == nullptr) {
            lyd_free_siblings(tree);
            return;
        }
        lyd_free_siblings(chosen);
    }
    nc_server_notif* notification = nc_server_notif_new(
        tree, strdup(json.value("time", std::string()).c_str()), NC_PARAMTYPE_FREE);
    if (nc_server_notif_send(session, notification, 5000) != NC_MSG_NOTIF) {
        VESK_WARNING("NETCONF session %u: notification %s not sent", nc_session_get_id(session),
                     json.value("notification", cli::Json(0)).dump().c_str());
    }
    nc_server_notif_free(notification);
}

}  // namespace

nc_server_reply* createSubscription(NetconfServer& server, const lyd_node* rpc,
                                    nc_session* session) {
    const ly_ctx* context = LYD_CTX(rpc);
    auto* data = static_cast<NetconfSession*>(nc_session_get_data(session));
    const lyd_node* stream = subscriptionChild(rpc, "stream");
    if (stream != nullptr && nodeValue(stream) != kStream) {
        return errorReply(context, NC_ERR_INVALID_VALUE,
                          "no stream " + nodeValue(stream) + " (this server has NETCONF)");
    }
    if (subscriptionChild(rpc, "startTime") != nullptr) {
        return errorReply(context, NC_ERR_OP_FAILED,
                          "this server keeps no notifications to replay");
    }
    if (data->consumer != 0) {
        return errorReply(context, NC_ERR_IN_USE, "this session has a subscription already");
    }
    Filter filter;
    std::string error;
    if (!readFilter(subscriptionChild(rpc, "filter"), server.model(), &filter, &error)) {
        return errorReply(context, NC_ERR_INVALID_VALUE, error);
    }
    // A subtree filter is kept as given and matched field by field.
    const lyd_node* filterNode = subscriptionChild(rpc, "filter");
    std::shared_ptr<lyd_node> subtree;
    const auto* any = reinterpret_cast<const lyd_node_any*>(filterNode);
    if (filterNode != nullptr && netconfAttribute(filterNode, "type") != "xpath" &&
        any->value_type == LYD_ANYDATA_DATATREE && any->value.tree != nullptr) {
        lyd_node* copy = nullptr;
        lyd_dup_single(any->value.tree, nullptr, LYD_DUP_RECURSIVE, &copy);
        subtree.reset(copy, [](lyd_node* node) { lyd_free_tree(node); });
    }
    events::EventRouter& router = server.host().events();
    NetconfServer* owner = &server;
    unsigned long consumer = router.addConsumer(
        "NETCONF session " + std::to_string(nc_session_get_id(session)),
        [owner, session, filter, subtree](unsigned long, const char*, const void* record) {
            deliver(*owner, session, filter, subtree.get(),
                    *static_cast<const OrlOamSpiCmEvent_Notification_1T*>(record));
        });
    nc_session_inc_notif_status(session);
    OrlReturnT code = router.subscribe(consumer, events::kCmEventType, {});
    if (code != OrlOk) {
        router.removeConsumer(consumer);
        nc_session_dec_notif_status(session);
        return errorReply(context, NC_ERR_OP_FAILED, "the event router refused the subscription",
                          true, code);
    }
    data->consumer = consumer;
    return nc_server_reply_ok();
}

void endSubscription(NetconfServer& server, NetconfSession& data) {
    if (data.consumer != 0) {
        server.host().events().removeConsumer(data.consumer);
        data.consumer = 0;
    }
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

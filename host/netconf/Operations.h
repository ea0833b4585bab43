// The NETCONF operations on the running datastore. Each runs on the thread serving the request,
// with the session's host session bound to it, and answers with the reply to send.
#pragma once

#include <nc_server.h>

#include "host/netconf/NetconfServer.h"

namespace vesk {
namespace log {
class LogCapture;
}
}  // namespace vesk

namespace vesk {
namespace host {
namespace netconf {

// Dispatches by the operation's name; operation-not-supported for those this server lacks.
nc_server_reply* handleRpc(NetconfServer& server, const lyd_node* rpc, nc_session* session);

// <edit-config> on running: one host transaction, committed when every edit was taken.
nc_server_reply* editConfig(NetconfServer& server, const lyd_node* rpc, nc_session* session);
// <create-subscription> on the stream NETCONF: the station's change notifications.
nc_server_reply* createSubscription(NetconfServer& server, const lyd_node* rpc,
                                    nc_session* session);
// The action node of a request (the node itself, or below the MO entries the request carries);
// null when it holds none.
const lyd_node* actionNode(const lyd_node* rpc);
// <action>: the action on its MO through the agent; its output leaves, or the agent's refusal.
nc_server_reply* runAction(NetconfServer& server, const lyd_node* action);
// "\nreason: LINE" for each warning and error line logged (and the information lines too when
// the agent refused: a rule tells why at that level), each once.
std::string reasonText(const log::LogCapture& logged, bool agentRefused);
// Ends the session's subscription, if any (waits for a delivery in progress).
void endSubscription(NetconfServer& server, NetconfSession& data);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

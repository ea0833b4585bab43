// The NETCONF operations on the running datastore. Each runs on the thread serving the request,
// with the session's host session bound to it, and answers with the reply to send.
#pragma once

#include <nc_server.h>

#include "host/netconf/NetconfServer.h"

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
// Ends the session's subscription, if any (waits for a delivery in progress).
void endSubscription(NetconfServer& server, NetconfSession& data);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

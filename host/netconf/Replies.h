// The answers of the NETCONF server: data replies and rpc-errors, built on the request's
// context. An error's message carries the operator messages and the reasons of a refusal, its
// error-info the agent's return code.
#pragma once

#include <string>

#include <nc_server.h>

#include "platform/orl/OrlTypes.h"

namespace vesk {
namespace host {
namespace netconf {

// The namespace of the error-info elements of this server.
constexpr char kErrorInfoNamespace[] = "urn:vesk:params:xml:ns:yang:vesk-station";

// An rpc-error of `tag` (application layer) with `message`, and the agent's `code` in its
// error-info when `asked`.
nc_server_reply* errorReply(const ly_ctx* context, NC_ERR tag, const std::string& message,
                            bool asked = false, OrlReturnT code = 0);
// Adds one more error like errorReply's to `reply` (an error reply).
void addError(nc_server_reply* reply, const ly_ctx* context, NC_ERR tag, const std::string& message,
              bool asked, OrlReturnT code);
// A lock-denied or in-use error naming the session that holds the lock.
nc_server_reply* lockedReply(const ly_ctx* context, NC_ERR tag, uint32_t holder);
// The reply of get, get-config or get-schema: the request's output with `data` (taken, null for
// none) in its anyxml "data".
nc_server_reply* dataReply(const lyd_node* rpc, lyd_node* data);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

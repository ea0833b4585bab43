// Small questions to data nodes of the model library that hold for nodes with a schema and for
// opaque ones (what a request carries when it does not fit the model) alike.
#pragma once

#include <string>

struct lyd_node;
struct ly_ctx;

namespace vesk {
namespace host {
namespace netconf {

// The node's name.
std::string nodeName(const lyd_node* node);
// The name of the node's module, or "" for an opaque node of a namespace the context lacks.
std::string nodeModule(const ly_ctx* context, const lyd_node* node);
// The node's value with surrounding blanks trimmed; "" for an inner node.
std::string nodeValue(const lyd_node* node);
// The first child, for nodes with a schema and opaque ones alike.
lyd_node* firstChild(const lyd_node* node);
// The value of metadata "ietf-netconf:NAME" (or an attribute NAME on an opaque node), or "".
std::string netconfAttribute(const lyd_node* node, const char* name);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

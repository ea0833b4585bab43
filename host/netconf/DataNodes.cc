#include "host/netconf/DataNodes.h"

#include <libyang/libyang.h>

#include <cstring>

namespace vesk {
namespace host {
namespace netconf {

namespace {

const lyd_node_opaq* opaque(const lyd_node* node) {
    return node->schema == nullptr ? reinterpret_cast<const lyd_node_opaq*>(node) : nullptr;
}

}  // namespace

std::string nodeName(const lyd_node* node) {
    const lyd_node_opaq* o = opaque(node);
    return o != nullptr ? o->name.name : node->schema->name;
}

std::string nodeModule(const ly_ctx* context, const lyd_node* node) {
    const lyd_node_opaq* o = opaque(node);
    if (o == nullptr) {
        return node->schema->module->name;
    }
    const char* ns = o->name.module_ns;
    const lys_module* module =
        ns != nullptr ? ly_ctx_get_module_implemented_ns(context, ns) : nullptr;
    return module != nullptr ? module->name : "";
}

std::string nodeValue(const lyd_node* node) {
    const lyd_node_opaq* o = opaque(node);
    const char* raw = o != nullptr ? o->value : lyd_get_value(node);
    std::string text = raw != nullptr ? raw : "";
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return "";
    }
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

lyd_node* firstChild(const lyd_node* node) {
    return lyd_child(node);
}

std::string netconfAttribute(const lyd_node* node, const char* name) {
    const lyd_node_opaq* o = opaque(node);
    if (o != nullptr) {
        for (const lyd_attr* attr = o->attr; attr != nullptr; attr = attr->next) {
            if (std::strcmp(attr->name.name, name) == 0) {
                return attr->value;
            }
        }
        return "";
    }
    for (const lyd_meta* meta = node->meta; meta != nullptr; meta = meta->next) {
        if (std::strcmp(meta->name, name) == 0 &&
            std::strcmp(meta->annotation->module->name, "ietf-netconf") == 0) {
            return lyd_get_meta_value(meta);
        }
    }
    return "";
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

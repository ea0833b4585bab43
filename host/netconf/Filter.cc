#include "host/netconf/Filter.h"

#include <libyang/libyang.h>

#include "host/netconf/DataNodes.h"
#include "host/netconf/StationReader.h"

namespace vesk {
namespace host {
namespace netconf {

using cli::kNone;

namespace {

bool isContentMatch(const lyd_node* node) {
    return firstChild(node) == nullptr && !nodeValue(node).empty();
}

std::string step(const ly_ctx* context, const lyd_node* node) {
    return nodeModule(context, node) + ":" + nodeName(node);
}

// The XPath expressions of the filter node `node`, below `path`.
void subtreeXpaths(const ly_ctx* context, const lyd_node* node, const std::string& path,
                   std::vector<std::string>* out) {
    if (nodeModule(context, node).empty()) {
        return;  // a namespace no module has: it matches nothing
    }
    std::string here = path + "/" + step(context, node);
    std::vector<const lyd_node*> others;
    for (const lyd_node* child = firstChild(node); child != nullptr; child = child->next) {
        if (isContentMatch(child)) {
            here += keyPredicate(step(context, child), nodeValue(child));
        } else {
            others.push_back(child);
        }
    }
    if (others.empty()) {
        out->push_back(here);
        return;
    }
    // Content matches are part of the answer beside the nodes chosen below them.
    for (const lyd_node* child = firstChild(node); child != nullptr; child = child->next) {
        if (isContentMatch(child)) {
            out->push_back(here + "/" + step(context, child));
        }
    }
    for (const lyd_node* child : others) {
        subtreeXpaths(context, child, here, out);
    }
}

// The dn a subtree filter fixes by key content matches on single containment steps.
std::string subtreeScope(const ly_ctx* context, const lyd_node* node, const cli::ModelView& model) {
    std::string dn;
    cli::Id moc = kNone;
    while (node != nullptr && node->next == nullptr && !nodeModule(context, node).empty()) {
        std::string className = nodeName(node);
        cli::Id next = kNone;
        std::string ignored;
        bool known = moc == kNone ? className == model.className(model.tables().root)
                                  : model.resolveChildClass(moc, className, &next, &ignored);
        next = moc == kNone ? model.tables().root : next;
        if (!known) {
            break;
        }
        const std::string& key = model.attributeName(model.attributes(next)[0]);
        std::string id;
        const lyd_node* deeper = nullptr;
        int others = 0;
        for (const lyd_node* child = firstChild(node); child != nullptr; child = child->next) {
            if (isContentMatch(child) && nodeName(child) == key) {
                id = nodeValue(child);
            } else if (firstChild(child) != nullptr) {
                deeper = child;
                ++others;
            } else {
                others += 2;  // a selection or another content match: the MO is read whole
            }
        }
        if (id.empty()) {
            break;
        }
        dn += (dn.empty() ? "" : ",") + className + "=" + id;
        moc = next;
        node = others == 1 ? deeper : nullptr;
    }
    return dn;
}

}  // namespace

bool readFilter(const lyd_node* filter, const cli::ModelView& model, Filter* out,
                std::string* error) {
    *out = Filter();
    if (filter == nullptr) {
        return true;
    }
    out->all = false;
    std::string type = netconfAttribute(filter, "type");
    if (type == "xpath") {
        std::string select = netconfAttribute(filter, "select");
        if (select.empty()) {
            *error = "an xpath filter needs its select expression";
            return false;
        }
        out->xpaths.push_back(select);
        return true;
    }
    if (!type.empty() && type != "subtree") {
        *error = "unknown filter type '" + type + "'";
        return false;
    }
    const lyd_node_any* any = reinterpret_cast<const lyd_node_any*>(filter);
    if (any->value_type != LYD_ANYDATA_DATATREE || any->value.tree == nullptr) {
        return true;  // an empty subtree filter chooses nothing
    }
    const ly_ctx* context = LYD_CTX(filter);
    for (const lyd_node* node = any->value.tree; node != nullptr; node = node->next) {
        std::vector<std::string> paths;
        subtreeXpaths(context, node, "", &paths);
        out->xpaths.insert(out->xpaths.end(), paths.begin(), paths.end());
    }
    out->scope = subtreeScope(context, any->value.tree, model);
    return true;
}

bool applyFilter(const Filter& filter, const lyd_node* tree, lyd_node** out, std::string* error) {
    *out = nullptr;
    if (filter.all) {
        return tree == nullptr ||
               lyd_dup_siblings(tree, nullptr, LYD_DUP_RECURSIVE, out) == LY_SUCCESS;
    }
    for (const std::string& xpath : filter.xpaths) {
        ly_set* found = nullptr;
        if (tree == nullptr) {
            continue;
        }
        if (lyd_find_xpath(tree, xpath.c_str(), &found) != LY_SUCCESS) {
            *error = "cannot evaluate '" + xpath + "': " + ly_errmsg(LYD_CTX(tree));
            return false;
        }
        for (uint32_t i = 0; i < found->count; ++i) {
            lyd_node* copy = nullptr;
            if (lyd_dup_single(found->dnodes[i], nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_PARENTS,
                               &copy) != LY_SUCCESS) {
                continue;
            }
            while (copy->parent != nullptr) {
                copy = lyd_parent(copy);
            }
            lyd_merge_siblings(out, copy, LYD_MERGE_DESTRUCT);
        }
        ly_set_free(found, nullptr);
    }
    return true;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

#include "host/netconf/EditMapper.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/netconf/DataNodes.h"
#include "host/netconf/StationReader.h"

namespace vesk {
namespace host {
namespace netconf {

using cli::Id;
using cli::Json;
using cli::kNone;

namespace {

// A value as the command line writes it, so that typed values read from the agent and texts
// of the request compare alike.
std::string canonical(const Json& value) {
    return value.is_null() ? std::string() : cli::renderText(value);
}

std::string text(const lyd_node* node) {
    const char* value = lyd_get_value(node);
    return value != nullptr ? value : "";
}

EditOp opOf(const lyd_node* node, EditOp inherited) {
    EditOp own = inherited;
    editOpNamed(netconfAttribute(node, "operation"), &own);
    return own;
}

// The struct members of an entry node (every child, keys included), as texts.
Json members(const lyd_node* entry, Json base, EditOp op, bool* missing) {
    for (const lyd_node* m = lyd_child(entry); m != nullptr; m = m->next) {
        EditOp mop = opOf(m, op == EditOp::kNone ? EditOp::kMerge : op);
        const std::string name = nodeName(m);
        if (mop == EditOp::kDelete || mop == EditOp::kRemove) {
            *missing = *missing || (mop == EditOp::kDelete && !base.contains(name));
            base.erase(name);
        } else {
            base[name] = text(m);
        }
    }
    return base;
}

// Whether struct entry `candidate` has the key members of `entry`.
bool sameKeys(const Json& candidate, const lyd_node* entry) {
    for (const lyd_node* m = lyd_child(entry); m != nullptr && lysc_is_key(m->schema);
         m = m->next) {
        if (!candidate.is_object() ||
            canonical(candidate.value(nodeName(m), Json())) != canonical(Json(text(m)))) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool editOpNamed(const std::string& name, EditOp* op) {
    static const std::map<std::string, EditOp> kNames = {
        {"merge", EditOp::kMerge},   {"replace", EditOp::kReplace}, {"create", EditOp::kCreate},
        {"delete", EditOp::kDelete}, {"remove", EditOp::kRemove},   {"none", EditOp::kNone}};
    auto found = kNames.find(name);
    if (found == kNames.end()) {
        return false;
    }
    *op = found->second;
    return true;
}

struct EditMapper::Group {
    Id attribute = kNone;
    std::vector<const lyd_node*> nodes;
    uint16_t kind = 0;  // the schema node type: leaf, leaf-list, container or list
};

bool EditMapper::refuse(EditRefusal::Tag tag, const std::string& dn, const std::string& message) {
    EditRefusal refusal;
    refusal.tag = tag;
    refusal.dn = dn;
    refusal.message = message;
    _refusals->push_back(refusal);
    return false;
}

bool EditMapper::apply(const lyd_node* edit, EditOp defaultOp, bool keepGoing,
                       std::vector<EditRefusal>* refusals) {
    _keepGoing = keepGoing;
    _refusals = refusals;
    bool ok = true;
    for (const lyd_node* node = edit; node != nullptr && (ok || keepGoing); node = node->next) {
        ok = applyMo(node, "", kNone, defaultOp) && ok;
    }
    return ok;
}

std::string EditMapper::childDn(const std::string& parentDn, Id moc, const std::string& id) const {
    return (parentDn.empty() ? "" : parentDn + ",") + _model.className(moc) + "=" + id;
}

bool EditMapper::isMo(Id moc, const lyd_node* node, Id* child) const {
    std::string ignored;
    return node->schema->nodetype == LYS_LIST &&
           _model.resolveChildClass(moc, node->schema->name, child, &ignored);
}

bool EditMapper::applyMo(const lyd_node* node, const std::string& parentDn, Id parent,
                         EditOp inherited) {
    Id moc = _model.tables().root;
    if (parent != kNone && !isMo(parent, node, &moc)) {
        return refuse(EditRefusal::kInvalidValue, parentDn,
                      std::string("no class ") + node->schema->name + " below " + parentDn);
    }
    const std::string id = text(lyd_child(node));
    const std::string dn = childDn(parentDn, moc, id);
    const EditOp op = opOf(node, inherited);
    const bool exists = _target.exists(dn);
    EditRefusal refusal;
    switch (op) {
        case EditOp::kDelete:
            if (!exists) {
                return refuse(EditRefusal::kDataMissing, dn, dn + " does not exist");
            }
            [[fallthrough]];  // an existing MO goes either way
        case EditOp::kRemove:
            if (exists && !_target.remove(dn, moc, &refusal)) {
                _refusals->push_back(refusal);
                return false;
            }
            return true;
        case EditOp::kCreate:
            if (exists) {
                return refuse(EditRefusal::kDataExists, dn, dn + " exists already");
            }
            return createMo(node, parentDn, parent, moc, id);
        case EditOp::kNone:
            if (!exists) {
                return refuse(EditRefusal::kDataMissing, dn, dn + " does not exist");
            }
            return applyChildren(node, dn, moc, op);
        default:
            if (!exists) {
                return createMo(node, parentDn, parent, moc, id);
            }
            return applyChildren(node, dn, moc, op) &&
                   (op != EditOp::kReplace || replaceRest(node, dn, moc));
    }
}

bool EditMapper::createMo(const lyd_node* node, const std::string& parentDn, Id parent, Id moc,
                          const std::string& id) {
    const std::string dn = childDn(parentDn, moc, id);
    std::map<std::string, Group> groups;
    std::vector<const lyd_node*> mos;
    split(node, moc, &groups, &mos);
    std::vector<std::pair<Id, Json>> attributes;
    for (const auto& entry : groups) {
        Json value;
        bool changed = false;
        if (!newValue(dn, entry.second, EditOp::kMerge, &value, &changed)) {
            return false;
        }
        if (!value.is_null()) {
            attributes.emplace_back(entry.second.attribute, value);
        }
    }
    EditRefusal refusal;
    if (!_target.create(parentDn, parent, moc, id, attributes, &refusal)) {
        _refusals->push_back(refusal);
        return false;
    }
    return applyMos(mos, dn, moc, EditOp::kMerge);
}

bool EditMapper::applyChildren(const lyd_node* node, const std::string& dn, Id moc, EditOp op) {
    std::map<std::string, Group> groups;
    std::vector<const lyd_node*> mos;
    split(node, moc, &groups, &mos);
    bool ok = true;
    for (auto it = groups.begin(); it != groups.end() && (ok || _keepGoing); ++it) {
        ok = applyAttribute(dn, moc, it->second, op) && ok;
    }
    return (ok || _keepGoing) && applyMos(mos, dn, moc, op) && ok;
}

void EditMapper::split(const lyd_node* node, Id moc, std::map<std::string, Group>* groups,
                       std::vector<const lyd_node*>* mos) const {
    for (const lyd_node* child = lyd_child(node)->next; child != nullptr; child = child->next) {
        Id ignored = kNone;
        if (isMo(moc, child, &ignored)) {
            mos->push_back(child);
            continue;
        }
        Group& group = (*groups)[child->schema->name];
        group.nodes.push_back(child);
        group.kind = child->schema->nodetype;
        std::string unknown;
        _model.resolveAttribute(moc, child->schema->name, &group.attribute, &unknown);
    }
}

bool EditMapper::applyMos(const std::vector<const lyd_node*>& mos, const std::string& dn, Id moc,
                          EditOp op) {
    bool ok = true;
    for (size_t i = 0; i < mos.size() && (ok || _keepGoing); ++i) {
        ok = applyMo(mos[i], dn, moc, op) && ok;
    }
    return ok;
}

bool EditMapper::replaceRest(const lyd_node* node, const std::string& dn, Id moc) {
    std::set<std::string> given;  // attribute names, and the rdns of child MOs
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
        Id mo = kNone;
        given.insert(isMo(moc, child, &mo) ? _model.className(mo) + "=" + text(lyd_child(child))
                                           : std::string(child->schema->name));
    }
    bool ok = true;
    EditRefusal refusal;
    for (Id attribute : _model.attributes(moc)) {
        const lysc_node* schema = _model.tables().attributes[attribute].node;
        bool writable = schema != nullptr && (schema->flags & LYS_CONFIG_W) && !lysc_is_key(schema);
        if (!writable || given.count(_model.attributeName(attribute)) > 0 ||
            _target.value(dn, attribute).is_null()) {
            continue;
        }
        if (!_target.set(dn, moc, attribute, Json(), &refusal)) {
            _refusals->push_back(refusal);
            ok = false;
        }
    }
    const model::ModelTables& tables = _model.tables();
    for (Id c = tables.mocs[moc].firstContainment; c != kNone && (ok || _keepGoing);
         c = tables.containments[c].next) {
        const Id child = tables.containments[c].child;
        for (const std::string& childDn : _target.children(dn, child)) {
            if (given.count(childDn.substr(childDn.rfind(',') + 1)) == 0 &&
                !_target.remove(childDn, child, &refusal)) {
                _refusals->push_back(refusal);
                ok = false;
            }
        }
    }
    return ok;
}

bool EditMapper::applyAttribute(const std::string& dn, Id moc, const Group& group, EditOp op) {
    Json value;
    bool changed = false;
    if (!newValue(dn, group, op, &value, &changed)) {
        return false;
    }
    EditRefusal refusal;
    if (changed && !_target.set(dn, moc, group.attribute, value, &refusal)) {
        _refusals->push_back(refusal);
        return false;
    }
    return true;
}

bool EditMapper::newValue(const std::string& dn, const Group& group, EditOp op, Json* value,
                          bool* changed) {
    const std::string& name = _model.attributeName(group.attribute);
    const Json current = _target.value(dn, group.attribute);
    const bool list = group.kind == LYS_LEAFLIST || group.kind == LYS_LIST;
    bool whole = op == EditOp::kReplace;
    for (const lyd_node* node : group.nodes) {
        whole = whole || opOf(node, op) == EditOp::kReplace;
    }
    Json result = list ? (whole || !current.is_array() ? Json::array() : current) : current;
    bool exists = false;
    bool missing = false;
    for (const lyd_node* node : group.nodes) {
        const EditOp own = opOf(node, op);
        if (own == EditOp::kNone) {
            continue;
        }
        // The value this node stands for, and where it sits in a list.
        auto match = [&](const Json& item) {
            return group.kind == LYS_LIST ? sameKeys(item, node)
                                          : canonical(item) == canonical(Json(text(node)));
        };
        auto at = list ? std::find_if(result.begin(), result.end(), match) : result.end();
        const bool present = list ? at != result.end() : !current.is_null();
        if (own == EditOp::kDelete || own == EditOp::kRemove) {
            missing = missing || (own == EditOp::kDelete && !present);
            if (list && present) {
                result.erase(at);
            } else if (!list) {
                result = Json();
            }
            continue;
        }
        exists = exists || (own == EditOp::kCreate && present);
        if (group.kind == LYS_LEAF || group.kind == LYS_LEAFLIST) {
            if (group.kind == LYS_LEAF) {
                result = text(node);
            } else if (!present) {
                result.push_back(text(node));
            }
            continue;
        }
        // A struct, or an entry of a struct list: members over what is there (unless replaced).
        const bool fresh = own == EditOp::kReplace || own == EditOp::kCreate || !present;
        Json base = fresh ? Json::object() : (list ? *at : current);
        Json merged = members(node, base, own, &missing);
        if (!list) {
            result = merged.empty() ? Json() : merged;
        } else if (present) {
            *at = merged;
        } else {
            result.push_back(merged);
        }
    }
    if (exists) {
        return refuse(EditRefusal::kDataExists, dn, name + " of " + dn + " has a value already");
    }
    if (missing) {
        return refuse(EditRefusal::kDataMissing, dn, name + " of " + dn + " has no such value");
    }
    *changed = canonical(result) != canonical(current);
    *value = result;
    return true;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

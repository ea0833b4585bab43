#include "host/netconf/StationReader.h"

#include <libyang/libyang.h>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace netconf {

using cli::Id;
using cli::Json;
using cli::kNone;

namespace {

// The id of the last rdn of `dn`.
std::string lastId(const std::string& dn) {
    size_t equals = dn.rfind('=');
    return equals == std::string::npos ? std::string() : dn.substr(equals + 1);
}

// The rdns of `dn`, each "Class=id".
std::vector<std::string> rdns(const std::string& dn) {
    std::vector<std::string> result;
    size_t start = 0;
    while (start <= dn.size() && !dn.empty()) {
        size_t comma = dn.find(',', start);
        result.push_back(dn.substr(start, comma - start));
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
    return result;
}

}  // namespace

std::string scalarText(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string keyPredicate(const std::string& name, const std::string& value) {
    char quote = value.find('\'') == std::string::npos ? '\'' : '"';
    return "[" + name + "=" + quote + value + quote + "]";
}

bool StationReader::wanted(Id attribute) const {
    const lysc_node* node = _model.tables().attributes[attribute].node;
    return _withState || node == nullptr || (node->flags & LYS_CONFIG_W) != 0;
}

lyd_node* StationReader::entry(const std::string& dn, Id moc, lyd_node* parent, lyd_node** tree) {
    const std::string& key = _model.attributeName(_model.attributes(moc)[0]);
    lyd_node* node = nullptr;
    if (lyd_new_list2(parent, _station, _model.className(moc).c_str(),
                      keyPredicate(key, lastId(dn)).c_str(), 0, &node) != LY_SUCCESS) {
        return nullptr;
    }
    if (parent == nullptr && *tree == nullptr) {
        *tree = node;
    } else if (parent == nullptr) {
        lyd_insert_sibling(*tree, node, tree);
    }
    return node;
}

OrlReturnT StationReader::read(const std::string& dn, lyd_node** tree, std::string* error) {
    if (dn.empty()) {
        const std::string& root = _model.className(_model.tables().root);
        for (const std::string& child : _executor.childDns("", root)) {
            OrlReturnT code = readMo(child, _model.tables().root, nullptr, tree, error);
            if (code != OrlOk) {
                return code;
            }
        }
        return OrlOk;
    }
    Id moc = kNone;
    if (!_model.resolveDn(dn, &moc, error)) {
        return OrlNotExist;
    }
    // The MOs above carry their keys alone.
    lyd_node* parent = nullptr;
    std::string above;
    std::vector<std::string> steps = rdns(dn);
    for (size_t i = 0; i + 1 < steps.size(); ++i) {
        above += (above.empty() ? "" : ",") + steps[i];
        Id step = kNone;
        _model.resolveDn(above, &step, error);
        parent = entry(above, step, parent, tree);
    }
    return readMo(dn, moc, parent, tree, error);
}

OrlReturnT StationReader::readMo(const std::string& dn, Id moc, lyd_node* parent, lyd_node** tree,
                                 std::string* error) {
    std::vector<Id> attributes;
    for (Id attribute : _model.attributes(moc)) {
        if (wanted(attribute)) {
            attributes.push_back(attribute);
        }
    }
    cli::Answer answer;
    _executor.get(dn, attributes, &answer);
    if (answer.failed()) {
        *error = answer.error;
        return answer.code != OrlOk ? answer.code : OrlNotExist;
    }
    lyd_node* node = entry(dn, moc, parent, tree);
    if (node == nullptr) {
        *error = "cannot show " + dn + " in the model";
        return OrlFailure;
    }
    for (size_t i = 1; i < attributes.size(); ++i) {
        const std::string& name = _model.attributeName(attributes[i]);
        addValue(node, attributes[i], answer.data.value(name, Json()));
    }
    const model::ModelTables& tables = _model.tables();
    for (Id c = tables.mocs[moc].firstContainment; c != kNone; c = tables.containments[c].next) {
        const Id child = tables.containments[c].child;
        for (const std::string& childDn : _executor.childDns(dn, tables.mocName(child))) {
            OrlReturnT code = readMo(childDn, child, node, tree, error);
            if (code != OrlOk) {
                return code;
            }
        }
    }
    return OrlOk;
}

void StationReader::addValue(lyd_node* entry, Id attribute, const Json& value) {
    const lysc_node* schema = _model.tables().attributes[attribute].node;
    const char* name = _model.attributeName(attribute).c_str();
    if (value.is_null() || schema == nullptr) {
        return;
    }
    const Json items = value.is_array() ? value : Json::array({value});
    for (const Json& item : items) {
        LY_ERR made = LY_SUCCESS;
        if (schema->nodetype & (LYS_LEAF | LYS_LEAFLIST)) {
            made = lyd_new_term(entry, nullptr, name, scalarText(item).c_str(), 0, nullptr);
        } else if (item.is_object()) {
            // A struct: a container, or an entry of a struct list keyed by its key members.
            std::string keys;
            for (const lysc_node* key = lysc_node_child(schema); key && lysc_is_key(key);
                 key = key->next) {
                keys += keyPredicate(key->name, scalarText(item.value(key->name, Json(""))));
            }
            lyd_node* holder = nullptr;
            made = schema->nodetype == LYS_LIST
                       ? lyd_new_list2(entry, nullptr, name, keys.c_str(), 0, &holder)
                       : lyd_new_inner(entry, nullptr, name, 0, &holder);
            for (auto it = item.begin(); made == LY_SUCCESS && it != item.end(); ++it) {
                const lysc_node* member =
                    lys_find_child(schema, schema->module, it.key().c_str(), 0, 0, 0);
                // Keys came with the entry; a member the model lacks is left out.
                if (!it->is_null() && member != nullptr && !lysc_is_key(member)) {
                    lyd_new_term(holder, nullptr, it.key().c_str(), scalarText(*it).c_str(), 0,
                                 nullptr);
                }
            }
        }
        if (made != LY_SUCCESS) {
            VESK_WARNING("NETCONF: value of %s left out of the answer: %s", name,
                         ly_errmsg(LYD_CTX(entry)));
        }
    }
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

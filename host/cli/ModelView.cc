#include "host/cli/ModelView.h"

#include <libyang/libyang.h>

#include "host/cli/Utf8Text.h"
#include "host/model/StationValues.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

// "Class=id" into its two parts; false if either is missing.
bool splitRdn(const std::string& rdn, std::string* className, std::string* id) {
    size_t equals = rdn.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == rdn.size()) {
        return false;
    }
    *className = rdn.substr(0, equals);
    *id = rdn.substr(equals + 1);
    return true;
}

std::vector<std::string> splitDn(const std::string& dn) {
    std::vector<std::string> rdns;
    size_t start = 0;
    for (;;) {
        size_t comma = dn.find(',', start);
        rdns.push_back(dn.substr(start, comma - start));
        if (comma == std::string::npos) {
            return rdns;
        }
        start = comma + 1;
    }
}

}  // namespace

bool ModelView::resolveDn(const std::string& dn, Id* moc, std::string* error) const {
    if (dn.empty()) {
        *error = "malformed dn: empty";
        return false;
    }
    Id current = kNone;
    for (const std::string& rdn : splitDn(dn)) {
        std::string className, id;
        if (!splitRdn(rdn, &className, &id)) {
            *error = "malformed dn '" + dn + "': '" + rdn + "' is not Class=id";
            return false;
        }
        if (current == kNone) {
            if (className != rootClassName()) {
                *error = "malformed dn '" + dn + "': it must begin with " + rootClassName();
                return false;
            }
            current = tables().root;
        } else if (!resolveChildClass(current, className, &current, error)) {
            return false;
        }
        if (!checkId(current, id, error)) {
            *error = "malformed dn '" + dn + "': " + *error;
            return false;
        }
    }
    *moc = current;
    return true;
}

const std::string& ModelView::rootClassName() const {
    return tables().mocName(tables().root);
}

bool ModelView::checkId(Id moc, const std::string& id, std::string* error) const {
    const std::string shown = "id '" + id + "' of " + className(moc);
    if (!isUtf8(id)) {
        *error = shown + " is not UTF-8 text";
        return false;
    }
    const lysc_node* key = tables().attributes[attributes(moc).front()].node;
    ly_ctx* context = _schema.context();
    if (key == nullptr || lyd_value_validate(context, key, id.c_str(), id.size(), nullptr, nullptr,
                                             nullptr) == LY_SUCCESS) {
        return true;
    }
    *error = shown + ": " + ly_errmsg(context);
    return false;
}

bool ModelView::resolveChildClass(Id parent, const std::string& name, Id* moc,
                                  std::string* error) const {
    if (_schema.mocByClass(name) == kNone) {
        *error = "unknown class '" + name + "'";
        return false;
    }
    Id containment = _schema.childContainment(parent, name);
    if (containment == kNone) {
        *error = "class '" + name + "' is not a child class of " + className(parent);
        return false;
    }
    *moc = tables().containments[containment].child;
    return true;
}

bool ModelView::resolveAttribute(Id moc, const std::string& name, Id* attribute,
                                 std::string* error) const {
    *attribute = _schema.attributeOf(moc, name);
    if (*attribute == kNone) {
        *error = "unknown attribute '" + name + "' of class " + className(moc);
        return false;
    }
    return true;
}

bool ModelView::resolveAction(Id moc, const std::string& name, Id* action,
                              std::string* error) const {
    std::string known;
    for (Id it : actions(moc)) {
        if (actionName(it) == name) {
            *action = it;
            return true;
        }
        known += (known.empty() ? "" : ", ") + actionName(it);
    }
    *error = "class " + className(moc) + " has no action '" + name + "'" +
             (known.empty() ? " (it has none)" : " (its actions: " + known + ")");
    return false;
}

std::vector<Id> ModelView::actions(Id moc) const {
    std::vector<Id> result;
    for (Id it = tables().mocs[moc].firstAction; it != kNone; it = tables().actions[it].next) {
        result.push_back(it);
    }
    return result;
}

std::vector<Id> ModelView::actionParameters(Id action) const {
    std::vector<Id> result;
    for (Id it = tables().actions[action].firstInput; it != kNone;
         it = tables().attributes[it].next) {
        result.push_back(it);
    }
    return result;
}

std::vector<Id> ModelView::attributes(Id moc) const {
    std::vector<Id> result;
    for (Id it = tables().mocs[moc].firstAttribute; it != kNone;
         it = tables().attributes[it].next) {
        result.push_back(it);
    }
    return result;
}

int32_t ModelView::baseType(Id attribute) const {
    return model::baseType(tables(), attribute);
}

bool ModelView::isList(Id attribute) const {
    return model::isListAttribute(tables(), attribute);
}

const model::TypeContainer& ModelView::typeOf(Id attribute) const {
    const model::TypeContainer& own =
        tables().typeContainers[tables().attributes[attribute].typeContainer];
    if (own.enumeration == kNone && own.structType == kNone && own.derived != kNone) {
        return tables().typeContainers[tables().derived[own.derived].base];
    }
    return own;
}

std::string ModelView::literalName(Id attribute, int64_t number) const {
    Id enumeration = typeOf(attribute).enumeration;
    if (enumeration == kNone) {
        return std::string();
    }
    for (Id it = tables().enumerations[enumeration].firstLiteral; it != kNone;
         it = tables().literals[it].next) {
        if (tables().literals[it].value == number) {
            return tables().properties[tables().literals[it].properties].name;
        }
    }
    return std::string();
}

std::vector<std::string> ModelView::literals(Id attribute) const {
    std::vector<std::string> names;
    Id enumeration = typeOf(attribute).enumeration;
    for (Id it = enumeration == kNone ? kNone : tables().enumerations[enumeration].firstLiteral;
         it != kNone; it = tables().literals[it].next) {
        names.push_back(tables().properties[tables().literals[it].properties].name);
    }
    return names;
}

bool ModelView::literalNumber(Id attribute, const std::string& name, int64_t* number) const {
    Id enumeration = typeOf(attribute).enumeration;
    if (enumeration == kNone) {
        return false;
    }
    for (Id it = tables().enumerations[enumeration].firstLiteral; it != kNone;
         it = tables().literals[it].next) {
        if (tables().properties[tables().literals[it].properties].name == name) {
            *number = tables().literals[it].value;
            return true;
        }
    }
    return false;
}

std::string ModelView::typeName(Id attribute) const {
    static const char* const kNames[] = {"",
                                         "int8",
                                         "int16",
                                         "int32",
                                         "int64",
                                         "uint8",
                                         "uint16",
                                         "uint32",
                                         "uint64",
                                         "string",
                                         "boolean",
                                         "reference (a dn)",
                                         "enumeration",
                                         "",
                                         "struct",
                                         "",
                                         "decimal64"};
    int32_t type = baseType(attribute);
    std::string name = type > 0 && type <= 16 ? kNames[type] : "";
    if (name.empty()) {
        name = "type " + std::to_string(type);
    }
    std::string separator = " ";
    if (type == 12) {
        for (const std::string& literal : literals(attribute)) {
            name += separator + literal;
            separator = "|";
        }
    } else if (type == 14) {
        separator = " of ";
        for (Id member : structMembers(attribute)) {
            name += separator + attributeName(member);
            separator = ", ";
        }
    }
    return isList(attribute) ? "list of " + name : name;
}

Id ModelView::structMember(Id attribute, const std::string& name) const {
    Id structType = typeOf(attribute).structType;
    return structType == kNone ? kNone : _schema.memberOf(structType, name);
}

std::vector<Id> ModelView::structMembers(Id attribute) const {
    std::vector<Id> result;
    Id structType = typeOf(attribute).structType;
    if (structType == kNone) {
        return result;
    }
    for (Id it = tables().structs[structType].firstMember; it != kNone;
         it = tables().attributes[it].next) {
        result.push_back(it);
    }
    return result;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

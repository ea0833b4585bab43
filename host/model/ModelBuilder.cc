#include "host/model/ModelBuilder.h"

#include <libyang/libyang.h>

#include <cstring>
#include <set>

#include "platform/orl/OrlModelRepository.h"

namespace vesk {
namespace host {
namespace model {
namespace {

const char kExtensionModule[] = "vesk-extensions";

const char* findExtension(const lysc_ext_instance* exts, const char* name) {
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(exts, i) {
        const lysc_ext* def = exts[i].def;
        if (std::strcmp(def->module->name, kExtensionModule) == 0 &&
            std::strcmp(def->name, name) == 0) {
            return exts[i].argument != nullptr ? exts[i].argument : "";
        }
    }
    return nullptr;
}

bool isAttribute(const lysc_node* node) {
    if (node->nodetype == LYS_LEAF || node->nodetype == LYS_LEAFLIST) {
        return true;
    }
    if (node->nodetype == LYS_CONTAINER) {
        return findExtension(node->exts, "struct") != nullptr;
    }
    return isStructList(node);
}

int32_t cardinality(uint32_t value) {
    return value > static_cast<uint32_t>(OrlOamSpiMrUnbounded) ? OrlOamSpiMrUnbounded
                                                               : static_cast<int32_t>(value);
}

int32_t hostType(LY_DATA_TYPE basetype) {
    switch (basetype) {
        case LY_TYPE_INT8:
            return 1;
        case LY_TYPE_INT16:
            return 2;
        case LY_TYPE_INT32:
            return 3;
        case LY_TYPE_INT64:
            return 4;
        case LY_TYPE_UINT8:
            return 5;
        case LY_TYPE_UINT16:
            return 6;
        case LY_TYPE_UINT32:
            return 7;
        case LY_TYPE_UINT64:
            return 8;
        case LY_TYPE_STRING:
            return 9;
        case LY_TYPE_BOOL:
            return 10;
        case LY_TYPE_ENUM:
            return 12;
        case LY_TYPE_DEC64:
            return 16;
        default:
            return 9;  // not used by the model; read as text
    }
}

class TableBuilder {
  public:
    TableBuilder(ModelTables* tables, std::map<std::string, Id>* mocByName)
        : _t(*tables), _byName(*mocByName) {}

    Id addMoc(const lysc_node* list);

  private:
    Id addProperties(const std::string& name, const lysc_ext_instance* exts);
    Id addAttributes(const lysc_node* parent);
    // The attributes among `first` and its siblings, linked in order.
    Id addAttributeChain(const lysc_node* first);
    Id addActions(const lysc_node* list);
    Id addAttribute(const lysc_node* node);
    Id addTypeContainer(const lysc_node* node);
    // Appends `container`; its default array is filled by pointDefaultArrays.
    Id storeTypeContainer(TypeContainer container);
    void fillLeafType(const lysc_node* node, TypeContainer* container);
    Id addEnumeration(const lysc_type* type);
    Id addContainments(Id parent, const lysc_node* node);

    ModelTables& _t;
    std::map<std::string, Id>& _byName;
};

Id TableBuilder::addProperties(const std::string& name, const lysc_ext_instance* exts) {
    Id id = static_cast<Id>(_t.properties.size());
    _t.properties.push_back(Properties{name, kNone});
    Id* link = &_t.properties[id].firstExtension;
    Id last = kNone;
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(exts, i) {
        const lysc_ext* def = exts[i].def;
        if (std::strcmp(def->module->name, kExtensionModule) != 0 ||
            std::strcmp(def->name, "takes-effect") != 0) {
            continue;
        }
        Id extension = static_cast<Id>(_t.extensions.size());
        _t.extensions.push_back(
            Extension{"takesEffect", exts[i].argument ? exts[i].argument : "", kNone});
        if (last == kNone) {
            *link = extension;
        } else {
            _t.extensions[last].next = extension;
        }
        last = extension;
    }
    return id;
}

Id TableBuilder::addMoc(const lysc_node* list) {
    auto known = _byName.find(list->name);
    if (known != _byName.end()) {
        return known->second;
    }
    Id id = static_cast<Id>(_t.mocs.size());
    _t.mocs.push_back(Moc());
    _byName[list->name] = id;
    Id properties = addProperties(list->name, nullptr);
    Id attributes = addAttributes(list);
    Moc& moc = _t.mocs[id];
    moc.properties = properties;
    moc.firstAttribute = attributes;
    moc.systemCreated = findExtension(list->exts, "system-created") != nullptr;
    moc.node = list;
    Id actions = addActions(list);
    _t.mocs[id].firstAction = actions;
    Id containments = addContainments(id, list);
    _t.mocs[id].firstContainment = containments;
    return id;
}

Id TableBuilder::addContainments(Id parent, const lysc_node* node) {
    Id first = kNone;
    Id last = kNone;
    for (const lysc_node* child = lysc_node_child(node); child != nullptr; child = child->next) {
        if (!isClass(child)) {
            continue;
        }
        Id childMoc = addMoc(child);
        const auto* list = reinterpret_cast<const lysc_node_list*>(child);
        Id id = static_cast<Id>(_t.containments.size());
        _t.containments.push_back(
            Containment{parent, childMoc, cardinality(list->min), cardinality(list->max), kNone});
        if (last == kNone) {
            first = id;
        } else {
            _t.containments[last].next = id;
        }
        last = id;
    }
    return first;
}

Id TableBuilder::addActions(const lysc_node* list) {
    Id first = kNone;
    Id last = kNone;
    for (const lysc_node_action* action = lysc_node_actions(list); action != nullptr;
         action = action->next) {
        Id id = static_cast<Id>(_t.actions.size());
        _t.actions.push_back(ActionRecord());
        Id properties = addProperties(action->name, nullptr);
        Id inputs = addAttributeChain(action->input.child);
        Id outputs = addAttributeChain(action->output.child);
        ActionRecord& record = _t.actions[id];
        record.properties = properties;
        record.firstInput = inputs;
        record.output = outputs;
        if (last == kNone) {
            first = id;
        } else {
            _t.actions[last].next = id;
        }
        last = id;
    }
    return first;
}

Id TableBuilder::addAttributes(const lysc_node* parent) {
    return addAttributeChain(lysc_node_child(parent));
}

Id TableBuilder::addAttributeChain(const lysc_node* firstNode) {
    Id first = kNone;
    Id last = kNone;
    for (const lysc_node* child = firstNode; child != nullptr; child = child->next) {
        if (!isAttribute(child)) {
            continue;
        }
        Id id = addAttribute(child);
        if (last == kNone) {
            first = id;
        } else {
            _t.attributes[last].next = id;
        }
        last = id;
    }
    return first;
}

Id TableBuilder::addAttribute(const lysc_node* node) {
    Id id = static_cast<Id>(_t.attributes.size());
    _t.attributes.push_back(AttributeRecord());
    Id properties = addProperties(node->name, node->exts);
    Id type = addTypeContainer(node);
    AttributeRecord& record = _t.attributes[id];
    record.properties = properties;
    record.typeContainer = type;
    record.key = (node->flags & LYS_KEY) != 0;
    record.mandatory = record.key || (node->flags & LYS_MAND_TRUE) != 0;
    record.node = node;
    return id;
}

Id TableBuilder::addTypeContainer(const lysc_node* node) {
    TypeContainer container;
    if (node->nodetype == LYS_CONTAINER || node->nodetype == LYS_LIST) {
        container.type = 14;
        if (node->nodetype == LYS_LIST) {
            const auto* list = reinterpret_cast<const lysc_node_list*>(node);
            container.minMultiplicity = cardinality(list->min);
            container.maxMultiplicity = cardinality(list->max);
        }
        Id members = addAttributes(node);
        container.structType = static_cast<Id>(_t.structs.size());
        _t.structs.push_back(StructType{members});
    } else {
        fillLeafType(node, &container);
    }
    return storeTypeContainer(std::move(container));
}

Id TableBuilder::storeTypeContainer(TypeContainer container) {
    Id id = static_cast<Id>(_t.typeContainers.size());
    _t.typeContainers.push_back(std::move(container));
    return id;
}

// Points each default array at its texts. Done once the table is complete: moving a container
// while the table grows may move the characters of short texts.
void pointDefaultArrays(ModelTables* tables) {
    for (TypeContainer& container : tables->typeContainers) {
        container.defaultArray.clear();
        for (const std::string& text : container.defaults) {
            container.defaultArray.push_back(text.c_str());
        }
        container.defaultArray.push_back(nullptr);
    }
}

void TableBuilder::fillLeafType(const lysc_node* node, TypeContainer* container) {
    const ly_ctx* context = node->module->ctx;
    const lysc_type* type;
    if (node->nodetype == LYS_LEAF) {
        const auto* leaf = reinterpret_cast<const lysc_node_leaf*>(node);
        type = leaf->type;
        if (leaf->dflt != nullptr) {
            container->defaults.push_back(lyd_value_get_canonical(context, leaf->dflt));
        }
        container->minMultiplicity = (node->flags & (LYS_MAND_TRUE | LYS_KEY)) ? 1 : 0;
    } else {
        const auto* list = reinterpret_cast<const lysc_node_leaflist*>(node);
        type = list->type;
        LY_ARRAY_COUNT_TYPE i;
        LY_ARRAY_FOR(list->dflts, i) {
            container->defaults.push_back(lyd_value_get_canonical(context, list->dflts[i]));
        }
        container->minMultiplicity = cardinality(list->min);
        container->maxMultiplicity = cardinality(list->max);
    }
    int32_t base = hostType(type->basetype);
    if (type->basetype == LY_TYPE_ENUM) {
        container->enumeration = addEnumeration(type);
    }
    if (findExtension(node->exts, "reference") != nullptr) {
        container->type = 11;  // a reference is never reported as derived
        return;
    }
    container->type = base;
    // A key is a plain string for the agent, whatever restricts its text.
    if ((node->flags & LYS_KEY) == 0 && !isBuiltinTypeName(writtenTypeName(node)) &&
        writtenTypeName(node)[0] != '\0') {
        Id baseId = storeTypeContainer(*container);
        container->type = OrlOamSpiMrType_3_DERIVED;
        container->derived = static_cast<Id>(_t.derived.size());
        _t.derived.push_back(Derived{baseId});
    }
}

Id TableBuilder::addEnumeration(const lysc_type* type) {
    const auto* enumType = reinterpret_cast<const lysc_type_enum*>(type);
    Id id = static_cast<Id>(_t.enumerations.size());
    _t.enumerations.push_back(Enumeration());
    Id last = kNone;
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(enumType->enums, i) {
        Id properties = addProperties(enumType->enums[i].name, nullptr);
        Id literal = static_cast<Id>(_t.literals.size());
        _t.literals.push_back(
            Literal{properties, static_cast<int16_t>(enumType->enums[i].value), kNone});
        if (last == kNone) {
            _t.enumerations[id].firstLiteral = literal;
        } else {
            _t.literals[last].next = literal;
        }
        last = literal;
    }
    return id;
}

}  // namespace

const char* extensionArgument(const lysc_node* node, const char* name) {
    return findExtension(node->exts, name);
}

bool isStructList(const lysc_node* node) {
    return node->nodetype == LYS_LIST && findExtension(node->exts, "struct-list") != nullptr;
}

bool isClass(const lysc_node* node) {
    return node->nodetype == LYS_LIST && !isStructList(node);
}

bool isBuiltinTypeName(const char* name) {
    static const std::set<std::string> builtin = {"int8",
                                                  "int16",
                                                  "int32",
                                                  "int64",
                                                  "uint8",
                                                  "uint16",
                                                  "uint32",
                                                  "uint64",
                                                  "string",
                                                  "boolean",
                                                  "enumeration",
                                                  "decimal64",
                                                  "bits",
                                                  "binary",
                                                  "empty",
                                                  "union",
                                                  "leafref",
                                                  "identityref",
                                                  "instance-identifier"};
    return builtin.count(name) > 0;
}

const char* writtenTypeName(const lysc_node* node) {
    if (node->priv == nullptr) {
        return "";
    }
    if (node->nodetype == LYS_LEAF) {
        return static_cast<const lysp_node_leaf*>(node->priv)->type.name;
    }
    return static_cast<const lysp_node_leaflist*>(node->priv)->type.name;
}

bool buildTables(const lys_module* module, ModelTables* tables,
                 std::map<std::string, Id>* mocByName, std::string* error) {
    const char* name = findExtension(module->compiled->exts, "mom-name");
    const char* version = findExtension(module->compiled->exts, "mom-version");
    tables->momName = name != nullptr ? name : module->name;
    tables->momVersion = version != nullptr ? version : "";
    TableBuilder builder(tables, mocByName);
    for (const lysc_node* node = module->compiled->data; node != nullptr; node = node->next) {
        if (isClass(node) && std::strcmp(node->name, "ManagedElement") == 0) {
            tables->root = builder.addMoc(node);
            pointDefaultArrays(tables);
            return true;
        }
    }
    *error = std::string("module ") + module->name + " has no class ManagedElement at its top";
    return false;
}

}  // namespace model
}  // namespace host
}  // namespace vesk

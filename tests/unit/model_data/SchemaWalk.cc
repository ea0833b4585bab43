#include "SchemaWalk.h"

namespace vesk::modeltest {

namespace {

namespace hm = vesk::host::model;

int hostTypeOf(LY_DATA_TYPE basetype) {
    switch (basetype) {
        case LY_TYPE_INT8:
            return kInt8;
        case LY_TYPE_INT16:
            return kInt16;
        case LY_TYPE_INT32:
            return kInt32;
        case LY_TYPE_INT64:
            return kInt64;
        case LY_TYPE_UINT8:
            return kUint8;
        case LY_TYPE_UINT16:
            return kUint16;
        case LY_TYPE_UINT32:
            return kUint32;
        case LY_TYPE_UINT64:
            return kUint64;
        case LY_TYPE_STRING:
            return kString;
        case LY_TYPE_BOOL:
            return kBool;
        case LY_TYPE_ENUM:
            return kEnum;
        case LY_TYPE_DEC64:
            return kDecimal64;
        default:
            return kNoHostType;
    }
}

const lysc_type* compiledType(const lysc_node* node) {
    if (node->nodetype == LYS_LEAF) {
        return reinterpret_cast<const lysc_node_leaf*>(node)->type;
    }
    if (node->nodetype == LYS_LEAFLIST) {
        return reinterpret_cast<const lysc_node_leaflist*>(node)->type;
    }
    return nullptr;
}

}  // namespace

Model::Model(const std::string& modelDir) {
    if (ly_ctx_new(modelDir.c_str(), LY_CTX_SET_PRIV_PARSED, &_ctx) != LY_SUCCESS) {
        _error = "cannot create libyang context";
        return;
    }
    _station = ly_ctx_load_module(_ctx, "vesk-station", nullptr, nullptr);
    if (_station == nullptr) {
        const char* msg = ly_errmsg(_ctx);
        _error = msg ? msg : "cannot load vesk-station";
    }
}

Model::~Model() {
    ly_ctx_destroy(_ctx);
}

const lysc_node* Model::classAt(const std::string& path) const {
    if (_station == nullptr) {
        return nullptr;
    }
    const lysc_node* node = nullptr;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        std::string name = path.substr(start, end == std::string::npos ? end : end - start);
        const lysc_node* next = nullptr;
        const lysc_node* first = node ? lysc_node_child(node) : _station->compiled->data;
        for (const lysc_node* it = first; it; it = it->next) {
            if (isClass(it) && name == it->name) {
                next = it;
            }
        }
        if (next == nullptr) {
            return nullptr;
        }
        node = next;
        if (end == std::string::npos) {
            break;
        }
        start = end + 1;
    }
    return node;
}

std::vector<const lysc_node*> childClasses(const lysc_node* parent) {
    std::vector<const lysc_node*> result;
    for (const lysc_node* it = lysc_node_child(parent); it; it = it->next) {
        if (isClass(it)) {
            result.push_back(it);
        }
    }
    return result;
}

std::vector<const lysc_node*> attributes(const lysc_node* parent) {
    std::vector<const lysc_node*> result;
    for (const lysc_node* it = lysc_node_child(parent); it; it = it->next) {
        if (!isClass(it)) {
            result.push_back(it);
        }
    }
    return result;
}

const lysc_node* attribute(const lysc_node* parent, const std::string& name) {
    for (const lysc_node* it : attributes(parent)) {
        if (name == it->name) {
            return it;
        }
    }
    return nullptr;
}

TypeInfo hostType(const lysc_node* node) {
    TypeInfo info;
    if (node->nodetype == LYS_CONTAINER || isStructList(node)) {
        bool isStruct = extensionArgument(node, "struct") != nullptr || isStructList(node);
        info.type = info.base = isStruct ? kStruct : kNoHostType;
        info.isList = isStructList(node) && minMaxElements(node).second >= 2;
        return info;
    }
    const lysc_type* type = compiledType(node);
    if (type == nullptr) {
        return info;
    }
    info.isList = node->nodetype == LYS_LEAFLIST && minMaxElements(node).second >= 2;
    if (extensionArgument(node, "reference") != nullptr) {
        info.type = info.base = type->basetype == LY_TYPE_STRING ? kReference : kNoHostType;
        return info;
    }
    info.base = hostTypeOf(type->basetype);
    std::string written = hm::writtenTypeName(node);
    if (!written.empty() && !hm::isBuiltinTypeName(written.c_str())) {
        info.type = kDerived;
        info.typedefName = written.substr(written.find(':') + 1);
    } else {
        info.type = info.base;
    }
    return info;
}

std::map<std::string, int> enumLiterals(const lysc_node* node) {
    std::map<std::string, int> result;
    const lysc_type* type = compiledType(node);
    if (type == nullptr || type->basetype != LY_TYPE_ENUM) {
        return result;
    }
    const auto* enumType = reinterpret_cast<const lysc_type_enum*>(type);
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(enumType->enums, i) {
        result[enumType->enums[i].name] = enumType->enums[i].value;
    }
    return result;
}

std::vector<std::string> defaultTexts(const lysc_node* node) {
    std::vector<std::string> result;
    const ly_ctx* ctx = node->module->ctx;
    if (node->nodetype == LYS_LEAF) {
        const auto* leaf = reinterpret_cast<const lysc_node_leaf*>(node);
        if (leaf->dflt) {
            result.push_back(lyd_value_get_canonical(ctx, leaf->dflt));
        }
    } else if (node->nodetype == LYS_LEAFLIST) {
        const auto* list = reinterpret_cast<const lysc_node_leaflist*>(node);
        LY_ARRAY_COUNT_TYPE i;
        LY_ARRAY_FOR(list->dflts, i) {
            result.push_back(lyd_value_get_canonical(ctx, list->dflts[i]));
        }
    }
    return result;
}

std::pair<uint32_t, uint32_t> minMaxElements(const lysc_node* node) {
    if (node->nodetype == LYS_LIST) {
        const auto* list = reinterpret_cast<const lysc_node_list*>(node);
        return {list->min, list->max};
    }
    if (node->nodetype == LYS_LEAFLIST) {
        const auto* list = reinterpret_cast<const lysc_node_leaflist*>(node);
        return {list->min, list->max};
    }
    bool mandatory = (node->flags & LYS_MAND_TRUE) != 0;
    return {mandatory ? 1u : 0u, 1u};
}

std::string dnOf(const lyd_node* node) {
    std::string dn;
    for (const lyd_node* it = node; it; it = lyd_parent(it)) {
        if (it->schema->nodetype != LYS_LIST || !isClass(it->schema)) {
            continue;
        }
        const lyd_node* key = lyd_child(it);
        std::string rdn = std::string(it->schema->name) + "=" + lyd_get_value(key);
        dn = dn.empty() ? rdn : rdn + "," + dn;
    }
    return dn;
}

}  // namespace vesk::modeltest

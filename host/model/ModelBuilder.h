// Flattens the compiled schema of the station module into ModelTables (see docs/model.md for
// the mapping of YANG statements to classes, attributes and types).
#pragma once

#include <map>
#include <string>

#include "host/model/ModelTables.h"

struct lys_module;
struct lysc_node;

namespace vesk {
namespace host {
namespace model {

// Fills `tables` and `mocByName` (empty on entry) from `module`. False, with the reason in
// `error`, when the module has no class "ManagedElement" at its top.
bool buildTables(const lys_module* module, ModelTables* tables,
                 std::map<std::string, Id>* mocByName, std::string* error);

// The argument of the vesk-extensions statement `name` on `node`: null without one, "" for a
// statement without argument.
const char* extensionArgument(const lysc_node* node, const char* name);

// A struct list is a YANG list marked "struct-list"; every other list is a class.
bool isStructList(const lysc_node* node);
bool isClass(const lysc_node* node);
// True for the names of YANG's own types; a leaf typed otherwise has a derived type.
bool isBuiltinTypeName(const char* name);
// The type name as a leaf or leaf-list was written ("vt:earfcn", "int32"); "" when the context
// was made without LY_CTX_SET_PRIV_PARSED.
const char* writtenTypeName(const lysc_node* node);

}  // namespace model
}  // namespace host
}  // namespace vesk

// Reads the station model the way the host's model repository does: classes
// are YANG lists, attributes their leaves, leaf-lists, struct containers and
// struct lists, and the vesk-extensions statements add what YANG lacks.
// Test support only: the type mapping is its own, the YANG-level readers are the host's.
#pragma once

#include <libyang/libyang.h>

#include <map>
#include <string>
#include <vector>

#include "host/model/ModelBuilder.h"

namespace vesk::modeltest {

// Host attribute types; 13 marks a derived type, -1 a type with no host type.
enum HostType {
    kInt8 = 1,
    kInt16 = 2,
    kInt32 = 3,
    kInt64 = 4,
    kUint8 = 5,
    kUint16 = 6,
    kUint32 = 7,
    kUint64 = 8,
    kString = 9,
    kBool = 10,
    kReference = 11,
    kEnum = 12,
    kDerived = 13,
    kStruct = 14,
    kDecimal64 = 16,
    kNoHostType = -1,
};

struct TypeInfo {
    int type = kNoHostType;   // as the repository reports it
    int base = kNoHostType;   // the type itself, or the base of a derived type
    std::string typedefName;  // empty unless derived
    bool isList = false;      // maximum multiplicity of 2 or more
};

// Owns a libyang context with the station model loaded from `modelDir`.
// Compiled nodes keep a pointer to their parsed node (typedef names).
class Model {
  public:
    explicit Model(const std::string& modelDir);
    ~Model();
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    bool loaded() const { return _station != nullptr; }
    const std::string& error() const { return _error; }
    ly_ctx* context() const { return _ctx; }
    const lys_module* station() const { return _station; }

    // The class at a containment path of class names, e.g.
    // "ManagedElement/ENodeBFunction/EUtranCellFDD"; null if there is none.
    const lysc_node* classAt(const std::string& path) const;

  private:
    ly_ctx* _ctx = nullptr;
    const lys_module* _station = nullptr;
    std::string _error;
};

// Extension arguments and the class / struct-list split are the host's own readers.
using host::model::extensionArgument;
using host::model::isClass;
using host::model::isStructList;
std::vector<const lysc_node*> childClasses(const lysc_node* parent);
// Attributes of a class or members of a struct: leaves, leaf-lists, struct
// containers and struct lists, in model order. Child classes are left out.
std::vector<const lysc_node*> attributes(const lysc_node* parent);
const lysc_node* attribute(const lysc_node* parent, const std::string& name);

TypeInfo hostType(const lysc_node* attribute);
// Literal name to number; empty when the attribute is no enumeration.
std::map<std::string, int> enumLiterals(const lysc_node* attribute);
// Default texts of a leaf or leaf-list; empty when there is no default.
std::vector<std::string> defaultTexts(const lysc_node* attribute);
// Minimum and maximum of a list or leaf-list; UINT32_MAX for unbounded.
std::pair<uint32_t, uint32_t> minMaxElements(const lysc_node* node);

// dn of a list instance of a data tree: "ManagedElement=1,Equipment=1".
std::string dnOf(const lyd_node* node);

}  // namespace vesk::modeltest

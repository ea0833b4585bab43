// The station model as flat tables, built once from the compiled YANG schema and never changed
// afterwards, so that every handle the repository gives out (a kind tag and an index into one of
// these tables) stays valid while the model lives.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct lysc_node;

namespace vesk {
namespace host {
namespace model {

// Index into one table; kNone marks "no such element".
using Id = uint32_t;
constexpr Id kNone = 0xffffffffu;

// A handle is the kind in the top byte and the index plus one below it, so 0 is never valid and
// a handle of one kind is refused where another kind is expected.
enum class Kind : uint8_t {
    kMoc = 1,
    kAttribute,
    kProperties,
    kExtension,
    kContainment,
    kTypeContainer,
    kDerived,
    kStruct,
    kEnum,
    kLiteral,
};

inline uint64_t makeHandle(Kind kind, Id id) {
    return (static_cast<uint64_t>(kind) << 56) | (static_cast<uint64_t>(id) + 1);
}
// The index of a handle of `kind`; false for a handle of another kind or out of range.
inline bool handleId(uint64_t handle, Kind kind, size_t size, Id* id) {
    if ((handle >> 56) != static_cast<uint64_t>(kind)) {
        return false;
    }
    uint64_t index = (handle & ((uint64_t(1) << 56) - 1));
    if (index == 0 || index > size) {
        return false;
    }
    *id = static_cast<Id>(index - 1);
    return true;
}

// Name and domain extensions of a class, attribute, struct member or literal.
struct Properties {
    std::string name;
    Id firstExtension = kNone;
};

struct Extension {
    std::string name;   // "takesEffect" for the takes-effect statement
    std::string value;  // the statement's argument
    Id next = kNone;
};

struct Moc {
    Id properties = kNone;
    Id firstAttribute = kNone;
    Id firstContainment = kNone;
    Id firstAction = kNone;
    bool systemCreated = false;
    const lysc_node* node = nullptr;  // the schema list of the class
};

// An attribute of a class, or a member of a struct.
struct AttributeRecord {
    Id properties = kNone;
    Id typeContainer = kNone;
    bool key = false;
    bool mandatory = false;
    Id next = kNone;
    const lysc_node* node = nullptr;  // leaf, leaf-list, struct container or struct list
};

// An action of a class. Its parameters (the input leaves) and its result (the first output
// leaf) are attribute records of their own, in no class's chain, so the repository never shows
// them as attributes.
struct ActionRecord {
    Id properties = kNone;
    Id firstInput = kNone;  // parameters in model order, linked by `next`
    Id output = kNone;      // kNone when the action gives no value
    Id next = kNone;
};

struct Containment {
    Id parent = kNone;
    Id child = kNone;
    int32_t min = 0;
    int32_t max = 0;
    Id next = kNone;
};

struct TypeContainer {
    int32_t type = 0;  // 1..12, 14, 16, or 13 for a derived type
    std::vector<std::string> defaults;
    std::vector<const char*> defaultArray;  // null-terminated views of `defaults`
    int32_t minMultiplicity = 0;
    int32_t maxMultiplicity = 1;
    Id structType = kNone;
    Id enumeration = kNone;
    Id derived = kNone;
};

struct Derived {
    Id base = kNone;  // a type container of the base type
};

struct StructType {
    Id firstMember = kNone;  // an attribute record
};

struct Enumeration {
    Id firstLiteral = kNone;
};

struct Literal {
    Id properties = kNone;
    int16_t value = 0;
    Id next = kNone;
};

struct ModelTables {
    std::string momName;
    std::string momVersion;
    Id root = kNone;  // ManagedElement
    std::vector<Moc> mocs;
    std::vector<AttributeRecord> attributes;
    std::vector<ActionRecord> actions;
    std::vector<Properties> properties;
    std::vector<Extension> extensions;
    std::vector<Containment> containments;
    std::vector<TypeContainer> typeContainers;
    std::vector<Derived> derived;
    std::vector<StructType> structs;
    std::vector<Enumeration> enumerations;
    std::vector<Literal> literals;

    const std::string& mocName(Id moc) const { return properties[mocs[moc].properties].name; }
    const std::string& attributeName(Id attribute) const {
        return properties[attributes[attribute].properties].name;
    }
    const std::string& actionName(Id action) const {
        return properties[actions[action].properties].name;
    }
};

}  // namespace model
}  // namespace host
}  // namespace vesk

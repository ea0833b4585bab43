// The command layer's questions to the loaded station model: which class a dn names, which child
// classes and attributes a class has, and the types behind an attribute. Every answer that
// refuses gives one line for the operator. Read-only over a loaded ModelSchema, which must
// outlive the view.
#pragma once

#include <string>
#include <vector>

#include "host/model/ModelSchema.h"

namespace vesk {
namespace host {
namespace cli {

using model::Id;
using model::kNone;

class ModelView {
  public:
    explicit ModelView(const model::ModelSchema& schema) : _schema(schema) {}

    // The class of the last rdn of `dn`, checked from ManagedElement down: each rdn "Class=id"
    // with both parts present, each class a child class of the one before, each id one its
    // class's key allows. False, with the reason in `error`, for a malformed dn or a class the
    // model does not have there.
    bool resolveDn(const std::string& dn, Id* moc, std::string* error) const;
    // Whether `id` may name an MO of class `moc`: UTF-8 text that fits the type of the class's
    // key. False, with the reason, otherwise.
    bool checkId(Id moc, const std::string& id, std::string* error) const;
    // The class `name` as a child class of `parent`; false with the reason otherwise.
    bool resolveChildClass(Id parent, const std::string& name, Id* moc, std::string* error) const;
    // The attribute `name` of `moc`; false with the reason otherwise.
    bool resolveAttribute(Id moc, const std::string& name, Id* attribute, std::string* error) const;

    // The action `name` of `moc`; false, with the reason and the class's actions, otherwise.
    bool resolveAction(Id moc, const std::string& name, Id* action, std::string* error) const;
    // The actions of `moc` in model order.
    std::vector<Id> actions(Id moc) const;
    const std::string& actionName(Id action) const { return tables().actionName(action); }
    // The parameters of an action in model order (attribute records).
    std::vector<Id> actionParameters(Id action) const;
    // The result of an action (an attribute record), or kNone when it gives no value.
    Id actionResult(Id action) const { return tables().actions[action].output; }

    // The attributes of `moc` in model order, key first.
    std::vector<Id> attributes(Id moc) const;
    const std::string& className(Id moc) const { return tables().mocName(moc); }
    const std::string& attributeName(Id attribute) const {
        return tables().attributeName(attribute);
    }

    // Type of an attribute or struct member with a derived type resolved to its base: 1..12,
    // 14 or 16.
    int32_t baseType(Id attribute) const;
    bool isList(Id attribute) const;
    // The name of literal `number` of the attribute's enumeration, or empty.
    std::string literalName(Id attribute, int64_t number) const;
    // The literal names of the attribute's enumeration, in model order; empty for another type.
    std::vector<std::string> literals(Id attribute) const;
    // The number of literal `name`; false if the enumeration has none of that name.
    bool literalNumber(Id attribute, const std::string& name, int64_t* number) const;
    // The expected type of an attribute or struct member for the operator: "uint32",
    // "enumeration LOCKED|UNLOCKED", "struct of a, b", "reference (a dn)", with "list of " in
    // front for a list.
    std::string typeName(Id attribute) const;
    // The member `name` of the attribute's struct, or kNone.
    Id structMember(Id attribute, const std::string& name) const;
    // The members of the attribute's struct, in model order.
    std::vector<Id> structMembers(Id attribute) const;

    const model::ModelTables& tables() const { return _schema.tables(); }
    const model::ModelSchema& schema() const { return _schema; }

  private:
    // The type container that carries the enumeration or struct of an attribute.
    const model::TypeContainer& typeOf(Id attribute) const;

    const std::string& rootClassName() const;

    const model::ModelSchema& _schema;
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

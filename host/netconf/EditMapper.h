// Maps the data of an edit-config onto calls of the agent: each MO entry becomes a create, a
// delete or the sets of its attributes, as the effective operation of each node (its own
// "operation" attribute, else its parent's, else the request's default operation) and the
// station's current state say. A leaf-list, struct or struct list is one attribute: its new
// value is worked out from the current one and the entries of the edit, and set whole.
// The mapper asks and writes through an EditTarget, so that the state it sees includes its
// own earlier writes.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/cli/ModelView.h"
#include "host/cli/ValueFormatter.h"

struct lyd_node;

namespace vesk {
namespace host {
namespace netconf {

enum class EditOp { kMerge, kReplace, kCreate, kDelete, kRemove, kNone };

// Why an edit stopped, in the protocol's terms.
struct EditRefusal {
    enum Tag { kInvalidValue, kDataExists, kDataMissing, kOperationFailed };
    Tag tag = kOperationFailed;
    std::string message;
    std::string dn;           // the MO the refusal concerns, when there is one
    OrlReturnT code = OrlOk;  // the agent's answer, when it refused
    bool asked = false;       // whether `code` is an answer of the agent
};

// The station as the mapper sees it, and the calls it makes. Writes answer false with the
// reason filled in when they are refused.
class EditTarget {
  public:
    virtual ~EditTarget() = default;
    virtual bool exists(const std::string& dn) = 0;
    // The current value of `attribute` of `dn` as the executor reads it (null: none).
    virtual cli::Json value(const std::string& dn, cli::Id attribute) = 0;
    // The dns of the children of class `moc` of `dn`.
    virtual std::vector<std::string> children(const std::string& dn, cli::Id moc) = 0;
    virtual bool create(const std::string& parentDn, cli::Id parent, cli::Id moc,
                        const std::string& id,
                        const std::vector<std::pair<cli::Id, cli::Json>>& attributes,
                        EditRefusal* refusal) = 0;
    virtual bool set(const std::string& dn, cli::Id moc, cli::Id attribute, const cli::Json& value,
                     EditRefusal* refusal) = 0;
    virtual bool remove(const std::string& dn, cli::Id moc, EditRefusal* refusal) = 0;
};

class EditMapper {
  public:
    // `model` and `target` must outlive the mapper.
    EditMapper(const cli::ModelView& model, EditTarget& target) : _model(model), _target(target) {}

    // Applies the edit whose top nodes are `edit` and its siblings. With `keepGoing` (the
    // continue-on-error option) a refused node does not stop the others. True when nothing was
    // refused; the refusals are in `refusals`, in order.
    bool apply(const lyd_node* edit, EditOp defaultOp, bool keepGoing,
               std::vector<EditRefusal>* refusals);

  private:
    struct Group;  // the nodes of one attribute below one MO entry

    bool applyMo(const lyd_node* node, const std::string& parentDn, cli::Id parent,
                 EditOp inherited);
    bool createMo(const lyd_node* node, const std::string& parentDn, cli::Id parent, cli::Id moc,
                  const std::string& id);
    bool applyChildren(const lyd_node* node, const std::string& dn, cli::Id moc, EditOp op);
    // The children of MO entry `node` after its key: attribute groups by name, child MO entries.
    void split(const lyd_node* node, cli::Id moc, std::map<std::string, Group>* groups,
               std::vector<const lyd_node*>* mos) const;
    // Applies the child MO entries `mos` of `dn` in order (all of them with continue-on-error).
    bool applyMos(const std::vector<const lyd_node*>& mos, const std::string& dn, cli::Id moc,
                  EditOp op);
    bool replaceRest(const lyd_node* node, const std::string& dn, cli::Id moc);
    bool applyAttribute(const std::string& dn, cli::Id moc, const Group& group, EditOp op);
    bool newValue(const std::string& dn, const Group& group, EditOp op, cli::Json* value,
                  bool* changed);
    bool refuse(EditRefusal::Tag tag, const std::string& dn, const std::string& message);
    bool isMo(cli::Id moc, const lyd_node* node, cli::Id* child) const;
    std::string childDn(const std::string& parentDn, cli::Id moc, const std::string& id) const;

    const cli::ModelView& _model;
    EditTarget& _target;
    bool _keepGoing = false;
    std::vector<EditRefusal>* _refusals = nullptr;
};

// The operation named `name` ("merge", ..., "none"); false for another name.
bool editOpNamed(const std::string& name, EditOp* op);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

// The rules of the station model that one write request must keep, checked before the agent is
// asked: what an operator may write (not config false, not a key), what a create must give,
// how many values an attribute takes, and what its values may be (UTF-8 text, references to the
// classes the model names). Each refusal is one line naming the attribute or class and the rule.
// Whether a referenced MO exists is not judged here: the agent judges it at commit.
#pragma once

#include <set>
#include <string>

#include "host/cli/ModelView.h"

namespace vesk {
namespace host {
namespace cli {

class ModelRules {
  public:
    // `model` must outlive the rules.
    explicit ModelRules(const ModelView& model) : _model(model) {}

    // Whether an operator may set `attribute` of class `moc`: neither read-only (config false)
    // nor the key, which the dn gives.
    bool writable(Id moc, Id attribute, std::string* error) const;
    // Whether an operator may create MOs of class `moc` (not config false).
    bool creatable(Id moc, std::string* error) const;
    // Whether a create of `moc` gives every mandatory attribute other than the key; `given`
    // holds the names of the initial attributes.
    bool mandatoryGiven(Id moc, const std::set<std::string>& given, std::string* error) const;
    // Whether `count` values fit the multiplicity of attribute or struct member `attribute`.
    bool fitsCount(Id attribute, size_t count, std::string* error) const;
    // Whether `text`, one value of a string or reference attribute, is UTF-8, and for a
    // reference a well-formed dn of one of the classes the model allows.
    bool fitsText(Id attribute, const std::string& text, std::string* error) const;

  private:
    const ModelView& _model;
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

// Values read from the agent in the model's terms, as JSON: numbers and booleans as themselves,
// strings and references (dns) as strings, enumeration literals by name (the number when the
// model has no such literal), structs as objects of their members in model order (members
// the model does not know last, in the agent's order), list
// attributes as arrays. An attribute without a value is null, or an empty array for a list.
// renderText writes the same value in the command line's value syntax, which ValueParser reads.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/cli/ModelView.h"
#include "platform/orl/OrlAttributeValue.h"

namespace vesk {
namespace host {
namespace cli {

using Json = nlohmann::ordered_json;

class ValueFormatter {
  public:
    explicit ValueFormatter(const ModelView& model) : _model(model) {}

    // The value of `container` (null allowed) read for attribute or struct member `attribute`.
    Json format(Id attribute, const OrlMoAttributeValueContainer_3* container) const;

  private:
    Json formatSlot(Id attribute, int32_t type, const OrlMoAttributeValue_3& slot) const;
    Json formatStruct(Id attribute, const OrlMoAttributeValueStructMember_3* first) const;

    const ModelView& _model;
};

// A value as the command line shows it: null as "-", strings quoted when they are empty or hold
// blanks or one of `",;[]{}=\`, arrays as "[a, b]", objects as "{name=value, ...}".
std::string renderText(const Json& value);

}  // namespace cli
}  // namespace host
}  // namespace vesk

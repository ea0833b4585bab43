// Reads a value typed by the operator, in the syntax renderText writes, into a value container
// for the agent, checked against the model before the agent is asked: numbers in their YANG
// range, booleans "true"/"false", enumeration literals by name, references as dns, structs as
// "{member=value, ...}" (members by model name), list attributes as "[v, v]" (a single value is
// a list of one). A single value of a plain type is the whole text, quotes optional (unless it
// begins with a quote, "[" or "{"); inside lists and structs, values holding blanks or one of
// `",;[]{}=\` are quoted. The model's rules on values hold too (ModelRules): multiplicity,
// UTF-8 text, reference classes, each list value and struct member once. Used by the write
// commands.
#pragma once

#include <string>
#include <vector>

#include "host/cli/ModelRules.h"
#include "host/cli/ModelView.h"
#include "platform/orl/OrlAttributeValue.h"

namespace vesk {
namespace host {
namespace cli {

// A container built by ValueParser. It owns everything below it (malloc'ed, as the agent's
// records are) and frees it when it goes.
class ParsedValue {
  public:
    ParsedValue() = default;
    ~ParsedValue();
    ParsedValue(const ParsedValue&) = delete;
    ParsedValue& operator=(const ParsedValue&) = delete;

    const OrlMoAttributeValueContainer_3* container() const { return &_container; }
    OrlMoAttributeValueContainer_3* mutableContainer() { return &_container; }
    // Hands the container (and all it holds) to the caller, who frees it with
    // freeContainerContents; the value is left empty.
    OrlMoAttributeValueContainer_3 take();

  private:
    OrlMoAttributeValueContainer_3 _container{0, 0, nullptr};
};

// Frees what a container holds (strings, member lists, the slots), not the container itself.
void freeContainerContents(OrlMoAttributeValueContainer_3* container);

// Named values as the agent takes them (the initial attributes of a create, the parameters of an
// action): a null-terminated array of malloc'ed named containers, freed with all they hold when
// this goes.
class NamedValues {
  public:
    NamedValues() { _list.push_back(nullptr); }
    ~NamedValues();
    NamedValues(const NamedValues&) = delete;
    NamedValues& operator=(const NamedValues&) = delete;

    // Appends `name` with the value taken from `value`.
    void add(const std::string& name, ParsedValue* value);
    OrlMoNamedAttributeValueContainer_3** list() { return _list.data(); }

  private:
    std::vector<OrlMoNamedAttributeValueContainer_3*> _list;  // null-terminated
};

class ValueParser {
  public:
    explicit ValueParser(const ModelView& model) : _model(model), _rules(model) {}

    // Parses `text` as a value of attribute (or struct member) `attribute` into `value`. False,
    // with one line for the operator in `error`, if the text does not fit.
    bool parse(Id attribute, const std::string& text, ParsedValue* value, std::string* error) const;

    // Parses the words of a write command as the value of `attribute`: no word is no value (a
    // container of the attribute's type without slots), each word one value of a list (a
    // single word may also be a whole list "[a, b]"), a struct as "member=value,..." with or
    // without braces. Several words for a single-valued attribute are refused.
    bool parseWords(Id attribute, const std::vector<std::string>& words, ParsedValue* value,
                    std::string* error) const;

    // The syntax tree of a text; defined with the parser.
    struct Node;

  private:
    bool readWord(Id attribute, const std::string& word, Node* node, std::string* error) const;
    bool readNode(Id attribute, const std::string& text, Node* node, std::string* error) const;
    bool fill(Id attribute, const Node& node, OrlMoAttributeValueContainer_3* container,
              std::string* error) const;
    bool fillSlot(Id attribute, int32_t type, const Node& node, OrlMoAttributeValue_3* slot,
                  std::string* error) const;
    bool fillStruct(Id attribute, const Node& node, OrlMoAttributeValue_3* slot,
                    std::string* error) const;
    bool fitsType(Id attribute, const std::string& text, std::string* error) const;
    // Whether the values of a list are distinct: the texts of plain values, the keys of a
    // struct list's entries (which each entry must give).
    bool distinct(Id attribute, const std::vector<const Node*>& items, std::string* error) const;

    const ModelView& _model;
    ModelRules _rules;
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

#include "host/cli/ValueParser.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>

namespace vesk {
namespace host {
namespace cli {

struct ValueParser::Node {
    enum Kind { kScalar, kList, kStruct } kind = kScalar;
    std::string text;                                   // kScalar
    std::vector<Node> items;                            // kList
    std::vector<std::pair<std::string, Node>> members;  // kStruct
};

namespace {

using Node = ValueParser::Node;

// Recursive descent over the value syntax.
class Syntax {
  public:
    explicit Syntax(const std::string& text) : _text(text) {}

    bool read(Node* node, std::string* error) {
        if (!value(node, error)) {
            return false;
        }
        skipBlanks();
        if (_at != _text.size()) {
            *error = "unexpected '" + _text.substr(_at) + "' after the value";
            return false;
        }
        return true;
    }

  private:
    void skipBlanks() {
        while (_at < _text.size() && (_text[_at] == ' ' || _text[_at] == '\t')) {
            ++_at;
        }
    }
    bool take(char c) {
        skipBlanks();
        if (_at < _text.size() && _text[_at] == c) {
            ++_at;
            return true;
        }
        return false;
    }
    bool value(Node* node, std::string* error) {
        if (take('[')) {
            node->kind = Node::kList;
            return sequence(']', error, [&](std::string* e) {
                node->items.emplace_back();
                return value(&node->items.back(), e);
            });
        }
        if (take('{')) {
            node->kind = Node::kStruct;
            return sequence('}', error, [&](std::string* e) { return member(node, e); });
        }
        return scalar(&node->text, error);
    }
    bool member(Node* node, std::string* error) {
        std::string name;
        if (!scalar(&name, error) || !take('=')) {
            *error = "a struct member must be written name=value";
            return false;
        }
        node->members.emplace_back(name, Node());
        return value(&node->members.back().second, error);
    }
    template <typename Item>
    bool sequence(char close, std::string* error, Item item) {
        if (take(close)) {
            return true;
        }
        do {
            if (!item(error)) {
                return false;
            }
        } while (take(','));
        if (!take(close)) {
            *error = std::string("missing '") + close + "'";
            return false;
        }
        return true;
    }
    bool scalar(std::string* text, std::string* error) {
        skipBlanks();
        if (_at < _text.size() && _text[_at] == '"') {
            return quoted(text, error);
        }
        size_t start = _at;
        while (_at < _text.size() && std::strchr(",;[]{}=\"", _text[_at]) == nullptr) {
            ++_at;
        }
        *text = _text.substr(start, _at - start);
        while (!text->empty() && (text->back() == ' ' || text->back() == '\t')) {
            text->pop_back();
        }
        if (text->empty()) {
            *error = "a value is missing";
            return false;
        }
        return true;
    }
    bool quoted(std::string* text, std::string* error) {
        for (++_at; _at < _text.size(); ++_at) {
            char c = _text[_at];
            if (c == '"') {
                ++_at;
                return true;
            }
            if (c == '\\' && _at + 1 < _text.size()) {
                c = _text[++_at];
            }
            *text += c;
        }
        *error = "unterminated quote";
        return false;
    }

    const std::string& _text;
    size_t _at = 0;
};

char* duplicate(const std::string& text) {
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

void freeMembers(OrlMoAttributeValueStructMember_3* member) {
    while (member != nullptr) {
        OrlMoAttributeValueStructMember_3* next = member->nextMember;
        if (member->memberValue != nullptr) {
            freeContainerContents(member->memberValue);
            std::free(member->memberValue);
        }
        std::free(member->memberName);
        std::free(member);
        member = next;
    }
}

// Whole-text conversion of an integer; false for anything else.
template <typename Number>
bool toNumber(const std::string& text, Number* number) {
    char* end = nullptr;
    errno = 0;
    if (std::is_signed<Number>::value) {
        *number = static_cast<Number>(std::strtoll(text.c_str(), &end, 10));
    } else {
        *number = static_cast<Number>(std::strtoull(text.c_str(), &end, 10));
    }
    return errno == 0 && end != text.c_str() && *end == '\0';
}

}  // namespace

bool ValueParser::readNode(Id attribute, const std::string& text, Node* node,
                           std::string* error) const {
    // A single plain value is the whole text, so that a dn needs no quotes; one beginning with a
    // quote, "[" or "{" is read by the syntax.
    size_t first = text.find_first_not_of(" \t");
    bool plain = !_model.isList(attribute) &&
                 _model.baseType(attribute) != OrlOamSpiMoAttributeType_3_STRUCT &&
                 first != std::string::npos && std::strchr("\"[{", text[first]) == nullptr;
    if (!plain) {
        return Syntax(text).read(node, error);
    }
    node->text = text.substr(first, text.find_last_not_of(" \t") - first + 1);
    return true;
}

NamedValues::~NamedValues() {
    for (OrlMoNamedAttributeValueContainer_3* named : _list) {
        if (named != nullptr) {
            freeContainerContents(&named->attributeValue);
            std::free(named->attributeName);
            std::free(named);
        }
    }
}

void NamedValues::add(const std::string& name, ParsedValue* value) {
    auto* named = static_cast<OrlMoNamedAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoNamedAttributeValueContainer_3)));
    named->attributeName = strdup(name.c_str());
    named->attributeValue = value->take();
    _list.back() = named;
    _list.push_back(nullptr);
}

void freeContainerContents(OrlMoAttributeValueContainer_3* container) {
    for (uint32_t i = 0; container->values != nullptr && i < container->nrOfValues; ++i) {
        OrlMoAttributeValue_3& slot = container->values[i];
        if (container->type == OrlOamSpiMoAttributeType_3_STRING ||
            container->type == OrlOamSpiMoAttributeType_3_REFERENCE) {
            std::free(slot.theString);
        } else if (container->type == OrlOamSpiMoAttributeType_3_STRUCT) {
            freeMembers(slot.structMember);
        }
    }
    std::free(container->values);
    container->values = nullptr;
    container->nrOfValues = 0;
}

ParsedValue::~ParsedValue() {
    freeContainerContents(&_container);
}

OrlMoAttributeValueContainer_3 ParsedValue::take() {
    OrlMoAttributeValueContainer_3 taken = _container;
    _container = OrlMoAttributeValueContainer_3{taken.type, 0, nullptr};
    return taken;
}

bool ValueParser::readWord(Id attribute, const std::string& word, Node* node,
                           std::string* error) const {
    size_t first = word.find_first_not_of(" \t");
    if (_model.baseType(attribute) == OrlOamSpiMoAttributeType_3_STRUCT &&
        (first == std::string::npos || std::strchr("{[\"", word[first]) == nullptr)) {
        return Syntax("{" + word + "}").read(node, error);
    }
    if (first != std::string::npos && std::strchr("\"[{", word[first]) != nullptr) {
        return Syntax(word).read(node, error);
    }
    if (first == std::string::npos) {
        *error = _model.attributeName(attribute) + ": a value is missing";
        return false;
    }
    node->text = word.substr(first, word.find_last_not_of(" \t") - first + 1);
    return true;
}

bool ValueParser::parseWords(Id attribute, const std::vector<std::string>& words,
                             ParsedValue* value, std::string* error) const {
    freeContainerContents(value->mutableContainer());
    value->mutableContainer()->type = _model.baseType(attribute);
    if (words.empty()) {
        return _rules.fitsCount(attribute, 0, error);
    }
    Node node;
    if (words.size() == 1) {
        if (!readWord(attribute, words[0], &node, error)) {
            return false;
        }
    } else if (!_model.isList(attribute)) {
        *error = _model.attributeName(attribute) + " takes one value, not " +
                 std::to_string(words.size()) + " (" + _model.typeName(attribute) + ")";
        return false;
    } else {
        node.kind = Node::kList;
        node.items.resize(words.size());
        for (size_t i = 0; i < words.size(); ++i) {
            if (!readWord(attribute, words[i], &node.items[i], error)) {
                return false;
            }
        }
    }
    if (!fill(attribute, node, value->mutableContainer(), error)) {
        freeContainerContents(value->mutableContainer());
        return false;
    }
    return true;
}

bool ValueParser::parse(Id attribute, const std::string& text, ParsedValue* value,
                        std::string* error) const {
    Node node;
    if (!readNode(attribute, text, &node, error)) {
        return false;
    }
    freeContainerContents(value->mutableContainer());
    if (!fill(attribute, node, value->mutableContainer(), error)) {
        freeContainerContents(value->mutableContainer());
        return false;
    }
    return true;
}

bool ValueParser::fill(Id attribute, const Node& node, OrlMoAttributeValueContainer_3* container,
                       std::string* error) const {
    const std::string& name = _model.attributeName(attribute);
    bool list = _model.isList(attribute);
    if (node.kind == Node::kList && !list) {
        *error = name + " takes one value, not a list (" + _model.typeName(attribute) + ")";
        return false;
    }
    std::vector<const Node*> items;
    if (node.kind == Node::kList) {
        for (const Node& item : node.items) {
            items.push_back(&item);
        }
    } else {
        items.push_back(&node);
    }
    if (!_rules.fitsCount(attribute, items.size(), error) || !distinct(attribute, items, error)) {
        return false;
    }
    container->type = _model.baseType(attribute);
    container->values = static_cast<OrlMoAttributeValue_3*>(
        std::calloc(items.empty() ? 1 : items.size(), sizeof(OrlMoAttributeValue_3)));
    for (const Node* item : items) {
        // Counted as filled before the checks, so that a failure frees what the slot holds.
        OrlMoAttributeValue_3* slot = &container->values[container->nrOfValues++];
        if (!fillSlot(attribute, container->type, *item, slot, error)) {
            return false;
        }
    }
    return true;
}

bool ValueParser::fillSlot(Id attribute, int32_t type, const Node& node,
                           OrlMoAttributeValue_3* slot, std::string* error) const {
    const std::string& name = _model.attributeName(attribute);
    if (type == OrlOamSpiMoAttributeType_3_STRUCT) {
        return fillStruct(attribute, node, slot, error);
    }
    if (node.kind != Node::kScalar) {
        *error = name + " takes a single value here";
        return false;
    }
    const std::string& text = node.text;
    bool textual =
        type == OrlOamSpiMoAttributeType_3_STRING || type == OrlOamSpiMoAttributeType_3_REFERENCE;
    if ((textual && !_rules.fitsText(attribute, text, error)) ||
        !fitsType(attribute, text, error)) {
        return false;
    }
    bool ok = true;
    switch (type) {
        case OrlOamSpiMoAttributeType_3_INT8:
        case OrlOamSpiMoAttributeType_3_INT16:
        case OrlOamSpiMoAttributeType_3_INT32:
        case OrlOamSpiMoAttributeType_3_INT64:
            ok = toNumber(text, &slot->i64);
            // The value sits at the low end of the slot; narrow it to its width.
            if (type == OrlOamSpiMoAttributeType_3_INT8) {
                int8_t v = static_cast<int8_t>(slot->i64);
                slot->i64 = 0;
                slot->i8 = v;
            } else if (type == OrlOamSpiMoAttributeType_3_INT16) {
                int16_t v = static_cast<int16_t>(slot->i64);
                slot->i64 = 0;
                slot->i16 = v;
            } else if (type == OrlOamSpiMoAttributeType_3_INT32) {
                int32_t v = static_cast<int32_t>(slot->i64);
                slot->i64 = 0;
                slot->i32 = v;
            }
            break;
        case OrlOamSpiMoAttributeType_3_UINT8:
        case OrlOamSpiMoAttributeType_3_UINT16:
        case OrlOamSpiMoAttributeType_3_UINT32:
        case OrlOamSpiMoAttributeType_3_UINT64:
            ok = toNumber(text, &slot->u64);
            break;
        case OrlOamSpiMoAttributeType_3_BOOL:
            slot->u64 = 0;
            slot->theBool = text == "true";
            break;
        case OrlOamSpiMoAttributeType_3_ENUM:
            ok = _model.literalNumber(attribute, text, &slot->theEnum);
            break;
        case OrlOamSpiMoAttributeType_3_DECIMAL64:
            slot->decimal64 = std::strtod(text.c_str(), nullptr);
            break;
        default:  // strings and references
            slot->theString = duplicate(text);
            break;
    }
    if (!ok) {
        *error = name + ": value '" + text + "' does not fit its type (" +
                 _model.typeName(attribute) + ")";
    }
    return ok;
}

bool ValueParser::fillStruct(Id attribute, const Node& node, OrlMoAttributeValue_3* slot,
                             std::string* error) const {
    const std::string& name = _model.attributeName(attribute);
    if (node.kind != Node::kStruct) {
        *error = name + " takes a struct, written {member=value, ...}";
        return false;
    }
    OrlMoAttributeValueStructMember_3** tail = &slot->structMember;
    std::set<std::string> seen;
    for (const auto& member : node.members) {
        Id id = _model.structMember(attribute, member.first);
        if (id == kNone) {
            *error = "unknown member '" + member.first + "' of " + name;
            return false;
        }
        if (!seen.insert(member.first).second) {
            *error = "member '" + member.first + "' of " + name + " is given twice";
            return false;
        }
        auto* record = static_cast<OrlMoAttributeValueStructMember_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueStructMember_3)));
        record->memberName = duplicate(member.first);
        record->memberValue = static_cast<OrlMoAttributeValueContainer_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
        *tail = record;
        tail = &record->nextMember;
        if (!fill(id, member.second, record->memberValue, error)) {
            return false;
        }
    }
    return true;
}

bool ValueParser::distinct(Id attribute, const std::vector<const Node*>& items,
                           std::string* error) const {
    const std::string& name = _model.attributeName(attribute);
    Id key = kNone;
    for (Id member : _model.structMembers(attribute)) {
        key = _model.tables().attributes[member].key ? member : key;
    }
    std::set<std::string> seen;
    for (const Node* item : items) {
        const Node* value = item;
        if (key != kNone && item->kind == Node::kStruct) {
            auto given = std::find_if(item->members.begin(), item->members.end(), [&](auto& m) {
                return m.first == _model.attributeName(key);
            });
            if (given == item->members.end()) {
                *error = "each entry of " + name + " needs " + _model.attributeName(key) +
                         ", the key of its entries";
                return false;
            }
            value = &given->second;
        }
        if (value->kind == Node::kScalar && !seen.insert(value->text).second) {
            *error = name + ": " + (value == item ? "value" : _model.attributeName(key)) + " '" +
                     value->text + "' is given twice; a list holds each once";
            return false;
        }
    }
    return true;
}

bool ValueParser::fitsType(Id attribute, const std::string& text, std::string* error) const {
    const lysc_node* node = _model.tables().attributes[attribute].node;
    if (node == nullptr || (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) == 0) {
        return true;
    }
    ly_ctx* context = _model.schema().context();
    LY_ERR result =
        lyd_value_validate(context, node, text.c_str(), text.size(), nullptr, nullptr, nullptr);
    if (result == LY_SUCCESS || result == LY_EINCOMPLETE) {
        return true;
    }
    const char* reason = ly_errmsg(context);
    *error = _model.attributeName(attribute) + ": value '" + text + "' does not fit its type (" +
             _model.typeName(attribute) + ")" +
             (reason != nullptr ? std::string(": ") + reason : std::string());
    return false;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

#include "host/model/MoReader.h"

#include <Poco/DOM/Element.h>
#include <Poco/DOM/Node.h>

#include <sstream>

#include "host/model/ModelBuilder.h"
#include "host/model/StationValues.h"

namespace vesk {
namespace host {
namespace model {
namespace {

using Poco::XML::Element;
using Poco::XML::Node;

std::string localName(const Node* node) {
    const std::string& name = node->nodeName();
    size_t colon = name.find(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
}

// The child elements of `parent`, grouped by name in the order each name first appears.
std::vector<std::pair<std::string, std::vector<const Element*>>> groupChildren(
    const Element* parent) {
    std::vector<std::pair<std::string, std::vector<const Element*>>> groups;
    for (Node* node = parent->firstChild(); node != nullptr; node = node->nextSibling()) {
        if (node->nodeType() != Node::ELEMENT_NODE) {
            continue;
        }
        std::string name = localName(node);
        auto it = groups.begin();
        while (it != groups.end() && it->first != name) {
            ++it;
        }
        if (it == groups.end()) {
            groups.emplace_back(name, std::vector<const Element*>());
            it = groups.end() - 1;
        }
        it->second.push_back(static_cast<const Element*>(node));
    }
    return groups;
}

std::string fault(const std::string& dn, const std::string& attribute, const std::string& reason) {
    return dn + ": attribute " + attribute + ": " + reason;
}

std::string className(const std::string& dn) {
    std::string last = dn.substr(dn.rfind(',') == std::string::npos ? 0 : dn.rfind(',') + 1);
    return last.substr(0, last.find('='));
}

bool allowsClass(const char* classes, const std::string& name) {
    std::istringstream in(classes);
    for (std::string item; in >> item;) {
        if (item == name) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool MoReader::read(const Element* root, std::string* error) {
    Id moc = _schema.tables().root;
    if (root == nullptr || localName(root) != _schema.tables().mocName(moc)) {
        *error = "the root element is not " + _schema.tables().mocName(moc);
        return false;
    }
    return readObject(root, moc, "", error) && checkReferences(error);
}

bool MoReader::readObject(const Element* element, Id moc, const std::string& parentDn,
                          std::string* error) {
    std::vector<Group> groups = groupChildren(element);
    std::string rdn;
    if (!readRdn(groups, moc, parentDn, &rdn, error)) {
        return false;
    }
    std::string dn = parentDn.empty() ? rdn : parentDn + "," + rdn;
    if (!_dns.insert(dn).second) {
        *error = dn + ": the MO is given twice";
        return false;
    }
    auto object = std::make_unique<DBObject>(rdn, 1, true, false, IPCData::OPSTATE_DISABLED,
                                             IPCData::ADMSTATE_UNLOCKED, parentDn, 1);
    DBObject* raw = object.get();
    _objects.push_back(std::move(object));
    std::vector<Group> children;
    if (!readAttributes(raw, dn, moc, groups, &children, error)) {
        return false;
    }
    for (const Group& group : children) {
        Id child = _schema.tables().containments[_schema.childContainment(moc, group.first)].child;
        for (const Element* item : group.second) {
            if (!readObject(item, child, dn, error)) {
                return false;
            }
        }
    }
    return true;
}

bool MoReader::readRdn(const std::vector<Group>& groups, Id moc, const std::string& parentDn,
                       std::string* rdn, std::string* error) const {
    const ModelTables& tables = _schema.tables();
    const std::string& name = tables.mocName(moc);
    Id key = tables.mocs[moc].firstAttribute;
    while (key != kNone && !tables.attributes[key].key) {
        key = tables.attributes[key].next;
    }
    for (const Group& group : groups) {
        if (key != kNone && group.first == tables.attributeName(key) && group.second.size() == 1) {
            *rdn = name + "=" + group.second.front()->innerText();
            return true;
        }
    }
    *error = (parentDn.empty() ? name : parentDn + "," + name) + ": the MO has no single key";
    return false;
}

bool MoReader::readAttributes(DBObject* object, const std::string& dn, Id moc,
                              const std::vector<Group>& groups, std::vector<Group>* children,
                              std::string* error) {
    const ModelTables& tables = _schema.tables();
    std::set<std::string> seen;
    for (const Group& group : groups) {
        if (_schema.childContainment(moc, group.first) != kNone) {
            children->push_back(group);
            continue;
        }
        Id attribute = _schema.attributeOf(moc, group.first);
        if (attribute == kNone) {
            *error = fault(dn, group.first, "the class has no such attribute");
            return false;
        }
        seen.insert(group.first);
        if (group.first == "reservedBy") {
            continue;  // the database derives it from the references
        }
        bool isStruct =
            tables.typeContainers[tables.attributes[attribute].typeContainer].structType != kNone;
        bool ok = isStruct ? readStruct(object, dn, attribute, group, error)
                           : readAttribute(object, dn, attribute, group.first, group, error);
        if (!ok) {
            return false;
        }
    }
    for (Id it = tables.mocs[moc].firstAttribute; it != kNone; it = tables.attributes[it].next) {
        if (tables.attributes[it].mandatory && seen.count(tables.attributeName(it)) == 0) {
            *error = fault(dn, tables.attributeName(it), "mandatory attribute missing");
            return false;
        }
    }
    return true;
}

bool MoReader::readAttribute(DBObject* object, const std::string& dn, Id attribute,
                             const std::string& shownName, const Group& group, std::string* error) {
    std::vector<std::string> texts;
    for (const Element* element : group.second) {
        texts.push_back(element->innerText());
    }
    std::string reason;
    std::unique_ptr<Attribute> encoded = encodeAttribute(_schema, attribute, texts, &reason);
    if (encoded == nullptr) {
        *error = fault(dn, shownName, reason);
        return false;
    }
    const lysc_node* node = _schema.tables().attributes[attribute].node;
    const char* classes = extensionArgument(node, "reference");
    for (const std::string& text : texts) {
        if (classes != nullptr && !text.empty()) {
            _references.push_back(Reference{dn, shownName, text, classes});
        }
    }
    object->addAttribute(*encoded.release());
    return true;
}

bool MoReader::readStruct(DBObject* object, const std::string& dn, Id attribute, const Group& group,
                          std::string* error) {
    const ModelTables& tables = _schema.tables();
    const std::string& name = tables.attributeName(attribute);
    bool list = isListAttribute(tables, attribute);
    if (!list && group.second.size() != 1) {
        *error = fault(dn, name,
                       "takes one value, the file gives " + std::to_string(group.second.size()));
        return false;
    }
    std::string joined;
    for (size_t i = 0; i < group.second.size(); ++i) {
        std::string rdn = object->dn + ":" + name + (list ? "=" + std::to_string(i + 1) : "");
        auto child = std::make_unique<DBObject>(rdn, 1, false, false, IPCData::OPSTATE_DISABLED,
                                                IPCData::ADMSTATE_UNLOCKED, dn, 1);
        if (!readMembers(child.get(), dn, attribute, group.second[i], error)) {
            return false;
        }
        joined += (i == 0 ? "" : ";") + dn + "," + rdn;
        _objects.push_back(std::move(child));
    }
    auto value = new Attribute(false, name, AttributeVariant(joined), 0, true,
                               list ? IPCData::AVT_STRUCT_LIST : IPCData::AVT_STRUCT, true, false);
    object->addAttribute(*value);
    return true;
}

bool MoReader::readMembers(DBObject* child, const std::string& dn, Id attribute,
                           const Element* element, std::string* error) {
    const ModelTables& tables = _schema.tables();
    Id structType = tables.typeContainers[tables.attributes[attribute].typeContainer].structType;
    for (const Group& group : groupChildren(element)) {
        std::string shown = tables.attributeName(attribute) + "." + group.first;
        Id member = _schema.memberOf(structType, group.first);
        if (member == kNone) {
            *error = fault(dn, shown, "the struct has no such member");
            return false;
        }
        if (!readAttribute(child, dn, member, shown, group, error)) {
            return false;
        }
    }
    return true;
}

bool MoReader::checkReferences(std::string* error) const {
    for (const Reference& reference : _references) {
        if (!allowsClass(reference.classes, className(reference.target))) {
            *error =
                fault(reference.dn, reference.attribute,
                      "refers to " + reference.target + ", which is none of: " + reference.classes);
            return false;
        }
        if (_dns.count(reference.target) == 0) {
            *error = fault(reference.dn, reference.attribute,
                           "refers to " + reference.target + ", which the station does not hold");
            return false;
        }
    }
    return true;
}

}  // namespace model
}  // namespace host
}  // namespace vesk

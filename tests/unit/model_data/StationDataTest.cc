// Checks the demo station and the system-created instance file against the
// station model.
#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/Node.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ModelFixture.h"

namespace vesk::modeltest {
namespace {

using Poco::XML::Element;
using Poco::XML::Node;

std::vector<Element*> childElements(Node* parent, const std::string& name) {
    std::vector<Element*> result;
    for (Node* it = parent->firstChild(); it; it = it->nextSibling()) {
        if (it->nodeType() == Node::ELEMENT_NODE && it->nodeName() == name) {
            result.push_back(static_cast<Element*>(it));
        }
    }
    return result;
}

// Whether an instance file type name fits the model's attribute.
bool pardTypeFits(const std::string& pard, const TypeInfo& info) {
    static const std::map<std::string, std::pair<int, bool>> fits = {
        {"PardInt8", {kInt8, false}},       {"PardInt16", {kInt16, false}},
        {"PardInt32", {kInt32, false}},     {"PardInt64", {kInt64, false}},
        {"PardUInt8", {kUint8, false}},     {"PardUInt16", {kUint16, false}},
        {"PardUInt32", {kUint32, false}},   {"PardUInt64", {kUint64, false}},
        {"PardBoolean", {kBool, false}},    {"PardDouble", {kDecimal64, false}},
        {"PardString", {kString, false}},   {"PardReferenceList", {kReference, true}},
        {"PardMORef", {kReference, false}}, {"PardEnum", {kEnum, false}},
        {"PardEnumList", {kEnum, true}},    {"PardInt32List", {kInt32, true}},
    };
    auto it = fits.find(pard);
    return it != fits.end() && it->second.first == info.base && it->second.second == info.isList;
}

class InstanceFile : public ModelData {
  protected:
    // Checks one mo element against `node`, the class it instantiates.
    void checkMo(Element* mo, const lysc_node* node, const std::string& where) {
        std::string ldn = mo->getAttribute("ldn");
        std::string id = ldn.substr(ldn.find('=') + 1);
        bool keySeen = false;
        for (Element* a : childElements(mo, "attribute")) {
            std::string name = a->getAttribute("name");
            std::string type = a->getAttribute("type");
            std::string value = a->getAttribute("value");
            const lysc_node* model = attribute(node, name);
            ASSERT_NE(model, nullptr) << where << ": no attribute " << name;
            TypeInfo info = hostType(model);
            EXPECT_TRUE(pardTypeFits(type, info)) << where << " " << name << " " << type;
            if (info.base == kEnum) {
                std::set<int> numbers;
                for (const auto& [literal, number] : enumLiterals(model))
                    numbers.insert(number);
                for (const std::string& item : split(value, ',')) {
                    EXPECT_TRUE(numbers.count(std::stoi(item)))
                        << where << " " << name << " " << item;
                }
            }
            if (model->flags & LYS_KEY) {
                keySeen = true;
                EXPECT_EQ(value, id) << where;
            }
        }
        EXPECT_TRUE(keySeen) << where << " has no key attribute";
        for (Element* child : childElements(mo, "mo")) {
            std::string childLdn = child->getAttribute("ldn");
            std::string childClass = childLdn.substr(0, childLdn.rfind('='));
            const lysc_node* childNode = nullptr;
            for (const lysc_node* candidate : childClasses(node)) {
                if (childClass == candidate->name)
                    childNode = candidate;
            }
            ASSERT_NE(childNode, nullptr) << where << ": " << childClass << " is no child class";
            checkMo(child, childNode, where + "," + childLdn);
        }
    }
};

TEST_F(InstanceFile, ListsOnlySystemCreatedClassesWithModelAttributes) {
    Poco::XML::DOMParser parser;
    Poco::AutoPtr<Poco::XML::Document> doc =
        parser.parse(kDataDir + "/conf/system_created_MOs.xml");
    Element* root = doc->documentElement();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->nodeName(), "SystemCreatedMOs");
    // The reader takes the first node of its walk as the root element.
    EXPECT_EQ(doc->firstChild(), root);

    std::vector<Element*> mos = childElements(root, "mo");
    ASSERT_FALSE(mos.empty());
    std::set<std::string> classesSeen;
    for (Element* mo : mos) {
        std::string ldn = mo->getAttribute("ldn");
        std::string className = ldn.substr(0, ldn.rfind('='));
        // One top-level mo per class: the reader writes each n times otherwise.
        EXPECT_TRUE(classesSeen.insert(className).second) << className;
        const lysc_node* node = nullptr;
        for (const auto& [path, candidate] : allClasses()) {
            if (className == candidate->name &&
                extensionArgument(candidate, "system-created") != nullptr) {
                node = candidate;
            }
        }
        ASSERT_NE(node, nullptr) << className << " is no system-created class";
        checkMo(mo, node, ldn);
    }
}

// The demo station parsed and validated by libyang, with its references
// checked against the MOs it holds.
class DemoStation : public ModelData {
  protected:
    void SetUp() override {
        ModelData::SetUp();
        std::string path = kDataDir + "/station/demo-station.xml";
        ASSERT_EQ(lyd_parse_data_path(_model->context(), path.c_str(), LYD_XML, LYD_PARSE_STRICT,
                                      LYD_VALIDATE_PRESENT, &_tree),
                  LY_SUCCESS)
            << ly_errmsg(_model->context());
        collect(_tree);
    }
    void TearDown() override { lyd_free_all(_tree); }

    void collect(const lyd_node* first) {
        for (const lyd_node* it = first; it; it = it->next) {
            const lysc_node* schema = it->schema;
            if (isClass(schema)) {
                _classOf[dnOf(it)] = schema->name;
            } else if (schema->nodetype & (LYS_LEAF | LYS_LEAFLIST)) {
                if (const char* targets = extensionArgument(schema, "reference")) {
                    _refs.push_back({dnOf(it), schema->name, lyd_get_value(it), targets});
                }
            }
            collect(lyd_child(it));
        }
    }
    std::set<std::string> values(const char* xpath) const {
        std::set<std::string> result;
        ly_set* set = nullptr;
        EXPECT_EQ(lyd_find_xpath(_tree, xpath, &set), LY_SUCCESS) << xpath;
        for (uint32_t i = 0; set && i < set->count; ++i) {
            result.insert(lyd_get_value(set->dnodes[i]));
        }
        ly_set_free(set, nullptr);
        return result;
    }
    int count(const std::string& className) const {
        int n = 0;
        for (const auto& [dn, name] : _classOf)
            n += name == className;
        return n;
    }

    struct Ref {
        std::string owner, attribute, target, targetClasses;
    };
    lyd_node* _tree = nullptr;
    std::map<std::string, std::string> _classOf;  // dn to class
    std::vector<Ref> _refs;
};

TEST_F(DemoStation, ReferencesNameExistingMosOfTheirClassesBothWays) {
    ASSERT_GT(_refs.size(), 20u);
    std::set<std::pair<std::string, std::string>> links;  // owner, target
    for (const Ref& ref : _refs) {
        auto it = _classOf.find(ref.target);
        ASSERT_NE(it, _classOf.end()) << ref.owner << " " << ref.attribute << " " << ref.target;
        std::vector<std::string> allowed = split(ref.targetClasses, ' ');
        EXPECT_NE(std::find(allowed.begin(), allowed.end(), it->second), allowed.end())
            << ref.owner << " " << ref.attribute << " names a " << it->second;
        if (ref.attribute != "reservedBy") {
            links.insert({ref.owner, ref.target});
        }
    }
    // reservedBy lists exactly the MOs that refer to the MO, where it has one.
    std::set<std::pair<std::string, std::string>> reserved;
    for (const Ref& ref : _refs) {
        if (ref.attribute == "reservedBy") {
            reserved.insert({ref.target, ref.owner});
            EXPECT_TRUE(links.count({ref.target, ref.owner}))
                << ref.owner << " is reserved by " << ref.target << ", which does not refer to it";
        }
    }
    for (const auto& [owner, target] : links) {
        const lysc_node* targetClass = nullptr;
        for (const auto& [path, node] : allClasses()) {
            if (_classOf[target] == node->name)
                targetClass = node;
        }
        ASSERT_NE(targetClass, nullptr);
        if (attribute(targetClass, "reservedBy") != nullptr) {
            EXPECT_TRUE(reserved.count({owner, target})) << target << " lacks reservedBy " << owner;
        }
    }
}

TEST_F(DemoStation, HoldsTheDocumentedStation) {
    EXPECT_EQ(count("EUtranCellFDD"), 3);
    EXPECT_EQ(count("EUtranFrequency"), 3);
    EXPECT_EQ(count("TermPointToMme"), 3);
    EXPECT_EQ(count("NodeBLocalCell"), 2);
    EXPECT_GE(count("EUtranCellRelation"), 3);
    EXPECT_GE(count("ExternalEUtranCellFDD"), 1);
    EXPECT_GE(count("PmJob"), 1);
    for (const char* dn : {"ManagedElement=1,Equipment=1,RbsUnit=1,WifiModule=1",
                           "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1",
                           "ManagedElement=1,SystemFunctions=1,SwM=1",
                           "ManagedElement=1,ENodeBFunction=1,WiFiChannelSelection=1",
                           "ManagedElement=1,NodeBFunction=1"}) {
        EXPECT_TRUE(_classOf.count(dn)) << dn;
    }
    // The cells use two of the station's three frequencies; the third is free for relations.
    std::set<std::string> channels = values("//EUtranFrequency/arfcnValueEUtranDl");
    EXPECT_EQ(channels, (std::set<std::string>{"1300", "3100", "6300"}));
    EXPECT_EQ(values("//EUtranCellFDD/earfcndl"), (std::set<std::string>{"1300", "6300"}));
}

}  // namespace
}  // namespace vesk::modeltest

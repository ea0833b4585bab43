#include "model/VeskInstanceModel.h"

#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/NamedNodeMap.h>
#include <Poco/DOM/NodeFilter.h>
#include <Poco/DOM/NodeIterator.h>
#include <Poco/DOM/NodeList.h>
#include <Poco/Exception.h>
#include <Poco/SAX/InputSource.h>

#include <fstream>

#include "platform/GetPath.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {

const char* const VeskInstanceModel::kDefaultPath = "/opt/OAM/vesk/conf/system_created_MOs.xml";
const char* const VeskInstanceModel::kPathVariable = "VESK_SYSTEM_CREATED_MOS";

namespace {

// The operation named in the lines of a reference conversion, which is part of makeAttribute.
const char* const kMakeAttribute = "makeAttribute";

std::string classOf(const std::string& ldn) {
    std::string::size_type equals = ldn.rfind('=');
    return equals == std::string::npos ? ldn : ldn.substr(0, equals);
}

// Converts with `convert` into T, then stores it as the variant alternative V; a failed
// conversion leaves zero.
template <typename T, typename V, typename F>
AttributeVariant converted(const std::string& text, F convert) {
    T value{};
    convert(text, value);
    return AttributeVariant(static_cast<V>(value));
}

bool toInt(const std::string& t, int& v) {
    return Toolbox::convertStringToInt(t, v, true);
}
bool toUInt(const std::string& t, unsigned& v) {
    return Toolbox::convertStringToUInt(t, v, true);
}
bool toShort(const std::string& t, short& v) {
    return Toolbox::convertStringToShort(t, v, true);
}
bool toDouble(const std::string& t, double& v) {
    return Toolbox::convertStringToDouble(t, v);
}
bool toLongLong(const std::string& t, long long& v) {
    return Toolbox::convertStringToLongLong(t, v, true);
}
bool toULongLong(const std::string& t, unsigned long long& v) {
    return Toolbox::convertStringToULongLong(t, v, true);
}

}  // namespace

VeskInstanceModel* VeskInstanceModel::instance() {
    static VeskInstanceModel model;
    return &model;
}

void VeskInstanceModel::reset() {
    _mos.clear();
    _classes.clear();
}

bool VeskInstanceModel::checkInstanceModel(std::string className, std::string parentDn,
                                           int dbTxHandle) {
    _dbTxHandle = dbTxHandle;
    if (_mos.empty()) {
        readFile(getPath(kPathVariable, kDefaultPath));
        for (const sMO& mo : _mos) {
            std::string moClass = classOf(mo.ldn);
            VESK_TRACE("VeskModelRepository::%s inserting %s to moc list", __func__,
                       moClass.c_str());
            _classes.push_back(moClass);
        }
    }
    if (_classes.empty()) {
        VESK_TRACE("VeskModelRepository::%s returning false", __func__);
        return false;
    }
    bool written = false;
    // One pass per class entry: a class with n top-level MOs has each written n times.
    for (const std::string& entry : _classes) {
        if (entry != className)
            continue;
        VESK_TRACE("VeskModelRepository::%s need to insert %s from instance model", __func__,
                   className.c_str());
        for (const sMO& mo : _mos) {
            if (classOf(mo.ldn) != className)
                continue;
            VESK_TRACE("VeskModelRepository::%s returning true", __func__);
            writeToDatabase(parentDn, mo);
            written = true;
        }
    }
    return written;
}

void VeskInstanceModel::readFile(std::string path) {
    std::ifstream in(path);
    if (!in) {
        VESK_ERROR("VeskModelRepository::%s System parameter file not found (%s)", __func__,
                   path.c_str());
        return;
    }
    VESK_TRACE("VeskModelRepository::%s file found (%s)", __func__, path.c_str());
    try {
        Poco::XML::InputSource source(in);
        Poco::XML::DOMParser parser;
        Poco::AutoPtr<Poco::XML::Document> document = parser.parse(&source);
        Poco::XML::NodeIterator it(document, Poco::XML::NodeFilter::SHOW_ELEMENT);
        Poco::XML::Node* root = it.nextNode();
        if (root == nullptr || root->nodeName() != "SystemCreatedMOs") {
            throw Poco::Exception("Root node is not <SystemCreatedMOs>");
        }
        for (Poco::XML::Node* node = root->firstChild(); node != nullptr;
             node = node->nextSibling()) {
            if (node->nodeType() != Poco::XML::Node::ELEMENT_NODE || node->nodeName() != "mo") {
                continue;
            }
            auto* element = static_cast<Poco::XML::Element*>(node);
            Poco::AutoPtr<Poco::XML::NodeList> children = element->childNodes();
            sMO mo = handleMo(children);
            mo.ldn = element->getAttribute("ldn");
            _mos.push_back(mo);
        }
        VESK_TRACE("VeskModelRepository::%s System parameters file handled (%s)", __func__,
                   path.c_str());
    } catch (const Poco::Exception& e) {
        VESK_ERROR("VeskModelRepository::%s Problems with POCO::XML parsing, msg: %s (%s)",
                   __func__, e.displayText().c_str(), path.c_str());
    }
}

VeskInstanceModel::sMO VeskInstanceModel::handleMo(Poco::XML::NodeList* children) {
    sMO mo;
    for (unsigned long i = 0; i < children->length(); ++i) {
        Poco::XML::Node* node = children->item(i);
        if (node->nodeType() != Poco::XML::Node::ELEMENT_NODE)
            continue;
        if (node->nodeName() == "attribute") {
            Poco::AutoPtr<Poco::XML::NamedNodeMap> attributes = node->attributes();
            mo.attributes.push_back(handleAttribute(attributes));
        } else if (node->nodeName() == "mo") {
            auto* element = static_cast<Poco::XML::Element*>(node);
            Poco::AutoPtr<Poco::XML::NodeList> grandChildren = element->childNodes();
            sMO child = handleMo(grandChildren);
            child.ldn = element->getAttribute("ldn");
            mo.children.push_back(child);
        }
    }
    return mo;
}

VeskInstanceModel::sAttribute VeskInstanceModel::handleAttribute(
    Poco::XML::NamedNodeMap* attributes) {
    sAttribute attribute;
    for (unsigned long i = 0; i < attributes->length(); ++i) {
        Poco::XML::Node* node = attributes->item(i);
        if (node->nodeName() == "name") {
            attribute.name = node->nodeValue();
        } else if (node->nodeName() == "type") {
            attribute.type = node->nodeValue();
        } else if (node->nodeName() == "value") {
            attribute.value = node->nodeValue();
        }
    }
    return attribute;
}

void VeskInstanceModel::writeToDatabase(std::string parentDn, sMO mo) {
    std::string fullName = parentDn + "," + mo.ldn;
    VESK_TRACE("VeskModelRepository::%s enter (%s)", __func__, fullName.c_str());
    DBObject* object = new DBObject(mo.ldn, 1, true, false, IPCData::OPSTATE_ENABLED,
                                    IPCData::ADMSTATE_UNLOCKED, parentDn, 1);
    addAttributes(object, mo.attributes);
    delete object;
    for (const sMO& child : mo.children) {
        writeToDatabase(fullName, child);
    }
}

void VeskInstanceModel::addAttributes(DBObject* object, const std::list<sAttribute>& attributes) {
    for (const sAttribute& attribute : attributes) {
        Attribute* made = makeAttribute(attribute);
        if (made == nullptr) {
            VESK_ERROR("VeskModelRepository::%s could not create attribute (%s)", __func__,
                       attribute.name.c_str());
            continue;
        }
        made->hidden = false;
        made->valueSet = true;
        made->modified = true;
        object->addAttribute(*made);
    }
    IDatabase::insert(object, _dbTxHandle);  // the answer is not looked at
}

Attribute* VeskInstanceModel::makeAttribute(const sAttribute& a) {
    const std::string& v = a.value;
    AttributeVariant value;
    int type = 0;
    if (a.type == "PardInt8") {
        value = converted<int, char>(v, toInt), type = 1;
    } else if (a.type == "PardInt16") {
        value = converted<short, short>(v, toShort), type = 2;
    } else if (a.type == "PardInt32") {
        value = converted<int, int>(v, toInt), type = 3;
    } else if (a.type == "PardInt64") {
        value = converted<long long, long long>(v, toLongLong), type = 4;
    } else if (a.type == "PardUInt8") {
        value = converted<unsigned, unsigned char>(v, toUInt), type = 5;
    } else if (a.type == "PardUInt16") {
        value = converted<unsigned, unsigned short>(v, toUInt), type = 6;
    } else if (a.type == "PardUInt32") {
        value = converted<unsigned, unsigned>(v, toUInt), type = 7;
    } else if (a.type == "PardUInt64") {
        value = converted<unsigned long long, unsigned long long>(v, toULongLong), type = 8;
    } else if (a.type == "PardBoolean") {
        value = AttributeVariant(v == "true"), type = 10;
    } else if (a.type == "PardDouble") {
        value = converted<double, double>(v, toDouble), type = 16;
    } else if (a.type == "PardFloat") {
        value = converted<double, float>(v, toDouble), type = 17;
    } else if (a.type == "PardString") {
        value = AttributeVariant(v), type = 9;
    } else if (a.type == "PardReferenceList") {
        value = AttributeVariant(v), type = 31;
    } else if (a.type == "PardMORef") {
        value = AttributeVariant(resolveReferences(a)), type = 11;
    } else if (a.type == "PardEnum") {
        value = converted<int, int>(v, toInt), type = 12;
    } else if (a.type == "PardEnumList") {
        value = AttributeVariant(v), type = 18;
    } else if (a.type == "PardInt32List") {
        value = AttributeVariant(v), type = 19;
    } else {
        return nullptr;
    }
    return new Attribute(false, a.name, value, 0, true,
                         static_cast<IPCData::AttributeValueType>(type), true, false);
}

std::string VeskInstanceModel::resolveReferences(const sAttribute& attribute) {
    VESK_TRACE("VeskModelRepository::%s conversion for %s=%s", kMakeAttribute,
               attribute.name.c_str(), attribute.value.c_str());
    std::list<std::string> items;
    Toolbox::readStringToList(attribute.value, ',', items, true);
    std::string joined;
    for (const std::string& item : items) {
        std::string result = item;
        if (item.find('=') == std::string::npos) {
            std::string last;
            for (DBObject* object : IDatabase::getMOClass(item, _dbTxHandle)) {
                if (object->dn.find(':') == std::string::npos) {
                    last =
                        object->parentDn.empty() ? object->dn : object->parentDn + "," + object->dn;
                }
                delete object;
            }
            if (last.empty()) {
                VESK_ERROR("VeskModelRepository::%s could not find instance for %s", kMakeAttribute,
                           item.c_str());
            } else {
                result = last;
            }
        }
        VESK_TRACE("VeskModelRepository::%s adding %s", kMakeAttribute, result.c_str());
        joined += (joined.empty() ? "" : ",") + result;
    }
    VESK_TRACE("VeskModelRepository::%s adding %s=%s", kMakeAttribute, attribute.name.c_str(),
               joined.c_str());
    return joined;
}

}  // namespace TibVeskCM

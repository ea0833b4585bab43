#include "host/model/StationLoader.h"

#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/Element.h>
#include <Poco/Exception.h>

#include <filesystem>

#include "host/model/MoReader.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace model {
namespace {

using Poco::XML::Element;
using Poco::XML::Node;

Poco::AutoPtr<Poco::XML::Document> parseFile(const std::string& file, std::string* error) {
    if (!std::filesystem::is_regular_file(file)) {
        *error = file + ": cannot open the file";
        return nullptr;
    }
    try {
        Poco::XML::DOMParser parser;
        return parser.parse(file);
    } catch (const Poco::Exception& e) {
        *error = file + ": " + e.displayText();
    }
    return nullptr;
}

// One station object: <object name instance> with <attribute name type value> children, the
// type being the database's type number.
bool readStationObject(const Element* element, ObjectList* objects, std::string* error) {
    std::string name = element->getAttribute("name");
    int instance = std::atoi(element->getAttribute("instance").c_str());
    auto object =
        std::make_unique<DBObject>(name, instance > 0 ? instance : 1, true, false,
                                   IPCData::OPSTATE_DISABLED, IPCData::ADMSTATE_UNLOCKED, "", 1);
    for (Node* node = element->firstChild(); node != nullptr; node = node->nextSibling()) {
        if (node->nodeType() != Node::ELEMENT_NODE || node->nodeName() != "attribute") {
            continue;
        }
        const auto* item = static_cast<const Element*>(node);
        std::string attribute = item->getAttribute("name");
        int type = std::atoi(item->getAttribute("type").c_str());
        if (attribute.empty() || type < 1 || type > 32) {
            *error = name + ": attribute " + attribute + ": no name or an unknown type number '" +
                     item->getAttribute("type") + "'";
            return false;
        }
        auto value = new Attribute(false, attribute, AttributeVariant(std::string()), 0, true,
                                   static_cast<IPCData::AttributeValueType>(type), true, false);
        value->SetValue(item->getAttribute("value"), value->type);
        object->addAttribute(*value);
    }
    objects->push_back(std::move(object));
    return true;
}

bool readStationObjects(const std::string& file, ObjectList* objects, std::string* error) {
    Poco::AutoPtr<Poco::XML::Document> document = parseFile(file, error);
    if (document.isNull()) {
        return false;
    }
    const Element* root = document->documentElement();
    if (root == nullptr || root->nodeName() != "StationObjects") {
        *error = file + ": the root element is not StationObjects";
        return false;
    }
    for (Node* node = root->firstChild(); node != nullptr; node = node->nextSibling()) {
        if (node->nodeType() == Node::ELEMENT_NODE && node->nodeName() == "object" &&
            !readStationObject(static_cast<const Element*>(node), objects, error)) {
            *error = file + ": " + *error;
            return false;
        }
    }
    return true;
}

bool databaseHoldsStation(const std::string& rootClass) {
    std::list<DBObject*> roots = IDatabase::getMOClass(rootClass, 0);
    bool any = !roots.empty();
    for (DBObject* object : roots) {
        delete object;
    }
    return any || IDatabase::isPresentInDB("OAM", 1) != 0;
}

// Inserts every object in one transaction; on any refusal the transaction is rolled back.
bool writeAll(const ObjectList& objects, std::string* error) {
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    if (handle == 0) {
        *error = "cannot open a database transaction";
        return false;
    }
    for (const std::unique_ptr<DBObject>& object : objects) {
        if (IDatabase::insert(object.get(), handle) == 0) {
            IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false);
            *error = "the database refused the object " + object->dn + " under '" +
                     object->parentDn + "'";
            return false;
        }
    }
    if (IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false) == 0) {
        *error = "the database transaction did not commit";
        return false;
    }
    return true;
}

}  // namespace

bool StationLoader::load(const std::string& stationFile, const std::string& objectsFile,
                         std::string* error) {
    ObjectList objects;
    Poco::AutoPtr<Poco::XML::Document> document = parseFile(stationFile, error);
    if (document.isNull()) {
        return false;
    }
    MoReader reader(_schema, &objects);
    if (!reader.read(document->documentElement(), error)) {
        *error = stationFile + ": " + *error;
        VESK_ERROR("host: %s", error->c_str());
        return false;
    }
    if (!readStationObjects(objectsFile, &objects, error)) {
        VESK_ERROR("host: %s", error->c_str());
        return false;
    }
    if (databaseHoldsStation(_schema.tables().mocName(_schema.tables().root))) {
        *error = "the station database already holds a station; load only into an empty state";
        VESK_ERROR("host: %s", error->c_str());
        return false;
    }
    if (!writeAll(objects, error)) {
        VESK_ERROR("host: %s", error->c_str());
        return false;
    }
    _objectCount = objects.size();
    VESK_INFO("host: loaded %zu objects from %s and %s", objects.size(), stationFile.c_str(),
              objectsFile.c_str());
    return true;
}

bool StationLoader::holdsStation(const ModelSchema& schema) {
    return databaseHoldsStation(schema.tables().mocName(schema.tables().root));
}

bool StationLoader::isEmptyStateDirectory(const std::string& directory, std::string* error) {
    std::error_code code;
    if (!std::filesystem::exists(directory, code)) {
        return true;
    }
    if (!std::filesystem::is_directory(directory, code)) {
        *error = directory + " is not a directory";
        return false;
    }
    if (!std::filesystem::is_empty(directory, code)) {
        *error = "the state directory " + directory +
                 " is not empty; the demo station loads only into an empty one";
        return false;
    }
    return true;
}

}  // namespace model
}  // namespace host
}  // namespace vesk

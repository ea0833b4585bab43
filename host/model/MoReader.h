// Reads the MOs of a station data file (XML encoding of the station model) into database
// objects, checking each against the model. Used by StationLoader.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/model/ModelSchema.h"
#include "platform/DBObject.h"

namespace Poco {
namespace XML {
class Element;
}
}  // namespace Poco

namespace vesk {
namespace host {
namespace model {

using ObjectList = std::vector<std::unique_ptr<DBObject>>;

class MoReader {
  public:
    MoReader(const ModelSchema& schema, ObjectList* objects)
        : _schema(schema), _objects(*objects) {}

    // Reads the MO of `root` (a ManagedElement element) and everything below it, parents before
    // children, then checks that every reference names an MO read and of a class it allows.
    // False, with "DN: attribute NAME: reason" or "DN: reason" in `error`, at the first fault.
    bool read(const Poco::XML::Element* root, std::string* error);

  private:
    struct Reference {
        std::string dn;
        std::string attribute;
        std::string target;
        const char* classes;  // space-separated class names
    };
    using Group = std::pair<std::string, std::vector<const Poco::XML::Element*>>;

    bool readObject(const Poco::XML::Element* element, Id moc, const std::string& parentDn,
                    std::string* error);
    // "Class=key" of an MO from its key element.
    bool readRdn(const std::vector<Group>& groups, Id moc, const std::string& parentDn,
                 std::string* rdn, std::string* error) const;
    bool readAttributes(DBObject* object, const std::string& dn, Id moc,
                        const std::vector<Group>& groups, std::vector<Group>* children,
                        std::string* error);
    bool readAttribute(DBObject* object, const std::string& dn, Id attribute,
                       const std::string& shownName, const Group& group, std::string* error);
    bool readStruct(DBObject* object, const std::string& dn, Id attribute, const Group& group,
                    std::string* error);
    bool readMembers(DBObject* child, const std::string& dn, Id attribute,
                     const Poco::XML::Element* element, std::string* error);
    bool checkReferences(std::string* error) const;

    const ModelSchema& _schema;
    ObjectList& _objects;
    std::set<std::string> _dns;
    std::vector<Reference> _references;
};

}  // namespace model
}  // namespace host
}  // namespace vesk

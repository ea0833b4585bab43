// The system-created MOs whose names and values the model's defaults cannot give, read from the
// station's instance file and written into the current database transaction on request.
//
// The file is read at first need and kept for the life of the library once it yielded MOs; a
// missing or malformed file is logged and read again at the next call. No lock: callers run
// under the front's mutex, and the database handle is working state of the current call.
#pragma once

#include <list>
#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"

namespace Poco {
namespace XML {
class NodeList;
class NamedNodeMap;
}  // namespace XML
}  // namespace Poco

namespace TibVeskCM {

class VeskInstanceModel {
  public:
    struct sAttribute {
        std::string name;
        std::string type;
        std::string value;
    };
    struct sMO {
        std::string ldn;  // Class=id, relative to the parent it is created under
        std::list<sAttribute> attributes;
        std::list<sMO> children;
    };

    // The instance file's default path; the environment variable VESK_SYSTEM_CREATED_MOS
    // overrides it.
    static const char* const kDefaultPath;
    static const char* const kPathVariable;

    // Made at first use, destroyed at library unload.
    static VeskInstanceModel* instance();
    virtual ~VeskInstanceModel() = default;

    // Writes the MOs of className that the file lists below parentDn into the database
    // transaction dbTxHandle. True if the file covers the class.
    bool checkInstanceModel(std::string className, std::string parentDn, int dbTxHandle);

    // Appends the top-level MOs of the file at `path`; logs and keeps what was read on failure.
    void readFile(std::string path);
    // Forgets what was read, so that the next call reads the file again.
    void reset();

    const std::list<sMO>& mos() const { return _mos; }

  private:
    VeskInstanceModel() = default;

    sMO handleMo(Poco::XML::NodeList* children);
    sAttribute handleAttribute(Poco::XML::NamedNodeMap* attributes);
    void writeToDatabase(std::string parentDn, sMO mo);
    void addAttributes(DBObject* object, const std::list<sAttribute>& attributes);
    // A new attribute holding the converted value, or null for an unknown type name.
    Attribute* makeAttribute(const sAttribute& attribute);
    // The value of a "PardMORef": dns as they stand, class names by their last instance.
    std::string resolveReferences(const sAttribute& attribute);

    std::list<sMO> _mos;
    std::list<std::string> _classes;
    int _dbTxHandle = 0;
};

}  // namespace TibVeskCM

// Loads the demo station into an empty station database: the MOs of a data file of the station
// model (XML encoding, root element ManagedElement) and the station objects that are not MOs
// (root StationObjects), in one database transaction. Every MO is checked against the model
// first; the first bad one stops the load with its dn and attribute, and nothing is written.
//
// Layout written: each MO as an object named by its rdn under its parent's dn, its key and
// attributes typed as the agent reads them (see StationValues.h); a struct attribute `attr` of
// the MO `Class=id` as a hidden child object `Class=id:attr` (`Class=id:attr=i`, i from 1, for a
// struct list) holding the members, the MO's attribute holding the child's full dn (";"-joined
// for a list). `reservedBy` is left to the database, which derives it from the references.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/model/ModelSchema.h"
#include "platform/DBObject.h"

namespace vesk {
namespace host {
namespace model {

class StationLoader {
  public:
    // `schema` must be loaded and outlive the loader.
    explicit StationLoader(const ModelSchema& schema) : _schema(schema) {}

    // Reads and checks both files, then writes every object in one transaction of the open
    // database, which must hold no station yet. False, with the reason in `error` ("DN: attribute
    // NAME: reason" for a bad MO), if anything fails; the database is then unchanged.
    bool load(const std::string& stationFile, const std::string& objectsFile, std::string* error);
    // Number of objects the last successful load wrote.
    size_t objectCount() const { return _objectCount; }

    // True if the open database holds a station: the root MO of `schema`'s model or "OAM".
    static bool holdsStation(const ModelSchema& schema);
    // True if `directory` does not exist or is empty; otherwise false with a message.
    static bool isEmptyStateDirectory(const std::string& directory, std::string* error);

  private:
    const ModelSchema& _schema;
    size_t _objectCount = 0;
};

}  // namespace model
}  // namespace host
}  // namespace vesk

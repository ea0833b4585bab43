// The security component's stand-in: certificate MOs in a store of their own, changes staged per
// database handle until the handle commits. The database keeps the durable copy: a committed
// change is also written there, and an MO the store has not seen is read from there.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Attribute.h"
#include "platform/DBObject.h"
#include "station/database/ISecControl.h"

namespace vesk {
namespace isec {

class Store {
  public:
    static Store& instance();

    // Each answers 1 for OK, 0 for failure. Handle 0 applies at once.
    int create(int handle, const DBObject& object);
    int edit(int handle, const std::string& dn, const Attribute& attribute);
    int remove(int handle, const std::string& dn);
    int commit(int handle);
    int rollback(int handle);
    int action(const std::string& name, DBObject* parameters);

    void failNext(Operation operation, int count);
    std::vector<RecordedAction> actions();
    std::unique_ptr<DBObject> copyOf(const std::string& dn);
    std::vector<std::string> dns();
    size_t staged(int handle);
    void reset();

  private:
    struct Change {
        enum Kind { Create, Edit, Delete } kind;
        std::string dn;
        std::shared_ptr<DBObject> object;      // Create
        std::shared_ptr<Attribute> attribute;  // Edit
    };

    // True, with an error line, if a failure of `operation` is pending. Holds _mutex.
    bool injectedFailure(Operation operation, const char* name);
    int stage(int handle, Change change);
    bool apply(const Change& change);
    bool applyCreate(const Change& change);
    bool applyEdit(const Change& change);
    bool applyDelete(const Change& change);
    // The committed MO of `dn`, fetched from the database when the store has not seen it.
    DBObject* find(const std::string& dn);

    std::mutex _mutex;
    std::map<std::string, std::unique_ptr<DBObject>> _objects;  // by full dn
    std::map<int, std::vector<Change>> _staged;
    std::vector<RecordedAction> _actions;
    std::map<Operation, int> _failures;
};

}  // namespace isec
}  // namespace vesk

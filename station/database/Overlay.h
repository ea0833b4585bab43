// The uncommitted changes of one handle: per object either a replacement (insert), a deletion,
// or a patch of attributes laid over the committed object. Not locked: the owning Transaction
// guards it.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

struct Delta {
    enum Kind { kPatch, kReplace, kDelete };
    Kind kind = kPatch;
    ObjectPtr replacement;  // kReplace: the whole object
    // kPatch: the value of each written attribute, nullopt where it was removed.
    std::map<std::string, std::optional<StoredAttribute>> regular;
    std::map<std::string, std::optional<StoredAttribute>> alternates;
};

// Applies `delta` to `committed` (null if absent). Null if the object is absent in the result.
ObjectPtr applyDelta(const Delta& delta, const ObjectPtr& committed);

class Overlay {
  public:
    // Null if the overlay has nothing for `fullDn`.
    const Delta* find(const std::string& fullDn) const;

    void replace(ObjectPtr object);
    void remove(const std::string& fullDn);
    // Patches an object that exists in the view (`current`, as the view shows it). A replaced
    // object is patched in place.
    void putAttribute(const std::string& fullDn, StoredAttribute attribute, bool alternate);
    void eraseAttribute(const std::string& fullDn, const std::string& name, bool alternate);

    // Full dns in the order they were first touched.
    const std::vector<std::string>& order() const { return _order; }
    // Full dns of objects inserted in this overlay under `key` (possibly deleted since).
    const std::set<std::string>* insertedWithKey(const std::string& key) const;
    // Full dns of objects inserted in this overlay directly under `parentDn` (possibly deleted
    // since).
    const std::set<std::string>* insertedUnder(const std::string& parentDn) const;

  private:
    Delta& touch(const std::string& fullDn);
    StoredObject* mutableReplacement(Delta& delta);

    std::unordered_map<std::string, Delta> _deltas;
    std::vector<std::string> _order;
    std::unordered_map<std::string, std::set<std::string>> _insertedByKey;
    std::unordered_map<std::string, std::set<std::string>> _insertedByParent;
};

}  // namespace db
}  // namespace vesk

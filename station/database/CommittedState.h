// The committed objects in memory with their indexes: by full dn, by key (for short forms), by
// class and by parent and class (both in insertion order), and the reverse references. Not
// locked: the Engine reads it under its shared lock and changes it under its exclusive lock.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

// The dns that a reference attribute (types 11 and 31) of `object` names, as written. The
// attribute "reservedBy" itself is never a reference.
std::vector<std::string> referencesOf(const StoredObject& object);

// The indexes view the dn held by each object (the object lives as long as it is indexed), so
// that no dn is copied per index.
class CommittedState {
  public:
    // Objects by seq: insertion order.
    using InOrder = std::map<uint64_t, const StoredObject*>;

    // Null if absent.
    ObjectPtr find(std::string_view fullDn) const;
    // The full dns whose key is `key`.
    std::vector<std::string> withKey(const std::string& key) const;
    // The objects of the class, by insertion order.
    const InOrder* ofClass(const std::string& className) const;
    // The objects of the class directly under `parentDn`, by insertion order.
    const InOrder* underParent(std::string_view parentDn, std::string_view className) const;
    // The full dns of the objects directly under `parentDn` (MOs and struct objects alike),
    // sorted.
    const std::set<std::string_view>* childrenOf(const std::string& parentDn) const;
    // The full dns of the objects whose references name `target`, sorted.
    const std::set<std::string>* referrersOf(const std::string& target) const;

    // Adds or replaces `object` (whose seq is set), or removes the object of `fullDn`.
    void put(ObjectPtr object);
    // Adds `object` (whose seq is set) unless its dn is held already: false then, nothing
    // changed.
    bool add(const ObjectPtr& object);
    void remove(const std::string& fullDn);
    // Room for `objects` objects in the indexes by dn and by key.
    void reserve(size_t objects);

    uint64_t nextSeq() const { return _lastSeq + 1; }
    // Calls `visit` with every object, in no particular order.
    template <typename F>
    void forEach(F&& visit) const {
        for (const auto& entry : _byDn)
            visit(entry.second);
    }
    size_t size() const { return _byDn.size(); }
    void clear();

    // The full dn a reference text stands for: itself when it is a full dn or unknown, or the
    // one object whose key it is.
    std::string resolveReference(const std::string& text) const;

  private:
    void unindex(const StoredObject& object);
    void index(const StoredObject& object);
    // The key of _byParentClass, in a buffer of the calling thread (valid until its next call).
    static const std::string& parentClassKey(std::string_view parentDn, std::string_view className);

    std::unordered_map<std::string_view, ObjectPtr> _byDn;
    std::unordered_multimap<std::string_view, const StoredObject*> _byKey;
    std::unordered_map<std::string, InOrder> _byClass;
    std::unordered_map<std::string, InOrder> _byParentClass;
    std::unordered_map<std::string, std::set<std::string_view>> _children;  // by parent dn
    // target full dn -> referrer full dns; each referrer's resolved targets kept for removal.
    std::unordered_map<std::string, std::set<std::string>> _referrers;
    std::unordered_map<std::string, std::vector<std::string>> _targetsOf;
    uint64_t _lastSeq = 0;
};

}  // namespace db
}  // namespace vesk

// The committed objects in memory with their indexes: by full dn, by key (for short forms), by
// class and by parent and class (both in insertion order), and the reverse references. Not
// locked: the Engine reads it under its shared lock and changes it under its exclusive lock.
#pragma once

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

// The dns that a reference attribute (types 11 and 31) of `object` names, as written. The
// attribute "reservedBy" itself is never a reference.
std::vector<std::string> referencesOf(const StoredObject& object);

class CommittedState {
  public:
    // Null if absent.
    ObjectPtr find(const std::string& fullDn) const;
    // The full dns whose key is `key`.
    const std::vector<std::string>* withKey(const std::string& key) const;
    // The full dns of the class, by insertion order.
    const std::map<uint64_t, std::string>* ofClass(const std::string& className) const;
    // The keys of the class directly under `parentDn`, by insertion order.
    const std::map<uint64_t, std::string>* underParent(const std::string& parentDn,
                                                       const std::string& className) const;
    // The full dns of the objects directly under `parentDn` (MOs and struct objects alike).
    const std::set<std::string>* childrenOf(const std::string& parentDn) const;
    // The full dns of the objects whose references name `target`, sorted.
    const std::set<std::string>* referrersOf(const std::string& target) const;

    // Adds or replaces `object` (whose seq is set), or removes the object of `fullDn`.
    void put(ObjectPtr object);
    void remove(const std::string& fullDn);

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
    void index(const ObjectPtr& object);
    static std::string parentClassKey(const std::string& parentDn, const std::string& className);

    std::unordered_map<std::string, ObjectPtr> _byDn;
    std::unordered_map<std::string, std::vector<std::string>> _byKey;
    std::unordered_map<std::string, std::map<uint64_t, std::string>> _byClass;
    std::unordered_map<std::string, std::map<uint64_t, std::string>> _byParentClass;
    std::unordered_map<std::string, std::set<std::string>> _children;  // parent dn -> full dns
    // target full dn -> referrer full dns; each referrer's resolved targets kept for removal.
    std::unordered_map<std::string, std::set<std::string>> _referrers;
    std::unordered_map<std::string, std::vector<std::string>> _targetsOf;
    uint64_t _lastSeq = 0;
};

}  // namespace db
}  // namespace vesk

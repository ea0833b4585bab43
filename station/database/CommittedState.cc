#include "station/database/CommittedState.h"

#include <algorithm>

#include "station/database/DnName.h"

namespace vesk {
namespace db {

namespace {

const char* kReservedBy = "reservedBy";

void splitInto(const std::string& text, std::vector<std::string>* out) {
    size_t begin = 0;
    while (begin <= text.size()) {
        size_t end = text.find(';', begin);
        if (end == std::string::npos)
            end = text.size();
        if (end > begin)
            out->push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

template <typename Map>
const typename Map::mapped_type* findIn(const Map& map, const std::string& key) {
    auto it = map.find(key);
    return it == map.end() ? nullptr : &it->second;
}

}  // namespace

std::vector<std::string> referencesOf(const StoredObject& object) {
    std::vector<std::string> out;
    for (const StoredAttribute& a : object.attributes.items()) {
        if (a.name == kReservedBy || a.value.which() != AV_STRING)
            continue;
        if (a.type == IPCData::AVT_REFERENCE) {
            const std::string& dn = boost::get<std::string>(a.value);
            if (!dn.empty())
                out.push_back(dn);
        } else if (a.type == IPCData::AVT_REFERENCE_LIST) {
            splitInto(boost::get<std::string>(a.value), &out);
        }
    }
    return out;
}

ObjectPtr CommittedState::find(const std::string& fullDn) const {
    auto it = _byDn.find(fullDn);
    return it == _byDn.end() ? nullptr : it->second;
}

const std::vector<std::string>* CommittedState::withKey(const std::string& key) const {
    return findIn(_byKey, key);
}

const std::map<uint64_t, std::string>* CommittedState::ofClass(const std::string& name) const {
    return findIn(_byClass, name);
}

const std::map<uint64_t, std::string>* CommittedState::underParent(
    const std::string& parentDn, const std::string& className) const {
    return findIn(_byParentClass, parentClassKey(parentDn, className));
}

const std::set<std::string>* CommittedState::childrenOf(const std::string& parentDn) const {
    return findIn(_children, parentDn);
}

const std::set<std::string>* CommittedState::referrersOf(const std::string& target) const {
    return findIn(_referrers, target);
}

std::string CommittedState::parentClassKey(const std::string& parentDn,
                                           const std::string& className) {
    return parentDn + '\n' + className;
}

std::string CommittedState::resolveReference(const std::string& text) const {
    if (!isShortForm(text))
        return text;
    const std::vector<std::string>* dns = withKey(text);
    return (dns != nullptr && dns->size() == 1) ? dns->front() : text;
}

void CommittedState::put(ObjectPtr object) {
    auto it = _byDn.find(object->fullDn);
    if (it != _byDn.end())
        unindex(*it->second);
    _lastSeq = std::max(_lastSeq, object->seq);
    index(object);
    _byDn[object->fullDn] = std::move(object);
}

void CommittedState::remove(const std::string& fullDn) {
    auto it = _byDn.find(fullDn);
    if (it == _byDn.end())
        return;
    unindex(*it->second);
    _byDn.erase(it);
}

void CommittedState::index(const ObjectPtr& object) {
    _byKey[object->key].push_back(object->fullDn);
    _byClass[object->className][object->seq] = object->fullDn;
    _byParentClass[parentClassKey(object->parentDn, object->className)][object->seq] =
        idOfKey(object->key);
    _children[object->parentDn].insert(object->fullDn);
    std::vector<std::string> targets;
    for (const std::string& text : referencesOf(*object)) {
        targets.push_back(resolveReference(text));
        _referrers[targets.back()].insert(object->fullDn);
    }
    if (!targets.empty())
        _targetsOf[object->fullDn] = std::move(targets);
}

void CommittedState::unindex(const StoredObject& object) {
    std::vector<std::string>& dns = _byKey[object.key];
    dns.erase(std::remove(dns.begin(), dns.end(), object.fullDn), dns.end());
    if (dns.empty())
        _byKey.erase(object.key);
    auto byClass = _byClass.find(object.className);
    if (byClass != _byClass.end()) {
        byClass->second.erase(object.seq);
        if (byClass->second.empty())
            _byClass.erase(byClass);
    }
    std::string pc = parentClassKey(object.parentDn, object.className);
    auto byParent = _byParentClass.find(pc);
    if (byParent != _byParentClass.end()) {
        byParent->second.erase(object.seq);
        if (byParent->second.empty())
            _byParentClass.erase(byParent);
    }
    auto children = _children.find(object.parentDn);
    if (children != _children.end()) {
        children->second.erase(object.fullDn);
        if (children->second.empty())
            _children.erase(children);
    }
    auto targets = _targetsOf.find(object.fullDn);
    if (targets == _targetsOf.end())
        return;
    for (const std::string& target : targets->second) {
        auto referrers = _referrers.find(target);
        if (referrers == _referrers.end())
            continue;
        referrers->second.erase(object.fullDn);
        if (referrers->second.empty())
            _referrers.erase(referrers);
    }
    _targetsOf.erase(targets);
}

void CommittedState::clear() {
    _byDn.clear();
    _byKey.clear();
    _byClass.clear();
    _byParentClass.clear();
    _children.clear();
    _referrers.clear();
    _targetsOf.clear();
    _lastSeq = 0;
}

}  // namespace db
}  // namespace vesk

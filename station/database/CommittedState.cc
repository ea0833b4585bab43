#include "station/database/CommittedState.h"

#include <algorithm>

#include "station/database/DnName.h"

namespace vesk {
namespace db {

namespace {

const char* kReservedByName = "reservedBy";

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

// Erases `key` from `map` when `erase` leaves its entry empty.
template <typename Map, typename Key, typename Erase>
void eraseFrom(Map& map, const Key& key, Erase erase) {
    auto it = map.find(key);
    if (it == map.end())
        return;
    erase(it->second);
    if (it->second.empty())
        map.erase(it);
}

}  // namespace

std::vector<std::string> referencesOf(const StoredObject& object) {
    std::vector<std::string> out;
    for (const StoredAttribute& a : object.attributes.items()) {
        if (a.name == kReservedByName || a.value.which() != AV_STRING)
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

ObjectPtr CommittedState::find(std::string_view fullDn) const {
    auto it = _byDn.find(fullDn);
    return it == _byDn.end() ? nullptr : it->second;
}

std::vector<std::string> CommittedState::withKey(const std::string& key) const {
    std::vector<std::string> dns;
    auto range = _byKey.equal_range(key);
    for (auto it = range.first; it != range.second; ++it)
        dns.push_back(it->second->fullDn);
    return dns;
}

const CommittedState::InOrder* CommittedState::ofClass(const std::string& name) const {
    return findIn(_byClass, name);
}

const CommittedState::InOrder* CommittedState::underParent(std::string_view parentDn,
                                                           std::string_view className) const {
    return findIn(_byParentClass, parentClassKey(parentDn, className));
}

const std::set<std::string_view>* CommittedState::childrenOf(const std::string& parentDn) const {
    return findIn(_children, parentDn);
}

const std::set<std::string>* CommittedState::referrersOf(const std::string& target) const {
    return findIn(_referrers, target);
}

std::string CommittedState::parentClassKey(std::string_view parentDn, std::string_view className) {
    std::string key;
    key.reserve(parentDn.size() + 1 + className.size());
    key.append(parentDn).append(1, '\n').append(className);
    return key;
}

std::string CommittedState::resolveReference(const std::string& text) const {
    if (!isShortForm(text) || _byKey.count(text) != 1)
        return text;
    return _byKey.find(text)->second->fullDn;
}

// The index entries view the dn of the object held: a replaced object's entries go first.
void CommittedState::put(ObjectPtr object) {
    auto it = _byDn.find(object->fullDn);
    if (it != _byDn.end()) {
        unindex(*it->second);
        _byDn.erase(it);
    }
    _lastSeq = std::max(_lastSeq, object->seq);
    const StoredObject& held = *object;
    _byDn.emplace(held.fullDn, std::move(object));
    index(held);
}

void CommittedState::remove(const std::string& fullDn) {
    auto it = _byDn.find(fullDn);
    if (it == _byDn.end())
        return;
    unindex(*it->second);
    _byDn.erase(it);
}

void CommittedState::index(const StoredObject& object) {
    _byKey.emplace(object.key(), &object);
    _byClass[std::string(object.className())][object.seq] = &object;
    _byParentClass[parentClassKey(object.parentDn(), object.className())][object.seq] = &object;
    _children[std::string(object.parentDn())].insert(object.fullDn);
    std::vector<std::string> targets;
    for (const std::string& text : referencesOf(object)) {
        targets.push_back(resolveReference(text));
        _referrers[targets.back()].insert(object.fullDn);
    }
    if (!targets.empty())
        _targetsOf[object.fullDn] = std::move(targets);
}

void CommittedState::unindex(const StoredObject& object) {
    auto keys = _byKey.equal_range(object.key());
    for (auto it = keys.first; it != keys.second; ++it) {
        if (it->second == &object) {
            _byKey.erase(it);
            break;
        }
    }
    auto bySeq = [&object](InOrder& objects) { objects.erase(object.seq); };
    eraseFrom(_byClass, std::string(object.className()), bySeq);
    eraseFrom(_byParentClass, parentClassKey(object.parentDn(), object.className()), bySeq);
    eraseFrom(_children, std::string(object.parentDn()),
              [&object](std::set<std::string_view>& dns) { dns.erase(object.fullDn); });
    auto targets = _targetsOf.find(object.fullDn);
    if (targets == _targetsOf.end())
        return;
    for (const std::string& target : targets->second) {
        eraseFrom(_referrers, target,
                  [&object](std::set<std::string>& dns) { dns.erase(object.fullDn); });
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

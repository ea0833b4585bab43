#include "model/AttributeTypeCache.h"

namespace TibVeskCM {

bool AttributeTypeCache::lastMoc(const std::string& dn, OrlOamSpiMocHandleT* moc) const {
    std::lock_guard<std::mutex> lock(_mutex);
    if (!_hasLast || dn != _lastDn)
        return false;
    *moc = _lastMoc;
    return true;
}

void AttributeTypeCache::rememberMoc(const std::string& dn, OrlOamSpiMocHandleT moc) {
    std::lock_guard<std::mutex> lock(_mutex);
    _lastDn = dn;
    _lastMoc = moc;
    _hasLast = true;
}

bool AttributeTypeCache::find(OrlOamSpiMocHandleT moc, const std::string& name, bool* typed,
                              int* type) const {
    std::lock_guard<std::mutex> lock(_mutex);
    auto ofClass = _answers.find(moc);
    if (ofClass == _answers.end())
        return false;
    auto answer = ofClass->second.find(name);
    if (answer == ofClass->second.end())
        return false;
    *typed = answer->second.typed;
    *type = answer->second.type;
    return true;
}

void AttributeTypeCache::remember(OrlOamSpiMocHandleT moc, const std::string& name, bool typed,
                                  int type) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (_size >= kLimit) {
        _answers.clear();
        _size = 0;
    }
    if (_answers[moc].emplace(name, Answer{typed, type}).second)
        ++_size;
}

void AttributeTypeCache::clear() {
    std::lock_guard<std::mutex> lock(_mutex);
    _answers.clear();
    _size = 0;
    _hasLast = false;
}

}  // namespace TibVeskCM

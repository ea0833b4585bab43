#include "station/database/Overlay.h"

#include <memory>

namespace vesk {
namespace db {

namespace {

void applyPatch(const std::map<std::string, std::optional<StoredAttribute>>& patch,
                AttributeSet* set) {
    for (const auto& entry : patch) {
        if (entry.second) {
            set->put(*entry.second);
        } else {
            set->erase(entry.first);
        }
    }
}

}  // namespace

ObjectPtr applyDelta(const Delta& delta, const ObjectPtr& committed) {
    switch (delta.kind) {
        case Delta::kReplace:
            return delta.replacement;
        case Delta::kDelete:
            return nullptr;
        case Delta::kPatch:
            break;
    }
    if (committed == nullptr)
        return nullptr;
    auto patched = std::make_shared<StoredObject>(*committed);
    applyPatch(delta.regular, &patched->attributes);
    applyPatch(delta.alternates, &patched->alternates);
    return patched;
}

const Delta* Overlay::find(const std::string& fullDn) const {
    auto it = _deltas.find(fullDn);
    return it == _deltas.end() ? nullptr : &it->second;
}

const std::set<std::string>* Overlay::insertedWithKey(const std::string& key) const {
    auto it = _insertedByKey.find(key);
    return it == _insertedByKey.end() ? nullptr : &it->second;
}

const std::set<std::string>* Overlay::insertedUnder(const std::string& parentDn) const {
    auto it = _insertedByParent.find(parentDn);
    return it == _insertedByParent.end() ? nullptr : &it->second;
}

Delta& Overlay::touch(const std::string& fullDn) {
    auto result = _deltas.emplace(fullDn, Delta());
    if (result.second)
        _order.push_back(fullDn);
    return result.first->second;
}

void Overlay::replace(ObjectPtr object) {
    _insertedByKey[std::string(object->key())].insert(object->fullDn);
    _insertedByParent[std::string(object->parentDn())].insert(object->fullDn);
    Delta& delta = touch(object->fullDn);
    delta = Delta();
    delta.kind = Delta::kReplace;
    delta.replacement = std::move(object);
}

void Overlay::remove(const std::string& fullDn) {
    Delta& delta = touch(fullDn);
    delta = Delta();
    delta.kind = Delta::kDelete;
}

// A replacement may be shared with a reader's view: it is copied before a change.
StoredObject* Overlay::mutableReplacement(Delta& delta) {
    auto copy = std::make_shared<StoredObject>(*delta.replacement);
    delta.replacement = copy;
    return copy.get();
}

void Overlay::putAttribute(const std::string& fullDn, StoredAttribute attribute, bool alternate) {
    Delta& delta = touch(fullDn);
    if (delta.kind == Delta::kReplace) {
        StoredObject* object = mutableReplacement(delta);
        (alternate ? object->alternates : object->attributes).put(std::move(attribute));
        return;
    }
    auto& patch = alternate ? delta.alternates : delta.regular;
    std::string name = attribute.name;
    patch[name] = std::move(attribute);
}

void Overlay::eraseAttribute(const std::string& fullDn, const std::string& name, bool alternate) {
    Delta& delta = touch(fullDn);
    if (delta.kind == Delta::kReplace) {
        StoredObject* object = mutableReplacement(delta);
        (alternate ? object->alternates : object->attributes).erase(name);
        return;
    }
    (alternate ? delta.alternates : delta.regular)[name] = std::nullopt;
}

}  // namespace db
}  // namespace vesk

#include "station/database/Engine.h"

#include <algorithm>
#include <atomic>

#include "platform/Logger.h"
#include "station/database/ChangeFeed.h"
#include "station/database/CommitPlan.h"
#include "station/database/DnName.h"
#include "station/database/StateLoader.h"

namespace vesk {
namespace db {

namespace {
// Handles are never reused, not even across a close and a new open in the same process.
std::atomic<int> g_lastHandle{0};
}  // namespace

struct Engine::Resolved {
    enum Status { kFound, kAbsent, kRefused };
    Status status = kAbsent;
    std::string fullDn;
    ObjectPtr object;
};

std::unique_ptr<Engine> Engine::open(const std::string& path, bool mayCreate, std::string* error) {
    std::unique_ptr<Engine> engine(new Engine());
    if (!engine->_store.open(path, mayCreate, error))
        return nullptr;
    if (!loadState(engine->_store, path, &engine->_state, error))
        return nullptr;
    VESK_INFO("IDatabase: opened %s with %zu objects", path.c_str(), engine->_state.size());
    return engine;
}

Engine::~Engine() {
    _store.close();
}

void Engine::shutdown() {
    std::unordered_map<int, std::shared_ptr<Transaction>> handles;
    {
        std::lock_guard<std::mutex> lock(_handlesMutex);
        handles.swap(_handles);
    }
    for (auto& entry : handles) {
        std::lock_guard<std::mutex> lock(entry.second->mutex);
        entry.second->ended = true;
    }
    checkpoint(true);
}

int Engine::openHandle() {
    int handle = ++g_lastHandle;
    std::lock_guard<std::mutex> lock(_handlesMutex);
    _handles.emplace(handle, std::make_shared<Transaction>());
    return handle;
}

std::shared_ptr<Engine::Transaction> Engine::findHandle(int handle, const char* fn, bool take) {
    std::lock_guard<std::mutex> lock(_handlesMutex);
    auto it = _handles.find(handle);
    if (it == _handles.end()) {
        VESK_ERROR("IDatabase::%s: handle %d is not open", fn, handle);
        return nullptr;
    }
    std::shared_ptr<Transaction> transaction = it->second;
    if (take)
        _handles.erase(it);
    return transaction;
}

bool Engine::commit(int handle) {
    std::shared_ptr<Transaction> transaction = findHandle(handle, "transaction", true);
    if (transaction == nullptr)
        return false;
    std::lock_guard<std::mutex> lock(transaction->mutex);
    transaction->ended = true;
    return commitOverlay(transaction->overlay, "transaction");
}

bool Engine::rollback(int handle) {
    std::shared_ptr<Transaction> transaction = findHandle(handle, "transaction", true);
    if (transaction == nullptr)
        return false;
    std::lock_guard<std::mutex> lock(transaction->mutex);
    transaction->ended = true;
    return true;
}

// The durable write comes first; memory and the change feed follow only once it has succeeded.
bool Engine::commitOverlay(const Overlay& overlay, const char* fn) {
    std::lock_guard<std::mutex> commitLock(_commitMutex);
    CommitPlan plan(_state, overlay);
    if (plan.empty())
        return true;
    std::vector<uint64_t> removes;
    for (const std::string& dn : plan.removes())
        removes.push_back(_state.find(dn)->seq);
    std::string error;
    if (!_store.apply(plan.puts(), removes, &error)) {
        VESK_ERROR("IDatabase::%s: commit failed, nothing changed: %s", fn, error.c_str());
        return false;
    }
    {
        std::unique_lock<std::shared_mutex> lock(_stateMutex);
        plan.applyTo(&_state);
    }
    publishChanges(plan.changes());
    return true;
}

// The seq is taken with the pointer, so that the sort (outside the lock) reads no object.
std::vector<ObjectPtr> Engine::snapshot() {
    std::vector<std::pair<uint64_t, ObjectPtr>> bySeq;
    {
        std::shared_lock<std::shared_mutex> lock(_stateMutex);
        bySeq.reserve(_state.size());
        _state.forEach(
            [&bySeq](const ObjectPtr& object) { bySeq.emplace_back(object->seq, object); });
    }
    std::sort(bySeq.begin(), bySeq.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<ObjectPtr> objects;
    objects.reserve(bySeq.size());
    for (auto& entry : bySeq)
        objects.push_back(std::move(entry.second));
    return objects;
}

bool Engine::replace(std::vector<StoredObject> objects,
                     const std::function<bool(const std::string&)>& keep, std::string* error) {
    std::lock_guard<std::mutex> commitLock(_commitMutex);
    // The state changes only under the commit lock: it is read here without a copy.
    std::vector<uint64_t> removes;
    CommittedState fresh;
    _state.forEach([&](const ObjectPtr& object) {
        if (keep(object->fullDn))
            fresh.put(object);
        else
            removes.push_back(object->seq);
    });
    std::sort(removes.begin(), removes.end());  // the store's pages in order
    uint64_t seq = _state.nextSeq();
    std::vector<ObjectPtr> puts;
    for (StoredObject& object : objects) {
        if (keep(object.fullDn))
            continue;
        if (fresh.find(object.fullDn) != nullptr) {
            *error = "object '" + object.fullDn + "' is there twice";
            return false;
        }
        object.seq = seq++;
        puts.push_back(std::make_shared<const StoredObject>(std::move(object)));
        fresh.put(puts.back());
    }
    if (!_store.apply(puts, removes, error))
        return false;
    {
        std::unique_lock<std::shared_mutex> lock(_stateMutex);
        std::swap(_state, fresh);
    }
    VESK_INFO("IDatabase: state replaced, %zu objects written, %zu removed", puts.size(),
              removes.size());
    return true;
}

bool Engine::checkpoint(bool force) {
    std::lock_guard<std::mutex> commitLock(_commitMutex);
    std::string error;
    if (_store.fold(force, &error))
        return true;
    VESK_ERROR("IDatabase::storePersistentDump: %s", error.c_str());
    return false;
}

template <typename F>
bool Engine::write(int handle, const char* fn, F&& body) {
    if (handle == 0) {
        Overlay overlay;
        {
            std::shared_lock<std::shared_mutex> lock(_stateMutex);
            if (!body(overlay))
                return false;
        }
        return commitOverlay(overlay, fn);
    }
    std::shared_ptr<Transaction> transaction = findHandle(handle, fn);
    if (transaction == nullptr)
        return false;
    std::lock_guard<std::mutex> txLock(transaction->mutex);
    if (transaction->ended) {
        VESK_ERROR("IDatabase::%s: handle %d is not open", fn, handle);
        return false;
    }
    std::shared_lock<std::shared_mutex> lock(_stateMutex);
    return body(transaction->overlay);
}

ObjectPtr Engine::viewLocked(const std::string& fullDn, const Overlay* overlay) const {
    ObjectPtr committed = _state.find(fullDn);
    const Delta* delta = overlay != nullptr ? overlay->find(fullDn) : nullptr;
    return delta != nullptr ? applyDelta(*delta, committed) : committed;
}

// A full dn names itself; a short form names the one object of the view with that key. `fn`
// null resolves quietly.
Engine::Resolved Engine::resolveLocked(const std::string& dn, const Overlay* overlay,
                                       const char* fn) const {
    Resolved result;
    if (!isWellFormedDn(dn)) {
        if (fn != nullptr)
            VESK_ERROR("IDatabase::%s: malformed dn '%s'", fn, dn.c_str());
        result.status = Resolved::kRefused;
        return result;
    }
    std::set<std::string> candidates;
    if (!isShortForm(dn)) {
        candidates.insert(dn);
    } else {
        for (std::string& fullDn : _state.withKey(dn))
            candidates.insert(std::move(fullDn));
        const std::set<std::string>* inserted =
            overlay != nullptr ? overlay->insertedWithKey(dn) : nullptr;
        if (inserted != nullptr)
            candidates.insert(inserted->begin(), inserted->end());
    }
    int found = 0;
    for (const std::string& candidate : candidates) {
        ObjectPtr object = viewLocked(candidate, overlay);
        if (object == nullptr)
            continue;
        ++found;
        result.fullDn = candidate;
        result.object = object;
    }
    if (found > 1) {
        if (fn != nullptr) {
            VESK_ERROR("IDatabase::%s: dn '%s' is ambiguous (%d objects)", fn, dn.c_str(), found);
        }
        result = Resolved();
        result.status = Resolved::kRefused;
        return result;
    }
    result.status = found == 1 ? Resolved::kFound : Resolved::kAbsent;
    return result;
}

bool Engine::isPresent(const std::string& dn) {
    std::shared_lock<std::shared_mutex> lock(_stateMutex);
    return resolveLocked(dn, nullptr, "isPresentInDB").status == Resolved::kFound;
}

template <typename F>
bool Engine::read(int handle, const char* fn, F&& body) {
    if (handle == 0) {
        std::shared_lock<std::shared_mutex> lock(_stateMutex);
        body(static_cast<const Overlay*>(nullptr));
        return true;
    }
    std::shared_ptr<Transaction> transaction = findHandle(handle, fn);
    if (transaction == nullptr)
        return false;
    std::lock_guard<std::mutex> txLock(transaction->mutex);
    std::shared_lock<std::shared_mutex> lock(_stateMutex);
    body(static_cast<const Overlay*>(&transaction->overlay));
    return true;
}

ObjectPtr Engine::view(const std::string& dn, int handle, const char* fn) {
    ObjectPtr object;
    read(handle, fn,
         [&](const Overlay* overlay) { object = resolveLocked(dn, overlay, fn).object; });
    return object;
}

// Objects inserted in the overlay that are not committed, of `className` (and under `parentDn`
// when given), in the order of the overlay.
void Engine::appendInserted(const Overlay& overlay, const std::string& className,
                            const std::string* parentDn, std::list<ObjectPtr>* out) const {
    for (const std::string& dn : overlay.order()) {
        const Delta* delta = overlay.find(dn);
        if (delta->kind != Delta::kReplace || _state.find(dn) != nullptr)
            continue;
        const StoredObject& object = *delta->replacement;
        if (object.className() != className)
            continue;
        if (parentDn != nullptr && object.parentDn() != *parentDn)
            continue;
        out->push_back(delta->replacement);
    }
}

std::list<ObjectPtr> Engine::viewClass(const std::string& className, int handle) {
    std::list<ObjectPtr> out;
    read(handle, "getMOClass", [&](const Overlay* overlay) {
        if (const CommittedState::InOrder* objects = _state.ofClass(className)) {
            for (const auto& entry : *objects) {
                ObjectPtr object = viewLocked(entry.second->fullDn, overlay);
                if (object != nullptr)
                    out.push_back(object);
            }
        }
        if (overlay != nullptr)
            appendInserted(*overlay, className, nullptr, &out);
    });
    return out;
}

std::unique_ptr<std::list<std::string>> Engine::idsUnder(const std::string& parentDn,
                                                         const std::string& className, int handle) {
    const char* fn = "getMOClassWithParent";
    std::unique_ptr<std::list<std::string>> ids;
    read(handle, fn, [&](const Overlay* overlay) {
        std::string parent = parentDn;
        if (!parent.empty()) {
            Resolved resolved = resolveLocked(parentDn, overlay, fn);
            if (resolved.status == Resolved::kRefused)
                return;
            if (resolved.status == Resolved::kFound)
                parent = resolved.fullDn;
        }
        ids.reset(new std::list<std::string>());
        if (const CommittedState::InOrder* objects = _state.underParent(parent, className)) {
            for (const auto& entry : *objects) {
                const StoredObject& object = *entry.second;
                if (overlay == nullptr || viewLocked(object.fullDn, overlay) != nullptr)
                    ids->push_back(idOfKey(std::string(object.key())));
            }
        }
        if (overlay == nullptr)
            return;
        std::list<ObjectPtr> inserted;
        appendInserted(*overlay, className, &parent, &inserted);
        for (const ObjectPtr& object : inserted)
            ids->push_back(idOfKey(std::string(object->key())));
    });
    return ids;
}

bool Engine::checkAttributes(const DBObject& object, bool all, const char* fn) const {
    for (const auto* map : {&object.attributes, &object.alternateAttributes}) {
        for (const auto& entry : *map) {
            const Attribute* a = entry.second;
            if (a != nullptr && (a->deleted || (!all && !a->modified)))
                continue;
            if (a == nullptr || !a->valueSet || a->type <= IPCData::AVT_UNKNOWN ||
                a->type > IPCData::AVT_STRUCT_LIST) {
                VESK_ERROR("IDatabase::%s: attribute '%s' of '%s' has no type or no value", fn,
                           entry.first.c_str(), object.dn.c_str());
                return false;
            }
        }
    }
    return true;
}

// The full dn an insert or update of `object` names: parentDn + key, or a dn given whole in
// `dn`, or the one object of the view whose key `dn` is.
std::string Engine::insertDnLocked(const DBObject& object, const Overlay* overlay) const {
    if (!object.parentDn.empty()) {
        std::string parent = object.parentDn;
        if (isShortForm(parent)) {
            Resolved resolved = resolveLocked(parent, overlay, nullptr);
            if (resolved.status == Resolved::kFound)
                parent = resolved.fullDn;
        }
        return joinDn(parent, object.dn);
    }
    if (!isShortForm(object.dn))
        return object.dn;
    Resolved resolved = resolveLocked(object.dn, overlay, nullptr);
    return resolved.status == Resolved::kFound ? resolved.fullDn : object.dn;
}

bool Engine::insert(const DBObject& object, int handle) {
    return write(handle, "insert", [&](Overlay& overlay) {
        if (!checkAttributes(object, true, "insert"))
            return false;
        std::string fullDn = insertDnLocked(object, &overlay);
        if (!isWellFormedDn(fullDn) || !isWellFormedDn(object.dn)) {
            VESK_ERROR("IDatabase::insert: malformed dn '%s'", fullDn.c_str());
            return false;
        }
        overlay.replace(std::make_shared<const StoredObject>(storedFromDBObject(object, fullDn)));
        return true;
    });
}

namespace {

void patchFrom(const std::map<std::string, Attribute*>& attributes, bool alternateMap,
               const std::string& fullDn, Overlay* overlay) {
    for (const auto& entry : attributes) {
        const Attribute& a = *entry.second;
        bool alternate = alternateMap || a.alternateSlot != -1;
        if (a.deleted) {
            overlay->eraseAttribute(fullDn, entry.first, alternate);
        } else if (a.modified) {
            StoredAttribute stored = storedFromAttribute(a);
            stored.name = entry.first;
            overlay->putAttribute(fullDn, std::move(stored), alternate);
        }
    }
}

}  // namespace

bool Engine::update(const DBObject& object, int handle) {
    return write(handle, "update", [&](Overlay& overlay) {
        if (!checkAttributes(object, false, "update"))
            return false;
        std::string dn = insertDnLocked(object, &overlay);
        Resolved resolved = resolveLocked(dn, &overlay, "update");
        if (resolved.status == Resolved::kRefused)
            return false;
        if (resolved.status == Resolved::kAbsent) {
            VESK_ERROR("IDatabase::update: object '%s' not found", dn.c_str());
            return false;
        }
        patchFrom(object.attributes, false, resolved.fullDn, &overlay);
        patchFrom(object.alternateAttributes, true, resolved.fullDn, &overlay);
        return true;
    });
}

bool Engine::deleteObject(const std::string& dn, int handle) {
    return write(handle, "deleteObj", [&](Overlay& overlay) {
        Resolved resolved = resolveLocked(dn, &overlay, "deleteObj");
        if (resolved.status == Resolved::kRefused)
            return false;
        if (resolved.status == Resolved::kAbsent) {
            VESK_ERROR("IDatabase::deleteObj: object '%s' not found", dn.c_str());
            return false;
        }
        std::vector<std::string> doomed;
        belowLocked(resolved.fullDn, overlay, &doomed);
        doomed.push_back(resolved.fullDn);
        for (const std::string& fullDn : doomed)
            overlay.remove(fullDn);
        return true;
    });
}

// Children before their parent, so that no object outlives the one above it in any order the
// removals are seen in.
void Engine::belowLocked(const std::string& fullDn, const Overlay& overlay,
                         std::vector<std::string>* out) const {
    std::set<std::string> children;
    if (const std::set<std::string_view>* committed = _state.childrenOf(fullDn)) {
        for (std::string_view child : *committed)
            children.emplace(child);
    }
    if (const std::set<std::string>* inserted = overlay.insertedUnder(fullDn))
        children.insert(inserted->begin(), inserted->end());
    for (const std::string& child : children) {
        if (viewLocked(child, &overlay) == nullptr)
            continue;
        belowLocked(child, overlay, out);
        out->push_back(child);
    }
}

bool Engine::deleteAttribute(const std::string& dn, const std::string& name, int handle) {
    return write(handle, "deleteAttribute", [&](Overlay& overlay) {
        Resolved resolved = resolveLocked(dn, &overlay, "deleteAttribute");
        if (resolved.status == Resolved::kRefused)
            return false;
        if (resolved.status == Resolved::kAbsent) {
            VESK_ERROR("IDatabase::deleteAttribute: object '%s' not found", dn.c_str());
            return false;
        }
        if (resolved.object->attributes.find(name) != nullptr) {
            overlay.eraseAttribute(resolved.fullDn, name, false);
        }
        if (resolved.object->alternates.find(name) != nullptr) {
            overlay.eraseAttribute(resolved.fullDn, name, true);
        }
        return true;
    });
}

bool Engine::setAttribute(const std::string& dn, const std::string& name,
                          const AttributeVariant& value, IPCData::AttributeValueType type,
                          int handle) {
    if (type <= IPCData::AVT_UNKNOWN || type > IPCData::AVT_STRUCT_LIST || name.empty()) {
        VESK_ERROR("IDatabase::setAttribute: attribute '%s' of '%s' has no type or no name",
                   name.c_str(), dn.c_str());
        return false;
    }
    return write(handle, "setAttribute", [&](Overlay& overlay) {
        Resolved resolved = resolveLocked(dn, &overlay, "setAttribute");
        if (resolved.status == Resolved::kRefused)
            return false;
        if (resolved.status == Resolved::kAbsent) {
            VESK_ERROR("IDatabase::setAttribute: object '%s' not found", dn.c_str());
            return false;
        }
        StoredAttribute stored;
        if (const StoredAttribute* held = resolved.object->attributes.find(name))
            stored = *held;
        stored.name = name;
        stored.value = normalizedValue(value);
        stored.type = type;
        stored.alternateSlot = -1;
        overlay.putAttribute(resolved.fullDn, std::move(stored), false);
        return true;
    });
}

}  // namespace db
}  // namespace vesk

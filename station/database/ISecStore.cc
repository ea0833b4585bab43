#include "station/database/ISecStore.h"

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "station/database/DnName.h"

namespace vesk {
namespace isec {

Store& Store::instance() {
    static Store store;
    return store;
}

bool Store::injectedFailure(Operation operation, const char* name) {
    auto it = _failures.find(operation);
    if (it == _failures.end() || it->second <= 0)
        return false;
    --it->second;
    VESK_ERROR("ISec::%s: failed (injected)", name);
    return true;
}

int Store::create(int handle, const DBObject& object) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::CreateMo, "createMo"))
        return 0;
    Change change{Change::Create, db::joinDn(object.parentDn, object.dn),
                  std::make_shared<DBObject>(object), nullptr};
    return stage(handle, std::move(change));
}

int Store::edit(int handle, const std::string& dn, const Attribute& attribute) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::EditMo, "editMo"))
        return 0;
    return stage(handle, Change{Change::Edit, dn, nullptr, std::make_shared<Attribute>(attribute)});
}

int Store::remove(int handle, const std::string& dn) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::DeleteMo, "deleteMO"))
        return 0;
    return stage(handle, Change{Change::Delete, dn, nullptr, nullptr});
}

int Store::stage(int handle, Change change) {
    if (handle == 0)
        return apply(change) ? 1 : 0;
    _staged[handle].push_back(std::move(change));
    return 1;
}

int Store::commit(int handle) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::Committed, "committed"))
        return 0;
    auto it = _staged.find(handle);
    if (it == _staged.end())
        return 1;
    std::vector<Change> changes = std::move(it->second);
    _staged.erase(it);
    bool ok = true;
    for (const Change& change : changes)
        ok = apply(change) && ok;
    return ok ? 1 : 0;
}

int Store::rollback(int handle) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::Rollback, "rollback"))
        return 0;
    _staged.erase(handle);
    return 1;
}

int Store::action(const std::string& name, DBObject* parameters) {
    std::lock_guard<std::mutex> lock(_mutex);
    if (injectedFailure(Operation::ExecuteAction, "executeAction"))
        return 0;
    RecordedAction recorded{name, "", {}};
    if (parameters != nullptr) {
        recorded.dn = parameters->dn;
        for (auto& entry : parameters->attributes) {
            recorded.parameters[entry.first] = entry.second->ToStr();
        }
    }
    _actions.push_back(std::move(recorded));
    return 1;
}

bool Store::apply(const Change& change) {
    switch (change.kind) {
        case Change::Create:
            return applyCreate(change);
        case Change::Edit:
            return applyEdit(change);
        default:
            return applyDelete(change);
    }
}

bool Store::applyCreate(const Change& change) {
    _objects[change.dn] = std::make_unique<DBObject>(*change.object);
    if (IDatabase::insert(change.object.get(), 0) == 0) {
        VESK_ERROR("ISec::%s: could not write %s to the database", __func__, change.dn.c_str());
        return false;
    }
    return true;
}

bool Store::applyEdit(const Change& change) {
    DBObject* object = find(change.dn);
    const Attribute& attribute = *change.attribute;
    if (object == nullptr) {
        VESK_ERROR("ISec::%s: no MO %s", __func__, change.dn.c_str());
        return false;
    }
    int written;
    if (attribute.deleted) {
        auto it = object->attributes.find(attribute.name);
        if (it != object->attributes.end()) {
            delete it->second;
            object->attributes.erase(it);
        }
        written = IDatabase::deleteAttribute(attribute.name, change.dn, "", 0);
    } else {
        object->addAttribute(*new Attribute(attribute));
        written = IDatabase::setAttribute(change.dn, 1, attribute.name, attribute.value, false,
                                          attribute.type, true, 0);
    }
    if (written == 0) {
        VESK_ERROR("ISec::%s: could not write %s:%s to the database", __func__, change.dn.c_str(),
                   attribute.name.c_str());
    }
    return written != 0;
}

bool Store::applyDelete(const Change& change) {
    bool known = find(change.dn) != nullptr;
    _objects.erase(change.dn);
    // The MOs below go with it, as they do in the database.
    const std::string below = change.dn + ",";
    for (auto it = _objects.lower_bound(below);
         it != _objects.end() && it->first.compare(0, below.size(), below) == 0;)
        it = _objects.erase(it);
    if (!known) {
        VESK_ERROR("ISec::%s: no MO %s", __func__, change.dn.c_str());
        return false;
    }
    if (IDatabase::isPresentInDB(change.dn, 1) != 0 && IDatabase::deleteObj(change.dn, 1, 0) == 0) {
        VESK_ERROR("ISec::%s: could not delete %s from the database", __func__, change.dn.c_str());
        return false;
    }
    return true;
}

DBObject* Store::find(const std::string& dn) {
    auto it = _objects.find(dn);
    if (it != _objects.end())
        return it->second.get();
    DBObject* stored = IDatabase::getObject(dn, 1, 0);
    if (stored == nullptr)
        return nullptr;
    return (_objects[dn] = std::unique_ptr<DBObject>(stored)).get();
}

void Store::failNext(Operation operation, int count) {
    std::lock_guard<std::mutex> lock(_mutex);
    _failures[operation] = count;
}

std::vector<RecordedAction> Store::actions() {
    std::lock_guard<std::mutex> lock(_mutex);
    return _actions;
}

std::unique_ptr<DBObject> Store::copyOf(const std::string& dn) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _objects.find(dn);
    if (it == _objects.end())
        return nullptr;
    return std::make_unique<DBObject>(*it->second);
}

std::vector<std::string> Store::dns() {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<std::string> result;
    for (const auto& entry : _objects)
        result.push_back(entry.first);
    return result;
}

size_t Store::staged(int handle) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _staged.find(handle);
    return it == _staged.end() ? 0 : it->second.size();
}

void Store::reset() {
    std::lock_guard<std::mutex> lock(_mutex);
    _objects.clear();
    _staged.clear();
    _actions.clear();
    _failures.clear();
}

}  // namespace isec
}  // namespace vesk

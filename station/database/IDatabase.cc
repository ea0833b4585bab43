// IDatabase's static operations (all but the notification ones) over the open Engine, and the
// open/close of Database.h.
#include "platform/IDatabase.h"

#include <filesystem>
#include <memory>
#include <shared_mutex>

#include "platform/Logger.h"
#include "station/database/Database.h"
#include "station/database/Engine.h"
#include "station/database/ISecControl.h"
#include "station/database/Notifier.h"
#include "station/database/StateLock.h"

namespace vesk {
namespace db {

namespace {

std::shared_mutex g_lifecycle;  // operations shared; open and close exclusive
std::unique_ptr<Engine> g_engine;

StateLock g_lock;  // held while g_engine is open

const char* kStoreFile = "config.db";
const char* kUnfinishedStore = "config.db.new";

// Nothing in it but what an unfinished creation of a store may have left.
bool holdsNothing(const std::string& stateDir) {
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(stateDir, ec)) {
        if (entry.path().filename().string().rfind(kUnfinishedStore, 0) != 0)
            return false;
    }
    return !ec;
}

// Logs one error line for each refusal.
OpenStatus openLocked(const std::string& stateDir, const OpenOptions& options, std::string* error) {
    if (g_engine != nullptr) {
        *error = "the station database is already open";
        VESK_ERROR("IDatabase: %s", error->c_str());
        return OpenStatus::kRefused;
    }
    std::error_code ec;
    std::filesystem::create_directories(stateDir, ec);
    if (ec)
        *error = stateDir + ": cannot create the state folder: " + ec.message();
    StateLock::Result locked = ec ? StateLock::kFailed : g_lock.acquire(stateDir, error);
    if (locked != StateLock::kTaken) {
        VESK_ERROR("IDatabase: %s", error->c_str());
        return locked == StateLock::kBusy ? OpenStatus::kInUse : OpenStatus::kRefused;
    }
    bool mayCreate = options.create || holdsNothing(stateDir);
    g_engine = Engine::open(stateDir + "/" + kStoreFile, mayCreate, error);
    if (g_engine != nullptr)
        return OpenStatus::kOpened;
    VESK_ERROR("IDatabase: the store is refused: %s", error->c_str());
    g_lock.release();
    return OpenStatus::kRefused;
}

}  // namespace

OpenStatus open(const std::string& stateDir, const OpenOptions& options, std::string* error) {
    std::unique_lock<std::shared_mutex> lock(g_lifecycle);
    std::string ignored;
    return openLocked(stateDir, options, error != nullptr ? error : &ignored);
}

bool open(const std::string& stateDir, std::string* error) {
    return open(stateDir, OpenOptions(), error) == OpenStatus::kOpened;
}

void close() {
    // The notifier delivers what is queued first, while subscribers may still read the database.
    if (isOpen())
        notifierStop();
    std::unique_lock<std::shared_mutex> lock(g_lifecycle);
    if (g_engine == nullptr)
        return;
    g_engine->shutdown();
    g_engine.reset();
    g_lock.release();
    // The security stand-in caches committed certificate MOs; a reopened store may differ.
    vesk::isec::reset();
}

bool isOpen() {
    std::shared_lock<std::shared_mutex> lock(g_lifecycle);
    return g_engine != nullptr;
}

std::vector<ObjectPtr> snapshot() {
    std::shared_lock<std::shared_mutex> lock(g_lifecycle);
    return g_engine != nullptr ? g_engine->snapshot() : std::vector<ObjectPtr>();
}

bool replace(std::vector<StoredObject> objects,
             const std::function<bool(const std::string& fullDn)>& keep, std::string* error) {
    std::shared_lock<std::shared_mutex> lock(g_lifecycle);
    if (g_engine == nullptr) {
        *error = "the database is not open";
        return false;
    }
    return g_engine->replace(std::move(objects), keep, error);
}

}  // namespace db
}  // namespace vesk

namespace {

using vesk::db::g_engine;
using vesk::db::ObjectPtr;

// Holds the database open for one operation; engine() is null, after an error line, when closed.
class Session {
  public:
    explicit Session(const char* fn) : _lock(vesk::db::g_lifecycle) {
        if (g_engine == nullptr)
            VESK_ERROR("IDatabase::%s: the database is not open", fn);
    }
    vesk::db::Engine* engine() const { return g_engine.get(); }

  private:
    std::shared_lock<std::shared_mutex> _lock;
};

// Runs `write` on the engine under a session named `fn`: 0 when the database is closed or
// `object` is null (one error line each), else 1 when `write` succeeds.
template <class Write>
int writeObject(const char* fn, DBObject* object, Write write) {
    Session session(fn);
    if (session.engine() == nullptr)
        return 0;
    if (object == nullptr) {
        VESK_ERROR("IDatabase::%s: no object", fn);
        return 0;
    }
    return write(*session.engine()) ? 1 : 0;
}

// The storage behind getAttribute's answer: one per thread, replaced by the next call.
thread_local std::unique_ptr<Attribute> t_attribute;

}  // namespace

int IDatabase::transaction(IPCData::EOperations op, int handle, bool /*flag*/) {
    Session session("transaction");
    vesk::db::Engine* engine = session.engine();
    if (engine == nullptr)
        return 0;
    switch (op) {
        case IPCData::OP_TX_OPEN:
            return engine->openHandle();
        case IPCData::OP_TX_COMMIT:
            return engine->commit(handle) ? 1 : 0;
        case IPCData::OP_TX_ROLLBACK:
            return engine->rollback(handle) ? 1 : 0;
        default:
            break;
    }
    VESK_ERROR("IDatabase::transaction: unknown operation %d", static_cast<int>(op));
    return 0;
}

int IDatabase::isPresentInDB(std::string dn, int /*instance*/) {
    Session session("isPresentInDB");
    return session.engine() != nullptr && session.engine()->isPresent(dn) ? 1 : 0;
}

DBObject* IDatabase::getObject(std::string dn, int /*instance*/, int handle) {
    Session session("getObject");
    if (session.engine() == nullptr)
        return nullptr;
    ObjectPtr object = session.engine()->view(dn, handle, "getObject");
    return object != nullptr ? vesk::db::toDBObject(*object) : nullptr;
}

Attribute* IDatabase::getAttribute(std::string dn, std::string attributeName, int handle) {
    Session session("getAttribute");
    t_attribute.reset();
    if (session.engine() == nullptr)
        return nullptr;
    ObjectPtr object = session.engine()->view(dn, handle, "getAttribute");
    const vesk::db::StoredAttribute* stored =
        object != nullptr ? object->attributes.find(attributeName) : nullptr;
    if (stored == nullptr)
        return nullptr;
    t_attribute.reset(new Attribute(stored->hidden, stored->name, stored->value,
                                    stored->attributeId, true, stored->type, false, false));
    return t_attribute.get();
}

std::list<DBObject*> IDatabase::getMOClass(std::string className, int handle) {
    Session session("getMOClass");
    std::list<DBObject*> out;
    if (session.engine() == nullptr)
        return out;
    for (const ObjectPtr& object : session.engine()->viewClass(className, handle)) {
        out.push_back(vesk::db::toDBObject(*object));
    }
    return out;
}

std::list<std::string> IDatabase::getMOClassWithParent(std::string parentDn, std::string className,
                                                       int handle) {
    Session session("getMOClassWithParent");
    if (session.engine() == nullptr)
        return {};
    auto ids = session.engine()->idsUnder(parentDn, className, handle);
    return ids != nullptr ? std::move(*ids) : std::list<std::string>();
}

int IDatabase::insert(DBObject* object, int handle) {
    return writeObject("insert", object,
                       [&](vesk::db::Engine& e) { return e.insert(*object, handle); });
}

int IDatabase::update(DBObject* object, int handle) {
    return writeObject("update", object,
                       [&](vesk::db::Engine& e) { return e.update(*object, handle); });
}

int IDatabase::deleteObj(std::string dn, int /*instance*/, int handle) {
    Session session("deleteObj");
    return session.engine() != nullptr && session.engine()->deleteObject(dn, handle) ? 1 : 0;
}

int IDatabase::deleteAttribute(std::string attributeName, std::string dn, std::string /*unused*/,
                               int handle) {
    Session session("deleteAttribute");
    if (session.engine() == nullptr)
        return 0;
    return session.engine()->deleteAttribute(dn, attributeName, handle) ? 1 : 0;
}

int IDatabase::setAttribute(std::string dn, int /*instance*/, std::string attributeName,
                            AttributeVariant value, bool /*flagA*/,
                            IPCData::AttributeValueType type, bool /*inTransaction*/, int handle) {
    Session session("setAttribute");
    if (session.engine() == nullptr)
        return 0;
    return session.engine()->setAttribute(dn, attributeName, value, type, handle) ? 1 : 0;
}

int IDatabase::storePersistentDump(bool /*flagA*/, bool /*flagB*/) {
    Session session("storePersistentDump");
    return session.engine() != nullptr && session.engine()->checkpoint(false) ? 1 : 0;
}

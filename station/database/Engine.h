// The open station database: committed state in memory and on disk, the open handles and their
// overlays. Every public operation may be called from any thread. Errors are logged here, one
// error line per refused call, with `fn` (the IDatabase operation) in the text.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/DBObject.h"
#include "station/database/CommittedState.h"
#include "station/database/Overlay.h"
#include "station/database/SqliteStore.h"

namespace vesk {
namespace db {

class Engine {
  public:
    // Opens the store file `path` (a new one if it is missing and `mayCreate`) and loads it;
    // null with `error` set on failure.
    static std::unique_ptr<Engine> open(const std::string& path, bool mayCreate,
                                        std::string* error);
    ~Engine();

    int openHandle();
    bool commit(int handle);
    bool rollback(int handle);
    // Forgets every open handle (their changes are dropped) and checkpoints the store.
    void shutdown();

    bool isPresent(const std::string& dn);
    // Null if absent in the view of the handle (or refused, with an error line).
    ObjectPtr view(const std::string& dn, int handle, const char* fn);
    std::list<ObjectPtr> viewClass(const std::string& className, int handle);
    // Null (after an error line) if the handle or the parent is refused.
    std::unique_ptr<std::list<std::string>> idsUnder(const std::string& parentDn,
                                                     const std::string& className, int handle);

    bool insert(const DBObject& object, int handle);
    bool update(const DBObject& object, int handle);
    // Deletes the object with every object below it (MOs and struct objects), as the view of
    // the handle shows them.
    bool deleteObject(const std::string& dn, int handle);
    bool deleteAttribute(const std::string& dn, const std::string& name, int handle);
    bool setAttribute(const std::string& dn, const std::string& name, const AttributeVariant& value,
                      IPCData::AttributeValueType type, int handle);
    // Every committed object, in insertion order, as one consistent state: the read lock is
    // held only while the pointers are copied.
    std::vector<ObjectPtr> snapshot();
    // Puts `objects` in place of every committed object for which `keep` is false, in one
    // durable write, and swaps the new state in at once; the objects of `objects` that `keep`
    // names are left out. No change events: the station restarts on the new state. False, with
    // the reason in `error`, and nothing changed, when the store refuses the write or `objects`
    // names one dn twice. Open handles keep their overlays.
    bool replace(std::vector<StoredObject> objects,
                 const std::function<bool(const std::string&)>& keep, std::string* error);
    // Every commit is on stable storage when it returns; this folds the log into the main file
    // when it has grown long (always with `force`). False, after an error line, if a fold failed.
    bool checkpoint(bool force);

  private:
    struct Transaction {
        std::mutex mutex;
        Overlay overlay;
        bool ended = false;  // committed or rolled back; guarded by mutex
    };
    struct Resolved;

    Engine() = default;
    // The open transaction of `handle`; null after an error line. `take` also forgets it.
    std::shared_ptr<Transaction> findHandle(int handle, const char* fn, bool take = false);
    bool checkAttributes(const DBObject& object, bool all, const char* fn) const;
    // Runs `write` on the overlay of `handle`, or for handle 0 on a fresh overlay that is then
    // committed at once.
    template <typename F>
    bool write(int handle, const char* fn, F&& body);
    bool commitOverlay(const Overlay& overlay, const char* fn);
    // Runs `body` with the overlay of `handle` (null for handle 0) under the read locks; false
    // (after an error line) if the handle is not open.
    template <typename F>
    bool read(int handle, const char* fn, F&& body);

    // Callers hold _stateMutex (shared or exclusive) or _commitMutex.
    ObjectPtr viewLocked(const std::string& fullDn, const Overlay* overlay) const;
    Resolved resolveLocked(const std::string& dn, const Overlay* overlay, const char* fn) const;
    std::string insertDnLocked(const DBObject& object, const Overlay* overlay) const;
    // Appends the full dns of the objects below `fullDn` in the view of `overlay`, each after
    // the objects below it.
    void belowLocked(const std::string& fullDn, const Overlay& overlay,
                     std::vector<std::string>* out) const;
    void appendInserted(const Overlay& overlay, const std::string& className,
                        const std::string* parentDn, std::list<ObjectPtr>* out) const;

    SqliteStore _store;
    CommittedState _state;
    mutable std::shared_mutex _stateMutex;  // readers shared; commits exclusive to swap in
    std::mutex _commitMutex;                // one commit (and checkpoint) at a time
    std::mutex _handlesMutex;
    std::unordered_map<int, std::shared_ptr<Transaction>> _handles;
};

}  // namespace db
}  // namespace vesk

// Opening and closing the station database that IDatabase's static operations work on.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

struct OpenOptions {
    // Makes a new, empty store when the state directory holds none, even if it holds other
    // files. Without it, a new store is made only in an empty (or missing) directory.
    bool create = false;
};

enum class OpenStatus { kOpened, kInUse, kRefused };

// Locks `stateDir` for this process (creating the folder if there is none), then opens its store
// and loads the committed state. kInUse, with "the state directory DIR is in use by process PID"
// in `error`, when another process holds the lock. kRefused, with the file and the reason in
// `error`, for a store that is damaged (the first damaged object's dn and what is wrong), empty,
// not of this kind, or missing from a directory that is not empty; nothing is changed on disk.
// One store is open per process at a time; opening while one is open is refused. Not to be called
// concurrently with other database operations.
OpenStatus open(const std::string& stateDir, const OpenOptions& options, std::string* error);
// open(stateDir, {}, error) == OpenStatus::kOpened.
bool open(const std::string& stateDir, std::string* error);

// Rolls back open handles, stops the notifier, folds the log into the main file, closes the
// store and releases the state directory.
// Safe to call when nothing is open.
void close();

bool isOpen();

// Every committed object of the open store, in insertion order, as one consistent state; the
// store's writers wait only while the pointers are copied, its readers not at all. Empty when
// nothing is open. Any thread.
std::vector<ObjectPtr> snapshot();
// Puts `objects` in place of every committed object whose full dn `keep` does not accept, in
// one durable write (all or nothing), and makes it the committed state at once, without change
// events. Objects of `objects` that `keep` accepts are left out. False, with the reason in
// `error` and nothing changed, when nothing is open, the store refuses the write, or a dn comes
// twice. Any thread.
bool replace(std::vector<StoredObject> objects,
             const std::function<bool(const std::string& fullDn)>& keep, std::string* error);

}  // namespace db
}  // namespace vesk

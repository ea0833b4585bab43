// Opening and closing the station database that IDatabase's static operations work on.
#pragma once

#include <string>

namespace vesk {
namespace db {

// Opens the store under `stateDir` (creating the folder and an empty store if there is none) and
// loads the committed state. A corrupt or unreadable store is refused: false, with the file and
// the reason in `error`, and nothing is replaced. One store is open per process at a time; opening
// while one is open fails. Not to be called concurrently with other database operations.
bool open(const std::string& stateDir, std::string* error);

// Rolls back open handles, stops the notifier, makes the committed state durable and closes.
// Safe to call when nothing is open.
void close();

bool isOpen();

}  // namespace db
}  // namespace vesk

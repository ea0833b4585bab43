// The load of a store into memory at open: the calling thread reads, checks and decodes the rows
// while a second thread puts the objects read so far into the indexes, so that both halves of the
// work overlap.
#pragma once

#include <string>

#include "station/database/CommittedState.h"
#include "station/database/SqliteStore.h"

namespace vesk {
namespace db {

// Fills `state` (empty) with every object of `store` (open). False, with the reason in `error`
// (a row that fails its checks, or a dn stored twice), and `state` to be thrown away, on failure.
// `path` names the store in the error.
bool loadState(SqliteStore& store, const std::string& path, CommittedState* state,
               std::string* error);

}  // namespace db
}  // namespace vesk

// The attribute encoding of store formats 1 and 2, read once when such a store is converted: per
// map a count, then per attribute its name, type, id, slot, hidden flag, variant alternative and
// value (fixed-size alternatives as their bytes, strings with their length).
#pragma once

#include <cstddef>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

// Fills both maps of `object`. False if `data` is not a well-formed encoding.
bool decodeLegacyAttributes(const char* data, size_t size, StoredObject* object);

}  // namespace db
}  // namespace vesk

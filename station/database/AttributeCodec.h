// How the store writes an object's attributes (format 3). The names, types, ids, slots, hidden
// flags and value alternatives of both maps, in order, make the object's layout, which the store
// keeps once in its layouts table; a row holds the layout's id and then the values alone: whole
// numbers as variable-length integers (signed ones zigzagged), floats as their bytes, strings
// with their length. Objects of one class with the same attributes share one layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "station/database/StoredObject.h"

namespace vesk {
namespace db {

// One attribute of a layout: everything but the value.
struct LayoutEntry {
    StoredAttribute attribute;  // with an empty value of the alternative below
    int which = AV_STRING;
};

struct Layout {
    std::vector<LayoutEntry> entries;  // the regular map, then the alternate map
    size_t regularCount = 0;
    bool ordered = false;  // each map's names ascend, none twice (as the store writes them)
};

// The layouts of one store by id, and the new ones of a write that is not yet committed. Not
// thread-safe: the store's owner serialises every call.
class Layouts {
  public:
    // The layout body of `object`, as the layouts table keeps it.
    static std::string bodyOf(const StoredObject& object);

    // Adds the layout `id` read from the store. False if the body does not decode or the id is
    // taken.
    bool load(uint32_t id, const char* body, size_t size);
    // The id of `body`; a body not known yet gets a new id and is pending until commitPending()
    // or dropPending(). 0 if `body` is not a layout.
    uint32_t idOf(const std::string& body);
    const std::vector<std::pair<uint32_t, std::string>>& pending() const { return _pending; }
    void commitPending() { _pending.clear(); }
    void dropPending();

    // Null if there is no layout `id`.
    const Layout* find(uint32_t id) const;
    void clear();

  private:
    // Null if `body` does not decode.
    static std::unique_ptr<Layout> parse(const char* body, size_t size);
    void keep(uint32_t id, std::unique_ptr<Layout> layout, std::string body);

    std::vector<std::unique_ptr<Layout>> _byId;  // index id - 1; null where there is none
    std::unordered_map<std::string, uint32_t> _idOfBody;
    std::vector<std::pair<uint32_t, std::string>> _pending;
    uint32_t _lastId = 0;
};

// The attrs column of `object`: the id of its layout, then its values.
std::string encodeAttributes(const StoredObject& object, uint32_t layoutId);
// Fills both maps of `object` from the attrs column. False if it is not a well-formed encoding
// or names a layout that `layouts` does not hold.
bool decodeAttributes(const char* data, size_t size, const Layouts& layouts, StoredObject* object);

}  // namespace db
}  // namespace vesk

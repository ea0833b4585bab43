// The ids of attributes and objects in the baseband object model, read from a text table of
// "name,id" lines ('#' starts a comment). Object names are classes ("NodeBLocalCell").
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace vesk {
namespace db {

class BoAttributeTable {
  public:
    // The station's table, loaded at first use from data/station/bo_attribute_ids.csv.
    static const BoAttributeTable& station();

    // Adds the lines of `path`; a malformed line is skipped with a warning. False if the file
    // cannot be read.
    bool load(const std::string& path);
    // 0 when `name` is not in the table.
    int32_t find(const std::string& name) const;
    size_t size() const { return _ids.size(); }

  private:
    std::map<std::string, int32_t> _ids;
};

}  // namespace db
}  // namespace vesk

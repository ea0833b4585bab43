// The station model, parsed from its YANG files with libyang and flattened into ModelTables.
// Loaded once before the host offers its services; read-only afterwards, so any thread may read
// it without a lock.
#pragma once

#include <map>
#include <string>

#include "host/model/ModelTables.h"

struct ly_ctx;

namespace vesk {
namespace host {
namespace model {

class ModelSchema {
  public:
    ModelSchema() = default;
    ~ModelSchema();
    ModelSchema(const ModelSchema&) = delete;
    ModelSchema& operator=(const ModelSchema&) = delete;

    // Parses module `module` (and what it includes and imports) from the folder `directory` and
    // builds the tables. False, with "FILE:LINE: reason" (or "FILE: reason (at PATH)" for errors
    // found after parsing) in `error`, if a file is missing or invalid, or the module has no
    // class "ManagedElement". Called once.
    bool load(const std::string& directory, const std::string& module, std::string* error);
    bool loaded() const { return _context != nullptr; }

    const ModelTables& tables() const { return _tables; }
    ly_ctx* context() const { return _context; }

    // The class of this name, or kNone.
    Id mocByClass(const std::string& name) const;
    // The attribute of `moc` with this name, or kNone.
    Id attributeOf(Id moc, const std::string& name) const;
    // The member of a struct with this name, or kNone.
    Id memberOf(Id structType, const std::string& name) const;
    // The containment of `moc` whose child class has this name, or kNone.
    Id childContainment(Id moc, const std::string& childClass) const;

  private:
    ly_ctx* _context = nullptr;
    ModelTables _tables;
    std::map<std::string, Id> _mocByName;
};

}  // namespace model
}  // namespace host
}  // namespace vesk

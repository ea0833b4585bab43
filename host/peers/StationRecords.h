// What the software management peer reads and writes in the station database: plain writes
// with handle 0 (each durable at once), as the real component does outside any host transaction.
#pragma once

#include <map>
#include <string>

#include "platform/AttributeVariant.h"
#include "platform/IPCData.h"

namespace vesk {
namespace host {
namespace peers {
namespace records {

extern const char* const kManagerDn;  // ...,BrM=1,BrmBackupManager=1
extern const char* const kSwMDn;      // ...,SystemFunctions=1,SwM=1

// One attribute to write: value and type.
struct Value {
    AttributeVariant value;
    IPCData::AttributeValueType type;
};
using Values = std::map<std::string, Value>;

Value text(const std::string& value);
Value number(int value, IPCData::AttributeValueType type = IPCData::AVT_INT32);

// Creates `className=id` under `parentDn` with `values`, and, when `report` is not empty, its
// struct child "progressReport" with those values, in one transaction. False if refused.
bool createObject(const std::string& parentDn, const std::string& rdn, const Values& values,
                  const Values& report);
// Writes `values` into the object `dn` (full or short) in one write; false if it is missing.
bool update(const std::string& dn, const Values& values);
// Writes the progress report of the object `dn`.
bool updateReport(const std::string& dn, const Values& values);
// A string attribute, or `fallback`.
std::string textOf(const std::string& dn, const std::string& name,
                   const std::string& fallback = "");
// An int attribute (enumerations included), or `fallback`.
int numberOf(const std::string& dn, const std::string& name, int fallback);
// The ids of `className` under `parentDn`, and the next free number among them.
int nextId(const std::string& parentDn, const std::string& className);
// The time now, UTC, sortable as text: "2026-11-24T16:59:56.841Z".
std::string now();

}  // namespace records
}  // namespace peers
}  // namespace host
}  // namespace vesk

// Turns the texts of one attribute of the demo station into the database attribute the agent's
// readers expect: single values in their own type; lists as one text (numbers, booleans as 1/0
// and enumeration numbers joined with ",", strings and references with ";") of a list type;
// enumeration literals by name stored as their numbers. Struct attributes are the loader's.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/model/ModelSchema.h"
#include "platform/Attribute.h"

namespace vesk {
namespace host {
namespace model {

// The model type of an attribute with derived types resolved to their base.
int32_t baseType(const ModelTables& tables, Id attribute);
// Whether the attribute takes several values (maximum multiplicity 2 or more).
bool isListAttribute(const ModelTables& tables, Id attribute);
// The database type number of a model type, single or list (9 for a type without one).
IPCData::AttributeValueType databaseType(int32_t modelType, bool isList);

// Checks each text against the attribute's YANG type and builds the attribute, or null with the
// reason in `error`. A single-valued attribute must have exactly one text.
std::unique_ptr<Attribute> encodeAttribute(const ModelSchema& schema, Id attribute,
                                           const std::vector<std::string>& texts,
                                           std::string* error);

}  // namespace model
}  // namespace host
}  // namespace vesk

// The hand-over from the store to the notifier: what one commit changed.
#pragma once

#include <string>
#include <vector>

#include "platform/AttributeVariant.h"
#include "platform/IPCData.h"

namespace vesk {
namespace db {

struct AttributeChange {
    std::string name;
    AttributeVariant value;
    IPCData::AttributeValueType type;
    bool deleted;  // the attribute was removed by this change
    bool hidden;
    int alternateSlot;  // -1 for a regular attribute
};

struct ObjectChange {
    IPCData::EOperations op;  // OP_INSERT, OP_UPDATE or OP_DELETE
    std::string dn;           // full dn
    std::string rdn;          // the object's key, "Class=id"
    std::string className;
    bool visible;  // false for objects that hold struct values
    // Insert: every attribute. Update: the changed or removed ones. Delete: the last values.
    std::vector<AttributeChange> attributes;
};

// Called by the store once per successful commit and once per write made outside a transaction,
// with the changes in the order they were made. Calls are serialised by the store in commit
// order. Must return quickly: delivery to subscribers happens on the notifier's own thread.
void publishChanges(std::vector<ObjectChange>&& changes);

}  // namespace db
}  // namespace vesk

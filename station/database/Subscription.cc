#include "station/database/Subscription.h"

namespace vesk {
namespace db {

namespace {

IDatabase::attrNameValuePair pairOf(const AttributeChange& attribute, IPCData::EOperations op) {
    IDatabase::attrNameValuePair pair;
    pair.attrName = attribute.name;
    pair.attrValue = attribute.value;
    pair.attrType = attribute.type;
    pair.attrOperation = attribute.deleted ? IPCData::OP_DELETE : op;
    pair.reserved = 0;
    pair.hidden = attribute.hidden;
    return pair;
}

void fillObject(const ObjectChange& change, IDatabase::EventClass_ev4Notification& event) {
    event.rdn = change.rdn;
    event.dn = change.dn;
    event.objOperation = change.op;
}

bool buildObjectEvent(const ObjectChange& change, IDatabase::EventClass_ev4Notification& event) {
    for (const AttributeChange& attribute : change.attributes) {
        if (attribute.alternateSlot != -1)
            continue;
        event.notifications.push_back(pairOf(attribute, change.op));
    }
    // An update that touched pending values only is no change of what readers see.
    if (change.op == IPCData::OP_UPDATE && event.notifications.empty())
        return false;
    fillObject(change, event);
    return true;
}

bool buildStatusEvent(const std::string& name, const ObjectChange& change,
                      IDatabase::EventClass_ev4Notification& event) {
    if (change.op == IPCData::OP_DELETE)
        return false;
    for (const AttributeChange& attribute : change.attributes) {
        if (attribute.name != name || attribute.deleted || attribute.alternateSlot != -1)
            continue;
        fillObject(change, event);
        event.setAttrValue(attribute.value);
        return true;
    }
    return false;
}

}  // namespace

bool buildEvent(const Subscription& subscription, const ObjectChange& change,
                IDatabase::EventClass_ev4Notification& event) {
    if (!change.visible)
        return false;
    if (!subscription.className.empty() && subscription.className != change.className) {
        return false;
    }
    event.ticket = subscription.ticket;
    if (subscription.isStatus())
        return buildStatusEvent(subscription.attributeName, change, event);
    return buildObjectEvent(change, event);
}

}  // namespace db
}  // namespace vesk

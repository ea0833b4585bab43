// The references written in a transaction and their check at commit.
#include <boost/variant/get.hpp>
#include <memory>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"
#include "transaction/Band46Channels.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

namespace {

// Destination of the auto-integration log.
const int kAutointegrationLogDestination = 8;

void writeAutointegrationLog(const std::string& dn, const std::string& attributeName) {
    VESK::Messages::VESK_WriteAutointegrationLog message;
    message.text = "Reference to missing MO: " + dn + ":" + attributeName;
    VESK::Framework::Messaging::sendVeskMessage(kAutointegrationLogDestination, message);
}

}  // namespace

void VeskDBTransaction::addToReferenceList(std::string dn, std::string attributeName,
                                           std::string reference) {
    // The high channel numbers of band 46 are rewritten at commit before they reach the database,
    // so a reference carrying one of them is never checked.
    if (band46HighIn(reference) != nullptr) {
        VESK_TRACE("Reference %s not added to reference list", reference.c_str());
        return;
    }
    for (const MoReference& entry : refList) {
        if (entry.dn == dn && entry.attributeName == attributeName &&
            entry.reference == reference) {
            return;
        }
    }
    refList.push_front(MoReference{dn, attributeName, reference});
}

void VeskDBTransaction::removeFromReferenceList(std::string dn, std::string attributeName) {
    for (auto it = refList.begin(); it != refList.end();) {
        if (it->dn == dn && it->attributeName == attributeName) {
            VESK_INFO("VeskDBTransaction::%s(): Removing reference : %s::%s pointing to %s",
                      __func__, it->dn.c_str(), it->attributeName.c_str(), it->reference.c_str());
            it = refList.erase(it);
        } else {
            ++it;
        }
    }
}

void VeskDBTransaction::printReferenceList() {
    for (const MoReference& entry : refList) {
        VESK_TRACE("dn: %s  -- attributeName: %s  -- reference: %s", entry.dn.c_str(),
                   entry.attributeName.c_str(), entry.reference.c_str());
    }
}

bool VeskDBTransaction::referenceExists(std::string dn, std::string attributeName,
                                        std::string reference) {
    Attribute* attribute = IDatabase::getAttribute(dn, attributeName, databaseTxHandle);
    if (attribute == nullptr || attribute->deleted)
        return false;
    std::string held;
    try {
        held = boost::get<std::string>(attribute->value);
    } catch (boost::bad_get&) {
        VESK_ERROR("VeskDBTransaction::%s(): Boost Bad Get!", __func__);
    }
    return !held.empty() && held.find(reference) != std::string::npos;
}

bool VeskDBTransaction::validateReferences() {
    bool allGood = true;
    while (!refList.empty()) {
        const MoReference entry = refList.front();
        refList.pop_front();
        // A stale entry: the attribute was changed or deleted since, or its object is gone.
        if (!referenceExists(entry.dn, entry.attributeName, entry.reference))
            continue;
        std::unique_ptr<DBObject> target(
            IDatabase::getObject(entry.reference, 1, databaseTxHandle));
        if (target)
            continue;
        VESK_WARNING(
            "VeskDBTransaction::%s(): Reference pointing to missing MO: %s. Rejecting commit.",
            __func__, entry.reference.c_str());
        VESK_WARNING("VeskDBTransaction::%s(): Rejected attribute: %s:%s.", __func__,
                     entry.dn.c_str(), entry.attributeName.c_str());
        allGood = false;
        if (aiLogEnabled)
            writeAutointegrationLog(entry.dn, entry.attributeName);
    }
    return allGood;
}

}  // namespace TibVeskCM

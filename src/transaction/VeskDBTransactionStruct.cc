// Struct and struct list reads: each struct value is an object of its own, keyed
// "Class=id:attribute" (or "...:attribute=i" for an entry of a list), whose attributes are the
// members.
#include <map>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "plugin/VeskOrlHelper.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

bool VeskDBTransaction::appendMember(const std::string& structDn, const std::string& name,
                                     Attribute* member, OrlMoAttributeValueStructMember_3**& tail,
                                     int* rc, bool listEntry) {
    const char* reader = listEntry ? "getStructListAttribute" : "getStructAttribute";
    OrlMoAttributeValueResult_3 result = {nullptr, nullptr};
    *rc = setAttrResult(structDn.c_str(), member, result);
    if (*rc != 0) {
        VESK_WARNING("VeskDBTransaction::%s(): Cannot determine the value of struct attribute: %s",
                     reader, name.c_str());
        VeskOrlHelper::releaseAttrResultCB(result.container);
        return false;
    }
    OrlMoAttributeValueStructMember_3* node =
        VeskOrlHelper::newOrlMoAttributeValueStructMember(name, result.container);
    if (node == nullptr) {
        if (listEntry)
            VESK_WARNING("VeskDBTransaction::%s(): Cannot allocate memory for attribute: %s",
                         reader, name.c_str());
        else
            VESK_WARNING("VeskDBTransaction::%s(): Cannot allocate memory for %s attribute", reader,
                         name.c_str());
        VeskOrlHelper::releaseAttrResultCB(result.container);
        return false;
    }
    *tail = node;
    tail = &node->nextMember;
    return true;
}

int VeskDBTransaction::getStructAttribute(std::string structDn, OrlOamSpiMoAttributeType_3 type,
                                          OrlMoAttributeValueContainer_3* container) {
    container->type = type;
    container->nrOfValues = 0;
    DBObject* object = IDatabase::getObject(structDn, 1, databaseTxHandle);
    if (object == nullptr) {
        VESK_TRACE("Struct object %s not found from db.", structDn.c_str());
        return 0;
    }
    if (object->attributes.empty()) {
        delete object;
        return 0;
    }
    bool hasAlternate = !object->alternateAttributes.empty();
    container->values = static_cast<OrlMoAttributeValue_3*>(calloc(1, sizeof(uint64_t)));
    container->nrOfValues = 1;
    OrlMoAttributeValueStructMember_3** tail = &container->values[0].structMember;
    int rc = 0;
    bool built = false;
    for (auto& entry : object->attributes) {
        Attribute* member = entry.second;
        if (member->hidden || member->deleted) {
            continue;
        }
        if (hasAlternate && object->alternateAttributes.count(entry.first) != 0) {
            VESK_TRACE("%s AlternativeAttributes ", entry.first.c_str());
            member = object->alternateAttributes[entry.first];
        }
        // The last conversion decides, also when its member is left out.
        built = appendMember(structDn, entry.first, member, tail, &rc, false) || built;
    }
    if (!built) {
        VESK_WARNING(
            "VeskDBTransaction::%s(): No visible members found for attribute '%s' from db.",
            __func__, structDn.c_str());
        VeskOrlHelper::freeAttrValueContainer(container);
        container->nrOfValues = 0;
        rc = 0;
    }
    delete object;
    return rc;
}

void VeskDBTransaction::buildStructListMembers(DBObject* object, OrlMoAttributeValue_3& slot) {
    const std::string structDn =
        object->parentDn.empty() ? object->dn : object->parentDn + "," + object->dn;
    std::map<std::string, Attribute*> alternates = object->alternateAttributes;
    OrlMoAttributeValueStructMember_3** tail = &slot.structMember;
    int rc = 0;
    for (auto& entry : object->attributes) {
        Attribute* member = entry.second;
        if (member->hidden || member->deleted) {
            continue;
        }
        auto twin = alternates.find(entry.first);
        if (twin != alternates.end()) {
            VESK_TRACE("Handling alternate value for member %s of struct %s", entry.first.c_str(),
                       structDn.c_str());
            member = twin->second;
            alternates.erase(twin);
        }
        appendMember(structDn, entry.first, member, tail, &rc, true);
    }
    for (auto& entry : alternates) {
        VESK_TRACE("Handling alternate attribute: %s", entry.first.c_str());
        appendMember(structDn, entry.first, entry.second, tail, &rc, true);
    }
}

int VeskDBTransaction::getStructListAttribute(std::string dn, std::string structDns,
                                              OrlOamSpiMoAttributeType_3 type,
                                              OrlMoAttributeValueContainer_3* container) {
    std::list<std::string> elements;
    if (!Toolbox::readStringToList(structDns, ';', elements, true)) {
        return -2;
    }
    std::list<DBObject*> objects;
    for (std::string element : elements) {
        if (element.rfind(dn) == std::string::npos) {
            element = dn + "," + element;
        }
        VESK_TRACE("Fetching struct from database with dn: %s", element.c_str());
        DBObject* object = IDatabase::getObject(element, 1, databaseTxHandle);
        if (object != nullptr) {
            objects.push_back(object);
        }
    }
    if (objects.empty()) {
        VESK_WARNING("VeskDBTransaction::%s(): Couldn't get struct object from db.", __func__);
        return 0;
    }
    container->type = type;
    container->nrOfValues = static_cast<uint32_t>(objects.size());
    container->values =
        static_cast<OrlMoAttributeValue_3*>(calloc(objects.size(), sizeof(uint64_t)));
    OrlMoAttributeValue_3* slot = container->values;
    for (DBObject* object : objects) {
        buildStructListMembers(object, *slot++);
        delete object;
    }
    return 0;
}

}  // namespace TibVeskCM

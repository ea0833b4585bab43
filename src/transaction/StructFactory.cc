#include "transaction/StructFactory.h"

#include <list>
#include <memory>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "transaction/IAttribute.h"

namespace TibVeskCM {

namespace {

IPCData::AttributeValueType structType(bool isList) {
    return isList ? IPCData::AVT_STRUCT_LIST : IPCData::AVT_STRUCT;
}

}  // namespace

bool StructFactory::generateStructName(std::string dn, std::string attributeName,
                                       std::string& structFdn, std::string& structRdn, int index) {
    std::string rdn;
    std::string parent;
    if (!Toolbox::splitFdn(dn.c_str(), rdn, parent))
        return false;
    structRdn = rdn + ":" + attributeName;
    if (IAttribute().isListAttribute(dn, attributeName))
        structRdn += "=" + std::to_string(index);
    structFdn = dn + "," + structRdn;
    VESK_TRACE("%s: Struct FDN: %s - RDN: %s", __func__, structFdn.c_str(), structRdn.c_str());
    return true;
}

bool StructFactory::addMember(DBObject* object, std::string dn,
                              OrlMoAttributeValueStructMember_3 const* member) {
    if (member == nullptr || member->memberValue == nullptr || member->memberName == nullptr ||
        member->memberValue->nrOfValues == 0)
        return false;
    IAttribute attributes;
    std::string name = member->memberName;
    Attribute* attribute = nullptr;
    if (attributes.isListAttribute(dn, name) || member->memberValue->nrOfValues > 1) {
        attribute = attributes.createMultiValueAttribute(dn, name, member->memberValue);
    } else {
        attribute = attributes.createSingleValueAttribute(dn, name, member->memberValue);
    }
    if (attribute == nullptr) {
        VESK_ERROR("Failed to create attribute: %s", name.c_str());
        return false;
    }
    object->addAttribute(*attribute);
    return true;
}

Attribute* StructFactory::setStruct(std::string dn, std::string attributeName,
                                    OrlMoAttributeValueContainer_3 const* value, int handle) {
    IDatabase::setAttribute(dn, 1, attributeName, AttributeVariant(std::string()), false,
                            IPCData::AVT_STRUCT, true, handle);
    bool isList = IAttribute().isListAttribute(dn, attributeName);
    std::string text;
    uint32_t count = value && value->values ? value->nrOfValues : 0;
    for (uint32_t i = 0; i < count; ++i) {
        std::string structFdn;
        std::string structRdn;
        if (!generateStructName(dn, attributeName, structFdn, structRdn, int(i) + 1)) {
            text.clear();
            break;
        }
        DBObject child(structRdn, 1, false, false, IPCData::OPSTATE_DISABLED,
                       IPCData::ADMSTATE_UNLOCKED, dn, 1);
        text += (text.empty() ? "" : ";") + structFdn;
        for (auto* m = value->values[i].structMember; m != nullptr; m = m->nextMember) {
            if (!addMember(&child, dn, m))
                VESK_WARNING("Failed to add member %s", m->memberName ? m->memberName : "");
        }
        VESK_TRACE("%s: Insert struct object into database %s", __func__, structFdn.c_str());
        if (!IDatabase::insert(&child, handle)) {
            text.clear();
            break;
        }
    }
    Attribute* result = nullptr;
    if (text.empty()) {
        VESK_WARNING("Attribute %s note created", attributeName.c_str());
    } else {
        VESK_TRACE("%s: Create struct attribute: %s value: %s", __func__, attributeName.c_str(),
                   text.c_str());
        if (IDatabase::setAttribute(dn, 1, attributeName, AttributeVariant(text), false,
                                    structType(isList), true, handle)) {
            result = new Attribute(false, attributeName, AttributeVariant(text), 0, true,
                                   structType(isList), true, false);
        }
    }
    if (isList)
        deleteStructObjects(dn, attributeName, int(count) + 1, handle);
    return result;
}

void StructFactory::deleteStructObjects(std::string dn, std::string attributeName, int startIndex,
                                        int handle) {
    for (int index = startIndex;; ++index) {
        std::string structFdn;
        std::string structRdn;
        if (!generateStructName(dn, attributeName, structFdn, structRdn, index) ||
            !IDatabase::isPresentInDB(structFdn, 1))
            return;
        if (!IDatabase::deleteObj(structFdn, 1, handle)) {
            VESK_ERROR("StructFactory::%s - Deleting of struct object %s failed", __func__,
                       structFdn.c_str());
            return;
        }
    }
}

bool StructFactory::deleteStructAttribute(std::string dn, std::string attributeName, int handle) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle));
    if (!object)
        return true;
    std::string text;
    if (!Toolbox::getStringFromDBObject(object.get(), attributeName, text))
        return true;
    std::list<std::string> children;
    Toolbox::readStringToList(text, ';', children, true);
    for (const std::string& child : children) {
        VESK_TRACE("%s: Delete struct: %s", __func__, child.c_str());
        if (!IDatabase::deleteObj(child, 1, handle))
            return false;
    }
    VESK_TRACE("%s: Update struct attribute %s.", __func__, attributeName.c_str());
    bool isList = IAttribute().isListAttribute(dn, attributeName);
    return IDatabase::setAttribute(dn, 1, attributeName,
                                   AttributeVariant(static_cast<char const*>("")), false,
                                   structType(isList), true, handle) != 0;
}

}  // namespace TibVeskCM

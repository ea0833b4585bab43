// Struct values held pending in an alternate slot. The struct objects have the layout of the
// struct factory: the MO `P,Obj=1` keeps `attr` in `P,Obj=1,Obj=1:attr` and a list in
// `P,Obj=1,Obj=1:attr=i`; their members and the MO's attribute carry the slot.
#include <list>
#include <memory>

#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "transaction/VeskDBTransactionHelper.h"

namespace TibVeskCM {

namespace {

// The operations the traces of their private pieces name.
const char kHandleStructList[] = "handleStructList";
const char kHandleStructAttribute[] = "handleStructAttribute";

// The last "Class=id" pair of the dn: the MO's rdn, after which its struct objects are named.
std::string lastPair(std::string const& dn) {
    size_t comma = dn.rfind(',');
    return comma == std::string::npos ? dn : dn.substr(comma + 1);
}

std::string itemDn(std::string const& dn, std::string const& attributeName, int index) {
    return dn + "," + lastPair(dn) + ":" + attributeName + "=" + std::to_string(index);
}

// Deletes the committed or pending items from `index` on, up to the first one that is missing.
void removeTail(std::string const& dn, std::string const& attributeName, int index, int handle) {
    for (;; ++index) {
        std::string item = itemDn(dn, attributeName, index);
        std::unique_ptr<DBObject> found(IDatabase::getObject(item, 1, handle));
        if (!found)
            return;
        VESK_TRACE("%s: Trying to remove %s", kHandleStructList, item.c_str());
        if (!IDatabase::deleteObj(item, 1, handle))
            return;
    }
}

// Writes the pending struct list attribute of the MO copy and updates the MO. 0 or -1.
int writeStructListAttribute(DBObject* object, std::string const& attributeName,
                             std::string const& text, int handle, int slot) {
    Attribute* found = object->getAlternateAttribute(attributeName);
    if (found == nullptr)
        found = object->getAttribute(attributeName);
    Attribute* attribute = nullptr;
    if (found == nullptr) {
        VESK_TRACE("%s: Creating attribute %s for %s", kHandleStructList, attributeName.c_str(),
                   object->dn.c_str());
        attribute = new Attribute(false, attributeName, AttributeVariant(text), 0, true,
                                  IPCData::AVT_STRUCT_LIST, true, false);
    } else {
        VESK_TRACE("%s: Update existing attribute value %s", kHandleStructList, text.c_str());
        attribute = new Attribute(*found);
        attribute->name = attributeName;
        attribute->modified = true;
        attribute->valueSet = true;
        attribute->deleted = false;
        attribute->SetValue(AttributeVariant(text));
        attribute->type = IPCData::AVT_STRUCT_LIST;
    }
    attribute->alternateSlot = slot;
    object->addAlternateAttribute(*attribute);
    if (!IDatabase::update(object, handle)) {
        VESK_ERROR("VeskDBTransactionHelper::%s Failed to insert MO %s", kHandleStructList,
                   object->dn.c_str());
        return -1;
    }
    return 0;
}

// The dn of the struct object of a single struct attribute, made (pending in `slot`) when the
// owner has none. False when an insert fails.
bool structChild(DBObject* owner, std::string const& dn, std::string const& rdn,
                 std::string const& attributeName, int handle, int slot, std::string& childDn) {
    std::string text;
    Attribute* found = owner->getAlternateAttribute(attributeName);
    if (found == nullptr)
        found = owner->getAttribute(attributeName);
    if (found != nullptr && Toolbox::getValue(found->value, text) && !text.empty()) {
        VESK_TRACE("%s: Struct attribute found", kHandleStructAttribute);
        childDn = text.find("ManagedElement") == std::string::npos ? dn + "," + text : text;
        return true;
    }
    std::string childName = rdn + ":" + attributeName;
    childDn = dn + "," + childName;
    VESK_TRACE("%s: Creating new struct object with value %s with txHandle: %d",
               kHandleStructAttribute, childDn.c_str(), handle);
    auto* attribute = new Attribute(false, attributeName, AttributeVariant(childDn), 0, true,
                                    IPCData::AVT_STRUCT, true, false);
    attribute->alternateSlot = slot;
    owner->addAlternateAttribute(*attribute);
    if (!IDatabase::insert(owner, handle))
        return false;
    DBObject child(childName, 1, false, false, IPCData::OPSTATE_DISABLED,
                   IPCData::ADMSTATE_UNLOCKED, dn, 1);
    VESK_TRACE("%s: Inserting new struct object with dn: %s", kHandleStructAttribute,
               childDn.c_str());
    return IDatabase::insert(&child, handle) != 0;
}

}  // namespace

bool VeskDBTransactionHelper::handleOneItem(std::string itemDn,
                                            OrlMoAttributeValueStructMember_3* firstMember,
                                            std::string itemName, int handle, int slot) {
    VESK_TRACE("%s: mo: %s", __func__, itemName.c_str());
    std::string rdn;
    std::string parentDn;
    Toolbox::splitFdn(itemName.c_str(), rdn, parentDn);
    std::unique_ptr<DBObject> object(IDatabase::getObject(itemName, 1, handle));
    if (!object) {
        VESK_TRACE("%s: Inserting struct object: %s, parentDn: %s", __func__, rdn.c_str(),
                   parentDn.c_str());
        object.reset(new DBObject(rdn, 1, false, false, IPCData::OPSTATE_DISABLED,
                                  IPCData::ADMSTATE_UNLOCKED, parentDn, 1));
    }
    for (auto* m = firstMember; m != nullptr; m = m->nextMember) {
        const char* name = m->memberName ? m->memberName : "";
        VESK_TRACE("%s: Adding member %s to struct %s", __func__, name, itemName.c_str());
        if (m->memberValue == nullptr) {
            VESK_INFO("VeskDBTransactionHelper::%s: Did not add member %s to struct %s", __func__,
                      name, itemName.c_str());
            continue;
        }
        Attribute* found = object->getAttribute(name);
        Attribute* attribute = found ? new Attribute(*found)
                                     : new Attribute(false, name, AttributeVariant(0), 0, true,
                                                     IPCData::AVT_UNKNOWN, true, false);
        attribute->valueSet = true;
        attribute->modified = true;
        attribute->alternateSlot = slot;
        setAttributeValue(itemDn, attribute, m->memberValue);
        object->addAlternateAttribute(*attribute);
    }
    bool ok = IDatabase::insert(object.get(), handle) != 0;
    if (!ok)
        VESK_ERROR("VeskDBTransactionHelper::%s, failed to insert struct object %s", __func__,
                   itemName.c_str());
    VESK_TRACE("%s: exit: returnValue: %s", __func__, ok ? "true" : "false");
    return ok;
}

int VeskDBTransactionHelper::handleStructList(std::string dn, std::string attributeName,
                                              OrlMoAttributeValueContainer_3 const* value,
                                              int handle, int slot) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle));
    if (!object) {
        VESK_WARNING(
            "VeskDBTransactionHelper::%s: Cannot continue: Did not find the MO object to which "
            "structured attribute should be added. FDN: %s",
            __func__, dn.c_str());
        return 0;
    }
    std::string text;
    uint32_t count = value->values ? value->nrOfValues : 0;
    for (uint32_t i = 0; i < count; ++i) {
        std::string item = itemDn(dn, attributeName, int(i) + 1);
        OrlMoAttributeValueStructMember_3* first = value->values[i].structMember;
        if (first == nullptr) {
            VESK_TRACE("%s: no members for %s", __func__, item.c_str());
            continue;
        }
        if (!handleOneItem(dn, first, item, handle, slot)) {
            VESK_WARNING("VeskDBTransactionHelper::%s: Couldn't handle list structure object.",
                         __func__);
            return -1;
        }
        text += (text.empty() ? "" : ";") + item;
    }
    removeTail(dn, attributeName, int(count) + 1, handle);
    return writeStructListAttribute(object.get(), attributeName, text, handle, slot);
}

int VeskDBTransactionHelper::handleStructAttribute(char const* dn, char const* attributeName,
                                                   OrlMoAttributeValueContainer_3 const* value,
                                                   int handle, int slot) {
    std::string rdn;
    std::string parentDn;
    if (dn == nullptr || !Toolbox::splitFdn(dn, rdn, parentDn))
        return 0;
    std::unique_ptr<DBObject> owner(IDatabase::getObject(dn, 1, handle));
    if (!owner)
        return 0;
    std::string childDn;
    if (!structChild(owner.get(), dn, rdn, attributeName, handle, slot, childDn))
        return 0;
    int index = 0;
    auto* first = value && value->values ? value->values[0].structMember : nullptr;
    for (auto* m = first; m != nullptr; m = m->nextMember, ++index) {
        VESK_TRACE("%s: Struct member %d, p_member %p, p_next_member: %p", __func__, index,
                   static_cast<void*>(m), static_cast<void*>(m->nextMember));
        if (setAlternateStorage(childDn, m->memberName ? m->memberName : "", handle, m->memberValue,
                                slot) != 0)
            return 0;
    }
    return 1;
}

void VeskDBTransactionHelper::deleteStruct(std::string dn, std::string attributeName, int handle,
                                           bool flag) {
    std::string text;
    if (!Toolbox::getDbObjAlternateAttrValue<std::string>(dn, attributeName, text, 1, handle))
        return;
    std::list<std::string> items;
    Toolbox::readStringToList(text, ';', items, true);
    for (std::string item : items) {
        if (item.find("ManagedElement") == std::string::npos)
            item = dn + "," + item;
        VESK_TRACE("%s: Deleting %s from database", __func__, item.c_str());
        if (IDatabase::deleteObj(item, 1, handle))
            VESK_TRACE("%s: Successfully deleted structure object:%s", __func__, item.c_str());
    }
    VESK_TRACE("%s: Reset struct into default values. %s", __func__, dn.c_str());
    std::string rdn;
    std::string parentDn;
    Toolbox::splitFdn(dn.c_str(), rdn, parentDn);
    VeskModelRepository::instance()->createAttributeWithDefaultValue(parentDn, rdn, attributeName,
                                                                     handle, flag);
}

}  // namespace TibVeskCM

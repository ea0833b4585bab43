// Overwriting attributes of object copies from host values, and the pending-value writer.
#include "transaction/VeskDBTransactionHelper.h"

#include <memory>

#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "transaction/IAttribute.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

namespace {

// The rdn of the MO within the short dn: struct objects are named after it.
std::string moRdn(std::string const& shortDn) {
    size_t comma = shortDn.rfind(',');
    return comma == std::string::npos ? shortDn : shortDn.substr(comma + 1);
}

bool isList(std::string const& dn, std::string const& attributeName) {
    bool list = false;
    VeskModelRepository::instance()->checkAttributeListType(dn.c_str(), attributeName.c_str(),
                                                            list);
    return list;
}

// The struct objects of a struct list value on the object-copy path: rdn:name=i.
std::string structItems(std::string const& rdn, std::string const& name, uint32_t count) {
    std::string text;
    for (uint32_t i = 1; i <= count; ++i)
        text += (i > 1 ? ";" : "") + rdn + ":" + name + "=" + std::to_string(i);
    return text;
}

}  // namespace

VeskDBTransactionHelper* VeskDBTransactionHelper::instance() {
    static VeskDBTransactionHelper helper;
    return &helper;
}

VeskDBTransactionHelper::~VeskDBTransactionHelper() = default;

void VeskDBTransactionHelper::setAttributeValue(std::string dn, Attribute* attribute,
                                                OrlMoAttributeValueContainer_3 const* value) {
    if (attribute == nullptr || value == nullptr)
        return;
    bool list = isList(dn, attribute->name);
    VESK_TRACE("%s: aAttributeValue->nrOfValues: %d, isListType: %s", __func__,
               static_cast<int>(value->nrOfValues), list ? "true" : "false");
    size_t comma = dn.find(',');
    std::string shortDn = comma == std::string::npos ? dn : dn.substr(comma + 1);
    if (value->nrOfValues == 0) {
        attribute->modified = true;
        attribute->deleted = true;
        return;
    }
    attribute->modified = true;
    attribute->deleted = false;
    if (list) {
        setListAttribute(shortDn, attribute, value);
    } else {
        setSingleAttribute(shortDn, attribute, value);
    }
}

void VeskDBTransactionHelper::setSingleAttribute(std::string shortDn, Attribute* attribute,
                                                 OrlMoAttributeValueContainer_3 const* value) {
    if (value->nrOfValues == 0 || value->values == nullptr)
        return;
    if (value->type == OrlOamSpiMoAttributeType_3_STRUCT) {
        attribute->SetValue(AttributeVariant(moRdn(shortDn) + ":" + attribute->name));
    } else if (!IAttribute::storeSingleValue(attribute, value->type, value->values[0])) {
        return;
    }
    attribute->modified = true;
    attribute->type = static_cast<IPCData::AttributeValueType>(value->type);
}

void VeskDBTransactionHelper::setListAttribute(std::string shortDn, Attribute* attribute,
                                               OrlMoAttributeValueContainer_3 const* value) {
    IPCData::AttributeValueType listType = IAttribute::listType(value->type);
    if (listType == IPCData::AVT_UNKNOWN)
        return;
    attribute->modified = true;
    attribute->type = listType;
    if (value->type == OrlOamSpiMoAttributeType_3_STRUCT) {
        attribute->SetValue(
            AttributeVariant(structItems(moRdn(shortDn), attribute->name, value->nrOfValues)));
    } else if (value->nrOfValues > 0) {
        attribute->SetValue(
            AttributeVariant(IAttribute::joinValues(value, IAttribute::kWriterEncoding)));
    }
}

void VeskDBTransactionHelper::updateObject(std::string attributeName,
                                           OrlMoAttributeValueContainer_3 const* value,
                                           DBObject* object) {
    if (object == nullptr) {
        VESK_TRACE("%s: no object for %s", __func__, attributeName.c_str());
        return;
    }
    Attribute* attribute = object->getAlternateAttribute(attributeName);
    if (attribute == nullptr)
        attribute = object->getAttribute(attributeName);
    if (attribute == nullptr) {
        attribute = new Attribute(false, attributeName, AttributeVariant(0), 0, true,
                                  IPCData::AVT_UNKNOWN, true, false);
        bool added = object->addAttribute(*attribute);
        VESK_TRACE("%s: addAttribute: %s", __func__, added ? "Success" : "Failure");
        if (!added) {
            VESK_ERROR("object->addAttribute: FAILURE!");
            return;
        }
    }
    std::string fullDn = object->parentDn + "," + object->dn;
    VESK_TRACE("%s: fdn: %s", __func__, fullDn.c_str());
    setAttributeValue(fullDn, attribute, value);
    if (attribute->type == IPCData::AVT_UNKNOWN ||
        IPCData::expectedVariantIndex(attribute->type) != attribute->value.which())
        setAttributeValue(fullDn, attribute, value);
}

namespace {

// The attribute that will carry a pending value: a copy of the pending one, else of the stored
// one, else a stand-by one that setAttributeValue fills. The stored attribute stays untouched.
Attribute* pendingAttribute(DBObject* object, std::string const& attributeName) {
    Attribute* found = object->getAlternateAttribute(attributeName);
    if (found == nullptr)
        found = object->getAttribute(attributeName);
    if (found != nullptr)
        return new Attribute(*found);
    VESK_TRACE("%s: attribute not found, create : %s", "setAlternateStorage",
               attributeName.c_str());
    auto* attribute = new Attribute(false, "Uninitialized_Name", AttributeVariant(0), 0, false,
                                    IPCData::AVT_UNKNOWN, true, false);
    attribute->valueSet = true;
    attribute->modified = true;
    return attribute;
}

bool isNullStruct(OrlMoAttributeValueContainer_3 const* value) {
    return value->type == OrlOamSpiMoAttributeType_3_STRUCT &&
           (value->values == nullptr || value->values[0].structMember == nullptr);
}

}  // namespace

int VeskDBTransactionHelper::setAlternateStorage(std::string dn, std::string attributeName,
                                                 int handle,
                                                 OrlMoAttributeValueContainer_3 const* value,
                                                 int slot) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, handle));
    if (!object || value == nullptr) {
        VESK_ERROR("VeskDBTransactionHelper::%s, couldn't find MO : %s", __func__, dn.c_str());
        return -1;
    }
    bool isStruct = value->type == OrlOamSpiMoAttributeType_3_STRUCT;
    std::unique_ptr<Attribute> attribute(isStruct ? nullptr
                                                  : pendingAttribute(object.get(), attributeName));
    bool list = isList(dn, attributeName);
    if (value->nrOfValues == 0 || isNullStruct(value)) {
        VESK_TRACE("%s: deleting attribute", __func__);
        if (isStruct) {
            deleteStruct(dn, attributeName, handle, true);
        } else {
            // A deletion has no value to hold back: the attribute goes at once, stored and
            // pending alike.
            attribute->modified = true;
            attribute->deleted = true;
            if (Attribute* stored = object->getAttribute(attributeName)) {
                stored->modified = true;
                stored->deleted = true;
            }
        }
    } else if (!list) {
        VESK_INFO("handling attribute: %s:%s", dn.c_str(), attributeName.c_str());
        if (isStruct) {
            handleStructAttribute(dn.c_str(), attributeName.c_str(), value, handle, slot);
        } else {
            attribute->name = attributeName;
            setAttributeValue(dn, attribute.get(), value);
        }
    } else {
        VESK_INFO("handling list attribute: %s:%s", dn.c_str(), attributeName.c_str());
        VeskDBTransaction* tx = VeskDBTransaction::getVeskDBTransaction();
        std::string text = tx ? tx->createListAttributeString(value, dn, "", "") : std::string();
        IPCData::AttributeValueType listType = IAttribute::listType(value->type);
        if (dn.find("CertM=1") == std::string::npos) {
            if (isStruct) {
                VESK_TRACE("%s: handling struct list", __func__);
                handleStructList(dn, attributeName, value, handle, slot);
            } else if (listType != IPCData::AVT_UNKNOWN) {
                attribute->type = listType;
                attribute->modified = true;
                attribute->SetValue(AttributeVariant(text));
            }
        }
    }
    if (isStruct)
        return 0;
    attribute->name = attributeName;
    attribute->modified = true;
    attribute->alternateSlot = slot;
    object->addAlternateAttribute(*attribute.release());
    if (!IDatabase::insert(object.get(), handle))
        VESK_ERROR("VeskDBTransactionHelper::%s, failed to insert MO %s", __func__, dn.c_str());
    return 0;
}

}  // namespace TibVeskCM

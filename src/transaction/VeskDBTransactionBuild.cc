// The transaction's builders of new attributes from host values, and the list text they store.
#include "platform/Logger.h"
#include "transaction/IAttribute.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

namespace {

// The alternative of a single value as the transaction's builder stores it: INT8 goes into the
// int alternative (sign-extended) and ENUM keeps its low 32 bits; the rest as IAttribute does.
bool storeBuiltValue(Attribute* attribute, int type, OrlMoAttributeValue_3 const& v) {
    if (type == OrlOamSpiMoAttributeType_3_INT8) {
        attribute->SetValue(AttributeVariant(static_cast<int>(v.i8)));
        return true;
    }
    return IAttribute::storeSingleValue(attribute, type, v);
}

void traceEnum(OrlMoAttributeValueContainer_3 const& value) {
    VESK_INFO("ENUM values: %p ", static_cast<void*>(value.values));
    VESK_INFO("ENUM address: %p ", static_cast<void*>(&value.values[0].theEnum));
    VESK_INFO("ENUM size_of: %d ", static_cast<int>(sizeof(value.values[0].theEnum)));
    VESK_INFO("ENUM value: %lld ", static_cast<long long>(value.values[0].theEnum));
}

// The ";"-joined full dns of the struct objects of a struct list value.
std::string structListText(OrlMoAttributeValueContainer_3 const* value, std::string const& dn,
                           std::string const& rdn, std::string const& attributeName) {
    std::string text;
    for (uint32_t i = 0; i < value->nrOfValues; ++i) {
        if (i > 0)
            text += ';';
        text += dn + "," + rdn + ":" + attributeName + "=" + std::to_string(i + 1);
    }
    return text;
}

}  // namespace

Attribute* VeskDBTransaction::updateNewAttribute(std::string dn, std::string attributeName,
                                                 OrlMoAttributeValueContainer_3 value,
                                                 bool valueSet) {
    if (value.values == nullptr) {
        VESK_WARNING("VeskDBTransaction::%s: value of %s is NULL", __func__, attributeName.c_str());
        return nullptr;
    }
    if (value.type == OrlOamSpiMoAttributeType_3_STRUCT)
        return nullptr;  // the struct writers do the work
    auto* attribute =
        new Attribute(false, attributeName, AttributeVariant(0), 0, valueSet,
                      static_cast<IPCData::AttributeValueType>(value.type), true, false);
    if (value.type == OrlOamSpiMoAttributeType_3_REFERENCE && value.values[0].moRef != nullptr)
        addToReferenceList(dn, attributeName, value.values[0].moRef);
    if (value.type == OrlOamSpiMoAttributeType_3_ENUM)
        traceEnum(value);
    if (!storeBuiltValue(attribute, value.type, value.values[0])) {
        VESK_WARNING("VeskDBTransaction::%s: unknown attribute type %lld", __func__,
                     static_cast<long long>(value.type));
        delete attribute;
        return nullptr;
    }
    if (value.type == OrlOamSpiMoAttributeType_3_ENUM)
        VESK_INFO("ENUM after creation");
    attribute->modified = true;
    return attribute;
}

Attribute* VeskDBTransaction::updateNewListAttribute(std::string attributeName,
                                                     std::string listText, int hostType,
                                                     bool valueSet) {
    IPCData::AttributeValueType listType = getAttributeValueType(hostType, true);
    if (listType == IPCData::AVT_UNKNOWN) {
        VESK_TRACE("unknown attribute type %d", hostType);
        return nullptr;
    }
    return new Attribute(false, attributeName, AttributeVariant(listText), 0, valueSet, listType,
                         true, false);
}

std::string VeskDBTransaction::createListAttributeString(
    OrlMoAttributeValueContainer_3 const* value, std::string& dn, std::string rdn,
    std::string attributeName) {
    if (value == nullptr || value->nrOfValues == 0 || value->values == nullptr)
        return std::string();
    int type = value->type;
    if (type < 1 || type > 16 || type == 13 || type == 15)
        return std::string();
    if (type == OrlOamSpiMoAttributeType_3_STRUCT)
        return structListText(value, dn, rdn, attributeName);
    if (type == OrlOamSpiMoAttributeType_3_REFERENCE) {
        VESK_TRACE("Handle reference %s:%s, numberOfValues = %d ", dn.c_str(),
                   attributeName.c_str(), static_cast<int>(value->nrOfValues));
        removeFromReferenceList(dn, attributeName);
        for (uint32_t i = 0; i < value->nrOfValues; ++i) {
            if (value->values[i].moRef != nullptr)
                addToReferenceList(dn, attributeName, value->values[i].moRef);
        }
    }
    return IAttribute::joinValues(value, IAttribute::kTransactionEncoding);
}

}  // namespace TibVeskCM

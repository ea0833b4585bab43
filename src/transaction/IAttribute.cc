#include "transaction/IAttribute.h"

#include <cmath>
#include <cstdint>

#include "model/VeskModelRepository.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {

namespace {

IPCData::AttributeValueType avt(int type) {
    return static_cast<IPCData::AttributeValueType>(type);
}

}  // namespace

IPCData::AttributeValueType IAttribute::listType(int hostType) {
    switch (hostType) {
        case 1:
            return IPCData::AVT_INT8_LIST;
        case 2:
            return IPCData::AVT_INT16_LIST;
        case 3:
            return IPCData::AVT_INT32_LIST;
        case 4:
            return IPCData::AVT_INT64_LIST;
        case 5:
            return IPCData::AVT_UINT8_LIST;
        case 6:
            return IPCData::AVT_UINT16_LIST;
        case 7:
            return IPCData::AVT_UINT32_LIST;
        case 8:
            return IPCData::AVT_UINT64_LIST;
        case 9:
            return IPCData::AVT_STRING_LIST;
        case 10:
            return IPCData::AVT_BOOL_LIST;
        case 11:
            return IPCData::AVT_REFERENCE_LIST;
        case 12:
            return IPCData::AVT_ENUM_LIST;
        case 14:
            return IPCData::AVT_STRUCT_LIST;
        case 16:
            return IPCData::AVT_DECIMAL64_LIST;
        default:
            return IPCData::AVT_UNKNOWN;
    }
}

namespace {

// A decimal truncated to an integer; false when it does not fit a long.
bool truncatedDecimal(double d, std::string& text) {
    if (!std::isfinite(d) || d >= 9.2e18 || d <= -9.2e18)
        return false;
    return Toolbox::convertLongToString(static_cast<long>(d), text);
}

}  // namespace

bool IAttribute::valueText(int hostType, OrlMoAttributeValue_3 const& v, std::string& text) {
    switch (hostType) {
        case 1:
            return Toolbox::convertIntToString(int(v.i8), text);
        case 2:
            return Toolbox::convertIntToString(int(v.i16), text);
        case 3:
            return Toolbox::convertIntToString(v.i32, text);
        // 64-bit numbers keep their low 32 bits.
        case 4:
            return Toolbox::convertLongToString(long(static_cast<int32_t>(v.i64)), text);
        case 5:
            return Toolbox::convertUIntToString(unsigned(v.u8), text);
        case 6:
            return Toolbox::convertUIntToString(unsigned(v.u16), text);
        case 7:
            return Toolbox::convertUIntToString(v.u32, text);
        case 8:
            return Toolbox::convertULongToString(
                static_cast<unsigned long>(static_cast<uint32_t>(v.u64)), text);
        case 9:
            if (v.theString == nullptr)
                return false;
            text = v.theString;
            return true;
        case 10:
            return Toolbox::convertIntToString(v.theBool ? 1 : 0, text);
        case 11:
            if (v.moRef == nullptr)
                return false;
            text = v.moRef;
            return true;
        case 12:
            return Toolbox::convertIntToString(static_cast<int>(v.theEnum), text);
        case 16:
            return truncatedDecimal(v.decimal64, text);
        default:
            return false;
    }
}

char IAttribute::listSeparator(int hostType, ListEncoding encoding) {
    if (hostType == 11 || hostType == 14)
        return ';';
    if (encoding == kTransactionEncoding && (hostType == 1 || hostType == 9))
        return ';';
    return ',';
}

std::string IAttribute::joinValues(OrlMoAttributeValueContainer_3 const* value,
                                   ListEncoding encoding) {
    std::string text;
    if (value == nullptr || value->values == nullptr)
        return text;
    char separator = listSeparator(value->type, encoding);
    for (uint32_t i = 0; i < value->nrOfValues; ++i) {
        std::string element;
        if (!valueText(value->type, value->values[i], element))
            continue;
        if (i > 0)
            text += separator;
        text += element;
    }
    return text;
}

bool IAttribute::storeSingleValue(Attribute* attribute, int hostType,
                                  OrlMoAttributeValue_3 const& v) {
    switch (hostType) {
        case 1:
            attribute->SetValue(AttributeVariant(static_cast<char>(v.i8)));
            break;
        case 2:
            attribute->SetValue(AttributeVariant(static_cast<short>(v.i16)));
            break;
        case 3:
            attribute->SetValue(AttributeVariant(static_cast<int>(v.i32)));
            break;
        case 4:
            attribute->SetValue(AttributeVariant(static_cast<long long>(v.i64)));
            break;
        case 5:
            attribute->SetValue(AttributeVariant(static_cast<unsigned char>(v.u8)));
            break;
        case 6:
            attribute->SetValue(AttributeVariant(static_cast<unsigned short>(v.u16)));
            break;
        case 7:
            attribute->SetValue(AttributeVariant(static_cast<unsigned int>(v.u32)));
            break;
        case 8:
            attribute->SetValue(AttributeVariant(static_cast<unsigned long long>(v.u64)));
            break;
        case 9:
            attribute->SetValue(AttributeVariant(std::string(v.theString ? v.theString : "")));
            break;
        case 10:
            attribute->SetValue(AttributeVariant(static_cast<bool>(v.theBool)));
            break;
        case 11:
            attribute->SetValue(AttributeVariant(std::string(v.moRef ? v.moRef : "")));
            break;
        case 12:
            attribute->SetValue(AttributeVariant(static_cast<int>(v.theEnum)));
            break;
        case 16:
            attribute->SetValue(AttributeVariant(v.decimal64));
            break;
        default:
            return false;
    }
    return true;
}

bool IAttribute::isListAttribute(std::string const& dn, std::string const& attributeName) {
    bool isList = false;
    VeskModelRepository::instance()->checkAttributeListType(dn.c_str(), attributeName.c_str(),
                                                            isList);
    return isList;
}

bool IAttribute::setAttribute(DBObject* object, std::string dn, std::string attributeName,
                              OrlMoAttributeValueContainer_3 const* value, int handle) {
    if (object == nullptr || value == nullptr)
        return false;
    Attribute* attribute = nullptr;
    if (value->type == OrlOamSpiMoAttributeType_3_STRUCT) {
        attribute = _structFactory.setStruct(dn, attributeName, value, handle);
    } else if (isListAttribute(dn, attributeName)) {
        attribute = createMultiValueAttribute(dn, attributeName, value);
    } else {
        attribute = createSingleValueAttribute(dn, attributeName, value);
    }
    if (attribute == nullptr)
        return false;
    VESK_TRACE("%s: Adding attribute %s into %s", __func__, attributeName.c_str(), dn.c_str());
    object->addAttribute(*attribute);
    return true;
}

Attribute* IAttribute::createMultiValueAttribute(std::string const&,
                                                 std::string const& attributeName,
                                                 OrlMoAttributeValueContainer_3 const* value) {
    auto* attribute = new Attribute(false, attributeName, AttributeVariant(0), 0, true,
                                    IPCData::AVT_UNKNOWN, true, false);
    int type = value ? value->type : 0;
    if ((type >= 1 && type <= 12) || type == 16) {
        std::string text = joinValues(value, kWriterEncoding);
        attribute->SetValue(AttributeVariant(text.empty() ? std::string(" ") : text));
        attribute->type = listType(type);
    }
    return attribute;
}

Attribute* IAttribute::createSingleValueAttribute(std::string const&,
                                                  std::string const& attributeName,
                                                  OrlMoAttributeValueContainer_3 const* value) {
    auto* attribute = new Attribute(false, attributeName, AttributeVariant(0), 0, true,
                                    IPCData::AVT_UNKNOWN, true, false);
    int type = value ? value->type : 0;
    if (value == nullptr || value->nrOfValues == 0 || value->values == nullptr ||
        !storeSingleValue(attribute, type, value->values[0])) {
        VESK_WARNING("Unknown value type %d for %s", type, attributeName.c_str());
        delete attribute;
        return nullptr;
    }
    attribute->type = avt(type);
    return attribute;
}

int IAttribute::deleteAttribute(std::string dn, std::string attributeName, int handle) {
    bool deleted = _structFactory.deleteStructAttribute(dn, attributeName, handle);
    if (deleted) {
        createAttributeWithDefaultValue(dn, attributeName, handle, 0);
    } else {
        VESK_WARNING("Deleting of %s attribute failed. Skipping default value creation.",
                     attributeName.c_str());
    }
    return deleted;
}

bool IAttribute::createAttributeWithDefaultValue(std::string dn, std::string attributeName,
                                                 int handle, int flag) {
    std::string rdn;
    std::string parentDn;
    Toolbox::splitFdn(dn.c_str(), rdn, parentDn);
    return VeskModelRepository::instance()->createAttributeWithDefaultValue(
               parentDn, rdn, attributeName, handle, flag != 0) == 0;
}

}  // namespace TibVeskCM

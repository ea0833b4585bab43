// Conversion of database attributes into the host's value containers, and the list readers.
#include <boost/variant/get.hpp>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/DBObject.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "plugin/VeskOrlHelper.h"
#include "transaction/VeskDBTransaction.h"
#include "validation/VeskCheckExceptions.h"

namespace TibVeskCM {
namespace {

// The text of a string-typed attribute; a certificate MO's key shows as its bare id.
std::string hostText(const std::string& dn, Attribute* attribute) {
    std::string text = boost::get<std::string>(attribute->value);
    if (!text.empty() && VeskCheckExceptions().checkKeyAttribute(dn, attribute->name) &&
        dn.find("CertM=1") != std::string::npos) {
        text = text.substr(text.rfind('=') + 1);
    }
    return text;
}

// Stores a value of types 1 to 8, 10 and 12 in a cleared slot, at its own width.
void storeNumber(int type, const AttributeVariant& value, OrlMoAttributeValue_3& slot) {
    slot.u64 = 0;
    switch (type) {
        case IPCData::AVT_INT8:
            slot.i8 = static_cast<int8_t>(boost::get<char>(value));
            break;
        case IPCData::AVT_INT16:
            slot.i16 = boost::get<short>(value);
            break;
        case IPCData::AVT_INT32:
            slot.i32 = boost::get<int>(value);
            break;
        case IPCData::AVT_INT64:
            slot.i64 = boost::get<long long>(value);
            break;
        case IPCData::AVT_UINT8:
            slot.u8 = boost::get<unsigned char>(value);
            break;
        case IPCData::AVT_UINT16:
            slot.u16 = boost::get<unsigned short>(value);
            break;
        case IPCData::AVT_UINT32:
            slot.u32 = boost::get<unsigned int>(value);
            break;
        case IPCData::AVT_UINT64:
            slot.u64 = boost::get<unsigned long long>(value);
            break;
        case IPCData::AVT_BOOL:
            slot.theBool = boost::get<bool>(value);
            break;
        case IPCData::AVT_ENUM:
            slot.theEnum = boost::get<int>(value);
            break;
    }
}

bool isNumberType(int type) {
    return (type >= IPCData::AVT_INT8 && type <= IPCData::AVT_UINT64) ||
           type == IPCData::AVT_BOOL || type == IPCData::AVT_ENUM;
}

// True when the attribute may be converted: a known type whose alternative agrees.
bool convertible(Attribute* attribute) {
    int type = attribute->type;
    return type >= 1 && type <= 32 &&
           IPCData::expectedVariantIndex(attribute->type) ==
               static_cast<int>(attribute->value.which());
}

OrlMoAttributeValueContainer_3* newContainer(OrlOamSpiMoAttributeType_3 type) {
    auto* container = static_cast<OrlMoAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
    container->type = type;
    return container;
}

void logBadGet(const char* function, Attribute* attribute) {
    if (attribute->value.which() == AV_STRING ||
        IPCData::expectedVariantIndex(attribute->type) == AV_STRING) {
        VESK_ERROR("VeskDBTransaction::%s(): bad get while getting attribute: %s", function,
                   attribute->name.c_str());
    } else {
        VESK_ERROR("VeskDBTransaction::%s(): Boost Bad Get! Check casting of fetched attributes.",
                   function);
    }
}

// Parsed list elements. The agent-local allocator keeps the container's code out of the plug-in's
// exports.
template <typename T>
struct LocalAllocator : std::allocator<T> {
    template <typename U>
    struct rebind {
        typedef LocalAllocator<U> other;
    };
    LocalAllocator() = default;
    template <typename U>
    LocalAllocator(const LocalAllocator<U>&) {}
};
typedef std::vector<long long, LocalAllocator<long long>> Elements;

}  // namespace

int VeskDBTransaction::setAttrResult_2(std::string const& dn, Attribute* attribute,
                                       OrlMoAttributeValueContainer_3* container) {
    if (attribute == nullptr || attribute->hidden || attribute->deleted) {
        return 0;
    }
    if (attribute->type == IPCData::AVT_UNKNOWN) {
        VESK_WARNING("VeskDBTransaction::%s(): AttributeValueType is unknown", __func__);
        return 0;
    }
    if (!convertible(attribute)) {
        return 0;
    }
    try {
        return convertScalar(dn, attribute, container);
    } catch (boost::bad_get&) {
        logBadGet(__func__, attribute);
        return -1;
    }
}

int VeskDBTransaction::convertScalar(const std::string& dn, Attribute* attribute,
                                     OrlMoAttributeValueContainer_3* container) {
    int type = attribute->type;
    if (isNumberType(type)) {
        VeskOrlHelper::initAttributeValues(container, 1);
        storeNumber(type, attribute->value, container->values[0]);
        return 0;
    }
    switch (type) {
        case IPCData::AVT_STRING: {
            std::string text = hostText(dn, attribute);
            // The release frees by the container's type: it must say that it holds a string.
            container->type = IPCData::AVT_STRING;
            VeskOrlHelper::initAttributeValues(container, 1);
            container->values[0].theString = strdup(text.c_str());
            return 0;
        }
        case IPCData::AVT_REFERENCE: {
            const std::string& text = boost::get<std::string>(attribute->value);
            if (!text.empty()) {
                container->type = IPCData::AVT_REFERENCE;
                VeskOrlHelper::initAttributeValues(container, 1);
                container->values[0].moRef = strdup(text.c_str());
            }
            return 0;
        }
        case IPCData::AVT_STRUCT: {
            std::string text = boost::get<std::string>(attribute->value);
            if (text.empty()) {
                return 0;
            }
            if (text.find("ManagedElement") == std::string::npos) {
                text = dn + "," + text;
            }
            return getStructAttribute(text, IPCData::AVT_STRUCT, container);
        }
        case IPCData::AVT_DECIMAL64:
        case IPCData::AVT_FLOAT: {
            // The container comes without storage; the value gets a place of its own here.
            double value = boost::get<double>(attribute->value);
            VeskOrlHelper::initAttributeValues(container, 1);
            container->values[0].decimal64 = value;
            return 0;
        }
        case IPCData::AVT_STRUCT_LIST: {
            std::string text = boost::get<std::string>(attribute->value);
            if (text.empty()) {
                return 0;
            }
            if (text.find("ManagedElement=") == std::string::npos) {
                text = dn + "," + text;
            }
            VESK_TRACE("structure list: %s", text.c_str());
            return getStructListAttribute(dn, text, IPCData::AVT_STRUCT, container);
        }
    }
    return readList(attribute, container);
}

int VeskDBTransaction::readList(Attribute* attribute, OrlMoAttributeValueContainer_3* container) {
    switch (attribute->type) {
        case IPCData::AVT_ENUM_LIST:
            return getEnumList(attribute, 12, container);
        case IPCData::AVT_INT32_LIST:
            return getIntList(attribute, 3, container);
        case IPCData::AVT_UINT32_LIST:
            return getUIntList(attribute, 7, container);
        case IPCData::AVT_STRING_LIST:
            return getStringList(attribute, 9, container);
        case IPCData::AVT_BOOL_LIST:
            return getEnumList(attribute, 10, container);
        case IPCData::AVT_REFERENCE_LIST:
            return getStringList(attribute, 11, container);
        default:
            return 0;  // list types without a reader read as empty
    }
}

int VeskDBTransaction::setAttrResult(char const* dn, Attribute* attribute,
                                     OrlMoAttributeValueResult_3& result) {
    result.release = &VeskOrlHelper::releaseAttrResultCB;
    if (attribute == nullptr || attribute->hidden || attribute->deleted) {
        return 0;
    }
    if (attribute->type == IPCData::AVT_UNKNOWN) {
        VESK_ERROR("VeskDBTransaction::%s(): AttributeValueType is unknown", __func__);
        return 0;
    }
    if (!convertible(attribute)) {
        return 0;
    }
    int rc = 0;
    try {
        rc = convertMember(dn, attribute, result);
    } catch (boost::bad_get&) {
        logBadGet(__func__, attribute);
        VeskOrlHelper::releaseAttrResultCB(result.container);
        result.container = nullptr;
        return -1;
    }
    if (rc != 0) {
        VeskOrlHelper::releaseAttrResultCB(result.container);
        VeskOrlHelper::initAttributeContainer(dn, attribute->name, &result);
    }
    return rc;
}

int VeskDBTransaction::convertMember(char const* dn, Attribute* attribute,
                                     OrlMoAttributeValueResult_3& result) {
    int type = attribute->type;
    result.container = nullptr;
    if (isNumberType(type)) {
        VeskOrlHelper::initAttrResult(type, 1, result);
        storeNumber(type, attribute->value, result.container->values[0]);
        return 0;
    }
    switch (type) {
        case IPCData::AVT_STRING:
            VeskOrlHelper::initAttrResult(type, 1, result);
            result.container->values[0].theString = strdup(hostText(dn, attribute).c_str());
            return 0;
        case IPCData::AVT_REFERENCE: {
            const std::string& text = boost::get<std::string>(attribute->value);
            VeskOrlHelper::initAttrResult(type, text.empty() ? 0 : 1, result);
            if (!text.empty()) {
                result.container->values[0].moRef = strdup(text.c_str());
            }
            return 0;
        }
        case IPCData::AVT_STRUCT: {
            result.container = newContainer(type);
            result.container->nrOfValues = 1;
            std::string text = boost::get<std::string>(attribute->value);
            if (text.find("ManagedElement") == std::string::npos) {
                text = std::string(dn) + "," + text;
            }
            return getStructAttribute(text, IPCData::AVT_STRUCT, result.container);
        }
        case IPCData::AVT_DECIMAL64:
        case IPCData::AVT_FLOAT:
            VeskOrlHelper::initAttrResult(IPCData::AVT_DECIMAL64, 1, result);
            result.container->values[0].decimal64 = boost::get<double>(attribute->value);
            return 0;
        case IPCData::AVT_STRUCT_LIST:
            result.container = newContainer(type);
            return getStructListAttribute(dn, boost::get<std::string>(attribute->value),
                                          IPCData::AVT_STRUCT, result.container);
    }
    result.container = newContainer(type);
    return readList(attribute, result.container);
}

int VeskDBTransaction::readNumberList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                                      OrlMoAttributeValueContainer_3* container, bool asUnsigned) {
    const std::string& text = boost::get<std::string>(attribute->value);
    container->type = type;
    container->nrOfValues = 0;
    container->values = nullptr;
    Elements elements;
    bool ok = false;
    if (asUnsigned) {
        std::list<unsigned int> list;
        ok = Toolbox::readStringToTypedList<unsigned int>(text, ',', list);
        elements.assign(list.begin(), list.end());
    } else {
        std::list<int> list;
        ok = Toolbox::readStringToIntList(text, ',', list);
        elements.assign(list.begin(), list.end());
    }
    if (!ok || elements.empty()) {
        return 0;
    }
    container->nrOfValues = static_cast<uint32_t>(elements.size());
    container->values =
        static_cast<OrlMoAttributeValue_3*>(std::malloc(elements.size() * sizeof(uint64_t)));
    if (container->values == nullptr) {
        return 0;
    }
    OrlMoAttributeValue_3* slot = container->values;
    for (long long element : elements) {
        if (asUnsigned) {
            VESK_TRACE("Add value: %u", static_cast<unsigned>(element));
        } else {
            VESK_TRACE("Add value: %d", static_cast<int>(element));
        }
        if (type == IPCData::AVT_ENUM) {
            slot->theEnum = element;
        } else if (type == IPCData::AVT_BOOL) {
            // Any other element leaves its slot as malloc left it.
            if (element == 0 || element == 1) {
                slot->theBool = element == 1;
            }
        } else if (asUnsigned) {
            slot->u32 = static_cast<uint32_t>(element);
        } else {
            slot->i32 = static_cast<int32_t>(element);
        }
        ++slot;
    }
    return 0;
}

int VeskDBTransaction::getEnumList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                                   OrlMoAttributeValueContainer_3* container) {
    return readNumberList(attribute, type, container, false);
}

int VeskDBTransaction::getIntList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                                  OrlMoAttributeValueContainer_3* container) {
    return readNumberList(attribute, type, container, false);
}

int VeskDBTransaction::getUIntList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                                   OrlMoAttributeValueContainer_3* container) {
    return readNumberList(attribute, type, container, true);
}

int VeskDBTransaction::getStringList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                                     OrlMoAttributeValueContainer_3* container) {
    const std::string& text = boost::get<std::string>(attribute->value);
    container->type = type;
    container->nrOfValues = 0;
    container->values = nullptr;
    if (text.empty()) {
        return 0;
    }
    std::list<std::string> elements;
    Toolbox::readStringToList(text, ';', elements, true);
    if (elements.empty()) {
        return 0;
    }
    container->values =
        static_cast<OrlMoAttributeValue_3*>(std::malloc(elements.size() * sizeof(uint64_t)));
    if (container->values == nullptr) {
        return 0;
    }
    container->nrOfValues = static_cast<uint32_t>(elements.size());
    OrlMoAttributeValue_3* slot = container->values;
    for (const std::string& element : elements) {
        (slot++)->theString = strdup(element.c_str());
    }
    return 0;
}

}  // namespace TibVeskCM

#include "plugin/VeskOrlHelper.h"

#include <atomic>
#include <boost/variant/get.hpp>
#include <cstdlib>
#include <cstring>

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

namespace TibVeskCM {

namespace {

int noModelLookup(const std::string&, const std::string&, int*) {
    return -1;
}

std::atomic<VeskOrlHelper::AttributeTypeLookup> s_typeLookup{&noModelLookup};

}  // namespace

void VeskOrlHelper::setAttributeTypeLookup(AttributeTypeLookup lookup) {
    s_typeLookup.store(lookup != nullptr ? lookup : &noModelLookup);
}

char* VeskOrlHelper::ownStrDup(const char* text) {
    VESK_TRACE(">> %s", __func__);
    if (text == nullptr) {
        VESK_TRACE("<< %s", __func__);
        return nullptr;
    }
    size_t size = std::strlen(text) + 1;
    char* copy = static_cast<char*>(std::malloc(size));
    if (copy == nullptr) {
        VESK_ERROR("VeskOrlHelper::%s cannot allocate memory with malloc()", __func__);
    } else {
        std::memcpy(copy, text, size);
    }
    VESK_TRACE("<< %s", __func__);
    return copy;
}

void VeskOrlHelper::initAttrResult(OrlOamSpiMoAttributeType_3 type, unsigned count,
                                   OrlMoAttributeValueResult_3& result) {
    VESK_TRACE(">> %s", __func__);
    auto* container = static_cast<OrlMoAttributeValueContainer_3*>(
        std::malloc(sizeof(OrlMoAttributeValueContainer_3)));
    container->type = type;
    container->nrOfValues = count;
    container->values = count == 0 ? nullptr
                                   : static_cast<OrlMoAttributeValue_3*>(
                                         std::calloc(count, sizeof(OrlMoAttributeValue_3)));
    result.container = container;
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::initAttributeContainer(const std::string& dn, const std::string& attrName,
                                           OrlMoAttributeValueResult_3* result) {
    VESK_TRACE(">> %s", __func__);
    result->release = &releaseAttrResultCB;
    int type = kUnknownType;
    if (s_typeLookup.load()(dn, attrName, &type) != 0 || type == kUnknownType) {
        type = kUnknownType;
        VESK_WARNING("VeskOrlHelper::%s(): Unknown type of attribute, attrName: %s", __func__,
                     attrName.c_str());
    }
    auto* container = static_cast<OrlMoAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
    container->type = type;
    result->container = container;
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::initAttributeContainers(const std::string& dn,
                                            const std::list<std::string>& attrNames,
                                            OrlMoAttributeValuesResult_3* result) {
    VESK_TRACE(">> %s", __func__);
    result->release = &releseAttrValueContainers;
    auto** containers = static_cast<OrlMoAttributeValueContainer_3**>(
        std::malloc((attrNames.size() + 1) * sizeof(OrlMoAttributeValueContainer_3*)));
    // Set once: a name the model does not know keeps the type of the name before it.
    int type = kUnknownType;
    size_t i = 0;
    for (const std::string& name : attrNames) {
        s_typeLookup.load()(dn, name, &type);
        auto* container = static_cast<OrlMoAttributeValueContainer_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
        container->type = type;
        containers[i++] = container;
    }
    containers[i] = nullptr;
    result->containers = containers;
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::initAttributeValues(OrlMoAttributeValueContainer_3* container, int count) {
    VESK_TRACE(">> %s", __func__);
    container->values =
        static_cast<OrlMoAttributeValue_3*>(std::malloc(count * sizeof(OrlMoAttributeValue_3)));
    container->nrOfValues = static_cast<uint32_t>(count);
    VESK_TRACE("<< %s", __func__);
}

OrlMoAttributeValueContainer_3* VeskOrlHelper::createAttrValueContainer(
    const OrlMoAttributeValueContainer_3& source) {
    VESK_TRACE(">> %s", __func__);
    auto* container = static_cast<OrlMoAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
    copyAttrValueContainer(*container, source);
    VESK_TRACE("<< %s", __func__);
    return container;
}

void VeskOrlHelper::copyAttrValueContainer(OrlMoAttributeValueContainer_3& dest,
                                           const OrlMoAttributeValueContainer_3& source) {
    VESK_TRACE(">> %s", __func__);
    dest.type = source.type;
    dest.nrOfValues = source.nrOfValues;
    dest.values = nullptr;
    if (source.nrOfValues > 0) {
        dest.values = static_cast<OrlMoAttributeValue_3*>(
            std::calloc(source.nrOfValues, sizeof(OrlMoAttributeValue_3)));
        for (uint32_t i = 0; i < source.nrOfValues; ++i) {
            copyAttrValue(source.type, dest.values[i], source.values[i]);
        }
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::copyAttrValue(OrlOamSpiMoAttributeType_3 type, OrlMoAttributeValue_3& dest,
                                  const OrlMoAttributeValue_3& source) {
    VESK_TRACE(">> %s", __func__);
    switch (type) {
        case OrlOamSpiMoAttributeType_3_STRING:
            dest.theString = ownStrDup(source.theString);
            break;
        case OrlOamSpiMoAttributeType_3_REFERENCE:
            dest.moRef = ownStrDup(source.moRef);
            break;
        case OrlOamSpiMoAttributeType_3_STRUCT:
            dest.structMember = copyStructMembers(source);
            break;
        default:
            std::memcpy(&dest, &source, sizeof(OrlMoAttributeValue_3));
            break;
    }
    VESK_TRACE("<< %s", __func__);
}

OrlMoAttributeValueStructMember_3* VeskOrlHelper::copyStructMembers(
    const OrlMoAttributeValue_3& source) {
    VESK_TRACE(">> %s", __func__);
    OrlMoAttributeValueStructMember_3* head = nullptr;
    OrlMoAttributeValueStructMember_3** tail = &head;
    for (const auto* from = source.structMember; from != nullptr; from = from->nextMember) {
        auto* node = static_cast<OrlMoAttributeValueStructMember_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueStructMember_3)));
        node->memberName = ownStrDup(from->memberName);
        node->memberValue = createAttrValueContainer(*from->memberValue);
        *tail = node;
        tail = &node->nextMember;
    }
    VESK_TRACE("<< %s", __func__);
    return head;
}

OrlMoNamedAttributeValueContainer_3* VeskOrlHelper::createNamedValueContainer(
    const char* name, const OrlMoAttributeValueContainer_3& source) {
    VESK_TRACE(">> %s", __func__);
    auto* named = static_cast<OrlMoNamedAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoNamedAttributeValueContainer_3)));
    copyAttrValueContainer(named->attributeValue, source);
    named->attributeName = ownStrDup(name);
    VESK_TRACE("<< %s", __func__);
    return named;
}

OrlMoAttributeValueStructMember_3* VeskOrlHelper::newOrlMoAttributeValueStructMember(
    std::string name, OrlMoAttributeValueContainer_3* value) {
    VESK_TRACE(">> %s", __func__);
    auto* member = static_cast<OrlMoAttributeValueStructMember_3*>(
        std::malloc(sizeof(OrlMoAttributeValueStructMember_3)));
    member->memberName = ownStrDup(name.c_str());
    member->memberValue = value;
    member->nextMember = nullptr;
    VESK_TRACE("<< %s", __func__);
    return member;
}

void VeskOrlHelper::freeAttributeValueStructMember(OrlMoAttributeValueStructMember_3* member) {
    VESK_TRACE(">> %s", __func__);
    while (member != nullptr) {
        OrlMoAttributeValueStructMember_3* next = member->nextMember;
        if (member->memberValue != nullptr) {
            freeAttrValueContainer(member->memberValue);
            std::free(member->memberValue);
        }
        std::free(member->memberName);
        std::free(member);
        member = next;
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::freeValues(OrlOamSpiMoAttributeType_3 type, OrlMoAttributeValue_3* values,
                               uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        switch (type) {
            case OrlOamSpiMoAttributeType_3_STRING:
                std::free(values[i].theString);
                break;
            case OrlOamSpiMoAttributeType_3_REFERENCE:
                std::free(values[i].moRef);
                break;
            case OrlOamSpiMoAttributeType_3_STRUCT:
                freeAttributeValueStructMember(values[i].structMember);
                break;
            default:
                break;
        }
    }
}

void VeskOrlHelper::freeAttrValueContainer(OrlMoAttributeValueContainer_3* container) {
    VESK_TRACE(">> %s", __func__);
    if (container->nrOfValues > 0 && container->values != nullptr) {
        freeValues(container->type, container->values, container->nrOfValues);
        std::free(container->values);
        container->values = nullptr;
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::freeNamedValueContainer(OrlMoNamedAttributeValueContainer_3* named) {
    VESK_TRACE(">> %s", __func__);
    freeAttrValueContainer(&named->attributeValue);
    std::free(named->attributeName);
    named->attributeName = nullptr;
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::freeNamedValueContainers(OrlMoNamedAttributeValueContainer_3** named) {
    VESK_TRACE(">> %s", __func__);
    for (; *named != nullptr; ++named) {
        freeNamedValueContainer(*named);
        std::free(*named);
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::releaseAttrResultCB(OrlMoAttributeValueContainer_3* container) {
    VESK_TRACE(">> %s", __func__);
    if (container != nullptr) {
        freeAttrValueContainer(container);
        std::free(container);
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskOrlHelper::releseAttrValueContainers(OrlMoAttributeValueContainer_3** containers) {
    VESK_TRACE(">> %s", __func__);
    for (OrlMoAttributeValueContainer_3** entry = containers; *entry != nullptr; ++entry) {
        releaseAttrResultCB(*entry);
    }
    std::free(containers);
    VESK_TRACE("<< %s", __func__);
}

int VeskOrlHelper::dbObjOper2OrlEventType(int operation) {
    VESK_TRACE(">> %s", __func__);
    int eventType = 3;
    if (operation == 18) {
        eventType = 1;
    } else if (operation == 9) {
        eventType = 2;
    }
    VESK_TRACE("<< %s", __func__);
    return eventType;
}

bool VeskOrlHelper::getAiConfigParsed() {
    VESK_TRACE(">> %s", __func__);
    bool parsed = false;
    DBObject* oam = IDatabase::getObject("OAM", 1, 0);
    if (oam == nullptr) {
        VESK_INFO("VeskOrlHelper::getAiConfigParsed(): OAM object not found from database ");
        VESK_TRACE("<< %s", __func__);
        return false;
    }
    Attribute* attribute = oam->getAttribute("aiConfigParsed");
    if (attribute != nullptr) {
        try {
            parsed = boost::get<bool>(attribute->value);
        } catch (boost::bad_get&) {
            VESK_ERROR(
                "VeskOrlHelper::getAiConfigParsed: Boost Bad Get! When reading value of: %s:%s",
                "OAM", "aiConfigParsed");
        }
    }
    delete oam;
    VESK_TRACE(
        "%s: VeskOrlHelper::getAiConfigParsed aiConfigParsed=%s read from database attribute",
        __func__, parsed ? "true" : "false");
    VESK_TRACE("<< %s", __func__);
    return parsed;
}

}  // namespace TibVeskCM

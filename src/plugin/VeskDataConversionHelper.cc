#include "plugin/VeskDataConversionHelper.h"

#include <cstdlib>
#include <cstring>

#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"

namespace TibVeskCM {

OrlMoAttributeValueContainer* VeskDataConversionHelper::copyToV1AttrValueContainer(
    const OrlMoAttributeValueContainer_3& source) {
    VESK_TRACE(">> %s", __func__);
    auto* container = static_cast<OrlMoAttributeValueContainer*>(
        std::malloc(sizeof(OrlMoAttributeValueContainer)));
    container->type = source.type;
    container->nrOfValues = source.nrOfValues;
    container->values = nullptr;
    if (source.nrOfValues == 0) {
        VESK_WARNING("VeskCMComponent: Attribute Value Container does not have values at all.");
        VESK_TRACE("<< %s", __func__);
        return container;
    }
    container->values = static_cast<OrlMoAttributeValue*>(
        std::calloc(source.nrOfValues, sizeof(OrlMoAttributeValue)));
    for (uint32_t i = 0; i < source.nrOfValues; ++i) {
        copyToV1Value(source.type, container->values[i], source.values[i]);
    }
    VESK_TRACE("<< %s", __func__);
    return container;
}

void VeskDataConversionHelper::copyToV1Value(OrlOamSpiMoAttributeType_3 type,
                                             OrlMoAttributeValue& dest,
                                             const OrlMoAttributeValue_3& source) {
    switch (type) {
        case OrlOamSpiMoAttributeType_3_INT8:
        case OrlOamSpiMoAttributeType_3_UINT8:
        case OrlOamSpiMoAttributeType_3_BOOL:
            std::memcpy(&dest, &source, 1);
            break;
        case OrlOamSpiMoAttributeType_3_INT16:
        case OrlOamSpiMoAttributeType_3_UINT16:
            std::memcpy(&dest, &source, 2);
            break;
        case OrlOamSpiMoAttributeType_3_INT32:
        case OrlOamSpiMoAttributeType_3_UINT32:
            std::memcpy(&dest, &source, 4);
            break;
        case OrlOamSpiMoAttributeType_3_INT64:
        case OrlOamSpiMoAttributeType_3_UINT64:
            std::memcpy(&dest, &source, 8);
            break;
        case OrlOamSpiMoAttributeType_3_STRING:
            dest.theString = VeskOrlHelper::ownStrDup(source.theString);
            break;
        case OrlOamSpiMoAttributeType_3_REFERENCE:
            dest.moRef = VeskOrlHelper::ownStrDup(source.moRef);
            break;
        case OrlOamSpiMoAttributeType_3_ENUM:
            // The old form carries enumerations as 16-bit values.
            dest.theEnum = static_cast<int16_t>(static_cast<uint16_t>(source.theEnum & 0xffff));
            break;
        case OrlOamSpiMoAttributeType_3_STRUCT:
            dest.structMember = copyToV1StructMember(source.structMember);
            break;
        default:
            VESK_WARNING(
                "VeskCMComponent: Failed converting attribute value type:%d to old type "
                "OrlMoAttributeValueContainerT. It does not support this type.",
                type);
            break;
    }
}

OrlMoAttributeValueStructMember* VeskDataConversionHelper::copyToV1StructMember(
    const OrlMoAttributeValueStructMember_3* source) {
    VESK_TRACE(">> %s", __func__);
    OrlMoAttributeValueStructMember* head = nullptr;
    OrlMoAttributeValueStructMember** tail = &head;
    for (; source != nullptr; source = source->nextMember) {
        auto* node = static_cast<OrlMoAttributeValueStructMember*>(
            std::malloc(sizeof(OrlMoAttributeValueStructMember)));
        node->memberName = VeskOrlHelper::ownStrDup(source->memberName);
        node->memberValue = source->memberValue != nullptr
                                ? copyToV1AttrValueContainer(*source->memberValue)
                                : nullptr;
        node->nextMember = nullptr;
        *tail = node;
        tail = &node->nextMember;
    }
    VESK_TRACE("<< %s", __func__);
    return head;
}

void VeskDataConversionHelper::freeAttrValueContainerV1(OrlMoAttributeValueContainer* container) {
    VESK_TRACE(">> %s", __func__);
    if (container != nullptr) {
        for (uint32_t i = 0; container->values != nullptr && i < container->nrOfValues; ++i) {
            switch (container->type) {
                case OrlOamSpiMoAttributeType_3_STRING:
                    std::free(container->values[i].theString);
                    break;
                case OrlOamSpiMoAttributeType_3_REFERENCE:
                    std::free(container->values[i].moRef);
                    break;
                case OrlOamSpiMoAttributeType_3_STRUCT:
                    freeAttributeValueStructMemberV1(container->values[i].structMember);
                    break;
                default:
                    break;
            }
        }
        std::free(container->values);
        std::free(container);
    }
    VESK_TRACE("<< %s", __func__);
}

void VeskDataConversionHelper::freeAttributeValueStructMemberV1(
    OrlMoAttributeValueStructMember* member) {
    VESK_TRACE(">> %s", __func__);
    while (member != nullptr) {
        OrlMoAttributeValueStructMember* next = member->nextMember;
        freeAttrValueContainerV1(member->memberValue);
        std::free(member->memberName);
        std::free(member);
        member = next;
    }
    VESK_TRACE("<< %s", __func__);
}

}  // namespace TibVeskCM

// The values of a notification: a database value (or list, or struct object) made into the
// host's value container.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <type_traits>

#include "notification/VeskCmEventProducer.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "plugin/VeskOrlHelper.h"

namespace TibVeskCM {
namespace {

using ProducerIf = VeskCmEventProducer::EventProducerIf;

// A number read from a list text as the alternative `T` of the list's element type, appended to
// `out`; a value that does not fit is appended as it was, and its read then fails as any wrong
// alternative does. Values are built in place: assigning into a variant trips a false
// uninitialised-use warning of the optimiser.
template <typename T>
struct Narrow : public boost::static_visitor<void> {
    std::list<AttributeVariant>& out;
    explicit Narrow(std::list<AttributeVariant>& aOut) : out(aOut) {}

    template <typename N>
    void operator()(const N& v) const {
        if constexpr (std::is_arithmetic<N>::value) {
            long double x = static_cast<long double>(v);
            if (x == std::floor(x) &&
                x >= static_cast<long double>(std::numeric_limits<T>::min()) &&
                x <= static_cast<long double>(std::numeric_limits<T>::max())) {
                out.emplace_back(static_cast<T>(v));
                return;
            }
        }
        out.emplace_back(v);
    }
};

template <typename T>
void narrowAll(std::list<AttributeVariant>& values) {
    std::list<AttributeVariant> narrowed;
    for (const AttributeVariant& value : values) {
        boost::apply_visitor(Narrow<T>(narrowed), value);
    }
    values.swap(narrowed);
}

// Gives the items of a numeric list of database type `type` their element's alternative.
void narrowList(IPCData::AttributeValueType type, std::list<AttributeVariant>& values) {
    switch (type) {
        case IPCData::AVT_INT8_LIST:
            return narrowAll<char>(values);
        case IPCData::AVT_INT16_LIST:
            return narrowAll<short>(values);
        case IPCData::AVT_INT64_LIST:
            return narrowAll<long long>(values);
        case IPCData::AVT_UINT8_LIST:
            return narrowAll<unsigned char>(values);
        case IPCData::AVT_UINT16_LIST:
            return narrowAll<unsigned short>(values);
        case IPCData::AVT_UINT32_LIST:
            return narrowAll<unsigned int>(values);
        case IPCData::AVT_UINT64_LIST:
            return narrowAll<unsigned long long>(values);
        default:
            return narrowAll<int>(values);  // 18 enumerations, 19 int32
    }
}

}  // namespace

std::list<AttributeVariant> ProducerIf::getValues(IPCData::AttributeValueType type,
                                                  const AttributeVariant& value) {
    std::list<AttributeVariant> result;
    try {
        if ((type >= IPCData::AVT_INT8 && type <= IPCData::AVT_ENUM) ||
            type == IPCData::AVT_STRUCT || type == IPCData::AVT_DECIMAL64 ||
            type == IPCData::AVT_FLOAT) {
            result.push_back(value);
        } else if (type >= IPCData::AVT_ENUM_LIST && type <= IPCData::AVT_UINT64_LIST) {
            const std::string& text = boost::get<std::string>(value);
            if (!Toolbox::readStringToListVariant(text, ',', result)) {
                VESK_ERROR("VeskCmEventProducer::%s: could not read list (%s)", __func__,
                           text.c_str());
            }
            narrowList(type, result);
        } else if (type == IPCData::AVT_BOOL_LIST) {
            const std::string& text = boost::get<std::string>(value);
            std::list<std::string> tokens;
            if (!Toolbox::readStringToList(text, ',', tokens, false)) {
                VESK_ERROR("VeskCmEventProducer::%s: could not read bool list (%s)", __func__,
                           text.c_str());
            }
            for (const std::string& token : tokens) {
                result.push_back(AttributeVariant(token == "1"));
            }
        } else if (type == IPCData::AVT_STRING_LIST ||
                   (type >= IPCData::AVT_DECIMAL64_LIST && type <= IPCData::AVT_STRUCT_LIST)) {
            const std::string& text = boost::get<std::string>(value);
            std::list<std::string> tokens;
            if (text.empty()) {
                tokens.push_back("");
            } else if (!Toolbox::readStringToList(text, ';', tokens, true)) {
                VESK_ERROR("VeskCmEventProducer::%s: could not read list (%s)", __func__,
                           text.c_str());
            }
            for (const std::string& token : tokens) {
                result.push_back(AttributeVariant(token));
            }
        } else {
            VESK_WARNING("VeskCmEventProducer::%s: unknown attribute type: %d", __func__, type);
        }
    } catch (boost::bad_get& e) {
        VESK_ERROR("VeskCmEventProducer::%s: boost bad get: %s", __func__, e.what());
    }
    return result;
}

OrlOamSpiMoAttributeType_3 ProducerIf::getAttributeType(IPCData::AttributeValueType type) {
    static const std::map<int, OrlOamSpiMoAttributeType_3> kTypes = {
        {1, 1},   {20, 1},  {2, 2},   {21, 2},  {3, 3},   {19, 3},  {4, 4},   {22, 4},
        {5, 5},   {23, 5},  {6, 6},   {24, 6},  {7, 7},   {25, 7},  {8, 8},   {26, 8},
        {9, 9},   {27, 9},  {10, 10}, {28, 10}, {11, 11}, {31, 11}, {12, 12}, {18, 12},
        {14, 14}, {32, 14}, {16, 16}, {17, 16}, {29, 16}, {30, 16}};
    auto found = kTypes.find(type);
    if (found == kTypes.end()) {
        VESK_ERROR("VeskCmEventProducer::%s: unknown attribute type: %d", __func__, type);
        return 0;
    }
    return found->second;
}

int ProducerIf::handleAttributeValueContainer(OrlMoAttributeValueContainer_3* container,
                                              const notifStruct& change) {
    std::list<AttributeVariant> values = getValues(change.attributeType, change.value);
    if (values.empty()) {
        VESK_ERROR("VeskCmEventProducer::%s: attribute values not found", __func__);
        return 0;
    }
    OrlOamSpiMoAttributeType_3 type = getAttributeType(change.attributeType);
    if (type == 0) {
        VESK_ERROR("VeskCmEventProducer::%s: could not convert %s type %d to TIB type", __func__,
                   change.attributeName.c_str(), change.attributeType);
        return 0;
    }
    container->type = type;
    container->nrOfValues = static_cast<uint32_t>(values.size());
    container->values = static_cast<OrlMoAttributeValue_3*>(
        std::calloc(values.size(), sizeof(OrlMoAttributeValue_3)));
    size_t index = 0;
    try {
        for (const AttributeVariant& value : values) {
            OrlMoAttributeValue_3& slot = container->values[index++];
            switch (type) {
                case OrlOamSpiMoAttributeType_3_INT8:
                    slot.i8 = static_cast<int8_t>(boost::get<char>(value));
                    break;
                case OrlOamSpiMoAttributeType_3_INT16:
                    slot.i16 = boost::get<short>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_INT32:
                    slot.i32 = boost::get<int>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_INT64:
                    slot.i64 = boost::get<long long>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_UINT8:
                    slot.u8 = boost::get<unsigned char>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_UINT16:
                    slot.u16 = boost::get<unsigned short>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_UINT32:
                    slot.u32 = boost::get<unsigned int>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_UINT64:
                    slot.u64 = boost::get<unsigned long long>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_STRING:
                    slot.theString =
                        VeskOrlHelper::ownStrDup(boost::get<std::string>(value).c_str());
                    break;
                case OrlOamSpiMoAttributeType_3_BOOL:
                    slot.theBool = boost::get<bool>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_REFERENCE: {
                    std::string dn = boost::get<std::string>(value);
                    if (VeskCmEventProducer::_instance != nullptr) {
                        dn = VeskCmEventProducer::_instance->setMeNbiName(dn);
                    }
                    VESK_TRACE("VeskCmEventProducer::%s: updated to '%s'", __func__, dn.c_str());
                    slot.moRef = VeskOrlHelper::ownStrDup(dn.c_str());
                    break;
                }
                case OrlOamSpiMoAttributeType_3_ENUM:
                    slot.theEnum = boost::get<int>(value);
                    break;
                case OrlOamSpiMoAttributeType_3_STRUCT: {
                    const std::string& dn = boost::get<std::string>(value);
                    slot.structMember = handleStruct(dn);
                    if (slot.structMember == nullptr) {
                        VESK_ERROR("VeskCmEventProducer::%s: could not handle structure (%s)",
                                   __func__, dn.c_str());
                        return 0;
                    }
                    break;
                }
                case OrlOamSpiMoAttributeType_3_DECIMAL64:
                    slot.decimal64 = boost::get<double>(value);
                    break;
                default:
                    VESK_ERROR("VeskCmEventProducer::%s: could not handle attribute %d", __func__,
                               type);
                    return 0;
            }
        }
    } catch (boost::bad_get&) {
        VESK_ERROR("VeskCmEventProducer::%s: boost::bad_get throws exception", __func__);
        return 0;
    }
    return 1;
}

OrlMoAttributeValueStructMember_3* ProducerIf::handleStruct(const std::string& dn) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, 0));
    if (object == nullptr) {
        VESK_ERROR("VeskCmEventProducer::%s: could not find struct object %s from database",
                   __func__, dn.c_str());
        return nullptr;
    }
    std::map<std::string, Attribute*> alternates = object->alternateAttributes;
    OrlMoAttributeValueStructMember_3* first = nullptr;
    OrlMoAttributeValueStructMember_3* last = nullptr;
    for (const auto& entry : object->attributes) {
        Attribute* attribute = entry.second;
        if (attribute->hidden) {
            VESK_TRACE("VeskCmEventProducer::%s: member: %s of structure: %s is hidden", __func__,
                       entry.first.c_str(), dn.c_str());
            continue;
        }
        notifStruct change{entry.first, attribute->value, attribute->type, false};
        auto alternate = alternates.find(entry.first);
        if (alternate != alternates.end()) {
            VESK_TRACE("VeskCmEventProducer::%s: Using of alternate value for %s of %s", __func__,
                       entry.first.c_str(), dn.c_str());
            change.value = alternate->second->value;
            change.attributeType = alternate->second->type;
            alternates.erase(alternate);
        }
        if (!addStructMember(dn, entry.first, change, &first, &last)) {
            return nullptr;
        }
    }
    // A member that exists only in alternate storage still goes out.
    for (const auto& entry : alternates) {
        if (entry.second->hidden) {
            VESK_TRACE("VeskCmEventProducer::%s: member '%s' of structure: %s is hidden", __func__,
                       entry.first.c_str(), dn.c_str());
            continue;
        }
        notifStruct change{entry.first, entry.second->value, entry.second->type, false};
        if (!addStructMember(dn, entry.first, change, &first, &last)) {
            return nullptr;
        }
    }
    return first;
}

bool ProducerIf::addStructMember(const std::string& dn, const std::string& name, notifStruct change,
                                 OrlMoAttributeValueStructMember_3** first,
                                 OrlMoAttributeValueStructMember_3** last) {
    VESK_TRACE("VeskCmEventProducer::%s: adding member:%s of structure: %s", "handleStruct",
               name.c_str(), dn.c_str());
    auto* member = static_cast<OrlMoAttributeValueStructMember_3*>(
        std::calloc(1, sizeof(OrlMoAttributeValueStructMember_3)));
    member->memberValue = static_cast<OrlMoAttributeValueContainer_3*>(
        std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
    if (*last == nullptr) {
        *first = member;
    } else {
        (*last)->nextMember = member;
    }
    *last = member;
    // A value of another alternative than its type's is of no type.
    if (IPCData::expectedVariantIndex(change.attributeType) != change.value.which()) {
        change.attributeType = IPCData::AVT_UNKNOWN;
    }
    if (handleAttributeValueContainer(member->memberValue, change) == 0) {
        VESK_ERROR("VeskCmEventProducer::%s: could not handle value container", "handleStruct");
        VeskOrlHelper::freeAttributeValueStructMember(*first);
        *first = nullptr;
        return false;
    }
    member->memberName = VeskOrlHelper::ownStrDup(name.c_str());
    return true;
}

void ProducerIf::printNotification(const OrlOamSpiCmEvent_Notification_1T* notification) {
    VESK_TRACE("VeskCmEventProducer::%s: txHandle: %u eventTime: %llu sourceIndicator: %d",
               __func__, notification->txHandle,
               static_cast<unsigned long long>(notification->eventTime),
               notification->sourceIndicator);
    for (OrlOamSpiCmEvent_1T** event = notification->events; *event != nullptr; ++event) {
        VESK_TRACE("VeskCmEventProducer::%s: dn: %s eventType: %d", __func__, (*event)->dn,
                   (*event)->eventType);
        if ((*event)->attributes == nullptr) {
            continue;
        }
        for (auto** named = (*event)->attributes; *named != nullptr; ++named) {
            VESK_TRACE("VeskCmEventProducer::%s: attribute: %s", __func__, (*named)->attributeName);
            printValueContainer(&(*named)->attributeValue);
        }
    }
}

void ProducerIf::printValueContainer(const OrlMoAttributeValueContainer_3* container) {
    VESK_TRACE("VeskCmEventProducer::%s: type: %d nrOfValues: %u", __func__, container->type,
               container->nrOfValues);
    for (uint32_t i = 0; i < container->nrOfValues && container->values != nullptr; ++i) {
        const OrlMoAttributeValue_3& slot = container->values[i];
        if (container->type == OrlOamSpiMoAttributeType_3_STRING ||
            container->type == OrlOamSpiMoAttributeType_3_REFERENCE) {
            VESK_TRACE("VeskCmEventProducer::%s: value[%u]: %s", __func__, i,
                       slot.theString != nullptr ? slot.theString : "(null)");
        } else if (container->type == OrlOamSpiMoAttributeType_3_STRUCT) {
            for (auto* member = slot.structMember; member != nullptr; member = member->nextMember) {
                VESK_TRACE("VeskCmEventProducer::%s: value[%u] member: %s", __func__, i,
                           member->memberName);
                printValueContainer(member->memberValue);
            }
        } else {
            VESK_TRACE("VeskCmEventProducer::%s: value[%u]: 0x%llx", __func__, i,
                       static_cast<unsigned long long>(slot.u64));
        }
    }
}

}  // namespace TibVeskCM

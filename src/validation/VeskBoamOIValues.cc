// The records of the baseband's attributes: slot 0 of a ConfMsg_setAttributeReq by attribute id,
// and the minimum/maximum check of the power pairs.
#include <boost/variant/get.hpp>
#include <cstring>

#include "platform/BoamMsg.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "platform/VeskStrings.h"
#include "validation/VeskBoamOI.h"

namespace TibVeskOI {

namespace {

using VESK::Messages::ConfMsg_setAttributeReq;
typedef int BoamTrAttributes::*TrMember;

const int kCellClass = 130;
const int kNodeClass = 132;
const int kPowerUnset = 999;

// Two attributes that travel as one record: `first` and `second` as the record holds them
// (minimum and maximum for the powers), each `width` bytes.
struct PairLayout {
    int attributeId;
    const char* first;
    const char* second;
    TrMember trFirst;
    TrMember trSecond;
    int defaultFirst;
    int defaultSecond;
    int unset;
    int width;
    int objectClass;
    const char* object;  // the object read for the other end; null: the dn set
};

const PairLayout kPairs[] = {
    {4131, "hsScchMinCodePower", "hsScchMaxCodePower", &BoamTrAttributes::tr_hsScchMinCodePower,
     &BoamTrAttributes::tr_hsScchMaxCodePower, -20, -20, kPowerUnset, 2, kCellClass, nullptr},
    {4132, "eAgchMinPower", "eAgchMaxPower", &BoamTrAttributes::tr_eAgchMinPower,
     &BoamTrAttributes::tr_eAgchMaxPower, -140, -140, kPowerUnset, 2, kCellClass, nullptr},
    {4133, "eRgchMinPower", "eRgchMaxPower", &BoamTrAttributes::tr_eRgchMinPower,
     &BoamTrAttributes::tr_eRgchMaxPower, -140, -140, kPowerUnset, 2, kCellClass, nullptr},
    {4134, "eHichMinPower", "eHichMaxPower", &BoamTrAttributes::tr_eHichMinPower,
     &BoamTrAttributes::tr_eHichMaxPower, -140, -140, kPowerUnset, 2, kCellClass, nullptr},
    {4212, "eulMaxAllowedSchRate", "eulDchMaxAllowedSchRate",
     &BoamTrAttributes::eulMaxAllowedSchRate, &BoamTrAttributes::eulDchMaxAllowedSchRate, 3968,
     1600, -1, 4, kNodeClass, VeskConst::NodeBFunction_1},
    {4218, "eAgchMinPower2msTti", "eAgchMaxPower2msTti", &BoamTrAttributes::tr_eAgch2msTtiMinPower,
     &BoamTrAttributes::tr_eAgch2msTtiMaxPower, -80, -80, kPowerUnset, 4, kCellClass, nullptr},
    {4219, "eHichMinPower2msTti", "eHichMaxPower2msTti", &BoamTrAttributes::tr_eHich2msTtiMinPower,
     &BoamTrAttributes::tr_eHich2msTtiMaxPower, -80, -80, kPowerUnset, 4, kCellClass, nullptr},
};

// The first value of a number, read at the width of its type (a version 1 value holds only
// that many bytes); false for no value or no number.
bool firstNumber(const OrlMoAttributeValueContainer_3* value, int& out) {
    if (value == nullptr || value->nrOfValues == 0 || value->values == nullptr) {
        return false;
    }
    const OrlMoAttributeValue_3& slot = value->values[0];
    switch (value->type) {
        case OrlOamSpiMoAttributeType_3_INT8:
            out = slot.i8;
            return true;
        case OrlOamSpiMoAttributeType_3_UINT8:
            out = slot.u8;
            return true;
        case OrlOamSpiMoAttributeType_3_INT16:
            out = slot.i16;
            return true;
        case OrlOamSpiMoAttributeType_3_UINT16:
        case OrlOamSpiMoAttributeType_3_ENUM:
            out = slot.u16;
            return true;
        case OrlOamSpiMoAttributeType_3_INT32:
        case OrlOamSpiMoAttributeType_3_UINT32:
        case OrlOamSpiMoAttributeType_3_INT64:
        case OrlOamSpiMoAttributeType_3_UINT64:
            out = slot.i32;
            return true;
        default:
            return false;
    }
}

int firstOr(const OrlMoAttributeValueContainer_3* value, int fallback) {
    int number = fallback;
    return firstNumber(value, number) ? number : fallback;
}

// Writes `number` at `offset` of slot 0's data, `width` bytes, in the station's byte order.
void put(ConfMsg_setAttributeReq* message, int offset, int width, int number) {
    char* data = message->attributes[0].data + offset;
    if (width == 1) {
        data[0] = static_cast<char>(number);
    } else if (width == 2) {
        int16_t narrow = static_cast<int16_t>(number);
        std::memcpy(data, &narrow, sizeof(narrow));
    } else {
        int32_t wide = number;
        std::memcpy(data, &wide, sizeof(wide));
    }
}

void setSlot(ConfMsg_setAttributeReq* message, int objectClass, int length) {
    message->desObClass = static_cast<uint16_t>(objectClass);
    message->attributes[0].length = static_cast<uint16_t>(length);
}

// An integer attribute of `object` (may be null); false leaves `out` as it was.
bool readInt(DBObject* object, const char* name, int& out) {
    std::string key = name;
    return object != nullptr && Toolbox::getIntFromDBObject(object, key, out);
}

}  // namespace

void VeskBoamOI::clearBOAMTrAttributes() {
    for (const PairLayout& pair : kPairs) {
        trAttributes.*pair.trFirst = pair.unset;
        trAttributes.*pair.trSecond = pair.unset;
    }
    trAttributes.eulMaxOwnUuLoad = 0;
    trAttributes.eulMaxRoTCoverage = 0;
}

int VeskBoamOI::handleBOAMAttributeValue(const OrlMoAttributeValueContainer_3* value,
                                         ConfMsg_setAttributeReq* message, int attributeId,
                                         std::string dn, std::string attrName) {
    message->desObInstance = 0;
    switch (attributeId) {
        case 4125:
            setSlot(message, kNodeClass, 4);
            put(message, 0, 1, firstOr(value, 1));
            break;
        case 4126:
            if (fillUplinkLoad(value, message, dn, attrName) == 0) {
                return 0;
            }
            break;
        case 4135:
            setSlot(message, kNodeClass, 4);
            put(message, 0, 4, firstOr(value, 4));
            break;
        default:
            if (fillPowerPair(attributeId, value, message, dn, attrName) == 0) {
                VESK_TRACE("VeskBoamOI::%s attribute id %d of %s has no record", __func__,
                           attributeId, attrName.c_str());
                return 0;
            }
            break;
    }
    _touchedClasses.push_back(message->desObClass);
    return 1;
}

int VeskBoamOI::fillPowerPair(int attributeId, const OrlMoAttributeValueContainer_3* value,
                              ConfMsg_setAttributeReq* message, const std::string& dn,
                              const std::string& attrName) {
    const PairLayout* pair = nullptr;
    for (const PairLayout& each : kPairs) {
        pair = each.attributeId == attributeId ? &each : pair;
    }
    if (pair == nullptr) {
        return 0;
    }
    int first = pair->defaultFirst;
    int second = pair->defaultSecond;
    VESK_TRACE("VeskBoamOI::%s %s %d %s %d", __func__, pair->first, trAttributes.*pair->trFirst,
               pair->second, trAttributes.*pair->trSecond);
    DBObject* object = IDatabase::getObject(pair->object ? pair->object : dn, 1, 0);
    if (attrName == pair->second) {
        second = firstOr(value, second);
        VESK_TRACE("VeskBoamOI::%s %s = %d", __func__, pair->second, second);
        trAttributes.*pair->trSecond = second;
        if (trAttributes.*pair->trFirst != pair->unset) {
            first = trAttributes.*pair->trFirst;
        } else {
            readInt(object, pair->first, first);
        }
    } else if (attrName == pair->first) {
        first = firstOr(value, first);
        VESK_TRACE("VeskBoamOI::%s %s = %d", __func__, pair->first, first);
        trAttributes.*pair->trFirst = first;
        if (trAttributes.*pair->trSecond != pair->unset) {
            second = trAttributes.*pair->trSecond;
        } else {
            readInt(object, pair->second, second);
        }
    }
    setSlot(message, pair->objectClass, 2 * pair->width);
    put(message, 0, pair->width, first);
    put(message, pair->width, pair->width, second);
    delete object;
    return 1;
}

int VeskBoamOI::fillUplinkLoad(const OrlMoAttributeValueContainer_3* value,
                               ConfMsg_setAttributeReq* message, const std::string& dn,
                               const std::string& attrName) {
    VESK_TRACE("VeskBoamOI::%s %s of %s %s", __func__, attrName.c_str(), dn.c_str(),
               value != nullptr && value->nrOfValues != 0 ? "set" : "deleted");
    int ownUuLoad = 80;
    int roTCoverage = 100;
    DBObject* object = IDatabase::getObject(dn, 1, 0);
    if (object == nullptr) {
        return 0;
    }
    if (attrName == "eulMaxOwnUuLoad") {
        ownUuLoad = trAttributes.eulMaxOwnUuLoad = firstOr(value, ownUuLoad);
        if (trAttributes.eulMaxRoTCoverage != 0) {
            roTCoverage = trAttributes.eulMaxRoTCoverage;
        } else {
            readInt(object, "eulMaxRoTCoverage", roTCoverage);
        }
    } else if (attrName == "eulMaxRoTCoverage") {
        roTCoverage = trAttributes.eulMaxRoTCoverage = firstOr(value, roTCoverage);
        if (trAttributes.eulMaxOwnUuLoad != 0) {
            ownUuLoad = trAttributes.eulMaxOwnUuLoad;
        } else {
            readInt(object, "eulMaxOwnUuLoad", ownUuLoad);
        }
    }
    int starving = 5;
    if (!readInt(object, "rtwpInformation.hsuLoadIncreaseStarvingUes", starving)) {
        VESK_TRACE("rtwpInformation.hsuLoadIncreaseStarvingUes = NULL");
        starving = 5;
    }
    delete object;
    setSlot(message, kCellClass, 8);
    put(message, 0, 2, noiseFloorOf(dn));
    put(message, 2, 2, ownUuLoad);
    put(message, 4, 1, static_cast<short>(starving));
    put(message, 6, 2, roTCoverage);
    return 1;
}

// The noise floor estimate of the cell that `dn`'s noise floor lock names, or -1020.
short VeskBoamOI::noiseFloorOf(const std::string& dn) {
    int noise = 0;
    std::string reference;
    try {
        if (Toolbox::getDbObjAttrValue<std::string>(dn, "eulOptimalNoiseFloorLock", reference, 1) &&
            Toolbox::getDbObjAttrValue<int>(reference, "eulOptimalNoiseFloorEstimate", noise, 1)) {
            VESK_TRACE("Read noise floor estimate %d", noise);
            return static_cast<short>(noise);
        }
    } catch (boost::bad_get&) {
        VESK_ERROR("Boost Bad Get! Check casts on fetched attributes");
    }
    VESK_TRACE("noise floor parameter [localThermalNoise] not found, using default value [-1020]");
    return -1020;
}

int VeskBoamOI::checkMinMaxRatio(std::string /*dn*/, std::string attrName,
                                 const OrlMoAttributeValueContainer_3* value) {
    for (const PairLayout& pair : kPairs) {
        if (pair.unset != kPowerUnset || (attrName != pair.first && attrName != pair.second)) {
            continue;
        }
        const bool isMinimum = attrName == pair.first;
        // The check of this one maximum reads the stored minimum of another pair.
        const bool fromRgch = attrName == "hsScchMaxCodePower";
        int stored = isMinimum
                         ? trAttributes.*pair.trSecond
                         : (fromRgch ? trAttributes.tr_eRgchMinPower : trAttributes.*pair.trFirst);
        int fresh =
            firstOr(value, isMinimum ? trAttributes.*pair.trFirst : trAttributes.*pair.trSecond);
        int minimum = isMinimum ? fresh : stored;
        int maximum = isMinimum ? stored : fresh;
        VESK_INFO("VeskBoamOI::%s(): %s, minValue: %d , maxValue: %d ", __func__, attrName.c_str(),
                  minimum, maximum);
        return minimum > maximum ? OrlValidationFailed : OrlFailure;
    }
    return OrlFailure;
}

}  // namespace TibVeskOI

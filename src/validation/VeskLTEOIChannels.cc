// VeskLTEOI: the candidate channels of WiFi channel selection at commit. Once the station is
// integrated, an operator may not turn off the channel an LAA secondary cell is on; before, the
// two names of channel 32 are only kept equal.
#include "platform/Logger.h"
#include "transaction/Band46Channels.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const char kCandidates[] = "WiFiChannelSelection=1:candidateChannels";
const int kHighestFddChannel = 18000;

// A candidate channel in the view of `handle` (0: the committed database); false when it cannot
// be read, which `readable` (may be null) tells.
bool candidate(const std::string& name, int handle, bool* readable = nullptr) {
    // The attribute belongs to the database until its next read: the value is taken at once.
    Attribute* attribute = IDatabase::getAttribute(kCandidates, name, handle);
    bool value = false;
    const bool read = attribute != nullptr && !attribute->deleted &&
                      Toolbox::getValue<bool>(attribute->value, value);
    if (readable != nullptr) {
        *readable = read;
    }
    return read && value;
}

const char* boolText(bool value) {
    return value ? "true" : "false";
}

}  // namespace

int VeskLTEOI::checkWiFiChannelSelection(int dbTx) {
    int result = OrlOk;
    for (const rules::ObjectPtr& cell : rules::MoList("EUtranCellFDD", dbTx)) {
        const std::string dn = rules::dnOf(*cell);
        const int earfcndl = rules::readInt(cell.get(), "earfcndl", -1);
        VESK_TRACE("%s::earfcndl: %d", dn.c_str(), earfcndl);
        if (earfcndl <= kHighestFddChannel) {
            continue;
        }
        const TibVeskCM::Band46Channel* channel = TibVeskCM::band46ByLow(earfcndl);
        if (channel == nullptr) {
            VESK_ERROR("VeskLTEOI::%s %s::earfcndl %d is no candidate channel, cell not judged",
                       __func__, dn.c_str(), earfcndl);
            continue;
        }
        VESK_TRACE("%s::earfcndl %d means %s", dn.c_str(), earfcndl, channel->candidateChannel);
        const std::string name = channel->candidateChannel == std::string("channel32")
                                     ? channel32Name(dbTx, __func__)
                                     : channel->candidateChannel;
        const bool inTransaction = candidate(name, dbTx);
        VESK_TRACE("value of %s is %s", name.c_str(), boolText(inTransaction));
        if (inTransaction) {
            continue;
        }
        if (candidate(name, 0)) {
            VESK_INFO("VeskLTEOI::%s LAA SCell candidate channel can not be turned off", __func__);
            result = OrlValidationFailed;
        } else {
            VESK_INFO(
                "VeskLTEOI::%s LAA SCell candidate channel is false is database, passing "
                "validation",
                __func__);
        }
    }
    return result;
}

std::string VeskLTEOI::channel32Name(int dbTx, const char* rule) {
    const bool channel32 = candidate("channel32", dbTx),
               storedChannel32 = candidate("channel32", 0);
    const bool freq5160 = candidate("channelFreq5160MHz", dbTx),
               storedFreq5160 = candidate("channelFreq5160MHz", 0);
    VESK_TRACE("VeskLTEOI::%s value of channel32 is %s in transaction", rule, boolText(channel32));
    VESK_TRACE("VeskLTEOI::%s value of channel32 is %s in database", rule,
               boolText(storedChannel32));
    VESK_TRACE("VeskLTEOI::%s value of channelFreq5160MHz is %s in transaction", rule,
               boolText(freq5160));
    VESK_TRACE("VeskLTEOI::%s value of channelFreq5160MHz is %s in database", rule,
               boolText(storedFreq5160));
    if (channel32 == storedChannel32 && freq5160 != storedFreq5160) {
        VESK_TRACE("VeskLTEOI::%s taking value of channelFreq5160MHz", rule);
        return "channelFreq5160MHz";
    }
    VESK_TRACE("VeskLTEOI::%s taking value of channel32", rule);
    return "channel32";
}

void VeskLTEOI::synchronizeCandidateChannels(int dbTx) {
    bool readable32 = false, readable5160 = false;
    const bool channel32 = candidate("channel32", dbTx, &readable32);
    const bool freq5160 = candidate("channelFreq5160MHz", dbTx, &readable5160);
    if (!readable32 || !readable5160 || channel32 == freq5160) {
        return;
    }
    // channel32 is the master, whichever of the two the operator changed.
    rules::ObjectPtr candidates = rules::fetch(kCandidates, dbTx);
    Attribute* alias = candidates ? candidates->getAttribute("channelFreq5160MHz") : nullptr;
    if (alias == nullptr) {
        return;
    }
    VESK_TRACE("updating channelFreq5160MHz to %s", boolText(channel32));
    alias->SetValue(AttributeVariant(channel32));
    if (IDatabase::insert(candidates.get(), dbTx) == 0) {
        VESK_ERROR("VeskLTEOI::%s updating %s failed", __func__, kCandidates);
    }
}

}  // namespace TibVeskOI

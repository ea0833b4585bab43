// VeskLTEOI: the commit stage. The notes the rules left for a transaction are taken in a fixed
// order; the cells' bandwidths raise and clear two faults at the fault manager, carrier
// aggregation may refuse the commit.
#include <algorithm>

#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const int kFaultManager = 3;
const int kFaultClass = 2;

// Takes the first entry of `txHandle` from `list`; false when the list holds none.
bool takeFirst(VeskLTEOI::TxList& list, unsigned long txHandle) {
    for (auto entry = list.begin(); entry != list.end(); ++entry) {
        VESK_TRACE("checking %d / %d", static_cast<int>(*entry), static_cast<int>(txHandle));
        if (*entry == txHandle) {
            list.erase(entry);
            return true;
        }
    }
    return false;
}

// A cell's bandwidth: its pending value when the cell holds one, else its present one; 0 when
// it has neither or holds one of another kind.
int bandwidthOf(DBObject& cell, const char* name) {
    Attribute* attribute = cell.getAlternateAttribute(name);
    if (attribute == nullptr || attribute->deleted) {
        attribute = cell.getAttribute(name);
    }
    int value = 0;
    if (attribute != nullptr && !attribute->deleted &&
        !Toolbox::getValue<int>(attribute->value, value)) {
        value = 0;
    }
    return value;
}

bool isIllegalDownlink(int bandwidth) {
    return bandwidth == 1400 || bandwidth == 3000;
}

}  // namespace

int VeskLTEOI::commit(unsigned long aTxHandle) {
    const int dbTx = VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
    int result = OrlOk;
    if (takeFirst(_bandwidthCheckTxs, aTxHandle)) {
        VESK_TRACE("have to validate cell bandwidths");
        checkBandwidths(dbTx);
    }
    if (takeFirst(_carrierAggregationCheckTxs, aTxHandle)) {
        VESK_TRACE("have to validate carrier aggregation parameters");
        result = checkCarrierAggregation(dbTx);
    }
    // The channels' answer replaces that of carrier aggregation, a refusal included.
    if (takeFirst(_candidateChannelCheckTxs, aTxHandle)) {
        VESK_TRACE("have to validate candidate channel parameters");
        result = checkWiFiChannelSelection(dbTx);
    }
    if (takeFirst(_candidateChannelSyncTxs, aTxHandle)) {
        synchronizeCandidateChannels(dbTx);
    }
    if (takeFirst(_fddCellDeletionTxs, aTxHandle)) {
        checkEUtranCellFDDDeletion(dbTx);
    }
    if (takeFirst(_tddCellDeletionTxs, aTxHandle)) {
        checkEUtranCellTDDDeletion(dbTx);
    }
    result = judgeDeletions(_freqRelationDeletions, aTxHandle, dbTx, result,
                            &VeskLTEOI::checkEUtranFreqRelationDeletion);
    result = judgeDeletions(_frequencyDeletions, aTxHandle, dbTx, result,
                            &VeskLTEOI::checkEUtranFrequencyDeletion);
    // Runs after a refusal too, once per transaction; the mark stays, lowered.
    bool& band46Pending = _band46UpdatePending[static_cast<int>(aTxHandle)];
    if (band46Pending) {
        band46Pending = false;
        band46EutranCellUpdate(static_cast<int>(aTxHandle));
        band46FreqRelationUpdate(static_cast<int>(aTxHandle));
        band46FrequencyUpdate(static_cast<int>(aTxHandle));
    }
    return result;
}

int VeskLTEOI::judgeDeletions(DeletionList& list, unsigned long aTxHandle, int dbTx, int result,
                              OrlReturnT (VeskLTEOI::*check)(int, const std::string&)) {
    for (auto entry = list.begin(); entry != list.end();) {
        VESK_TRACE("checking %d / %d", static_cast<int>(entry->first), static_cast<int>(aTxHandle));
        if (entry->first != aTxHandle) {
            ++entry;
            continue;
        }
        VESK_TRACE("have to validate deletion of %s", entry->second.c_str());
        // After the first refusal the rest are only taken off.
        if (result == OrlOk) {
            result = (this->*check)(dbTx, entry->second);
        }
        entry = list.erase(entry);
    }
    return result;
}

void VeskLTEOI::checkBandwidths(int dbTx) {
    for (const char* cellClass : {"EUtranCellFDD", "EUtranCellTDD"}) {
        for (const rules::ObjectPtr& cell : rules::MoList(cellClass, dbTx)) {
            const std::string dn = rules::dnOf(*cell);
            const int uplink = bandwidthOf(*cell, "ulChannelBandwidth");
            const int downlink = bandwidthOf(*cell, "dlChannelBandwidth");
            if (isIllegalDownlink(downlink)) {
                VESK_TRACE("illegal channel bandwidth for %s", dn.c_str());
            }
            followFault(kIllegalCellBandwidthChange, isIllegalDownlink(downlink), dn,
                        "VeskFault_IllegalCellBandwidthChange");
            if (uplink != downlink) {
                VESK_TRACE("channel bandwidth mismatch for %s", dn.c_str());
            }
            followFault(kInconsistentCellBandwidthChange, uplink != downlink, dn,
                        "VeskFault_InconsistentCellBandwidthChange");
        }
    }
}

void VeskLTEOI::followFault(int fault, bool faulty, const std::string& dn, const char* faultName) {
    std::list<std::string>& active = fault == kIllegalCellBandwidthChange
                                         ? _illegalBandwidthAlarmDns
                                         : _inconsistentBandwidthAlarmDns;
    // A failed send changes nothing here: the list follows the cell all the same.
    if (faulty && !activeAlarm(dn, fault)) {
        VESK_TRACE("raising %s for %s", faultName, dn.c_str());
        sendFaultNotif(fault, 1, dn);
        active.push_back(dn);
    } else if (!faulty && activeAlarm(dn, fault)) {
        VESK_TRACE("canceling the %s", faultName);
        sendFaultNotif(fault, 0, dn);
        active.remove(dn);
    }
}

bool VeskLTEOI::activeAlarm(std::string dn, int fault) {
    const std::list<std::string>* active =
        fault == kIllegalCellBandwidthChange        ? &_illegalBandwidthAlarmDns
        : fault == kInconsistentCellBandwidthChange ? &_inconsistentBandwidthAlarmDns
                                                    : nullptr;
    return active != nullptr && std::find(active->begin(), active->end(), dn) != active->end();
}

void VeskLTEOI::sendFaultNotif(int fault, int state, std::string dn) {
    VESK::Messages::VESK_FaultNotification message;
    message.faultId = fault;
    message.faultState = state;
    message.faultClass = kFaultClass;
    message.additionalText = dn;
    if (VESK::Framework::Messaging::sendVeskMessage_v2(kFaultManager, message, 1) != 0) {
        VESK_TRACE("sent fault to FM");
    } else {
        VESK_ERROR("VeskLTEOI::%s sent fault to FM failed", __func__);
    }
}

int VeskLTEOI::checkCarrierAggregation(int dbTx) {
    rules::ObjectPtr function = rules::fetch("CarrierAggregationFunction=1", dbTx);
    if (!function) {
        return OrlOk;
    }
    const int threshold = rules::readInt(function.get(), "sCellActDeactDataThres", -1);
    const int hysteresis = rules::readInt(function.get(), "sCellActDeactDataThresHyst", -1);
    VESK_TRACE("validating sCellActDeactDataThres: %d, sCellActDeactDataThresHyst: %d", threshold,
               hysteresis);
    return hysteresis > threshold ? OrlValidationFailed : OrlOk;
}

}  // namespace TibVeskOI

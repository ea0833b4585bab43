// VeskLTEOI: registration, the deletion notes, the end of a transaction and the load balancing
// flag of "StaticParams".
#include "validation/VeskLTEOI.h"

#include <algorithm>

#include "platform/Logger.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const char* const kPaths[] = {
    "/ManagedElement/ENodeBFunction/EUtraNetwork/EUtranFrequency",
    "/ManagedElement/ENodeBFunction/TermPointToMme",
    "/ManagedElement/ENodeBFunction/EUtranCellFDD/EUtranFreqRelation/EUtranCellRelation",
    "/ManagedElement/ENodeBFunction/EUtranCellFDD/UtranFreqRelation/UtranCellRelation",
    "/ManagedElement/ENodeBFunction/EUtranCellFDD/Cdma2000FreqBandRelation/Cdma2000CellRelation",
    "/ManagedElement/ENodeBFunction/EUtranCellFDD/EUtranFreqRelation",
    "/ManagedElement/ENodeBFunction/EUtranCellFDD",
    "/ManagedElement/ENodeBFunction/CarrierAggregationFunction",
    "/ManagedElement/ENodeBFunction/WiFiChannelSelection",
    "/ManagedElement/ENodeBFunction/QciTable/QciProfilePredefined",
    "/ManagedElement/ENodeBFunction/EUtraNetwork/ExternalENodeBFunction/ExternalEUtranCellFDD",
    "/ManagedElement/ENodeBFunction/EUtranCellTDD",
};

// Removes the first entry of `txHandle`, if any.
void removeFirst(VeskLTEOI::TxList& list, unsigned long txHandle) {
    auto entry = std::find(list.begin(), list.end(), txHandle);
    if (entry != list.end()) {
        list.erase(entry);
    }
}

void removeAll(VeskLTEOI::DeletionList& list, unsigned long txHandle) {
    list.remove_if([txHandle](const std::pair<unsigned long, std::string>& entry) {
        return entry.first == txHandle;
    });
}

}  // namespace

VeskLTEOI* VeskLTEOI::instance() {
    static VeskLTEOI lte;
    return &lte;
}

void VeskLTEOI::initialize() {
    for (const char* path : kPaths) {
        VeskOI::getVeskOI()->registerAsObjectImplementer(path);
    }
}

OrlReturnT VeskLTEOI::validateEUtranFreqRelationDeletion(unsigned long aTxHandle, const char* dn) {
    _freqRelationDeletions.emplace_back(aTxHandle, dn);
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateEUtranFrequencyDeletion(unsigned long aTxHandle, const char* dn) {
    _frequencyDeletions.emplace_back(aTxHandle, dn);
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateEUtranCellFDDDeletion(unsigned long aTxHandle, const char* /*dn*/) {
    _fddCellDeletionTxs.push_back(aTxHandle);
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateEUtranCellTDDDeletion(unsigned long aTxHandle, const char* /*dn*/) {
    _tddCellDeletionTxs.push_back(aTxHandle);
    return OrlOk;
}

void VeskLTEOI::checkEUtranCellFDDDeletion(int dbTx) {
    checkCellDeletion("EUtranCellFDD", dbTx, __func__);
}

void VeskLTEOI::checkEUtranCellTDDDeletion(int dbTx) {
    checkCellDeletion("EUtranCellTDD", dbTx, __func__);
}

void VeskLTEOI::checkCellDeletion(const char* cellClass, int dbTx, const char* rule) {
    // Each class is judged by itself: the last FDD cell lowers the flag while TDD cells remain.
    if (rules::MoList(cellClass, dbTx).size() == 0) {
        VESK_INFO("VeskLTEOI::%s cells deleted, lowering the flag", rule);
        updateLoadBalancingFlag(false, dbTx);
    }
}

void VeskLTEOI::updateLoadBalancingFlag(bool value, int dbTx) {
    VESK_INFO("VeskLTEOI::%s updating flag to %s", __func__, value ? "TRUE" : "FALSE");
    rules::ObjectPtr params = rules::fetch("StaticParams", dbTx);
    if (!params) {
        return;
    }
    Attribute* flag = params->getAttribute("autoLBDisabled");
    if (flag != nullptr) {
        flag->SetValue(AttributeVariant(value));
        flag->type = IPCData::AVT_BOOL;
        flag->deleted = false;
    } else {
        params->addAttribute(*new Attribute(false, "autoLBDisabled", AttributeVariant(value), 0,
                                            true, IPCData::AVT_BOOL, true, false));
    }
    if (IDatabase::insert(params.get(), dbTx) == 0) {
        VESK_ERROR("VeskLTEOI::%s updating StaticParams failed", __func__);
    }
}

void VeskLTEOI::raiseLoadBalancingFlag(const char* rule, const char* dn, const char* attributeName,
                                       unsigned long aTxHandle) {
    VESK_INFO("VeskLTEOI::%s %s::%s is updated by user, raising flag", rule, dn, attributeName);
    updateLoadBalancingFlag(true, VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle));
}

void VeskLTEOI::abort(unsigned long aTxHandle) {
    removeFirst(_bandwidthCheckTxs, aTxHandle);
    removeFirst(_carrierAggregationCheckTxs, aTxHandle);
    removeFirst(_candidateChannelCheckTxs, aTxHandle);
    removeFirst(_candidateChannelSyncTxs, aTxHandle);
    removeFirst(_fddCellDeletionTxs, aTxHandle);
    removeFirst(_tddCellDeletionTxs, aTxHandle);
    removeAll(_freqRelationDeletions, aTxHandle);
    removeAll(_frequencyDeletions, aTxHandle);
}

}  // namespace TibVeskOI

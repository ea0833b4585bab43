// VeskLTEOI: cell relations and the class of what they point at, the cells' restricted and noted
// attributes, carrier aggregation, WiFi channel selection, QCI profiles and external cells.
#include <cstring>

#include "platform/Logger.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const int kIntegrated = 4;

int databaseTx(unsigned long aTxHandle) {
    return VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
}

bool is(const char* name, const char* expected) {
    return std::strcmp(name, expected) == 0;
}

bool isReferenceAttribute(const char* name) {
    return is(name, "neighborCellRef") || is(name, "externalUtranCellRef") ||
           is(name, "externalCdma2000CellRef");
}

// The class a reference points at: behind the last "," up to the first "=".
std::string referencedClass(const char* value) {
    std::string text = value != nullptr ? value : "";
    const std::string::size_type comma = text.rfind(',');
    if (comma != std::string::npos) {
        text.erase(0, comma + 1);
    }
    return text.substr(0, text.find('='));
}

}  // namespace

OrlReturnT VeskLTEOI::validateCellRelationCreation(
    unsigned long /*aTxHandle*/, const char* /*parentDn*/, const char* /*className*/,
    OrlMoNamedAttributeValueContainer_3** attributes) {
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* name = attributes[i]->attributeName;
        if (name != nullptr && isReferenceAttribute(name)) {
            return validateReference(name, &attributes[i]->attributeValue);
        }
    }
    return OrlOk;  // a relation made without a reference is accepted
}

OrlReturnT VeskLTEOI::validateCellRelationSetAttribute(
    unsigned long /*aTxHandle*/, const char* /*dn*/, const char* attributeName,
    const OrlMoAttributeValueContainer_3* value) {
    return isReferenceAttribute(attributeName) ? validateReference(attributeName, value) : OrlOk;
}

OrlReturnT VeskLTEOI::validateReference(const std::string& attributeName,
                                        const OrlMoAttributeValueContainer_3* value) {
    // Only the class is judged; whether the MO exists is the commit's reference check.
    const std::string cls = referencedClass(rules::firstText(value));
    bool accepted = false;
    if (attributeName == "neighborCellRef") {
        accepted = cls == "ExternalEUtranCellFDD" || cls == "ExternalEUtranCellTDD" ||
                   cls == "EUtranCellFDD" || cls == "EUtranCellTDD";
    } else if (attributeName == "externalUtranCellRef") {
        accepted = cls == "ExternalUtranCellFDD";
    } else if (attributeName == "externalCdma2000CellRef") {
        accepted = cls == "ExternalCdma2000Cell";
    }
    if (!accepted) {
        VESK_TRACE("VeskLTEOI::%s %s may not refer to class '%s'", __func__, attributeName.c_str(),
                   cls.c_str());
        return OrlValidationFailed;
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateCellSetAttribute(unsigned long aTxHandle, const char* dn,
                                               const char* attributeName,
                                               const OrlMoAttributeValueContainer_3* /*value*/) {
    if (is(attributeName, "dlChannelBandwidth") || is(attributeName, "ulChannelBandwidth")) {
        VESK_TRACE("VeskLTEOI::%s adding %d to list", __func__, static_cast<int>(aTxHandle));
        _bandwidthCheckTxs.push_back(aTxHandle);
    } else if (is(attributeName, "isDlOnly") || is(attributeName, "numOfRxAntennas")) {
        // Committed data only: a cell made in this transaction may still be given them.
        if (IDatabase::isPresentInDB(dn, 1)) {
            VESK_INFO(
                "VeskLTEOI::%s %s::%s is handled as restricted attribute, changing not allowed",
                __func__, dn, attributeName);
            return OrlValidationFailed;
        }
    } else if (is(attributeName, "cellSubscriptionCapacity")) {
        raiseLoadBalancingFlag(__func__, dn, attributeName, aTxHandle);
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateCarrierAggregationSetAttribute(
    unsigned long aTxHandle, const char* /*dn*/, const char* attributeName,
    const OrlMoAttributeValueContainer_3* /*value*/) {
    if (is(attributeName, "sCellActDeactDataThres") ||
        is(attributeName, "sCellActDeactDataThresHyst")) {
        _carrierAggregationCheckTxs.push_back(aTxHandle);
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateWiFiChannelSelectionSetAttribute(
    unsigned long aTxHandle, const char* /*dn*/, const char* attributeName,
    const OrlMoAttributeValueContainer_3* /*value*/) {
    if (!is(attributeName, "candidateChannels")) {
        return OrlOk;
    }
    int phase = -2;
    if (!Toolbox::getDbObjAttrValue<int>("OAM", "AI_phase", phase, 1)) {
        phase = -2;
    }
    // Once integrated the commit judges the channels; before, it only keeps the two names of
    // channel 32 equal.
    if (phase == kIntegrated) {
        _candidateChannelCheckTxs.push_back(aTxHandle);
    } else {
        VESK_TRACE("VeskLTEOI::%s have to synchronize candidate channels", __func__);
        _candidateChannelSyncTxs.push_back(aTxHandle);
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateQciProfilePredefinedSetAttribute(
    unsigned long aTxHandle, const char* dn, const char* attributeName,
    const OrlMoAttributeValueContainer_3* /*value*/) {
    if (is(attributeName, "qciSubscriptionQuanta")) {
        raiseLoadBalancingFlag(__func__, dn, attributeName, aTxHandle);
    }
    return OrlOk;
}

OrlReturnT VeskLTEOI::validateExternalEUtranCellSetAttribute(
    unsigned long aTxHandle, const char* dn, const char* attributeName,
    const OrlMoAttributeValueContainer_3* /*value*/) {
    if (!is(attributeName, "eutranFrequencyRef")) {
        return OrlOk;
    }
    return validateEutranFrequencyRef(dn, databaseTx(aTxHandle));
}

OrlReturnT VeskLTEOI::validateEutranFrequencyRef(const char* dn, int dbTx) {
    // An external cell that a cell relation points at keeps its frequency: the frequency change
    // action moves both.
    OrlReturnT rc = OrlOk;
    for (const rules::ObjectPtr& relation : rules::MoList("EUtranCellRelation", dbTx)) {
        if (rules::readText(relation.get(), "neighborCellRef") == dn) {
            VESK_INFO("VeskLTEOI::%s changing %s::eutranFrequencyRef failed due to %s in pointing",
                      __func__, dn, rules::dnOf(*relation).c_str());
            rc = OrlValidationFailed;
        }
    }
    return rc;
}

}  // namespace TibVeskOI

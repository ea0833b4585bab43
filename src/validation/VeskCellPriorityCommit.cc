// The commit stage of the cell priorities: the gaps closed and the next operation mode set, and
// the LTE cells mended.
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/OperationMode.h"
#include "platform/Toolbox.h"
#include "transaction/Band46Channels.h"
#include "validation/VeskCellPriority.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const int kModeKind = 2;

// The low number of a 5 GHz channel given in its high numbering; any other channel as it is.
int lowChannel(int channel) {
    const TibVeskCM::Band46Channel* row = TibVeskCM::band46ByHigh(channel);
    return row != nullptr ? row->low : channel;
}

const char* modeName(int mode) {
    return mode == VeskCellPriority::MSMM ? "mixed" : "hc_lte";
}

}  // namespace

void VeskCellPriority::validateMode(int dbTx) {
    PriorityMap map;
    buildMap(dbTx, map);
    if (removeEmptySpaces(map) == 0) {
        updateDatabase(map, dbTx);
    }
    checkMode(Toolbox::checkModeFromDB(dbTx) == MSMM ? MSMM : LTE_HC);
}

void VeskCellPriority::checkMode(eMode mode) {
    int current = 0;
    if (mw_api_operation_mode_get(kModeKind, &current) != 0) {
        VESK_ERROR("VeskCellPriority::%s Could not get next operation mode from AMW", __func__);
        return;
    }
    const int wanted = mode == MSMM ? 1 : 0;
    if (current == wanted) {
        return;
    }
    VESK_INFO("VeskCellPriority::%s setting operation mode to %s (old mode: %s)", __func__,
              modeName(wanted), modeName(current));
    if (mw_api_operation_mode_set(kModeKind, wanted) != 0) {
        VESK_ERROR("VeskCellPriority::%s could not set operation mode to AMW", __func__);
    } else {
        VESK_INFO("VeskCellPriority::%s operation mode successfully set to AMW", __func__);
    }
}

void VeskCellPriority::validateCell(int dbTx) {
    const std::pair<const char*, const char*> classes[] = {{"EUtranCellFDD", "earfcndl"},
                                                           {"EUtranCellTDD", "earfcn"}};
    for (const auto& [className, channelName] : classes) {
        for (const rules::ObjectPtr& cell : rules::MoList(className, dbTx)) {
            if (mendCell(cell.get(), channelName) && IDatabase::insert(cell.get(), dbTx) == 0) {
                VESK_ERROR("VeskCellPriority::%s could not insert object %s", __func__,
                           cell->dn.c_str());
            }
        }
    }
}

bool VeskCellPriority::mendCell(DBObject* cell, const char* channelName) {
    bool changed = false;
    const int sysTime = intOf(cell, "initCdma2000SysTimeType", -1);
    if (sysTime != -1) {
        Attribute* held = cell->getAttribute("bcCdma2000SysTimeType");
        if (held == nullptr || held->deleted) {
            VESK_INFO("VeskCellPriority::%s creating %s::bcCdma2000SysTimeType to %d",
                      "validateCell", cell->dn.c_str(), sysTime);
            cell->addAttribute(*new Attribute(false, "bcCdma2000SysTimeType",
                                              AttributeVariant(sysTime), 0, true,
                                              IPCData::AVT_INT32, true, false));
            changed = true;
        } else if (intOf(cell, "bcCdma2000SysTimeType", -2) != sysTime) {
            VESK_INFO("VeskCellPriority::%s updating %s::bcCdma2000SysTimeType to %d",
                      "validateCell", cell->dn.c_str(), sysTime);
            held->SetValue(AttributeVariant(sysTime));
            changed = true;
        }
    }
    const int channel = intOf(cell, channelName, -1);
    const int low = lowChannel(channel);
    if (low != channel) {
        VESK_INFO("VeskCellPriority::%s updating %s::%s to %d", "validateCell", cell->dn.c_str(),
                  channelName, low);
        cell->getAttribute(channelName)->SetValue(AttributeVariant(low));
        changed = true;
    }
    return changed;
}

}  // namespace TibVeskOI

// The cell priority entry points and the priority map: how a cell is placed, how the map is read
// from the cells and written back to them.
#include "validation/VeskCellPriority.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

const int kNotInUse = 10;
const int kUnread = INT_MIN;

bool isLteCell(const std::string& className) {
    return className == "EUtranCellFDD" || className == "EUtranCellTDD";
}

const char* stateText(int state) {
    return state == 1 ? "UNLOCKED" : "LOCKED";
}

const char* flagText(bool flag) {
    return flag ? "TRUE" : "FALSE";
}

// Whether `cell`, placed by `rule`, goes in front of `record`.
bool goesBefore(const VeskCellPriority::sCellLock& record, VeskCellPriority::eMapRule rule) {
    switch (rule) {
        case VeskCellPriority::ruleResourcesAllocated:
            return !record.resourcesAllocated;
        case VeskCellPriority::ruleUnlocked:
            return !record.resourcesAllocated && record.administrativeState != 1;
        default:
            return false;
    }
}

}  // namespace

VeskCellPriority* VeskCellPriority::instance() {
    static VeskCellPriority priority;
    return &priority;
}

int VeskCellPriority::validateCellCreation(unsigned long aTxHandle, const char* /*parentDn*/,
                                           const char* aClassName,
                                           OrlMoNamedAttributeValueContainer_3** attributes,
                                           const char* keyValue) {
    const std::string className = aClassName;
    if (!isLteCell(className) && className != "NodeBLocalCell") {
        return 0;
    }
    int state = 0;
    for (int i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const char* name = attributes[i]->attributeName;
        if (name != nullptr && std::strcmp(name, "administrativeState") == 0) {
            rules::firstInt(&attributes[i]->attributeValue, state);
            break;
        }
    }
    const int dbTx = VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
    if (dbTx != 0) {
        checkCellPriority(dbTx, className + "=" + keyValue, state);
    }
    _modeCheckTxs.push_back(aTxHandle);
    if (isLteCell(className)) {
        VESK_TRACE("%s: Need to validate cell", __func__);
        _cellCheckTxs.push_back(aTxHandle);
    }
    return 0;
}

int VeskCellPriority::validateCellSetAttribute(unsigned long aTxHandle, const char* aDn,
                                               const char* aAttributeName,
                                               const OrlMoAttributeValueContainer_3* value) {
    if (std::strcmp(aAttributeName, "administrativeState") != 0) {
        return 0;
    }
    const std::string dn = aDn;
    const std::string cell = dn.substr(dn.rfind(',') + 1);
    int state = -1;  // a value that cannot be read places nothing
    rules::firstInt(value, state);
    // The front opens the database transaction before it asks the implementers.
    const int dbTx = VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
    if (dbTx != 0) {
        checkCellPriority(dbTx, cell, state);
    }
    _modeCheckTxs.push_back(aTxHandle);
    return 0;
}

int VeskCellPriority::validateCellDeletion(unsigned long aTxHandle, const char* /*dn*/) {
    _modeCheckTxs.push_back(aTxHandle);
    return 0;
}

int VeskCellPriority::commit(unsigned long aTxHandle) {
    // A transaction that wrote nothing has no view of its own; handle 0 would write committed
    // data behind every transaction's back.
    const int dbTx = VeskOI::getVeskOI()->getVeskDatabaseTransactionId(aTxHandle);
    auto mode = std::find(_modeCheckTxs.begin(), _modeCheckTxs.end(), aTxHandle);
    if (mode != _modeCheckTxs.end()) {
        if (dbTx != 0) {
            validateMode(dbTx);
        }
        _modeCheckTxs.erase(mode);
    }
    auto cell = std::find(_cellCheckTxs.begin(), _cellCheckTxs.end(), aTxHandle);
    if (cell != _cellCheckTxs.end()) {
        if (dbTx != 0) {
            validateCell(dbTx);
        }
        _cellCheckTxs.erase(cell);
    }
    return 0;
}

void VeskCellPriority::abort(unsigned long aTxHandle) {
    for (TxList* list : {&_modeCheckTxs, &_cellCheckTxs}) {
        auto entry = std::find(list->begin(), list->end(), aTxHandle);
        if (entry != list->end()) {
            VESK_TRACE("%s: erasing from list", __func__);
            list->erase(entry);
        }
    }
}

void VeskCellPriority::checkCellPriority(int dbTx, const std::string& aCell,
                                         int aAdministrativeState) {
    const std::string className = aCell.substr(0, aCell.rfind('='));
    PriorityMap map;
    buildMap(dbTx, map);
    VESK_INFO("VeskCellPriority::%s Current cell priorities:", __func__);
    printPriority(map);
    if (removeEmptySpaces(map) == 0) {
        VESK_INFO("VeskCellPriority::%s Cell priorities after removing empty spaces:", __func__);
        printPriority(map);
    }
    sCellLock lock;
    if (!getCell(map, aCell, lock)) {
        lock.cellDn = aCell;
        rules::ObjectPtr committed = rules::fetch(aCell, 0);
        lock.resourcesAllocated = boolOf(committed.get(), "resourcesAllocated", false);
        lock.isNodeBCell = !isLteCell(className);
    }
    lock.administrativeState = aAdministrativeState;
    if (aAdministrativeState == 1) {
        insertToMap(map, lock, lock.resourcesAllocated ? ruleResourcesAllocated : ruleUnlocked);
    } else if (aAdministrativeState == 0) {
        insertToMap(map, lock, ruleLocked);
    }
    VESK_INFO("VeskCellPriority::%s New cell priorities:", __func__);
    printPriority(map);
    updateDatabase(map, dbTx);
}

void VeskCellPriority::buildMap(int dbTx, PriorityMap& map) {
    getCurrentPriority("EUtranCellFDD", dbTx, map, false);
    getCurrentPriority("NodeBLocalCell", dbTx, map, true);
    getCurrentPriority("EUtranCellTDD", dbTx, map, false);
}

void VeskCellPriority::getCurrentPriority(const std::string& className, int dbTx, PriorityMap& map,
                                          bool isNodeBCell) {
    for (const rules::ObjectPtr& object : rules::MoList(className, dbTx)) {
        const int priority = intOf(object.get(), "priority", kUnread);
        if (priority == kUnread) {
            continue;
        }
        sCellLock cell;
        cell.cellDn = object->dn;
        cell.administrativeState = intOf(object.get(), "administrativeState", 0);
        cell.resourcesAllocated = boolOf(object.get(), "resourcesAllocated", false);
        cell.isNodeBCell = isNodeBCell;
        if (priority == kNotInUse) {
            VESK_TRACE("%s: not in use cell p: %d, ra: %s, as: %s for %s", __func__, priority,
                       flagText(cell.resourcesAllocated), stateText(cell.administrativeState),
                       cell.cellDn.c_str());
            continue;
        }
        map[priority] = cell;
    }
}

bool VeskCellPriority::getCell(const PriorityMap& map, const std::string& cell, sCellLock& found) {
    for (const auto& entry : map) {
        if (entry.second.cellDn == cell) {
            found = entry.second;
            return true;
        }
    }
    return false;
}

int VeskCellPriority::removeEmptySpaces(PriorityMap& map) {
    int expected = 1;
    bool dense = true;
    for (const auto& entry : map) {
        dense = dense && entry.first == expected++;
    }
    if (dense) {
        return 1;
    }
    PriorityMap renumbered;
    int priority = 1;
    for (const auto& entry : map) {
        renumbered[priority++] = entry.second;
    }
    map.swap(renumbered);
    return 0;
}

void VeskCellPriority::insertToMap(PriorityMap& map, const sCellLock& cell, eMapRule rule) {
    PriorityMap others;
    others.swap(map);
    for (auto it = others.begin(); it != others.end(); ++it) {
        if (it->second.cellDn == cell.cellDn) {
            VESK_TRACE("%s: erasing %s", __func__, cell.cellDn.c_str());
            others.erase(it);
            break;
        }
    }
    int slot = 1;
    bool placed = false;
    for (const auto& entry : others) {
        if (!placed && goesBefore(entry.second, rule)) {
            map[slot++] = cell;
            placed = true;
        }
        map[slot++] = entry.second;
    }
    if (!placed) {
        map[slot] = cell;
    }
}

void VeskCellPriority::updateDatabase(const PriorityMap& map, int dbTx) {
    int priority = 1;
    for (const auto& entry : map) {
        const std::string& dn = entry.second.cellDn;
        rules::ObjectPtr object = rules::fetch(dn, dbTx);
        if (!object) {
            VESK_INFO("VeskCellPriority::%s could not find %s", __func__, dn.c_str());
            continue;
        }
        Attribute* held = object->getAttribute("priority");
        if (entry.second.administrativeState == 0) {
            if (held == nullptr || held->deleted) {
                continue;
            }
            VESK_INFO("VeskCellPriority::%s updating priority of %s to not used: %d", __func__,
                      dn.c_str(), kNotInUse);
            if (IDatabase::setAttribute(dn, 1, "priority", AttributeVariant(kNotInUse), true,
                                        IPCData::AVT_INT32, true, dbTx) == 0) {
                VESK_ERROR(
                    "VeskCellPriority::%s could not update attribute priority to not used(%d) for "
                    "%s",
                    __func__, kNotInUse, dn.c_str());
            }
            continue;
        }
        if (held == nullptr || held->deleted) {
            object->addAttribute(*new Attribute(false, "priority", AttributeVariant(priority), 0,
                                                true, IPCData::AVT_INT32, true, false));
        } else {
            held->SetValue(AttributeVariant(priority));
        }
        VESK_INFO("VeskCellPriority::%s writing priority of %s to %d", __func__, dn.c_str(),
                  priority);
        if (IDatabase::insert(object.get(), dbTx) == 0) {
            VESK_ERROR("VeskCellPriority::%s could not insert object %s", __func__, dn.c_str());
        }
        ++priority;
    }
}

void VeskCellPriority::printPriority(const PriorityMap& map) {
    for (const auto& entry : map) {
        const sCellLock& cell = entry.second;
        VESK_INFO("VeskCellPriority::%s p: %d, ra: %s, as: %s for %s", __func__, entry.first,
                  flagText(cell.resourcesAllocated), stateText(cell.administrativeState),
                  cell.cellDn.c_str());
    }
}

int VeskCellPriority::intOf(DBObject* object, const char* name, int start) {
    Attribute* held = object != nullptr ? object->getAttribute(name) : nullptr;
    const int* value = held != nullptr && !held->deleted ? boost::get<int>(&held->value) : nullptr;
    return value != nullptr ? *value : start;
}

bool VeskCellPriority::boolOf(DBObject* object, const char* name, bool start) {
    Attribute* held = object != nullptr ? object->getAttribute(name) : nullptr;
    const bool* value =
        held != nullptr && !held->deleted ? boost::get<bool>(&held->value) : nullptr;
    return value != nullptr ? *value : start;
}

}  // namespace TibVeskOI

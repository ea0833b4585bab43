// The frequency change of cells of other nodes, which runs at once in a database transaction of
// its own, and the clean-up of what a frequency change leaves unused, shared with the own-cell
// flow.
#include "frequency/FrequencyReads.h"
#include "frequency/VeskCMChangeFrequency.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {
namespace {

using frequency::lastClass;
using frequency::parentOf;
using frequency::readInt;
using frequency::readText;

const char* const kExternalFrequencyLimitText = "Maximum number of EUtranFrequency MOs in use";
const char* const kExternalRelationLimitText = "Maximum number of EUtranFreqRelation MOs in use";
const char* const kSameChannelText = "arfcnValueUtranDl values are same, no need to change";

}  // namespace

int VeskCMChangeFrequency::changeExternalLTECellFrequency(std::string dn, int earfcn,
                                                          const char** result) {
    VESK_TRACE(">> %s", __func__);
    _actionResultText = result;
    if (startTransaction() == 0) {
        return -1;
    }
    std::string current;
    getCurrentEUtranFrequency(dn, current);
    setExternalFrequencyRef(dn, "");
    deleteMos(dn, current);
    std::string newFrequency;
    if (createEUtranFrequency(earfcn, newFrequency) == 0) {
        VESK_INFO("VeskCMChangeFrequency::%s %s", __func__, kExternalFrequencyLimitText);
        if (result != nullptr) {
            *result = kExternalFrequencyLimitText;
        }
        rollback();
        return -10;
    }
    if (!relinkExternalNeighbours(dn, newFrequency)) {
        VESK_INFO("VeskCMChangeFrequency::%s %s", __func__, kExternalRelationLimitText);
        if (result != nullptr) {
            *result = kExternalRelationLimitText;
        }
        rollback();
        return -10;
    }
    setExternalFrequencyRef(dn, newFrequency);
    // A failed commit is logged by commit() and not told to the caller.
    commit();
    VESK_TRACE("<< %s", __func__);
    return 0;
}

bool VeskCMChangeFrequency::relinkExternalNeighbours(const std::string& dn,
                                                     const std::string& newFrequency) {
    for (const std::string& entry : getReservedBys(dn)) {
        VESK_TRACE("handling %s", entry.c_str());
        std::string owner;
        if (!getEutrancellFDD(entry, owner)) {
            continue;
        }
        std::string relation = parentOf(entry);
        std::string target;
        if (!checkEUtranFreqRelation(owner, newFrequency, target, _databaseTxHandle)) {
            if (checkCardinality(owner.c_str(), "EUtranFreqRelation") == 0) {
                return false;
            }
            createEutranFreqRelation(owner, relation, newFrequency, target);
        }
        copyEUtranCellRelations(dn, relation, target);
    }
    return true;
}

void VeskCMChangeFrequency::setExternalFrequencyRef(const std::string& dn,
                                                    const std::string& frequency) {
    std::unique_ptr<DBObject> cell(IDatabase::getObject(dn, 1, 0));
    if (cell == nullptr) {
        return;
    }
    cell->addAttribute(*new Attribute(false, "eutranFrequencyRef", AttributeVariant(frequency), 0,
                                      true, IPCData::AVT_REFERENCE, true, false));
    IDatabase::insert(cell.get(), _databaseTxHandle);
}

int VeskCMChangeFrequency::changeExternalUtranCellFDDFrequency(std::string dn, int channel,
                                                               const char** result) {
    VESK_TRACE(">> %s", __func__);
    _actionResultText = result;
    if (isFreqSameAsCurrent(dn, channel)) {
        VESK_INFO("VeskCMChangeFrequency::%s %s", __func__, kSameChannelText);
        if (result != nullptr) {
            *result = kSameChannelText;
        }
        return 0;
    }
    if (startTransaction() == 0) {
        return -1;
    }
    std::string newFrequency;
    int rc = createUtranFrequency(channel, newFrequency);
    if (rc != 0) {
        return refuseExternal(rc, "Maximum number of UtranFrequency MOs in use");
    }
    std::list<std::string> cells = getEUtranCellFDDs(dn);
    std::string created;
    if (cells.empty() && (rc = createExternalUtranCellFDD(newFrequency, dn, created)) != 0) {
        return refuseExternal(rc, nullptr);
    }
    for (const std::string& cell : cells) {
        std::string relation;
        if ((rc = createUtranFreqRelation(cell, channel, newFrequency, relation, dn)) != 0) {
            return refuseExternal(rc, "Maximum number of UtranFreqRelation MOs in use");
        }
        if ((rc = createExternalUtranCellFDD(newFrequency, dn, created)) != 0) {
            return refuseExternal(rc, nullptr);
        }
        if ((rc = createUtranCellRelation(cell, dn, relation, created)) != 0) {
            return refuseExternal(rc, "Maximum number of UtranCellRelation MOs in use");
        }
    }
    removeUnusedMOs(dn);
    if (commit() == 0) {
        rollback();
        return -7;
    }
    VESK_TRACE("<< %s", __func__);
    return 0;
}

int VeskCMChangeFrequency::refuseExternal(int code, const char* logText) {
    if (logText != nullptr) {
        VESK_INFO("VeskCMChangeFrequency::%s, %s", "changeExternalUtranCellFDDFrequency", logText);
    }
    rollback();
    return code;
}

bool VeskCMChangeFrequency::isFreqSameAsCurrent(std::string externalCell, int channel) const {
    int current = 0;
    readInt(parentOf(externalCell), "arfcnValueUtranDl", current, 0);
    VESK_TRACE("current arfcnValueUtranDl: %d, new arfcnValueUtranDl: %d", current, channel);
    return current == channel;
}

std::list<std::string> VeskCMChangeFrequency::getReservedBys(std::string dn) const {
    std::string text;
    readText(dn, "reservedBy", text, 0);
    return frequency::splitList(text);
}

void VeskCMChangeFrequency::deleteInTransaction(const std::string& dn) {
    VESK_INFO("VeskCMChangeFrequency::%s deleting %s", "deleteMos", dn.c_str());
    IDatabase::deleteObj(dn, 1, _databaseTxHandle);
}

void VeskCMChangeFrequency::deleteMos(std::string cell, std::string frequency) {
    if (frequency.empty()) {
        VESK_INFO("VeskCMChangeFrequency::%s not handling anything", __func__);
        return;
    }
    std::list<std::string> entries = getReservedBys(frequency);
    size_t remaining = entries.size();
    for (const std::string& entry : entries) {
        for (const std::string& relation : getAllEUtranCellRelations(cell, entry)) {
            deleteInTransaction(relation);
        }
        if (entry == cell) {
            --remaining;
            continue;
        }
        if (lastClass(entry) == "ExternalEUtranCellFDD") {
            VESK_INFO("VeskCMChangeFrequency::%s skipped %s", __func__, entry.c_str());
            continue;
        }
        if (!IDatabase::getMOClassWithParent(entry, "EUtranCellRelation", _databaseTxHandle)
                 .empty() ||
            keepsRelation(cell, entry)) {
            continue;
        }
        deleteInTransaction(entry);
        --remaining;
    }
    if (remaining == 0 && !_isLAA) {
        deleteInTransaction(frequency);
    }
}

bool VeskCMChangeFrequency::keepsRelation(const std::string& cell, const std::string& entry) const {
    std::string owner;
    if (!getEutrancellFDD(entry, owner)) {
        return false;
    }
    bool ownerChanges = cell == owner;
    if (!ownerChanges &&
        (lastClass(cell) == "ExternalEUtranCellFDD" || lastClass(cell) == "EUtranCellFDD")) {
        if (isPointingToOwnFrequency(owner, entry)) {
            VESK_INFO("VeskCMChangeFrequency::%s not deleting %s, pointing to %s own frequency",
                      "deleteMos", entry.c_str(), owner.c_str());
            return true;
        }
    }
    if (ownerChanges && isUsingSameFrequency(owner)) {
        VESK_INFO(
            "VeskCMChangeFrequency::%s not deleting %s, %s using same frequency than other "
            "cell",
            "deleteMos", entry.c_str(), owner.c_str());
        return true;
    }
    return false;
}

bool VeskCMChangeFrequency::isPointingToOwnFrequency(std::string cell, std::string relation) const {
    int channel = 0;
    std::string own;
    std::string ref;
    if (!readInt(cell, "earfcndl", channel, 0) || getEUtranFrequency(channel, own) != 0) {
        return false;
    }
    return readText(relation, "eutranFrequencyRef", ref, 0) && ref == own;
}

bool VeskCMChangeFrequency::isUsingSameFrequency(std::string cell) const {
    int channel = 0;
    if (!readInt(cell, "earfcndl", channel, 0)) {
        return false;
    }
    bool same = false;
    for (DBObject* other : IDatabase::getMOClass("EUtranCellFDD", 0)) {
        std::string dn = frequency::fullDn(*other);
        int otherChannel = 0;
        if (other->dn.find(':') == std::string::npos && dn != cell &&
            readInt(dn, "earfcndl", otherChannel, 0) && otherChannel == channel) {
            VESK_INFO("VeskCMChangeFrequency::%s, %s is using same frequency than %s (%d)",
                      __func__, dn.c_str(), cell.c_str(), channel);
            same = true;
        }
        delete other;
    }
    return same;
}

void VeskCMChangeFrequency::removeReservedBys() {
    for (DBObject* object : IDatabase::getMOClass("EUtranFrequency", _databaseTxHandle)) {
        std::string text;
        Toolbox::getAttrValueFromObj(object, "reservedBy", text);
        VESK_TRACE("reservedBy = %s", text.c_str());
        std::string kept;
        for (const std::string& entry : frequency::splitList(text)) {
            if (frequency::holdsHighChannel(entry)) {
                VESK_INFO("VeskCMChangeFrequency::%s remove %s", __func__, entry.c_str());
                continue;
            }
            VESK_TRACE("add %s", entry.c_str());
            kept += (kept.empty() ? "" : ";") + entry;
        }
        object->addAttribute(*new Attribute(false, "reservedBy", AttributeVariant(kept), 0, true,
                                            IPCData::AVT_REFERENCE_LIST, true, false));
        // Straight to the database: this write survives a later rollback.
        IDatabase::update(object, 0);
        delete object;
    }
}

void VeskCMChangeFrequency::removeReservedByRefMOs(std::string dn) {
    for (const std::string& entry : getReservedBys(dn)) {
        VESK_TRACE("Try to remove MO %s", entry.c_str());
        if (IDatabase::deleteObj(entry, 1, _databaseTxHandle) != 0) {
            VESK_TRACE("%s MO deleted.", entry.c_str());
        }
    }
}

void VeskCMChangeFrequency::removeUnusedMOs(std::string externalCell) {
    removeReservedByRefMOs(externalCell);
    VESK_TRACE("Try to remove MO %s", externalCell.c_str());
    if (IDatabase::deleteObj(externalCell, 1, _databaseTxHandle) != 0) {
        VESK_TRACE("%s MO deleted.", externalCell.c_str());
    }
    std::string frequency = parentOf(externalCell);
    if (IDatabase::getMOClassWithParent(frequency, "ExternalUtranCellFDD", _databaseTxHandle)
            .empty()) {
        removeReservedByRefMOs(frequency);
        VESK_TRACE("Try to remove MO %s", frequency.c_str());
        if (IDatabase::deleteObj(frequency, 1, _databaseTxHandle) != 0) {
            VESK_TRACE("%s MO deleted.", frequency.c_str());
        }
    }
    cleanUtranFreqRelations();
}

void VeskCMChangeFrequency::cleanUtranFreqRelations() {
    for (DBObject* relation : IDatabase::getMOClass("UtranFreqRelation", _databaseTxHandle)) {
        std::string dn = frequency::fullDn(*relation);
        delete relation;
        if (dn.find(':') != std::string::npos) {
            continue;
        }
        VESK_INFO("VeskCMChangeFrequency::%s wholeDn %s", __func__, dn.c_str());
        if (IDatabase::getMOClassWithParent(dn, "UtranCellRelation", _databaseTxHandle).empty()) {
            IDatabase::deleteObj(dn, 1, _databaseTxHandle);
            VESK_INFO("VeskCMChangeFrequency::%s Unused UtranFreqRelation %s deleted from database",
                      __func__, dn.c_str());
        }
    }
}

DBObject* VeskCMChangeFrequency::getCurrentUtranFreqRelation(std::string cell,
                                                             std::string externalCell) const {
    std::string frequency = parentOf(externalCell);
    for (const std::string& id :
         IDatabase::getMOClassWithParent(cell, "UtranFreqRelation", _databaseTxHandle)) {
        std::string dn = cell + ",UtranFreqRelation=" + id;
        std::string ref;
        if (readText(dn, "utranFrequencyRef", ref, 0) && ref == frequency) {
            VESK_TRACE("%s is using %s", dn.c_str(), frequency.c_str());
            return IDatabase::getObject(dn, 1, _databaseTxHandle);
        }
    }
    return nullptr;
}

}  // namespace TibVeskCM

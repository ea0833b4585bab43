// The relation rebuild of the frequency change: relations that pointed at the old frequency get
// a twin on the new one, and the cell relations below them are copied with their attributes and
// struct values. Sources are read from committed data, since the same transaction may already
// have deleted them; everything made goes into the database transaction in hand.
#include "frequency/FrequencyReads.h"
#include "frequency/VeskCMChangeFrequency.h"
#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"

namespace TibVeskCM {
namespace {

using frequency::fullDn;
using frequency::readText;

// The variant alternative each type code 1..32 stands for; -1 for none.
int alternativeOf(int type) {
    static const int kAlternatives[] = {AV_CHAR,   AV_SHORT, AV_INT,       AV_LONGLONG, AV_UCHAR,
                                        AV_USHORT, AV_UINT,  AV_ULONGLONG, AV_STRING,   AV_BOOL,
                                        AV_STRING, AV_INT,   -1,           AV_STRING,   -1,
                                        AV_DOUBLE, AV_FLOAT};
    if (type >= 1 && type <= 17) {
        return kAlternatives[type - 1];
    }
    return type >= 18 && type <= 32 ? AV_STRING : -1;
}

void setAttribute(DBObject& object, const std::string& name, AttributeVariant value,
                  IPCData::AttributeValueType type) {
    object.addAttribute(*new Attribute(false, name, value, 0, true, type, true, false));
}

// The first relation of class `relationClass` under `cell` (listed in `tx`) whose `refName`, read
// from committed data, is `frequency`: true with its dn in `relation`. `caller` names the
// function in the lines logged.
bool findRelationTo(const char* caller, const std::string& cell, const char* relationClass,
                    const char* refName, const std::string& frequency, int tx,
                    std::string& relation) {
    for (const std::string& id : IDatabase::getMOClassWithParent(cell, relationClass, tx)) {
        std::string dn = cell + "," + relationClass + "=" + id;
        std::string ref;
        readText(dn, refName, ref, 0);
        VESK_INFO("VeskCMChangeFrequency::%s %s referring to %s", caller, dn.c_str(), ref.c_str());
        if (ref == frequency) {
            VESK_INFO("VeskCMChangeFrequency::%s %s is using %s", caller, dn.c_str(),
                      frequency.c_str());
            relation = dn;
            return true;
        }
    }
    return false;
}

}  // namespace

std::string VeskCMChangeFrequency::getId(std::string parent, std::string className,
                                         std::string id) const {
    std::string candidate = parent + "," + className + "=" + id;
    for (size_t n = 1;; ++n) {
        std::unique_ptr<DBObject> found(IDatabase::getObject(candidate, 1, _databaseTxHandle));
        if (found == nullptr) {
            break;
        }
        candidate = parent + "," + className + "=" + std::string(n, '_') + id;
    }
    VESK_TRACE("%s is free, using it", candidate.c_str());
    return frequency::lastId(candidate);
}

bool VeskCMChangeFrequency::checkEUtranFreqRelation(std::string cell, std::string frequency,
                                                    std::string& relation, int tx) const {
    return findRelationTo(__func__, cell, "EUtranFreqRelation", "eutranFrequencyRef", frequency, tx,
                          relation);
}

bool VeskCMChangeFrequency::checkUtranFreqRelation(std::string cell, std::string frequency,
                                                   std::string& relation) const {
    return findRelationTo(__func__, cell, "UtranFreqRelation", "utranFrequencyRef", frequency,
                          _databaseTxHandle, relation);
}

void VeskCMChangeFrequency::createEutranFreqRelation(std::string cell, std::string sourceRelation,
                                                     std::string frequency, std::string& relation) {
    int channel = -1;
    std::unique_ptr<DBObject> target(IDatabase::getObject(frequency, 1, _databaseTxHandle));
    if (target == nullptr) {
        return;
    }
    frequency::readInt(frequency, "arfcnValueEUtranDl", channel, _databaseTxHandle);
    std::string id = getId(cell, "EUtranFreqRelation", "_" + std::to_string(channel));
    std::string key = "EUtranFreqRelation=" + id;
    DBObject object(key, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED, cell,
                    1);
    IDatabase::insert(&object, _databaseTxHandle);
    if (!sourceRelation.empty()) {
        std::unique_ptr<DBObject> source(IDatabase::getObject(sourceRelation, 1, 0));
        if (source == nullptr) {
            return;  // the bare relation stays in the transaction
        }
        relation = insertCopy(source.get(), cell, key, "eUtranFreqRelationId", id,
                              "eutranFrequencyRef", frequency);
        VESK_INFO("VeskCMChangeFrequency::%s copied %s with reference %s", __func__,
                  relation.c_str(), frequency.c_str());
        return;
    }
    relation = cell + "," + key;
    setAttribute(object, "eUtranFreqRelationId", AttributeVariant(id), IPCData::AVT_STRING);
    setAttribute(object, "eutranFrequencyRef", AttributeVariant(frequency), IPCData::AVT_REFERENCE);
    VeskModelRepository::instance()->createMOWithDefaultValues(relation.c_str(), &object,
                                                               _databaseTxHandle);
    setAttribute(object, "createdBy", AttributeVariant(2), IPCData::AVT_ENUM);
    setAttribute(object, "lastModification", AttributeVariant(6), IPCData::AVT_ENUM);
    setAttribute(object, "timeOfCreation", AttributeVariant(std::string()), IPCData::AVT_STRING);
    setAttribute(object, "timeOfLastModification", AttributeVariant(std::string()),
                 IPCData::AVT_STRING);
    IDatabase::insert(&object, _databaseTxHandle);
    VESK_INFO("VeskCMChangeFrequency::%s created %s with reference %s", __func__, relation.c_str(),
              frequency.c_str());
}

std::string VeskCMChangeFrequency::insertCopy(DBObject* source, const std::string& parent,
                                              const std::string& key, const std::string& idName,
                                              const std::string& id, const std::string& refName,
                                              const std::string& ref) {
    DBObject object(key, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                    parent, 1);
    IDatabase::insert(&object, _databaseTxHandle);
    copyDBObject(source, &object);
    setAttribute(object, idName, AttributeVariant(id), IPCData::AVT_STRING);
    if (!refName.empty()) {
        setAttribute(
            object, refName, AttributeVariant(ref),
            refName == "reservedBy" ? IPCData::AVT_REFERENCE_LIST : IPCData::AVT_REFERENCE);
    }
    IDatabase::insert(&object, _databaseTxHandle);
    return parent + "," + key;
}

int VeskCMChangeFrequency::handleEUtranFreqRelation(std::string cell, std::string currentFrequency,
                                                    std::string newFrequency) {
    for (const std::string& entry : getReservedBys(currentFrequency)) {
        VESK_INFO("VeskCMChangeFrequency::%s handling %s", __func__, entry.c_str());
        std::string owner;
        if (!getEutrancellFDD(entry, owner)) {
            continue;
        }
        std::string relation;
        if (!checkEUtranFreqRelation(owner, newFrequency, relation, _databaseTxHandle)) {
            if (checkCardinality(owner.c_str(), "EUtranFreqRelation") == 0) {
                return 0;
            }
            createEutranFreqRelation(owner, entry, newFrequency, relation);
        }
        copyEUtranCellRelations(cell, entry, relation);
    }
    return 1;
}

std::list<std::string> VeskCMChangeFrequency::getAllEUtranCellRelations(
    std::string cell, std::string relation) const {
    std::list<std::string> found;
    for (const std::string& id :
         IDatabase::getMOClassWithParent(relation, "EUtranCellRelation", 0)) {
        VESK_INFO("VeskCMChangeFrequency::%s checking %s/%s", __func__, relation.c_str(),
                  id.c_str());
        std::string dn = relation + ",EUtranCellRelation=" + id;
        std::string neighbour;
        if (readText(dn, "neighborCellRef", neighbour, 0) && neighbour == cell) {
            found.push_back(dn);
        }
    }
    return found;
}

void VeskCMChangeFrequency::copyEUtranCellRelations(std::string cell, std::string sourceRelation,
                                                    std::string targetRelation) {
    for (const std::string& dn : getAllEUtranCellRelations(cell, sourceRelation)) {
        std::unique_ptr<DBObject> source(IDatabase::getObject(dn, 1, 0));
        if (source == nullptr) {
            continue;
        }
        std::string id;
        readText(dn, "eUtranCellRelationId", id, 0);
        id = getId(targetRelation, "EUtranCellRelation", id);
        std::string created = insertCopy(source.get(), targetRelation, "EUtranCellRelation=" + id,
                                         "eUtranCellRelationId", id, "", "");
        VESK_INFO("VeskCMChangeFrequency::%s Created %s with reference %s", __func__,
                  created.c_str(), cell.c_str());
    }
}

void VeskCMChangeFrequency::copyDBObject(DBObject* source, DBObject* target) {
    std::string targetDn = fullDn(*target);
    for (const auto& entry : source->attributes) {
        if (Attribute* copy = copyAttribute(entry.first, entry.second, target->dn, targetDn)) {
            target->addAttribute(*copy);
        }
    }
    for (const auto& entry : source->alternateAttributes) {
        if (Attribute* copy = copyAttribute(entry.first, entry.second, target->dn, targetDn)) {
            target->addAlternateAttribute(*copy);
        }
    }
}

Attribute* VeskCMChangeFrequency::copyAttribute(std::string name, Attribute* source,
                                                std::string targetKey, std::string targetDn) {
    int type = source->type;
    bool fits = static_cast<int>(source->value.which()) == alternativeOf(type);
    if ((type != IPCData::AVT_STRUCT && type != IPCData::AVT_STRUCT_LIST) || !fits) {
        Attribute* copy = new Attribute(source->hidden, name, source->value, 0, source->valueSet,
                                        fits ? source->type : IPCData::AVT_UNKNOWN, true, false);
        copy->alternateSlot = source->alternateSlot;
        return copy;
    }
    std::list<std::string> elements;
    const std::string& text = boost::get<std::string>(source->value);
    if (!text.empty() && !Toolbox::readStringToList(text, ';', elements, true)) {
        return nullptr;
    }
    std::string joined;
    int n = 0;
    for (const std::string& element : elements) {
        ++n;
        std::string key = targetKey + ":" + name;
        if (type == IPCData::AVT_STRUCT_LIST) {
            key += "=" + std::to_string(n);
        }
        joined += (joined.empty() ? "" : ";") + targetDn + "," + key;
        std::unique_ptr<DBObject> part(IDatabase::getObject(element, 1, 0));
        if (part == nullptr) {
            continue;
        }
        DBObject copy(key, 1, false, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                      targetDn, 1);
        IDatabase::insert(&copy, _databaseTxHandle);
        copyDBObject(part.get(), &copy);
        IDatabase::insert(&copy, _databaseTxHandle);
        VESK_TRACE("structure object inserted to tx: %s", fullDn(copy).c_str());
    }
    return new Attribute(source->hidden, name, AttributeVariant(joined), 0, true, source->type,
                         true, false);
}

std::list<std::string> VeskCMChangeFrequency::getEUtranCellFDDs(std::string externalCell) const {
    std::list<std::string> cells;
    for (const std::string& entry : getReservedBys(externalCell)) {
        std::string owner;
        if (getEutrancellFDD(entry, owner)) {
            VESK_TRACE("adding %s to list", owner.c_str());
            cells.push_back(owner);
        }
    }
    return cells;
}

int VeskCMChangeFrequency::createUtranFreqRelation(std::string cell, int channel,
                                                   std::string frequency, std::string& relation,
                                                   std::string externalCell) {
    if (checkUtranFreqRelation(cell, frequency, relation)) {
        VESK_INFO("VeskCMChangeFrequency::%s, %s has reference to channel %d already", __func__,
                  cell.c_str(), channel);
        return 0;
    }
    if (checkCardinality(cell.c_str(), "UtranFreqRelation") == 0) {
        return -10;
    }
    std::unique_ptr<DBObject> source(getCurrentUtranFreqRelation(cell, externalCell));
    if (source == nullptr) {
        return 0;
    }
    std::string id = getId(cell, "UtranFreqRelation", std::to_string(channel));
    relation = insertCopy(source.get(), cell, "UtranFreqRelation=" + id, "utranFreqRelationId", id,
                          "utranFrequencyRef", frequency);
    VESK_INFO("VeskCMChangeFrequency::%s, Creating %s with reference %s", __func__,
              relation.c_str(), frequency.c_str());
    return 0;
}

int VeskCMChangeFrequency::createExternalUtranCellFDD(std::string parent, std::string source,
                                                      std::string& created) {
    // Nothing made yet for an earlier cell: no lookup of an empty dn (a warning).
    if (!created.empty() &&
        std::unique_ptr<DBObject>(IDatabase::getObject(created, 1, _databaseTxHandle)) != nullptr) {
        VESK_TRACE("MO %s already exists, do not create it.", created.c_str());
        return 0;
    }
    std::unique_ptr<DBObject> cell(IDatabase::getObject(source, 1, _databaseTxHandle));
    if (cell == nullptr) {
        return -1;
    }
    std::string id;
    readText(source, "externalUtranCellFDDId", id, _databaseTxHandle);
    id = getId(parent, "ExternalUtranCellFDD", id);
    created = insertCopy(cell.get(), parent, "ExternalUtranCellFDD=" + id, "externalUtranCellFDDId",
                         id, "reservedBy", "");
    return 0;
}

int VeskCMChangeFrequency::createUtranCellRelation(std::string cell, std::string oldExternal,
                                                   std::string targetRelation,
                                                   std::string newExternal) {
    for (const std::string& entry : getReservedBys(oldExternal)) {
        if (frequency::lastClass(entry) != "UtranCellRelation" ||
            entry.find(cell) == std::string::npos) {
            continue;
        }
        std::unique_ptr<DBObject> source(IDatabase::getObject(entry, 1, 0));
        if (source == nullptr) {
            return -1;
        }
        std::string id;
        readText(entry, "utranCellRelationId", id, 0);
        id = getId(targetRelation, "UtranCellRelation", id);
        std::string created =
            insertCopy(source.get(), targetRelation, "UtranCellRelation=" + id,
                       "utranCellRelationId", id, "externalUtranCellRef", newExternal);
        VESK_INFO("VeskCMChangeFrequency::%s, Creating %s with reference %s", __func__,
                  created.c_str(), newExternal.c_str());
        // Handle second, 0 third: this deletion is immediate, outside the transaction.
        IDatabase::deleteObj(entry, _databaseTxHandle, 0);
    }
    return 0;
}

int VeskCMChangeFrequency::createUtranFrequency(int channel, std::string& frequency) {
    for (DBObject* object : IDatabase::getMOClass("UtranFrequency", 0)) {
        int value = 0;
        std::string dn = fullDn(*object);
        if (frequency::readInt(dn, "arfcnValueUtranDl", value, 0) && value == channel) {
            frequency = dn;
        }
        delete object;
    }
    if (!frequency.empty()) {
        return 0;
    }
    std::string parent;
    for (DBObject* network : IDatabase::getMOClass("UtraNetwork", 0)) {
        parent = fullDn(*network);
        delete network;
    }
    if (checkCardinality(parent.c_str(), "UtranFrequency") == 0) {
        return -10;
    }
    std::string id = getId(parent, "UtranFrequency", std::to_string(channel));
    DBObject object("UtranFrequency=" + id, 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED, parent, 1);
    setAttribute(object, "utranFrequencyId", AttributeVariant(id), IPCData::AVT_STRING);
    setAttribute(object, "arfcnValueUtranDl", AttributeVariant(static_cast<unsigned>(channel)),
                 IPCData::AVT_UINT32);
    setAttribute(object, "userLabel", AttributeVariant(std::string()), IPCData::AVT_STRING);
    setAttribute(object, "reservedBy", AttributeVariant(std::string()),
                 IPCData::AVT_REFERENCE_LIST);
    frequency = fullDn(object);
    VESK_INFO("VeskCMChangeFrequency::%s, Creating %s with arfcnValue value %d", __func__,
              frequency.c_str(), channel);
    IDatabase::insert(&object, _databaseTxHandle);
    return 0;
}

}  // namespace TibVeskCM

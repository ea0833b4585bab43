// VeskLTEOI: band 46 normalisation at the commit of a transaction that created a frequency or a
// frequency relation. Every trace of a high 5 GHz channel number in the transaction becomes its
// low number: cells' reservedBy lists, relations' ids, keys, references and black lists, and
// frequencies' ids, keys, values and reservedBy lists. Nothing here can fail a commit; a missing
// attribute skips the step that needs it.
#include <list>

#include "platform/Logger.h"
#include "platform/VeskStrings.h"
#include "transaction/Band46Channels.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

using TibVeskCM::Band46Channel;

// The pieces of a ";"-joined list, in order; none for an empty text.
std::list<std::string> entriesOf(const std::string& text) {
    std::list<std::string> entries;
    Toolbox::readStringToList(text, ';', entries, true);
    return entries;
}

void append(std::string& joined, const std::string& entry) {
    joined += (joined.empty() ? "" : ";") + entry;
}

// The text of `attribute`; false when it is absent or holds no text.
bool textOf(Attribute* attribute, std::string& out) {
    return attribute != nullptr && !attribute->deleted &&
           Toolbox::getValue<std::string>(attribute->value, out);
}

std::string relationKey(int low) {
    return "EUtranFreqRelation=_" + std::to_string(low);
}

}  // namespace

int VeskLTEOI::updateArfcn(int arfcn) {
    const Band46Channel* channel = TibVeskCM::band46ByHigh(arfcn);
    return channel != nullptr ? channel->low : arfcn;
}

std::string VeskLTEOI::updateReservedBy(std::string reservedBy) {
    VESK_TRACE("Old reservedBy: %s", reservedBy.c_str());
    std::string updated = reservedBy;
    const Band46Channel* channel = TibVeskCM::band46HighIn(reservedBy);
    if (channel != nullptr) {
        // Whatever stood behind the number goes with it.
        updated = reservedBy.substr(0, reservedBy.rfind(std::to_string(channel->high))) +
                  std::to_string(channel->low);
    }
    VESK_TRACE("New reservedBy: %s", updated.c_str());
    return updated;
}

int VeskLTEOI::band46Enter(const char* rule, int aTxHandle) {
    VESK_INFO("VeskLTEOI::%s enter (aTxHandle: %d)", rule, aTxHandle);
    const int dbTx =
        VeskOI::getVeskOI()->getVeskDatabaseTransactionId(static_cast<unsigned long>(aTxHandle));
    VESK_INFO("VeskLTEOI::%s txHandle: %d", rule, dbTx);
    return dbTx;
}

void VeskLTEOI::band46EutranCellUpdate(int aTxHandle) {
    const int dbTx = band46Enter(__func__, aTxHandle);
    // Entries that name relations by their old ids are dropped: the relations get new ones.
    for (const char* cellClass : {"EUtranCellFDD", "EUtranCellTDD"}) {
        for (const rules::ObjectPtr& cell : rules::MoList(cellClass, dbTx)) {
            Attribute* reservedBy = cell->getAttribute(VeskConst::reservedBy);
            std::string text;
            if (!textOf(reservedBy, text)) {
                continue;
            }
            std::string kept;
            bool dropped = false;
            for (const std::string& entry : entriesOf(text)) {
                const bool old = TibVeskCM::band46HighIn(entry) != nullptr;
                VESK_INFO("VeskLTEOI::%s %s %s", __func__, old ? "remove" : "add", entry.c_str());
                dropped = dropped || old;
                if (!old) {
                    append(kept, entry);
                }
            }
            if (dropped) {
                reservedBy->SetValue(AttributeVariant(kept));
                reservedBy->type = IPCData::AVT_REFERENCE_LIST;
                IDatabase::update(cell.get(), dbTx);
            }
        }
    }
}

void VeskLTEOI::band46FreqRelationUpdate(int aTxHandle) {
    const int dbTx = band46Enter(__func__, aTxHandle);
    for (const rules::ObjectPtr& relation : rules::MoList("EUtranFreqRelation", dbTx)) {
        const std::string id = rules::readText(relation.get(), "eUtranFreqRelationId");
        VESK_INFO("VeskLTEOI::%s Read eUtranFreqRelationId from database: %s", __func__,
                  id.c_str());
        // Only an exact old id ("_" and a high number) counts.
        const Band46Channel* channel =
            id.size() > 1 && id[0] == '_' ? TibVeskCM::band46ByHighText(id.substr(1)) : nullptr;
        if (channel != nullptr) {
            renameFreqRelation(*relation, channel->low, aTxHandle, dbTx, __func__);
        }
    }
}

void VeskLTEOI::renameFreqRelation(DBObject& relation, int low, int aTxHandle, int dbTx,
                                   const char* rule) {
    VESK_INFO("VeskLTEOI::%s Update database (aTxHandle: %d)", rule, aTxHandle);
    const std::string oldDn = rules::dnOf(relation), newKey = relationKey(low);
    Attribute* reference = relation.getAttribute("eutranFrequencyRef");
    std::string target;
    if (textOf(reference, target)) {
        const std::string::size_type equals = target.rfind('=');
        const Band46Channel* channel = equals == std::string::npos
                                           ? nullptr
                                           : TibVeskCM::band46ByHighText(target.substr(equals + 1));
        if (channel != nullptr) {
            target = target.substr(0, equals + 1) + std::to_string(channel->low);
            VESK_TRACE("eutranFrequencyRef = %s", target.c_str());
            reference->SetValue(AttributeVariant(target));
        }
    }
    relation.getAttribute("eUtranFreqRelationId")
        ->SetValue(AttributeVariant("_" + std::to_string(low)));
    relation.setDn(newKey);
    // The black list's struct objects go with the old relation: fetched first, then inserted
    // below the new one under their new keys.
    std::list<std::pair<std::string, rules::ObjectPtr>> entries;
    Attribute* blackList = relation.getAttribute("blackListEntry");
    std::string listText;
    if (textOf(blackList, listText)) {
        VESK_INFO("VeskLTEOI::%s blacklistdnlist %s", rule, listText.c_str());
        std::string newList;
        for (const std::string& entry : entriesOf(listText)) {
            VESK_INFO("VeskLTEOI::%s blacklistdn %s", rule, entry.c_str());
            const std::string::size_type colon = entry.rfind(':');
            const std::string newEntry =
                newKey + (colon == std::string::npos ? "" : entry.substr(colon));
            VESK_INFO("VeskLTEOI::%s set newblacklistdn %s", rule, newEntry.c_str());
            entries.emplace_back(newEntry, rules::fetch(entry, dbTx));
            append(newList, newEntry);
        }
        blackList->SetValue(AttributeVariant(newList));
    }
    IDatabase::deleteObj(oldDn, 1, dbTx);
    IDatabase::insert(&relation, dbTx);
    for (const auto& [newEntry, object] : entries) {
        if (!object) {
            continue;
        }
        VESK_INFO("VeskLTEOI::%s insert new black list", rule);
        object->setDn(newEntry);
        object->parentDn = relation.parentDn + "," + newKey;
        VESK_INFO("VeskLTEOI::%s parentdn %s", rule, object->parentDn.c_str());
        IDatabase::insert(object.get(), dbTx);
    }
}

void VeskLTEOI::band46FrequencyUpdate(int aTxHandle) {
    const int dbTx = band46Enter(__func__, aTxHandle);
    for (const rules::ObjectPtr& frequency : rules::MoList("EUtranFrequency", dbTx)) {
        const std::string id = rules::readText(frequency.get(), "eUtranFrequencyId");
        VESK_INFO("VeskLTEOI::%s Read eUtranFrequencyId from database: %s", __func__, id.c_str());
        const std::string oldDn = rules::dnOf(*frequency);
        const Band46Channel* channel = TibVeskCM::band46ByHighText(id);
        if (channel != nullptr) {
            const std::string low = std::to_string(channel->low);
            frequency->getAttribute("eUtranFrequencyId")->SetValue(AttributeVariant(low));
            frequency->setDn("EUtranFrequency=" + low);
            Attribute* arfcn = frequency->getAttribute("arfcnValueEUtranDl");
            int value = 0;
            if (arfcn != nullptr && !arfcn->deleted &&
                Toolbox::getValue<int>(arfcn->value, value)) {
                arfcn->SetValue(AttributeVariant(updateArfcn(value)));
            }
        }
        // A frequency that already has a low id may still list relations by their old ids.
        const bool reservedByChanged = correctReservedBy(*frequency, __func__);
        if (channel != nullptr) {
            VESK_INFO("VeskLTEOI::%s Insert new EUtranFrequency to database (aTxHandle: %d)",
                      __func__, aTxHandle);
            IDatabase::deleteObj(oldDn, 1, dbTx);
            IDatabase::insert(frequency.get(), dbTx);
        } else if (reservedByChanged) {
            VESK_INFO("VeskLTEOI::%s Update EUtranFrequency to database (aTxHandle: %d)", __func__,
                      aTxHandle);
            IDatabase::update(frequency.get(), dbTx);
        }
    }
}

bool VeskLTEOI::correctReservedBy(DBObject& frequency, const char* rule) {
    Attribute* reservedBy = frequency.getAttribute(VeskConst::reservedBy);
    std::string text;
    if (!textOf(reservedBy, text)) {
        return false;
    }
    std::string joined;
    bool changed = false;
    for (const std::string& entry : entriesOf(text)) {
        if (TibVeskCM::band46HighIn(entry) != nullptr) {
            const std::string updated = updateReservedBy(entry);
            VESK_INFO("VeskLTEOI::%s change reservedBy %s", rule, updated.c_str());
            append(joined, updated);
            changed = true;
        } else {
            VESK_INFO("VeskLTEOI::%s add %s", rule, entry.c_str());
            append(joined, entry);
        }
    }
    reservedBy->SetValue(AttributeVariant(joined));
    return changed;
}

}  // namespace TibVeskOI

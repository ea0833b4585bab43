// The commit repair of an EventJob: a job group it may have, and only references and filters
// that lead somewhere.
#include <list>
#include <set>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "validation/VeskOI.h"
#include "validation/VeskPMOI.h"
#include "validation/VeskRuleValues.h"

namespace TibVeskOI {
namespace {

// The present attribute `name` of `object`, or null.
Attribute* present(DBObject* object, const char* name) {
    Attribute* held = object->getAttribute(name);
    return held != nullptr && !held->deleted ? held : nullptr;
}

// The text of an attribute, "" when it is absent or holds no text.
std::string objectTextOf(DBObject* object, const char* name) {
    Attribute* held = present(object, name);
    const std::string* text = held != nullptr ? boost::get<std::string>(&held->value) : nullptr;
    return text != nullptr ? *text : "";
}

// Replaces the text of the attribute `name`, a list joined with ";", with `kept`, unless it
// holds that already. The list is joined as every stored list is, with no ";" behind the last.
void keepOnly(DBObject* object, const char* name, const std::string& old, const std::string& kept) {
    if (kept != old) {
        present(object, name)->SetValue(AttributeVariant(kept));
    }
}

void appendDn(std::string& list, const std::string& dn) {
    list += (list.empty() ? "" : ";") + dn;
}

}  // namespace

OrlReturnT VeskPMOI::validatePMCommit(std::string fdn, int databaseTxHandle) {
    if (fdn.find("EventJob") == std::string::npos) {
        return OrlOk;
    }
    rules::ObjectPtr job = rules::fetch(fdn, databaseTxHandle);
    if (!job) {
        return OrlFailure;
    }
    OrlReturnT rc = checkJobGroup(job.get());
    if (rc == OrlOk) {
        rc = checkUnsupportedRefs(job.get(), "eventTypeRef");
    }
    if (rc == OrlOk) {
        rc = checkUnsupportedRefs(job.get(), "eventGroupRef");
    }
    if (rc == OrlOk) {
        rc = checkEventFilterTypes(job.get(), databaseTxHandle);
    }
    if (rc != OrlOk) {
        return rc;
    }
    if (IDatabase::insert(job.get(), databaseTxHandle) == 0) {
        VESK_ERROR("VeskPMOI::%s (aDbTxHandle: %d) MO '%s' updating fails.", __func__,
                   databaseTxHandle, fdn.c_str());
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::checkJobGroup(DBObject* job) {
    if (present(job, "jobGroup") == nullptr) {
        job->addAttribute(*new Attribute(false, "jobGroup", AttributeVariant(std::string("JG1")), 0,
                                         true, IPCData::AVT_STRING, true, false));
        return OrlOk;
    }
    const std::string group = objectTextOf(job, "jobGroup");
    if (group == "JG3") {
        std::string name = "eventJobId";
        std::string id;
        if (!Toolbox::getStringFromDBObject(job, name, id)) {
            VESK_ERROR("VeskPMOI::%s Couldn't get attribute 'eventJobId'", __func__);
            return OrlFailure;
        }
        return id == "10005" ? OrlOk : refuse(__func__, "JobGroup 'JG3' is reserved for CCTR.");
    }
    if (group == "JG1" || group == "JG2") {
        return OrlOk;
    }
    VeskOI::getVeskOI()->addMessage(
        "Unsupported jobGroup set. Only JG1, JG2 and JG3 are supported groups.");
    return OrlValidationFailed;
}

OrlReturnT VeskPMOI::checkUnsupportedRefs(DBObject* job, const char* attrName) {
    const std::string text = objectTextOf(job, attrName);
    if (text.empty()) {
        return OrlOk;
    }
    std::list<std::string> dns;
    Toolbox::readStringToList(text, ';', dns, true);
    std::string kept;
    for (const std::string& dn : dns) {
        if (IDatabase::isPresentInDB(dn, 1)) {
            appendDn(kept, dn);
        }
    }
    // References to MOs that are gone are dropped, never refused.
    keepOnly(job, attrName, text, kept);
    return OrlOk;
}

OrlReturnT VeskPMOI::checkEventFilterTypes(DBObject* job, int handle) {
    const std::string text = objectTextOf(job, "eventFilter");
    if (text.empty()) {
        return OrlOk;
    }
    std::list<std::string> filters;
    Toolbox::readStringToList(text, ';', filters, true);
    std::set<std::string> seen;
    std::list<std::string> unsupported;
    std::string kept;
    for (const std::string& dn : filters) {
        rules::ObjectPtr filter = rules::fetch(dn, handle);
        const std::string name = filter ? objectTextOf(filter.get(), "filterName") : "";
        // Of two filters of one name the first stays; a name with no filter type goes.
        if (seen.count(name) != 0 ||
            !IDatabase::isPresentInDB(job->parentDn + ",EventFilterType=" + name, 1)) {
            unsupported.push_back(dn);
            continue;
        }
        seen.insert(name);
        appendDn(kept, dn);
    }
    keepOnly(job, "eventFilter", text, kept);
    for (const std::string& dn : unsupported) {
        if (IDatabase::deleteObj(dn, 1, handle) == 0) {
            VESK_TRACE("%s: could not delete %s", __func__, dn.c_str());
        }
    }
    return OrlOk;
}

OrlReturnT VeskPMOI::validateEventFilters(const OrlMoAttributeValueContainer_3* value) {
    if (value == nullptr || value->type != OrlOamSpiMoAttributeType_3_STRUCT ||
        value->values == nullptr) {
        return OrlOk;
    }
    OrlReturnT rc = OrlOk;
    for (uint32_t i = 0; i < value->nrOfValues; ++i) {
        for (const OrlMoAttributeValueStructMember_3* member = value->values[i].structMember;
             member != nullptr; member = member->nextMember) {
            if (member->memberName == nullptr || std::string(member->memberName) != "filterName") {
                continue;
            }
            const char* name = rules::firstText(member->memberValue);
            rc = IDatabase::isPresentInDB(name != nullptr ? name : "", 1) ? OrlOk
                                                                          : OrlValidationFailed;
        }
    }
    return rc;
}

}  // namespace TibVeskOI

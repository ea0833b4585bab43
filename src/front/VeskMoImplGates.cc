// The change gates of VeskMoImpl: the station's auto-integration phase, the session's protocol
// and user, the latch that opens every gate once the station is integrated, and the duplicate
// "qci" checks of QciProfileOperatorDefined.
#include <cstdlib>
#include <list>

#include "front/VeskMoImpl.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "validation/VeskOI.h"

namespace TibVeskCM {

const char* const AIM_ICF_USER = "icfa";

namespace {

const int32_t kGateIntegratedPhase = 4;
const int32_t kProtocolUnreadable = -1;
const int32_t kGateProtocolUnknown = 0;
const int32_t kGateProtocolNetconf = 1;
const int kDefaultAttempts = 200;
const char* const kQciClass = "QciProfileOperatorDefined";

// Set at the first sight of an integrated phase; never cleared while the library is loaded.
// Read and written under the front's mutex.
bool _databaseChangeLatch = false;
int32_t _lastPhase = -2;

// "qci" of the object; false when it has none.
bool readQci(DBObject* object, int& qci) {
    std::string name = "qci";
    return Toolbox::getIntFromDBObject(object, name, qci);
}

}  // namespace

int32_t VeskMoImpl::getAimPhase() {
    int phase = -2;
    DBObject* oam = IDatabase::getObject("OAM", 1, 0);
    if (oam != nullptr) {
        std::string name = "AI_phase";
        if (!Toolbox::getIntFromDBObject(oam, name, phase)) {
            phase = -2;
        }
        delete oam;
    }
    VESK_TRACE("%s: AI phase %d", __func__, phase);
    return phase;
}

std::string VeskMoImpl::getTibUserName() {
    uint64_t session = 0;
    if (_sessionIf == nullptr || _sessionIf->getBoundSession(&session) != OrlOk) {
        return std::string();
    }
    const char* user = nullptr;
    if (_sessionIf->getVariable(session, "TibSessionVariableUsername_1", &user) != OrlOk ||
        user == nullptr) {
        return std::string();
    }
    return user;
}

bool VeskMoImpl::IsDatabaseChangeAllowed(int& phase, const char* attrName) {
    if (_databaseChangeLatch) {
        phase = -1;
        return true;
    }
    _lastPhase = getAimPhase();
    phase = _lastPhase;
    if (phase >= kGateIntegratedPhase) {
        _databaseChangeLatch = true;
        return true;
    }
    VESK_INFO(
        "VeskMoImpl::IsDatabaseChangeAllowed()-> AI phase is %d, AI_completed not yet reached, "
        "checking MOM change exception cases.",
        phase);
    const int32_t protocol = getTibCommunicationProtocol();
    const std::string user = getTibUserName();
    const bool configLevel = attrName != nullptr && std::string(attrName) == "rbsConfigLevel";
    if (protocol == kProtocolUnreadable) {
        VESK_WARNING("VeskMoImpl::IsDatabaseChangeAllowed()-> Tib protocolType is unknown");
        return configLevel;
    }
    if (!user.empty() && protocol == kGateProtocolNetconf && user == AIM_ICF_USER) {
        VESK_INFO("VeskMoImpl::IsDatabaseChangeAllowed()-> AIM icf parsing ongoing");
        return true;
    }
    if (configLevel || protocol == kGateProtocolUnknown) {
        return true;
    }
    VESK_TRACE("%s: MOM modification is not allowed yet", __func__);
    return false;
}

std::string VeskMoImpl::classFromDn(const std::string& dn) {
    size_t comma = dn.rfind(',');
    std::string rdn = comma == std::string::npos ? dn : dn.substr(comma + 1);
    return rdn.substr(0, rdn.rfind('='));
}

bool VeskMoImpl::checkSecMo(const std::string& dn) {
    return dn.find("CertM=1") != std::string::npos;
}

std::string VeskMoImpl::GetEnv(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? value : std::string();
}

int VeskMoImpl::getOINumOfAttemptEnv() {
    const std::string text = GetEnv("DOLM_NUM_OI_SETMOATTR_ATTEMPTS");
    int attempts = kDefaultAttempts;
    if (text.empty() || !Toolbox::convertStringToInt(text, attempts, false)) {
        attempts = kDefaultAttempts;
    }
    return attempts;
}

OrlReturnT VeskMoImpl::validateQciProfileOperatorDefinedQci(
    const std::string& dn, const std::string& attrName,
    const OrlMoAttributeValueContainer_3* value) {
    if (classFromDn(dn) != kQciClass || attrName != "qci" || value == nullptr ||
        value->nrOfValues == 0) {
        return OrlOk;
    }
    const uint32_t qci = value->values[0].u32;
    OrlReturnT rc = OrlOk;
    std::list<DBObject*> objects = IDatabase::getMOClass(kQciClass, 0);
    for (DBObject* object : objects) {
        int existing = -1;
        if (readQci(object, existing) && static_cast<uint32_t>(existing) == qci) {
            VESK_INFO("VeskLTEOI::%s Duplicate qci:%d found for QciProfileOperatorDefined: qci: %d",
                      __func__, static_cast<int>(qci), existing);
            rc = OrlValidationFailed;
        }
        delete object;
    }
    return rc;
}

OrlReturnT VeskMoImpl::validateQciProfileOperatorDefinedQciStartup(
    OrlTxHandleT txHandle, const std::string& /*className*/,
    OrlMoNamedAttributeValueContainer_3** attributes) {
    const int handle = TibVeskOI::VeskOI::getVeskOI()->getVeskDatabaseTransactionId(txHandle);
    std::list<DBObject*> objects = IDatabase::getMOClass(kQciClass, handle);
    OrlReturnT rc = OrlOk;
    for (size_t i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        const OrlMoNamedAttributeValueContainer_3& named = *attributes[i];
        if (named.attributeName == nullptr || std::string(named.attributeName) != "qci") {
            continue;
        }
        const OrlMoAttributeValueContainer_3& value = named.attributeValue;
        const uint32_t qci = value.nrOfValues > 0 ? value.values[0].u32 : 0;
        // The last object of the list is the one just created; it is not compared.
        size_t left = objects.size() > 1 ? objects.size() - 1 : 0;
        for (auto it = objects.begin(); left > 0; ++it, --left) {
            int existing = -1;
            if (readQci(*it, existing) && static_cast<uint32_t>(existing) == qci) {
                VESK_TRACE(
                    "VeskLTEOI::%s Duplicate ODQ found at startup for qci:%d matching with "
                    "qci: %d",
                    __func__, static_cast<int>(qci), existing);
                rc = OrlValidationFailed;
            }
        }
        break;
    }
    for (DBObject* object : objects) {
        delete object;
    }
    return rc;
}

}  // namespace TibVeskCM

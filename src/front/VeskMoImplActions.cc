// The action dispatch of VeskMoImpl: the AI phase gate, then a series of rows over the dn and the
// action name. The rows are independent tests, not a table: a request may match several, and a
// later row's return code replaces an earlier one's (the WiFi module's rows overwrite the
// refusal that every dn other than the unit's gets first).
#include <cstring>

#include "backup/VeskBrM.h"
#include "frequency/VeskCMChangeFrequency.h"
#include "front/VeskMoImpl.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/ISec.h"
#include "platform/ITransport.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/VeskMessages.h"
#include "plugin/VeskCMComponent.h"
#include "plugin/VeskOrlHelper.h"
#include "software/VeskSwM.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {
namespace {

const int32_t kIntegratedPhase = 4;
const int kResetComponentId = 9;
const char* const kRbsUnitDn = "ManagedElement=1,Equipment=1,RbsUnit=1";
const char* const kWifiModuleDn = "ManagedElement=1,Equipment=1,RbsUnit=1,WifiModule=1";
const char* const kSwMDn = "ManagedElement=1,SystemFunctions=1,SwM=1";
const char* const kUpgradePackageDn = "ManagedElement=1,SystemFunctions=1,SwM=1,UpgradePackage=1";
const char* const kBackupManagerDn = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1";
const char* const kRollbackDn = "ManagedElement=1,SystemFunctions=1,BrM=1,BrmRollbackAtRestore=1";
const char* const kBackupDnPrefix =
    "ManagedElement=1,SystemFunctions=1,BrM=1,BrmBackupManager=1,BrmBackup=";
const char* const kMaxRelations = "maxNoOfCellRelations";

// Puts one value of `type` into the request's result. A container an earlier row of the same
// request put there is freed first; the caller's own container is never touched.
void fillResult(OrlMoAttributeValueResult_3* result, bool& filled, OrlOamSpiMoAttributeType_3 type,
                OrlMoAttributeValue_3 value) {
    if (result == nullptr) {
        return;
    }
    if (filled) {
        VeskOrlHelper::releaseAttrResultCB(result->container);
    }
    VeskOrlHelper::initAttrResult(type, 1, *result);
    result->container->values[0] = value;
    filled = true;
}

OrlMoAttributeValue_3 boolValue(bool value) {
    OrlMoAttributeValue_3 slot{};
    slot.theBool = value;
    return slot;
}

OrlMoAttributeValue_3 int32Value(int32_t value) {
    OrlMoAttributeValue_3 slot{};
    slot.i32 = value;
    return slot;
}

// The parameter at `index`, or null when the list ends before it.
const OrlMoNamedAttributeValueContainer_3* parameterAt(
    OrlMoNamedAttributeValueContainer_3** parameters, int index) {
    for (int i = 0; parameters != nullptr && parameters[i] != nullptr; ++i) {
        if (i == index) {
            return parameters[i];
        }
    }
    return nullptr;
}

// The first slot of the first parameter as INT32, and that parameter's name; false, with an
// error line, when there is none.
bool firstInt32(OrlMoNamedAttributeValueContainer_3** parameters, int32_t* value,
                const char** name = nullptr) {
    const OrlMoNamedAttributeValueContainer_3* first = parameterAt(parameters, 0);
    if (first == nullptr || first->attributeValue.values == nullptr ||
        first->attributeValue.nrOfValues == 0) {
        VESK_ERROR("Mandatory parameter missing");
        return false;
    }
    *value = first->attributeValue.values[0].i32;
    if (name != nullptr) {
        *name = first->attributeName != nullptr ? first->attributeName : "";
    }
    return true;
}

// The first slot of `parameter` as text when it is named `name`; empty otherwise.
std::string namedText(const OrlMoNamedAttributeValueContainer_3* parameter, const char* name) {
    const OrlMoAttributeValueContainer_3& value = parameter->attributeValue;
    if (parameter->attributeName == nullptr || std::strcmp(parameter->attributeName, name) != 0 ||
        value.type != OrlOamSpiMoAttributeType_3_STRING || value.nrOfValues == 0 ||
        value.values[0].theString == nullptr) {
        return std::string();
    }
    return value.values[0].theString;
}

bool hasValues(const OrlMoNamedAttributeValueContainer_3* parameter) {
    return parameter != nullptr && parameter->attributeValue.values != nullptr;
}

// Sends VESK_ResetRBS with kind 1 to the reset component; non-zero when it went out.
int sendReset(int32_t cause) {
    VESK::Messages::VESK_ResetRBS reset;
    reset.resetCause = cause;
    reset.resetKind = 1;
    return VESK::Framework::Messaging::sendVeskMessage(kResetComponentId, reset);
}

}  // namespace

OrlReturnT VeskMoImpl::action(OrlTxHandleT txHandle, const char* dn, const char* name,
                              OrlMoNamedAttributeValueContainer_3** parameters,
                              OrlMoAttributeValueResult_3* result) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    int32_t phase = getAimPhase();
    VESK_TRACE(">> %s", __func__);
    VESK_TRACE("%s: dn %s, name %s, AI phase %d", __func__, dn, name, phase);
    ActionRequest request{txHandle, dn, name, parameters, result, findTransaction(txHandle), false};
    OrlReturnT rc = OrlTryAgain;
    if (phase < kIntegratedPhase && request.name != "resetToFactory") {
        VESK_ERROR("VeskMoImpl::action(): Cannot execute action, AI_phase is %d ", phase);
        fillResult(result, request.filled, OrlOamSpiMoAttributeType_3_BOOL, boolValue(false));
    } else {
        rc = actionRbsUnit(request);
        actionSwM(request, rc);
        actionUpgradePackage(request, rc);
        actionSecM(request, rc);
        actionBrM(request, rc);
        actionChangeFrequency(request, rc);
        actionSetMaxNoOfCellRelations(request, rc);
        actionWifiModule(request, rc);
    }
    VESK_TRACE("%s: retval: %d", __func__, rc);
    VESK_TRACE("<< %s", __func__);
    return rc;
}

OrlReturnT VeskMoImpl::actionRbsUnit(ActionRequest& request) {
    if (request.dn != kRbsUnitDn) {
        return OrlFailure;
    }
    if (request.name == "resetToFactory") {
        if (sendReset(3) != 0) {
            VESK_INFO("reset to factory settings, message sent to VESK reset component");
            return OrlOk;
        }
        VESK_ERROR("reset to factory settings, message to VESK reset component SENDING FAILED");
    } else if (request.name == "restart") {
        if (sendReset(4) != 0) {
            VESK_INFO("reset message sent to VESK reset component");
            return OrlOk;
        }
        VESK_ERROR("reset message to VESK reset component SENDING FAILED");
    }
    return OrlFailure;
}

void VeskMoImpl::actionSwM(ActionRequest& request, OrlReturnT& rc) {
    if (request.dn != kSwMDn) {
        return;
    }
    if (request.name == "createUpgradePackage") {
        rc = createUpgradePackage(request);
    } else if (request.name == "removeUpgradePackage") {
        bool ok = false;
        rc = swm != nullptr ? swm->sendUpgradePackageMessageAndWait(ok, request.name) : OrlFailure;
        fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_BOOL, boolValue(ok));
    } else {
        VESK_ERROR("Action is not supported");
        addOperatorMessage("Action is not supported");
    }
}

OrlReturnT VeskMoImpl::createUpgradePackage(ActionRequest& request) {
    VESK_INFO("SwM: createUpgradePackage action triggered!");
    const OrlMoNamedAttributeValueContainer_3* first = parameterAt(request.parameters, 0);
    const OrlMoNamedAttributeValueContainer_3* second = parameterAt(request.parameters, 1);
    if (!hasValues(first) || !hasValues(second)) {
        VESK_ERROR("Mandatory parameter missing");
        fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_INT32,
                   int32Value(-1));
        return OrlOk;
    }
    // The parameters are taken by position; a wrong name leaves the text empty.
    std::string uri = namedText(first, "uri");
    std::string password = namedText(second, "password");
    bool ok = false;
    unsigned short id = 0;
    OrlReturnT rc = swm != nullptr ? swm->createUpgradePackage(ok, uri, password, request.name, id)
                                   : OrlFailure;
    OrlMoAttributeValue_3 slot{};
    slot.u16 = id;
    fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_UINT16, slot);
    return rc;
}

void VeskMoImpl::actionUpgradePackage(ActionRequest& request, OrlReturnT& rc) {
    if (request.dn != kUpgradePackageDn) {
        return;
    }
    bool ok = false;
    rc = swm != nullptr ? swm->sendUpgradePackageMessageAndWait(ok, request.name) : OrlFailure;
    fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_BOOL, boolValue(ok));
}

void VeskMoImpl::actionSecM(ActionRequest& request, OrlReturnT& rc) {
    if (!checkSecMo(request.dn)) {
        return;
    }
    VESK_INFO("SecM action: action start, dn %s", request.dn.c_str());
    DBObject* object = new DBObject(request.dn, 1, true, false, IPCData::OPSTATE_ENABLED,
                                    IPCData::ADMSTATE_UNLOCKED);
    addSecMParameters(request, object);
    bool routed = ISec::executeAction(request.name, object) == 1;
    if (routed) {
        VESK_INFO("Action is routed to SEC OK");
        rc = OrlOk;
    } else {
        VESK_ERROR("Action routing to SEC failed");
    }
    fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_BOOL, boolValue(routed));
    delete object;
}

void VeskMoImpl::addSecMParameters(ActionRequest& request, DBObject* object) {
    if (request.transaction == nullptr) {
        VESK_ERROR("VeskMoImpl::%s - TransactionHandle %lu was not found", __func__,
                   request.txHandle);
        return;
    }
    for (int i = 0; request.parameters != nullptr && request.parameters[i] != nullptr; ++i) {
        const OrlMoNamedAttributeValueContainer_3& parameter = *request.parameters[i];
        const char* name = parameter.attributeName != nullptr ? parameter.attributeName : "";
        Attribute* attribute = request.transaction->updateNewAttribute(
            request.dn, name, parameter.attributeValue, false);
        if (attribute == nullptr) {
            VESK_INFO("SecM action: cannot fill %d. attribute ", i + 1);
            continue;
        }
        VESK_INFO("SecM action: %d. attribute %s and type %d", i + 1, name,
                  parameter.attributeValue.type);
        object->addAttribute(*attribute);
    }
}

void VeskMoImpl::actionBrM(ActionRequest& request, OrlReturnT& rc) {
    if (request.dn != kBackupManagerDn && request.dn != kRollbackDn &&
        request.dn.compare(0, std::strlen(kBackupDnPrefix), kBackupDnPrefix) != 0) {
        return;
    }
    VESK_INFO("BrM: dn %s", request.dn.c_str());
    if (brm == nullptr) {
        // Made here without evStartToOperate: it takes answers only once it is ready.
        brm = new VeskBrM();
        brm->initializeStateMachine();
        brm->start();
    }
    int answer = brm->executeOperation(request.txHandle, request.dn.c_str(), request.name.c_str(),
                                       request.parameters, request.result);
    // A refusal is told in the action's result, not in its return code, unless nothing was sent.
    rc = answer == OrlSendFailed ? OrlSendFailed : OrlOk;
    fillResult(request.result, request.filled, OrlOamSpiMoAttributeType_3_INT32,
               int32Value(answer == OrlOk ? 0 : -1));
}

void VeskMoImpl::actionChangeFrequency(ActionRequest& request, OrlReturnT& rc) {
    int32_t frequency = 0;
    const char* parameterName = nullptr;
    if (request.name != "changeFrequency" ||
        !firstInt32(request.parameters, &frequency, &parameterName)) {
        return;
    }
    VESK_INFO("VeskMoImpl::action, changeFrequency, ldn: %s , param name: %s , param value: %d",
              request.dn.c_str(), parameterName, frequency);
    const char* errorText = nullptr;
    VeskCMChangeFrequency* engine = VeskCMChangeFrequency::instance();
    const std::string& dn = request.dn;
    if (dn.rfind(",EUtranCellFDD=") != std::string::npos ||
        dn.rfind(",EUtranCellTDD=") != std::string::npos) {
        if (request.transaction == nullptr) {
            VESK_ERROR("VeskMoImpl::%s - TransactionHandle %lu was not found", __func__,
                       request.txHandle);
            return;
        }
        if (request.transaction->getDatabaseTxHandle() == 0) {
            int started = request.transaction->startTransactionToDB();
            if (started != 0) {
                rc = started;
                return;
            }
        }
        rc = engine->changeLTECellFrequency(request.txHandle,
                                            request.transaction->getDatabaseTxHandle(), dn,
                                            frequency, &errorText);
    } else if (dn.rfind(",ExternalEUtranCellFDD=") != std::string::npos) {
        rc = engine->changeExternalLTECellFrequency(dn, frequency, &errorText);
    } else if (dn.rfind(",ExternalUtranCellFDD=") != std::string::npos) {
        rc = engine->changeExternalUtranCellFDDFrequency(dn, frequency, &errorText);
    } else {
        rc = OrlOk;
        errorText = "changeFrequency action not supported yet for this MO.";
    }
    if (errorText != nullptr) {
        addOperatorMessage(errorText);
    }
}

void VeskMoImpl::actionSetMaxNoOfCellRelations(ActionRequest& request, OrlReturnT& rc) {
    int32_t value = 0;
    if (request.name != "setMaxNoOfCellRelations" || !firstInt32(request.parameters, &value)) {
        return;
    }
    const char* dn = request.dn.c_str();
    if (!IDatabase::isPresentInDB(request.dn, 1)) {
        VESK_ERROR("Cannot read %s object from Database. Cannot setMaxNoOfCellRelations into DB !!",
                   dn);
        return;
    }
    // Outside the transaction and at once: an abort of the request's transaction keeps it.
    if (IDatabase::setAttribute(request.dn, 1, kMaxRelations, AttributeVariant(value), false,
                                IPCData::AVT_INT32, true, 0) == 0) {
        VESK_ERROR("Could not set %s::%s  into DB !!", dn, kMaxRelations);
        return;
    }
    VESK_INFO("Succesfully set %s::%s  into DB !!", dn, kMaxRelations);
    IDatabase::storePersistentDump(false, false);
    rc = OrlOk;
}

void VeskMoImpl::actionWifiModule(ActionRequest& request, OrlReturnT& rc) {
    const char* dn = request.dn.c_str();
    if (request.dn != kWifiModuleDn) {
        return;
    }
    if (request.name == "resetToFactory") {
        VESK_INFO("%s::resetToFactory()", dn);
        if (ITransport::wifiResetToFactory() != 0) {
            VESK_INFO("%s::resetToFactory() - OK", dn);
            rc = OrlOk;
        } else {
            VESK_ERROR("%s::resetToFactory() - FAILED", dn);
            rc = OrlFailure;
        }
        return;
    }
    int32_t mode = 0;
    if (request.name != "restart" || !firstInt32(request.parameters, &mode)) {
        return;
    }
    VESK_INFO("%s::restart(%d)", dn, mode);
    if (ITransport::wifiRestart(mode) != 0) {
        VESK_INFO("%s::restart(%d) - OK", dn, mode);
        rc = OrlOk;
    } else {
        VESK_ERROR("%s::restart(%d) - FAILED", dn, mode);
        rc = OrlFailure;
    }
}

void VeskMoImpl::addOperatorMessage(const char* text) {
    if (_threadContext != nullptr && _threadContext->addMessage != nullptr) {
        _threadContext->addMessage(1, text);
    }
}

}  // namespace TibVeskCM

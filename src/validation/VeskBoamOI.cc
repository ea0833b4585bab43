#include "validation/VeskBoamOI.h"

#include "platform/AgentEntries.h"
#include "platform/BoamMsg.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/StationSleep.h"
#include "platform/Toolbox.h"
#include "platform/VeskMessages.h"
#include "platform/VeskStrings.h"
#include "validation/VeskOI.h"

// The baseband's answer to the last set request: 1 none yet, 0 accepted, -1 refused.
int boamSetAttributeReponseStatus = 1;

namespace TibVeskOI {

namespace {

using VESK::Messages::ConfMsg_setAttributeReq;

const int kBoamDestination = 6;
const int kAnswerPolls = 100;
const unsigned kAnswerPollUs = 10000;

// The last baseband transaction id given out; ids run from 256 to 65535.
int32_t s_boamTxIdCounter = 255;

int answerStatus() {
    return vesk::boamStatusLoad(&boamSetAttributeReponseStatus);
}

void setAnswerStatus(int status) {
    vesk::boamStatusStore(&boamSetAttributeReponseStatus, status);
}

}  // namespace

VeskBoamOI* VeskBoamOI::instance() {
    static VeskBoamOI boam;
    return &boam;
}

VeskBoamOI::VeskBoamOI() {
    clearBOAMTrAttributes();
}

VeskBoamOI::~VeskBoamOI() {
    delete _boMapping;
}

void VeskBoamOI::initialize() {
    VeskOI::getVeskOI()->registerAsObjectImplementer(VeskConst::NodeBFunctionPath);
    VeskOI::getVeskOI()->registerAsObjectImplementer(VeskConst::NodeBLocalCellPath);
}

bool VeskBoamOI::boamReady(OrlReturnT* rc) {
    if (!_boamConfigured) {
        int state = 0;
        if (!Toolbox::getDbObjAttrValue<int>(VeskConst::BOAM, VeskConst::state, state, 1)) {
            VESK_TRACE("VeskBoamOI::%s boam state does not exists, return orl ok ", __func__);
        } else if (state == 2) {
            _boamConfigured = true;
        }
        if (!_boamConfigured) {
            // Until the baseband is up, the database alone takes the change.
            *rc = OrlOk;
            return false;
        }
    }
    if (_boMapping == nullptr) {
        _boMapping = IDatabase::getObject(VeskConst::BOMOMapping, 1, _dbHandle);
        if (_boMapping == nullptr) {
            VESK_TRACE(
                "VeskBoamOI::%s(): Unable to determine if attribute is BOAM attribute. "
                "BOMOMapping missing from database.",
                __func__);
            *rc = OrlFailure;
            return false;
        }
    }
    return true;
}

OrlReturnT VeskBoamOI::handleBOAMTransaction(std::string dn, std::string attrName,
                                             const OrlMoAttributeValueContainer_3* value,
                                             unsigned long txHandle) {
    OrlReturnT rc = OrlOk;
    if (!boamReady(&rc)) {
        return rc;
    }
    const int32_t attributeId = IDatabase::getBOAttributeId(_boMapping, attrName);
    const int32_t objectId = IDatabase::getBOAttributeId(_boMapping, dn);
    if (attributeId == 0 || objectId == 0) {
        VESK_TRACE("VeskBoamOI::%s(): Attribute is not BOAM related", __func__);
        return OrlOk;
    }
    _boamTxId = createBoamTxId(txHandle);
    ConfMsg_setAttributeReq* message = new ConfMsg_setAttributeReq();
    if (handleBOAMAttributeValue(value, message, attributeId, dn, attrName) == 0) {
        delete message;
        return OrlFailure;
    }
    setAnswerStatus(1);
    if (sendAttributeReqToBOAM(objectId, attributeId, message) == 0) {
        VESK_ERROR("VeskBoamOI::%s(): send setAttributeReqToBOAM failed", __func__);
        return OrlFailure;
    }
    return waitForAnswer(dn, attrName, value);
}

OrlReturnT VeskBoamOI::waitForAnswer(const std::string& dn, const std::string& attrName,
                                     const OrlMoAttributeValueContainer_3* value) {
    for (int poll = 0; poll < kAnswerPolls; ++poll) {
        if (answerStatus() == 0) {
            VESK_TRACE("got boamSetAttributeReponseStatus ok %d ", 0);
            _boamAttributeAccepted = true;
            return OrlOk;
        }
        VESK::Framework::stationSleepUs(kAnswerPollUs);
    }
    // 1 when nothing came: the host's attempt loop asks again.
    OrlReturnT rc = answerStatus();
    if (rc == -1) {
        rc = checkMinMaxRatio(dn, attrName, value);
    }
    return rc;
}

int32_t VeskBoamOI::createBoamTxId(unsigned long txHandle) {
    if (tibLocalTxHandle == static_cast<uint32_t>(txHandle)) {
        return _boamTxId;
    }
    tibLocalTxHandle = static_cast<uint32_t>(txHandle);
    s_boamTxIdCounter = s_boamTxIdCounter >= 65535 ? 256 : s_boamTxIdCounter + 1;
    setAnswerStatus(1);
    return s_boamTxIdCounter;
}

void VeskBoamOI::freeBoamTxId(int32_t /*id*/) {
    tibLocalTxHandle = 0;
    _boamAttributeAccepted = false;
    setAnswerStatus(1);
}

int VeskBoamOI::sendAttributeReqToBOAM(unsigned int /*objectId*/, unsigned int attributeId,
                                       ConfMsg_setAttributeReq* message) {
    message->transactionId = static_cast<uint32_t>(_boamTxId);
    message->operationCount = 1;
    message->numberOfAttributes = 1;
    message->attributes[0].attributeId = static_cast<uint16_t>(attributeId);
    int sent = 0;
    {
        VESK::Messages::VESK_BoamMsgContainer container(message);
        sent = VESK::Framework::Messaging::sendVeskMessage(kBoamDestination, container);
        delete message;
    }
    if (sent == 0) {
        VESK_ERROR("Sending message to BOAM failed");
    }
    return sent;
}

OrlReturnT VeskBoamOI::commit(unsigned long txHandle) {
    if (tibLocalTxHandle == static_cast<uint32_t>(txHandle) && _boamAttributeAccepted) {
        handleBoamCommits();
        for (int objectClass : _touchedClasses) {
            commitBOAMTransaction(static_cast<short>(objectClass), 0);
        }
        _touchedClasses.clear();
        freeBoamTxId(_boamTxId);
    } else {
        VESK_TRACE(
            "VeskBoamOI::%s(): No BOAM transaction started, transaction id = %d, boamTX_id "
            "%d ",
            __func__, static_cast<int>(txHandle), _boamTxId);
    }
    return OrlOk;
}

OrlReturnT VeskBoamOI::rollback(unsigned long txHandle) {
    if (tibLocalTxHandle == static_cast<uint32_t>(txHandle) && _boamAttributeAccepted) {
        handleBoamCommits();
        for (int objectClass : _touchedClasses) {
            rollbackBOAMTransaction(static_cast<short>(objectClass), 0);
        }
        _touchedClasses.clear();
        freeBoamTxId(_boamTxId);
    }
    return OrlOk;
}

void VeskBoamOI::handleBoamCommits() {
    clearBOAMTrAttributes();
    _touchedClasses.sort();
    _touchedClasses.unique();
}

namespace {

// A commit or a cancel of one class; the answer of the send is not looked at.
void sendObjectOperation(VESK::Messages::BoamMsg_objectOperation* operation, int32_t txId,
                         short objectClass, short instance) {
    operation->transactionId = static_cast<uint32_t>(txId);
    operation->desObClass = static_cast<uint16_t>(objectClass);
    operation->desObInstance = static_cast<uint16_t>(instance);
    operation->operationCount = 1;
    operation->reserved = 0;
    VESK::Messages::VESK_BoamMsgContainer container(operation);
    VESK::Framework::Messaging::sendVeskMessage(kBoamDestination, container);
    delete operation;
}

}  // namespace

void VeskBoamOI::commitBOAMTransaction(short objectClass, short instance) {
    sendObjectOperation(new VESK::Messages::BoamMsg_commitAttributeReq(), _boamTxId, objectClass,
                        instance);
}

void VeskBoamOI::rollbackBOAMTransaction(short objectClass, short instance) {
    sendObjectOperation(new VESK::Messages::BoamMsg_cancelAttributeReq(), _boamTxId, objectClass,
                        instance);
}

bool VeskBoamOI::checkList(int value, std::string valueList) {
    std::list<int> values;
    if (!Toolbox::readStringToIntList(valueList, ',', values)) {
        VESK_ERROR("VeskBoamOI::%s could not convert %s to int list", __func__, valueList.c_str());
        return false;
    }
    for (int each : values) {
        if (each == value) {
            return true;
        }
    }
    return false;
}

}  // namespace TibVeskOI

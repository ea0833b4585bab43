#include "frequency/VeskCMChangeFrequency.h"

#include <algorithm>
#include <cstring>

#include "frequency/FrequencyReads.h"
#include "front/VeskMoImpl.h"
#include "model/VeskModelRepository.h"
#include "platform/AgentEntries.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Messaging.h"
#include "platform/Toolbox.h"
#include "transaction/Band46Channels.h"

using TibVeskCM::frequency::lastId;
using TibVeskCM::frequency::readInt;

namespace TibVeskCM {
namespace {

const int kConfigurationManager = 2;
const int kResetComponent = 9;
const int kFddLimit = 18000;
const char* const kFddCell = ",EUtranCellFDD=";
const char* const kTddCell = ",EUtranCellTDD=";
const char* const kFrequencyLimitText = "Maximum number of EUtranFrequency MOs in use";
const char* const kRelationLimitText = "Maximum number of EUtranFreqRelation MOs in use";

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// The dn of the last EUtraNetwork (or other network class) of the committed database.
std::string lastNetwork(const char* className) {
    std::string dn;
    for (DBObject* network : IDatabase::getMOClass(className, 0)) {
        dn = frequency::fullDn(*network);
        delete network;
    }
    return dn;
}

}  // namespace

VeskCMChangeFrequency* VeskCMChangeFrequency::instance() {
    static VeskCMChangeFrequency engine;
    return &engine;
}

VeskCMChangeFrequency::VeskCMChangeFrequency()
    : _validationSemaphore(new VESK::Framework::Semaphore(0)) {}

VeskCMChangeFrequency::~VeskCMChangeFrequency() = default;

int VeskCMChangeFrequency::convertBand46(int earfcn) {
    const Band46Channel* row = band46ByHigh(earfcn);
    return row != nullptr ? row->low : earfcn;
}

bool VeskCMChangeFrequency::isAllowedChannel(const std::string& dn, int earfcn) const {
    if (static_cast<unsigned>(earfcn) < kFddLimit && contains(dn, kFddCell)) {
        return true;
    }
    if (!contains(dn, kTddCell)) {
        return false;
    }
    return band46ByLow(earfcn) != nullptr;
}

int VeskCMChangeFrequency::changeLTECellFrequency(unsigned long orlTxHandle, int dbTxHandle,
                                                  std::string dn, int earfcn, const char** result) {
    VESK_TRACE(">> %s", __func__);
    if (earfcn > 255243) {
        VESK_INFO(
            "VeskCMChangeFrequency::Frequency [%d] not supported. Converting to supported Freq",
            earfcn);
        earfcn = convertBand46(earfcn);
    }
    if (!isAllowedChannel(dn, earfcn)) {
        VESK_ERROR("VeskCMChangeFrequency::%s, earfcn: %d validation failed", __func__, earfcn);
        return -1;
    }
    _databaseTxHandle = dbTxHandle;
    // `result` lives only as long as the action; a refusal at prepare is told in the log.
    (void)result;
    _actionResultText = nullptr;
    VeskMoImpl* front = VeskMoImpl::instance();
    front->insertToCallbackMap(orlTxHandle, OrlTxOperationPrepare, &commitPreparation);
    front->insertToCallbackMap(orlTxHandle, OrlTxOperationAbort, &abortPreparation);
    std::unique_ptr<DBObject> cell(IDatabase::getObject(dn, 1, 0));
    if (cell == nullptr) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Failed to get MO '%s'", __func__, dn.c_str());
        return -1;
    }
    const char* name = contains(dn, kFddCell) ? "earfcndl" : "earfcn";
    Attribute* channel = new Attribute(false, name, AttributeVariant(earfcn), 0, true,
                                       IPCData::AVT_INT32, true, false);
    cell->addAttribute(*channel);
    IDatabase::insert(cell.get(), _databaseTxHandle);
    recordCell(dn, earfcn);
    VESK_TRACE("<< %s", __func__);
    return 0;
}

void VeskCMChangeFrequency::recordCell(const std::string& dn, int earfcn) {
    bool found = false;
    for (CellFrequency& entry : _cellFrequencies) {
        if (entry.cellDn == dn) {
            VESK_TRACE("Cell %s is already in list, overwrite it.", dn.c_str());
            entry.earfcn = earfcn;
            found = true;
        }
    }
    if (!found) {
        VESK_TRACE("Add new cell frequency to list.");
        CellFrequency entry;
        entry.cellDn = dn;
        entry.channelBandwidth = 0;
        entry.earfcn = earfcn;
        _cellFrequencies.push_back(entry);
    }
}

int VeskCMChangeFrequency::commitPreparation(unsigned long orlTxHandle) {
    VESK_TRACE("%s: txHandle %lu", __func__, orlTxHandle);
    return instance()->prepareChange();
}

int VeskCMChangeFrequency::prepareChange() {
    _validationResult = false;
    updateChannelBWs();
    sendValidateFrequencyReqMsg();
    // No time limit: the station's configuration manager always answers.
    _validationSemaphore->wait();
    if (!_validationResult) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Frequency validation failed.", "commitPreparation");
        return -6;
    }
    int rc = createFreqMOsToDbTx();
    if (rc == 0) {
        _cellFrequencies.clear();
        sendResetMsg();
    }
    _isLAA = false;
    return rc;
}

int VeskCMChangeFrequency::abortPreparation(unsigned long orlTxHandle) {
    VESK_TRACE("%s: txHandle %lu", __func__, orlTxHandle);
    instance()->_cellFrequencies.clear();
    return 0;
}

void VeskCMChangeFrequency::responseReceived(bool ok) {
    _validationResult = ok;
    _validationSemaphore->post();
}

int VeskCMChangeFrequency::getDlChannelBandwidth(std::string dn) const {
    std::unique_ptr<DBObject> cell(IDatabase::getObject(dn, 1, _databaseTxHandle));
    if (cell == nullptr) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Failed to get MO '%s'", __func__, dn.c_str());
        return -1;
    }
    Attribute* bandwidth = cell->getAlternateAttribute("dlChannelBandwidth");
    if (bandwidth == nullptr || bandwidth->deleted) {
        bandwidth = cell->getAttribute("dlChannelBandwidth");
    }
    if (bandwidth == nullptr || bandwidth->deleted) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Failed to get attribute '%s'", __func__,
                   "dlChannelBandwidth");
        return -1;
    }
    try {
        return boost::get<int>(bandwidth->value);
    } catch (boost::bad_get&) {
        VESK_ERROR("Boost Bad Get! When trying to get attribute value");
        return -1;
    }
}

void VeskCMChangeFrequency::updateChannelBWs() {
    for (CellFrequency& entry : _cellFrequencies) {
        entry.channelBandwidth = getDlChannelBandwidth(entry.cellDn);
    }
}

int VeskCMChangeFrequency::sendValidateFrequencyReqMsg() {
    VESK::Messages::VESK_ValidateFrequencyReq request;
    request.cellFrequencies.assign(_cellFrequencies.begin(), _cellFrequencies.end());
    int sent = VESK::Framework::Messaging::sendVeskMessage(kConfigurationManager, request);
    if (sent != 0) {
        VESK_INFO("VeskCMChangeFrequency::%s, Message VESK_ValidateFrequencyReq sent to CM.",
                  __func__);
    } else {
        VESK_INFO(
            "VeskCMChangeFrequency::%s, Message VESK_ValidateFrequencyReq sending to CM failed.",
            __func__);
    }
    return sent;
}

int VeskCMChangeFrequency::sendResetMsg() {
    VESK::Messages::VESK_ResetRBS reset;
    reset.resetCause = 27;
    reset.resetKind = 1;
    reset.reasonText = "";
    reset.parameter = -1;
    if (VESK::Framework::Messaging::sendVeskMessage(kResetComponent, reset, 1) == 0) {
        VESK_ERROR("VeskCMChangeFrequency::sendResetMsg, Msg sending to reset component failed.");
        return -1;
    }
    return 0;
}

int VeskCMChangeFrequency::refuseAtLimit(const char* text) {
    VESK_INFO("VeskCMChangeFrequency::%s %s", "createFreqMOsToDbTx", text);
    if (_actionResultText != nullptr) {
        *_actionResultText = text;
    }
    rollback();
    return -10;
}

int VeskCMChangeFrequency::createFreqMOsToDbTx() {
    for (const CellFrequency& entry : _cellFrequencies) {
        const std::string& cell = entry.cellDn;
        std::string current;
        getCurrentEUtranFrequency(cell, current);
        int currentChannel = 0;
        if (Toolbox::convertStringToInt(lastId(current), currentChannel, false) &&
            currentChannel > kFddLimit) {
            _isLAA = true;
        }
        if (_isLAA) {
            removeReservedBys();
        }
        deleteMos(cell, current);
        std::string newFrequency;
        if (createEUtranFrequency(entry.earfcn, newFrequency) == 0) {
            return refuseAtLimit(kFrequencyLimitText);
        }
        std::string relation;
        if (!checkEUtranFreqRelation(cell, current, relation, 0) &&
            !checkEUtranFreqRelation(cell, newFrequency, relation, 0)) {
            if (checkCardinality(cell.c_str(), "EUtranFreqRelation") == 0) {
                return refuseAtLimit(kRelationLimitText);
            }
            std::string created;
            createEutranFreqRelation(cell, relation, newFrequency, created);
        }
        if (handleEUtranFreqRelation(cell, current, newFrequency) == 0) {
            return refuseAtLimit(kRelationLimitText);
        }
    }
    return 0;
}

bool VeskCMChangeFrequency::getEutrancellFDD(std::string dn, std::string& cell) const {
    for (;;) {
        if (frequency::lastClass(dn) == "EUtranCellFDD") {
            cell = dn;
            return true;
        }
        size_t comma = dn.rfind(',');
        if (comma == std::string::npos) {
            return false;
        }
        dn.erase(comma);
    }
}

void VeskCMChangeFrequency::getCurrentEUtranFrequency(std::string dn,
                                                      std::string& frequency) const {
    std::string cell;
    bool found = false;
    if (getEutrancellFDD(dn, cell)) {
        int channel = 0;
        found = readInt(dn, "earfcndl", channel, 0) && getEUtranFrequency(channel, frequency) == 0;
    } else {
        found = frequency::readText(dn, "eutranFrequencyRef", frequency, 0);
    }
    if (!found) {
        VESK_INFO("VeskCMChangeFrequency::%s could not find EUtranFrequency for %s", __func__,
                  dn.c_str());
    }
    VESK_INFO("VeskCMChangeFrequency::%s returning EUtranFrequency %s", __func__,
              frequency.c_str());
}

int VeskCMChangeFrequency::getEUtranFrequency(int arfcn, std::string& frequency) const {
    int rc = 1;
    for (DBObject* object : IDatabase::getMOClass("EUtranFrequency", 0)) {
        int value = 0;
        std::string dn = frequency::fullDn(*object);
        if (object->dn.find(':') == std::string::npos &&
            readInt(dn, "arfcnValueEUtranDl", value, 0) && value == arfcn) {
            frequency = dn;
            rc = 0;
        }
        delete object;
    }
    return rc;
}

int VeskCMChangeFrequency::createEUtranFrequency(int arfcn, std::string& frequency) {
    if (getEUtranFrequency(arfcn, frequency) == 0) {
        return 1;
    }
    std::string parent = lastNetwork("EUtraNetwork");
    if (checkCardinality(parent.c_str(), "EUtranFrequency") == 0) {
        return 0;
    }
    std::string id = getId(parent, "EUtranFrequency", std::to_string(arfcn));
    std::string key = "EUtranFrequency=" + id;
    DBObject object(key, 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED,
                    parent, 1);
    auto add = [&object](const char* name, AttributeVariant value,
                         IPCData::AttributeValueType type) {
        object.addAttribute(*new Attribute(false, name, value, 0, true, type, true, false));
    };
    add("eUtranFrequencyId", AttributeVariant(id), IPCData::AVT_STRING);
    // The model's type of the channel: every reader takes it as a 32-bit integer.
    add("arfcnValueEUtranDl", AttributeVariant(arfcn), IPCData::AVT_INT32);
    add("userLabel", AttributeVariant(std::string()), IPCData::AVT_STRING);
    add("reservedBy", AttributeVariant(std::string()), IPCData::AVT_REFERENCE_LIST);
    add("laaMaxOccupancy", AttributeVariant(8u), IPCData::AVT_UINT32);
    VESK_INFO("VeskCMChangeFrequency::%s Creating %s with arfcnValueEUtranDl value %d", __func__,
              key.c_str(), arfcn);
    frequency = parent + "," + key;
    IDatabase::insert(&object, _databaseTxHandle);
    return 1;
}

int VeskCMChangeFrequency::checkCardinality(const char* parent, const char* className) const {
    int min = 0;
    int max = 0;
    if (std::strcmp(className, "EUtranFreqRelation") == 0 && !_isLAA) {
        max = 8;
        VESK_TRACE("%s: using hard coded values", __func__);
    } else {
        VeskModelRepository::instance()->getMOCardinalityRange(parent, className, min, max);
    }
    int count = static_cast<int>(
        IDatabase::getMOClassWithParent(parent, className, _databaseTxHandle).size());
    if (max <= count) {
        VESK_INFO("VeskCMChangeFrequency::%s Maximum number of %s MOs in use (%d)", __func__,
                  className, count);
        return 0;
    }
    return 1;
}

int VeskCMChangeFrequency::startTransaction() {
    if (_databaseTxHandle != 0) {
        return 0;
    }
    _databaseTxHandle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    return _databaseTxHandle != 0 ? 1 : 0;
}

int VeskCMChangeFrequency::commit() {
    if (_databaseTxHandle == 0) {
        return 0;
    }
    int handle = _databaseTxHandle;
    _databaseTxHandle = 0;
    if (!IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false)) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Commit to database failed.", __func__);
        return 0;
    }
    VESK_INFO("VeskCMChangeFrequency::%s, Commit to database succeeded.", __func__);
    IDatabase::storePersistentDump(false, false);
    return 1;
}

int VeskCMChangeFrequency::rollback() {
    if (_databaseTxHandle == 0) {
        return 0;
    }
    int handle = _databaseTxHandle;
    _databaseTxHandle = 0;
    if (!IDatabase::transaction(IPCData::OP_TX_ROLLBACK, handle, false)) {
        VESK_ERROR("VeskCMChangeFrequency::%s, Rollback to database failed.", __func__);
        return 0;
    }
    return 1;
}

}  // namespace TibVeskCM

void vesk_cm_frequencyValidationResponse(int valid) {
    TibVeskCM::VeskCMChangeFrequency::instance()->responseReceived(valid != 0);
}

#include "host/peers/BasebandOam.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/BoamMsg.h"
#include "platform/Logger.h"
#include "platform/StationSleep.h"
#include "platform/VeskMessages.h"
#include "station/messages/MessageBus.h"

namespace vesk {
namespace host {
namespace peers {

namespace {

using VESK::Messages::BoamMsg_objectOperation;
using VESK::Messages::ConfMsg_setAttributeReq;

// One field of an attribute record: its name, offset and width in bytes (1 unsigned).
struct Field {
    const char* name;
    int offset;
    int width;
};

struct Layout {
    int attributeId;
    std::vector<Field> fields;
};

const Layout kLayouts[] = {
    {4125, {{"hsdpaPowerBudget", 0, 1}}},
    {4126,
     {{"localThermalNoise", 0, 2},
      {"eulMaxOwnUuLoad", 2, 2},
      {"hsuLoadIncreaseStarvingUes", 4, 1},
      {"eulMaxRoTCoverage", 6, 2}}},
    {4131, {{"hsScchMinCodePower", 0, 2}, {"hsScchMaxCodePower", 2, 2}}},
    {4132, {{"eAgchMinPower", 0, 2}, {"eAgchMaxPower", 2, 2}}},
    {4133, {{"eRgchMinPower", 0, 2}, {"eRgchMaxPower", 2, 2}}},
    {4134, {{"eHichMinPower", 0, 2}, {"eHichMaxPower", 2, 2}}},
    {4135, {{"orthLossComp", 0, 4}}},
    {4212, {{"eulMaxAllowedSchRate", 0, 4}, {"eulDchMaxAllowedSchRate", 4, 4}}},
    {4218, {{"eAgchMinPower2msTti", 0, 4}, {"eAgchMaxPower2msTti", 4, 4}}},
    {4219, {{"eHichMinPower2msTti", 0, 4}, {"eHichMaxPower2msTti", 4, 4}}},
};

// The power pairs, whose first field is the minimum and the second the maximum.
bool isPowerPair(int attributeId) {
    return (attributeId >= 4131 && attributeId <= 4134) || attributeId == 4218 ||
           attributeId == 4219;
}

const Layout* layoutOf(int attributeId) {
    for (const Layout& layout : kLayouts) {
        if (layout.attributeId == attributeId) {
            return &layout;
        }
    }
    return nullptr;
}

int fieldValue(const std::vector<char>& data, const Field& field) {
    if (field.width == 1) {
        return static_cast<uint8_t>(data[field.offset]);
    }
    if (field.width == 2) {
        int16_t narrow = 0;
        std::memcpy(&narrow, data.data() + field.offset, sizeof(narrow));
        return narrow;
    }
    int32_t wide = 0;
    std::memcpy(&wide, data.data() + field.offset, sizeof(wide));
    return wide;
}

std::string hexOf(const std::vector<char>& data) {
    std::string text;
    char byte[4];
    for (char c : data) {
        std::snprintf(byte, sizeof(byte), "%02x", static_cast<unsigned>(static_cast<uint8_t>(c)));
        text += byte;
    }
    return text;
}

}  // namespace

BasebandOam::BasebandOam() : Peer("boam", 6, {"accept", "refuse", "silent", "strict", "late"}) {}

BasebandOam::~BasebandOam() {
    for (std::thread& late : _lateAnswers) {
        late.join();
    }
}

Json BasebandOam::decode(int attributeId, const std::vector<char>& data) {
    const Layout* layout = layoutOf(attributeId);
    if (layout == nullptr) {
        return Json{{"bytes", hexOf(data)}};
    }
    Json values = Json::object();
    for (const Field& field : layout->fields) {
        if (field.offset + field.width <= static_cast<int>(data.size())) {
            values[field.name] = fieldValue(data, field);
        }
    }
    return values;
}

bool BasebandOam::receive(const VESK::Messages::SerializableMessage& message, int flag) {
    auto* container = dynamic_cast<const VESK::Messages::VESK_BoamMsgContainer*>(&message);
    VESK::Messages::BoamMsg* record = container ? container->getBoamMsg() : nullptr;
    if (auto* request = dynamic_cast<const ConfMsg_setAttributeReq*>(record)) {
        set(*request);
        return true;
    }
    if (auto* operation = dynamic_cast<const BoamMsg_objectOperation*>(record)) {
        finish(*operation,
               operation->msgType == VESK::Messages::BoamMsg_commitAttributeReq::MSG_TYPE);
        return true;
    }
    return Peer::receive(message, flag);
}

void BasebandOam::set(const ConfMsg_setAttributeReq& request) {
    const ConfMsg_setAttributeReq::AttributeSlot& slot = request.attributes[0];
    const int attributeId = slot.attributeId;
    std::vector<char> data(slot.data, slot.data + slot.length);
    Json values = decode(attributeId, data);
    const std::string mode = behaviour();
    bool accepted = mode == "accept" || mode == "late";
    if (mode == "strict") {
        const Layout* layout = layoutOf(attributeId);
        accepted =
            !isPowerPair(attributeId) || values.size() != 2 ||
            values[layout->fields[0].name].get<int>() <= values[layout->fields[1].name].get<int>();
    }
    const char* verdict = mode == "silent" ? "none" : accepted ? "accepted" : "refused";
    size_t record = note(Json{{"message", "set"},
                              {"transactionId", request.transactionId},
                              {"class", request.desObClass},
                              {"attributeId", attributeId},
                              {"values", values},
                              {"answer", mode == "late" ? "accepted, not yet sent" : verdict}});
    if (accepted) {
        std::lock_guard<std::mutex> lock(_stateMutex);
        _staged[request.transactionId][{request.desObClass, attributeId}] = data;
    }
    if (mode != "silent") {
        answer(request.transactionId, accepted ? 0 : -1, mode == "late", record);
    }
}

void BasebandOam::finish(const BoamMsg_objectOperation& operation, bool commit) {
    int moved = 0;
    {
        std::lock_guard<std::mutex> lock(_stateMutex);
        Records& staged = _staged[operation.transactionId];
        for (auto it = staged.begin(); it != staged.end();) {
            if (it->first.first != operation.desObClass) {
                ++it;
                continue;
            }
            if (commit) {
                _applied[it->first] = it->second;
            }
            ++moved;
            it = staged.erase(it);
        }
        if (staged.empty()) {
            _staged.erase(operation.transactionId);
        }
    }
    note(Json{{"message", commit ? "commit" : "cancel"},
              {"transactionId", operation.transactionId},
              {"class", operation.desObClass},
              {commit ? "applied" : "dropped", moved}});
}

void BasebandOam::answer(uint32_t transactionId, int status, bool late, size_t record) {
    VESK::Messages::VESK_BoamSetAttributeResp response;
    response.transactionId = transactionId;
    response.status = status;
    std::vector<uint8_t> bytes = response.serialize();
    if (!late) {
        vesk::station::deliverInbound(bytes);
        return;
    }
    std::lock_guard<std::mutex> lock(_stateMutex);
    const unsigned delay = _lateMs;
    _lateAnswers.emplace_back([this, bytes, delay, record] {
        VESK::Framework::stationSleepMs(delay);
        vesk::station::deliverInbound(bytes);
        amend(record, "answer", "accepted, sent at " + timeText());
    });
}

bool BasebandOam::command(const Words& words, Json* result, std::string* error) {
    if (words.size() != 2 || words[0] != "late") {
        return Peer::command(words, result, error);
    }
    char* end = nullptr;
    unsigned long ms = std::strtoul(words[1].c_str(), &end, 10);
    if (words[1].empty() || *end != '\0' || ms > 600000) {
        *error = "late takes milliseconds from 0 to 600000, not '" + words[1] + "'";
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(_stateMutex);
        _lateMs = static_cast<unsigned>(ms);
    }
    if (!Peer::command({"late"}, result, error)) {
        return false;
    }
    (*result)["lateMs"] = ms;
    return true;
}

std::string BasebandOam::usage() const {
    return Peer::usage() + " [MS]";
}

Json BasebandOam::list(const Records& records) {
    Json entries = Json::array();
    for (const auto& record : records) {
        entries.push_back(Json{{"class", record.first.first},
                               {"attributeId", record.first.second},
                               {"values", decode(record.first.second, record.second)}});
    }
    return entries;
}

Json BasebandOam::show() const {
    Json received = Peer::show();
    std::lock_guard<std::mutex> lock(_stateMutex);
    Json staged = Json::object();
    for (const auto& transaction : _staged) {
        staged[std::to_string(transaction.first)] = list(transaction.second);
    }
    return Json{{"received", received}, {"staged", staged}, {"applied", list(_applied)}};
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

#include "host/peers/SoftwareManagement.h"

#include "platform/GetPath.h"
#include "platform/Logger.h"
#include "platform/StationSleep.h"
#include "platform/VeskMessages.h"
#include "station/framework/FrameworkControl.h"
#include "station/messages/MessageBus.h"
#include "station/messages/MessageCodec.h"

namespace vesk {
namespace host {
namespace peers {

using namespace VESK::Messages;

SoftwareManagement::SoftwareManagement(Host& host)
    : Peer("swm", 7, {"ok", "refuse", "silent", "fail", "stale", "slow"}), _host(host) {
    _thread = std::thread([this] { run(); });
}

SoftwareManagement::~SoftwareManagement() {
    stop();
}

std::string SoftwareManagement::storePath() {
    return getPath("VESK_BRM_BACKUP_PATH", "/var/permanent/brm_backup");
}

std::string SoftwareManagement::usage() const {
    return "show|wait|ok|refuse|silent|fail|stale|slow MS";
}

bool SoftwareManagement::command(const Words& words, Json* result, std::string* error) {
    if (words.size() == 2 && words[0] == "slow") {
        char* end = nullptr;
        unsigned long ms = std::strtoul(words[1].c_str(), &end, 10);
        if (words[1].empty() || *end != '\0' || ms > 3600000) {
            *error = "slow takes milliseconds (0 to 3600000), not '" + words[1] + "'";
            return false;
        }
        Peer::command({"slow"}, result, error);
        _slowMs = static_cast<unsigned>(ms);
        (*result)["ms"] = ms;
        return true;
    }
    if (words.size() == 1 && words[0] == "wait") {
        bool idle = waitIdle(60000) && vesk::station::waitForIdleQueues(5000);
        if (!idle) {
            *error = "software management is still busy after a minute";
            return false;
        }
        *result = Json{{"name", name()}, {"idle", true}};
        return true;
    }
    if (words.size() == 1 && words[0] == "slow") {
        *error = "usage: peer swm " + usage();
        return false;
    }
    if (!Peer::command(words, result, error)) {
        return false;
    }
    if (words[0] != "show") {
        _slowMs = 0;
    }
    return true;
}

bool SoftwareManagement::receive(const SerializableMessage& message, int flag) {
    Json entry;
    if (auto* backup = dynamic_cast<const VESK_BrMOperationReq*>(&message)) {
        entry = Json{{"request", "backup"},
                     {"operation", backup->operation},
                     {"backupName", backup->backupName}};
    } else if (auto* create = dynamic_cast<const VESK_InitialiseSWReq*>(&message)) {
        entry = Json{{"request", "createUpgradePackage"},
                     {"uri", create->uri},
                     {"actionName", create->actionName}};
    } else if (auto* command = dynamic_cast<const VESK_SwmCmd*>(&message)) {
        entry = Json{{"request", "package"},
                     {"command", command->command},
                     {"commandName", command->commandName},
                     {"requestId", command->requestId}};
    } else {
        return Peer::receive(message, flag);
    }
    if (behaviour() == "refuse") {
        entry["refused"] = true;
        note(entry);
        return false;
    }
    auto* backup = dynamic_cast<const VESK_BrMOperationReq*>(&message);
    if (backup != nullptr && backup->operation == "cancelCurrentAction") {
        _cancel = true;  // the work under way sees it now, not when the request's turn comes
    }
    std::string error;
    std::vector<uint8_t> bytes = message.serialize();
    std::unique_ptr<SerializableMessage> copy = decodeMessage(bytes.data(), bytes.size(), error);
    size_t record = note(entry);
    std::lock_guard<std::mutex> lock(_queueMutex);
    _queue.push_back(Request{std::move(copy), record});
    _queued.notify_one();
    return true;
}

void SoftwareManagement::stop() {
    {
        std::lock_guard<std::mutex> lock(_queueMutex);
        if (_stopping) {
            return;
        }
        _stopping = true;
        _queue.clear();
        _cancel = true;
        _queued.notify_one();
    }
    if (_thread.joinable()) {
        _thread.join();
    }
}

void SoftwareManagement::run() {
    for (;;) {
        Request request;
        {
            std::unique_lock<std::mutex> lock(_queueMutex);
            _queued.wait(lock, [this] { return _stopping || !_queue.empty(); });
            if (_stopping) {
                return;
            }
            request = std::move(_queue.front());
            _queue.pop_front();
            _working = true;
        }
        if (behaviour() == "silent") {
            amend(request.record, "answer", "none (silent)");
        } else {
            handle(request);
        }
        std::lock_guard<std::mutex> lock(_queueMutex);
        _working = false;
        _idle.notify_all();
    }
}

bool SoftwareManagement::waitIdle(unsigned ms) {
    std::unique_lock<std::mutex> lock(_queueMutex);
    return _idle.wait_for(lock, std::chrono::milliseconds(ms),
                          [this] { return _queue.empty() && !_working; });
}

void SoftwareManagement::handle(Request& request) {
    const SerializableMessage* message = request.message.get();
    if (auto* backup = dynamic_cast<const VESK_BrMOperationReq*>(message)) {
        backupRequest(*backup, request.record);
    } else if (auto* create = dynamic_cast<const VESK_InitialiseSWReq*>(message)) {
        createPackage(*create, request.record);
    } else if (auto* command = dynamic_cast<const VESK_SwmCmd*>(message)) {
        packageCommand(*command, request.record);
    }
}

bool SoftwareManagement::pace() {
    const unsigned ms = behaviour() == "slow" ? _slowMs.load() : 0;
    for (int step = 0; step < 10; ++step) {
        if (cancelled()) {
            return false;
        }
        VESK::Framework::stationSleepMs(ms / 10);
    }
    return !cancelled();
}

void SoftwareManagement::answer(const SerializableMessage& message, size_t record, Json shown) {
    bool delivered = vesk::station::deliverInbound(message.serialize());
    if (!delivered) {
        shown["delivered"] = false;
    }
    amend(record, "answer", std::move(shown));
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

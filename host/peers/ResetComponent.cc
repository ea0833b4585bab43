#include "host/peers/ResetComponent.h"

#include "host/Host.h"
#include "platform/Logger.h"
#include "platform/VeskMessages.h"

namespace vesk {
namespace host {
namespace peers {

ResetComponent::ResetComponent(Host& host)
    : Peer("reset", 9, {"record", "restart", "refuse"}), _host(host) {}

bool ResetComponent::receive(const VESK::Messages::SerializableMessage& message, int flag) {
    auto* reset = dynamic_cast<const VESK::Messages::VESK_ResetRBS*>(&message);
    if (reset == nullptr) {
        return Peer::receive(message, flag);
    }
    std::string mode = behaviour();
    Json entry{{"cause", reset->resetCause},
               {"kind", reset->resetKind},
               {"text", reset->reasonText},
               {"parameter", reset->parameter}};
    if (mode == "refuse") {
        entry["refused"] = true;
        note(entry);
        return false;
    }
    size_t index = note(entry);
    VESK_INFO("peer reset: reset cause %d kind %d", reset->resetCause, reset->resetKind);
    if (mode == "restart" && !_restartDue.exchange(true)) {
        amend(index, "restart", "due");
        // The agent is in the middle of a request: it restarts when the transaction is over.
        _host.afterTransactions([this, index] { restart(index); });
    }
    return true;
}

void ResetComponent::restart(size_t record) {
    _restartDue = false;
    std::string error;
    if (_host.restartAgent(&error)) {
        amend(record, "restart", "done at " + timeText());
    } else {
        VESK_ERROR("peer reset: the agent did not come back: %s", error.c_str());
        amend(record, "restart", "failed: " + error);
    }
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

#include "host/peers/AutoIntegrationLog.h"

#include "platform/VeskMessages.h"

namespace vesk {
namespace host {
namespace peers {

AutoIntegrationLog::AutoIntegrationLog() : Peer("ailog", 8, {"record", "refuse"}) {}

bool AutoIntegrationLog::receive(const VESK::Messages::SerializableMessage& message, int flag) {
    auto* line = dynamic_cast<const VESK::Messages::VESK_WriteAutointegrationLog*>(&message);
    if (line == nullptr) {
        return Peer::receive(message, flag);
    }
    bool refused = behaviour() == "refuse";
    Json entry{{"text", line->text}};
    if (refused) {
        entry["refused"] = true;
    }
    note(entry);
    return !refused;
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

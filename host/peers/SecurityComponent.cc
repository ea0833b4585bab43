#include "host/peers/SecurityComponent.h"

#include <climits>

#include "station/database/ISecControl.h"

namespace vesk {
namespace host {
namespace peers {

SecurityComponent::SecurityComponent() : Peer("sec", 0, {"ok", "fail"}) {}

SecurityComponent::~SecurityComponent() {
    vesk::isec::failNext(vesk::isec::Operation::ExecuteAction, 0);
}

Json SecurityComponent::show() const {
    Json actions = Json::array();
    for (const vesk::isec::RecordedAction& action : vesk::isec::recordedActions()) {
        Json parameters = Json::object();
        for (const auto& parameter : action.parameters) {
            parameters[parameter.first] = parameter.second;
        }
        actions.push_back(
            Json{{"action", action.name}, {"dn", action.dn}, {"attributes", parameters}});
    }
    return actions;
}

void SecurityComponent::behaviourSet(const std::string& behaviour) {
    vesk::isec::failNext(vesk::isec::Operation::ExecuteAction, behaviour == "fail" ? INT_MAX : 0);
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

#include "host/peers/WifiModule.h"

#include "station/framework/FrameworkControl.h"

namespace vesk {
namespace host {
namespace peers {

WifiModule::WifiModule() : Peer("wifi", 0, {"ok", "fail"}) {
    vesk::station::resetWifi();
}

Json WifiModule::show() const {
    vesk::station::WifiRecord record = vesk::station::wifiRecord();
    return Json{{"factoryResets", record.factoryResets},
                {"restarts", record.restarts},
                {"lastRestartMode", record.lastRestartMode}};
}

void WifiModule::behaviourSet(const std::string& behaviour) {
    vesk::station::setWifiAnswer(behaviour == "ok");
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

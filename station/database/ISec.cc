// ISec, the security component's operations, and their station-side control.
#include "platform/ISec.h"

#include "platform/Logger.h"
#include "station/database/ISecStore.h"

using vesk::isec::Store;

int ISec::createMo(int handle, DBObject* object) {
    if (object == nullptr) {
        VESK_ERROR("ISec::%s: null object", __func__);
        return 0;
    }
    return Store::instance().create(handle, *object);
}

int ISec::editMo(int handle, std::string dn, Attribute* attribute) {
    if (attribute == nullptr || dn.empty()) {
        VESK_ERROR("ISec::%s: no attribute or no dn ('%s')", __func__, dn.c_str());
        return 0;
    }
    return Store::instance().edit(handle, dn, *attribute);
}

int ISec::deleteMO(int handle, std::string dn) {
    if (dn.empty()) {
        VESK_ERROR("ISec::%s: empty dn", __func__);
        return 0;
    }
    return Store::instance().remove(handle, dn);
}

int ISec::committed(int handle) {
    return Store::instance().commit(handle);
}

int ISec::rollback(int handle) {
    return Store::instance().rollback(handle);
}

int ISec::executeAction(std::string actionName, DBObject* parameters) {
    return Store::instance().action(actionName, parameters);
}

namespace vesk {
namespace isec {

void failNext(Operation operation, int count) {
    Store::instance().failNext(operation, count);
}

std::vector<RecordedAction> recordedActions() {
    return Store::instance().actions();
}

DBObject* storedObject(const std::string& dn) {
    return Store::instance().copyOf(dn).release();
}

std::vector<std::string> storedDns() {
    return Store::instance().dns();
}

size_t stagedCount(int handle) {
    return Store::instance().staged(handle);
}

void reset() {
    Store::instance().reset();
}

}  // namespace isec
}  // namespace vesk

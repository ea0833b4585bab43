#include "backup/VeskBrM.h"

#include "platform/Logger.h"
#include "platform/SerializableMessage.h"

VeskBrM::VeskBrM() {}

VeskBrM::~VeskBrM() {
    stopQueue();
}

int VeskBrM::executeOperation(unsigned long, char const* dn, char const* name,
                              OrlMoNamedAttributeValueContainer_3**, OrlMoAttributeValueResult_3*) {
    VESK_ERROR("VeskBrM::%s - not available yet (%s on %s)", __func__, name, dn);
    return -1;
}

void VeskBrM::enterState_initial() {
    VESK_INFO("VeskBrM: Entering initial");
}

void VeskBrM::enterState_stReady() {
    VESK_INFO("VeskBrM: Entering stReady");
}

void VeskBrM::processEvent_evStartToOperate() {
    VESK_INFO("VeskBrM: Processing event evStartToOperate");
}

void VeskBrM::processEvent_evBrMOperationResp(EventWithParams_evBrMOperationResp const& event) {
    // Finalising the operation that the answer closes comes with backup and restore. The
    // message is ours all the same.
    VESK_ERROR("VeskBrM::%s - not available yet", __func__);
    delete event.message;
}

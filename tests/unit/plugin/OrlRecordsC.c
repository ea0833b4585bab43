/* The host records compiled as C: a host written in C sees the same layout as the agent. */
#include <stddef.h>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlEventRouter.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlModelRepository.h"
#include "platform/orl/OrlOamSpi.h"

/* Sizes and offsets as a C compiler lays them out, in the order OrlRecordsTest.cc expects. */
size_t orlRecordLayoutC(size_t* out) {
    size_t n = 0;
    out[n++] = sizeof(OrlMoAttributeValue_3);
    out[n++] = sizeof(OrlMoAttributeValueContainer_3);
    out[n++] = offsetof(OrlMoAttributeValueContainer_3, values);
    out[n++] = sizeof(OrlMoAttributeValueStructMember_3);
    out[n++] = sizeof(OrlMoNamedAttributeValueContainer_3);
    out[n++] = offsetof(OrlMoAttributeValuesResult_3, containers);
    out[n++] = sizeof(OrlMoAttributeValueContainer);
    out[n++] = sizeof(OrlMgmtSpiComponent);
    out[n++] = offsetof(OrlMgmtSpiComponent, start);
    out[n++] = offsetof(OrlMgmtSpiInterfacePortal_1, getInterface);
    out[n++] = offsetof(OrlMgmtSpiSession_1, registerSessionCallbacks);
    out[n++] = offsetof(OrlMgmtSpiThreadContext_2, addMessage);
    out[n++] = offsetof(OrlOamSpiTransaction_2, registerParticipant);
    out[n++] = sizeof(OrlOamSpiManagedObject_3);
    out[n++] = offsetof(OrlOamSpiManagedObject_3, action);
    out[n++] = offsetof(OrlOamSpiTransactionalResource_2, validate);
    out[n++] = offsetof(OrlOamSpiRegisterObjectImplementer_2, unRegisterDn);
    out[n++] = sizeof(OrlOamSpiModelRepository_2);
    out[n++] = offsetof(OrlOamSpiEventRouter_1, notify);
    out[n++] = sizeof(OrlOamSpiCmEvent_Notification_1T);
    return n;
}

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlEventRouter.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlModelRepository.h"
#include "platform/orl/OrlOamSpi.h"

extern "C" size_t orlRecordLayoutC(size_t* out);

namespace {

constexpr size_t P = sizeof(void*);

TEST(OrlRecords, CAndCxxAgreeOnLayoutAndSlotsFollowTheHeader) {
    size_t c[32] = {};
    size_t n = orlRecordLayoutC(c);
    const size_t cxx[] = {
        sizeof(OrlMoAttributeValue_3),
        sizeof(OrlMoAttributeValueContainer_3),
        offsetof(OrlMoAttributeValueContainer_3, values),
        sizeof(OrlMoAttributeValueStructMember_3),
        sizeof(OrlMoNamedAttributeValueContainer_3),
        offsetof(OrlMoAttributeValuesResult_3, containers),
        sizeof(OrlMoAttributeValueContainer),
        sizeof(OrlMgmtSpiComponent),
        offsetof(OrlMgmtSpiComponent, start),
        offsetof(OrlMgmtSpiInterfacePortal_1, getInterface),
        offsetof(OrlMgmtSpiSession_1, registerSessionCallbacks),
        offsetof(OrlMgmtSpiThreadContext_2, addMessage),
        offsetof(OrlOamSpiTransaction_2, registerParticipant),
        sizeof(OrlOamSpiManagedObject_3),
        offsetof(OrlOamSpiManagedObject_3, action),
        offsetof(OrlOamSpiTransactionalResource_2, validate),
        offsetof(OrlOamSpiRegisterObjectImplementer_2, unRegisterDn),
        sizeof(OrlOamSpiModelRepository_2),
        offsetof(OrlOamSpiEventRouter_1, notify),
        sizeof(OrlOamSpiCmEvent_Notification_1T),
    };
    ASSERT_EQ(sizeof(cxx) / sizeof(cxx[0]), n);
    for (size_t i = 0; i < n; ++i)
        EXPECT_EQ(cxx[i], c[i]) << "entry " << i;

    // Slot k of a record lies k words after the three-word header.
    EXPECT_EQ(3 * P + 0 * P, cxx[9]);    // portal: getInterface is slot 1
    EXPECT_EQ(3 * P + 4 * P, cxx[10]);   // session: registerSessionCallbacks is slot 5
    EXPECT_EQ(3 * P + 7 * P, cxx[14]);   // managed object: action is slot 8
    EXPECT_EQ(3 * P + 5 * P, cxx[15]);   // transactional resource: validate is slot 6
    EXPECT_EQ(3 * P + 11 * P, cxx[13]);  // managed object: eleven slots
    EXPECT_EQ(5 * P, cxx[8]);            // component: start after the two arrays
}

}  // namespace

#include "plugin/VeskDataConversionHelper.h"

#include <gtest/gtest.h>

#include <cstring>

#include "AllocationTracker.h"
#include "ValueBuilders.h"
#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"
#include "station/log/LogControl.h"

using TibVeskCM::VeskDataConversionHelper;
using TibVeskCM::VeskOrlHelper;
using vesk_test::AllocationTracker;
using namespace vesk_test;

namespace {

const char* const kNoValues =
    "VeskCMComponent: Attribute Value Container does not have values at all.";

std::string unsupported(int type) {
    return "VeskCMComponent: Failed converting attribute value type:" + std::to_string(type) +
           " to old type OrlMoAttributeValueContainerT. It does not support this type.";
}

uint64_t bitsOf(const OrlMoAttributeValue& slot) {
    uint64_t bits;
    std::memcpy(&bits, &slot, sizeof(bits));
    return bits;
}

// Each numeric type keeps exactly its old width of the slot; the rest of the slot is zero.
TEST(VeskDataConversionHelper, NumericSlotsKeepOnlyTheirOldWidth) {
    struct Row {
        int type;
        uint64_t in;
        uint64_t out;
        bool unsupported;
    };
    const uint64_t pattern = 0x8877665544332211ull;
    const Row rows[] = {
        {OrlOamSpiMoAttributeType_3_INT8, pattern, 0x11, false},
        {OrlOamSpiMoAttributeType_3_UINT8, pattern, 0x11, false},
        {OrlOamSpiMoAttributeType_3_BOOL, pattern, 0x11, false},
        {OrlOamSpiMoAttributeType_3_INT16, pattern, 0x2211, false},
        {OrlOamSpiMoAttributeType_3_UINT16, pattern, 0x2211, false},
        {OrlOamSpiMoAttributeType_3_INT32, pattern, 0x44332211, false},
        {OrlOamSpiMoAttributeType_3_UINT32, pattern, 0x44332211, false},
        {OrlOamSpiMoAttributeType_3_INT64, pattern, pattern, false},
        {OrlOamSpiMoAttributeType_3_UINT64, pattern, pattern, false},
        {OrlOamSpiMoAttributeType_3_ENUM, 70000, 70000 & 0xffff, false},
        {OrlOamSpiMoAttributeType_3_ENUM, static_cast<uint64_t>(-1), 0xffff, false},
        {OrlOamSpiMoAttributeType_3_DECIMAL64, 0x400921fb54442d18ull, 0, true},
        {13, pattern, 0, true},
        {15, pattern, 0, true},
        {17, pattern, 0, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "type " << row.type << " in " << std::hex << row.in);
        vesk::log::LogCapture capture;
        AllocationTracker tracker;
        auto* v3 = newContainer(row.type, 2);
        v3->values[0].u64 = row.in;
        v3->values[1].u64 = row.in;
        OrlMoAttributeValueContainer* v1 =
            VeskDataConversionHelper::copyToV1AttrValueContainer(*v3);
        EXPECT_EQ(row.type, v1->type);
        ASSERT_EQ(2u, v1->nrOfValues);
        EXPECT_EQ(row.out, bitsOf(v1->values[0]));
        EXPECT_EQ(row.out, bitsOf(v1->values[1]));
        EXPECT_EQ(row.unsupported ? 2u : 0u,
                  capture.count(unsupported(row.type), VESK_LOG_WARNING));
        VeskDataConversionHelper::freeAttrValueContainerV1(v1);
        VeskOrlHelper::releaseAttrResultCB(v3);
        EXPECT_TRUE(tracker.balanced());
    }
}

TEST(VeskDataConversionHelper, TextsAndStructsAreDeepCopiedInOrder) {
    AllocationTracker tracker;
    auto* refs = newTexts(OrlOamSpiMoAttributeType_3_REFERENCE, {"A=1", "B=2"});
    auto* structs = newSampleStruct();
    OrlMoAttributeValueContainer* refsV1 =
        VeskDataConversionHelper::copyToV1AttrValueContainer(*refs);
    OrlMoAttributeValueContainer* structsV1 =
        VeskDataConversionHelper::copyToV1AttrValueContainer(*structs);
    VeskOrlHelper::releaseAttrResultCB(refs);
    VeskOrlHelper::releaseAttrResultCB(structs);

    EXPECT_STREQ("A=1", refsV1->values[0].moRef);
    EXPECT_STREQ("B=2", refsV1->values[1].moRef);
    const OrlMoAttributeValueStructMember* m = structsV1->values[0].structMember;
    ASSERT_NE(nullptr, m);
    EXPECT_STREQ("label", m->memberName);
    EXPECT_STREQ("a", m->memberValue->values[0].theString);
    m = m->nextMember;
    EXPECT_STREQ("level", m->memberName);
    EXPECT_EQ(70000 & 0xffff, bitsOf(m->memberValue->values[0]));  // narrowed inside structs too
    m = m->nextMember;
    EXPECT_STREQ("inner", m->memberName);
    EXPECT_STREQ("X=1", m->memberValue->values[0].structMember->memberValue->values[0].moRef);
    EXPECT_EQ(nullptr, m->nextMember);
    EXPECT_EQ(nullptr, VeskDataConversionHelper::copyToV1StructMember(nullptr));

    VeskDataConversionHelper::freeAttrValueContainerV1(refsV1);
    VeskDataConversionHelper::freeAttrValueContainerV1(structsV1);
    EXPECT_TRUE(tracker.balanced());
}

TEST(VeskDataConversionHelper, EmptyContainerWarnsAndItsV1FreeTakesTheArrayAtAnyCount) {
    vesk::log::LogCapture capture;
    AllocationTracker tracker;
    OrlMoAttributeValueContainer_3 empty{OrlOamSpiMoAttributeType_3_INT32, 0, nullptr};
    OrlMoAttributeValueContainer* v1 = VeskDataConversionHelper::copyToV1AttrValueContainer(empty);
    EXPECT_EQ(nullptr, v1->values);
    EXPECT_EQ(0u, v1->nrOfValues);
    EXPECT_EQ(1u, capture.count(kNoValues, VESK_LOG_WARNING));

    // Unlike the version 3 free, a count of 0 does not keep an array alive.
    v1->values = static_cast<OrlMoAttributeValue*>(std::malloc(sizeof(OrlMoAttributeValue)));
    VeskDataConversionHelper::freeAttrValueContainerV1(v1);
    EXPECT_TRUE(tracker.balanced());
}

}  // namespace

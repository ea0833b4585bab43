#include "plugin/VeskOrlHelper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "AllocationTracker.h"
#include "ValueBuilders.h"
#include "platform/Logger.h"
#include "station/log/LogControl.h"

using TibVeskCM::VeskOrlHelper;
using vesk_test::AllocationTracker;
using namespace vesk_test;

namespace {

// A small model: the class of "ManagedElement=1,Thing=1" has "count" (INT32) and "mode" (ENUM);
// any other class is unknown to it.
int fakeModel(const std::string& dn, const std::string& attrName, int* type) {
    static const std::map<std::string, int> attributes = {{"count", 3}, {"mode", 12}};
    if (dn != "ManagedElement=1,Thing=1")
        return -1;
    auto it = attributes.find(attrName);
    if (it != attributes.end())
        *type = it->second;
    return 0;
}

class VeskOrlHelperTest : public ::testing::Test {
  protected:
    void SetUp() override { VeskOrlHelper::setAttributeTypeLookup(&fakeModel); }
    void TearDown() override { VeskOrlHelper::setAttributeTypeLookup(nullptr); }
};

void noRelease(OrlMoAttributeValueContainer_3*) {}

TEST_F(VeskOrlHelperTest, InitAttrResultAllocatesZeroedSlotsAndKeepsTheCallersRelease) {
    AllocationTracker tracker;
    OrlMoAttributeValueResult_3 result{&noRelease, nullptr};
    VeskOrlHelper::initAttrResult(OrlOamSpiMoAttributeType_3_UINT16, 3, result);
    EXPECT_EQ(&noRelease, result.release);
    ASSERT_NE(nullptr, result.container);
    EXPECT_EQ(OrlOamSpiMoAttributeType_3_UINT16, result.container->type);
    ASSERT_EQ(3u, result.container->nrOfValues);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(0u, result.container->values[i].u64);
    VeskOrlHelper::releaseAttrResultCB(result.container);

    VeskOrlHelper::initAttrResult(OrlOamSpiMoAttributeType_3_STRING, 0, result);
    EXPECT_EQ(nullptr, result.container->values);
    EXPECT_EQ(0u, result.container->nrOfValues);
    EXPECT_EQ(1u, tracker.live());  // the container alone
    VeskOrlHelper::releaseAttrResultCB(result.container);
    VeskOrlHelper::releaseAttrResultCB(nullptr);
    EXPECT_TRUE(tracker.balanced());
}

TEST_F(VeskOrlHelperTest, DeepCopyIsIndependentAndEachSideFreesExactlyItsOwnBlocks) {
    AllocationTracker tracker;
    auto* strings = newTexts(OrlOamSpiMoAttributeType_3_STRING, {"one", ""});
    auto* structs = newSampleStruct();
    size_t sourceBlocks = tracker.live();

    auto* stringsCopy = VeskOrlHelper::createAttrValueContainer(*strings);
    auto* structsCopy = VeskOrlHelper::createAttrValueContainer(*structs);
    EXPECT_EQ(2 * sourceBlocks, tracker.live());  // a copy owns as many blocks as its source
    ASSERT_EQ(2u, stringsCopy->nrOfValues);
    EXPECT_NE(strings->values[0].theString, stringsCopy->values[0].theString);
    EXPECT_STREQ("one", stringsCopy->values[0].theString);
    EXPECT_STREQ("", stringsCopy->values[1].theString);

    // Free the sources first: the copies must not share anything with them.
    VeskOrlHelper::releaseAttrResultCB(strings);
    VeskOrlHelper::releaseAttrResultCB(structs);
    EXPECT_EQ(sourceBlocks, tracker.live());
    const OrlMoAttributeValueStructMember_3* m = structsCopy->values[0].structMember;
    ASSERT_NE(nullptr, m);
    EXPECT_STREQ("label", m->memberName);
    EXPECT_STREQ("a", m->memberValue->values[0].theString);
    m = m->nextMember;
    EXPECT_STREQ("level", m->memberName);
    EXPECT_EQ(70000, m->memberValue->values[0].theEnum);
    m = m->nextMember;
    EXPECT_STREQ("inner", m->memberName);
    EXPECT_STREQ("X=1", m->memberValue->values[0].structMember->memberValue->values[0].moRef);
    EXPECT_EQ(nullptr, m->nextMember);

    VeskOrlHelper::releaseAttrResultCB(stringsCopy);
    VeskOrlHelper::releaseAttrResultCB(structsCopy);
    EXPECT_TRUE(tracker.balanced());
}

TEST_F(VeskOrlHelperTest, EmptyValuesAllocateNothingAndAreLeftAloneWhenFreed) {
    AllocationTracker tracker;
    OrlMoAttributeValueContainer_3 empty{OrlOamSpiMoAttributeType_3_STRING, 0, nullptr};
    OrlMoAttributeValueContainer_3 copy;
    VeskOrlHelper::copyAttrValueContainer(copy, empty);
    EXPECT_EQ(nullptr, copy.values);
    EXPECT_EQ(0u, tracker.allocations());

    OrlMoAttributeValue_3 noMembers;
    noMembers.structMember = nullptr;
    EXPECT_EQ(nullptr, VeskOrlHelper::copyStructMembers(noMembers));

    // A count of 0 frees nothing, even with an array present.
    OrlMoAttributeValueContainer_3 stray{OrlOamSpiMoAttributeType_3_INT32, 0, nullptr};
    stray.values = static_cast<OrlMoAttributeValue_3*>(std::malloc(sizeof(OrlMoAttributeValue_3)));
    VeskOrlHelper::freeAttrValueContainer(&stray);
    EXPECT_TRUE(tracker.isLive(stray.values));
    std::free(stray.values);

    OrlMoAttributeValueContainer_3 ints{OrlOamSpiMoAttributeType_3_INT32, 0, nullptr};
    VeskOrlHelper::initAttributeValues(&ints, 2);
    EXPECT_EQ(OrlOamSpiMoAttributeType_3_INT32, ints.type);
    EXPECT_EQ(2u, ints.nrOfValues);
    VeskOrlHelper::freeAttrValueContainer(&ints);
    EXPECT_EQ(nullptr, ints.values);
    EXPECT_TRUE(tracker.balanced());
}

TEST_F(VeskOrlHelperTest, NamedContainersAndMembersAreFreedButTheirHoldersStay) {
    AllocationTracker tracker;
    auto* value = newTexts(OrlOamSpiMoAttributeType_3_REFERENCE, {"A=1,B=2"});
    auto** list = static_cast<OrlMoNamedAttributeValueContainer_3**>(
        std::malloc(3 * sizeof(OrlMoNamedAttributeValueContainer_3*)));
    list[0] = VeskOrlHelper::createNamedValueContainer("peer", *value);
    list[1] = VeskOrlHelper::createNamedValueContainer("other", *value);
    list[2] = nullptr;
    VeskOrlHelper::releaseAttrResultCB(value);
    EXPECT_STREQ("peer", list[0]->attributeName);
    EXPECT_STREQ("A=1,B=2", list[0]->attributeValue.values[0].moRef);

    VeskOrlHelper::freeNamedValueContainer(list[1]);
    EXPECT_EQ(nullptr, list[1]->attributeName);
    EXPECT_EQ(nullptr, list[1]->attributeValue.values);
    EXPECT_TRUE(tracker.isLive(list[1]));
    std::free(list[1]);
    list[1] = nullptr;

    VeskOrlHelper::freeNamedValueContainers(list);
    EXPECT_EQ(1u, tracker.live());  // the array itself
    EXPECT_TRUE(tracker.isLive(list));
    std::free(list);

    // A new member takes over its value: freeing the member frees the value once.
    auto* member = VeskOrlHelper::newOrlMoAttributeValueStructMember(
        "m", newInt64s(OrlOamSpiMoAttributeType_3_INT64, {-5}));
    EXPECT_STREQ("m", member->memberName);
    EXPECT_EQ(nullptr, member->nextMember);
    VeskOrlHelper::freeAttributeValueStructMember(member);
    VeskOrlHelper::freeAttributeValueStructMember(nullptr);
    EXPECT_TRUE(tracker.balanced());
}

TEST_F(VeskOrlHelperTest, InitAttributeContainerTypesFromTheModelOrMarksUnknown) {
    vesk::log::LogCapture capture;
    AllocationTracker tracker;
    OrlMoAttributeValueResult_3 result{nullptr, nullptr};
    VeskOrlHelper::initAttributeContainer("ManagedElement=1,Thing=1", "mode", &result);
    EXPECT_EQ(&VeskOrlHelper::releaseAttrResultCB, result.release);
    EXPECT_EQ(OrlOamSpiMoAttributeType_3_ENUM, result.container->type);
    EXPECT_EQ(0u, result.container->nrOfValues);
    EXPECT_EQ(nullptr, result.container->values);
    result.release(result.container);

    for (const char* dn : {"ManagedElement=1,Thing=1", "ManagedElement=1,Other=1"}) {
        VeskOrlHelper::initAttributeContainer(dn, "nothing", &result);
        EXPECT_EQ(VeskOrlHelper::kUnknownType, result.container->type) << dn;
        result.release(result.container);
    }
    EXPECT_EQ(2u, capture.count("VeskOrlHelper::initAttributeContainer(): Unknown type of "
                                "attribute, attrName: nothing",
                                VESK_LOG_WARNING));
    EXPECT_EQ(0u, tracker.live());
}

TEST_F(VeskOrlHelperTest, InitAttributeContainersCarriesTheLastKnownTypeOver) {
    AllocationTracker tracker;
    OrlMoAttributeValuesResult_3 result{nullptr, nullptr};
    VeskOrlHelper::initAttributeContainers("ManagedElement=1,Thing=1",
                                           {"x", "count", "y", "mode", "z"}, &result);
    EXPECT_EQ(&VeskOrlHelper::releseAttrValueContainers, result.release);
    const int expected[] = {-2, 3, 3, 12, 12};
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(nullptr, result.containers[i]);
        EXPECT_EQ(expected[i], result.containers[i]->type) << "entry " << i;
        EXPECT_EQ(0u, result.containers[i]->nrOfValues);
    }
    EXPECT_EQ(nullptr, result.containers[5]);
    result.release(result.containers);

    VeskOrlHelper::initAttributeContainers("ManagedElement=1,Thing=1", {}, &result);
    EXPECT_EQ(nullptr, result.containers[0]);
    EXPECT_EQ(1u, tracker.live());
    result.release(result.containers);
    EXPECT_TRUE(tracker.balanced());
}

}  // namespace

// The value fields of the change event: every kind round trips, and anything that does not fit
// reads as the empty text.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "platform/IDatabase.h"

namespace {

using Ev4 = IDatabase::EventClass_ev4Notification;

bool isNoValue(const AttributeVariant& v) {
    return v.which() == AV_CSTRING && std::strcmp(boost::get<char const*>(v), "") == 0;
}

TEST(EventNotificationTest, EveryKindRoundTripsThroughSetAndCopies) {
    struct Case {
        AttributeVariant value;
        int32_t size;
    };
    const Case cases[] = {
        {AttributeVariant('x'), 1},
        {AttributeVariant(static_cast<short>(-2)), 2},
        {AttributeVariant(-70000), 4},
        {AttributeVariant(1LL << 40), 8},
        {AttributeVariant(1.5f), 4},
        {AttributeVariant(-2.25), 8},
        {AttributeVariant(std::string("abc")), 4},
        {AttributeVariant(static_cast<unsigned char>(200)), 1},
        {AttributeVariant(static_cast<unsigned short>(65000)), 2},
        {AttributeVariant(4000000000u), 4},
        {AttributeVariant(1ULL << 63), 8},
        {AttributeVariant(true), 1},
        {AttributeVariant(std::string()), 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value.which());
        Ev4 event;
        event.setAttrValue(c.value);
        EXPECT_EQ(event.valueKind, c.value.which());
        EXPECT_EQ(event.valueSize, c.size);
        EXPECT_TRUE(event.getAttrValue() == c.value);

        // Copies own their bytes: changing the original leaves them as they were.
        Ev4 copy(event);
        std::unique_ptr<VESK::Framework::Event> viaCopyEvent(event.copyEvent());
        event.setAttrValue(AttributeVariant(std::string("something else entirely")));
        EXPECT_NE(copy.valueData, event.valueData);
        EXPECT_TRUE(copy.getAttrValue() == c.value);
        auto* copied = dynamic_cast<Ev4*>(viaCopyEvent.get());
        ASSERT_NE(copied, nullptr);
        EXPECT_EQ(copied->getEventId(), IDatabase::EV4_NOTIFICATION);
        EXPECT_TRUE(copied->getAttrValue() == c.value);
    }
}

TEST(EventNotificationTest, KindOrSizeThatDoesNotFitReadsAsEmptyTextAndTextsStopAtTheirSize) {
    Ev4 fresh;
    EXPECT_EQ(fresh.getEventId(), 1004);
    EXPECT_EQ(fresh.valueKind, 12);
    EXPECT_TRUE(isNoValue(fresh.getAttrValue()));

    struct Case {
        int32_t kind;
        int32_t size;
    };
    const Case cases[] = {{AV_INT, 2},     {AV_INT, 8},  {AV_BOOL, 4},   {AV_LONGLONG, 4},
                          {AV_SHORT, 1},   {AV_CHAR, 2}, {AV_DOUBLE, 4}, {AV_STRING, 0},
                          {AV_STRING, -3}, {-1, 4},      {12, 4},        {13, 8}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "kind " << c.kind << " size " << c.size);
        Ev4 event;
        event.setAttrValue(AttributeVariant(1234567890123LL));  // 8 bytes of data
        event.valueKind = c.kind;
        event.valueSize = c.size;
        EXPECT_TRUE(isNoValue(event.getAttrValue()));
    }

    Ev4 noData;
    noData.valueKind = AV_INT;
    noData.valueSize = 4;
    EXPECT_TRUE(isNoValue(noData.getAttrValue()));

    Ev4 cleared;
    cleared.setAttrValue(AttributeVariant(7));
    cleared.setAttrValue(AttributeVariant(static_cast<char const*>("")));
    EXPECT_EQ(cleared.valueKind, 12);
    EXPECT_EQ(cleared.valueData, nullptr);
    EXPECT_TRUE(isNoValue(cleared.getAttrValue()));

    // A text's size counts its terminating zero; a shorter size cuts the text.
    Ev4 text;
    text.setAttrValue(AttributeVariant(std::string("hello")));
    ASSERT_EQ(text.valueSize, 6);
    EXPECT_EQ(static_cast<const char*>(text.valueData)[5], '\0');
    text.valueSize = 3;
    EXPECT_TRUE(text.getAttrValue() == AttributeVariant(std::string("he")));
}

}  // namespace

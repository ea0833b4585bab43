// The store's attribute encoding: every value of every attribute type comes back as it was
// written, through the layouts of the same store and through layouts read back from the file.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>

#include "station/database/AttributeCodec.h"

namespace vesk {
namespace db {
namespace {

// The extremes of each variant alternative, and a few values between.
std::vector<AttributeVariant> samplesOf(int which) {
    switch (which) {
        case AV_CHAR:
            return {static_cast<char>(CHAR_MIN), '\0', static_cast<char>(CHAR_MAX)};
        case AV_SHORT:
            return {static_cast<short>(SHRT_MIN), static_cast<short>(-1),
                    static_cast<short>(SHRT_MAX)};
        case AV_INT:
            return {INT_MIN, -1, 0, 63, 64, 1000, INT_MAX};
        case AV_LONGLONG:
            return {LLONG_MIN, -1LL, LLONG_MAX};
        case AV_FLOAT:
            return {-FLT_MAX, -0.0f, 1.25f, FLT_MIN};
        case AV_DOUBLE:
            return {-3.5e100, DBL_MIN, DBL_MAX};
        case AV_UCHAR:
            return {static_cast<unsigned char>(0), static_cast<unsigned char>(255)};
        case AV_USHORT:
            return {static_cast<unsigned short>(0), static_cast<unsigned short>(65535)};
        case AV_UINT:
            return {0u, 127u, 128u, UINT_MAX};
        case AV_ULONGLONG:
            return {0ULL, ULLONG_MAX};
        case AV_BOOL:
            return {false, true};
        default:  // strings, and the types that take any value
            return {std::string(), std::string("a;b,\xc3\xa9\0z", 8), std::string(300, 'x'), 7};
    }
}

// One object of `type` holding every sample, with ids, slots and hidden flags that differ, the
// same values again in the alternate map.
StoredObject objectOf(IPCData::AttributeValueType type) {
    StoredObject object;
    object.fullDn = "Item=" + std::to_string(type);
    std::vector<AttributeVariant> values = samplesOf(IPCData::expectedVariantIndex(type));
    for (size_t i = 0; i < values.size(); ++i) {
        StoredAttribute a;
        a.name = "a" + std::to_string(i);
        a.value = values[i];
        a.type = type;
        a.attributeId = static_cast<int32_t>(i) - 1;
        a.hidden = i % 2 == 1;
        object.attributes.put(a);
        a.alternateSlot = INT32_MAX - static_cast<int32_t>(i);
        object.alternates.put(a);
    }
    return object;
}

std::string describe(const AttributeSet& set) {
    std::string out;
    for (const StoredAttribute& a : set.items()) {
        out += a.name + " " + std::to_string(a.type) + " " + std::to_string(a.value.which()) + " " +
               std::to_string(a.attributeId) + " " + std::to_string(a.alternateSlot) +
               (a.hidden ? " hidden;" : ";");
    }
    return out;
}

void expectSame(const StoredObject& written, const StoredObject& read) {
    EXPECT_EQ(describe(written.attributes), describe(read.attributes));
    EXPECT_EQ(describe(written.alternates), describe(read.alternates));
    for (const AttributeSet* set : {&written.attributes, &written.alternates}) {
        const AttributeSet& back = set == &written.attributes ? read.attributes : read.alternates;
        for (size_t i = 0; i < set->size() && i < back.size(); ++i)
            EXPECT_TRUE(set->items()[i].value == back.items()[i].value)
                << set->items()[i].name.str();
    }
}

TEST(AttributeCodecTest, EveryTypeRoundTripsAndEveryShortenedEncodingIsRefused) {
    Layouts written;
    for (int t = IPCData::AVT_INT8; t <= IPCData::AVT_STRUCT_LIST; ++t) {
        SCOPED_TRACE("type " + std::to_string(t));
        const StoredObject object = objectOf(static_cast<IPCData::AttributeValueType>(t));
        const std::string body = Layouts::bodyOf(object);
        const uint32_t id = written.idOf(body);
        ASSERT_NE(0u, id);
        const std::string encoded = encodeAttributes(object, id);

        Layouts reread;  // as a reopened store has them
        ASSERT_TRUE(reread.load(id, body.data(), body.size()));
        for (const Layouts* layouts : {&written, &reread}) {
            StoredObject back;
            ASSERT_TRUE(decodeAttributes(encoded.data(), encoded.size(), *layouts, &back));
            expectSame(object, back);
        }
        for (size_t n = 0; n < encoded.size(); ++n) {
            StoredObject back;
            EXPECT_FALSE(decodeAttributes(encoded.data(), n, written, &back)) << n << " bytes";
        }
        for (size_t n = 0; n < body.size(); ++n)
            EXPECT_FALSE(Layouts().load(1, body.data(), n)) << "layout of " << n << " bytes";
    }
}

TEST(AttributeCodecTest, ObjectsWithTheSameAttributesShareALayoutAndADroppedOneIsForgotten) {
    Layouts layouts;
    StoredObject first = objectOf(IPCData::AVT_INT32), second = first;
    second.fullDn = "Item=2";
    StoredAttribute changed = *second.attributes.find("a0");
    changed.value = 5;
    second.attributes.put(changed);
    const uint32_t shared = layouts.idOf(Layouts::bodyOf(first));
    EXPECT_EQ(shared, layouts.idOf(Layouts::bodyOf(second))) << "only a value differs";
    layouts.commitPending();

    second.attributes.put(StoredAttribute{"extra", 1, 0, -1, IPCData::AVT_INT32, false});
    const uint32_t added = layouts.idOf(Layouts::bodyOf(second));
    EXPECT_NE(shared, added);
    const std::string encoded = encodeAttributes(second, added);
    layouts.dropPending();  // the write that added it failed
    StoredObject back;
    EXPECT_FALSE(decodeAttributes(encoded.data(), encoded.size(), layouts, &back));
    EXPECT_EQ(added, layouts.idOf(Layouts::bodyOf(second))) << "the id is free again";
}

}  // namespace
}  // namespace db
}  // namespace vesk

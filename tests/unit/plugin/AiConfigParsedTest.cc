#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"
#include "station/database/Database.h"
#include "station/log/LogControl.h"

using TibVeskCM::VeskOrlHelper;

namespace {

const char* const kNotFound =
    "VeskOrlHelper::getAiConfigParsed(): OAM object not found from database ";
const char* const kBadGet =
    "VeskOrlHelper::getAiConfigParsed: Boost Bad Get! When reading value of: OAM:aiConfigParsed";

// Each test opens its own store in a fresh temporary state directory.
class AiConfigParsedTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "/vesk_aiconfig_XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        _dir = pattern;
        std::string error;
        ASSERT_TRUE(vesk::db::open(_dir, &error)) << error;
    }
    void TearDown() override {
        vesk::db::close();
        std::system(("rm -rf '" + _dir + "'").c_str());
    }

    // Stores "OAM" with "aiConfigParsed" = `value` of `type` under `handle`.
    static void storeOam(const AttributeVariant& value, IPCData::AttributeValueType type,
                         int handle = 0) {
        DBObject oam("OAM", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED);
        auto* attribute = new Attribute(false, "aiConfigParsed", value, 0, true, type, true, false);
        ASSERT_TRUE(oam.addAttribute(*attribute));
        ASSERT_NE(0, IDatabase::insert(&oam, handle));
    }

    std::string _dir;
};

TEST_F(AiConfigParsedTest, MissingObjectOrAttributeReadsFalse) {
    vesk::log::LogCapture capture;
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.count(kNotFound, VESK_LOG_INFO));

    DBObject oam("OAM", 1, true, false, IPCData::OPSTATE_ENABLED, IPCData::ADMSTATE_UNLOCKED);
    ASSERT_NE(0, IDatabase::insert(&oam, 0));
    capture.clear();
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(0u, capture.count(kNotFound));
    EXPECT_EQ(1u, capture.countContaining("aiConfigParsed=false read from database attribute",
                                          VESK_LOG_TRACE));
}

TEST_F(AiConfigParsedTest, ReadsTheCommittedBoolOnly) {
    vesk::log::LogCapture capture;
    storeOam(AttributeVariant(true), IPCData::AVT_BOOL);
    EXPECT_TRUE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.countContaining(
                      "] getAiConfigParsed: VeskOrlHelper::getAiConfigParsed aiConfigParsed=true "
                      "read from database attribute",
                      VESK_LOG_TRACE));

    // A value in a transaction that is still open is not seen.
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, handle);
    storeOam(AttributeVariant(false), IPCData::AVT_BOOL, handle);
    EXPECT_TRUE(VeskOrlHelper::getAiConfigParsed());
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false));
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
}

TEST_F(AiConfigParsedTest, AValueThatIsNoBoolIsLoggedAndReadsFalse) {
    vesk::log::LogCapture capture;
    storeOam(AttributeVariant(1), IPCData::AVT_INT32);
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.count(kBadGet, VESK_LOG_ERROR));
}

}  // namespace

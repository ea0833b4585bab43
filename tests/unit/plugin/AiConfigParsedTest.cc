// The auto-integration flag: read from the committed "OAM" object, false for anything else.
#include <gtest/gtest.h>

#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"
#include "station/log/LogControl.h"
#include "unit/database/DatabaseTestSupport.h"

namespace {

using TibVeskCM::VeskOrlHelper;
using vesk::dbtest::attr;
using vesk::dbtest::put;

const char* const kNotFound =
    "VeskOrlHelper::getAiConfigParsed(): OAM object not found from database ";
const char* const kBadGet =
    "VeskOrlHelper::getAiConfigParsed: Boost Bad Get! When reading value of: OAM:aiConfigParsed";

using AiConfigParsedTest = vesk::dbtest::DatabaseTest;

TEST_F(AiConfigParsedTest, ReadsTheCommittedBoolAndFalseForAnythingElse) {
    vesk::log::LogCapture capture;
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.count(kNotFound, VESK_LOG_INFO));

    put("OAM", "");  // no attribute
    capture.clear();
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(0u, capture.count(kNotFound));
    EXPECT_EQ(1u, capture.countContaining("aiConfigParsed=false read from database attribute",
                                          VESK_LOG_TRACE));

    put("OAM", "", {attr("aiConfigParsed", AttributeVariant(true), IPCData::AVT_BOOL)});
    EXPECT_TRUE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.countContaining(
                      "] getAiConfigParsed: VeskOrlHelper::getAiConfigParsed aiConfigParsed=true "
                      "read from database attribute",
                      VESK_LOG_TRACE));

    // A value in a transaction that is still open is not seen.
    int handle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    ASSERT_NE(0, handle);
    put("OAM", "", {attr("aiConfigParsed", AttributeVariant(false), IPCData::AVT_BOOL)}, handle);
    EXPECT_TRUE(VeskOrlHelper::getAiConfigParsed());
    ASSERT_NE(0, IDatabase::transaction(IPCData::OP_TX_COMMIT, handle, false));
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());

    put("OAM", "", {attr("aiConfigParsed", AttributeVariant(1), IPCData::AVT_INT32)});
    EXPECT_FALSE(VeskOrlHelper::getAiConfigParsed());
    EXPECT_EQ(1u, capture.count(kBadGet, VESK_LOG_ERROR));
}

}  // namespace

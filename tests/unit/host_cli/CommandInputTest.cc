// Splitting of operator input, and dns checked against the real model.
#include <gtest/gtest.h>

#include "host/cli/CommandText.h"
#include "unit/host_cli/StationModel.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Words = std::vector<std::string>;

TEST(CommandTextTest, SplitsCommandsAtSemicolonsOutsideQuotes) {
    EXPECT_EQ(splitCommands(" begin ;get A=1 x;; commit;"),
              Words({"begin", "get A=1 x", "commit"}));
    EXPECT_EQ(splitCommands("get A=1 \"a;b\"; ls"), Words({"get A=1 \"a;b\"", "ls"}));
    EXPECT_EQ(splitCommands("get \"a\\\";b\"; ls"), Words({"get \"a\\\";b\"", "ls"}));
    EXPECT_TRUE(splitCommands(" ; ;").empty());
}

TEST(CommandTextTest, SplitsWordsWithQuotesAndRefusesAnOpenQuote) {
    Words words;
    std::string error;
    ASSERT_TRUE(splitWords("  get\tA=1  \"two words\" \"\" x\"y z\"", &words, &error));
    EXPECT_EQ(words, Words({"get", "A=1", "two words", "", "xy z"}));
    ASSERT_TRUE(splitWords("say \"a \\\"b\\\" \\\\\"", &words, &error));
    EXPECT_EQ(words, Words({"say", "a \"b\" \\"}));
    EXPECT_FALSE(splitWords("get \"open", &words, &error));
    EXPECT_EQ(error, "unterminated quote");
}

TEST(ModelViewTest, RefusesMalformedDnsAndClassesNotThere) {
    const ModelView& model = stationModel();
    struct Case {
        const char* dn;
        const char* error;
    };
    const Case cases[] = {
        {"", "malformed dn: empty"},
        {"ManagedElement", "malformed dn 'ManagedElement': 'ManagedElement' is not Class=id"},
        {"ManagedElement=1,", "malformed dn 'ManagedElement=1,': '' is not Class=id"},
        {"ManagedElement=1,=2", "malformed dn 'ManagedElement=1,=2': '=2' is not Class=id"},
        {"ManagedElement=1,Equipment=",
         "malformed dn 'ManagedElement=1,Equipment=': "
         "'Equipment=' is not Class=id"},
        {"ENodeBFunction=1", "malformed dn 'ENodeBFunction=1': it must begin with ManagedElement"},
        {"ManagedElement=1,Nothing=1", "unknown class 'Nothing'"},
        {"ManagedElement=1,EUtranCellFDD=1",
         "class 'EUtranCellFDD' is not a child class of ManagedElement"},
    };
    for (const Case& c : cases) {
        Id moc = kNone;
        std::string error;
        EXPECT_FALSE(model.resolveDn(c.dn, &moc, &error)) << c.dn;
        EXPECT_EQ(error, c.error);
    }
}

}  // namespace
}  // namespace cli
}  // namespace host
}  // namespace vesk

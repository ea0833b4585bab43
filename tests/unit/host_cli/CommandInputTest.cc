// Splitting of operator input, and dns, classes and attributes checked against the real model.
#include <gtest/gtest.h>

#include "host/cli/CommandText.h"
#include "unit/host_cli/StationModel.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Words = std::vector<std::string>;

const char* const kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";

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

TEST(ModelViewTest, ResolvesDnsFromTheRootDown) {
    const ModelView& model = stationModel();
    Id moc = kNone;
    std::string error;
    ASSERT_TRUE(model.resolveDn(kCell, &moc, &error)) << error;
    EXPECT_EQ(model.className(moc), "EUtranCellFDD");
    // The relation class below a cell is one class whichever cell it is reached from.
    Id relation = kNone;
    ASSERT_TRUE(model.resolveDn(std::string(kCell) + ",EUtranFreqRelation=1", &relation, &error));
    EXPECT_EQ(model.className(relation), "EUtranFreqRelation");
    ASSERT_TRUE(model.resolveDn("ManagedElement=1", &moc, &error));
    EXPECT_EQ(model.className(moc), "ManagedElement");
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

TEST(ModelViewTest, AttributesComeInModelOrderKeyFirst) {
    const ModelView& model = stationModel();
    Id moc = kNone;
    std::string error;
    ASSERT_TRUE(model.resolveDn(kCell, &moc, &error));
    std::vector<Id> attributes = model.attributes(moc);
    ASSERT_GT(attributes.size(), 5u);
    EXPECT_EQ(model.attributeName(attributes[0]), "eUtranCellFDDId");
    Id attribute = kNone;
    ASSERT_TRUE(model.resolveAttribute(moc, "administrativeState", &attribute, &error));
    EXPECT_NE(std::find(attributes.begin(), attributes.end(), attribute), attributes.end());
    EXPECT_FALSE(model.resolveAttribute(moc, "nope", &attribute, &error));
    EXPECT_EQ(error, "unknown attribute 'nope' of class EUtranCellFDD");
}

}  // namespace
}  // namespace cli
}  // namespace host
}  // namespace vesk

// Values in the model's terms: containers as the agent returns them formatted by the real model,
// and operator texts parsed into containers, checked against the model's types.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "host/cli/ValueFormatter.h"
#include "host/cli/ValueParser.h"
#include "unit/host_cli/StationModel.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

const std::string kCell = "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=1";
const std::string kFreqRelation = kCell + ",EUtranFreqRelation=1";
const std::string kFrequency = "ManagedElement=1,ENodeBFunction=1,EUtraNetwork=1,EUtranFrequency=1";

// A container of `type` with `count` zeroed slots, freed like the agent's.
struct Built {
    Built(int32_t type, uint32_t count) {
        container.type = type;
        container.nrOfValues = count;
        container.values = static_cast<OrlMoAttributeValue_3*>(
            std::calloc(count == 0 ? 1 : count, sizeof(OrlMoAttributeValue_3)));
    }
    ~Built() { freeContainerContents(&container); }
    OrlMoAttributeValueContainer_3 container{0, 0, nullptr};
};

class ValueTest : public ::testing::Test {
  protected:
    Json parsed(const std::string& dn, const std::string& attribute, const std::string& text) {
        Id id = attributeAt(dn, attribute);
        ParsedValue value;
        std::string error;
        EXPECT_TRUE(_parser.parse(id, text, &value, &error)) << text << ": " << error;
        return _formatter.format(id, value.container());
    }
    std::string refusal(const std::string& dn, const std::string& attribute,
                        const std::string& text) {
        ParsedValue value;
        std::string error;
        EXPECT_FALSE(_parser.parse(attributeAt(dn, attribute), text, &value, &error)) << text;
        EXPECT_EQ(value.container()->nrOfValues, 0u) << "nothing kept after a refusal";
        return error;
    }

    const ModelView& _model = stationModel();
    ValueFormatter _formatter{stationModel()};
    ValueParser _parser{stationModel()};
};

TEST_F(ValueTest, EnumerationsShowTheirLiteralNameOrTheNumberTheModelLacks) {
    Id state = attributeAt(kCell, "administrativeState");
    int64_t unlocked = -1;
    ASSERT_TRUE(_model.literalNumber(state, "UNLOCKED", &unlocked));
    Built one(OrlOamSpiMoAttributeType_3_ENUM, 1);
    one.container.values[0].theEnum = unlocked;
    EXPECT_EQ(_formatter.format(state, &one.container), Json("UNLOCKED"));
    one.container.values[0].theEnum = 999;
    EXPECT_EQ(_formatter.format(state, &one.container), Json(999));
    EXPECT_EQ(_model.literalName(state, unlocked), "UNLOCKED");
}

TEST_F(ValueTest, StructMembersComeInModelOrderUnknownOnesLast) {
    Id plmn = attributeAt("ManagedElement=1,ENodeBFunction=1", "eNodeBPlmnId");
    Built value(OrlOamSpiMoAttributeType_3_STRUCT, 1);
    OrlMoAttributeValueStructMember_3** tail = &value.container.values[0].structMember;
    for (auto member :
         {std::make_pair("mnc", 91), std::make_pair("extra", 7), std::make_pair("mcc", 244)}) {
        auto* node = static_cast<OrlMoAttributeValueStructMember_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueStructMember_3)));
        node->memberName = strdup(member.first);
        node->memberValue = static_cast<OrlMoAttributeValueContainer_3*>(
            std::calloc(1, sizeof(OrlMoAttributeValueContainer_3)));
        node->memberValue->type = OrlOamSpiMoAttributeType_3_INT32;
        node->memberValue->nrOfValues = 1;
        node->memberValue->values =
            static_cast<OrlMoAttributeValue_3*>(std::calloc(1, sizeof(OrlMoAttributeValue_3)));
        node->memberValue->values[0].i32 = member.second;
        *tail = node;
        tail = &node->nextMember;
    }
    Json json = _formatter.format(plmn, &value.container);
    EXPECT_EQ(json.dump(), R"({"mcc":244,"mnc":91,"extra":7})");
    EXPECT_EQ(renderText(json), "{mcc=244, mnc=91, extra=7}");
}

TEST_F(ValueTest, ListsAreArraysAndMissingValuesNullOrEmpty) {
    Id reservedBy = attributeAt(kFrequency, "reservedBy");
    Id label = attributeAt(kFrequency, "userLabel");
    Built refs(OrlOamSpiMoAttributeType_3_REFERENCE, 2);
    refs.container.values[0].moRef = strdup("ManagedElement=1,A=1");
    refs.container.values[1].moRef = strdup("ManagedElement=1,B=2");
    EXPECT_EQ(_formatter.format(reservedBy, &refs.container).dump(),
              R"(["ManagedElement=1,A=1","ManagedElement=1,B=2"])");
    Built none(OrlOamSpiMoAttributeType_3_REFERENCE, 0);
    EXPECT_EQ(_formatter.format(reservedBy, &none.container), Json::array());
    EXPECT_TRUE(_formatter.format(label, &none.container).is_null());
    EXPECT_TRUE(_formatter.format(label, nullptr).is_null());
    // One value of a list attribute is still a list.
    refs.container.nrOfValues = 1;
    EXPECT_EQ(_formatter.format(reservedBy, &refs.container).size(), 1u);
    refs.container.nrOfValues = 2;
}

TEST_F(ValueTest, TextRenderingQuotesWhatTheParserWouldSplit) {
    EXPECT_EQ(renderText(Json()), "-");
    EXPECT_EQ(renderText(Json("Band 20")), "\"Band 20\"");
    EXPECT_EQ(renderText(Json("")), "\"\"");
    EXPECT_EQ(renderText(Json("a\"b")), "\"a\\\"b\"");
    EXPECT_EQ(renderText(Json("ManagedElement=1")), "\"ManagedElement=1\"");
    EXPECT_EQ(renderText(Json(true)), "true");
    EXPECT_EQ(renderText(Json::parse("[1, [], {}]")), "[1, [], {}]");
}

TEST_F(ValueTest, ParsedValuesComeBackAsTheyWereWritten) {
    EXPECT_EQ(parsed(kCell, "administrativeState", "LOCKED"), Json("LOCKED"));
    EXPECT_EQ(parsed(kCell, "physicalLayerCellIdGroup", "167"), Json(167));
    EXPECT_EQ(parsed(kCell, "resourcesAllocated", "false"), Json(false));
    EXPECT_EQ(parsed(kCell, "userLabel", "\"cell one, east\""), Json("cell one, east"));
    EXPECT_EQ(parsed(kCell, "userLabel", " cell [one] "), Json("cell [one]"));
    EXPECT_EQ(parsed(kFreqRelation, "eutranFrequencyRef", kFrequency), Json(kFrequency));
    EXPECT_EQ(parsed("ManagedElement=1,ENodeBFunction=1", "eNodeBPlmnId",
                     "{mcc=244, mnc = 91 ,mncLength=3}")
                  .dump(),
              R"({"mcc":244,"mnc":91,"mncLength":3})");
    Json list = parsed(kFreqRelation, "blackListEntry",
                       "[{startPci=100, pciRange=4}, {startPci=503, pciRange=1}]");
    EXPECT_EQ(renderText(list), "[{startPci=100, pciRange=4}, {startPci=503, pciRange=1}]");
    EXPECT_EQ(parsed(kFreqRelation, "blackListEntry", "[]"), Json::array());
    EXPECT_EQ(parsed(kFreqRelation, "blackListEntry", "{startPci=1, pciRange=2}").size(), 1u);
    // A negative number in its range, at the low end of its slot.
    Id offset = attributeAt(kFreqRelation + ",EUtranCellRelation=1", "cellIndividualOffsetEUtran");
    ParsedValue value;
    std::string error;
    ASSERT_TRUE(_parser.parse(offset, "-24", &value, &error)) << error;
    EXPECT_EQ(value.container()->type, OrlOamSpiMoAttributeType_3_INT32);
    EXPECT_EQ(value.container()->values[0].i32, -24);
    EXPECT_EQ(value.container()->values[0].u64 >> 32, 0u);
}

TEST_F(ValueTest, TextsThatDoNotFitAreRefusedWithOneLine) {
    EXPECT_NE(refusal(kCell, "physicalLayerCellIdGroup", "168")
                  .find("physicalLayerCellIdGroup: value '168' does not fit its type"),
              std::string::npos);
    EXPECT_NE(refusal(kCell, "resourcesAllocated", "yes").find("does not fit its type"),
              std::string::npos);
    EXPECT_EQ(refusal(kCell, "administrativeState", "[LOCKED]"),
              "administrativeState takes one value, not a list (enumeration "
              "LOCKED|UNLOCKED|SHUTTING_DOWN)");
    EXPECT_EQ(refusal(kFreqRelation, "blackListEntry", "5"),
              "blackListEntry takes a struct, written {member=value, ...}");
    EXPECT_NE(refusal(kFreqRelation, "blackListEntry", "[{startPci=1, pciRange=0}]")
                  .find("pciRange: value '0' does not fit its type"),
              std::string::npos);
    EXPECT_EQ(refusal(kFreqRelation, "blackListEntry", "[{startPci=1}"), "missing ']'");
    EXPECT_EQ(refusal(kFreqRelation, "blackListEntry", "[{startPci 1}]"),
              "a struct member must be written name=value");
    EXPECT_EQ(refusal(kCell, "userLabel", "\"open"), "unterminated quote");
    EXPECT_EQ(refusal(kFreqRelation, "blackListEntry", "[] x"), "unexpected 'x' after the value");
    EXPECT_EQ(refusal(kCell, "userLabel", ""), "a value is missing");
}

}  // namespace
}  // namespace cli
}  // namespace host
}  // namespace vesk

// The values of the write commands as the agent receives them (parsed from the command's words
// against the real model), and the host's own object implementers called through their records
// as the agent calls them.
#include <gtest/gtest.h>

#include <cstring>

#include "host/Host.h"
#include "host/cli/ValueParser.h"
#include "host/oi/ObjectImplementer.h"
#include "unit/host_cli/StationModel.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

using Words = std::vector<std::string>;

const std::string kEnb = "ManagedElement=1,ENodeBFunction=1";
const std::string kCell = kEnb + ",EUtranCellFDD=1";
const std::string kFreqRelation = kCell + ",EUtranFreqRelation=1";
const std::string kFrequency = kEnb + ",EUtraNetwork=1,EUtranFrequency=1";

class WriteValueTest : public ::testing::Test {
  protected:
    // Parses `words` for the attribute; the parse must succeed.
    const OrlMoAttributeValueContainer_3* parsed(const std::string& dn, const std::string& name,
                                                 const Words& words) {
        std::string error;
        EXPECT_TRUE(_parser.parseWords(attributeAt(dn, name), words, &_value, &error)) << error;
        return _value.container();
    }
    std::string refusal(const std::string& dn, const std::string& name, const Words& words) {
        std::string error;
        EXPECT_FALSE(_parser.parseWords(attributeAt(dn, name), words, &_value, &error));
        EXPECT_EQ(_value.container()->nrOfValues, 0u) << "nothing kept after a refusal";
        return error;
    }

    ValueParser _parser{stationModel()};
    ParsedValue _value;
};

TEST_F(WriteValueTest, WordsBecomeTheContainersTheAgentReceives) {
    const OrlMoAttributeValueContainer_3* c = parsed(kCell, "administrativeState", {"LOCKED"});
    int64_t locked = -1;
    ASSERT_TRUE(
        stationModel().literalNumber(attributeAt(kCell, "administrativeState"), "LOCKED", &locked));
    ASSERT_EQ(c->type, OrlOamSpiMoAttributeType_3_ENUM);
    ASSERT_EQ(c->nrOfValues, 1u);
    EXPECT_EQ(c->values[0].theEnum, locked);

    // No word: a container of the attribute's type with no slot deletes the value.
    c = parsed(kCell, "userLabel", {});
    EXPECT_EQ(c->type, OrlOamSpiMoAttributeType_3_STRING);
    EXPECT_EQ(c->nrOfValues, 0u);
    EXPECT_EQ(c->values, nullptr);

    // A dn is one plain word, commas and all; several dns are a list.
    c = parsed(kCell, "reservedBy", {kFreqRelation, kCell});
    ASSERT_EQ(c->type, OrlOamSpiMoAttributeType_3_REFERENCE);
    ASSERT_EQ(c->nrOfValues, 2u);
    EXPECT_STREQ(c->values[0].moRef, kFreqRelation.c_str());
    EXPECT_STREQ(c->values[1].moRef, kCell.c_str());

    // A struct without braces; a struct list as several such words.
    c = parsed(kEnb, "eNodeBPlmnId", {"mcc=244,mnc=91,mncLength=2"});
    ASSERT_EQ(c->type, OrlOamSpiMoAttributeType_3_STRUCT);
    EXPECT_EQ(oi::containerText(c, false), "{mcc=244, mnc=91, mncLength=2}");
    c = parsed(kFreqRelation, "blackListEntry",
               {"startPci=1,pciRange=2", "{startPci=7,pciRange=3}"});
    ASSERT_EQ(c->nrOfValues, 2u);
    EXPECT_EQ(oi::containerText(c, false), "[{startPci=1, pciRange=2}, {startPci=7, pciRange=3}]");
    // A single word may still be a whole list.
    EXPECT_EQ(parsed(kFreqRelation, "blackListEntry", {"[{startPci=1,pciRange=2}]"})->nrOfValues,
              1u);

    // take() hands the slots over and leaves the value empty.
    OrlMoAttributeValueContainer_3 taken = _value.take();
    EXPECT_EQ(taken.nrOfValues, 1u);
    EXPECT_EQ(_value.container()->nrOfValues, 0u);
    freeContainerContents(&taken);
}

TEST_F(WriteValueTest, RefusalsNameTheAttributeAndTheExpectedType) {
    EXPECT_EQ(refusal(kCell, "administrativeState", {"OPEN"}),
              "administrativeState: value 'OPEN' does not fit its type (enumeration "
              "LOCKED|UNLOCKED|SHUTTING_DOWN): Invalid enumeration value \"OPEN\".");
    EXPECT_EQ(refusal(kCell, "cellId", {"1", "2"}), "cellId takes one value, not 2 (int32)");
    std::string error = refusal(kCell, "physicalLayerCellIdGroup", {"x"});
    EXPECT_EQ(error.find("physicalLayerCellIdGroup: value 'x' does not fit its type ("), 0u)
        << error;
    EXPECT_EQ(refusal(kCell, "reservedBy", {kFrequency, ""}), "reservedBy: a value is missing");
    EXPECT_EQ(refusal(kFreqRelation, "blackListEntry", {"startPci=1,color=2"}),
              "unknown member 'color' of blackListEntry");
    EXPECT_EQ(stationModel().typeName(attributeAt(kFreqRelation, "blackListEntry")),
              "list of struct of startPci, pciRange");
    EXPECT_EQ(stationModel().typeName(attributeAt(kCell, "reservedBy")),
              "list of reference (a dn)");
}

// Calls of the agent's kind on one implementer's records.
class ObjectImplementerTest : public ::testing::Test {
  protected:
    static OrlMoAttributeValueContainer_3 enumValue(OrlMoAttributeValue_3* slot, int64_t number) {
        slot->u64 = 0;
        slot->theEnum = number;
        return OrlMoAttributeValueContainer_3{OrlOamSpiMoAttributeType_3_ENUM, 1, slot};
    }
};

TEST_F(ObjectImplementerTest, AnswersAsItsBehaviourSaysAndKeepsWhatItReceived) {
    oi::Behaviour behaviour;
    behaviour.kind = oi::Behaviour::kTryAgain;
    behaviour.tryAgainCount = 2;
    oi::ObjectImplementer dnOi(oi::Scope::kDn, kCell, behaviour);
    OrlOamSpiManagedObject_3* mo = dnOi.managedObject();
    EXPECT_STREQ(mo->header.interfaceVersion, "1");
    EXPECT_STREQ(dnOi.resource()->header.interfaceVersion, "2");
    EXPECT_STREQ(mo->header.componentName, dnOi.component()->componentName);

    OrlMoAttributeValue_3 slot;
    OrlMoAttributeValueContainer_3 value = enumValue(&slot, 300);
    EXPECT_EQ(mo->setMoAttribute(7, kCell.c_str(), "administrativeState", &value), OrlTryAgain);
    EXPECT_EQ(mo->setMoAttribute(7, kCell.c_str(), "administrativeState", &value), OrlTryAgain);
    EXPECT_EQ(mo->setMoAttribute(7, kCell.c_str(), "administrativeState", &value), OrlOk);
    EXPECT_EQ(mo->deleteMo(8, kCell.c_str()), OrlOk);
    EXPECT_EQ(dnOi.resource()->join(7), OrlOk);
    EXPECT_EQ(dnOi.txCounts().join, 1);
    ASSERT_EQ(dnOi.calls(), 4u);
    std::vector<oi::Received> got = dnOi.received();
    EXPECT_EQ(got[0].dn, kCell);
    EXPECT_EQ(got[0].attribute, "administrativeState");
    EXPECT_EQ(got[0].value, "300");  // the version 3 form keeps all 64 bits
    EXPECT_EQ(got[0].answer, OrlTryAgain);
    EXPECT_EQ(got[2].answer, OrlOk);
    EXPECT_EQ(got[3].operation, "deleteMo");
    EXPECT_EQ(got[3].tx, 8u);

    behaviour.kind = oi::Behaviour::kFail;
    behaviour.failCode = OrlValidationFailed;
    dnOi.setBehaviour(behaviour);
    EXPECT_EQ(mo->setMoAttribute(9, kCell.c_str(), "userLabel", &value), OrlValidationFailed);

    // A class implementer reads the older form: enumerations in 16 bits.
    oi::ObjectImplementer classOi(oi::Scope::kClass, "/ManagedElement/ENodeBFunction",
                                  oi::Behaviour());
    EXPECT_STREQ(classOi.managedObject()->header.interfaceVersion, "3");
    EXPECT_NE(classOi.id(), dnOi.id());
    slot.u64 = 0x7770005;  // high bits beyond the 16-bit literal are not read
    value.values = &slot;
    EXPECT_EQ(classOi.managedObject()->setMoAttribute(1, kEnb.c_str(), "x", &value), OrlOk);
    EXPECT_EQ(classOi.received()[0].value, "5");
}

TEST_F(ObjectImplementerTest, CreateIsKeptWithItsAttributes) {
    oi::ObjectImplementer classOi(oi::Scope::kClass, "/ManagedElement/ENodeBFunction/EUtranCellFDD",
                                  oi::Behaviour());
    ParsedValue label;
    std::string error;
    ASSERT_TRUE(ValueParser(stationModel())
                    .parseWords(attributeAt(kCell, "userLabel"), {"cell nine"}, &label, &error));
    OrlMoNamedAttributeValueContainer_3 named{const_cast<char*>("userLabel"), *label.container()};
    OrlMoNamedAttributeValueContainer_3* list[] = {&named, nullptr};
    EXPECT_EQ(classOi.managedObject()->createMo(3, kEnb.c_str(), "EUtranCellFDD", "eUtranCellFDDId",
                                                "9", list),
              OrlOk);
    ASSERT_EQ(classOi.calls(), 1u);
    EXPECT_EQ(classOi.received()[0].dn, kEnb + ",EUtranCellFDD=9");
    EXPECT_EQ(classOi.received()[0].value, "userLabel=\"cell nine\"");
}

TEST(BehaviourTest, ReadsTheThreeFormsAndRefusesTheRest) {
    oi::Behaviour behaviour;
    std::string error;
    ASSERT_TRUE(oi::parseBehaviour({"tryagain", "3"}, &behaviour, &error));
    EXPECT_EQ(behaviour.text(), "tryagain 3");
    ASSERT_TRUE(oi::parseBehaviour({"fail", "OrlValidationFailed"}, &behaviour, &error));
    EXPECT_EQ(behaviour.failCode, OrlValidationFailed);
    ASSERT_TRUE(oi::parseBehaviour({"fail", "-5"}, &behaviour, &error));
    EXPECT_EQ(behaviour.text(), "fail OrlReturn(-5)");
    ASSERT_TRUE(oi::parseBehaviour({"ok"}, &behaviour, &error));
    EXPECT_EQ(behaviour.kind, oi::Behaviour::kOk);
    for (const Words& bad : {Words{"fail", "0"}, Words{"fail", "OrlOk"}, Words{"tryagain", "-1"},
                             Words{"tryagain"}, Words{"maybe"}, Words{"ok", "1"}}) {
        EXPECT_FALSE(oi::parseBehaviour(bad, &behaviour, &error)) << bad[0];
    }
    EXPECT_EQ(behaviour.kind, oi::Behaviour::kOk) << "a refusal leaves the behaviour";
}

TEST(ImplementersTest, WithoutAnAgentNothingIsLeftBehind) {
    Host host;
    int id = 0;
    std::string error;
    EXPECT_EQ(host.implementers().add(oi::Scope::kDn, kCell, oi::Behaviour(), &id, &error),
              OrlNotExist);
    EXPECT_EQ(error, "the agent takes no object implementers");
    EXPECT_TRUE(host.implementers().all().empty());
    EXPECT_EQ(host.components().size(), 0u);
    EXPECT_EQ(host.implementers().remove(1, &error), OrlNotExist);
}

}  // namespace
}  // namespace cli
}  // namespace host
}  // namespace vesk

// The mapping of edit-config data onto the agent's calls, on the real agent and the demo station:
// each row's edit runs in a transaction of its own that is then aborted, and the calls made
// (recorded on their way to the agent) and the refusals are compared.
#include <libyang/libyang.h>

#include "e2e/HostFixture.h"
#include "host/netconf/AgentEdits.h"
#include "host/netconf/Schemas.h"

namespace {

using namespace vesk::e2e;
using vesk::host::cli::Id;
using vesk::host::netconf::EditOp;
using vesk::host::netconf::EditRefusal;

// Passes every call to the agent and notes the writes, one line each.
class EditRecorder : public vesk::host::netconf::AgentEdits {
  public:
    using AgentEdits::AgentEdits;
    std::string calls;

    bool create(const std::string& parentDn, Id parent, Id moc, const std::string& id,
                const std::vector<std::pair<Id, Json>>& attributes, EditRefusal* r) override {
        note("create " + parentDn + " " + id);
        for (const auto& [attribute, value] : attributes)
            calls += " " + std::to_string(attribute) + "=" + value.dump();
        return AgentEdits::create(parentDn, parent, moc, id, attributes, r);
    }
    bool set(const std::string& dn, Id moc, Id attribute, const Json& value,
             EditRefusal* r) override {
        note("set " + dn + " " + std::to_string(attribute) + "=" + value.dump());
        return AgentEdits::set(dn, moc, attribute, value, r);
    }
    bool remove(const std::string& dn, Id moc, EditRefusal* r) override {
        note("delete " + dn);
        return AgentEdits::remove(dn, moc, r);
    }

  private:
    void note(const std::string& line) { calls += (calls.empty() ? "" : "; ") + line; }
};

const char* const kNs = "urn:vesk:params:xml:ns:yang:vesk-station";
const char* const kNc = "urn:ietf:params:xml:ns:netconf:base:1.0";

// `inner` inside ManagedElement=1,ENodeBFunction=1.
std::string enbEdit(const std::string& inner) {
    return std::string("<ManagedElement xmlns='") + kNs + "' xmlns:nc='" + kNc +
           "'><managedElementId>1</managedElementId><ENodeBFunction><eNodeBFunctionId>1"
           "</eNodeBFunctionId>" +
           inner + "</ENodeBFunction></ManagedElement>";
}

std::string cell(const std::string& id, const std::string& inner, const std::string& op = "") {
    return "<EUtranCellFDD" + (op.empty() ? "" : " nc:operation='" + op + "'") +
           "><eUtranCellFDDId>" + id + "</eUtranCellFDDId>" + inner + "</EUtranCellFDD>";
}

class NetconfEditTest : public HostFixture {
  protected:
    void SetUp() override {
        HostFixture::SetUp();
        ASSERT_NO_FATAL_FAILURE(startAgentShell());
        std::string error;
        ASSERT_TRUE(_schemas.load(kData + "/model", kData + "/netconf", &error)) << error;
    }
    // The id of attribute `name` of the class of `dn`, as the recorder writes it.
    std::string id(const std::string& dn, const char* name) {
        Id klass = vesk::host::cli::kNone;
        Id attribute = vesk::host::cli::kNone;
        std::string error;
        EXPECT_TRUE(_view->resolveDn(dn, &klass, &error)) << error;
        EXPECT_TRUE(_view->resolveAttribute(klass, name, &attribute, &error)) << error;
        return std::to_string(attribute);
    }

    vesk::host::netconf::Schemas _schemas;
};

TEST_F(NetconfEditTest, OperationsMapOntoTheAgentsCalls) {
    const std::string tac = id(kCell, "tac");
    const std::string label = id(kCell, "userLabel");
    const std::string cellId = id(kCell, "cellId");
    const std::string earfcn = id(kCell, "earfcndl");
    const std::string black = id(kCell + ",EUtranFreqRelation=1", "blackListEntry");
    const std::string cell1 = kCell;
    const std::string relation =
        "<EUtranFreqRelation><eUtranFreqRelationId>1"
        "</eUtranFreqRelationId>";
    struct Row {
        const char* name;
        EditOp defaultOp;
        std::string edit;  // inside ENodeBFunction=1
        std::string calls;
        std::vector<EditRefusal::Tag> refusals;
    };
    const Row rows[] = {
        {"merge sets what changed only",
         EditOp::kMerge,
         cell("1", "<tac>7</tac><earfcndl>6300</earfcndl>"),
         "set " + cell1 + " " + tac + "=\"7\"",
         {}},
        {"merge of a missing MO creates it with its attributes",
         EditOp::kMerge,
         cell("9", "<cellId>9</cellId><earfcndl>6300</earfcndl>"),
         "create " + kEnb + " 9 " + cellId + "=\"9\" " + earfcn + "=\"6300\"",
         {}},
        {"create of an existing MO",
         EditOp::kMerge,
         cell("1", "", "create"),
         "",
         {EditRefusal::kDataExists}},
        {"delete of an MO",
         EditOp::kMerge,
         cell("3", "", "delete"),
         "delete " + kEnb + ",EUtranCellFDD=3",
         {}},
        {"delete of a missing MO",
         EditOp::kMerge,
         cell("9", "", "delete"),
         "",
         {EditRefusal::kDataMissing}},
        {"remove of a missing MO does nothing", EditOp::kMerge, cell("9", "", "remove"), "", {}},
        {"remove of a leaf without value does nothing",
         EditOp::kMerge,
         cell("1", "<userLabel nc:operation='remove'/>"),
         "",
         {}},
        {"delete of a leaf without value",
         EditOp::kMerge,
         cell("1", "<userLabel nc:operation='delete'/>"),
         "",
         {EditRefusal::kDataMissing}},
        {"create of a leaf with a value",
         EditOp::kMerge,
         cell("1", "<tac nc:operation='create'>5</tac>"),
         "",
         {EditRefusal::kDataExists}},
        {"default none leaves entries alone and reaches the leaf",
         EditOp::kNone,
         cell("1", "<userLabel nc:operation='merge'>x</userLabel>"),
         "set " + cell1 + " " + label + "=\"x\"",
         {}},
        {"default none on a missing MO",
         EditOp::kNone,
         cell("9", "<tac>1</tac>"),
         "",
         {EditRefusal::kDataMissing}},
        {"struct list entry merged over the current list",
         EditOp::kMerge,
         cell("1", relation + "<blackListEntry><startPci>200</startPci><pciRange>2</pciRange>"
                              "</blackListEntry></EUtranFreqRelation>"),
         "set " + cell1 + ",EUtranFreqRelation=1 " + black +
             "=[{\"startPci\":100,\"pciRange\":4},{\"startPci\":\"200\",\"pciRange\":\"2\"}]",
         {}},
        {"struct list entry deleted by its keys",
         EditOp::kMerge,
         cell("1", relation + "<blackListEntry nc:operation='delete'><startPci>100</startPci>"
                              "</blackListEntry></EUtranFreqRelation>"),
         "set " + cell1 + ",EUtranFreqRelation=1 " + black + "=[]",
         {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        lyd_node* edit = nullptr;
        const std::string xml = enbEdit(row.edit);
        ASSERT_EQ(
            lyd_parse_data_mem(_schemas.context(), xml.c_str(), LYD_XML,
                               LYD_PARSE_ONLY | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, 0, &edit),
            LY_SUCCESS)
            << ly_errmsg(_schemas.context());
        vesk::host::cli::Executor executor(*_host, *_view);
        vesk::host::cli::Answer begun;
        executor.begin(&begun);
        ASSERT_FALSE(begun.failed()) << begun.error;
        EditRecorder target(executor, *_view);
        std::vector<EditRefusal> refusals;
        bool ok = vesk::host::netconf::EditMapper(*_view, target)
                      .apply(edit, row.defaultOp, false, &refusals);
        lyd_free_siblings(edit);
        vesk::host::cli::Answer ended;
        executor.abort(&ended);
        EXPECT_EQ(target.calls, row.calls);
        std::vector<EditRefusal::Tag> tags;
        for (const EditRefusal& refusal : refusals)
            tags.push_back(refusal.tag);
        EXPECT_EQ(tags, row.refusals);
        EXPECT_EQ(ok, row.refusals.empty());
    }
    // Every row was aborted: the station is as loaded.
    EXPECT_EQ(run("get " + kCell + " tac")["result"]["tac"], 100);
    EXPECT_EQ(run("exists " + kEnb + ",EUtranCellFDD=3")["result"], true);
}

// replace on an MO clears the writable attributes it does not give and deletes the child MOs it
// does not list; keys and read-only attributes stay.
TEST_F(NetconfEditTest, ReplaceClearsWhatItDoesNotGive) {
    lyd_node* edit = nullptr;
    const std::string xml =
        enbEdit(cell("2", "<earfcndl>6300</earfcndl><cellId>2</cellId>", "replace"));
    ASSERT_EQ(lyd_parse_data_mem(_schemas.context(), xml.c_str(), LYD_XML,
                                 LYD_PARSE_ONLY | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE, 0, &edit),
              LY_SUCCESS);
    vesk::host::cli::Executor executor(*_host, *_view);
    vesk::host::cli::Answer answer;
    executor.begin(&answer);
    EditRecorder target(executor, *_view);
    std::vector<EditRefusal> refusals;
    vesk::host::netconf::EditMapper(*_view, target).apply(edit, EditOp::kMerge, true, &refusals);
    lyd_free_siblings(edit);
    executor.abort(&answer);
    const std::string cell2 = kEnb + ",EUtranCellFDD=2";
    EXPECT_NE(target.calls.find("set " + cell2 + " " + id(kCell, "tac") + "=null"),
              std::string::npos)
        << target.calls;
    EXPECT_NE(target.calls.find("delete " + cell2 + ",EUtranFreqRelation=1"), std::string::npos)
        << target.calls;
    EXPECT_EQ(target.calls.find(id(kCell, "cellId") + "="), std::string::npos) << target.calls;
    EXPECT_EQ(target.calls.find(id(kCell, "operationalState") + "="), std::string::npos)
        << target.calls;
}

}  // namespace

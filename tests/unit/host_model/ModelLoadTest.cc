// Loading a model: what YANG statements the repository reports for a small module of our own,
// and the file, line and reason of a model that is missing or invalid.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "unit/host_model/RepositoryClient.h"

namespace vesk::host::model {
namespace {

const char kProbeModule[] = R"(module probe {
  yang-version 1.1;
  namespace "urn:probe";
  prefix p;
  import vesk-extensions { prefix vx; }
  vx:mom-name "Probe";
  vx:mom-version "2.1";
  typedef level { type uint16 { range "1..9"; } }
  list ManagedElement {
    key "managedElementId";
    leaf managedElementId { type string; }
    leaf twice {
      type int32;
      vx:takes-effect "At node restart";
      vx:takes-effect "Cell lock/unlock";
    }
    leaf-list flags { type boolean; max-elements 4; default "true"; default "false"; }
    leaf level { type level; default "3"; }
    leaf-list one { type int32; max-elements 1; }
  }
}
)";

class ModelLoadTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-model-load-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        std::filesystem::copy_file(std::string(VESK_DATA_DIR) + "/model/vesk-extensions.yang",
                                   _dir + "/vesk-extensions.yang");
    }
    void TearDown() override { std::filesystem::remove_all(_dir); }

    void write(const std::string& name, const std::string& text) {
        std::ofstream(_dir + "/" + name) << text;
    }
    // Loads `module` and expects a failure; returns the message.
    std::string failure(const std::string& module) {
        ModelSchema schema;
        std::string error;
        EXPECT_FALSE(schema.load(_dir, module, &error));
        EXPECT_FALSE(schema.loaded());
        return error;
    }

    std::string _dir;
};

TEST_F(ModelLoadTest, ReportsEveryTakesEffectListDefaultsAndTheMom) {
    write("probe.yang", kProbeModule);
    ModelSchema schema;
    std::string error;
    ASSERT_TRUE(schema.load(_dir, "probe", &error)) << error;
    ModelRepository repository(schema);
    RepositoryClient c(repository);

    // Both extensions, in model order: the agent's last match is "Cell lock/unlock".
    using Extensions = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(
        c.extensions(c.attribute("ManagedElement=1", "twice")),
        (Extensions{{"takesEffect", "At node restart"}, {"takesEffect", "Cell lock/unlock"}}));
    OrlOamSpiTypeContainerHandleT flags = c.typeContainer(c.attribute("ManagedElement=1", "flags"));
    EXPECT_EQ(c.defaults(flags), (std::vector<std::string>{"true", "false"}));
    EXPECT_EQ(c.multiplicity(flags), std::make_pair(0, 4));
    EXPECT_EQ(c.type(flags), 10);
    EXPECT_EQ(c.types("ManagedElement=1", "level"), std::make_pair(13, 6));
    EXPECT_EQ(c.defaults(c.typeContainer(c.attribute("ManagedElement=1", "level"))),
              std::vector<std::string>{"3"});
    EXPECT_EQ(c.multiplicity(c.typeContainer(c.attribute("ManagedElement=1", "one"))),
              std::make_pair(0, 1))
        << "a leaf-list of at most one value is no list";

    OrlOamSpiMocHandleT moc = 0;
    EXPECT_EQ(c.r3.getRequestedMoc("Probe", "2.1", "ManagedElement", &moc), 0);
    EXPECT_EQ(moc, c.moc("ManagedElement=1"));
}

TEST_F(ModelLoadTest, NamesTheFileLineAndReasonOfABadModel) {
    EXPECT_EQ(failure("absent"), _dir + "/absent.yang: cannot open the file");

    std::string text = kProbeModule;
    text.replace(text.find("leaf level {"), 4, "leef");  // line 18
    write("probe.yang", text);
    EXPECT_EQ(failure("probe").rfind(_dir + "/probe.yang:18: ", 0), 0u) << failure("probe");

    // An error found after parsing names the file and the schema place.
    text = kProbeModule;
    text.replace(text.find("default \"3\""), 11, "default \"12\"");
    write("probe.yang", text);
    std::string late = failure("probe");
    EXPECT_EQ(late.rfind(_dir + "/probe.yang: ", 0), 0u) << late;
    EXPECT_NE(late.find("12"), std::string::npos) << late;

    // A submodule's error names the submodule's file.
    write("main.yang",
          "module main { yang-version 1.1; namespace \"urn:m\"; prefix m;\n"
          "  include sub;\n}\n");
    write("sub.yang",
          "submodule sub { yang-version 1.1; belongs-to main { prefix m; }\n"
          "  leaf x { tipe string; }\n}\n");
    std::string sub = failure("main");
    EXPECT_EQ(sub.rfind(_dir + "/sub.yang:2: ", 0), 0u) << sub;

    write("flat.yang",
          "module flat { yang-version 1.1; namespace \"urn:f\"; prefix f;\n"
          "  leaf x { type string; }\n}\n");
    EXPECT_EQ(failure("flat"), "module flat has no class ManagedElement at its top");
}

}  // namespace
}  // namespace vesk::host::model

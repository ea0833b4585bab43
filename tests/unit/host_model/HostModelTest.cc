// The host with its model: the repository records replace the stubs, the options that point at
// the model, the instance file and the station to load, and vesk-host's --load.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/Host.h"
#include "host/HostOptions.h"
#include "station/database/Database.h"

namespace vesk::host {
namespace {

const std::string kModelData = VESK_DATA_DIR;

class HostModelTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-host-model-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(_dir); }

    OrlOamSpiModelRepository_3* record3(Host& host) {
        void* record = nullptr;
        EXPECT_EQ(host.portal().getInterface("OrlOamSpiModelRepositoryService",
                                             "OrlOamSpiModelRepository", "3", &record),
                  0);
        return static_cast<OrlOamSpiModelRepository_3*>(record);
    }
    // Runs vesk-host; returns its exit status, with standard output and error in `output`.
    int runHost(const std::string& arguments, std::string* output) {
        std::string command =
            std::string(VESK_HOST_PATH) + " " + arguments + " < /dev/null > " + _dir + "/out 2>&1";
        int raw = std::system(command.c_str());
        std::ifstream in(_dir + "/out");
        std::stringstream text;
        text << in.rdbuf();
        *output = text.str();
        return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    }

    std::string _dir;
};

TEST_F(HostModelTest, TheLoadedModelReplacesTheStubRecords) {
    Host host;
    OrlOamSpiMocHandleT moc = 0;
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), OrlNotExist) << "the stub";
    std::string error;
    EXPECT_FALSE(host.loadModel(_dir + "/none", &error));
    EXPECT_EQ(error, _dir + "/none/vesk-station.yang: cannot open the file");
    EXPECT_EQ(host.model(), nullptr);
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), OrlNotExist) << "still the stub";

    ASSERT_TRUE(host.loadModel(kModelData + "/model", &error)) << error;
    ASSERT_NE(host.model(), nullptr);
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), 0);
    EXPECT_EQ(moc, model::makeHandle(model::Kind::kMoc, host.model()->mocByClass("RbsUnit")));
}

TEST_F(HostModelTest, OptionsPointAtTheModelTheInstanceFileAndTheStation) {
    std::vector<const char*> args = {"vesk-host", "--load", "/d/demo.xml"};
    HostOptions options;
    std::string error;
    ASSERT_TRUE(parseHostOptions(static_cast<int>(args.size()), args.data(), &options, &error))
        << "--load needs no plug-in: " << error;
    EXPECT_EQ(options.loadStation, "/d/demo.xml");
    EXPECT_EQ(options.stationObjects, "/d/station-objects.xml");
    EXPECT_EQ(options.modelDirectory, kModelData + "/model");
    EXPECT_EQ(options.systemCreatedMos, kModelData + "/conf/system_created_MOs.xml");

    args = {"vesk-host", "-p",     "a.so",  "--model",           "/m",    "--system-created-mos",
            "/c.xml",    "--load", "x.xml", "--station-objects", "/o.xml"};
    ASSERT_TRUE(parseHostOptions(static_cast<int>(args.size()), args.data(), &options, &error));
    EXPECT_EQ(options.modelDirectory, "/m");
    EXPECT_EQ(options.systemCreatedMos, "/c.xml");
    EXPECT_EQ(options.stationObjects, "/o.xml");
}

TEST_F(HostModelTest, VeskHostLoadsTheDemoOnceAndStopsOnABadModel) {
    std::string output;
    std::string load = "--load " + kModelData + "/station/demo-station.xml --state " + _dir + "/s";
    EXPECT_EQ(runHost(load, &output), 0) << output;
    EXPECT_NE(output.find("vesk-host: loaded "), std::string::npos) << output;
    EXPECT_NE(output.find(" objects into " + _dir + "/s\n"), std::string::npos) << output;

    EXPECT_EQ(runHost(load, &output), 7);
    EXPECT_NE(output.find("vesk-host: the state directory " + _dir + "/s is not empty"),
              std::string::npos)
        << output;

    std::filesystem::create_directory(_dir + "/m");
    std::ofstream(_dir + "/m/vesk-station.yang") << "module vesk-station {\n  oops;\n}\n";
    EXPECT_EQ(runHost(load + "2 --model " + _dir + "/m", &output), 6);
    EXPECT_NE(output.find("vesk-host: cannot load the model: " + _dir + "/m/vesk-station.yang:2: "),
              std::string::npos)
        << output;
    EXPECT_FALSE(std::filesystem::exists(_dir + "/s2")) << "stopped before the state opened";
}

TEST_F(HostModelTest, ASecondProcessOnABusyStateDirectoryIsRefusedAtOnce) {
    std::string error, output;
    ASSERT_TRUE(vesk::db::open(_dir + "/s", &error)) << error;
    const std::string start = "--plugin " + _dir + "/none.so --create-state --state " + _dir + "/s";
    EXPECT_EQ(runHost(start, &output), 2);
    EXPECT_NE(output.find("vesk-host: the state directory " + _dir + "/s is in use by process " +
                          std::to_string(getpid()) + "\n"),
              std::string::npos)
        << output;
    vesk::db::close();
    EXPECT_EQ(runHost(start, &output), 3) << "past the state, at the missing plug-in: " << output;
}

}  // namespace
}  // namespace vesk::host

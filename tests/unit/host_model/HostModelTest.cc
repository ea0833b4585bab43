// The host with its model: the repository records replace the stubs, and the options that point
// at the model, the instance file and the station to load.
#include <gtest/gtest.h>

#include "host/Host.h"
#include "host/HostOptions.h"

namespace vesk::host {
namespace {

const std::string kModelData = VESK_DATA_DIR;

OrlOamSpiModelRepository_3* record3(Host& host) {
    void* record = nullptr;
    EXPECT_EQ(host.portal().getInterface("OrlOamSpiModelRepositoryService",
                                         "OrlOamSpiModelRepository", "3", &record),
              0);
    return static_cast<OrlOamSpiModelRepository_3*>(record);
}

TEST(HostModelTest, TheLoadedModelReplacesTheStubRecords) {
    Host host;
    OrlOamSpiMocHandleT moc = 0;
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), OrlNotExist) << "the stub";
    std::string error;
    EXPECT_FALSE(host.loadModel("/nonexistent", &error));
    EXPECT_EQ(error, "/nonexistent/vesk-station.yang: cannot open the file");
    EXPECT_EQ(host.model(), nullptr);
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), OrlNotExist) << "still the stub";

    ASSERT_TRUE(host.loadModel(kModelData + "/model", &error)) << error;
    ASSERT_NE(host.model(), nullptr);
    EXPECT_EQ(record3(host)->getMocByDn("RbsUnit=1", &moc), 0);
    EXPECT_EQ(moc, model::makeHandle(model::Kind::kMoc, host.model()->mocByClass("RbsUnit")));
}

TEST(HostModelTest, OptionsPointAtTheModelTheInstanceFileAndTheStation) {
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

}  // namespace
}  // namespace vesk::host

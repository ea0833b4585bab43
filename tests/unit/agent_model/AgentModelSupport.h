// Shared set-up of the agent model tests: the host's repository over the station model or the
// small test model, and a station database in a fresh temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "host/model/ModelRepository.h"
#include "model/VeskInstanceModel.h"
#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "station/database/Database.h"

namespace agent_model_test {

const std::string kDataDir = VESK_DATA_DIR;
const std::string kTestDataDir = VESK_TEST_DATA_DIR;

inline std::string makeTempDir(const char* stem) {
    std::string pattern = std::string("/tmp/") + stem + "-XXXXXX";
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    return pattern;
}

// Loads the station model, or the test model (beside a copy of the extensions module, which it
// imports), once per process.
inline const vesk::host::model::ModelSchema& stationSchema() {
    static vesk::host::model::ModelSchema* schema = [] {
        auto* s = new vesk::host::model::ModelSchema;
        std::string error;
        EXPECT_TRUE(s->load(kDataDir + "/model", "vesk-station", &error)) << error;
        return s;
    }();
    return *schema;
}

inline const vesk::host::model::ModelSchema& testSchema() {
    static vesk::host::model::ModelSchema* schema = [] {
        std::string dir = makeTempDir("vesk-amodel-yang");
        namespace fs = std::filesystem;
        fs::copy_file(kDataDir + "/model/vesk-extensions.yang", dir + "/vesk-extensions.yang");
        fs::copy_file(kTestDataDir + "/agent-test.yang", dir + "/agent-test.yang");
        auto* s = new vesk::host::model::ModelSchema;
        std::string error;
        EXPECT_TRUE(s->load(dir, "agent-test", &error)) << error;
        fs::remove_all(dir);
        return s;
    }();
    return *schema;
}

// The host repository over `schema`, handed to the agent's repository as its start does; the
// instance file is `instanceFile` and is read afresh.
class ModelHarness {
  public:
    ModelHarness(const vesk::host::model::ModelSchema& schema, const std::string& instanceFile)
        : _host(schema) {
        setenv(TibVeskCM::VeskInstanceModel::kPathVariable, instanceFile.c_str(), 1);
        TibVeskCM::VeskInstanceModel::instance()->reset();
        repo()->initialize(_host.record2(), _host.record3());
    }
    ~ModelHarness() {
        TibVeskCM::VeskInstanceModel::instance()->reset();
        unsetenv(TibVeskCM::VeskInstanceModel::kPathVariable);
    }
    static TibVeskCM::VeskModelRepository* repo() {
        return TibVeskCM::VeskModelRepository::instance();
    }
    vesk::host::model::ModelRepository& host() { return _host; }

  private:
    vesk::host::model::ModelRepository _host;
};

// A station database in its own temporary folder, with "ManagedElement=1" committed.
class StationDatabase {
  public:
    StationDatabase() : _dir(makeTempDir("vesk-amodel-db")) {
        std::string error;
        _open = vesk::db::open(_dir, &error);
        EXPECT_TRUE(_open) << error;
        DBObject me("ManagedElement=1", 1, true, false, IPCData::OPSTATE_ENABLED,
                    IPCData::ADMSTATE_UNLOCKED);
        EXPECT_NE(IDatabase::insert(&me, 0), 0);
    }
    ~StationDatabase() {
        if (_open)
            vesk::db::close();
        std::filesystem::remove_all(_dir);
    }
    int begin() { return IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false); }

  private:
    std::string _dir;
    bool _open = false;
};

}  // namespace agent_model_test

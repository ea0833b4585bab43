// Shared set-up of the host's end-to-end tests: a host of the test's own over a fresh state
// folder, removed with everything in it at the end.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "host/Host.h"

namespace vesk {
namespace e2e {

// One interface a component fetches from the host's portal.
struct Fetch {
    const char* service;
    const char* interfaceName;
    const char* version;
};

// The fetches an agent makes in its start, in order; each may be refused.
inline const Fetch kStartFetches[] = {
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1"},
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "1"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "3"},
    {"OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2"},
    {"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"},
};
inline const int kStartFetchCount = 7;

class HostFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/vesk-host-e2e-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        _dir = pattern;
        _host.reset(new host::Host);
        std::string error;
        ASSERT_TRUE(_host->openState(_dir, &error)) << error;
    }
    void TearDown() override {
        _host.reset();
        std::filesystem::remove_all(_dir);
    }
    // Loads the plug-in at `path`; asserts that it loaded.
    void loadPlugin(const char* path) {
        std::string error;
        ASSERT_EQ(_host->load(path, &error), host::Host::kLoaded) << error;
    }
    int fetches(const Fetch& f) {
        return _host->portal().fetchCount(f.service, f.interfaceName, f.version);
    }

    std::string _dir;
    std::unique_ptr<host::Host> _host;
};

}  // namespace e2e
}  // namespace vesk

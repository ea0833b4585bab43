// Support shared by the benchmarks that drive the real agent in the reference host.
#pragma once

#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "host/Host.h"
#include "host/model/StationLoader.h"

namespace vesk {
namespace bench {

// A host on the state directory `dir` with the station model and the demo station loaded (the
// agent not yet). Aborts with the reason on failure: a benchmark without its station is void.
// `objects`, when given, receives the number of objects the demo station holds.
inline std::unique_ptr<host::Host> openDemoHost(const std::string& dir, const std::string& dataDir,
                                                size_t* objects = nullptr) {
    auto result = std::make_unique<host::Host>();
    std::string error;
    if (!result->openState(dir, &error) || !result->loadModel(dataDir + "/model", &error)) {
        fprintf(stderr, "%s\n", error.c_str());
        abort();
    }
    host::model::StationLoader loader(*result->model());
    if (!loader.load(dataDir + "/station/demo-station.xml",
                     dataDir + "/station/station-objects.xml", &error)) {
        fprintf(stderr, "%s\n", error.c_str());
        abort();
    }
    if (objects != nullptr)
        *objects = loader.objectCount();
    return result;
}

// Reports the median and the 99th percentile of `us` as p50_us and p99_us; sorts `us`.
inline void reportPercentiles(benchmark::State& state, std::vector<double>& us) {
    if (us.empty())
        return;
    std::sort(us.begin(), us.end());
    state.counters["p50_us"] = us[us.size() / 2];
    state.counters["p99_us"] = us[us.size() * 99 / 100];
}

}  // namespace bench
}  // namespace vesk

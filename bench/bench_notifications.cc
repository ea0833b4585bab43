// Change event delivery: events per second from publishChanges to the subscriber's queue.
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/IDatabase.h"
#include "platform/IEventAware.h"
#include "station/database/ChangeFeed.h"
#include "station/database/Notifier.h"

namespace {

using vesk::db::AttributeChange;
using vesk::db::ObjectChange;

// Copies each event, as a framework queue does, and counts it.
class CountingQueue : public VESK::Framework::IEventAware {
  public:
    bool enqueueEvent(VESK::Framework::Event const& event, bool) override {
        delete event.copyEvent();
        _count.fetch_add(1, std::memory_order_relaxed);
        return true;
    }
    int processEvent(VESK::Framework::Event&) override { return 1; }
    long count() const { return _count.load(); }

  private:
    std::atomic<long> _count{0};
};

// One commit of `objects` updates of `attributes` attributes each.
std::vector<ObjectChange> commitOf(int objects, int attributes) {
    std::vector<ObjectChange> changes;
    for (int o = 0; o < objects; ++o) {
        ObjectChange change{IPCData::OP_UPDATE,
                            "ManagedElement=1,ENodeBFunction=1,EUtranCellFDD=" + std::to_string(o),
                            "EUtranCellFDD=" + std::to_string(o),
                            "EUtranCellFDD",
                            true,
                            {}};
        for (int a = 0; a < attributes; ++a) {
            change.attributes.push_back(AttributeChange{"attr" + std::to_string(a), a,
                                                        IPCData::AVT_INT32, false, false, -1});
        }
        changes.push_back(std::move(change));
    }
    return changes;
}

// Arguments: objects per commit, attributes per object, number of all-changes subscribers.
void BM_Delivery(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    const int attributes = static_cast<int>(state.range(1));
    std::vector<CountingQueue> queues(static_cast<size_t>(state.range(2)));
    for (CountingQueue& queue : queues) {
        IDatabase::registerToNotif(1004, "", 1, &queue, "", 0, 2, 1);
    }
    const std::vector<ObjectChange> commit = commitOf(objects, attributes);
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i)
            vesk::db::publishChanges(std::vector<ObjectChange>(commit));
        vesk::db::notifierFlush();
    }
    long events = 0;
    for (CountingQueue& queue : queues)
        events += queue.count();
    state.counters["events/s"] =
        benchmark::Counter(static_cast<double>(events), benchmark::Counter::kIsRate);
    vesk::db::notifierStop();
}
BENCHMARK(BM_Delivery)
    ->Args({1, 1, 1})
    ->Args({1, 10, 1})
    ->Args({10, 3, 1})
    ->Args({1, 1, 4})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// A status subscriber among many changes that do not concern it: the cost of matching.
void BM_StatusFilter(benchmark::State& state) {
    CountingQueue queue;
    IDatabase::registerToNotif(1004, "OAM", 1, &queue, "TIBStatus", 0, 0, 0);
    const std::vector<ObjectChange> commit = commitOf(10, 3);
    long changes = 0;
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i)
            vesk::db::publishChanges(std::vector<ObjectChange>(commit));
        vesk::db::notifierFlush();
        changes += 100 * 10;
    }
    state.counters["changes/s"] =
        benchmark::Counter(static_cast<double>(changes), benchmark::Counter::kIsRate);
    vesk::db::notifierStop();
}
BENCHMARK(BM_StatusFilter)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

#include "station/database/StateLoader.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vesk {
namespace db {

namespace {

// Objects are handed to the indexer this many at a time.
constexpr size_t kBatch = 256;

// What the reader hands to the indexer, and what the indexer answers.
class Handoff {
  public:
    // The reader's side: false once the indexer has refused an object (the read should stop).
    bool give(std::vector<ObjectPtr>* objects) {
        std::lock_guard<std::mutex> lock(_mutex);
        _given.insert(_given.end(), std::make_move_iterator(objects->begin()),
                      std::make_move_iterator(objects->end()));
        objects->clear();
        _ready.notify_one();
        return _twice.empty();
    }
    void finish() {
        std::lock_guard<std::mutex> lock(_mutex);
        _finished = true;
        _ready.notify_one();
    }

    // The indexer's side: waits for objects; false once the reader has finished and every object
    // was taken.
    bool take(std::vector<ObjectPtr>* objects) {
        std::unique_lock<std::mutex> lock(_mutex);
        _ready.wait(lock, [this] { return !_given.empty() || _finished; });
        objects->swap(_given);
        return !objects->empty();
    }
    void refuse(const std::string& fullDn) {
        std::lock_guard<std::mutex> lock(_mutex);
        _twice = fullDn;
    }
    // The dn stored twice; "" if none. Read after the indexer has ended.
    const std::string& twice() const { return _twice; }

  private:
    std::mutex _mutex;
    std::condition_variable _ready;
    std::vector<ObjectPtr> _given;
    bool _finished = false;
    std::string _twice;
};

// Indexes what `handoff` gives until the reader has finished or an object is there twice.
void index(Handoff& handoff, CommittedState& state) {
    std::vector<ObjectPtr> objects;
    while (handoff.take(&objects)) {
        for (const ObjectPtr& object : objects) {
            if (!state.add(object)) {
                handoff.refuse(object->fullDn);
                return;
            }
        }
        objects.clear();
    }
}

}  // namespace

bool loadState(SqliteStore& store, const std::string& path, CommittedState* state,
               std::string* error) {
    state->reserve(store.objectsAtMost());
    Handoff handoff;
    std::thread indexer([&handoff, state] { index(handoff, *state); });
    std::vector<ObjectPtr> batch;
    batch.reserve(kBatch);
    bool read = store.loadAll(
        [&](StoredObject&& object) {
            batch.push_back(std::make_shared<const StoredObject>(std::move(object)));
            return batch.size() < kBatch || handoff.give(&batch);
        },
        error);
    if (read)
        handoff.give(&batch);
    handoff.finish();
    indexer.join();
    if (!handoff.twice().empty()) {
        *error = path + ": object '" + handoff.twice() + "': stored twice";
        return false;
    }
    return read;
}

}  // namespace db
}  // namespace vesk

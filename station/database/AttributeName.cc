#include "station/database/AttributeName.h"

#include <mutex>
#include <shared_mutex>
#include <unordered_set>

namespace vesk {
namespace db {

namespace {

// Elements of an unordered_set keep their address while the set grows.
struct Names {
    std::shared_mutex mutex;
    std::unordered_set<std::string> texts;
};

Names& names() {
    static Names* held = new Names();  // never destroyed: names outlive every object
    return *held;
}

const std::string* intern(const std::string& text) {
    Names& all = names();
    {
        std::shared_lock<std::shared_mutex> lock(all.mutex);
        auto it = all.texts.find(text);
        if (it != all.texts.end())
            return &*it;
    }
    std::unique_lock<std::shared_mutex> lock(all.mutex);
    return &*all.texts.insert(text).first;
}

}  // namespace

AttributeName::AttributeName() {
    static const std::string* const empty = intern(std::string());
    _text = empty;
}

AttributeName::AttributeName(const std::string& text) : _text(intern(text)) {}

AttributeName::AttributeName(const char* text) : _text(intern(text)) {}

}  // namespace db
}  // namespace vesk

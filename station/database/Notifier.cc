// Placeholder until the notifier lands: changes are dropped.
#include "station/database/ChangeFeed.h"

namespace vesk {
namespace db {
void publishChanges(std::vector<ObjectChange>&& changes) { changes.clear(); }
}  // namespace db
}  // namespace vesk

// What one commit does: the new state of every object the overlay touched, the objects whose
// "reservedBy" must follow, the rows to write and the change entries to publish. Built while the
// Engine's commit lock is held, so that the committed state cannot move under it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "station/database/ChangeFeed.h"
#include "station/database/CommittedState.h"
#include "station/database/Overlay.h"

namespace vesk {
namespace db {

class CommitPlan {
  public:
    CommitPlan(const CommittedState& state, const Overlay& overlay);

    // Objects to write (new or changed) and full dns to delete, for the durable store.
    std::vector<ObjectPtr> puts() const;
    std::vector<std::string> removes() const;
    // Applies the plan to `state` (which must be the one given at construction).
    void applyTo(CommittedState* state) const;
    // One entry per changed object, in the order the overlay touched them; objects changed only
    // through "reservedBy" come last.
    std::vector<ObjectChange> changes() const;
    bool empty() const { return _steps.empty(); }

  private:
    struct Step {
        std::string dn;
        ObjectPtr before;
        ObjectPtr after;
        const Delta* delta;  // null when only "reservedBy" changed
        bool reservedByChanged = false;
    };

    static ObjectPtr stamped(const ObjectPtr& object, uint64_t seq);
    void planOverlay();
    void planOrphans();
    void planBelow(const std::string& fullDn);
    void planReservedBy();
    std::set<std::string> affectedTargets();
    std::string wantedReservedBy(const std::string& target) const;
    void setReservedBy(const std::string& target, const ObjectPtr& current,
                       const std::string& value);
    ObjectChange changeOf(const Step& step) const;

    const CommittedState& _state;
    const Overlay& _overlay;
    std::vector<Step> _steps;
    std::unordered_map<std::string, size_t> _stepOf;
    // target -> the objects of this commit whose references name it
    std::unordered_map<std::string, std::set<std::string>> _newReferrers;
    uint64_t _nextSeq;
};

}  // namespace db
}  // namespace vesk

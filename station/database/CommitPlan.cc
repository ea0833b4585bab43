#include "station/database/CommitPlan.h"

#include <memory>

#include "platform/Logger.h"

namespace vesk {
namespace db {

namespace {

const char* kReservedBy = "reservedBy";

AttributeChange changeOf(const StoredAttribute& a, bool deleted) {
    return AttributeChange{a.name, a.value, a.type, deleted, a.hidden, a.alternateSlot};
}

void appendAll(const StoredObject& object, std::vector<AttributeChange>* out) {
    for (const StoredAttribute& a : object.attributes.items())
        out->push_back(changeOf(a, false));
    for (const StoredAttribute& a : object.alternates.items())
        out->push_back(changeOf(a, false));
}

// The written attributes of a patch, with their new values or, when removed, their last ones.
void appendPatch(const std::map<std::string, std::optional<StoredAttribute>>& patch,
                 const AttributeSet& before, std::vector<AttributeChange>* out) {
    for (const auto& entry : patch) {
        if (entry.second) {
            out->push_back(changeOf(*entry.second, false));
        } else if (const StoredAttribute* last = before.find(entry.first)) {
            out->push_back(changeOf(*last, true));
        }
    }
}

bool sameAttribute(const StoredAttribute& a, const StoredAttribute& b) {
    return a.type == b.type && a.hidden == b.hidden && a.alternateSlot == b.alternateSlot &&
           a.value.which() == b.value.which() && a.value == b.value;
}

// What a replacement changed of an object that was there before: the attributes that are new or
// differ, with their new values, and the ones it no longer has, with their last values.
void appendDifferences(const AttributeSet& before, const AttributeSet& after,
                       std::vector<AttributeChange>* out) {
    for (const StoredAttribute& a : after.items()) {
        const StoredAttribute* old = before.find(a.name);
        if (old == nullptr || !sameAttribute(*old, a))
            out->push_back(changeOf(a, false));
    }
    for (const StoredAttribute& a : before.items()) {
        if (after.find(a.name) == nullptr)
            out->push_back(changeOf(a, true));
    }
}

std::string stringValue(const StoredAttribute* a) {
    if (a == nullptr || a->value.which() != AV_STRING)
        return std::string();
    return boost::get<std::string>(a->value);
}

}  // namespace

// The object with its place in the store. A replacement that only the ended overlay holds is
// stamped in place: no reader can reach it any more, and copying 10,000 new objects would double
// the cost of a large commit.
ObjectPtr CommitPlan::stamped(const ObjectPtr& object, uint64_t seq) {
    if (object->seq == seq)
        return object;
    if (object.use_count() <= 2) {  // the overlay's reference and ours
        const_cast<StoredObject*>(object.get())->seq = seq;
        return object;
    }
    auto copy = std::make_shared<StoredObject>(*object);
    copy->seq = seq;
    return copy;
}

CommitPlan::CommitPlan(const CommittedState& state, const Overlay& overlay)
    : _state(state), _overlay(overlay), _nextSeq(state.nextSeq()) {
    planOverlay();
    planOrphans();
    planReservedBy();
}

void CommitPlan::planOverlay() {
    for (const std::string& dn : _overlay.order()) {
        const Delta* delta = _overlay.find(dn);
        ObjectPtr before = _state.find(dn);
        if (delta->kind == Delta::kPatch && before == nullptr) {
            VESK_WARNING(
                "IDatabase::commit: '%s' was deleted before the commit; its changes "
                "are dropped",
                dn.c_str());
            continue;
        }
        ObjectPtr after = applyDelta(*delta, before);
        if (before == nullptr && after == nullptr)
            continue;
        if (after != nullptr)
            after = stamped(after, before != nullptr ? before->seq : _nextSeq++);
        _stepOf[dn] = _steps.size();
        _steps.push_back(Step{dn, before, after, delta});
    }
}

// A deletion takes what another handle committed below the object meanwhile, which the deleting
// handle could not see.
void CommitPlan::planOrphans() {
    const size_t planned = _steps.size();
    for (size_t i = 0; i < planned; ++i) {
        if (_steps[i].after == nullptr && _steps[i].before != nullptr)
            planBelow(_steps[i].dn);
    }
}

void CommitPlan::planBelow(const std::string& fullDn) {
    const std::set<std::string>* children = _state.childrenOf(fullDn);
    if (children == nullptr)
        return;
    for (const std::string& child : *children) {
        planBelow(child);
        if (_stepOf.count(child) != 0)
            continue;
        _stepOf[child] = _steps.size();
        _steps.push_back(Step{child, _state.find(child), nullptr, nullptr});
    }
}

std::set<std::string> CommitPlan::affectedTargets() {
    std::set<std::string> targets;
    for (const Step& step : _steps) {
        if (step.before != nullptr) {
            for (const std::string& ref : referencesOf(*step.before)) {
                targets.insert(_state.resolveReference(ref));
            }
        }
        if (step.after == nullptr)
            continue;
        for (const std::string& ref : referencesOf(*step.after)) {
            std::string target = _state.resolveReference(ref);
            _newReferrers[target].insert(step.dn);
            targets.insert(target);
        }
        targets.insert(step.dn);
    }
    return targets;
}

// The referrers of `target` once the plan is applied, ";"-joined in dn order.
std::string CommitPlan::wantedReservedBy(const std::string& target) const {
    std::set<std::string> referrers;
    if (const std::set<std::string>* committed = _state.referrersOf(target)) {
        for (const std::string& dn : *committed) {
            if (_stepOf.count(dn) == 0)
                referrers.insert(dn);
        }
    }
    auto added = _newReferrers.find(target);
    if (added != _newReferrers.end())
        referrers.insert(added->second.begin(), added->second.end());
    std::string joined;
    for (const std::string& dn : referrers) {
        if (!joined.empty())
            joined += ';';
        joined += dn;
    }
    return joined;
}

void CommitPlan::planReservedBy() {
    for (const std::string& target : affectedTargets()) {
        auto step = _stepOf.find(target);
        ObjectPtr current =
            step != _stepOf.end() ? _steps[step->second].after : _state.find(target);
        if (current == nullptr)
            continue;
        const StoredAttribute* held = current->attributes.find(kReservedBy);
        std::string wanted = wantedReservedBy(target);
        if (held == nullptr ? wanted.empty()
                            : stringValue(held) == wanted && held->value.which() == AV_STRING) {
            continue;
        }
        setReservedBy(target, current, wanted);
    }
}

void CommitPlan::setReservedBy(const std::string& target, const ObjectPtr& current,
                               const std::string& value) {
    auto changed = std::make_shared<StoredObject>(*current);
    StoredAttribute attribute;
    if (const StoredAttribute* held = current->attributes.find(kReservedBy))
        attribute = *held;
    attribute.name = kReservedBy;
    attribute.value = value;
    if (attribute.type == IPCData::AVT_UNKNOWN)
        attribute.type = IPCData::AVT_REFERENCE_LIST;
    changed->attributes.put(attribute);
    auto step = _stepOf.find(target);
    if (step != _stepOf.end()) {
        _steps[step->second].after = changed;
        _steps[step->second].reservedByChanged = true;
        return;
    }
    _stepOf[target] = _steps.size();
    _steps.push_back(Step{target, current, changed, nullptr, true});
}

std::vector<ObjectPtr> CommitPlan::puts() const {
    std::vector<ObjectPtr> out;
    for (const Step& step : _steps) {
        if (step.after != nullptr)
            out.push_back(step.after);
    }
    return out;
}

std::vector<std::string> CommitPlan::removes() const {
    std::vector<std::string> out;
    for (const Step& step : _steps) {
        if (step.after == nullptr)
            out.push_back(step.dn);
    }
    return out;
}

void CommitPlan::applyTo(CommittedState* state) const {
    for (const Step& step : _steps) {
        if (step.after != nullptr) {
            state->put(step.after);
        } else {
            state->remove(step.dn);
        }
    }
}

ObjectChange CommitPlan::changeOf(const Step& step) const {
    const StoredObject& object = step.after != nullptr ? *step.after : *step.before;
    ObjectChange change{IPCData::OP_UPDATE, step.dn,        object.key,
                        object.className,   object.visible, {}};
    bool patch = step.delta != nullptr && step.delta->kind == Delta::kPatch;
    change.attributes.reserve(patch ? step.delta->regular.size() + step.delta->alternates.size() + 1
                                    : object.attributes.size() + object.alternates.size());
    if (step.after == nullptr) {
        change.op = IPCData::OP_DELETE;
        appendAll(*step.before, &change.attributes);
    } else if (step.delta != nullptr && step.delta->kind != Delta::kPatch &&
               step.before == nullptr) {
        change.op = IPCData::OP_INSERT;
        appendAll(*step.after, &change.attributes);
    } else {
        if (step.delta != nullptr && !patch) {
            // A replacement of an object that was there is an update of what it changed.
            appendDifferences(step.before->attributes, step.after->attributes, &change.attributes);
            appendDifferences(step.before->alternates, step.after->alternates, &change.attributes);
        } else if (step.delta != nullptr) {
            appendPatch(step.delta->regular, step.before->attributes, &change.attributes);
            appendPatch(step.delta->alternates, step.before->alternates, &change.attributes);
        }
        if (step.reservedByChanged) {
            for (auto it = change.attributes.begin(); it != change.attributes.end();) {
                it = (it->name == kReservedBy && it->alternateSlot == -1)
                         ? change.attributes.erase(it)
                         : it + 1;
            }
            change.attributes.push_back(
                vesk::db::changeOf(*step.after->attributes.find(kReservedBy), false));
        }
    }
    return change;
}

std::vector<ObjectChange> CommitPlan::changes() const {
    std::vector<ObjectChange> out;
    out.reserve(_steps.size());
    for (const Step& step : _steps)
        out.push_back(changeOf(step));
    return out;
}

}  // namespace db
}  // namespace vesk

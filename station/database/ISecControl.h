// Test and operator control of the security component's stand-in: failure injection and a view of
// what it holds.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/DBObject.h"

namespace vesk {
namespace isec {

enum class Operation { CreateMo, EditMo, DeleteMo, Committed, Rollback, ExecuteAction };

// The next `count` calls of `operation` fail (answer 0) and change nothing.
void failNext(Operation operation, int count);

struct RecordedAction {
    std::string name;
    std::string dn;                                 // of the parameters object; "" without one
    std::map<std::string, std::string> parameters;  // attribute name to its text
};
std::vector<RecordedAction> recordedActions();

// A copy of a committed certificate MO, owned by the caller; null if the store has none.
DBObject* storedObject(const std::string& dn);
// The full dns of the committed certificate MOs, in order.
std::vector<std::string> storedDns();
// The number of changes staged under `handle`.
size_t stagedCount(int handle);
// Forgets everything: store, staged changes, recorded actions, pending failures.
void reset();

}  // namespace isec
}  // namespace vesk

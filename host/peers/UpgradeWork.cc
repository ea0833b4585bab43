// The upgrade packages of the software management peer: UpgradePackage MOs under SwM=1 and the
// commands that move their state (the model's upgrade-package-state).
#include "host/peers/SoftwareManagement.h"
#include "host/peers/StationRecords.h"
#include "platform/IDatabase.h"
#include "platform/VeskMessages.h"

namespace vesk {
namespace host {
namespace peers {

using namespace records;

namespace {

enum PackageState {
    kInitialized = 1,
    kPrepareInProgress = 2,
    kPrepareCompleted = 3,
    kActivationInProgress = 4,
    kWaitingForCommit = 6,
    kCommitCompleted = 7,
};
// The answer's state: the running package is 2, anything else has finished (3).
const int kAnswerRunning = 2;
const int kAnswerFinished = 3;

// One command: the states it starts from, the state while it runs, the state it ends in.
struct Step {
    int command;
    int from;
    int during;
    int to;
};
const Step kSteps[] = {
    {0, kInitialized, kPrepareInProgress, kPrepareCompleted},          // prepare
    {4, kPrepareCompleted, kPrepareCompleted, kPrepareCompleted},      // verify
    {2, kPrepareCompleted, kActivationInProgress, kWaitingForCommit},  // activate
    {3, kWaitingForCommit, kWaitingForCommit, kCommitCompleted},       // commit, confirm
    {1, kPrepareCompleted, kPrepareCompleted, kInitialized},           // cancel a preparation
    {1, kWaitingForCommit, kActivationInProgress, kPrepareCompleted},  // cancel an activation
};

std::string packageDn(const std::string& id) {
    return std::string(kSwMDn) + ",UpgradePackage=" + id;
}

// The package the commands act on: the newest one not committed, else UpgradePackage=1.
std::string packageInProgress() {
    std::string found = packageDn("1");
    for (const std::string& id : IDatabase::getMOClassWithParent(kSwMDn, "UpgradePackage", 0)) {
        if (numberOf(packageDn(id), "state", kCommitCompleted) != kCommitCompleted) {
            found = packageDn(id);
        }
    }
    return found;
}

Value upgradeEnumeration(int value) {
    return number(value, IPCData::AVT_ENUM);
}

}  // namespace

void SoftwareManagement::createPackage(const VESK::Messages::VESK_InitialiseSWReq& request,
                                       size_t record) {
    VESK::Messages::VESK_InitialiseSWResp reply;
    for (const std::string& id : IDatabase::getMOClassWithParent(kSwMDn, "UpgradePackage", 0)) {
        if (textOf(packageDn(id), "uri") == request.uri) {
            reply.failureCode = 1;  // that package exists already
        }
    }
    const int id = nextId(kSwMDn, "UpgradePackage");
    const std::string rdn = "UpgradePackage=" + std::to_string(id);
    if (reply.failureCode == 0 && pace() && !failing() &&
        createObject(kSwMDn, rdn,
                     {{"upgradePackageId", text(std::to_string(id))},
                      {"state", upgradeEnumeration(kInitialized)},
                      {"uri", text(request.uri)}},
                     {{"actionName", text(request.actionName)},
                      {"state", upgradeEnumeration(kAnswerFinished)},
                      {"result", upgradeEnumeration(1)},
                      {"progressInfo", text("Upgrade package created from " + request.uri)},
                      {"timeActionCompleted", text(now())}})) {
        reply.success = true;
        reply.upgradePackageId = id;
    } else if (reply.failureCode == 0) {
        reply.failureCode = 2;
    }
    answer(reply, record,
           Json{{"success", reply.success},
                {"failureCode", reply.failureCode},
                {"upgradePackageId", reply.upgradePackageId}});
}

void SoftwareManagement::packageCommand(const VESK::Messages::VESK_SwmCmd& request, size_t record) {
    const std::string dn = packageInProgress();
    const int state = numberOf(dn, "state", 0);
    VESK::Messages::VESK_SwOssUpdateResp reply;
    // A stale answer names the request before this one.
    reply.requestId = request.requestId - (behaviour() == "stale" ? 1 : 0);
    reply.upgradePackageState = kAnswerFinished;
    std::string info = "state " + std::to_string(state) + " does not take " + request.commandName;
    if (request.command == 5) {
        // Only a package that is not (and is not becoming) the running software may go.
        bool removable = state == kInitialized || state == kPrepareCompleted;
        reply.success = removable && !failing() && IDatabase::deleteObj(dn, 1, 0) != 0;
        reply.upgradePackageState = removable ? kAnswerFinished : kAnswerRunning;
        info = reply.success ? "removed" : removable ? "failed" : "the package is running";
    }
    for (const Step& step : kSteps) {
        if (request.command != 5 && step.command == request.command && step.from == state) {
            update(dn, {{"state", upgradeEnumeration(step.during)}});
            reply.success = pace() && !failing();
            update(dn, {{"state", upgradeEnumeration(reply.success ? step.to : state)}});
            info = reply.success ? "state " + std::to_string(step.to) : "failed, state kept";
            break;
        }
    }
    updateReport(dn, {{"actionName", text(request.commandName)},
                      {"state", upgradeEnumeration(kAnswerFinished)},
                      {"result", upgradeEnumeration(reply.success ? 1 : 2)},
                      {"progressInfo", text(info)},
                      {"timeActionCompleted", text(now())}});
    answer(reply, record,
           Json{{"success", reply.success},
                {"upgradePackageState", reply.upgradePackageState},
                {"requestId", reply.requestId},
                {"package", dn},
                {"info", info}});
}

}  // namespace peers
}  // namespace host
}  // namespace vesk

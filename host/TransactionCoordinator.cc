#include "host/TransactionCoordinator.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace {

std::atomic<TransactionCoordinator*> g_coordinator{nullptr};

OrlReturnT c_register2(OrlTxHandleT tx, OrlOamSpiTransactionalResource_2* resource) {
    TransactionCoordinator* live = g_coordinator.load();
    return live != nullptr ? live->registerParticipant(tx, resource) : OrlFailure;
}

// The older service takes the same resource record.
OrlReturnT c_register1(OrlTxHandleT tx, void* resource) {
    return c_register2(tx, static_cast<OrlOamSpiTransactionalResource_2*>(resource));
}

const char* nameOf(const OrlOamSpiTransactionalResource_2* resource) {
    return resource->header.componentName != nullptr ? resource->header.componentName : "?";
}

}  // namespace

TransactionCoordinator::TransactionCoordinator() {
    TransactionCoordinator* expected = nullptr;
    if (!g_coordinator.compare_exchange_strong(expected, this)) {
        throw std::logic_error("only one transaction coordinator may live at a time");
    }
    _record1.header =
        OrlMgmtSpiInterface_1{"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1"};
    _record1.registerParticipant = c_register1;
    _record2.header =
        OrlMgmtSpiInterface_1{"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"};
    _record2.registerParticipant = c_register2;
}

TransactionCoordinator::~TransactionCoordinator() {
    g_coordinator.store(nullptr);
}

OrlTxHandleT TransactionCoordinator::open() {
    std::lock_guard<std::mutex> lock(_mutex);
    OrlTxHandleT tx = ++_lastHandle;
    _open[tx] = Transaction();
    return tx;
}

OrlReturnT TransactionCoordinator::join(OrlTxHandleT tx,
                                        OrlOamSpiTransactionalResource_2* resource) {
    if (resource == nullptr || resource->join == nullptr) {
        return OrlFailure;
    }
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto it = _open.find(tx);
        if (it == _open.end() || it->second.ending) {
            return OrlNotExist;
        }
        if (!it->second.joined.insert(resource).second) {
            return OrlAlreadyJoined;
        }
    }
    OrlReturnT result = resource->join(tx);
    if (result != OrlOk && result != OrlAlreadyJoined) {
        VESK_ERROR("host: join of %s to transaction %lu failed (%d)", nameOf(resource), tx, result);
    }
    return result;
}

OrlReturnT TransactionCoordinator::registerParticipant(OrlTxHandleT tx,
                                                       OrlOamSpiTransactionalResource_2* resource) {
    if (resource == nullptr) {
        return OrlFailure;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _open.find(tx);
    if (it == _open.end() || it->second.ending) {
        VESK_WARNING("host: %s asked to take part in transaction %lu, which is not open",
                     nameOf(resource), tx);
        return OrlNotExist;
    }
    Participants& participants = it->second.participants;
    if (std::find(participants.begin(), participants.end(), resource) == participants.end()) {
        participants.push_back(resource);
    }
    return OrlOk;
}

bool TransactionCoordinator::beginEnd(OrlTxHandleT tx, Participants* participants) {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _open.find(tx);
    if (it == _open.end() || it->second.ending) {
        return false;
    }
    it->second.ending = true;
    *participants = it->second.participants;
    return true;
}

OrlReturnT TransactionCoordinator::runPhase(OrlTxHandleT tx, const Participants& participants,
                                            Slot slot, const char* phase) {
    for (OrlOamSpiTransactionalResource_2* resource : participants) {
        OrlReturnT (*operation)(OrlTxHandleT) = resource->*slot;
        if (operation == nullptr) {
            continue;
        }
        OrlReturnT result = operation(tx);
        if (result != OrlOk) {
            VESK_ERROR("host: %s of %s in transaction %lu failed (%d)", phase, nameOf(resource), tx,
                       result);
            return result;
        }
    }
    return OrlOk;
}

void TransactionCoordinator::abortAll(OrlTxHandleT tx, const Participants& participants,
                                      OrlReturnT* first) {
    for (OrlOamSpiTransactionalResource_2* resource : participants) {
        if (resource->abort == nullptr) {
            continue;
        }
        OrlReturnT result = resource->abort(tx);
        if (result != OrlOk) {
            VESK_WARNING("host: abort of %s in transaction %lu answered %d", nameOf(resource), tx,
                         result);
            if (*first == OrlOk) {
                *first = result;
            }
        }
    }
}

void TransactionCoordinator::finishAll(OrlTxHandleT tx, const Participants& participants) {
    for (OrlOamSpiTransactionalResource_2* resource : participants) {
        if (resource->finish != nullptr) {
            resource->finish(tx);
        }
    }
    std::lock_guard<std::mutex> lock(_mutex);
    _open.erase(tx);
}

OrlReturnT TransactionCoordinator::commit(OrlTxHandleT tx) {
    Participants participants;
    if (!beginEnd(tx, &participants)) {
        return OrlNotExist;
    }
    const Slot phases[] = {&OrlOamSpiTransactionalResource_2::validate,
                           &OrlOamSpiTransactionalResource_2::prepare,
                           &OrlOamSpiTransactionalResource_2::commit};
    const char* names[] = {"validate", "prepare", "commit"};
    OrlReturnT result = OrlOk;
    for (size_t i = 0; i < 3 && result == OrlOk; ++i) {
        result = runPhase(tx, participants, phases[i], names[i]);
    }
    if (result != OrlOk) {
        OrlReturnT ignored = OrlOk;
        abortAll(tx, participants, &ignored);
    }
    finishAll(tx, participants);
    return result;
}

OrlReturnT TransactionCoordinator::abort(OrlTxHandleT tx) {
    Participants participants;
    if (!beginEnd(tx, &participants)) {
        return OrlNotExist;
    }
    OrlReturnT result = OrlOk;
    abortAll(tx, participants, &result);
    finishAll(tx, participants);
    return result;
}

size_t TransactionCoordinator::openCount() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _open.size();
}

bool TransactionCoordinator::isOpen(OrlTxHandleT tx) const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _open.count(tx) == 1;
}

std::vector<OrlTxHandleT> TransactionCoordinator::openHandles() const {
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<OrlTxHandleT> handles;
    for (const auto& entry : _open) {
        handles.push_back(entry.first);
    }
    return handles;
}

TransactionCoordinator::Participants TransactionCoordinator::participants(OrlTxHandleT tx) const {
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _open.find(tx);
    return it == _open.end() ? Participants() : it->second.participants;
}

}  // namespace host
}  // namespace vesk

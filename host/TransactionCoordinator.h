// The host's transaction coordinator: hands out transaction handles, keeps each transaction's
// participants, and drives them through validate, prepare, commit (or abort) and finish. Its C
// records reach the one live coordinator of the process.
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "platform/orl/OrlOamSpi.h"

namespace vesk {
namespace host {

class TransactionCoordinator {
  public:
    // Becomes the process's live coordinator; a second one while this lives is a logic error.
    TransactionCoordinator();
    ~TransactionCoordinator();
    TransactionCoordinator(const TransactionCoordinator&) = delete;
    TransactionCoordinator& operator=(const TransactionCoordinator&) = delete;

    // The service records "OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1" and "2".
    OrlOamSpiTransaction_1* record1() { return &_record1; }
    OrlOamSpiTransaction_2* record2() { return &_record2; }

    // A new open transaction. Handles count from 1 and are never reused.
    OrlTxHandleT open();
    // Calls the resource's join once for this transaction; a second join of the same pair
    // answers OrlAlreadyJoined without calling. OrlNotExist for a transaction not open.
    OrlReturnT join(OrlTxHandleT tx, OrlOamSpiTransactionalResource_2* resource);
    // `resource` takes part until the transaction's finish; registering it again is OrlOk and
    // changes nothing. OrlNotExist when the transaction is not open or already ending.
    OrlReturnT registerParticipant(OrlTxHandleT tx, OrlOamSpiTransactionalResource_2* resource);

    // Validate, prepare, then commit every participant, in registration order. The first
    // non-zero answer stops the run: then every participant gets exactly one abort. Finish
    // follows for every participant in both cases, and the transaction is gone. Returns the
    // first non-zero answer, or OrlOk. Blocks for as long as a participant takes: nothing here
    // times out. Calls out without holding the coordinator's lock.
    OrlReturnT commit(OrlTxHandleT tx);
    // Abort, then finish, every participant. Returns the first non-zero abort answer.
    OrlReturnT abort(OrlTxHandleT tx);

    bool isOpen(OrlTxHandleT tx) const;
    // How many transactions are open (or ending) now.
    size_t openCount() const;
    // The transactions open now (ending ones included).
    std::vector<OrlTxHandleT> openHandles() const;
    std::vector<OrlOamSpiTransactionalResource_2*> participants(OrlTxHandleT tx) const;

  private:
    struct Transaction {
        std::vector<OrlOamSpiTransactionalResource_2*> participants;
        std::set<OrlOamSpiTransactionalResource_2*> joined;
        bool ending = false;
    };
    using Participants = std::vector<OrlOamSpiTransactionalResource_2*>;
    using Slot = OrlReturnT (*OrlOamSpiTransactionalResource_2::*)(OrlTxHandleT);

    // Marks the transaction as ending and returns its participants; false if it is not open.
    bool beginEnd(OrlTxHandleT tx, Participants* participants);
    OrlReturnT runPhase(OrlTxHandleT tx, const Participants& participants, Slot slot,
                        const char* phase);
    void abortAll(OrlTxHandleT tx, const Participants& participants, OrlReturnT* first);
    void finishAll(OrlTxHandleT tx, const Participants& participants);

    OrlOamSpiTransaction_1 _record1;
    OrlOamSpiTransaction_2 _record2;
    mutable std::mutex _mutex;
    OrlTxHandleT _lastHandle = 0;
    std::map<OrlTxHandleT, Transaction> _open;
};

}  // namespace host
}  // namespace vesk

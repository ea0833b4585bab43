// What VeskOI remembers between a change and its commit (the invalid and checked commits and the
// black list), and the commit and rollback stages that the front runs under its mutex.
#include <algorithm>

#include "front/VeskMoImpl.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "transaction/VeskDBTransaction.h"
#include "validation/VeskBoamOI.h"
#include "validation/VeskCellPriority.h"
#include "validation/VeskLTEOI.h"
#include "validation/VeskOI.h"
#include "validation/VeskPMOI.h"

namespace TibVeskOI {
namespace {

bool contains(const VeskOI::CommitList& list, unsigned long txId, const std::string& mo) {
    return std::any_of(list.begin(), list.end(), [&](const sCommitValidation& entry) {
        return entry.txId == txId && entry.mo == mo;
    });
}

}  // namespace

void VeskOI::insertToInvalidCommits(unsigned long txId, const std::string& mo) {
    if (!contains(_invalidCommits, txId, mo)) {
        _invalidCommits.push_back(sCommitValidation{txId, mo});
    } else {
        VESK_TRACE("VeskOI::%s No need to add to list (aTxId: %lu, MO: %s)", __func__, txId,
                   mo.c_str());
    }
    _blackList.push_back(txId);
    _blackList.unique();
}

void VeskOI::removeFromInvalidCommits(unsigned long txId, const std::string& mo) {
    auto entry =
        std::find_if(_invalidCommits.begin(), _invalidCommits.end(),
                     [&](const sCommitValidation& e) { return e.txId == txId && e.mo == mo; });
    if (entry != _invalidCommits.end()) {
        _invalidCommits.erase(entry);
    }
    _blackList.remove(txId);
}

void VeskOI::eraseTransaction(CommitList& list, unsigned long txId) {
    auto it = list.begin();
    while (it != list.end()) {
        if (it->txId == txId) {
            it = list.erase(it);
            if (it == list.end()) {
                // Stepping on from the end lands on the front of what is left.
                it = list.begin();
                continue;
            }
        }
        ++it;
    }
}

void VeskOI::removeFromInvalidCommits(unsigned long txId) {
    eraseTransaction(_invalidCommits, txId);
}

void VeskOI::removeFromCheckedCommits(unsigned long txId) {
    eraseTransaction(_checkedCommits, txId);
}

void VeskOI::insertToCheckedCommits(unsigned long txId, const std::string& mo) {
    if (!contains(_checkedCommits, txId, mo)) {
        _checkedCommits.push_back(sCommitValidation{txId, mo});
    }
}

OrlReturnT VeskOI::handleCommit(unsigned long txId) {
    if (!_checkedCommits.empty()) {
        OrlReturnT rc = handleCheckedCommits(txId);
        if (rc != OrlOk) {
            return rc;
        }
    }
    validateCommit(txId);
    removeFromInvalidCommits(txId);
    VeskBoamOI::instance()->commit(txId);
    if (checkBlackList(txId) != OrlOk) {
        return OrlValidationFailed;
    }
    OrlReturnT rc = VeskLTEOI::instance()->commit(txId);
    VeskCellPriority::instance()->commit(txId);
    return rc;
}

OrlReturnT VeskOI::handleCheckedCommits(unsigned long txId) {
    for (const sCommitValidation& entry : _checkedCommits) {
        if (entry.txId != txId) {
            continue;
        }
        const int databaseTx = getVeskDatabaseTransactionId(txId);
        if (entry.mo.find("EventJob") != std::string::npos) {
            OrlReturnT rc = VeskPMOI::instance()->validatePMCommit(entry.mo, databaseTx);
            if (rc != OrlOk) {
                return rc;
            }
        }
    }
    removeFromCheckedCommits(txId);
    return OrlOk;
}

void VeskOI::validateCommit(unsigned long txId) {
    const int databaseTx = getVeskDatabaseTransactionId(txId);
    for (const sCommitValidation& entry : _invalidCommits) {
        if (entry.txId != txId) {
            continue;
        }
        // A transaction that wrote nothing holds no MO to take out; handle 0 would delete the
        // committed one.
        if (databaseTx == 0) {
            VESK_TRACE("VeskOI::%s %s: transaction %lu has written nothing", __func__,
                       entry.mo.c_str(), txId);
            continue;
        }
        IDatabase::deleteObj(entry.mo, 1, databaseTx);
    }
}

OrlReturnT VeskOI::checkBlackList(unsigned long txId) {
    if (std::find(_blackList.begin(), _blackList.end(), txId) == _blackList.end()) {
        return OrlOk;
    }
    VESK_INFO("VeskOI::%s %lu is black listed", __func__, txId);
    _blackList.remove(txId);
    return OrlValidationFailed;
}

OrlReturnT VeskOI::handleRollback(unsigned long txId) {
    removeFromCheckedCommits(txId);
    removeFromInvalidCommits(txId);
    VeskLTEOI::instance()->abort(txId);
    VeskCellPriority::instance()->abort(txId);
    return VeskBoamOI::instance()->rollback(txId);
}

int VeskOI::getVeskDatabaseTransactionId(unsigned long txId) {
    TibVeskCM::VeskMoImpl::TxMap transactions = TibVeskCM::VeskMoImpl::instance()->getTxMap();
    auto entry = transactions.find(txId);
    if (entry == transactions.end()) {
        VESK_TRACE("VeskOI::%s Transaction ID not found (%lu)", __func__, txId);
        return 0;
    }
    return entry->second->getDatabaseTxHandle();
}

}  // namespace TibVeskOI

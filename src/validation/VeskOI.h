// The object implementer component "VESKOIcomponent": a second host component inside the agent.
// At its start it registers, through the agent's own register record, as the class implementer
// of the MO paths that the rule classes guard (VeskPMOI, VeskLTEOI, VeskBoamOI, in that order),
// so that every create, set and delete of those classes passes through it on the way to the
// database; it hands each change to the rule class of its MO. Between a change and its commit it
// keeps the invalid and checked commits, the black list and the validated flag, and at the
// front's commit and abort it runs the commit checks (handleCommit) and the clean-up
// (handleRollback).
//
// Threads: every call arrives under the front's mutex (directly, or through an implementer call
// the front makes), one transaction at a time, so the lists and the flag need no lock.
#pragma once

#include <list>
#include <string>

#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

// One noted commit: the host transaction and the dn of an MO.
struct sCommitValidation {
    unsigned long txId;
    std::string mo;
};

class VeskOI {
  public:
    typedef std::list<sCommitValidation> CommitList;

    // Made at first use (the agent's start), destroyed at library unload.
    static VeskOI* getVeskOI();
    virtual ~VeskOI() {}

    // Keeps the portal, registers the component (its answer is only traced) and runs start().
    OrlReturnT init(OrlMgmtSpiInterfacePortal_1* portal);
    // Fetches the register interface (first of the array form) and the thread context, then
    // lets VeskPMOI, VeskLTEOI and VeskBoamOI register their paths. A refused thread context is
    // returned before any registration. Also the host's start of this component: a second run
    // finds its registrations already present.
    virtual OrlReturnT start();
    // Only traces.
    virtual OrlReturnT stop();

    // Registers (unregisters) this component's two records as the class implementer of `path`
    // through the agent's register record; OrlFailure when start found no such record.
    OrlReturnT registerAsObjectImplementer(const std::string& path);
    OrlReturnT unregisterAsObjectImplementer(const std::string& path);

    // The transactional resource slots: they only trace.
    OrlReturnT join(OrlTxHandleT txHandle);
    OrlReturnT commit(OrlTxHandleT txHandle);
    OrlReturnT abort(OrlTxHandleT txHandle);

    // The change slots: each hands the change to the rule class of its MO's class and answers
    // what the rules answer; a class no rule guards passes. The texts are never null (the entry
    // points give "" for a missing one). `value` of a set holds the older
    // (version 1) value form the front gives class implementers; the rules read only strings
    // and the first 32 bits of integers, which both forms hold alike.
    OrlReturnT setMoAttribute(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                              const OrlMoAttributeValueContainer_3* value);
    OrlReturnT createMo(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                        const char* keyAttrName, const char* keyAttrValue,
                        OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT deleteMo(OrlTxHandleT txHandle, const char* dn);
    // Called by the front after a cell's creation in the database, whatever its outcome: the
    // cell priority rules judge the new cell.
    void createCell(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                    const char* keyAttrName, const char* keyAttrValue,
                    OrlMoNamedAttributeValueContainer_3** attributes);

    // Attaches `text` for the operator to the request in progress; nothing without a text or a
    // thread context.
    void addMessage(const char* text);

    // The validated flag: a rule that accepts a creation but wants no MO made sets it false;
    // getValidated() hands it back and sets it true again, so it lasts one creation.
    bool getValidated();
    void setValidated(bool validated) { _validated = validated; }

    // The invalid commits: MOs that must leave their transaction before it commits. Each
    // insertion also puts the transaction on the black list (consecutive repeats folded); a
    // removal of a pair, found or not, takes the transaction off it.
    void insertToInvalidCommits(unsigned long txId, const std::string& mo);
    void removeFromInvalidCommits(unsigned long txId, const std::string& mo);
    // Erase the entries of `txId` in one walk that skips the entry behind each erased one, and
    // that goes on from the front when it erased the last entry; so of two adjacent entries of
    // one transaction the second stays unless the walk comes round to it.
    void removeFromInvalidCommits(unsigned long txId);
    void removeFromCheckedCommits(unsigned long txId);
    // The checked commits: MOs the PM rules judge at commit. A pair is held once.
    void insertToCheckedCommits(unsigned long txId, const std::string& mo);

    // The commit checks, run first in the front's commit: checked commits (a refusal is returned
    // at once), invalid MOs deleted from the database transaction, the baseband commit, the
    // black list (OrlValidationFailed), then the LTE commit, whose answer is returned, and the
    // cell priority commit.
    OrlReturnT handleCommit(unsigned long txId);
    // Clean-up at the front's abort: both lists, the LTE and cell priority notes; answers the
    // baseband rollback. The black list stays as it is.
    OrlReturnT handleRollback(unsigned long txId);
    // The database transaction of a host transaction; 0 when it is not open or has not written.
    int getVeskDatabaseTransactionId(unsigned long txId);

    const CommitList& invalidCommits() const { return _invalidCommits; }
    const CommitList& checkedCommits() const { return _checkedCommits; }
    const std::list<unsigned long>& blackList() const { return _blackList; }

    OrlMgmtSpiComponent* getComponent() { return &_component; }
    OrlOamSpiRegisterObjectImplementer_2* registerInterface() const { return _registerIf; }
    OrlMgmtSpiThreadContext_2* threadContext() const { return _threadContext; }

  private:
    VeskOI();

    OrlReturnT setCellAttribute(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                const OrlMoAttributeValueContainer_3* value,
                                const std::string& className);
    OrlReturnT handleCheckedCommits(unsigned long txId);
    void validateCommit(unsigned long txId);
    OrlReturnT checkBlackList(unsigned long txId);
    // The walk of removeFromInvalidCommits(txId) and removeFromCheckedCommits(txId).
    static void eraseTransaction(CommitList& list, unsigned long txId);

    OrlMgmtSpiComponent _component;
    OrlMgmtSpiInterface_1* _provided[3];
    OrlMgmtSpiInterface_1* _required[1];
    OrlMgmtSpiInterface_1* _extra[1];
    OrlMgmtSpiInterfacePortal_1* _portal;
    OrlOamSpiManagedObject_3 _managedObject;
    OrlOamSpiTransactionalResource_2 _txResource;
    OrlOamSpiRegisterObjectImplementer_2* _registerIf;
    bool _validated;
    CommitList _invalidCommits;
    std::list<unsigned long> _blackList;
    OrlMgmtSpiThreadContext_2* _threadContext;
    CommitList _checkedCommits;
};

}  // namespace TibVeskOI

// The component's entry points; each gets the singleton and forwards.
OrlReturnT veskoi_component_start(OrlStateChangeReason reason);
OrlReturnT veskoi_component_stop(OrlStateChangeReason reason);
OrlReturnT veskoi_join_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_commit_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_abort_2(OrlTxHandleT txHandle);
OrlReturnT veskoi_setMoAttribute_3(OrlTxHandleT txHandle, const char* dn, const char* attrName,
                                   const OrlMoAttributeValueContainer_3* value);
OrlReturnT veskoi_createMo_3(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                             const char* keyAttrName, const char* keyAttrValue,
                             OrlMoNamedAttributeValueContainer_3** attributes);
OrlReturnT veskoi_deleteMo_3(OrlTxHandleT txHandle, const char* dn);

// The rules that judge a change of the LTE part of the MO tree while its transaction is open:
// frequencies and frequency relations (VeskLTEOIFrequencies.cc), the MME terminations
// (VeskLTEOIMme.cc), cell relations, cells, carrier aggregation, WiFi channel selection, QCI
// profiles and external cells (VeskLTEOICells.cc). A rule answers OrlOk or OrlValidationFailed
// at once, with one log line that says why, or notes the transaction for the commit stage. The
// deletion checks that the commit stage runs are here too.
//
// Reads go through the transaction's database transaction, so that they see its own changes,
// unless a rule says otherwise. A value that cannot be read is no failure: the rule's start
// value stands (-1 or -2 for numbers, "" for texts) and is compared as it is. A change value of
// a type a rule cannot read counts as absent.
//
// Threads: no lock. Every call arrives under the front's mutex, one transaction at a time; the
// notes are shared by all transactions.
#pragma once

#include <list>
#include <map>
#include <string>
#include <utility>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlOamSpi.h"

namespace TibVeskOI {

class VeskLTEOI {
  public:
    typedef std::list<unsigned long> TxList;
    typedef std::list<std::pair<unsigned long, std::string>> DeletionList;

    // The two addresses of an MME termination; "" when not given.
    struct MMeIPs {
        std::string ipAddress1;
        std::string ipAddress2;
    };

    // Made at first use, destroyed at library unload.
    static VeskLTEOI* instance();
    virtual ~VeskLTEOI() {}

    // Registers the twelve LTE MO paths with VeskOI.
    void initialize();

    // Creation rules: the new MO's parent, class and initial attributes (a null-terminated
    // array, may be null).
    OrlReturnT validateEUtranFrequencyCreation(unsigned long aTxHandle, const char* parentDn,
                                               const char* className,
                                               OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT validateTermPointToMmeCreation(unsigned long aTxHandle, const char* parentDn,
                                              const char* className,
                                              OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT validateCellRelationCreation(unsigned long aTxHandle, const char* parentDn,
                                            const char* className,
                                            OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT validateFreqRelationCreation(unsigned long aTxHandle, const char* parentDn,
                                            const char* className,
                                            OrlMoNamedAttributeValueContainer_3** attributes);

    // Set rules: an attribute a rule does not name is accepted without a look.
    OrlReturnT validateEUtranFrequencySetAttribute(unsigned long aTxHandle, const char* dn,
                                                   const char* attributeName,
                                                   const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateTermPointToMmeSetAttribute(const char* dn, const char* attributeName,
                                                  const OrlMoAttributeValueContainer_3* value,
                                                  unsigned long aTxHandle);
    OrlReturnT validateCellRelationSetAttribute(unsigned long aTxHandle, const char* dn,
                                                const char* attributeName,
                                                const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateFreqRelationSetAttribute(unsigned long aTxHandle, const char* dn,
                                                const char* attributeName,
                                                const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateCellSetAttribute(unsigned long aTxHandle, const char* dn,
                                        const char* attributeName,
                                        const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateCarrierAggregationSetAttribute(unsigned long aTxHandle, const char* dn,
                                                      const char* attributeName,
                                                      const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateWiFiChannelSelectionSetAttribute(
        unsigned long aTxHandle, const char* dn, const char* attributeName,
        const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateQciProfilePredefinedSetAttribute(
        unsigned long aTxHandle, const char* dn, const char* attributeName,
        const OrlMoAttributeValueContainer_3* value);
    OrlReturnT validateExternalEUtranCellSetAttribute(unsigned long aTxHandle, const char* dn,
                                                      const char* attributeName,
                                                      const OrlMoAttributeValueContainer_3* value);

    // Delete rules: a TermPointToMme must be locked; the others only note the deletion for the
    // commit stage.
    OrlReturnT validateTermPointToMmeDeletion(unsigned long aTxHandle, const char* dn);
    OrlReturnT validateEUtranFreqRelationDeletion(unsigned long aTxHandle, const char* dn);
    OrlReturnT validateEUtranFrequencyDeletion(unsigned long aTxHandle, const char* dn);
    OrlReturnT validateEUtranCellFDDDeletion(unsigned long aTxHandle, const char* dn);
    OrlReturnT validateEUtranCellTDDDeletion(unsigned long aTxHandle, const char* dn);

    // The deletion checks of the commit stage, in the transaction's database transaction.
    // An unlocked cell keeps the relation to its own frequency.
    OrlReturnT checkEUtranFreqRelationDeletion(int dbTx, const std::string& dn);
    // A frequency an unlocked cell is on stays.
    OrlReturnT checkEUtranFrequencyDeletion(int dbTx, const std::string& dn);
    // With no cell of the class left, the load balancing flag is lowered.
    void checkEUtranCellFDDDeletion(int dbTx);
    void checkEUtranCellTDDDeletion(int dbTx);

    // OrlValidationFailed when an EUtranFrequency in `dbTx` already holds the channel number in
    // `value` (the frequency being set included); an unreadable value is accepted.
    OrlReturnT validateArfcn(int dbTx, const OrlMoAttributeValueContainer_3* value);
    // OrlValidationFailed unless the reference's class fits the attribute.
    OrlReturnT validateReference(const std::string& attributeName,
                                 const OrlMoAttributeValueContainer_3* value);
    // OrlValidationFailed when a stored address of an MME under "ManagedElement=1,
    // ENodeBFunction=1" equals a given one that is not "0.0.0.0"; also when one of them cannot be
    // fetched.
    OrlReturnT validateMmeIpAdresses(MMeIPs ips, unsigned long aTxHandle);
    // OrlValidationFailed when a cell relation in `dbTx` points at the external cell `dn`.
    OrlReturnT validateEutranFrequencyRef(const char* dn, int dbTx);
    // Writes "autoLBDisabled" of "StaticParams" into `dbTx`; nothing when the record is absent.
    void updateLoadBalancingFlag(bool value, int dbTx);

    // The end of a transaction: the commit stage still to come answers OrlOk and forgets the
    // transaction's notes as abort does. Abort removes the first entry of the handle from each
    // plain list and every entry from the deletion lists; the band 46 mark stays.
    int commit(unsigned long aTxHandle);
    void abort(unsigned long aTxHandle);

    // The notes, for the commit stage and for inspection.
    const TxList& bandwidthCheckTxs() const { return _bandwidthCheckTxs; }
    const TxList& carrierAggregationCheckTxs() const { return _carrierAggregationCheckTxs; }
    const TxList& candidateChannelCheckTxs() const { return _candidateChannelCheckTxs; }
    const TxList& candidateChannelSyncTxs() const { return _candidateChannelSyncTxs; }
    const TxList& fddCellDeletionTxs() const { return _fddCellDeletionTxs; }
    const TxList& tddCellDeletionTxs() const { return _tddCellDeletionTxs; }
    const DeletionList& freqRelationDeletions() const { return _freqRelationDeletions; }
    const DeletionList& frequencyDeletions() const { return _frequencyDeletions; }
    const std::map<int, bool>& band46UpdatePending() const { return _band46UpdatePending; }

  private:
    VeskLTEOI() {}

    // The relation form of the frequency reference check: OrlValidationFailed when another
    // EUtranFreqRelation under `parentDn` already refers to `value`; a null value passes.
    OrlReturnT validateEutranFrequencyRef(const std::string& parentDn, const std::string& className,
                                          const char* value, unsigned long aTxHandle);
    // The set form: the first component of the value must be a committed MO, and no relation
    // under `parentDn` may already refer to the value's first component.
    OrlReturnT validateEutranFrequencyRef_setMo(const std::string& parentDn, const std::string& rdn,
                                                const OrlMoAttributeValueContainer_3* value,
                                                unsigned long aTxHandle);
    // OrlValidationFailed when a relation under `parentDn` in `dbTx` refers to `value`.
    OrlReturnT findFrequencyRef(const std::string& parentDn, const std::string& named,
                                const std::string& value, int dbTx, const char* rule);
    // Deletion of the last cell of `cellClass` lowers the flag.
    void checkCellDeletion(const char* cellClass, int dbTx, const char* rule);
    // True when a cell of `cellClass` in `dbTx` is unlocked on `channel` (read as `channelName`).
    bool unlockedCellOn(const char* cellClass, const char* channelName, int channel, int dbTx,
                        const std::string& dn);
    // The rule that raises the flag for an operator's change of `attributeName`.
    void raiseLoadBalancingFlag(const char* rule, const char* dn, const char* attributeName,
                                unsigned long aTxHandle);

    // Cells whose bandwidth faults the commit stage has raised (illegal, inconsistent).
    std::list<std::string> _illegalBandwidthAlarmDns;
    std::list<std::string> _inconsistentBandwidthAlarmDns;
    // A handle once per noted operation; the deletion lists hold (handle, dn).
    TxList _bandwidthCheckTxs;
    TxList _carrierAggregationCheckTxs;
    TxList _candidateChannelCheckTxs;
    TxList _candidateChannelSyncTxs;
    TxList _fddCellDeletionTxs;
    DeletionList _freqRelationDeletions;
    DeletionList _frequencyDeletions;
    std::map<int, bool> _band46UpdatePending;
    TxList _tddCellDeletionTxs;
};

}  // namespace TibVeskOI

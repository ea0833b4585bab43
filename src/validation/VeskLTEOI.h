// The rules that judge a change of the LTE part of the MO tree while its transaction is open:
// frequencies and frequency relations (VeskLTEOIFrequencies.cc), the MME terminations
// (VeskLTEOIMme.cc), cell relations, cells, carrier aggregation, WiFi channel selection, QCI
// profiles and external cells (VeskLTEOICells.cc). A rule answers OrlOk or OrlValidationFailed
// at once, with one log line that says why, or notes the transaction for the commit stage. The
// deletion checks that the commit stage runs are here too (VeskLTEOI.cc, VeskLTEOIFrequencies.cc);
// the commit stage itself in VeskLTEOICommit.cc, its candidate channels in VeskLTEOIChannels.cc
// and the band 46 normalisation in VeskLTEOIBand46.cc.
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

#include "platform/DBObject.h"
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

    // The commit stage, once every change of the transaction is in its database transaction.
    // Takes the transaction's notes, one entry of each plain list and every deletion, and runs
    // what they ask for in a fixed order: the cells' bandwidths, carrier aggregation, the
    // candidate channels (judged once integrated, else only kept in step), the deletions, then
    // the band 46 normalisation of what the transaction created. OrlOk or OrlValidationFailed;
    // the candidate channels' answer replaces that of carrier aggregation.
    int commit(unsigned long aTxHandle);
    // Abort removes the first entry of the handle from each plain list and every entry from the
    // deletion lists; the band 46 mark stays.
    void abort(unsigned long aTxHandle);

    // The fault codes of the bandwidth check, sent to the fault manager.
    static constexpr int kIllegalCellBandwidthChange = 20745;
    static constexpr int kInconsistentCellBandwidthChange = 20752;
    // Raises each bandwidth fault of a cell in `dbTx` that has come about, and clears each active
    // one that has gone; nothing is sent for a fault whose state did not change. Refuses nothing.
    void checkBandwidths(int dbTx);
    // OrlValidationFailed when the hysteresis of "CarrierAggregationFunction=1" exceeds its
    // threshold; OrlOk without the function.
    int checkCarrierAggregation(int dbTx);
    // OrlValidationFailed when the transaction turns off the candidate channel an LAA cell (an
    // FDD cell above channel 18000) is on.
    int checkWiFiChannelSelection(int dbTx);
    // Gives channelFreq5160MHz the value of channel32 when the two differ.
    void synchronizeCandidateChannels(int dbTx);
    // Whether `fault` (one of the two codes above) is active for the cell `dn`.
    bool activeAlarm(std::string dn, int fault);
    // Sends a raise (state 1) or clear (0) of `fault` for the cell `dn` to the fault manager; a
    // failed send is an error line and nothing else.
    void sendFaultNotif(int fault, int state, std::string dn);

    // The band 46 normalisation: every high channel number of the transaction `aTxHandle`
    // becomes its low number, in the cells' reservedBy lists, the relations' ids, keys,
    // references and black lists, and the frequencies' ids, keys, values and reservedBy lists.
    // Run in this order; they cannot fail.
    void band46EutranCellUpdate(int aTxHandle);
    void band46FreqRelationUpdate(int aTxHandle);
    void band46FrequencyUpdate(int aTxHandle);
    // The low number of a high one; any other value unchanged.
    static int updateArfcn(int arfcn);
    // `reservedBy` up to the last occurrence of the first high number (in table order) it holds,
    // followed by that number's low number; unchanged when it holds none.
    static std::string updateReservedBy(std::string reservedBy);

    // The cells whose bandwidth faults are active; kept for the life of the process only.
    const std::list<std::string>& illegalBandwidthAlarmDns() const {
        return _illegalBandwidthAlarmDns;
    }
    const std::list<std::string>& inconsistentBandwidthAlarmDns() const {
        return _inconsistentBandwidthAlarmDns;
    }

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
    // Takes the deletions of `aTxHandle` from `list`, judging each with `check` while `result`
    // is OrlOk; the answer of the last one judged, or `result`.
    int judgeDeletions(DeletionList& list, unsigned long aTxHandle, int dbTx, int result,
                       OrlReturnT (VeskLTEOI::*check)(int, const std::string&));
    // Raises `fault` for `dn` when `faulty` and not active, clears it when active and not.
    void followFault(int fault, bool faulty, const std::string& dn, const char* faultName);
    // The candidate channel that stands for channel 32: the one of its two names that the
    // transaction changed, channel32 when neither or both.
    std::string channel32Name(int dbTx, const char* rule);
    // The entry lines and the database transaction of a band 46 step.
    int band46Enter(const char* rule, int aTxHandle);
    // A relation with an old id gets its new id and key, its frequency reference and black list
    // follow; written as a new object in place of the old one.
    void renameFreqRelation(DBObject& relation, int low, int aTxHandle, int dbTx, const char* rule);
    // A frequency's reservedBy entries that name a high number are corrected; true if any was.
    bool correctReservedBy(DBObject& frequency, const char* rule);

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

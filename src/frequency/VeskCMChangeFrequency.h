// The engine behind the MO action "changeFrequency": one singleton, reached through instance().
//
// An own LTE cell's change is only recorded in the host's transaction: at the host's prepare,
// commitPreparation asks the configuration manager (destination 2), blocks until its answer,
// rebuilds frequencies and relations in the same database transaction and asks the reset
// component for the restart; the host's commit then writes everything. An external cell's change
// runs at once in a database transaction of its own (VeskCMChangeFrequencyExternal.cc). The
// relation rebuild is in VeskCMChangeFrequencyRelations.cc.
//
// Threads: every operation except responseReceived runs under the managed object front's mutex
// or in the host's prepare of the one transaction that uses the action; the members are not
// locked. responseReceived comes on the framework's thread; the semaphore orders its write of
// the answer before the waiting thread's read.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "platform/DBObject.h"
#include "platform/Semaphore.h"
#include "platform/VeskMessages.h"

namespace TibVeskCM {

class VeskCMChangeFrequency {
  public:
    using CellFrequency = VESK::Messages::VESK_ValidateFrequencyReq::sCellFrequency;

    // Made at first use, destroyed at library unload.
    static VeskCMChangeFrequency* instance();
    virtual ~VeskCMChangeFrequency();
    VeskCMChangeFrequency(const VeskCMChangeFrequency&) = delete;
    VeskCMChangeFrequency& operator=(const VeskCMChangeFrequency&) = delete;

    // An own LTE cell (dn holds ",EUtranCellFDD=" or ",EUtranCellTDD="): writes the new channel
    // into the database transaction `dbTxHandle` of the host transaction `orlTxHandle` and hangs
    // the prepare and abort callbacks on it. 0 accepted, -1 refused. `result` is not kept: the
    // text of a limit reached at prepare goes to the log, which the host shows with the refusal.
    int changeLTECellFrequency(unsigned long orlTxHandle, int dbTxHandle, std::string dn,
                               int earfcn, const char** result);
    // The host's prepare: asks the configuration manager, waits without a time limit, rebuilds.
    // 0, -6 refused by the configuration manager, -10 a limit reached.
    static int commitPreparation(unsigned long orlTxHandle);
    // The host's abort: forgets the cells of the transaction. 0.
    static int abortPreparation(unsigned long orlTxHandle);
    // The configuration manager's answer; any thread.
    void responseReceived(bool ok);

    // An external LTE cell, in a database transaction of its own: 0, -1 or -10.
    int changeExternalLTECellFrequency(std::string dn, int earfcn, const char** result);
    // An external UTRAN cell, in a database transaction of its own: 0, -1, -7, or the refusal of
    // a helper.
    int changeExternalUtranCellFDDFrequency(std::string dn, int channel, const char** result);

    // The database transaction of the external flows: 1 done, 0 not (startTransaction refuses
    // while a handle is held, commit and rollback while none is).
    int startTransaction();
    int commit();
    int rollback();

    // The channel the station takes for `earfcn`: a 5 GHz channel of the high numbering becomes
    // its low twin; any other number is given back.
    static int convertBand46(int earfcn);
    // The cells waiting for the prepare of the open transaction.
    const std::list<CellFrequency>& cellFrequencies() const { return _cellFrequencies; }
    int databaseTxHandle() const { return _databaseTxHandle; }
    bool isLAA() const { return _isLAA; }

  private:
    VeskCMChangeFrequency();

    int prepareChange();
    bool isAllowedChannel(const std::string& dn, int earfcn) const;
    void recordCell(const std::string& dn, int earfcn);
    int refuseAtLimit(const char* text);

    // ---- Frequencies, cells and limits (VeskCMChangeFrequency.cc) ----
    bool getEutrancellFDD(std::string dn, std::string& cell) const;
    void getCurrentEUtranFrequency(std::string dn, std::string& frequency) const;
    int getEUtranFrequency(int arfcn, std::string& frequency) const;
    int createEUtranFrequency(int arfcn, std::string& frequency);
    int getDlChannelBandwidth(std::string dn) const;
    void updateChannelBWs();
    int createFreqMOsToDbTx();
    int checkCardinality(const char* parent, const char* className) const;
    int sendValidateFrequencyReqMsg();
    int sendResetMsg();

    // ---- Relation rebuild (VeskCMChangeFrequencyRelations.cc) ----
    std::string getId(std::string parent, std::string className, std::string id) const;
    bool checkEUtranFreqRelation(std::string cell, std::string frequency, std::string& relation,
                                 int tx) const;
    bool checkUtranFreqRelation(std::string cell, std::string frequency,
                                std::string& relation) const;
    void createEutranFreqRelation(std::string cell, std::string sourceRelation,
                                  std::string frequency, std::string& relation);
    int createUtranFreqRelation(std::string cell, int channel, std::string frequency,
                                std::string& relation, std::string externalCell);
    int handleEUtranFreqRelation(std::string cell, std::string currentFrequency,
                                 std::string newFrequency);
    void copyEUtranCellRelations(std::string cell, std::string sourceRelation,
                                 std::string targetRelation);
    std::list<std::string> getAllEUtranCellRelations(std::string cell, std::string relation) const;
    std::list<std::string> getEUtranCellFDDs(std::string externalCell) const;
    int createExternalUtranCellFDD(std::string parent, std::string source, std::string& created);
    int createUtranCellRelation(std::string cell, std::string oldExternal,
                                std::string targetRelation, std::string newExternal);
    int createUtranFrequency(int channel, std::string& frequency);
    void copyDBObject(DBObject* source, DBObject* target);
    Attribute* copyAttribute(std::string name, Attribute* source, std::string targetKey,
                             std::string targetDn);
    // Inserts a copy of `source` (committed) named `key` under `parent`, with `idName` set to
    // `id` and `refName` to `ref`; gives its dn. The source stays the caller's.
    std::string insertCopy(DBObject* source, const std::string& parent, const std::string& key,
                           const std::string& idName, const std::string& id,
                           const std::string& refName, const std::string& ref);

    // ---- External cells and clean-up (VeskCMChangeFrequencyExternal.cc) ----
    void deleteMos(std::string cell, std::string frequency);
    bool keepsRelation(const std::string& cell, const std::string& entry) const;
    std::list<std::string> getReservedBys(std::string dn) const;
    void removeReservedBys();
    void removeReservedByRefMOs(std::string dn);
    void removeUnusedMOs(std::string externalCell);
    void cleanUtranFreqRelations();
    bool isPointingToOwnFrequency(std::string cell, std::string relation) const;
    bool isUsingSameFrequency(std::string cell) const;
    bool isFreqSameAsCurrent(std::string externalCell, int channel) const;
    DBObject* getCurrentUtranFreqRelation(std::string cell, std::string externalCell) const;
    bool relinkExternalNeighbours(const std::string& dn, const std::string& newFrequency);
    void setExternalFrequencyRef(const std::string& dn, const std::string& frequency);
    int refuseExternal(int code, const char* logText);
    void deleteInTransaction(const std::string& dn);

    int _databaseTxHandle = 0;
    bool _isLAA = false;
    std::unique_ptr<VESK::Framework::Semaphore> _validationSemaphore;
    bool _validationResult = false;
    const char** _actionResultText = nullptr;
    std::list<CellFrequency> _cellFrequencies;
};

}  // namespace TibVeskCM

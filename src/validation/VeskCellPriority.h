// The ranked order of the LTE and WCDMA cells on the station's shared resources, kept in the
// attribute `priority` of EUtranCellFDD, EUtranCellTDD and NodeBLocalCell in step with what
// operators do to the cells (create, delete, lock, unlock), and the node's next operation mode,
// chosen at commit from the cells. The commit stage also mends two things on LTE cells:
// `bcCdma2000SysTimeType` follows `initCdma2000SysTimeType`, and 5 GHz channels are stored in
// their low numbering.
//
// After a change the database holds the unlocked cells numbered 1 to n without a gap (1 ranks
// highest: cells with resources allocated first, then the other unlocked ones) and the locked
// ones at 10, which means not in use. Nothing here refuses a change: reads that fail fall back on
// defaults, writes that fail are logged and passed over.
//
// Threads: no lock. Every call arrives under the front's mutex, one transaction at a time; the
// two lists of transactions are shared by all of them.
#pragma once

#include <list>
#include <map>
#include <string>

#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlOamSpi.h"

class DBObject;

namespace TibVeskOI {

class VeskCellPriority {
  public:
    // One cell of a priority map.
    struct sCellLock {
        std::string cellDn;           // the cell's database key, "EUtranCellFDD=1"
        int administrativeState = 0;  // 1 unlocked, 0 locked
        bool resourcesAllocated = false;
        bool isNodeBCell = false;  // a NodeBLocalCell
    };
    // Priority to cell; a cell that is not in use (10) is left out.
    typedef std::map<int, sCellLock> PriorityMap;
    typedef std::list<unsigned long> TxList;

    // The node's operation modes: "mixed" (1) and "hc_lte" (0) for the operation mode service.
    enum eMode { LTE_HC = 0, MSMM = 1 };
    // How insertToMap places a cell.
    enum eMapRule { ruleResourcesAllocated = 0, ruleUnlocked = 1, ruleLocked = 2 };

    // Made at first use, destroyed at library unload.
    static VeskCellPriority* instance();
    virtual ~VeskCellPriority() {}

    // After a cell's creation in the database: places the new cell by its initial
    // `administrativeState` (locked without one) and notes the transaction for the mode check,
    // an LTE cell also for the cell mending. Other classes are passed over. Always 0.
    int validateCellCreation(unsigned long aTxHandle, const char* parentDn, const char* aClassName,
                             OrlMoNamedAttributeValueContainer_3** attributes,
                             const char* keyValue);
    // Before a cell's attribute is written: a new `administrativeState` re-places the cell, and
    // the transaction is noted for the mode check. Other attributes pass. Always 0.
    int validateCellSetAttribute(unsigned long aTxHandle, const char* aDn,
                                 const char* aAttributeName,
                                 const OrlMoAttributeValueContainer_3* value);
    // Notes the transaction for the mode check. Always 0.
    int validateCellDeletion(unsigned long aTxHandle, const char* dn);
    // Runs the mode check and the cell mending the transaction was noted for, once each, in its
    // database transaction. Always 0: nothing here fails a commit.
    int commit(unsigned long aTxHandle);
    // Forgets one note of each kind of the transaction.
    void abort(unsigned long aTxHandle);

    // The steps behind the entry points, in the database transaction `dbTx`.
    // Rebuilds the map from the cells of `dbTx`, closes its gaps, places `aCell` (a key) by
    // `aAdministrativeState` (1 unlocked, 0 locked, anything else leaves it where it is) and
    // writes every cell's priority.
    void checkCellPriority(int dbTx, const std::string& aCell, int aAdministrativeState);
    // Closes the gaps in the cells' priorities, then sets the next operation mode the cells
    // call for.
    void validateMode(int dbTx);
    // Mends `bcCdma2000SysTimeType` and the 5 GHz channel numbers of the LTE cells.
    void validateCell(int dbTx);

    // Renumbers the map 1, 2, 3... in its order; 1 if it already was (also when empty), else 0.
    static int removeEmptySpaces(PriorityMap& map);
    // Places `cell` (taken out first if present) by `rule`: behind the cells with resources
    // allocated, behind every cell in use, or last.
    static void insertToMap(PriorityMap& map, const sCellLock& cell, eMapRule rule);

    const TxList& modeCheckTxs() const { return _modeCheckTxs; }
    const TxList& cellCheckTxs() const { return _cellCheckTxs; }

  private:
    VeskCellPriority() {}

    // The cells of `dbTx`: FDD, then WCDMA, then TDD, a later one winning a tie.
    static void buildMap(int dbTx, PriorityMap& map);
    static void getCurrentPriority(const std::string& className, int dbTx, PriorityMap& map,
                                   bool isNodeBCell);
    static bool getCell(const PriorityMap& map, const std::string& cell, sCellLock& found);
    static void updateDatabase(const PriorityMap& map, int dbTx);
    static void printPriority(const PriorityMap& map);
    static void checkMode(eMode mode);
    // One LTE cell: true when it was changed and must be written back.
    static bool mendCell(DBObject* cell, const char* channelName);
    // An int or bool attribute of `object`, or `start` when it is absent or of another kind.
    // Quiet: a cell that lacks one is the usual case, not a fault.
    static int intOf(DBObject* object, const char* name, int start);
    static bool boolOf(DBObject* object, const char* name, bool start);

    TxList _modeCheckTxs;
    TxList _cellCheckTxs;
};

}  // namespace TibVeskOI

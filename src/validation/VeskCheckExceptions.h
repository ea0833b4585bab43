// Yes-or-no rules that a database transaction asks before it creates, deletes, changes or shows
// something: backups, PM jobs, upgrade packages, the two RAT functions and the system
// information flags of Cdma20001xRttCellRelation. Stateless: make one on the stack for each
// question. Reads committed data through IDatabase (except where a rule says otherwise); a read
// that fails gives the negative answer, never an exception.
//
// Threads: any host thread.
#pragma once

#include <string>

namespace TibVeskCM {

class VeskCheckExceptions {
  public:
    VeskCheckExceptions() = default;

    // True permits creating `className` (key `keyValue`) under `parentDn`.
    bool checkMoCreation(std::string parentDn, std::string className, std::string keyValue);
    // True permits deleting `dn`; every rule is evaluated.
    bool checkMoDeletion(std::string dn, std::string parentDn);
    // True if `attrName` is the naming attribute of the class of `objDn`.
    bool checkKeyAttribute(std::string objDn, std::string attrName);
    // True refuses the set: a committed MeasurementReader already has the attribute.
    bool checkMeasurementReaderAttributeExistance(const char* dn, const char* attributeName);
    // False refuses the set (maxStoredManualBackups outside 1..5).
    bool checkBrMHousekeepingAttributeValidity(std::string attributeName, unsigned short value);
    // True when the set is one of the two system information flags of a
    // Cdma20001xRttCellRelation.
    bool isIt_includeInSystemInformationEtc(const char* dn, const char* attributeName);
    // True when setting `value` would make both flags true with the committed other flag.
    bool check_includeInSystemInformationAndRel9AttributeValidity(const char* dn,
                                                                  const char* attributeName,
                                                                  bool value);
    // The same against the pending (alternate) other flag of the committed object.
    bool checkAltStorage_includeInSystemInformationAndRel9AttributeValidity(
        const char* dn, const char* attributeName, bool value);
    // False when `dn` is an EUtranFreqRelation on its cell's own downlink frequency.
    bool checkEUtranFreqRelationDeletion(std::string dn);

    // ASCII lower case; everything else unchanged.
    static char toLower(char c);
    // True if the last pair of `dn` names a PM job.
    bool isThisPmJob(std::string dn);
    // True if the first pair of `dn` is in committed data.
    bool existsMo(const char* dn);
    // 0 with isDefault set, or non-zero when a read fails.
    int checkIsDefaultFreq(std::string dn, bool& isDefault);
    bool checkPmJobDeletion(std::string dn, std::string parentDn);
    bool checkUpgradePackageDeletion(std::string dn, std::string parentDn);
    bool checkRatDeletion(std::string dn, std::string parentDn);
    bool checkMeasurementReaderCanBeCreated(std::string parentDn, std::string className);

  private:
    // The other flag of the pair, or "" for any other name.
    static std::string otherFlag(const std::string& attributeName);
    static bool readOtherFlag(const char* dn, const char* attributeName, bool alternate,
                              const char* fn, bool* value);
    // True if a committed instance of `cellClass` (struct objects aside) is enabled. Logs each
    // enabled one against `dn`.
    bool anyEnabledCell(const std::string& cellClass, const std::string& dn);
    // One committed value: 0, or non-zero (logged) when the object, the attribute or its kind is
    // wrong.
    template <typename T>
    int readCommitted(const std::string& dn, const char* attrName, T& out);
};

}  // namespace TibVeskCM

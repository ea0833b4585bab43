// Writers that work on object copies and on pending (alternate) values, shared by the
// transactions. One object per process (instance()), without state of its own.
//
// Three groups: overwriting an attribute of an object copy from a host value
// (VeskDBTransactionHelper.cc), struct values on the pending path
// (VeskDBTransactionHelperStruct.cc), and when a change takes effect plus the audit attributes kept
// on every write (VeskDBTransactionHelperAlternate.cc).
//
// Threads: called on the thread of the transaction's current request.
#pragma once

#include <list>
#include <string>

#include "platform/Attribute.h"
#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/IPCData.h"
#include "platform/orl/OrlAttributeValue.h"

namespace TibVeskCM {

class VeskDBTransactionHelper {
  public:
    // The kind of change recorded in `lastModification`.
    enum Operation { NOT_MODIFIED = 0, OPERATOR_MODIFICATION = 1, OPERATOR_DELETE = 2 };

    // One read-only attribute that every new MO of a class that has it gets.
    struct attrNameValuePair {
        std::string name;
        AttributeVariant value;
        IPCData::AttributeValueType type;
    };

    // What getReferenceValueFromAlternateStorage answers when nothing is pending.
    static const int REFERENCEVALUE_NOT_FOUND = 2;

    static VeskDBTransactionHelper* instance();
    virtual ~VeskDBTransactionHelper();

    // Overwrites `attribute` of an object copy with `value` (zero values mark it deleted). `dn`
    // is the full dn of the object.
    void setAttributeValue(std::string dn, Attribute* attribute,
                           OrlMoAttributeValueContainer_3 const* value);
    void setSingleAttribute(std::string shortDn, Attribute* attribute,
                            OrlMoAttributeValueContainer_3 const* value);
    void setListAttribute(std::string shortDn, Attribute* attribute,
                          OrlMoAttributeValueContainer_3 const* value);
    // Sets one attribute of `object` (found or added) from `value`; `object` stays the caller's.
    void updateObject(std::string attributeName, OrlMoAttributeValueContainer_3 const* value,
                      DBObject* object);

    // Struct values held pending in `slot`. handleStructAttribute: 1 success, 0 failure;
    // handleStructList: 0 success, -1 failure (0 also when the MO is missing).
    int handleStructAttribute(char const* dn, char const* attributeName,
                              OrlMoAttributeValueContainer_3 const* value, int handle, int slot);
    int handleStructList(std::string dn, std::string attributeName,
                         OrlMoAttributeValueContainer_3 const* value, int handle, int slot);
    bool handleOneItem(std::string itemDn, OrlMoAttributeValueStructMember_3* firstMember,
                       std::string itemName, int handle, int slot);
    // Deletes the struct objects named by the pending value and restores the default.
    void deleteStruct(std::string dn, std::string attributeName, int handle, bool flag);

    // When a change of the attribute takes effect: 0 (with `slot` set, or left as it was) or -5
    // when the object must be locked first.
    int checkTakesEffect(char const* dn, char const* attributeName, int& slot);
    // The dn of the EUtranCellFDD at or above `dn`, or "".
    std::string getEutrancellFDD(std::string dn);
    // Writes `value` as a pending value in `slot`. 0, or -1 when the MO is missing.
    int setAlternateStorage(std::string dn, std::string attributeName, int handle,
                            OrlMoAttributeValueContainer_3 const* value, int slot);
    // 1 or 0 for the pending value of the other attribute of the system information pair, or
    // REFERENCEVALUE_NOT_FOUND.
    int getReferenceValueFromAlternateStorage(char const* dn, char const* attributeName);

    // Audit attributes. 0 success, else the failing step's code.
    int handleCreatedByAttribute(std::string dn, int handle);
    int handleLastModificationAttribute(std::string dn, Operation operation, int handle);
    void initReadOnlyAttributes(std::list<attrNameValuePair>& pairs);
    int createReadOnlyAttributes(std::string dn, int handle);
    int createOtherRequiredAttributes(std::string dn, Operation operation, int handle);

    // Default frequency MOs (VeskDBTransactionHelperFrequency.cc), in the database transaction
    // `handle`: the EUtranFrequency of `frequency` under the last EUtraNetwork unless committed
    // data has one, and "EUtranFreqRelation=1" of `cellDn` pointing at it. 0, -1, or -10 at the
    // model's limit; what was made before a failure stays in the transaction.
    int createDefaultFrequencyMOs(std::string cellDn, int frequency, int handle);
    // 0 found (rdn set), -2 not found, -1 a frequency without its channel. Committed data.
    int checkEUtranFrequency(int frequency, std::string& rdn);
    // 0 room for one more committed child, -10 at the limit, -1 no limit known.
    int isMOLimitExceeded(std::string parentDn, std::string className);
    // The first free "className=n" below parentDn, n from 1 to the model's maximum: 0 or -10.
    int findFreeDn(std::string parentDn, std::string className, std::string& rdn, std::string& id,
                   int handle);
    std::string generateDn(std::string className, int index);
    int createEUtranFrequency(std::string rdn, std::string id, int frequency, std::string dn,
                              std::string parentDn, int handle);
    int createEUtranFreqRelation(std::string cellDn, std::string frequencyDn, int handle);
    // The measurement bandwidth in resource blocks for a channel bandwidth in kHz; 0 outside
    // the table.
    int getAllowedMeasBandwidth(int channelBandwidth);

  protected:
    VeskDBTransactionHelper() = default;
};

}  // namespace TibVeskCM

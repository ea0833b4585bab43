// One host transaction's view of the configuration database.
//
// The managed object front makes one per open host transaction at join and deletes it at
// finish. Until the first write the transaction has no database handle (0), and its reads see
// committed data only. Reads convert what the database holds into the host's value containers;
// they never fail on absent things: a missing object, attribute or member is an empty container
// and 0.
//
// Threads: one host thread at a time uses an object (the front serialises). The iterator counter
// and the most recent transaction are shared by all transactions.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"
#include "platform/WrapperTemplate.h"
#include "platform/orl/OrlAttributeValue.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "transaction/IAttribute.h"

namespace TibVeskCM {

class VeskDBTransaction : public WrapperTemplate::Wrapper {
  public:
    // One reference written in this transaction, checked at commit.
    struct MoReference {
        std::string dn;             // the object holding the attribute
        std::string attributeName;  // the reference attribute
        std::string reference;      // the dn it points at, as the host gave it
    };

    // Keeps the low word of `transactionId` and the portal, and becomes the most recent
    // transaction. Opens no database transaction.
    VeskDBTransaction(unsigned long long transactionId, OrlMgmtSpiInterfacePortal_1& portal);
    // Drops the parked iterator texts and the references; leaves the database transaction alone.
    virtual ~VeskDBTransaction();
    VeskDBTransaction(const VeskDBTransaction&) = delete;
    VeskDBTransaction& operator=(const VeskDBTransaction&) = delete;

    // The most recently constructed transaction (not cleared when it is destroyed).
    static VeskDBTransaction* getVeskDBTransaction();

    // Opens a database transaction and keeps its handle: 0, or -1 when the database refuses.
    int startTransactionToDB();
    int getDatabaseTxHandle() const { return databaseTxHandle; }
    std::list<MoReference>& getRefList() { return refList; }
    void enableAiLog() { aiLogEnabled = true; }
    bool isAiLogEnabled() const { return aiLogEnabled; }
    // References written in this transaction (newest first), checked at commit.
    // Notes dn/attribute -> reference once; references into the band 46 high channels are not
    // noted.
    void addToReferenceList(std::string dn, std::string attributeName, std::string reference);
    // Forgets every noted reference of dn/attribute, whatever it points at.
    void removeFromReferenceList(std::string dn, std::string attributeName);
    void printReferenceList();
    // True if the attribute still holds `reference` (by substring) in this transaction's view.
    bool referenceExists(std::string dn, std::string attributeName, std::string reference);
    // True if every noted reference that is still held points at an MO; reports each missing
    // target and empties the list.
    bool validateReferences();
    // Confirms, or drops, what went to the security component. The database's own commit or
    // rollback is the front's. Always 0.
    int commit();
    int rollback();

    // True if committed data hold `dn`, or else the view of this transaction does. Always 0.
    int existsMo(char const* dn, bool* exists);
    // The number of instances of `className` directly under `dn` ("" is the root). Always 0.
    int countMoChildren(char const* dn, char const* className, unsigned long long* count);
    // Parks the ids of the instances of `className` under `dn` under a new handle, returned in
    // *handle; 0 when there are none. Always 0.
    int newIterator(char const* dn, char const* className, unsigned long long* handle);
    // The next id of the iterator, or null at its end. The text stays valid until the
    // transaction is destroyed. Always 0.
    int next(unsigned long long handle, char** result);

    // The value of one attribute in the view of this transaction; a pending alternate value wins
    // over the stored one. `result` always gets a container of the model's type.
    int getMoAttribute(std::string const& dn, std::string const& attributeName,
                       OrlMoAttributeValueResult_3* result);
    // The values of `names`, one container each in order. The result of the last conversion.
    int getMoAttributes(std::string const& dn, std::list<std::string> const& names,
                        OrlMoAttributeValuesResult_3* results);

    // Conversion of one attribute into a struct member's result record (sets its release).
    int setAttrResult(char const* dn, Attribute* attribute, OrlMoAttributeValueResult_3& result);
    // Conversion of one attribute into a container that initAttributeContainer made.
    int setAttrResult_2(std::string const& dn, Attribute* attribute,
                        OrlMoAttributeValueContainer_3* container);

    // List readers: the attribute's text split into values of `type`.
    int getEnumList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                    OrlMoAttributeValueContainer_3* container);
    int getIntList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                   OrlMoAttributeValueContainer_3* container);
    int getUIntList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                    OrlMoAttributeValueContainer_3* container);
    int getStringList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                      OrlMoAttributeValueContainer_3* container);

    // One struct value from the object `structDn`: a chain of its visible members.
    int getStructAttribute(std::string structDn, OrlOamSpiMoAttributeType_3 type,
                           OrlMoAttributeValueContainer_3* container);
    // One struct value for each object named in the ";"-joined `structDns` that exists. -2 when
    // the list cannot be read.
    int getStructListAttribute(std::string dn, std::string structDns,
                               OrlOamSpiMoAttributeType_3 type,
                               OrlMoAttributeValueContainer_3* container);

    // The database type of a host type, single or list; 0 (with a warning) for others.
    IPCData::AttributeValueType getAttributeValueType(int hostType, bool isList);

    // Writes, in this transaction's database transaction (opened by the front before the first
    // write). 0 success, -1 failure, -5 the object must be locked first, -8 a refused value.
    int createMo(char const* parentDn, char const* className, char const* keyAttributeName,
                 char const* keyAttributeValue, OrlMoNamedAttributeValueContainer_3** attributes);
    int setMoAttribute(std::string const& dn, std::string const& attributeName,
                       OrlMoAttributeValueContainer_3 const* value);
    int deleteMo(std::string const& dn);

    // Builders of new attributes from host values; the caller owns the result (null if none).
    Attribute* updateNewAttribute(std::string dn, std::string attributeName,
                                  OrlMoAttributeValueContainer_3 value, bool valueSet);
    Attribute* updateNewListAttribute(std::string attributeName, std::string listText, int hostType,
                                      bool valueSet);
    // The stored text of a list value; notes the elements of a reference list.
    std::string createListAttributeString(OrlMoAttributeValueContainer_3 const* value,
                                          std::string& dn, std::string rdn,
                                          std::string attributeName);

    // Gates to the struct writers: 1 success, 0 failure (single); 0 success, -1 failure (list).
    int handleStructAttribute(std::string dn, std::string attributeName,
                              OrlMoAttributeValueContainer_3 const* value, bool flag,
                              DBObject** object, OrlMoAttributeValueStructMember_3* member,
                              std::string unused1, std::string unused2);
    int handleStructListAttribute(std::string dn, std::string attributeName,
                                  OrlMoAttributeValueContainer_3 const* value,
                                  std::string listText);

  private:
    // An agent-local comparator keeps the map's code out of the plug-in's exports.
    struct HandleOrder {
        bool operator()(unsigned long long a, unsigned long long b) const { return a < b; }
    };
    typedef std::multimap<unsigned long long, std::string, HandleOrder> IteratorMap;

    // Converts one member and links it after *tail; *rc is the conversion's result. False when
    // the member is left out. `listEntry` tells whether the struct is an entry of a struct list,
    // whose reader the warnings then name.
    bool appendMember(const std::string& structDn, const std::string& name, Attribute* member,
                      OrlMoAttributeValueStructMember_3**& tail, int* rc, bool listEntry);
    // Builds the member chain of one struct list entry from `object` into `slot`.
    void buildStructListMembers(DBObject* object, OrlMoAttributeValue_3& slot);
    // The ids of the children of `className` under `dn` ("" for the root); `operation` is the
    // caller, which the trace names.
    std::list<std::string> childIds(char const* operation, char const* dn, char const* className);
    // Numbers, enums and bools: one 8-byte slot per element of the ","-joined text.
    int readNumberList(Attribute* attribute, OrlOamSpiMoAttributeType_3 type,
                       OrlMoAttributeValueContainer_3* container, bool asUnsigned);
    // The body of setAttrResult_2 and setAttrResult once the attribute is known to be
    // convertible; they may throw boost::bad_get.
    int convertScalar(const std::string& dn, Attribute* attribute,
                      OrlMoAttributeValueContainer_3* container);
    int readList(Attribute* attribute, OrlMoAttributeValueContainer_3* container);
    int convertMember(char const* dn, Attribute* attribute, OrlMoAttributeValueResult_3& result);

    // Pieces of the write operations (VeskDBTransactionWrite.cc).
    void addCreatedAttribute(DBObject* object, const std::string& newDn, char const* className,
                             OrlMoNamedAttributeValueContainer_3 const& named);
    int completeCreatedMo(const std::string& newDn);
    int setPendingAttribute(std::string const& dn, std::string const& attributeName,
                            OrlMoAttributeValueContainer_3 const* value, int slot);
    int deleteAttributeValue(std::string const& dn, std::string const& attributeName,
                             OrlMoAttributeValueContainer_3 const* value);
    int setSecuritySingle(std::string const& dn, std::string const& attributeName,
                          OrlMoAttributeValueContainer_3 const* value);
    int setSingleValue(std::string const& dn, std::string const& attributeName,
                       OrlMoAttributeValueContainer_3 const* value);
    int setListValue(std::string const& dn, std::string const& attributeName,
                     OrlMoAttributeValueContainer_3 const* value);

    int32_t databaseTxHandle;
    bool secUsed;
    bool aiLogEnabled;
    IAttribute iAttr;  // the attribute factory of the writers
    std::list<MoReference> refList;
    uint32_t transactionId;
    OrlMgmtSpiInterfacePortal_1& portal;
    IteratorMap iterators;
    IteratorMap::iterator lastIterator;

    static std::atomic<unsigned long long> s_iteratorCounter;
    static std::atomic<VeskDBTransaction*> s_lastTransaction;
};

}  // namespace TibVeskCM

// The agent's view of the host's model repository: answers questions about classes, attributes,
// types, cardinalities and enumerations as plain values, and builds new MOs from the model's
// defaults and system-created children inside a caller's database transaction.
//
// The object has no lock. It runs on the caller's thread under the front's mutex; the key value
// text and the database handle are working state of the current call and rely on that mutex.
// Results are OrlReturnT: 0 success, -1 failure, -2 where the model answers "none".
#pragma once

#include <list>
#include <string>

#include "model/AttributeTypeCache.h"
#include "platform/DBObject.h"
#include "platform/orl/OrlModelRepository.h"

namespace TibVeskCM {

class VeskModelRepository {
  public:
    enum TakesEffectValue {
        TAKES_EFFECT_NONE = 0,
        TAKES_EFFECT_CELL_LOCK = 1,    // "Cell lock/unlock"
        TAKES_EFFECT_OBJECT_LOCK = 2,  // "Object lock/unlock"
        TAKES_EFFECT_NODE_RESTART = 3  // "At node restart"
    };

    // Made at first use, destroyed at library unload.
    static VeskModelRepository* instance();
    virtual ~VeskModelRepository() = default;

    // Keeps the two records; they belong to the host and outlive the agent. Called by the
    // agent's start, before requests that need the model arrive. Also installs the attribute
    // type lookup of VeskOrlHelper.
    void initialize(OrlOamSpiModelRepository_2* repository2,
                    OrlOamSpiModelRepository_3* repository3);

    OrlOamSpiModelRepository_2* repository2() const { return _repository2; }
    OrlOamSpiModelRepository_3* repository3() const { return _repository3; }

    // ---- Queries ----
    OrlReturnT getMOCHandleByDn(const char* dn, OrlOamSpiMocHandleT* moc);
    // The model type of the attribute (derived types resolved to their base) into *type. An
    // attribute the class lacks answers 0 and leaves *type as the caller preset it.
    OrlReturnT getAttributeType(const std::string& dn, const std::string& attrName, int* type);
    // A list when the maximum multiplicity is 2 or more.
    OrlReturnT checkAttributeMultiplicity(OrlOamSpiTypeContainerHandleT typeContainer,
                                          bool& isList);
    // false and 0 when the attribute is not found.
    OrlReturnT checkAttributeListType(const char* dn, const char* attrName, bool& isList);
    OrlReturnT checkAttribute(OrlOamSpiMocHandleT moc, bool& exists, std::string attrName);
    OrlReturnT checkAttributeExist(const char* dn, std::string attrName, bool& exists);
    OrlReturnT getMOMinCardinality(OrlOamSpiContainmentHandleT containment, int& min);
    OrlReturnT getMOMaxCardinality(OrlOamSpiContainmentHandleT containment, int& max);
    OrlReturnT getMOCardinalityRange(const char* parentDn, const char* childClass, int& min,
                                     int& max);
    OrlReturnT getMOCParentName(OrlOamSpiContainmentHandleT containment, std::string* name);
    // *value is -1 until the literal is found; 0 with -1 when the type is no enumeration, -2
    // when the enumeration lacks the literal.
    OrlReturnT getEnumLiteralValue(OrlOamSpiTypeContainerHandleT typeContainer, std::string literal,
                                   short* value);
    OrlReturnT getEnumValueByLiteralName(const char* dn, const char* attrName, std::string literal,
                                         int& value);
    // The database's value type for a model type, list or not; 9 for anything unknown.
    static int getAttributeValueType(OrlOamSpiMrType_3 type, bool isList);
    bool isSystemCreatedMOC(OrlOamSpiMocHandleT moc);
    OrlOamSpiMocHandleT getRequestedMOC(const char* mom, const char* moc);
    // 0 and 0 on any failure.
    OrlReturnT getAttributeMultiplicityRange(std::string& dn, std::string& attrName, int& min,
                                             int& max);
    // Every value of the attribute's extensions named extensionName, in model order.
    OrlReturnT getAttributeDomainExtensionValue(OrlOamSpiMocHandleT moc, const char* attrName,
                                                const char* extensionName,
                                                std::list<std::string>* values);
    // The last recognised "takesEffect" value wins; 0 when there is none.
    OrlReturnT getAttributeTakesEffectValue(const char* dn, const char* attrName,
                                            TakesEffectValue& result);

    // ---- Objects with default values (inside the database transaction dbTxHandle) ----
    // Inserts `object` (owned by the caller, named by its rdn and parent), adds every attribute
    // with a default that it does not have yet, struct objects included, and updates it.
    OrlReturnT createMOWithDefaultValues(const char* dn, DBObject* object, int dbTxHandle);
    // Creates the system-created children of `dn`, from the instance file or by minimum
    // cardinality, recursively. 0, or -1.
    int createSystemCreatedSubMOs(const char* dn, int dbTxHandle);
    // Sets one attribute of parentDn + "," + rdn back to its default; flag puts the value in
    // alternate slot 2.
    OrlReturnT createAttributeWithDefaultValue(std::string parentDn, std::string rdn,
                                               std::string attrName, int dbTxHandle, bool flag);
    int findAttributes(OrlOamSpiMocHandleT moc, DBObject** object, bool keyGiven);
    int findChildMOCs(OrlOamSpiMocHandleT moc, std::string dn);
    // Inserts the struct object rdn:attrName (with "=1" for a list) under parentDn + "," + rdn
    // when at least one member has a default; *created tells whether it did.
    OrlReturnT handleStruct(OrlOamSpiTypeContainerHandleT typeContainer, std::string parentDn,
                            std::string rdn, std::string attrName, bool* created, bool isList,
                            bool flag);
    OrlReturnT createAttribute(OrlOamSpiMocHandleT moc, std::string parentDn, std::string rdn,
                               std::string attrName, int dbTxHandle, bool flag);

  private:
    VeskModelRepository() = default;

    // The attribute of the class named attrName: 0 found, -2 not in the class, -1 failure
    // (logged with the walk's error texts).
    OrlReturnT findAttributeHandle(OrlOamSpiMocHandleT moc, const std::string& attrName,
                                   OrlOamSpiAttributeHandleT* attribute);
    // The model type of a type container, a derived type resolved to its base.
    OrlReturnT resolveType(OrlOamSpiTypeContainerHandleT typeContainer, OrlOamSpiMrType_3* type);
    // What the builders need of one type container.
    struct ValueShape {
        OrlOamSpiTypeContainerHandleT typeContainer = 0;
        int valueType = 9;  // the database's value type
        bool isList = false;
        std::string value;  // the first default text; "" without a default
        std::list<std::string> defaults;
    };
    // The error lines of readShape's three questions, by caller.
    struct ShapeErrors {
        const char* type;
        const char* defaultValue;
        const char* multiplicity;
    };
    static const ShapeErrors kAttributeErrors;
    static const ShapeErrors kMemberErrors;
    static const ShapeErrors kRestoreErrors;

    // The attribute's name, with the walk's error lines; the text is the host's.
    OrlReturnT attributeName(OrlOamSpiAttributeHandleT attribute, const char** name);
    OrlReturnT attributeName(OrlOamSpiAttributeHandleT attribute, std::string* name);
    // getAttributeType's walk over the attributes of `moc`: every attribute named attrName sets
    // *type (and *typed), the last one winning.
    OrlReturnT walkAttributeType(OrlOamSpiMocHandleT moc, const std::string& attrName, int* type,
                                 bool* typed);
    // Type (a derived type resolved), defaults and multiplicity of a type container.
    OrlReturnT readShape(OrlOamSpiTypeContainerHandleT typeContainer, const ShapeErrors& errors,
                         ValueShape* shape);
    // The first default text into *value and all of them into *all; no default (-2) leaves them
    // empty and answers 0.
    OrlReturnT readDefault(OrlOamSpiTypeContainerHandleT typeContainer, std::string* value,
                           std::list<std::string>* all);
    // Sets the attribute's value from the shape as its type asks. -1 when an enumeration literal
    // is unknown.
    OrlReturnT encodeValue(Attribute* attribute, const ValueShape& shape);
    // A new attribute holding the shape's encoded value; null when a literal is unknown.
    Attribute* makeDefaultAttribute(const std::string& name, const ValueShape& shape);
    // One model attribute of findAttributes; 0 or -1.
    int addDefaultAttribute(OrlOamSpiAttributeHandleT attribute, DBObject* object, bool keyGiven);
    // One struct member of handleStruct: *added tells whether it gave the object an attribute.
    OrlReturnT addStructMember(OrlOamSpiStructMemberHandleT member, DBObject* object, bool flag,
                               bool* added);
    // createAttribute's work on the model attribute found: reads its default and stores it on
    // the object parentDn + "," + rdn.
    OrlReturnT setDefaultOnObject(OrlOamSpiAttributeHandleT attribute, const std::string& parentDn,
                                  const std::string& rdn, const std::string& attrName,
                                  int dbTxHandle, bool flag);
    // Sets attrName of `object` (a copy the caller owns) to the encoded default and updates it.
    OrlReturnT storeDefault(DBObject* object, const std::string& attrName, const ValueShape& shape,
                            bool flag);
    // One child containment of findChildMOCs; 0 or -1.
    int createChildren(OrlOamSpiContainmentHandleT containment, const std::string& dn);

    OrlOamSpiModelRepository_2* _repository2 = nullptr;
    OrlOamSpiModelRepository_3* _repository3 = nullptr;
    AttributeTypeCache _types;  // answers of getAttributeType, for the records above
    std::string _keyValue = "0";
    int _dbTxHandle = 0;
};

}  // namespace TibVeskCM

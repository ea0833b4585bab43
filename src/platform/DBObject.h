// A caller's copy of one database object.
#pragma once

#include <map>
#include <string>

#include "platform/Attribute.h"
#include "platform/IPCData.h"

class DBObject {
  public:
    DBObject(std::string rdn, int instance, bool visible, bool flagB,
             IPCData::OperationalState opState, IPCData::AdminState adminState,
             std::string parentDn, int classInstance);
    DBObject(std::string rdn, int instance, bool visible, bool flagB,
             IPCData::OperationalState opState, IPCData::AdminState adminState);
    // Deep copy: the copy owns copies of all attributes.
    DBObject(const DBObject& other);
    DBObject& operator=(const DBObject&) = delete;
    // Destroys every attribute the object owns.
    virtual ~DBObject();

    // Owned by the object; null if absent.
    Attribute* getAttribute(std::string name);
    Attribute* getAlternateAttribute(std::string name);
    // Takes ownership of `attribute` (which must come from new). An attribute of the same name
    // is replaced and destroyed. Returns true on success.
    bool addAttribute(Attribute& attribute);
    bool addAlternateAttribute(Attribute& attribute);
    void setDn(std::string aDn) { dn = aDn; }

    std::string dn;        // the object's rdn (its key)
    std::string parentDn;  // full dn of the parent; "" at the root
    int instance;
    bool visible;  // false for objects that hold a struct value
    bool flagB;
    IPCData::OperationalState operationalState;
    IPCData::AdminState adminState;
    int classInstance;
    std::map<std::string, Attribute*> attributes;           // ordered by name
    std::map<std::string, Attribute*> alternateAttributes;  // pending values, by name
};

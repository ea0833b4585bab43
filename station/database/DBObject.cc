#include "platform/DBObject.h"

namespace {

void copyAttributes(const std::map<std::string, Attribute*>& from,
                    std::map<std::string, Attribute*>& to) {
    for (const auto& entry : from) {
        if (entry.second != nullptr)
            to.emplace(entry.first, new Attribute(*entry.second));
    }
}

void destroyAttributes(std::map<std::string, Attribute*>& attributes) {
    for (auto& entry : attributes)
        delete entry.second;
    attributes.clear();
}

// Takes ownership of `attribute`; an entry of the same name is destroyed unless it is the same.
bool adopt(std::map<std::string, Attribute*>& attributes, Attribute& attribute) {
    Attribute*& slot = attributes[attribute.name];
    if (slot != &attribute)
        delete slot;
    slot = &attribute;
    return true;
}

}  // namespace

DBObject::DBObject(std::string rdn, int aInstance, bool aVisible, bool aFlagB,
                   IPCData::OperationalState opState, IPCData::AdminState aAdminState,
                   std::string aParentDn, int aClassInstance)
    : dn(std::move(rdn)),
      parentDn(std::move(aParentDn)),
      instance(aInstance),
      visible(aVisible),
      flagB(aFlagB),
      operationalState(opState),
      adminState(aAdminState),
      classInstance(aClassInstance) {}

DBObject::DBObject(std::string rdn, int aInstance, bool aVisible, bool aFlagB,
                   IPCData::OperationalState opState, IPCData::AdminState aAdminState)
    : DBObject(std::move(rdn), aInstance, aVisible, aFlagB, opState, aAdminState, "", 1) {}

DBObject::DBObject(const DBObject& other)
    : dn(other.dn),
      parentDn(other.parentDn),
      instance(other.instance),
      visible(other.visible),
      flagB(other.flagB),
      operationalState(other.operationalState),
      adminState(other.adminState),
      classInstance(other.classInstance) {
    copyAttributes(other.attributes, attributes);
    copyAttributes(other.alternateAttributes, alternateAttributes);
}

DBObject::~DBObject() {
    destroyAttributes(attributes);
    destroyAttributes(alternateAttributes);
}

Attribute* DBObject::getAttribute(std::string name) {
    auto it = attributes.find(name);
    return it == attributes.end() ? nullptr : it->second;
}

Attribute* DBObject::getAlternateAttribute(std::string name) {
    auto it = alternateAttributes.find(name);
    return it == alternateAttributes.end() ? nullptr : it->second;
}

bool DBObject::addAttribute(Attribute& attribute) {
    return adopt(attributes, attribute);
}

bool DBObject::addAlternateAttribute(Attribute& attribute) {
    return adopt(alternateAttributes, attribute);
}

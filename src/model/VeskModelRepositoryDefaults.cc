// Objects built from the model's defaults: new MOs, their struct objects and their
// system-created children, written into the caller's database transaction. Nothing already
// inserted is cleaned up on failure: the transaction's rollback does that.
#include <memory>

#include "model/VeskInstanceModel.h"
#include "model/VeskModelRepository.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

namespace TibVeskCM {

namespace {

// The dn of the object named rdn below parentDn.
std::string childDn(const std::string& parentDn, const std::string& rdn) {
    return parentDn.empty() ? rdn : parentDn + "," + rdn;
}

std::string structName(const std::string& rdn, const std::string& attrName, bool isList) {
    return rdn + ":" + attrName + (isList ? "=1" : "");
}

// The function named in the lines of the attribute restore.
const char* const kRestore = "createAttribute";

}  // namespace

const VeskModelRepository::ShapeErrors VeskModelRepository::kAttributeErrors = {
    "VeskModelRepository: failed to get attribute type",
    "VeskModelRepository: failed to get attribute default value",
    "VeskModelRepository: failed to check attribute multiplicity."};
const VeskModelRepository::ShapeErrors VeskModelRepository::kMemberErrors = {
    "VeskModelRepository: failed to get attribute type",
    "VeskModelRepository: failed to get structure member default value",
    "VeskModelRepository: failed to check attribute multiplicity."};
const VeskModelRepository::ShapeErrors VeskModelRepository::kRestoreErrors = {
    "VeskModelRepository::createAttribute failed to get attribute type",
    "VeskModelRepository::createAttribute failed to get attribute default value",
    "VeskModelRepository::createAttribute failed to check attribute multiplicity"};

OrlReturnT VeskModelRepository::readDefault(OrlOamSpiTypeContainerHandleT typeContainer,
                                            std::string* value, std::list<std::string>* all) {
    const char* const* defaults = nullptr;
    OrlReturnT result = _repository2->getDefaultValue(typeContainer, &defaults);
    if (result == -2)
        return 0;
    if (result != 0)
        return result;
    for (; defaults != nullptr && *defaults != nullptr; ++defaults) {
        all->push_back(*defaults);
    }
    if (!all->empty())
        *value = all->front();
    return 0;
}

OrlReturnT VeskModelRepository::encodeValue(Attribute* attribute, const ValueShape& shape) {
    switch (attribute->type) {
        case 12: {
            short number = -1;
            if (getEnumLiteralValue(shape.typeContainer, shape.value, &number) != 0)
                return -1;
            attribute->value = AttributeVariant(static_cast<int>(number));
            attribute->modified = true;
            return 0;
        }
        case 18: {
            std::string joined;
            for (const std::string& literal : shape.defaults) {
                short number = -1;
                if (getEnumLiteralValue(shape.typeContainer, literal, &number) != 0) {
                    VESK_ERROR("VeskModelRepository: Failed to set default values from enum list");
                    return -1;
                }
                joined += (joined.empty() ? "" : ",") + std::to_string(number);
            }
            attribute->SetValue(AttributeVariant(joined));
            return 0;
        }
        case 28: {
            std::string joined;
            for (const std::string& text : shape.defaults) {
                joined += std::string(joined.empty() ? "" : ",") +
                          (!text.empty() && text[0] == 't' ? "1" : "0");
            }
            attribute->SetValue(AttributeVariant(joined));
            return 0;
        }
        default:
            // 14 and 32 hold the struct object's name, which the shape's value then is.
            attribute->SetValue(shape.value, attribute->type);
            return 0;
    }
}

OrlReturnT VeskModelRepository::readShape(OrlOamSpiTypeContainerHandleT typeContainer,
                                          const ShapeErrors& errors, ValueShape* shape) {
    shape->typeContainer = typeContainer;
    OrlOamSpiMrType_3 modelType = 0;
    if (resolveType(typeContainer, &modelType) != 0) {
        VESK_ERROR("%s", errors.type);
        return -1;
    }
    if (readDefault(typeContainer, &shape->value, &shape->defaults) != 0) {
        VESK_ERROR("%s", errors.defaultValue);
        return -1;
    }
    if (checkAttributeMultiplicity(typeContainer, shape->isList) != 0) {
        VESK_ERROR("%s", errors.multiplicity);
        return -1;
    }
    shape->valueType = getAttributeValueType(modelType, shape->isList);
    return 0;
}

Attribute* VeskModelRepository::makeDefaultAttribute(const std::string& name,
                                                     const ValueShape& shape) {
    Attribute* made =
        new Attribute(false, name, AttributeVariant(shape.value), 0, true,
                      static_cast<IPCData::AttributeValueType>(shape.valueType), true, false);
    if (encodeValue(made, shape) != 0) {
        delete made;
        return nullptr;
    }
    return made;
}

OrlReturnT VeskModelRepository::createMOWithDefaultValues(const char* dn, DBObject* object,
                                                          int dbTxHandle) {
    _dbTxHandle = dbTxHandle;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(dn, &moc);
    if (result != 0)
        return result;
    if (!IDatabase::insert(object, _dbTxHandle)) {
        VESK_ERROR("VeskModelRepository: failed to insert new MO %s to transaction", dn);
        return -1;
    }
    result = findAttributes(moc, &object, true);
    if (result != 0)
        return result;
    if (!IDatabase::update(object, _dbTxHandle)) {
        VESK_ERROR("VeskModelRepository: failed to updated MO %s to transaction", dn);
        return -1;
    }
    return 0;
}

int VeskModelRepository::findAttributes(OrlOamSpiMocHandleT moc, DBObject** object, bool keyGiven) {
    OrlOamSpiAttributeHandleT attribute = 0;
    OrlReturnT result = _repository2->getMocFirstAttribute(moc, &attribute);
    if (result == -2)
        return 0;  // a class without attributes
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute handle ");
        return -1;
    }
    do {
        if (addDefaultAttribute(attribute, *object, keyGiven) != 0)
            return -1;
    } while (_repository2->getNextAttribute(attribute, &attribute) == 0);
    return 0;
}

int VeskModelRepository::addDefaultAttribute(OrlOamSpiAttributeHandleT attribute, DBObject* object,
                                             bool keyGiven) {
    std::string name;
    if (attributeName(attribute, &name) != 0)
        return -1;
    if (object->getAttribute(name) != nullptr) {
        VESK_TRACE("VeskModelRepository: do not create attribute: %s, already exists",
                   name.c_str());
        return 0;
    }
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    if (_repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute type container");
        return -1;
    }
    ValueShape shape;
    bool mandatory = false;
    bool key = false;
    if (readShape(typeContainer, kAttributeErrors, &shape) != 0)
        return -1;
    if (_repository2->isAttributeMandatory(attribute, &mandatory) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute mandatory information");
        return -1;
    }
    if (_repository2->isAttributeKey(attribute, &key) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get key attribute information");
        return -1;
    }
    // A default wins over the key text of a system-created child.
    bool create = !shape.defaults.empty();
    if (!create && !keyGiven && mandatory && key) {
        shape.value = _keyValue;
        create = true;
    }
    if (shape.valueType == 14 || shape.valueType == 32) {
        if (handleStruct(typeContainer, object->parentDn, object->dn, name, &create, shape.isList,
                         false) != 0) {
            return -1;
        }
        shape.value = structName(object->dn, name, shape.isList);
    }
    if (!create) {
        VESK_TRACE("VeskModelRepository: do not create this attribute : %s", name.c_str());
        return 0;
    }
    Attribute* made = makeDefaultAttribute(name, shape);
    if (made == nullptr)
        return -1;
    object->addAttribute(*made);
    VESK_TRACE("VeskModelRepository: New attribute created, name: %s, type: %d, value: %s",
               name.c_str(), shape.valueType, shape.value.c_str());
    return 0;
}

OrlReturnT VeskModelRepository::handleStruct(OrlOamSpiTypeContainerHandleT typeContainer,
                                             std::string parentDn, std::string rdn,
                                             std::string attrName, bool* created, bool isList,
                                             bool flag) {
    *created = false;
    std::string name = structName(rdn, attrName, isList);
    OrlOamSpiStructHandleT structType = 0;
    OrlReturnT result = _repository2->getStruct(typeContainer, &structType);
    if (result == -2) {
        VESK_TRACE("VeskModelRepository: the type is not struct");
        return 0;
    }
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get structure handle");
        return -1;
    }
    OrlOamSpiStructMemberHandleT member = 0;
    result = _repository2->getStructFirstMember(structType, &member);
    if (result == -2) {
        VESK_TRACE("VeskModelRepository: there are no members");
        return 0;
    }
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get structure member handle");
        return -1;
    }
    std::unique_ptr<DBObject> object(new DBObject(name, 1, false, false, IPCData::OPSTATE_ENABLED,
                                                  IPCData::ADMSTATE_UNLOCKED,
                                                  childDn(parentDn, rdn), 1));
    bool any = false;
    do {
        bool added = false;
        if (addStructMember(member, object.get(), flag, &added) != 0)
            return -1;
        any = any || added;
    } while (_repository2->getNextStructMember(member, &member) == 0);
    if (!any)
        return 0;
    if (!IDatabase::insert(object.get(), _dbTxHandle)) {
        VESK_ERROR("VeskModelRepository: failed to insert new structure object %s to transaction",
                   name.c_str());
        return -1;
    }
    VESK_TRACE("VeskModelRepository: new structure object %s inserted to transaction",
               name.c_str());
    *created = true;
    return 0;
}

OrlReturnT VeskModelRepository::addStructMember(OrlOamSpiStructMemberHandleT member,
                                                DBObject* object, bool flag, bool* added) {
    OrlOamSpiGeneralPropertiesHandleT properties = 0;
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    const char* name = nullptr;
    if (_repository2->getStructMemberGeneralProperties(member, &properties) != 0) {
        VESK_ERROR("VeskModelRepository:: failed to get structure member general properties");
        return -1;
    }
    if (_repository2->getStructMemberTypeContainer(member, &typeContainer) != 0) {
        VESK_ERROR("VeskModelRepository:: failed to get structure member type container");
        return -1;
    }
    if (_repository2->getName(properties, &name) != 0 || name == nullptr) {
        VESK_ERROR("VeskModelRepository: failed to get structure member name");
        return -1;
    }
    ValueShape shape;
    if (readShape(typeContainer, kMemberErrors, &shape) != 0)
        return -1;
    if (shape.value.empty())
        return 0;
    VESK_TRACE(
        "VeskModelRepository: New structure member created, name: %s, type: %d, default "
        "value: %s",
        name, shape.valueType, shape.value.c_str());
    Attribute* made = makeDefaultAttribute(name, shape);
    if (made == nullptr)
        return -1;
    if (flag)
        made->alternateSlot = 2;
    object->addAttribute(*made);
    *added = true;
    return 0;
}

int VeskModelRepository::createSystemCreatedSubMOs(const char* dn, int dbTxHandle) {
    _dbTxHandle = dbTxHandle;
    OrlOamSpiMocHandleT moc = 0;
    if (getMOCHandleByDn(dn, &moc) != 0)
        return -1;
    return findChildMOCs(moc, dn) != 0 ? -1 : 0;
}

int VeskModelRepository::findChildMOCs(OrlOamSpiMocHandleT moc, std::string dn) {
    OrlOamSpiContainmentHandleT containment = 0;
    OrlReturnT result = _repository2->getMocFirstChildContainment(moc, &containment);
    if (result == -2) {
        VESK_TRACE("VeskModelRepository: MO is leaf, no more children found");
        return 0;
    }
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get child MOC containment handle");
        return -1;
    }
    do {
        if (createChildren(containment, dn) != 0)
            return -1;
    } while (_repository2->getNextSiblingContainment(containment, &containment) == 0);
    return 0;
}

int VeskModelRepository::createChildren(OrlOamSpiContainmentHandleT containment,
                                        const std::string& dn) {
    OrlOamSpiMocHandleT child = 0;
    OrlOamSpiGeneralPropertiesHandleT properties = 0;
    const char* name = nullptr;
    if (_repository2->getContainmentChildMoc(containment, &child) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get child MOC ");
        return -1;
    }
    if (_repository2->getMocGeneralProperties(child, &properties) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC general properties ");
        return -1;
    }
    if (_repository2->getName(properties, &name) != 0 || name == nullptr) {
        VESK_ERROR("VeskModelRepository: failed to get MOC name ");
        return -1;
    }
    if (!isSystemCreatedMOC(child)) {
        VESK_TRACE("VeskModelRepository: MOC is not system created : %s", name);
        return 0;
    }
    if (VeskInstanceModel::instance()->checkInstanceModel(name, dn, _dbTxHandle)) {
        VESK_TRACE("VeskModelRepository: MOC: %s created from instance model", name);
        return 0;
    }
    int min = 0;
    if (getMOMinCardinality(containment, min) != 0)
        return -1;
    VESK_TRACE("VeskModelRepository: MOC: %s, Min cardinality: %d ", name, min);
    for (int i = 1; i <= min; ++i) {
        _keyValue = std::to_string(i);
        std::string rdn = std::string(name) + "=" + _keyValue;
        std::unique_ptr<DBObject> object(new DBObject(rdn, 1, true, false, IPCData::OPSTATE_ENABLED,
                                                      IPCData::ADMSTATE_UNLOCKED, dn, 1));
        if (!IDatabase::insert(object.get(), _dbTxHandle)) {
            VESK_ERROR("VeskModelRepository: failed to insert new child MO %s to transaction",
                       rdn.c_str());
            return -1;
        }
        DBObject* raw = object.get();
        if (findAttributes(child, &raw, false) != 0)
            return -1;
        if (!IDatabase::update(object.get(), _dbTxHandle)) {
            VESK_ERROR("VeskModelRepository: failed to update new child MO %s to transaction",
                       rdn.c_str());
            return -1;
        }
        object.reset();
        if (findChildMOCs(child, dn + "," + rdn) != 0)
            return -1;
    }
    return 0;
}

OrlReturnT VeskModelRepository::createAttributeWithDefaultValue(std::string parentDn,
                                                                std::string rdn,
                                                                std::string attrName,
                                                                int dbTxHandle, bool flag) {
    std::string dn = childDn(parentDn, rdn);
    _dbTxHandle = dbTxHandle;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(dn.c_str(), &moc);
    if (result != 0)
        return result;
    return createAttribute(moc, parentDn, rdn, attrName, dbTxHandle, flag);
}

OrlReturnT VeskModelRepository::createAttribute(OrlOamSpiMocHandleT moc, std::string parentDn,
                                                std::string rdn, std::string attrName,
                                                int dbTxHandle, bool flag) {
    OrlOamSpiAttributeHandleT attribute = 0;
    if (_repository2->getMocFirstAttribute(moc, &attribute) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute handle ");
        return -1;
    }
    do {
        std::string name;
        if (attributeName(attribute, &name) != 0)
            return -1;
        if (attrName != name) {
            VESK_TRACE("VeskModelRepository::%s skipping attribute %s", __func__, name.c_str());
            continue;
        }
        return setDefaultOnObject(attribute, parentDn, rdn, attrName, dbTxHandle, flag);
    } while (_repository2->getNextAttribute(attribute, &attribute) == 0);
    return 0;
}

OrlReturnT VeskModelRepository::setDefaultOnObject(OrlOamSpiAttributeHandleT attribute,
                                                   const std::string& parentDn,
                                                   const std::string& rdn,
                                                   const std::string& attrName, int dbTxHandle,
                                                   bool flag) {
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    if (_repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0) {
        VESK_ERROR("VeskModelRepository::%s failed to get attribute type container", kRestore);
        return -1;
    }
    ValueShape shape;
    if (readShape(typeContainer, kRestoreErrors, &shape) != 0)
        return -1;
    if (shape.valueType == 14 || shape.valueType == 32) {
        bool created = false;
        if (handleStruct(typeContainer, parentDn, rdn, attrName, &created, shape.isList, flag) !=
            0) {
            VESK_ERROR("VeskModelRepository::%s failed handle struct", kRestore);
            return -1;
        }
        if (!created) {
            VESK_TRACE("%s: Struct %s not created so no need to create attribute for it.", kRestore,
                       attrName.c_str());
            return 0;
        }
        shape.value = structName(rdn, attrName, shape.isList);
    }
    std::string dn = childDn(parentDn, rdn);
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, dbTxHandle));
    if (!object) {
        VESK_TRACE("VeskModelRepository::%s did not find %s from database", kRestore, dn.c_str());
        return -1;
    }
    return storeDefault(object.get(), attrName, shape, flag);
}

OrlReturnT VeskModelRepository::storeDefault(DBObject* object, const std::string& attrName,
                                             const ValueShape& shape, bool flag) {
    Attribute* attribute = object->getAttribute(attrName);
    bool owned = attribute == nullptr;
    if (owned) {
        attribute =
            new Attribute(false, attrName, AttributeVariant(shape.value), 0, true,
                          static_cast<IPCData::AttributeValueType>(shape.valueType), true, false);
    }
    attribute->type = static_cast<IPCData::AttributeValueType>(shape.valueType);
    attribute->deleted = false;
    if (encodeValue(attribute, shape) != 0) {
        if (owned)
            delete attribute;
        return -1;
    }
    if (flag)
        attribute->alternateSlot = 2;
    attribute->modified = true;
    if (owned)
        object->addAttribute(*attribute);
    std::string dn = childDn(object->parentDn, object->dn);
    if (!IDatabase::update(object, _dbTxHandle)) {
        VESK_ERROR("VeskModelRepository::%s Failed to update %s to database", kRestore, dn.c_str());
        return -1;
    }
    VESK_TRACE("VeskModelRepository::%s Updated %s:%s to database", kRestore, dn.c_str(),
               attrName.c_str());
    return 0;
}

}  // namespace TibVeskCM

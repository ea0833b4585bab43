// Model queries of VeskModelRepository. The objects built from defaults are in
// VeskModelRepositoryDefaults.cc.
#include "model/VeskModelRepository.h"

#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"

namespace TibVeskCM {

namespace {

// The attribute type lookup of VeskOrlHelper.
int lookupAttributeType(const std::string& dn, const std::string& attrName, int* type) {
    return VeskModelRepository::instance()->getAttributeType(dn, attrName, type);
}

}  // namespace

VeskModelRepository* VeskModelRepository::instance() {
    static VeskModelRepository repository;
    return &repository;
}

void VeskModelRepository::initialize(OrlOamSpiModelRepository_2* repository2,
                                     OrlOamSpiModelRepository_3* repository3) {
    VESK_INFO("VeskModelRepository::initialize()");
    _repository2 = repository2;
    _repository3 = repository3;
    _types.clear();
    VeskOrlHelper::setAttributeTypeLookup(&lookupAttributeType);
}

OrlReturnT VeskModelRepository::getMOCHandleByDn(const char* dn, OrlOamSpiMocHandleT* moc) {
    if (_repository3 == nullptr || _repository3->getMocByDn(dn, moc) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC %s handle ", dn);
        return -1;
    }
    return 0;
}

OrlReturnT VeskModelRepository::resolveType(OrlOamSpiTypeContainerHandleT typeContainer,
                                            OrlOamSpiMrType_3* type) {
    OrlReturnT result = _repository3->getTypeContainerType(typeContainer, type);
    if (result != 0 || *type != OrlOamSpiMrType_3_DERIVED) {
        return result;
    }
    VESK_TRACE("VeskModelRepository::%s, Fetching derived data type", __func__);
    OrlOamSpiDerivedTypeHandleT derived = 0;
    OrlOamSpiTypeContainerHandleT base = 0;
    result = _repository2->getDerivedType(typeContainer, &derived);
    if (result == 0)
        result = _repository2->getDerivedTypeBase(derived, &base);
    if (result == 0)
        result = _repository3->getTypeContainerType(base, type);
    return result;
}

// A walk that succeeded is remembered; one that failed is walked again next time, with its error
// lines.
OrlReturnT VeskModelRepository::getAttributeType(const std::string& dn, const std::string& attrName,
                                                 int* type) {
    OrlOamSpiMocHandleT moc = 0;
    if (!_types.lastMoc(dn, &moc)) {
        OrlReturnT result = getMOCHandleByDn(dn.c_str(), &moc);
        if (result != 0)
            return result;
        _types.rememberMoc(dn, moc);
    }
    bool typed = false;
    int known = 0;
    if (_types.find(moc, attrName, &typed, &known)) {
        if (typed)
            *type = known;
        return 0;
    }
    OrlReturnT result = walkAttributeType(moc, attrName, type, &typed);
    if (result == 0)
        _types.remember(moc, attrName, typed, *type);
    return result;
}

OrlReturnT VeskModelRepository::walkAttributeType(OrlOamSpiMocHandleT moc,
                                                  const std::string& attrName, int* type,
                                                  bool* typed) {
    *typed = false;
    OrlOamSpiAttributeHandleT attribute = 0;
    if (_repository2->getMocFirstAttribute(moc, &attribute) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute handle ");
        return -1;
    }
    // The walk runs to the end of the list, also after a match.
    do {
        const char* name = nullptr;
        if (attributeName(attribute, &name) != 0)
            return -1;
        if (attrName != name)
            continue;
        OrlOamSpiTypeContainerHandleT typeContainer = 0;
        if (_repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0) {
            VESK_ERROR("VeskModelRepository: failed to get attribute type container");
            return -1;
        }
        OrlOamSpiMrType_3 modelType = 0;
        if (resolveType(typeContainer, &modelType) == 0) {
            *type = modelType;
            *typed = true;
        }
    } while (_repository2->getNextAttribute(attribute, &attribute) == 0);
    return 0;
}

OrlReturnT VeskModelRepository::attributeName(OrlOamSpiAttributeHandleT attribute,
                                              const char** name) {
    OrlOamSpiGeneralPropertiesHandleT properties = 0;
    if (_repository2->getAttributeGeneralProperties(attribute, &properties) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute general properties");
        return -1;
    }
    if (_repository2->getName(properties, name) != 0 || *name == nullptr) {
        VESK_ERROR("VeskModelRepository: failed to get attribute name");
        return -1;
    }
    return 0;
}

OrlReturnT VeskModelRepository::attributeName(OrlOamSpiAttributeHandleT attribute,
                                              std::string* name) {
    const char* text = nullptr;
    if (attributeName(attribute, &text) != 0)
        return -1;
    *name = text;
    return 0;
}

OrlReturnT VeskModelRepository::findAttributeHandle(OrlOamSpiMocHandleT moc,
                                                    const std::string& attrName,
                                                    OrlOamSpiAttributeHandleT* attribute) {
    if (_repository2->getMocFirstAttribute(moc, attribute) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute handle ");
        return -1;
    }
    do {
        const char* name = nullptr;
        if (attributeName(*attribute, &name) != 0)
            return -1;
        if (attrName == name)
            return 0;
    } while (_repository2->getNextAttribute(*attribute, attribute) == 0);
    return -2;
}

OrlReturnT VeskModelRepository::checkAttributeMultiplicity(
    OrlOamSpiTypeContainerHandleT typeContainer, bool& isList) {
    int32_t max = 0;
    if (_repository2->getMaxMultiplicity(typeContainer, &max) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute maximum multiplicity");
        return -1;
    }
    isList = max >= 2;
    return 0;
}

OrlReturnT VeskModelRepository::checkAttributeListType(const char* dn, const char* attrName,
                                                       bool& isList) {
    isList = false;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(dn, &moc);
    if (result != 0)
        return result;
    OrlOamSpiAttributeHandleT attribute = 0;
    result = findAttributeHandle(moc, attrName, &attribute);
    if (result == -2)
        return 0;
    if (result != 0)
        return result;
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    if (_repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute type container");
        return -1;
    }
    return checkAttributeMultiplicity(typeContainer, isList);
}

OrlReturnT VeskModelRepository::checkAttribute(OrlOamSpiMocHandleT moc, bool& exists,
                                               std::string attrName) {
    OrlOamSpiAttributeHandleT attribute = 0;
    OrlReturnT result = findAttributeHandle(moc, attrName, &attribute);
    exists = result == 0;
    return result == -2 ? 0 : result;
}

OrlReturnT VeskModelRepository::checkAttributeExist(const char* dn, std::string attrName,
                                                    bool& exists) {
    exists = false;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(dn, &moc);
    if (result != 0)
        return result;
    result = checkAttribute(moc, exists, attrName);
    VESK_TRACE("VeskModelRepository::%s %s %s", __func__, attrName.c_str(),
               exists ? "True" : "False");
    return result;
}

OrlReturnT VeskModelRepository::getMOMinCardinality(OrlOamSpiContainmentHandleT containment,
                                                    int& min) {
    int32_t value = 0;
    if (_repository2->getContainmentMinCardinality(containment, &value) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC minimum cardinality");
        return -1;
    }
    min = value;
    return 0;
}

OrlReturnT VeskModelRepository::getMOMaxCardinality(OrlOamSpiContainmentHandleT containment,
                                                    int& max) {
    int32_t value = 0;
    if (_repository2->getContainmentMaxCardinality(containment, &value) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC maximum cardinality");
        return -1;
    }
    max = value;
    return 0;
}

OrlReturnT VeskModelRepository::getMOCardinalityRange(const char* parentDn, const char* childClass,
                                                      int& min, int& max) {
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(parentDn, &moc);
    if (result != 0)
        return result;
    OrlOamSpiContainmentHandleT containment = 0;
    if (_repository2->getMocFirstChildContainment(moc, &containment) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get child MOC containment handle");
        return -1;
    }
    do {
        OrlOamSpiMocHandleT child = 0;
        OrlOamSpiGeneralPropertiesHandleT properties = 0;
        const char* name = nullptr;
        if (_repository2->getContainmentChildMoc(containment, &child) != 0 ||
            _repository2->getMocGeneralProperties(child, &properties) != 0 ||
            _repository2->getName(properties, &name) != 0 || name == nullptr) {
            VESK_ERROR("VeskModelRepository: failed to get child MOC ");
            return -1;
        }
        if (std::string(childClass) == name) {
            result = getMOMinCardinality(containment, min);
            return result != 0 ? result : getMOMaxCardinality(containment, max);
        }
    } while (_repository2->getNextSiblingContainment(containment, &containment) == 0);
    return -1;
}

OrlReturnT VeskModelRepository::getMOCParentName(OrlOamSpiContainmentHandleT containment,
                                                 std::string* name) {
    OrlOamSpiMocHandleT parent = 0;
    OrlOamSpiGeneralPropertiesHandleT properties = 0;
    const char* text = nullptr;
    if (_repository2->getContainmentParentMoc(containment, &parent) != 0 ||
        _repository2->getMocGeneralProperties(parent, &properties) != 0 ||
        _repository2->getName(properties, &text) != 0 || text == nullptr) {
        VESK_ERROR("VeskModelRepository: failed to get parent MOC name");
        return -1;
    }
    *name = text;
    return 0;
}

OrlReturnT VeskModelRepository::getEnumLiteralValue(OrlOamSpiTypeContainerHandleT typeContainer,
                                                    std::string literal, short* value) {
    *value = static_cast<short>(65535u);
    OrlOamSpiEnumHandleT enumeration = 0;
    OrlReturnT result = _repository2->getEnum(typeContainer, &enumeration);
    if (result == -2) {
        VESK_TRACE("VeskModelRepository: the type is not enum ");
        return 0;
    }
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get enumeration literal handle");
        return -1;
    }
    OrlOamSpiEnumLiteralHandleT it = 0;
    if (_repository2->getEnumFirstLiteral(enumeration, &it) != 0) {
        VESK_TRACE("VeskModelRepository: there are no literals");
        return 0;
    }
    do {
        OrlOamSpiGeneralPropertiesHandleT properties = 0;
        const char* name = nullptr;
        if (_repository2->getEnumLiteralGeneralProperties(it, &properties) != 0 ||
            _repository2->getName(properties, &name) != 0 || name == nullptr) {
            VESK_ERROR("VeskModelRepository: failed to get enumeration literal name");
            return -1;
        }
        if (literal == name) {
            int16_t number = 0;
            if (_repository2->getEnumLiteralValue(it, &number) != 0) {
                VESK_ERROR("VeskModelRepository: failed to get enumeration literal value");
                return -1;
            }
            *value = number;
            return 0;
        }
    } while (_repository2->getNextEnumLiteral(it, &it) == 0);
    return -2;
}

OrlReturnT VeskModelRepository::getEnumValueByLiteralName(const char* dn, const char* attrName,
                                                          std::string literal, int& value) {
    value = -1;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT result = getMOCHandleByDn(dn, &moc);
    if (result != 0)
        return result;
    OrlOamSpiAttributeHandleT attribute = 0;
    result = findAttributeHandle(moc, attrName, &attribute);
    if (result != 0)
        return result;
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    if (_repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute type container");
        return -1;
    }
    short number = -1;
    result = getEnumLiteralValue(typeContainer, literal, &number);
    if (result == 0)
        value = number;
    return result;
}

int VeskModelRepository::getAttributeValueType(OrlOamSpiMrType_3 type, bool isList) {
    switch (type) {
        case 1:
            return isList ? 20 : 1;
        case 2:
            return isList ? 21 : 2;
        case 3:
            return isList ? 19 : 3;
        case 4:
            return isList ? 22 : 4;
        case 5:
            return isList ? 23 : 5;
        case 6:
            return isList ? 24 : 6;
        case 7:
            return isList ? 25 : 7;
        case 8:
            return isList ? 26 : 8;
        case 9:
            return isList ? 27 : 9;
        case 10:
            return isList ? 28 : 10;
        case 11:
            return isList ? 31 : 11;
        case 12:
            return isList ? 18 : 12;
        case 14:
            return isList ? 32 : 14;
        case 16:
            return isList ? 29 : 16;
        default:
            return 9;
    }
}

bool VeskModelRepository::isSystemCreatedMOC(OrlOamSpiMocHandleT moc) {
    bool systemCreated = false;
    if (_repository2->isMocSystemCreated(moc, &systemCreated) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC system created information");
        return false;
    }
    return systemCreated;
}

OrlOamSpiMocHandleT VeskModelRepository::getRequestedMOC(const char* mom, const char* moc) {
    OrlOamSpiMocHandleT handle = 0;
    if (_repository3->getRequestedMoc(mom, nullptr, moc, &handle) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get MOC %s handle ", moc);
        return 0;
    }
    return handle;
}

OrlReturnT VeskModelRepository::getAttributeMultiplicityRange(std::string& dn,
                                                              std::string& attrName, int& min,
                                                              int& max) {
    min = 0;
    max = 0;
    OrlOamSpiMocHandleT moc = 0;
    OrlOamSpiAttributeHandleT attribute = 0;
    OrlOamSpiTypeContainerHandleT typeContainer = 0;
    int32_t low = 0;
    int32_t high = 0;
    if (getMOCHandleByDn(dn.c_str(), &moc) != 0 ||
        findAttributeHandle(moc, attrName, &attribute) != 0 ||
        _repository2->getAttributeTypeContainer(attribute, &typeContainer) != 0 ||
        _repository2->getMinMultiplicity(typeContainer, &low) != 0 ||
        _repository2->getMaxMultiplicity(typeContainer, &high) != 0) {
        return -1;
    }
    min = low;
    max = high;
    return 0;
}

OrlReturnT VeskModelRepository::getAttributeDomainExtensionValue(OrlOamSpiMocHandleT moc,
                                                                 const char* attrName,
                                                                 const char* extensionName,
                                                                 std::list<std::string>* values) {
    values->clear();
    OrlOamSpiAttributeHandleT attribute = 0;
    OrlReturnT result = findAttributeHandle(moc, attrName, &attribute);
    if (result == -2)
        return 0;
    if (result != 0)
        return result;
    OrlOamSpiGeneralPropertiesHandleT properties = 0;
    OrlOamSpiDomainExtensionHandleT it = 0;
    if (_repository2->getAttributeGeneralProperties(attribute, &properties) != 0) {
        VESK_ERROR("VeskModelRepository: failed to get attribute general properties");
        return -1;
    }
    result = _repository2->getFirstDomainExtension(properties, &it);
    if (result == -2) {
        VESK_TRACE("VeskModelRepository: there are no domain extensions");
        return 0;
    }
    if (result != 0) {
        VESK_ERROR("VeskModelRepository: failed to get domain extension handle");
        return -1;
    }
    do {
        const char* name = nullptr;
        const char* value = nullptr;
        if (_repository2->getDomainExtensionName(it, &name) != 0 || name == nullptr) {
            VESK_ERROR("VeskModelRepository: failed to get domain extension name.");
            values->clear();
            return -1;
        }
        if (_repository2->getDomainExtensionValue(it, &value) != 0) {
            VESK_ERROR("VeskModelRepository: failed to get domain extension value.");
            values->clear();
            return -1;
        }
        if (std::string(extensionName) == name && value != nullptr)
            values->push_back(value);
    } while (_repository2->getNextDomainExtension(it, &it) == 0);
    return 0;
}

OrlReturnT VeskModelRepository::getAttributeTakesEffectValue(const char* dn, const char* attrName,
                                                             TakesEffectValue& result) {
    result = TAKES_EFFECT_NONE;
    OrlOamSpiMocHandleT moc = 0;
    OrlReturnT answer = getMOCHandleByDn(dn, &moc);
    if (answer != 0)
        return answer;
    std::list<std::string> values;
    answer = getAttributeDomainExtensionValue(moc, attrName, "takesEffect", &values);
    for (const std::string& value : values) {
        if (value == "Cell lock/unlock") {
            result = TAKES_EFFECT_CELL_LOCK;
        } else if (value == "At node restart") {
            result = TAKES_EFFECT_NODE_RESTART;
        } else if (value == "Object lock/unlock") {
            result = TAKES_EFFECT_OBJECT_LOCK;
        }
    }
    return answer;
}

}  // namespace TibVeskCM

#include "host/model/ModelRepository.h"

#include <atomic>
#include <stdexcept>

namespace vesk {
namespace host {
namespace model {
namespace {

const char kService[] = "OrlOamSpiModelRepositoryService";
const char kInterface[] = "OrlOamSpiModelRepository";

std::atomic<const ModelSchema*> g_live{nullptr};

const ModelTables* liveTables() {
    const ModelSchema* schema = g_live.load(std::memory_order_acquire);
    return schema != nullptr ? &schema->tables() : nullptr;
}

// The record a handle of `kind` names in `table`, or null for a handle that names none.
template <typename T>
const T* find(uint64_t handle, Kind kind, const std::vector<T>& table) {
    Id id;
    return handleId(handle, kind, table.size(), &id) ? &table[id] : nullptr;
}

// "None" for kNone, otherwise the handle.
OrlReturnT give(Kind kind, Id id, uint64_t* out) {
    if (id == kNone) {
        return OrlNotExist;
    }
    *out = makeHandle(kind, id);
    return OrlOk;
}

// Runs `answer` on the record that `handle` names in the table `member` of the live tables;
// OrlFailure without a live repository, with a null output or a handle that names nothing.
template <typename T, typename Out, typename Answer>
OrlReturnT ask(uint64_t handle, Kind kind, std::vector<T> ModelTables::*member, Out* out,
               Answer answer) {
    const ModelTables* tables = liveTables();
    if (tables == nullptr || out == nullptr) {
        return OrlFailure;
    }
    const T* record = find(handle, kind, tables->*member);
    return record != nullptr ? answer(*tables, *record, out) : OrlFailure;
}

// Classes.
OrlReturnT mocProperties(OrlOamSpiMocHandleT moc, OrlOamSpiGeneralPropertiesHandleT* out) {
    return ask(moc, Kind::kMoc, &ModelTables::mocs, out, [](auto&, const Moc& m, uint64_t* o) {
        return give(Kind::kProperties, m.properties, o);
    });
}
OrlReturnT mocFirstAttribute(OrlOamSpiMocHandleT moc, OrlOamSpiAttributeHandleT* out) {
    return ask(moc, Kind::kMoc, &ModelTables::mocs, out, [](auto&, const Moc& m, uint64_t* o) {
        return give(Kind::kAttribute, m.firstAttribute, o);
    });
}
OrlReturnT mocFirstContainment(OrlOamSpiMocHandleT moc, OrlOamSpiContainmentHandleT* out) {
    return ask(moc, Kind::kMoc, &ModelTables::mocs, out, [](auto&, const Moc& m, uint64_t* o) {
        return give(Kind::kContainment, m.firstContainment, o);
    });
}
OrlReturnT mocSystemCreated(OrlOamSpiMocHandleT moc, bool* out) {
    return ask(moc, Kind::kMoc, &ModelTables::mocs, out, [](auto&, const Moc& m, bool* o) {
        *o = m.systemCreated;
        return OrlOk;
    });
}

// Attributes and struct members (one table).
OrlReturnT attributeProperties(OrlOamSpiAttributeHandleT attribute,
                               OrlOamSpiGeneralPropertiesHandleT* out) {
    return ask(attribute, Kind::kAttribute, &ModelTables::attributes, out,
               [](auto&, const AttributeRecord& a, uint64_t* o) {
                   return give(Kind::kProperties, a.properties, o);
               });
}
OrlReturnT attributeType(OrlOamSpiAttributeHandleT attribute, OrlOamSpiTypeContainerHandleT* out) {
    return ask(attribute, Kind::kAttribute, &ModelTables::attributes, out,
               [](auto&, const AttributeRecord& a, uint64_t* o) {
                   return give(Kind::kTypeContainer, a.typeContainer, o);
               });
}
OrlReturnT attributeKey(OrlOamSpiAttributeHandleT attribute, bool* out) {
    return ask(attribute, Kind::kAttribute, &ModelTables::attributes, out,
               [](auto&, const AttributeRecord& a, bool* o) {
                   *o = a.key;
                   return OrlOk;
               });
}
OrlReturnT attributeMandatory(OrlOamSpiAttributeHandleT attribute, bool* out) {
    return ask(attribute, Kind::kAttribute, &ModelTables::attributes, out,
               [](auto&, const AttributeRecord& a, bool* o) {
                   *o = a.mandatory;
                   return OrlOk;
               });
}
OrlReturnT nextAttribute(OrlOamSpiAttributeHandleT attribute, OrlOamSpiAttributeHandleT* out) {
    return ask(attribute, Kind::kAttribute, &ModelTables::attributes, out,
               [](auto&, const AttributeRecord& a, uint64_t* o) {
                   return give(Kind::kAttribute, a.next, o);
               });
}

// General properties and domain extensions.
OrlReturnT propertiesName(OrlOamSpiGeneralPropertiesHandleT properties, const char** out) {
    return ask(properties, Kind::kProperties, &ModelTables::properties, out,
               [](auto&, const Properties& p, const char** o) {
                   *o = p.name.c_str();
                   return OrlOk;
               });
}
OrlReturnT firstExtension(OrlOamSpiGeneralPropertiesHandleT properties,
                          OrlOamSpiDomainExtensionHandleT* out) {
    return ask(properties, Kind::kProperties, &ModelTables::properties, out,
               [](auto&, const Properties& p, uint64_t* o) {
                   return give(Kind::kExtension, p.firstExtension, o);
               });
}
OrlReturnT extensionName(OrlOamSpiDomainExtensionHandleT extension, const char** out) {
    return ask(extension, Kind::kExtension, &ModelTables::extensions, out,
               [](auto&, const Extension& e, const char** o) {
                   *o = e.name.c_str();
                   return OrlOk;
               });
}
OrlReturnT extensionValue(OrlOamSpiDomainExtensionHandleT extension, const char** out) {
    return ask(extension, Kind::kExtension, &ModelTables::extensions, out,
               [](auto&, const Extension& e, const char** o) {
                   *o = e.value.c_str();
                   return OrlOk;
               });
}
OrlReturnT nextExtension(OrlOamSpiDomainExtensionHandleT extension,
                         OrlOamSpiDomainExtensionHandleT* out) {
    return ask(
        extension, Kind::kExtension, &ModelTables::extensions, out,
        [](auto&, const Extension& e, uint64_t* o) { return give(Kind::kExtension, e.next, o); });
}

// Containments.
OrlReturnT containmentChild(OrlOamSpiContainmentHandleT containment, OrlOamSpiMocHandleT* out) {
    return ask(
        containment, Kind::kContainment, &ModelTables::containments, out,
        [](auto&, const Containment& c, uint64_t* o) { return give(Kind::kMoc, c.child, o); });
}
OrlReturnT containmentParent(OrlOamSpiContainmentHandleT containment, OrlOamSpiMocHandleT* out) {
    return ask(
        containment, Kind::kContainment, &ModelTables::containments, out,
        [](auto&, const Containment& c, uint64_t* o) { return give(Kind::kMoc, c.parent, o); });
}
OrlReturnT containmentMin(OrlOamSpiContainmentHandleT containment, int32_t* out) {
    return ask(containment, Kind::kContainment, &ModelTables::containments, out,
               [](auto&, const Containment& c, int32_t* o) {
                   *o = c.min;
                   return OrlOk;
               });
}
OrlReturnT containmentMax(OrlOamSpiContainmentHandleT containment, int32_t* out) {
    return ask(containment, Kind::kContainment, &ModelTables::containments, out,
               [](auto&, const Containment& c, int32_t* o) {
                   *o = c.max;
                   return OrlOk;
               });
}
OrlReturnT nextContainment(OrlOamSpiContainmentHandleT containment,
                           OrlOamSpiContainmentHandleT* out) {
    return ask(containment, Kind::kContainment, &ModelTables::containments, out,
               [](auto&, const Containment& c, uint64_t* o) {
                   return give(Kind::kContainment, c.next, o);
               });
}

// Type containers and derived types.
OrlReturnT defaultValue(OrlOamSpiTypeContainerHandleT type, const char* const** out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, const char* const** o) {
                   if (t.defaults.empty()) {
                       return OrlNotExist;
                   }
                   *o = t.defaultArray.data();
                   return OrlOk;
               });
}
OrlReturnT minMultiplicity(OrlOamSpiTypeContainerHandleT type, int32_t* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, int32_t* o) {
                   *o = t.minMultiplicity;
                   return OrlOk;
               });
}
OrlReturnT maxMultiplicity(OrlOamSpiTypeContainerHandleT type, int32_t* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, int32_t* o) {
                   *o = t.maxMultiplicity;
                   return OrlOk;
               });
}
OrlReturnT structOf(OrlOamSpiTypeContainerHandleT type, OrlOamSpiStructHandleT* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, uint64_t* o) {
                   return give(Kind::kStruct, t.structType, o);
               });
}
OrlReturnT enumOf(OrlOamSpiTypeContainerHandleT type, OrlOamSpiEnumHandleT* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, uint64_t* o) {
                   return give(Kind::kEnum, t.enumeration, o);
               });
}
OrlReturnT derivedOf(OrlOamSpiTypeContainerHandleT type, OrlOamSpiDerivedTypeHandleT* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, uint64_t* o) {
                   return give(Kind::kDerived, t.derived, o);
               });
}
OrlReturnT derivedBase(OrlOamSpiDerivedTypeHandleT derived, OrlOamSpiTypeContainerHandleT* out) {
    return ask(
        derived, Kind::kDerived, &ModelTables::derived, out,
        [](auto&, const Derived& d, uint64_t* o) { return give(Kind::kTypeContainer, d.base, o); });
}
OrlReturnT typeOf(OrlOamSpiTypeContainerHandleT type, OrlOamSpiMrType_3* out) {
    return ask(type, Kind::kTypeContainer, &ModelTables::typeContainers, out,
               [](auto&, const TypeContainer& t, int32_t* o) {
                   *o = t.type;
                   return OrlOk;
               });
}

// Structs, enumerations and literals.
OrlReturnT structFirstMember(OrlOamSpiStructHandleT structType, OrlOamSpiStructMemberHandleT* out) {
    return ask(structType, Kind::kStruct, &ModelTables::structs, out,
               [](auto&, const StructType& s, uint64_t* o) {
                   return give(Kind::kAttribute, s.firstMember, o);
               });
}
OrlReturnT enumFirstLiteral(OrlOamSpiEnumHandleT enumeration, OrlOamSpiEnumLiteralHandleT* out) {
    return ask(enumeration, Kind::kEnum, &ModelTables::enumerations, out,
               [](auto&, const Enumeration& e, uint64_t* o) {
                   return give(Kind::kLiteral, e.firstLiteral, o);
               });
}
OrlReturnT literalProperties(OrlOamSpiEnumLiteralHandleT literal,
                             OrlOamSpiGeneralPropertiesHandleT* out) {
    return ask(literal, Kind::kLiteral, &ModelTables::literals, out,
               [](auto&, const Literal& l, uint64_t* o) {
                   return give(Kind::kProperties, l.properties, o);
               });
}
OrlReturnT literalValue(OrlOamSpiEnumLiteralHandleT literal, int16_t* out) {
    return ask(literal, Kind::kLiteral, &ModelTables::literals, out,
               [](auto&, const Literal& l, int16_t* o) {
                   *o = l.value;
                   return OrlOk;
               });
}
OrlReturnT nextLiteral(OrlOamSpiEnumLiteralHandleT literal, OrlOamSpiEnumLiteralHandleT* out) {
    return ask(
        literal, Kind::kLiteral, &ModelTables::literals, out,
        [](auto&, const Literal& l, uint64_t* o) { return give(Kind::kLiteral, l.next, o); });
}

// Repository 3: the class of the last "Class=id" pair of a full dn or a short form.
OrlReturnT mocByDn(const char* dn, OrlOamSpiMocHandleT* out) {
    const ModelSchema* schema = g_live.load(std::memory_order_acquire);
    if (schema == nullptr || dn == nullptr || out == nullptr) {
        return OrlFailure;
    }
    std::string text(dn);
    std::string last = text.substr(text.rfind(',') == std::string::npos ? 0 : text.rfind(',') + 1);
    size_t equals = last.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        return OrlNotExist;
    }
    return give(Kind::kMoc, schema->mocByClass(last.substr(0, equals)), out);
}

OrlReturnT requestedMoc(const char* mom, const char* version, const char* moc,
                        OrlOamSpiMocHandleT* out) {
    const ModelSchema* schema = g_live.load(std::memory_order_acquire);
    if (schema == nullptr || mom == nullptr || moc == nullptr || out == nullptr) {
        return OrlFailure;
    }
    const ModelTables& tables = schema->tables();
    if (tables.momName != mom || (version != nullptr && tables.momVersion != version)) {
        return OrlNotExist;
    }
    return give(Kind::kMoc, schema->mocByClass(moc), out);
}

void fillRecord2(OrlOamSpiModelRepository_2* r) {
    r->getMocGeneralProperties = mocProperties;
    r->getMocFirstAttribute = mocFirstAttribute;
    r->getMocFirstChildContainment = mocFirstContainment;
    r->isMocSystemCreated = mocSystemCreated;
    r->getAttributeGeneralProperties = attributeProperties;
    r->getAttributeTypeContainer = attributeType;
    r->isAttributeKey = attributeKey;
    r->isAttributeMandatory = attributeMandatory;
    r->getNextAttribute = nextAttribute;
    r->getName = propertiesName;
    r->getFirstDomainExtension = firstExtension;
    r->getDomainExtensionName = extensionName;
    r->getDomainExtensionValue = extensionValue;
    r->getNextDomainExtension = nextExtension;
    r->getContainmentChildMoc = containmentChild;
    r->getContainmentParentMoc = containmentParent;
    r->getContainmentMinCardinality = containmentMin;
    r->getContainmentMaxCardinality = containmentMax;
    r->getNextSiblingContainment = nextContainment;
    r->getDefaultValue = defaultValue;
    r->getMinMultiplicity = minMultiplicity;
    r->getMaxMultiplicity = maxMultiplicity;
    r->getStruct = structOf;
    r->getEnum = enumOf;
    r->getDerivedType = derivedOf;
    r->getDerivedTypeBase = derivedBase;
    r->getStructFirstMember = structFirstMember;
    r->getStructMemberGeneralProperties = attributeProperties;
    r->getStructMemberTypeContainer = attributeType;
    r->getNextStructMember = nextAttribute;
    r->getEnumFirstLiteral = enumFirstLiteral;
    r->getEnumLiteralGeneralProperties = literalProperties;
    r->getEnumLiteralValue = literalValue;
    r->getNextEnumLiteral = nextLiteral;
}

}  // namespace

ModelRepository::ModelRepository(const ModelSchema& schema) : _schema(schema) {
    const ModelSchema* expected = nullptr;
    if (!g_live.compare_exchange_strong(expected, &schema)) {
        throw std::logic_error("a model repository is already live in this process");
    }
    _record1.header = OrlMgmtSpiInterface_1{kService, kInterface, "1"};
    _record2.header = OrlMgmtSpiInterface_1{kService, kInterface, "2"};
    fillRecord2(&_record2);
    _record3.header = OrlMgmtSpiInterface_1{kService, kInterface, "3"};
    _record3.getMocByDn = mocByDn;
    _record3.getTypeContainerType = typeOf;
    _record3.getRequestedMoc = requestedMoc;
}

ModelRepository::~ModelRepository() {
    g_live.store(nullptr, std::memory_order_release);
}

}  // namespace model
}  // namespace host
}  // namespace vesk

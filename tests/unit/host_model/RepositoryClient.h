// Asks the model repository records what the agent asks, and hands back plain values. Every
// walk stops at the first non-zero answer, as the agent's walks do.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/model/ModelRepository.h"

namespace vesk::host::model {

struct ChildClass {
    std::string name;
    int32_t min;
    int32_t max;
    OrlOamSpiMocHandleT parent;
};

class RepositoryClient {
  public:
    explicit RepositoryClient(ModelRepository& repository)
        : r2(*repository.record2()), r3(*repository.record3()) {}

    // The handles of one walk, from `first(parent)` through `next`, in order.
    template <class Parent, class Handle>
    static std::vector<Handle> walk(OrlReturnT (*first)(Parent, Handle*),
                                    OrlReturnT (*next)(Handle, Handle*), Parent parent) {
        std::vector<Handle> handles;
        Handle it = 0;
        for (OrlReturnT r = first(parent, &it); r == 0; r = next(it, &it)) {
            handles.push_back(it);
        }
        return handles;
    }

    OrlOamSpiMocHandleT moc(const std::string& dn) {
        OrlOamSpiMocHandleT handle = 0;
        EXPECT_EQ(r3.getMocByDn(dn.c_str(), &handle), 0) << dn;
        return handle;
    }
    std::string name(uint64_t properties) {
        const char* text = nullptr;
        EXPECT_EQ(r2.getName(properties, &text), 0);
        return text != nullptr ? text : "";
    }
    std::string mocName(OrlOamSpiMocHandleT moc) {
        OrlOamSpiGeneralPropertiesHandleT properties = 0;
        EXPECT_EQ(r2.getMocGeneralProperties(moc, &properties), 0);
        return name(properties);
    }
    std::vector<std::string> attributeNames(OrlOamSpiMocHandleT moc) {
        std::vector<std::string> names;
        for (OrlOamSpiAttributeHandleT it :
             walk(r2.getMocFirstAttribute, r2.getNextAttribute, moc)) {
            OrlOamSpiGeneralPropertiesHandleT properties = 0;
            EXPECT_EQ(r2.getAttributeGeneralProperties(it, &properties), 0);
            names.push_back(name(properties));
        }
        return names;
    }
    // The attribute of the class of `dn` named `attribute`; 0 if there is none.
    OrlOamSpiAttributeHandleT attribute(const std::string& dn, const std::string& attribute) {
        for (OrlOamSpiAttributeHandleT it :
             walk(r2.getMocFirstAttribute, r2.getNextAttribute, moc(dn))) {
            OrlOamSpiGeneralPropertiesHandleT properties = 0;
            r2.getAttributeGeneralProperties(it, &properties);
            if (name(properties) == attribute) {
                return it;
            }
        }
        ADD_FAILURE() << dn << " has no attribute " << attribute;
        return 0;
    }
    OrlOamSpiTypeContainerHandleT typeContainer(OrlOamSpiAttributeHandleT attribute) {
        OrlOamSpiTypeContainerHandleT type = 0;
        EXPECT_EQ(r2.getAttributeTypeContainer(attribute, &type), 0);
        return type;
    }
    int32_t type(OrlOamSpiTypeContainerHandleT container) {
        OrlOamSpiMrType_3 type = -2;
        EXPECT_EQ(r3.getTypeContainerType(container, &type), 0);
        return type;
    }
    // (reported type, base type): the base of a derived type, else the type again.
    std::pair<int32_t, int32_t> types(const std::string& dn, const std::string& attributeName) {
        OrlOamSpiTypeContainerHandleT container = typeContainer(attribute(dn, attributeName));
        int32_t reported = type(container);
        OrlOamSpiDerivedTypeHandleT derived = 0;
        OrlReturnT r = r2.getDerivedType(container, &derived);
        if (reported != OrlOamSpiMrType_3_DERIVED) {
            EXPECT_EQ(r, OrlNotExist) << attributeName << " is not derived";
            return {reported, reported};
        }
        OrlOamSpiTypeContainerHandleT base = 0;
        EXPECT_EQ(r, 0);
        EXPECT_EQ(r2.getDerivedTypeBase(derived, &base), 0);
        return {reported, type(base)};
    }
    // Defaults; {"<none>"} when the repository answers "none".
    std::vector<std::string> defaults(OrlOamSpiTypeContainerHandleT container) {
        const char* const* texts = nullptr;
        OrlReturnT r = r2.getDefaultValue(container, &texts);
        if (r == OrlNotExist) {
            return {"<none>"};
        }
        EXPECT_EQ(r, 0);
        std::vector<std::string> result;
        for (; texts != nullptr && *texts != nullptr; ++texts) {
            result.push_back(*texts);
        }
        return result;
    }
    std::pair<int32_t, int32_t> multiplicity(OrlOamSpiTypeContainerHandleT container) {
        int32_t min = -1;
        int32_t max = -1;
        EXPECT_EQ(r2.getMinMultiplicity(container, &min), 0);
        EXPECT_EQ(r2.getMaxMultiplicity(container, &max), 0);
        return {min, max};
    }
    // Literal names with their numbers, in model order; empty when not an enumeration.
    std::vector<std::pair<std::string, int16_t>> literals(OrlOamSpiTypeContainerHandleT container) {
        std::vector<std::pair<std::string, int16_t>> result;
        OrlOamSpiEnumHandleT enumeration = 0;
        if (r2.getEnum(container, &enumeration) != 0) {
            return result;
        }
        for (OrlOamSpiEnumLiteralHandleT it :
             walk(r2.getEnumFirstLiteral, r2.getNextEnumLiteral, enumeration)) {
            OrlOamSpiGeneralPropertiesHandleT properties = 0;
            int16_t value = -1;
            EXPECT_EQ(r2.getEnumLiteralGeneralProperties(it, &properties), 0);
            EXPECT_EQ(r2.getEnumLiteralValue(it, &value), 0);
            result.emplace_back(name(properties), value);
        }
        return result;
    }
    // (name, value) of each domain extension of an attribute, in model order.
    std::vector<std::pair<std::string, std::string>> extensions(
        OrlOamSpiAttributeHandleT attribute) {
        std::vector<std::pair<std::string, std::string>> result;
        OrlOamSpiGeneralPropertiesHandleT properties = 0;
        EXPECT_EQ(r2.getAttributeGeneralProperties(attribute, &properties), 0);
        for (OrlOamSpiDomainExtensionHandleT it :
             walk(r2.getFirstDomainExtension, r2.getNextDomainExtension, properties)) {
            const char* extension = nullptr;
            const char* value = nullptr;
            EXPECT_EQ(r2.getDomainExtensionName(it, &extension), 0);
            EXPECT_EQ(r2.getDomainExtensionValue(it, &value), 0);
            result.emplace_back(extension, value);
        }
        return result;
    }
    // (member name, member type) of a struct attribute; empty when it is no struct.
    std::vector<std::pair<std::string, int32_t>> members(OrlOamSpiTypeContainerHandleT container) {
        std::vector<std::pair<std::string, int32_t>> result;
        OrlOamSpiStructHandleT structType = 0;
        if (r2.getStruct(container, &structType) != 0) {
            return result;
        }
        for (OrlOamSpiStructMemberHandleT it :
             walk(r2.getStructFirstMember, r2.getNextStructMember, structType)) {
            OrlOamSpiGeneralPropertiesHandleT properties = 0;
            OrlOamSpiTypeContainerHandleT memberType = 0;
            EXPECT_EQ(r2.getStructMemberGeneralProperties(it, &properties), 0);
            EXPECT_EQ(r2.getStructMemberTypeContainer(it, &memberType), 0);
            result.emplace_back(name(properties), type(memberType));
        }
        return result;
    }
    std::vector<ChildClass> children(OrlOamSpiMocHandleT moc) {
        std::vector<ChildClass> result;
        for (OrlOamSpiContainmentHandleT it :
             walk(r2.getMocFirstChildContainment, r2.getNextSiblingContainment, moc)) {
            ChildClass child{"", -1, -1, 0};
            OrlOamSpiMocHandleT childMoc = 0;
            EXPECT_EQ(r2.getContainmentChildMoc(it, &childMoc), 0);
            EXPECT_EQ(r2.getContainmentParentMoc(it, &child.parent), 0);
            EXPECT_EQ(r2.getContainmentMinCardinality(it, &child.min), 0);
            EXPECT_EQ(r2.getContainmentMaxCardinality(it, &child.max), 0);
            child.name = mocName(childMoc);
            result.push_back(child);
        }
        return result;
    }
    bool systemCreated(const std::string& dn) {
        bool value = false;
        EXPECT_EQ(r2.isMocSystemCreated(moc(dn), &value), 0);
        return value;
    }

    OrlOamSpiModelRepository_2& r2;
    OrlOamSpiModelRepository_3& r3;
};

}  // namespace vesk::host::model

#include "host/StubServices.h"

namespace vesk {
namespace host {
namespace {

const char kRepositoryService[] = "OrlOamSpiModelRepositoryService";
const char kRepository[] = "OrlOamSpiModelRepository";

// One answer for every slot, whatever its arguments.
template <typename... Args>
OrlReturnT none(Args...) {
    return OrlNotExist;
}

}  // namespace

StubServices::StubServices() {
    _repository1.header = OrlMgmtSpiInterface_1{kRepositoryService, kRepository, "1"};
    _repository2.header = OrlMgmtSpiInterface_1{kRepositoryService, kRepository, "2"};
    fillRepository2();
    _repository3.header = OrlMgmtSpiInterface_1{kRepositoryService, kRepository, "3"};
    _repository3.getMocByDn = none;
    _repository3.getTypeContainerType = none;
    _repository3.getRequestedMoc = none;
}

void StubServices::fillRepository2() {
    OrlOamSpiModelRepository_2& r = _repository2;
    r.getMocGeneralProperties = none;
    r.getMocFirstAttribute = none;
    r.getMocFirstChildContainment = none;
    r.isMocSystemCreated = none;
    r.getAttributeGeneralProperties = none;
    r.getAttributeTypeContainer = none;
    r.isAttributeKey = none;
    r.isAttributeMandatory = none;
    r.getNextAttribute = none;
    r.getName = none;
    r.getFirstDomainExtension = none;
    r.getDomainExtensionName = none;
    r.getDomainExtensionValue = none;
    r.getNextDomainExtension = none;
    r.getContainmentChildMoc = none;
    r.getContainmentParentMoc = none;
    r.getContainmentMinCardinality = none;
    r.getContainmentMaxCardinality = none;
    r.getNextSiblingContainment = none;
    r.getDefaultValue = none;
    r.getMinMultiplicity = none;
    r.getMaxMultiplicity = none;
    r.getStruct = none;
    r.getEnum = none;
    r.getDerivedType = none;
    r.getDerivedTypeBase = none;
    r.getStructFirstMember = none;
    r.getStructMemberGeneralProperties = none;
    r.getStructMemberTypeContainer = none;
    r.getNextStructMember = none;
    r.getEnumFirstLiteral = none;
    r.getEnumLiteralGeneralProperties = none;
    r.getEnumLiteralValue = none;
    r.getNextEnumLiteral = none;
}

}  // namespace host
}  // namespace vesk

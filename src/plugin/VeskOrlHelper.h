// Building, copying and freeing the attribute value records of the host boundary.
//
// All records and strings are made with malloc and must be freed with free, or through the
// release operations below. The helpers keep no state and may run on any thread; callers as a
// rule hold the managed object front's mutex.
#pragma once

#include <list>
#include <string>

#include "platform/orl/OrlAttributeValue.h"

namespace TibVeskCM {

class VeskOrlHelper {
  public:
    // The type of an attribute unknown to the model.
    static constexpr OrlOamSpiMoAttributeType_3 kUnknownType = -2;

    // Answers the model's type of `attrName` on the class of `dn` into *type, leaving *type
    // as it was when the model does not know the attribute; non-zero on failure.
    typedef int (*AttributeTypeLookup)(const std::string& dn, const std::string& attrName,
                                       int* type);
    // Installs the model lookup used by initAttributeContainer(s); null restores the default,
    // which knows no attribute. Called at start, before requests flow.
    static void setAttributeTypeLookup(AttributeTypeLookup lookup);

    // A malloc'ed copy of `text`; null, with an error line, if memory is exhausted. Null gives
    // null.
    static char* ownStrDup(const char* text);

    // Puts a new container of `type` with `count` zeroed slots (none when 0) into
    // result.container. result.release is left as the caller set it.
    static void initAttrResult(OrlOamSpiMoAttributeType_3 type, unsigned count,
                               OrlMoAttributeValueResult_3& result);
    // Sets release to releaseAttrResultCB and puts an empty container of the attribute's model
    // type (kUnknownType if unknown) into result->container.
    static void initAttributeContainer(const std::string& dn, const std::string& attrName,
                                       OrlMoAttributeValueResult_3* result);
    // Sets release to releseAttrValueContainers and puts one empty container per name, then a
    // null entry, into result->containers. A name the model does not know takes the type of the
    // name before it (kUnknownType for the first).
    static void initAttributeContainers(const std::string& dn,
                                        const std::list<std::string>& attrNames,
                                        OrlMoAttributeValuesResult_3* result);
    // `count` slots, not zeroed, into container->values; sets nrOfValues. The type stays.
    static void initAttributeValues(OrlMoAttributeValueContainer_3* container, int count);

    // A new container, deep copy of `source`.
    static OrlMoAttributeValueContainer_3* createAttrValueContainer(
        const OrlMoAttributeValueContainer_3& source);
    // Deep copy into `dest`, whose previous contents are not freed. values null at count 0.
    static void copyAttrValueContainer(OrlMoAttributeValueContainer_3& dest,
                                       const OrlMoAttributeValueContainer_3& source);
    // Strings and references are duplicated, struct member lists deep-copied, anything else
    // copied as 8 bytes.
    static void copyAttrValue(OrlOamSpiMoAttributeType_3 type, OrlMoAttributeValue_3& dest,
                              const OrlMoAttributeValue_3& source);
    // Deep copy of the member list of a struct slot, in order; null for an empty list.
    static OrlMoAttributeValueStructMember_3* copyStructMembers(
        const OrlMoAttributeValue_3& source);
    static OrlMoNamedAttributeValueContainer_3* createNamedValueContainer(
        const char* name, const OrlMoAttributeValueContainer_3& source);
    // A member with a copy of `name` that takes over `value`; nextMember null.
    static OrlMoAttributeValueStructMember_3* newOrlMoAttributeValueStructMember(
        std::string name, OrlMoAttributeValueContainer_3* value);

    // Frees the whole list from `member` on: each value, name and node. Null is allowed.
    static void freeAttributeValueStructMember(OrlMoAttributeValueStructMember_3* member);
    // Frees the contents only and sets values to null; the container itself stays. Only a
    // container with nrOfValues above 0 has its values freed: at 0, values is left as it is.
    // `container` must not be null.
    static void freeAttrValueContainer(OrlMoAttributeValueContainer_3* container);
    // Frees the value's contents and the name, and sets the name to null; the record stays.
    static void freeNamedValueContainer(OrlMoNamedAttributeValueContainer_3* named);
    // Frees every record of the null-terminated array; the array itself stays.
    static void freeNamedValueContainers(OrlMoNamedAttributeValueContainer_3** named);
    // Frees the contents and the container; null is allowed. The release of a single result.
    static void releaseAttrResultCB(OrlMoAttributeValueContainer_3* container);
    // releaseAttrResultCB on each entry up to the null, then frees the array.
    static void releseAttrValueContainers(OrlMoAttributeValueContainer_3** containers);

    // Database operation code to notification event type: 18 gives 1, 9 gives 2, others 3.
    static int dbObjOper2OrlEventType(int operation);

    // "aiConfigParsed" of the committed "OAM" object; false when absent or not a bool.
    static bool getAiConfigParsed();

  private:
    static void freeValues(OrlOamSpiMoAttributeType_3 type, OrlMoAttributeValue_3* values,
                           uint32_t count);
};

}  // namespace TibVeskCM

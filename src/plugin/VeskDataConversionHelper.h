// Conversion of version 3 attribute values into the older version 1 form, as handed to object
// implementers that registered for a class. Stateless; any thread.
#pragma once

#include "platform/orl/OrlAttributeValue.h"

namespace TibVeskCM {

class VeskDataConversionHelper {
  public:
    // A new malloc'ed version 1 deep copy of `source`. Each slot keeps only the bytes of its
    // type's width in the old form: enumerations are cut to their low 16 bits, and types the old
    // form lacks (DECIMAL64 among them) stay zero, with a warning per slot. values is null at a
    // count of 0, with a warning. Free with freeAttrValueContainerV1.
    static OrlMoAttributeValueContainer* copyToV1AttrValueContainer(
        const OrlMoAttributeValueContainer_3& source);
    // Deep copy of the member list, in order; null gives null.
    static OrlMoAttributeValueStructMember* copyToV1StructMember(
        const OrlMoAttributeValueStructMember_3* source);
    // Frees the contents, the values array (whatever the count) and the container.
    static void freeAttrValueContainerV1(OrlMoAttributeValueContainer* container);
    // Frees the whole list: each value, name and node. Null is allowed.
    static void freeAttributeValueStructMemberV1(OrlMoAttributeValueStructMember* member);

  private:
    static void copyToV1Value(OrlOamSpiMoAttributeType_3 type, OrlMoAttributeValue& dest,
                              const OrlMoAttributeValue_3& source);
};

}  // namespace TibVeskCM

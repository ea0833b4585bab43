// The transaction's gates to the struct writers. The writes go straight into the database
// transaction through the struct factory; the object copy fetched here only tells that the MO
// exists and is dropped.
#include <memory>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "transaction/IAttribute.h"
#include "transaction/VeskDBTransaction.h"

namespace TibVeskCM {

int VeskDBTransaction::handleStructAttribute(std::string dn, std::string attributeName,
                                             OrlMoAttributeValueContainer_3 const* value, bool,
                                             DBObject**, OrlMoAttributeValueStructMember_3*,
                                             std::string, std::string) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, databaseTxHandle));
    if (!object)
        return 0;
    IAttribute attributes;
    VESK_TRACE("%s: Call iAttr.setAttribute()", __func__);
    return attributes.setAttribute(object.get(), dn, attributeName, value, databaseTxHandle) ? 1
                                                                                             : 0;
}

int VeskDBTransaction::handleStructListAttribute(std::string dn, std::string attributeName,
                                                 OrlMoAttributeValueContainer_3 const* value,
                                                 std::string listText) {
    std::unique_ptr<DBObject> object(IDatabase::getObject(dn, 1, databaseTxHandle));
    if (!object)
        return 0;
    IAttribute attributes;
    VESK_TRACE("%s: Call iAttr.setAttribute()", __func__);
    if (!attributes.setAttribute(object.get(), dn, attributeName, value, databaseTxHandle))
        return -1;
    VESK_TRACE("%s: Update object %s", __func__, listText.c_str());
    return 0;
}

}  // namespace TibVeskCM

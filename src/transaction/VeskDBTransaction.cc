#include "transaction/VeskDBTransaction.h"

#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/ISec.h"
#include "platform/Logger.h"
#include "plugin/VeskOrlHelper.h"

namespace TibVeskCM {

std::atomic<unsigned long long> VeskDBTransaction::s_iteratorCounter{0};
std::atomic<VeskDBTransaction*> VeskDBTransaction::s_lastTransaction{nullptr};

VeskDBTransaction::VeskDBTransaction(unsigned long long aTransactionId,
                                     OrlMgmtSpiInterfacePortal_1& aPortal)
    : databaseTxHandle(0),
      secUsed(false),
      aiLogEnabled(false),
      transactionId(static_cast<uint32_t>(aTransactionId)),
      portal(aPortal),
      lastIterator(iterators.end()) {
    s_lastTransaction.store(this);
}

VeskDBTransaction::~VeskDBTransaction() {
    iterators.clear();
    refList.clear();
}

VeskDBTransaction* VeskDBTransaction::getVeskDBTransaction() {
    return s_lastTransaction.load();
}

int VeskDBTransaction::startTransactionToDB() {
    databaseTxHandle = IDatabase::transaction(IPCData::OP_TX_OPEN, 0, false);
    if (databaseTxHandle == 0) {
        VESK_ERROR("Database transaction Join failed!");
        return -1;
    }
    return 0;
}

int VeskDBTransaction::commit() {
    if (secUsed) {
        int rc = ISec::committed(databaseTxHandle);
        VESK_TRACE("Commit to iSec returns %d", rc);
        secUsed = false;
    }
    VESK_TRACE("Commit to database succeeded");
    return 0;
}

int VeskDBTransaction::rollback() {
    if (secUsed) {
        int rc = ISec::rollback(databaseTxHandle);
        VESK_INFO("VeskDBTransaction::%s(): Rollback to iSec returns %d", __func__, rc);
        secUsed = false;
    }
    return 0;
}

int VeskDBTransaction::existsMo(char const* dn, bool* exists) {
    *exists = false;
    if (IDatabase::isPresentInDB(dn, 1)) {
        *exists = true;
        return 0;
    }
    DBObject* object = IDatabase::getObject(dn, 1, databaseTxHandle);
    *exists = object != nullptr;
    delete object;
    return 0;
}

std::list<std::string> VeskDBTransaction::childIds(char const* operation, char const* dn,
                                                   char const* className) {
    if (dn == nullptr || *dn == '\0') {
        VESK_TRACE("VeskDBTransaction::%s(): getMOClass empty dn", operation);
        return IDatabase::getMOClassWithParent("", className, databaseTxHandle);
    }
    return IDatabase::getMOClassWithParent(dn, className, databaseTxHandle);
}

int VeskDBTransaction::countMoChildren(char const* dn, char const* className,
                                       unsigned long long* count) {
    *count = childIds(__func__, dn, className).size();
    return 0;
}

int VeskDBTransaction::newIterator(char const* dn, char const* className,
                                   unsigned long long* handle) {
    // 0 is never handed out: it means "nothing to walk" and keys the parked texts.
    unsigned long long counter = s_iteratorCounter.load();
    unsigned long long fresh = counter + 1 != 0 ? counter + 1 : counter + 2;
    s_iteratorCounter.store(fresh);
    std::list<std::string> ids = childIds(__func__, dn, className);
    for (const std::string& id : ids) {
        iterators.insert(std::make_pair(fresh, id));
    }
    if (ids.empty()) {
        VESK_TRACE("Unable to find class %s.", className);
        *handle = 0;
    } else {
        *handle = fresh;
    }
    return 0;
}

int VeskDBTransaction::next(unsigned long long handle, char** result) {
    IteratorMap::iterator entry = iterators.find(handle);
    if (entry == iterators.end()) {
        *result = nullptr;
        return 0;
    }
    // The text handed out stays parked under key 0 until the transaction ends.
    lastIterator = iterators.insert(std::make_pair(0ULL, entry->second));
    *result = &lastIterator->second[0];
    iterators.erase(entry);
    return 0;
}

int VeskDBTransaction::getMoAttribute(std::string const& dn, std::string const& attributeName,
                                      OrlMoAttributeValueResult_3* result) {
    VeskOrlHelper::initAttributeContainer(dn, attributeName, result);
    DBObject* object = IDatabase::getObject(dn, 1, databaseTxHandle);
    if (object == nullptr) {
        return 0;
    }
    int rc = 0;
    Attribute* attribute = object->getAlternateAttribute(attributeName);
    if (attribute == nullptr) {
        attribute = object->getAttribute(attributeName);
    }
    if (attribute == nullptr) {
        VESK_TRACE("Attribute %s was not found from object %s", attributeName.c_str(), dn.c_str());
    } else if (attribute->hidden || attribute->deleted) {
        VESK_TRACE("Attribute '%s' has been deleted in same transaction or hidden attribute",
                   attributeName.c_str());
    } else {
        rc = setAttrResult_2(dn, attribute, result->container);
    }
    delete object;
    return rc;
}

int VeskDBTransaction::getMoAttributes(std::string const& dn, std::list<std::string> const& names,
                                       OrlMoAttributeValuesResult_3* results) {
    VeskOrlHelper::initAttributeContainers(dn, names, results);
    DBObject* object = IDatabase::getObject(dn, 1, databaseTxHandle);
    if (object == nullptr) {
        VESK_TRACE("Object not found! dn: %s ", dn.c_str());
        return 0;
    }
    int rc = 0;
    size_t position = 0;
    for (const std::string& name : names) {
        Attribute* attribute = object->getAlternateAttribute(name);
        if (attribute == nullptr) {
            attribute = object->getAttribute(name);
        }
        OrlMoAttributeValueContainer_3* container = results->containers[position++];
        if (attribute != nullptr && container != nullptr) {
            rc = setAttrResult_2(dn, attribute, container);
        }
    }
    delete object;
    return rc;
}

IPCData::AttributeValueType VeskDBTransaction::getAttributeValueType(int hostType, bool isList) {
    using namespace IPCData;
    switch (hostType) {
        case 1:
            return isList ? AVT_INT8_LIST : AVT_INT8;
        case 2:
            return isList ? AVT_INT16_LIST : AVT_INT16;
        case 3:
            return isList ? AVT_INT32_LIST : AVT_INT32;
        case 4:
            return isList ? AVT_INT64_LIST : AVT_INT64;
        case 5:
            return isList ? AVT_UINT8_LIST : AVT_UINT8;
        case 6:
            return isList ? AVT_UINT16_LIST : AVT_UINT16;
        case 7:
            return isList ? AVT_UINT32_LIST : AVT_UINT32;
        case 8:
            return isList ? AVT_UINT64_LIST : AVT_UINT64;
        case 9:
            return isList ? AVT_STRING_LIST : AVT_STRING;
        case 10:
            return isList ? AVT_BOOL_LIST : AVT_BOOL;
        case 11:
            return isList ? AVT_REFERENCE_LIST : AVT_REFERENCE;
        case 12:
            return isList ? AVT_ENUM_LIST : AVT_ENUM;
        case 14:
            return isList ? AVT_STRUCT_LIST : AVT_STRUCT;
        case 16:
            return isList ? AVT_DECIMAL64_LIST : AVT_DECIMAL64;
        default:
            VESK_WARNING("VeskDBTransaction::%s Attribute value type is UNKNOWN (%d)", __func__,
                         hostType);
            return AVT_UNKNOWN;
    }
}

}  // namespace TibVeskCM

// The writes of VeskMoImpl: each passes its gate, is offered to the object implementers
// registered for the dn and for the MO path, and then goes to the transaction's
// VeskDBTransaction. Every write holds the front's mutex for its whole length, through the
// half-second waits of an implementer that asks to be called again.
#include <cstring>

#include "front/VeskMoImpl.h"
#include "platform/Logger.h"
#include "platform/StationSleep.h"
#include "plugin/VeskDataConversionHelper.h"
#include "transaction/VeskDBTransaction.h"
#include "validation/VeskOI.h"

namespace TibVeskCM {
namespace {

const unsigned kRetryDelayUs = 500000;

bool isCellClass(const char* className) {
    return std::strcmp(className, "EUtranCellFDD") == 0 ||
           std::strcmp(className, "EUtranCellTDD") == 0 ||
           std::strcmp(className, "NodeBLocalCell") == 0;
}

}  // namespace

OrlReturnT VeskMoImpl::setMoAttribute(OrlTxHandleT txHandle, const std::string& dn,
                                      const std::string& attrName,
                                      const OrlMoAttributeValueContainer_3* value) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    int phase = 0;
    if (!IsDatabaseChangeAllowed(phase, attrName.c_str())) {
        VESK_ERROR("VeskMoImpl::setMoAttribute(): Cannot set attribute %s, MO %s, AI_phase is %d ",
                   attrName.c_str(), dn.c_str(), phase);
        return OrlTryAgain;
    }
    VeskDBTransaction* transaction = findTransaction(txHandle);
    OrlReturnT rc = OrlNotExist;
    if (classFromDn(dn) == "QciProfileOperatorDefined" && attrName == "qci") {
        VESK_INFO(
            "VeskLTEOI::%s check for duplicate handlinng for qci of QciProfileOperatorDefined :%s",
            __func__, dn.c_str());
        rc = validateQciProfileOperatorDefinedQci(dn, attrName, value);
        if (rc != OrlOk) {
            return rc;
        }
    }
    if (transaction != nullptr) {
        if (transaction->getDatabaseTxHandle() == 0) {
            transaction->startTransactionToDB();
        }
        // A dn implementer may delay the write, never stop it.
        checkSetMoAttributeDnOI(txHandle, dn, attrName, value);
        rc = checkSetMoAttributeClassOI(txHandle, dn, attrName, value);
        if (rc == OrlOk) {
            rc = transaction->setMoAttribute(dn, attrName, value);
        }
    }
    if (rc != OrlOk) {
        VESK_INFO("VeskMoImpl::%s - Unable to set attribute %s to %s - txHandle: %lu return: %d",
                  __func__, attrName.c_str(), dn.c_str(), txHandle, rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::setMoAttributeAttempts(OrlOamSpiManagedObject_3* implementer,
                                              OrlTxHandleT txHandle, const std::string& dn,
                                              const std::string& attrName,
                                              const OrlMoAttributeValueContainer_3* value,
                                              bool classForm) {
    int attempts = getOINumOfAttemptEnv();
    OrlReturnT rc = OrlTryAgain;
    while (attempts > 0 && rc == OrlTryAgain) {
        --attempts;
        OrlReturnT answer =
            implementer->setMoAttribute(txHandle, dn.c_str(), attrName.c_str(), value);
        if (answer != OrlTryAgain || attempts == 0) {
            rc = answer;
            continue;
        }
        if (classForm) {
            VESK_INFO(
                "VeskMoImpl::checkSetMoAttributeClassOI(): Object Implementer's setMoAttribute() "
                "returned: %d...delaying 0,5 sec before continuing.",
                answer);
        } else {
            VESK_TRACE(
                "%s: Object Implementer's setMoAttribute() returned:%d...delaying 0,5 sec before "
                "continuing.",
                "checkSetMoAttributeDnOI", answer);
        }
        VESK::Framework::stationSleepUs(kRetryDelayUs);
    }
    return rc;
}

OrlReturnT VeskMoImpl::checkSetMoAttributeDnOI(OrlTxHandleT txHandle, const std::string& dn,
                                               const std::string& attrName,
                                               const OrlMoAttributeValueContainer_3* value) {
    OrlReturnT rc = OrlOk;
    const DnInterfacePair_T first{dn, nullptr};
    for (auto it = _oiDnMapToTxResourceIf_2.lower_bound(first);
         it != _oiDnMapToTxResourceIf_2.end() && it->dn == dn; ++it) {
        rc = static_cast<OrlOamSpiTransactionalResource_2*>(it->interface)->join(txHandle);
        if (rc != OrlOk && rc != OrlAlreadyJoined) {
            VESK_ERROR("Failed(%d) to join Object Implementer in transaction.", rc);
            return rc;
        }
    }
    for (auto it = _oiDnMapToManagedObjectIf_1.lower_bound(first);
         it != _oiDnMapToManagedObjectIf_1.end() && it->dn == dn; ++it) {
        auto* implementer = static_cast<OrlOamSpiManagedObject_3*>(it->interface);
        rc = setMoAttributeAttempts(implementer, txHandle, dn, attrName, value, false);
        if (rc != OrlOk) {
            VESK_ERROR("Object Implementer's setMoAttribute() returned failure:%d", rc);
            return rc;
        }
    }
    return rc;
}

OrlReturnT VeskMoImpl::checkSetMoAttributeClassOI(OrlTxHandleT txHandle, const std::string& dn,
                                                  const std::string& attrName,
                                                  const OrlMoAttributeValueContainer_3* value) {
    const std::string path = GetMoPathFromFdn(dn);
    const ClassInterfacePair_T first{path, nullptr};
    OrlReturnT rc = OrlOk;
    for (auto it = _oiClassMapToTxResourceIf_2.lower_bound(first);
         it != _oiClassMapToTxResourceIf_2.end() && it->dn == path; ++it) {
        rc = static_cast<OrlOamSpiTransactionalResource_2*>(it->interface)->join(txHandle);
        if (rc != OrlOk && rc != OrlAlreadyJoined) {
            VESK_ERROR(
                "VeskMoImpl::checkSetMoAttributeClassOI(): Failed(%d) to join Object Implementer "
                "in transaction.",
                rc);
            return rc;
        }
    }
    for (auto it = _oiClassMapToManagedObjectIf_1.lower_bound(first);
         it != _oiClassMapToManagedObjectIf_1.end() && it->dn == path; ++it) {
        // Class implementers read the older value form; the record type stays the host's.
        OrlMoAttributeValueContainer* v1 =
            value != nullptr ? VeskDataConversionHelper::copyToV1AttrValueContainer(*value)
                             : nullptr;
        rc = setMoAttributeAttempts(
            static_cast<OrlOamSpiManagedObject_3*>(it->interface), txHandle, dn, attrName,
            reinterpret_cast<const OrlMoAttributeValueContainer_3*>(v1), true);
        if (v1 != nullptr) {
            VeskDataConversionHelper::freeAttrValueContainerV1(v1);
        }
        if (rc != OrlOk) {
            VESK_ERROR(
                "VeskMoImpl::checkSetMoAttributeClassOI(): Object Implementer's setMoAttribute() "
                "returned failure: %d",
                rc);
            return rc;
        }
    }
    return rc;
}

OrlReturnT VeskMoImpl::createMo(OrlTxHandleT txHandle, const char* parentDn, const char* className,
                                const char* keyAttrName, const char* keyAttrValue,
                                OrlMoNamedAttributeValueContainer_3** attributes) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    int phase = 0;
    if (!IsDatabaseChangeAllowed(phase, "")) {
        VESK_ERROR("VeskMoImpl::createMo(): Cannot create MO '%s,%s', AI_phase is %d ", parentDn,
                   className, phase);
        return OrlTryAgain;
    }
    OrlOamSpiManagedObject_3* implementer =
        checkObjectImplementers(std::string(parentDn) + "," + className);
    OrlReturnT rc = OrlOk;
    if (implementer != nullptr) {
        rc = implementer->createMo(txHandle, parentDn, className, keyAttrName, keyAttrValue,
                                   attributes);
        // Read (and reset) even after a failure, so that the flag lasts one creation only.
        const bool validated = TibVeskOI::VeskOI::getVeskOI()->getValidated();
        if (rc != OrlOk || !validated) {
            return rc;
        }
    }
    rc = createInDatabase(txHandle, parentDn, className, keyAttrName, keyAttrValue, attributes);
    if (rc != OrlOk) {
        VESK_INFO(
            "VeskMoImpl::%s - Unable to createMo dn %s className %s - txHandle: %lu return: %d",
            __func__, parentDn, className, txHandle, rc);
    }
    return rc;
}

OrlReturnT VeskMoImpl::createInDatabase(OrlTxHandleT txHandle, const char* parentDn,
                                        const char* className, const char* keyAttrName,
                                        const char* keyAttrValue,
                                        OrlMoNamedAttributeValueContainer_3** attributes) {
    VeskDBTransaction* transaction = findTransaction(txHandle);
    if (transaction == nullptr) {
        return OrlOk;
    }
    OrlReturnT rc = OrlOk;
    if (transaction->getDatabaseTxHandle() == 0) {
        rc = transaction->startTransactionToDB();
    }
    if (rc == OrlOk) {
        rc = transaction->createMo(parentDn, className, keyAttrName, keyAttrValue, attributes);
    }
    if (isCellClass(className)) {
        TibVeskOI::VeskOI::getVeskOI()->createCell(txHandle, parentDn, className, keyAttrName,
                                                   keyAttrValue, attributes);
    }
    if (std::strcmp(className, "QciProfileOperatorDefined") == 0) {
        rc = validateQciProfileOperatorDefinedQciStartup(txHandle, className, attributes);
    }
    return rc;
}

OrlReturnT VeskMoImpl::deleteMo(OrlTxHandleT txHandle, const std::string& dn) {
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    const int32_t phase = getAimPhase();
    OrlReturnT rc = OrlOk;
    if (phase < 4) {
        VESK_ERROR("VeskMoImpl::deleteMo(): Cannot delete MO, AI_phase is %d ", phase);
        rc = OrlTryAgain;
    } else if (OrlOamSpiManagedObject_3* implementer = checkObjectImplementers(dn)) {
        rc = implementer->deleteMo(txHandle, dn.c_str());
        if (rc != OrlOk) {
            VESK_ERROR("VeskMoImpl::%s - Unable to deleteMo dn %s - txHandle: %lu return: %d",
                       __func__, dn.c_str(), txHandle, rc);
            return rc;
        }
    }
    VeskDBTransaction* transaction = rc == OrlOk ? findTransaction(txHandle) : nullptr;
    if (transaction != nullptr) {
        if (transaction->getDatabaseTxHandle() == 0) {
            rc = transaction->startTransactionToDB();
        }
        if (rc == OrlOk) {
            rc = transaction->deleteMo(dn);
        }
    }
    if (rc != OrlOk) {
        VESK_WARNING("VeskMoImpl::%s - Unable to deleteMo dn %s - txHandle: %lu return: %d",
                     __func__, dn.c_str(), txHandle, rc);
    }
    return rc;
}

}  // namespace TibVeskCM

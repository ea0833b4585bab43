// The object implementer registry of VeskMoImpl: the four ordered sets of implementer records by
// dn and by MO path, their registration operations and the MO path of a dn.
#include <cstring>

#include "front/VeskMoImpl.h"
#include "platform/Logger.h"

namespace TibVeskCM {
namespace {

bool hasVersion(const OrlMgmtSpiInterface_1& header, const char* version) {
    return header.interfaceVersion != nullptr && std::strcmp(header.interfaceVersion, version) == 0;
}

const char* text(const char* value) {
    return value != nullptr ? value : "(null)";
}

// Logs both interface triples of a refused registration.
void logInterfaces(const char* format, const OrlMgmtSpiInterface_1& moIf,
                   const OrlMgmtSpiInterface_1& txIf) {
    VESK_WARNING(format, text(moIf.componentName), text(moIf.interfaceName),
                 text(moIf.interfaceVersion), text(txIf.componentName), text(txIf.interfaceName),
                 text(txIf.interfaceVersion));
}

}  // namespace

std::string VeskMoImpl::GetMoPathFromFdn(std::string fdn) {
    std::string path = "/" + fdn;
    for (size_t equals = path.find('='); equals != std::string::npos; equals = path.find('=')) {
        size_t comma = path.find(',', equals);
        size_t length = comma == std::string::npos ? std::string::npos : comma - equals + 1;
        path.replace(equals, length, "/");
    }
    path.erase(path.size() - 1);
    return path;
}

OrlReturnT VeskMoImpl::fetchImplementer(const OrlMgmtSpiInterface_1& moIf,
                                        const OrlMgmtSpiInterface_1& txIf, const char* prefix,
                                        void** moRecord, void** txRecord) {
    const OrlMgmtSpiInterface_1* headers[2] = {&txIf, &moIf};
    void** records[2] = {txRecord, moRecord};
    for (int i = 0; i < 2; ++i) {
        const OrlMgmtSpiInterface_1& h = *headers[i];
        OrlReturnT rc = _portal == nullptr ? OrlFailure
                                           : _portal->getInterface(h.componentName, h.interfaceName,
                                                                   h.interfaceVersion, records[i]);
        if (rc != OrlOk) {
            VESK_ERROR("%sFailed(%i) to get {%s,%s,%s} interface from Orl interface portal", prefix,
                       rc, text(h.componentName), text(h.interfaceName), text(h.interfaceVersion));
            VESK_ERROR("%sObject Implementer DN registration failed.", prefix);
            return rc;
        }
    }
    return OrlOk;
}

void VeskMoImpl::traceOiSet(const OiSet& set, const char* name) {
    VESK_TRACE("START - START - START - %s:", name);
    for (const DnInterfacePair_T& pair : set) {
        VESK_TRACE("dn:%s mapped to interface:0x%lx", pair.dn.c_str(),
                   reinterpret_cast<unsigned long>(pair.interface));
    }
    VESK_TRACE("END - END - END - END - %s:", name);
}

OrlReturnT VeskMoImpl::registerDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                    const char* dn) {
    if (!hasVersion(txIf, "2") || !hasVersion(moIf, "1")) {
        VESK_WARNING(
            "Received Object Implementer Dn registration for unsupported interface versions. "
            "Registration ignored.");
        logInterfaces("MO interface {%s,%s,%s}, TxResource interface {%s,%s,%s}", moIf, txIf);
        return OrlOk;
    }
    void* moRecord = nullptr;
    void* txRecord = nullptr;
    OrlReturnT rc = fetchImplementer(moIf, txIf, "", &moRecord, &txRecord);
    if (rc != OrlOk) {
        return rc;
    }
    _oiDnMapToTxResourceIf_2.insert(DnInterfacePair_T{dn, txRecord});
    _oiDnMapToManagedObjectIf_1.insert(DnInterfacePair_T{dn, moRecord});
    traceOiSet(_oiDnMapToManagedObjectIf_1, "_oiDnMapToManagedObjectIf_1");
    traceOiSet(_oiDnMapToTxResourceIf_2, "_oiDnMapToTxResourceIf_2");
    return OrlOk;
}

OrlReturnT VeskMoImpl::registerClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                       const char* path) {
    if (!hasVersion(txIf, "2") || !hasVersion(moIf, "3")) {
        VESK_WARNING(
            "registerClassOI(): Received Object Implementer class registration for unsupported "
            "interface versions. Registration ignored.");
        logInterfaces("registerClassOI(): MO interface {%s,%s,%s}, TxResource interface {%s,%s,%s}",
                      moIf, txIf);
        return OrlOk;
    }
    void* moRecord = nullptr;
    void* txRecord = nullptr;
    OrlReturnT rc = fetchImplementer(moIf, txIf, "registerClassOI(): ", &moRecord, &txRecord);
    if (rc != OrlOk) {
        return rc;
    }
    _oiClassMapToTxResourceIf_2.insert(ClassInterfacePair_T{path, txRecord});
    _oiClassMapToManagedObjectIf_1.insert(ClassInterfacePair_T{path, moRecord});
    traceOiSet(_oiClassMapToManagedObjectIf_1, "_oiClassMapToManagedObjectIf_1");
    traceOiSet(_oiClassMapToTxResourceIf_2, "_oiClassMapToTxResourceIf_2");
    return OrlOk;
}

OrlReturnT VeskMoImpl::unRegisterDnOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                      const char* dn) {
    void* moRecord = nullptr;
    void* txRecord = nullptr;
    OrlReturnT rc = fetchImplementer(moIf, txIf, "", &moRecord, &txRecord);
    if (rc != OrlOk) {
        return rc;
    }
    if (_oiDnMapToTxResourceIf_2.erase(DnInterfacePair_T{dn, txRecord}) == 0) {
        VESK_WARNING(
            "Received Object Implementer Dn unregistration but no registered dn and interface "
            "pair is found for TxResource interface");
        VESK_WARNING("TxResource interface {%s,%s,%s}", text(txIf.componentName),
                     text(txIf.interfaceName), text(txIf.interfaceVersion));
    }
    if (_oiDnMapToManagedObjectIf_1.erase(DnInterfacePair_T{dn, moRecord}) == 0) {
        VESK_WARNING(
            "Received Object Implementer Dn unregistration but no registered dn and interface "
            "pair is found for MO interface");
        VESK_WARNING("MO Interface interface {%s,%s,%s}", text(moIf.componentName),
                     text(moIf.interfaceName), text(moIf.interfaceVersion));
    }
    return OrlOk;
}

OrlReturnT VeskMoImpl::unRegisterClassOI(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                                         const char* path) {
    void* moRecord = nullptr;
    void* txRecord = nullptr;
    OrlReturnT rc = fetchImplementer(moIf, txIf, "unRegisterClassOI(): ", &moRecord, &txRecord);
    if (rc != OrlOk) {
        return rc;
    }
    if (_oiClassMapToTxResourceIf_2.erase(ClassInterfacePair_T{path, txRecord}) == 0) {
        VESK_WARNING(
            "unRegisterClassOI(): Received Object Implementer Class unregistration but no "
            "registered class and interface pair is found for TxResource interface");
        VESK_WARNING("unRegisterClassOI(): TxResource interface {%s,%s,%s}",
                     text(txIf.componentName), text(txIf.interfaceName),
                     text(txIf.interfaceVersion));
    }
    if (_oiClassMapToManagedObjectIf_1.erase(ClassInterfacePair_T{path, moRecord}) == 0) {
        VESK_WARNING(
            "unRegisterClassOI(): Received Object Implementer Class unregistration but no "
            "registered class and interface pair is found for MO interface");
        VESK_WARNING("unRegisterClassOI(): MO Interface interface {%s,%s,%s}",
                     text(moIf.componentName), text(moIf.interfaceName),
                     text(moIf.interfaceVersion));
    }
    return OrlOk;
}

OrlOamSpiManagedObject_3* VeskMoImpl::checkObjectImplementers(std::string fdn) {
    const std::string path = GetMoPathFromFdn(fdn + "/");
    auto first = _oiClassMapToManagedObjectIf_1.lower_bound(ClassInterfacePair_T{path, nullptr});
    if (first == _oiClassMapToManagedObjectIf_1.end() || first->dn != path) {
        return nullptr;
    }
    return static_cast<OrlOamSpiManagedObject_3*>(first->interface);
}

}  // namespace TibVeskCM

// The WCDMA attributes of NodeBFunction and its local cells that the baseband OAM holds in its
// own object model. A set of such an attribute is translated into a ConfMsg_setAttributeReq and
// sent to the baseband (destination 6) inside the host's transaction; the baseband stages it and
// answers through boamSetAttributeReponseStatus, which is polled for up to a second. The host's
// commit or rollback then sends one commit or cancel per object class touched.
//
// Threads: under the front's mutex, like every caller of the validation component; only the
// answer mailbox is written from another thread.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "platform/orl/OrlOamSpi.h"

class DBObject;

namespace VESK {
namespace Messages {
class ConfMsg_setAttributeReq;
}
}  // namespace VESK

namespace TibVeskOI {

// The values set earlier in the current transaction, one member per attribute of a pair, so
// that the next message of the pair carries both new ends. 999 (the powers), 0 (the uplink
// load pair) and -1 (the scheduling rates) mean "not set in this transaction".
struct BoamTrAttributes {
    int tr_eAgchMaxPower, tr_eAgchMinPower;
    int tr_eHichMaxPower, tr_eHichMinPower;
    int tr_eRgchMaxPower, tr_eRgchMinPower;
    int tr_hsScchMaxCodePower, tr_hsScchMinCodePower;
    int tr_eAgch2msTtiMaxPower, tr_eAgch2msTtiMinPower;
    int tr_eHich2msTtiMaxPower, tr_eHich2msTtiMinPower;
    int eulMaxOwnUuLoad, eulMaxRoTCoverage;
    int eulMaxAllowedSchRate, eulDchMaxAllowedSchRate;
};

class VeskBoamOI {
  public:
    // Made at first use, destroyed at library unload.
    static VeskBoamOI* instance();
    virtual ~VeskBoamOI();

    // Registers "/ManagedElement/NodeBFunction" and its local cells' path with VeskOI.
    void initialize();
    // The baseband's verdict on one set: 0 go on (accepted, or nothing to forward), 1 no answer
    // in time (the host tries again), -1 refused or not sendable, -9 refused with a minimum
    // above its maximum.
    OrlReturnT handleBOAMTransaction(std::string dn, std::string attrName,
                                     const OrlMoAttributeValueContainer_3* value,
                                     unsigned long txHandle);
    // One commit (or cancel) per class touched by `txHandle`, when the baseband accepted at
    // least one of its attributes; 0 in all cases.
    OrlReturnT commit(unsigned long txHandle);
    OrlReturnT rollback(unsigned long txHandle);

    // True if `value` is in the comma-separated `valueList`.
    bool checkList(int value, std::string valueList);

    // Fills slot 0 of `message` for `attributeId` (class, length, data); 0 for an id that has
    // no layout here or a cell that cannot be read.
    int handleBOAMAttributeValue(const OrlMoAttributeValueContainer_3* value,
                                 VESK::Messages::ConfMsg_setAttributeReq* message, int attributeId,
                                 std::string dn, std::string attrName);
    // The refusal of a power pair whose minimum exceeds the maximum set in this transaction:
    // -9; any other refusal -1.
    int checkMinMaxRatio(std::string dn, std::string attrName,
                         const OrlMoAttributeValueContainer_3* value);
    void clearBOAMTrAttributes();

    // For the tests: the id and the fields that make the transaction state.
    int32_t boamTxId() const { return _boamTxId; }
    const BoamTrAttributes& trAttributesNow() const { return trAttributes; }

  private:
    VeskBoamOI();

    // The baseband transaction of `txHandle`: the current one, or a new id (256..65535).
    int32_t createBoamTxId(unsigned long txHandle);
    void freeBoamTxId(int32_t id);
    // Sends slot 0 of `message` and deletes it; 0 when the send failed.
    int sendAttributeReqToBOAM(unsigned int objectId, unsigned int attributeId,
                               VESK::Messages::ConfMsg_setAttributeReq* message);
    void commitBOAMTransaction(short objectClass, short instance);
    void rollbackBOAMTransaction(short objectClass, short instance);
    void handleBoamCommits();
    // Steps 1 and 2 of a set: false (with `rc`) when nothing is to be sent.
    bool boamReady(OrlReturnT* rc);
    // Polls the answer mailbox 100 times, 10 ms apart.
    OrlReturnT waitForAnswer(const std::string& dn, const std::string& attrName,
                             const OrlMoAttributeValueContainer_3* value);

    // The layouts by attribute id (VeskBoamOIValues.cc).
    int fillPowerPair(int attributeId, const OrlMoAttributeValueContainer_3* value,
                      VESK::Messages::ConfMsg_setAttributeReq* message, const std::string& dn,
                      const std::string& attrName);
    int fillUplinkLoad(const OrlMoAttributeValueContainer_3* value,
                       VESK::Messages::ConfMsg_setAttributeReq* message, const std::string& dn,
                       const std::string& attrName);
    short noiseFloorOf(const std::string& dn);

    std::list<int> _touchedClasses;
    bool _boamAttributeAccepted = false;
    int32_t _boamTxId = 0;
    bool _boamConfigured = false;
    DBObject* _boMapping = nullptr;
    int32_t _dbHandle = 0;
    BoamTrAttributes trAttributes;
    int32_t boamTxIdCopy = 255;
    uint32_t tibLocalTxHandle = 0;
};

}  // namespace TibVeskOI

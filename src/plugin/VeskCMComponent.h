// The agent's host component "VESKCMSAcomponent": the records it registers with the host (what
// it provides, what it depends on, how it starts and stops) and the order of its start and stop.
// All request logic lives behind the entry points in VeskMoImpl.
#pragma once

#include <cstdint>

#include "front/VeskMoImpl.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

class VeskSwM;
class VeskBrM;

// Set by the agent's start and never cleared; null before it.
extern OrlMgmtSpiSession_1* s_mgmt;
extern VeskSwM* swm;
extern VeskBrM* brm;

namespace TibVeskCM {

class VeskCmEventProducer;

class VeskCMComponent {
  public:
    // Made by VeskMoImpl::orlLCMinit, destroyed at library unload (which deletes the producer).
    static VeskCMComponent* instance();

    // Fills the records; asks nothing of the host.
    VeskCMComponent();
    virtual ~VeskCMComponent();
    VeskCMComponent(const VeskCMComponent&) = delete;
    VeskCMComponent& operator=(const VeskCMComponent&) = delete;

    // The host's start: fetches the host interfaces, registers the session callbacks, starts the
    // event producer, the software and backup machines, the model repository and the object
    // implementer component. A refused fetch is returned; the component counts as started once
    // the model repositories are fetched, so a later refusal still leaves it started. A start
    // after that only warns.
    OrlReturnT start(OrlStateChangeReason reason);
    // The host's stop: unregisters the session callbacks and terminates the event producer.
    // Leaves the started flag, the machines and the object implementer component as they are.
    OrlReturnT stop(OrlStateChangeReason reason);

    // The component record, inside this object.
    OrlMgmtSpiComponent* getComponent() { return &_component; }
    bool isStarted() const { return _started; }
    VeskCmEventProducer* eventProducer() const { return _eventProducer; }

  private:
    void fillProvidedRecords();

    VeskMoImpl _moImpl;  // never used: every entry point goes to VeskMoImpl::instance()
    uint64_t _sessionCallbackRegistration;
    bool _started;
    OrlMgmtSpiComponent _component;
    OrlOamSpiManagedObject_3 _managedObject;
    OrlOamSpiRegisterObjectImplementer_2 _registerObjectImplementer;
    OrlOamSpiTransactionalResource_2 _txResource;
    OrlMgmtSpiInterface_1* _required[5];
    OrlMgmtSpiInterface_1* _provided[4];
    VeskCmEventProducer* _eventProducer;  // owned; made by start
    OrlMgmtSpiSessionCallback_1 _sessionCreated;
    OrlMgmtSpiSessionCallback_1 _sessionDestroyed;
};

}  // namespace TibVeskCM

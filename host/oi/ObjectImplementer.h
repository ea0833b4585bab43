// An object implementer of the host's own: a component with a managed object record and a
// transactional resource record that the agent calls for the changes of one dn or one MO path.
// It answers each change as its behaviour says and keeps what it received, so that tests and
// the operator can see it; a refusal also attaches one operator message to the request
// ("vesk-host-oi-N refused OPERATION of DN [ATTR]: CODE"). The records are plain C; each
// implementer sits in one of a fixed number of slots whose functions lead back to it.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

namespace vesk {
namespace host {
namespace oi {

// A dn implementer registers managed object version "1" and receives values in the version 3
// form; a class implementer (by MO path) registers version "3" and receives the version 1 form.
enum class Scope { kDn, kClass };

// What the implementer answers to setMoAttribute, createMo and deleteMo.
struct Behaviour {
    enum Kind { kOk, kTryAgain, kFail } kind = kOk;
    int tryAgainCount = 0;             // kTryAgain: OrlTryAgain this many times, then OrlOk
    OrlReturnT failCode = OrlFailure;  // kFail: answered every time

    // "ok", "tryagain N", "fail CODE".
    std::string text() const;
};

// Reads "ok", "tryagain N" (N >= 0) or "fail CODE" (a non-zero number or a code name such as
// OrlValidationFailed). False with one line in `error` otherwise.
bool parseBehaviour(const std::vector<std::string>& words, Behaviour* behaviour,
                    std::string* error);

// One call the implementer received.
struct Received {
    std::string operation;  // "setMoAttribute", "createMo", "deleteMo"
    OrlTxHandleT tx = 0;
    std::string dn;         // createMo: the new MO's dn (parent, class and key)
    std::string attribute;  // setMoAttribute: the attribute; otherwise empty
    std::string value;      // the value in the command line's syntax; createMo: its attributes
    OrlReturnT answer = OrlOk;
};

// Numbers of the transactional resource calls received.
struct TxCounts {
    int join = 0;
    int prepare = 0;
    int commit = 0;
    int abort = 0;
    int finish = 0;
    int validate = 0;
};

class ObjectImplementer {
  public:
    // The most implementers that may live at a time (the number of slots).
    static constexpr int kSlots = 16;

    // Takes a free slot; `id` is 1 + the slot. Check slotFree() first: constructing with no slot
    // free is a logic error.
    ObjectImplementer(Scope scope, const std::string& name, const Behaviour& behaviour);
    ~ObjectImplementer();
    ObjectImplementer(const ObjectImplementer&) = delete;
    ObjectImplementer& operator=(const ObjectImplementer&) = delete;

    static bool slotFree();

    int id() const { return _slot + 1; }
    Scope scope() const { return _scope; }
    const std::string& name() const { return _name; }
    Behaviour behaviour() const;
    // Replaces the behaviour; a tryagain count starts again.
    void setBehaviour(const Behaviour& behaviour);

    // The component to register with the host, and the triples of its two records.
    OrlMgmtSpiComponent* component() { return &_component; }
    OrlMgmtSpiInterface_1 moInterface() const { return _managedObject.header; }
    OrlMgmtSpiInterface_1 txInterface() const { return _resource.header; }
    OrlOamSpiManagedObject_3* managedObject() { return &_managedObject; }
    OrlOamSpiTransactionalResource_2* resource() { return &_resource; }

    std::vector<Received> received() const;
    // The number of setMoAttribute, createMo and deleteMo calls received.
    size_t calls() const;
    TxCounts txCounts() const;

    // Called from the records' functions, on any thread.
    OrlReturnT onSet(OrlTxHandleT tx, const char* dn, const char* attribute, const void* value);
    OrlReturnT onCreate(OrlTxHandleT tx, const char* parentDn, const char* className,
                        const char* keyName, const char* keyValue,
                        OrlMoNamedAttributeValueContainer_3** attributes);
    OrlReturnT onDelete(OrlTxHandleT tx, const char* dn);
    OrlReturnT onTx(int TxCounts::*counter);

  private:
    // The answer the behaviour gives now; counts a tryagain. Called with _mutex held.
    OrlReturnT nextAnswer();
    OrlReturnT record(Received received);

    const int _slot;
    const Scope _scope;
    const std::string _name;
    const std::string _componentName;
    mutable std::mutex _mutex;
    Behaviour _behaviour;
    int _tryAgainsLeft = 0;
    std::vector<Received> _received;
    TxCounts _txCounts;
    OrlOamSpiManagedObject_3 _managedObject;
    OrlOamSpiTransactionalResource_2 _resource;
    void* _provided[3];
    void* _dependencies[1];
    OrlMgmtSpiComponent _component;
};

// A value container as text in the command line's syntax, without the model: numbers by the
// slot's width, enumerations by number, strings quoted when needed, lists "[a, b]", structs
// "{m=v, ...}", no value "-". `version1` reads enumerations as the older 16-bit form.
std::string containerText(const OrlMoAttributeValueContainer_3* container, bool version1);

}  // namespace oi
}  // namespace host
}  // namespace vesk

#include "host/oi/ObjectImplementer.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "host/ThreadContext.h"
#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace oi {
namespace {

std::array<std::atomic<ObjectImplementer*>, ObjectImplementer::kSlots> gSlots{};

ObjectImplementer* at(int slot) {
    return gSlots[slot].load();
}

// The records' functions of slot N lead to the implementer in that slot.
template <int N>
struct Entry {
    static OrlReturnT set(OrlTxHandleT tx, const char* dn, const char* attribute,
                          const OrlMoAttributeValueContainer_3* value) {
        ObjectImplementer* oi = at(N);
        return oi == nullptr ? OrlNotExist : oi->onSet(tx, dn, attribute, value);
    }
    static OrlReturnT create(OrlTxHandleT tx, const char* parentDn, const char* className,
                             const char* keyName, const char* keyValue,
                             OrlMoNamedAttributeValueContainer_3** attributes) {
        ObjectImplementer* oi = at(N);
        return oi == nullptr ? OrlNotExist
                             : oi->onCreate(tx, parentDn, className, keyName, keyValue, attributes);
    }
    static OrlReturnT remove(OrlTxHandleT tx, const char* dn) {
        ObjectImplementer* oi = at(N);
        return oi == nullptr ? OrlNotExist : oi->onDelete(tx, dn);
    }
    template <int TxCounts::*Counter>
    static OrlReturnT tx(OrlTxHandleT) {
        ObjectImplementer* oi = at(N);
        return oi == nullptr ? OrlNotExist : oi->onTx(Counter);
    }
};

OrlReturnT startOrStop(OrlStateChangeReason) {
    return OrlOk;
}

struct SlotFunctions {
    decltype(OrlOamSpiManagedObject_3::setMoAttribute) set;
    decltype(OrlOamSpiManagedObject_3::createMo) create;
    decltype(OrlOamSpiManagedObject_3::deleteMo) remove;
    decltype(OrlOamSpiTransactionalResource_2::join) join, prepare, commit, abort, finish, validate;
};

template <int N>
SlotFunctions functionsOf() {
    using E = Entry<N>;
    return {E::set,
            E::create,
            E::remove,
            E::template tx<&TxCounts::join>,
            E::template tx<&TxCounts::prepare>,
            E::template tx<&TxCounts::commit>,
            E::template tx<&TxCounts::abort>,
            E::template tx<&TxCounts::finish>,
            E::template tx<&TxCounts::validate>};
}

template <size_t... N>
std::array<SlotFunctions, sizeof...(N)> allFunctions(std::index_sequence<N...>) {
    return {functionsOf<static_cast<int>(N)>()...};
}

const SlotFunctions& functions(int slot) {
    static const auto table = allFunctions(std::make_index_sequence<ObjectImplementer::kSlots>());
    return table[slot];
}

int claimSlot(ObjectImplementer* oi) {
    for (int i = 0; i < ObjectImplementer::kSlots; ++i) {
        ObjectImplementer* expected = nullptr;
        if (gSlots[i].compare_exchange_strong(expected, oi)) {
            return i;
        }
    }
    throw std::logic_error("no free object implementer slot");
}

bool implementerNeedsQuotes(const std::string& text) {
    return text.empty() || text.find_first_of(" \t\",;[]{}=\\") != std::string::npos;
}

std::string implementerQuoted(const std::string& text) {
    if (!implementerNeedsQuotes(text)) {
        return text;
    }
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    return out + "\"";
}

std::string slotText(int32_t type, const OrlMoAttributeValue_3& slot, bool version1) {
    switch (type) {
        case OrlOamSpiMoAttributeType_3_INT8:
            return std::to_string(slot.i8);
        case OrlOamSpiMoAttributeType_3_INT16:
            return std::to_string(slot.i16);
        case OrlOamSpiMoAttributeType_3_INT32:
            return std::to_string(slot.i32);
        case OrlOamSpiMoAttributeType_3_INT64:
            return std::to_string(slot.i64);
        case OrlOamSpiMoAttributeType_3_UINT8:
            return std::to_string(slot.u8);
        case OrlOamSpiMoAttributeType_3_UINT16:
            return std::to_string(slot.u16);
        case OrlOamSpiMoAttributeType_3_UINT32:
            return std::to_string(slot.u32);
        case OrlOamSpiMoAttributeType_3_UINT64:
            return std::to_string(slot.u64);
        case OrlOamSpiMoAttributeType_3_BOOL:
            return slot.theBool ? "true" : "false";
        case OrlOamSpiMoAttributeType_3_ENUM:
            return std::to_string(version1 ? static_cast<int64_t>(slot.i16) : slot.theEnum);
        case OrlOamSpiMoAttributeType_3_DECIMAL64:
            return std::to_string(slot.decimal64);
        case OrlOamSpiMoAttributeType_3_STRING:
        case OrlOamSpiMoAttributeType_3_REFERENCE:
            return slot.theString == nullptr ? "-" : implementerQuoted(slot.theString);
        case OrlOamSpiMoAttributeType_3_STRUCT: {
            std::string text = "{";
            for (auto* m = slot.structMember; m != nullptr; m = m->nextMember) {
                text += (text.size() > 1 ? ", " : "") +
                        implementerQuoted(m->memberName ? m->memberName : "") + "=" +
                        containerText(m->memberValue, version1);
            }
            return text + "}";
        }
        default:
            return "?" + std::to_string(type);
    }
}

}  // namespace

std::string containerText(const OrlMoAttributeValueContainer_3* container, bool version1) {
    if (container == nullptr || container->nrOfValues == 0 || container->values == nullptr) {
        return "-";
    }
    if (container->nrOfValues == 1) {
        return slotText(container->type, container->values[0], version1);
    }
    std::string text = "[";
    for (uint32_t i = 0; i < container->nrOfValues; ++i) {
        text += (i > 0 ? ", " : "") + slotText(container->type, container->values[i], version1);
    }
    return text + "]";
}

std::string Behaviour::text() const {
    switch (kind) {
        case kTryAgain:
            return "tryagain " + std::to_string(tryAgainCount);
        case kFail:
            return "fail " + cli::returnCodeName(failCode);
        default:
            return "ok";
    }
}

bool parseBehaviour(const std::vector<std::string>& words, Behaviour* behaviour,
                    std::string* error) {
    Behaviour parsed;
    char* end = nullptr;
    long number = words.size() == 2 ? std::strtol(words[1].c_str(), &end, 10) : 0;
    bool numeric = end != nullptr && end != words[1].c_str() && *end == '\0';
    if (words.size() == 1 && words[0] == "ok") {
        parsed.kind = Behaviour::kOk;
    } else if (words.size() == 2 && words[0] == "tryagain" && numeric && number >= 0) {
        parsed.kind = Behaviour::kTryAgain;
        parsed.tryAgainCount = static_cast<int>(number);
    } else if (words.size() == 2 && words[0] == "fail") {
        parsed.kind = Behaviour::kFail;
        if (numeric) {
            parsed.failCode = static_cast<OrlReturnT>(number);
        } else {
            for (OrlReturnT code : {OrlTryAgain, OrlFailure, OrlNotExist, OrlAlreadyJoined,
                                    OrlValidationFailed, OrlSendFailed}) {
                if (cli::returnCodeName(code) == words[1]) {
                    parsed.failCode = code;
                    numeric = true;
                }
            }
        }
        if (!numeric || parsed.failCode == OrlOk) {
            *error = "fail takes a non-zero code, a number or a name such as OrlFailure";
            return false;
        }
    } else {
        *error = "a behaviour is ok, tryagain N or fail CODE";
        return false;
    }
    *behaviour = parsed;
    return true;
}

ObjectImplementer::ObjectImplementer(Scope scope, const std::string& name,
                                     const Behaviour& behaviour)
    : _slot(claimSlot(this)),
      _scope(scope),
      _name(name),
      _componentName("vesk-host-oi-" + std::to_string(_slot + 1)),
      _behaviour(behaviour),
      _tryAgainsLeft(behaviour.tryAgainCount) {
    const SlotFunctions& f = functions(_slot);
    _managedObject = OrlOamSpiManagedObject_3{};
    _managedObject.header = {_componentName.c_str(), "OrlOamSpiManagedObject",
                             scope == Scope::kDn ? "1" : "3"};
    _managedObject.setMoAttribute = f.set;
    _managedObject.createMo = f.create;
    _managedObject.deleteMo = f.remove;
    _resource = OrlOamSpiTransactionalResource_2{
        {_componentName.c_str(), "OrlOamSpiTransactionalResource", "2"},
        f.join,
        f.prepare,
        f.commit,
        f.abort,
        f.finish,
        f.validate};
    _provided[0] = &_managedObject;
    _provided[1] = &_resource;
    _provided[2] = nullptr;
    _dependencies[0] = nullptr;
    _component = OrlMgmtSpiComponent{_componentName.c_str(),
                                     "OrlMgmtSpiComponent",
                                     "1",
                                     reinterpret_cast<OrlMgmtSpiInterface_1**>(_provided),
                                     reinterpret_cast<OrlMgmtSpiInterface_1**>(_dependencies),
                                     startOrStop,
                                     startOrStop,
                                     nullptr};
}

ObjectImplementer::~ObjectImplementer() {
    gSlots[_slot].store(nullptr);
}

bool ObjectImplementer::slotFree() {
    for (const auto& slot : gSlots) {
        if (slot.load() == nullptr) {
            return true;
        }
    }
    return false;
}

Behaviour ObjectImplementer::behaviour() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _behaviour;
}

void ObjectImplementer::setBehaviour(const Behaviour& behaviour) {
    std::lock_guard<std::mutex> lock(_mutex);
    _behaviour = behaviour;
    _tryAgainsLeft = behaviour.tryAgainCount;
}

std::vector<Received> ObjectImplementer::received() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _received;
}

size_t ObjectImplementer::calls() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _received.size();
}

TxCounts ObjectImplementer::txCounts() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _txCounts;
}

OrlReturnT ObjectImplementer::nextAnswer() {
    switch (_behaviour.kind) {
        case Behaviour::kTryAgain:
            if (_tryAgainsLeft > 0) {
                --_tryAgainsLeft;
                return OrlTryAgain;
            }
            return OrlOk;
        case Behaviour::kFail:
            return _behaviour.failCode;
        default:
            return OrlOk;
    }
}

OrlReturnT ObjectImplementer::record(Received received) {
    std::string refusal;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        received.answer = nextAnswer();
        if (received.answer != OrlOk && received.answer != OrlTryAgain) {
            refusal = _componentName + " refused " + received.operation + " of " + received.dn +
                      (received.attribute.empty() ? "" : " " + received.attribute) + ": " +
                      cli::returnCodeName(received.answer);
        }
        _received.push_back(received);
    }
    // A refusal tells the operator why, on the request's thread, as a rule would.
    if (!refusal.empty()) {
        ThreadContext::addMessage(1, refusal.c_str());
    }
    return received.answer;
}

OrlReturnT ObjectImplementer::onSet(OrlTxHandleT tx, const char* dn, const char* attribute,
                                    const void* value) {
    // The class form arrives as version 1: the same layout, enumerations in 16 bits.
    return record(Received{"setMoAttribute", tx, dn ? dn : "", attribute ? attribute : "",
                           containerText(static_cast<const OrlMoAttributeValueContainer_3*>(value),
                                         _scope == Scope::kClass),
                           OrlOk});
}

OrlReturnT ObjectImplementer::onCreate(OrlTxHandleT tx, const char* parentDn, const char* className,
                                       const char* keyName, const char* keyValue,
                                       OrlMoNamedAttributeValueContainer_3** attributes) {
    std::string dn = std::string(parentDn ? parentDn : "") + "," + (className ? className : "") +
                     "=" + (keyValue ? keyValue : "");
    std::string values;
    for (size_t i = 0; attributes != nullptr && attributes[i] != nullptr; ++i) {
        values +=
            (values.empty() ? "" : ", ") +
            implementerQuoted(attributes[i]->attributeName ? attributes[i]->attributeName : "") +
            "=" + containerText(&attributes[i]->attributeValue, false);
    }
    (void)keyName;
    return record(Received{"createMo", tx, dn, "", values, OrlOk});
}

OrlReturnT ObjectImplementer::onDelete(OrlTxHandleT tx, const char* dn) {
    return record(Received{"deleteMo", tx, dn ? dn : "", "", "", OrlOk});
}

OrlReturnT ObjectImplementer::onTx(int TxCounts::*counter) {
    std::lock_guard<std::mutex> lock(_mutex);
    ++(_txCounts.*counter);
    return OrlOk;
}

}  // namespace oi
}  // namespace host
}  // namespace vesk

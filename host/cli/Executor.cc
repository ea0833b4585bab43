#include "host/cli/Executor.h"

#include <cstdlib>

#include "host/cli/ValueParser.h"

namespace vesk {
namespace host {
namespace cli {

namespace {

// The dn of a child the iterator named: by its id, by its rdn or in full.
std::string childDn(const std::string& parent, const std::string& className,
                    const std::string& named) {
    if (parent.empty()) {
        return named.find('=') != std::string::npos ? named : className + "=" + named;
    }
    if (named.compare(0, parent.size() + 1, parent + ",") == 0) {
        return named;
    }
    if (named.find('=') != std::string::npos) {
        return parent + "," + named;
    }
    return parent + "," + className + "=" + named;
}

}  // namespace

Executor::Executor(Host& host, const ModelView& model)
    : _host(host), _model(model), _formatter(model) {}

void Executor::begin(Answer* answer) {
    if (_open) {
        answer->error = "transaction " + std::to_string(_tx) + " is already open";
        return;
    }
    OrlTxHandleT tx = 0;
    OrlReturnT code = _host.begin(&tx);
    answer->messages = _host.messages();
    if (code != OrlOk) {
        answer->refuse(code, "cannot begin a transaction");
        return;
    }
    answer->asked = true;
    _tx = tx;
    _open = true;
    answer->notes.push_back("transaction " + std::to_string(tx) + " open");
}

void Executor::commit(Answer* answer) {
    if (!_open) {
        answer->error = "no transaction is open";
        return;
    }
    _open = false;
    OrlReturnT code = _host.commit(_tx);
    answer->messages = _host.messages();
    if (code != OrlOk) {
        answer->refuse(code, "transaction " + std::to_string(_tx) + " did not commit");
        return;
    }
    answer->asked = true;
    answer->notes.push_back("transaction " + std::to_string(_tx) + " committed");
}

void Executor::abort(Answer* answer) {
    if (!_open) {
        answer->error = "no transaction is open";
        return;
    }
    _open = false;
    OrlReturnT code = _host.abort(_tx);
    answer->messages = _host.messages();
    answer->asked = true;
    answer->code = code;
    if (code != OrlOk) {
        answer->error = "transaction " + std::to_string(_tx) + " aborted with an error";
        return;
    }
    answer->notes.push_back("transaction " + std::to_string(_tx) + " aborted");
}

void Executor::run(Answer* answer, const Request& request) {
    if (_open) {
        answer->asked = true;
        answer->code = request(_tx, answer);
        answer->messages = _host.messages();
        return;
    }
    OrlTxHandleT tx = 0;
    OrlReturnT code = _host.begin(&tx);
    if (code != OrlOk) {
        answer->messages = _host.messages();
        answer->refuse(code, "cannot begin a transaction");
        return;
    }
    answer->asked = true;
    answer->code = request(tx, answer);
    answer->messages = _host.messages();
    if (answer->code != OrlOk) {
        _host.abort(tx);
        return;
    }
    code = _host.commit(tx);
    if (code != OrlOk) {
        std::vector<std::string> messages = _host.messages();
        answer->messages.insert(answer->messages.end(), messages.begin(), messages.end());
        answer->refuse(code, "transaction " + std::to_string(tx) + " did not commit");
    }
}

bool Executor::present(OrlTxHandleT tx, const std::string& dn, Answer* answer, OrlReturnT* code) {
    bool found = false;
    *code = _host.callAgent(&OrlOamSpiManagedObject_3::existsMo, tx, dn.c_str(), &found);
    if (*code != OrlOk) {
        answer->error = "cannot tell whether " + dn + " exists";
    } else if (!found) {
        answer->error = "no MO " + dn;
    }
    return *code == OrlOk && found;
}

void Executor::get(const std::string& dn, const std::vector<Id>& attributes, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        OrlReturnT code = OrlOk;
        if (!present(tx, dn, a, &code)) {
            return code;
        }
        return attributes.size() == 1 ? getOne(tx, dn, attributes[0], a)
                                      : getMany(tx, dn, attributes, a);
    });
}

void Executor::action(const std::string& dn, const std::string& name, Id output,
                      OrlMoNamedAttributeValueContainer_3** parameters, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        OrlReturnT code = OrlOk;
        if (!present(tx, dn, a, &code)) {
            return code;
        }
        // The agent fills the container and leaves `release` as it is given.
        OrlMoAttributeValueResult_3 result{nullptr, nullptr};
        code = _host.callAgent(&OrlOamSpiManagedObject_3::action, tx, dn.c_str(), name.c_str(),
                               parameters, &result);
        if (result.container != nullptr) {
            const OrlMoAttributeValueContainer_3* value = result.container;
            bool declared = output != kNone && _model.baseType(output) == value->type;
            a->data = Json::object();
            a->data[output != kNone ? _model.attributeName(output) : "result"] =
                _formatter.format(declared ? output : kNone, value);
            freeContainerContents(result.container);
            std::free(result.container);
        }
        if (code != OrlOk) {
            a->error = "action " + name + " of " + dn + " refused";
        }
        return code;
    });
}

OrlReturnT Executor::getOne(OrlTxHandleT tx, const std::string& dn, Id attribute, Answer* answer) {
    const std::string& name = _model.attributeName(attribute);
    OrlMoAttributeValueResult_3 result{nullptr, nullptr};
    OrlReturnT code = _host.callAgent(&OrlOamSpiManagedObject_3::getMoAttribute, tx, dn.c_str(),
                                      name.c_str(), &result);
    if (code == OrlOk) {
        answer->data = Json::object();
        answer->data[name] = _formatter.format(attribute, result.container);
    } else {
        answer->error = "cannot read " + name + " of " + dn;
    }
    if (result.release != nullptr) {
        result.release(result.container);
    }
    return code;
}

OrlReturnT Executor::getMany(OrlTxHandleT tx, const std::string& dn,
                             const std::vector<Id>& attributes, Answer* answer) {
    std::vector<const char*> names;
    for (Id attribute : attributes) {
        names.push_back(_model.attributeName(attribute).c_str());
    }
    names.push_back(nullptr);
    OrlMoAttributeValuesResult_3 result{nullptr, nullptr};
    OrlReturnT code = _host.callAgent(&OrlOamSpiManagedObject_3::getMoAttributes, tx, dn.c_str(),
                                      names.data(), &result);
    if (code == OrlOk && result.containers != nullptr) {
        answer->data = Json::object();
        bool ended = false;
        for (size_t i = 0; i < attributes.size(); ++i) {
            // The list is null-terminated; a short list leaves the rest without a value.
            ended = ended || result.containers[i] == nullptr;
            answer->data[names[i]] =
                _formatter.format(attributes[i], ended ? nullptr : result.containers[i]);
        }
    } else if (code == OrlOk) {
        code = OrlFailure;
        answer->error = "the agent returned no values for " + dn;
    } else {
        answer->error = "cannot read " + dn;
    }
    if (result.release != nullptr) {
        result.release(result.containers);
    }
    return code;
}

OrlReturnT Executor::children(OrlTxHandleT tx, const std::string& dn, const std::string& className,
                              std::vector<std::string>* out) {
    uint64_t iterator = 0;
    OrlReturnT code = _host.callAgent(&OrlOamSpiManagedObject_3::newMoIterator, tx, dn.c_str(),
                                      className.c_str(), &iterator);
    // Handle 0: nothing to walk.
    while (code == OrlOk && iterator != 0) {
        char* next = nullptr;
        code = _host.callAgent(&OrlOamSpiManagedObject_3::nextMo, iterator, &next);
        if (code != OrlOk || next == nullptr) {
            break;
        }
        out->push_back(childDn(dn, className, next));
    }
    if (iterator != 0) {
        _host.callAgent(&OrlOamSpiManagedObject_3::finalizeIterator, iterator);
    }
    return code;
}

std::vector<std::string> Executor::childDns(const std::string& parentDn,
                                            const std::string& className) {
    std::vector<std::string> dns;
    OrlTxHandleT tx = _tx;
    if (!_open && _host.begin(&tx) != OrlOk) {
        return dns;
    }
    children(tx, parentDn, className, &dns);
    if (!_open) {
        _host.abort(tx);
    }
    return dns;
}

void Executor::list(const std::string& dn, const std::string& className, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        OrlReturnT code = OrlOk;
        if (!present(tx, dn, a, &code)) {
            return code;
        }
        std::vector<std::string> dns;
        code = children(tx, dn, className, &dns);
        a->data = dns;
        if (code != OrlOk) {
            a->error = "cannot list " + className + " below " + dn;
        }
        return code;
    });
}

void Executor::set(const std::string& dn, const std::string& attribute,
                   const OrlMoAttributeValueContainer_3* value, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        OrlReturnT code = _host.callAgent(&OrlOamSpiManagedObject_3::setMoAttribute, tx, dn.c_str(),
                                          attribute.c_str(), value);
        if (code != OrlOk) {
            a->error = "cannot set " + attribute + " of " + dn;
        }
        return code;
    });
}

bool Executor::mayCreate(OrlTxHandleT tx, const std::string& parentDn, Id moc, Id parent,
                         const std::string& dn, Answer* answer, OrlReturnT* code) {
    if (!present(tx, parentDn, answer, code)) {
        answer->error += *code == OrlOk ? ": the parent must exist first" : "";
        return false;
    }
    bool found = false;
    *code = _host.callAgent(&OrlOamSpiManagedObject_3::existsMo, tx, dn.c_str(), &found);
    if (*code != OrlOk || found) {
        answer->error = found ? dn + " exists already" : "cannot tell whether " + dn + " exists";
        return false;
    }
    const std::string& className = _model.className(moc);
    const model::Containment& containment =
        _model.tables().containments[_model.schema().childContainment(parent, className)];
    uint64_t count = 0;
    *code = _host.callAgent(&OrlOamSpiManagedObject_3::countMoChildren, tx, parentDn.c_str(),
                            className.c_str(), &count);
    if (*code != OrlOk) {
        answer->error = "cannot count " + className + " below " + parentDn;
    } else if (count >= static_cast<uint64_t>(containment.max)) {
        answer->error = parentDn + " holds " + std::to_string(count) + " " + className +
                        " already, the most the model allows (max-elements " +
                        std::to_string(containment.max) + ")";
    }
    return answer->error.empty();
}

void Executor::create(const std::string& parentDn, Id moc, Id parent, const std::string& keyName,
                      const std::string& keyValue, OrlMoNamedAttributeValueContainer_3** attributes,
                      Answer* answer) {
    const std::string& className = _model.className(moc);
    std::string dn = parentDn + "," + className + "=" + keyValue;
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        OrlReturnT code = OrlOk;
        if (!mayCreate(tx, parentDn, moc, parent, dn, a, &code)) {
            return code;
        }
        code = _host.callAgent(&OrlOamSpiManagedObject_3::createMo, tx, parentDn.c_str(),
                               className.c_str(), keyName.c_str(), keyValue.c_str(), attributes);
        if (code != OrlOk) {
            a->error = "cannot create " + dn;
        } else {
            a->notes.push_back("created " + dn);
        }
        return code;
    });
}

OrlReturnT Executor::subtree(OrlTxHandleT tx, const std::string& dn, Id moc,
                             std::vector<std::pair<std::string, Id>>* out) {
    const model::ModelTables& tables = _model.tables();
    for (Id c = tables.mocs[moc].firstContainment; c != kNone; c = tables.containments[c].next) {
        const Id child = tables.containments[c].child;
        std::vector<std::string> dns;
        OrlReturnT code = children(tx, dn, tables.mocName(child), &dns);
        for (size_t i = 0; code == OrlOk && i < dns.size(); ++i) {
            code = subtree(tx, dns[i], child, out);
        }
        if (code != OrlOk) {
            return code;
        }
    }
    out->emplace_back(dn, moc);
    return OrlOk;
}

void Executor::remove(const std::string& dn, Id moc, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        std::vector<std::pair<std::string, Id>> order;
        OrlReturnT code = subtree(tx, dn, moc, &order);
        if (code != OrlOk) {
            a->error = "cannot walk the MOs below " + dn;
            return code;
        }
        code = _host.callAgent(&OrlOamSpiManagedObject_3::deleteMo, tx, dn.c_str());
        if (code != OrlOk) {
            a->error = "cannot delete " + dn;
            return code;
        }
        for (const auto& entry : order) {
            a->notes.push_back("deleted " + entry.first);
        }
        return code;
    });
}

void Executor::exists(const std::string& dn, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        bool found = false;
        OrlReturnT code =
            _host.callAgent(&OrlOamSpiManagedObject_3::existsMo, tx, dn.c_str(), &found);
        if (code == OrlOk) {
            a->data = found;
        } else {
            a->error = "cannot tell whether " + dn + " exists";
        }
        return code;
    });
}

void Executor::count(const std::string& dn, const std::string& className, Answer* answer) {
    run(answer, [&](OrlTxHandleT tx, Answer* a) {
        uint64_t children = 0;
        OrlReturnT code = OrlOk;
        if (!present(tx, dn, a, &code)) {
            return code;
        }
        code = _host.callAgent(&OrlOamSpiManagedObject_3::countMoChildren, tx, dn.c_str(),
                               className.c_str(), &children);
        if (code == OrlOk) {
            a->data = children;
        } else {
            a->error = "cannot count " + className + " below " + dn;
        }
        return code;
    });
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

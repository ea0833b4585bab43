// Carries out the command line's requests on the agent: the transaction commands through the
// host's coordinator, and the reads through the agent's managed object record
// ("OrlOamSpiManagedObject" version "3"). A request runs in the open transaction when `begin`
// opened one, otherwise in a transaction of its own: begun, then committed when the request
// succeeded and aborted when it did not. All calls come from the thread that owns the
// executor, the one the operator's session is bound to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/Host.h"
#include "host/cli/Answer.h"
#include "host/cli/ModelView.h"

namespace vesk {
namespace host {
namespace cli {

class Executor {
  public:
    // `host` (started, with the agent loaded) and `model` must outlive the executor.
    Executor(Host& host, const ModelView& model);

    bool inTransaction() const { return _open; }
    OrlTxHandleT transaction() const { return _tx; }

    // The transaction commands. Each refuses with a line when there is already one open
    // (begin) or none (commit, abort); the coordinator's answer otherwise.
    void begin(Answer* answer);
    void commit(Answer* answer);
    void abort(Answer* answer);

    // get, list and count first ask whether `dn` exists, and refuse with "no MO DN" when not
    // (the agent answers those reads of a missing MO as empty).
    // Reads `attributes` (of the class of `dn`) into an object of name to value.
    void get(const std::string& dn, const std::vector<Id>& attributes, Answer* answer);
    // The dns of the children of class `className` of `dn`, in the agent's order (the agent
    // names them by id; they are shown as full dns).
    void list(const std::string& dn, const std::string& className, Answer* answer);
    void exists(const std::string& dn, Answer* answer);
    void count(const std::string& dn, const std::string& className, Answer* answer);

    // The writes. The values were checked against the model and are the caller's; the agent
    // copies what it keeps.
    void set(const std::string& dn, const std::string& attribute,
             const OrlMoAttributeValueContainer_3* value, Answer* answer);
    // Creates an MO of class `moc` below `parentDn` (of class `parent`); `attributes` is
    // null-terminated. Refused before the agent's createMo, with the reason, when the parent does
    // not exist, the MO exists already, or the parent holds as many MOs of the class as the
    // model allows.
    void create(const std::string& parentDn, Id moc, Id parent, const std::string& keyName,
                const std::string& keyValue, OrlMoNamedAttributeValueContainer_3** attributes,
                Answer* answer);
    // Deletes `dn` (of class `moc`) with one call of the agent; the station takes the MOs below
    // it along. The answer names every MO that went, children first, as walked just before.
    void remove(const std::string& dn, Id moc, Answer* answer);

    // Runs the action `name` on `dn` with `parameters` (null-terminated). Refused with "no MO DN"
    // before the agent is asked when `dn` does not exist. A result value is shown under the
    // name of `output` (the action's declared result; "result" when kNone), in the model's
    // terms when its type is the declared one.
    void action(const std::string& dn, const std::string& name, Id output,
                OrlMoNamedAttributeValueContainer_3** parameters, Answer* answer);

    // The dns of the children of class `className` of `parentDn` ("" for MOs of the root
    // class), read in the open transaction or in one of their own that is then aborted; empty
    // when the agent cannot tell. For completion: no answer, no messages.
    std::vector<std::string> childDns(const std::string& parentDn, const std::string& className);

    // A request on the agent: gets a transaction handle, fills `answer` and returns the agent's
    // code. Runs as described above; the operator messages of the request are collected.
    using Request = std::function<OrlReturnT(OrlTxHandleT tx, Answer* answer)>;
    void run(Answer* answer, const Request& request);

  private:
    // Whether `dn` exists; when not, the reason is in the answer and `code` the agent's answer.
    bool present(OrlTxHandleT tx, const std::string& dn, Answer* answer, OrlReturnT* code);
    // Whether the MO `dn` of `moc` may be created below `parentDn`; see create.
    bool mayCreate(OrlTxHandleT tx, const std::string& parentDn, Id moc, Id parent,
                   const std::string& dn, Answer* answer, OrlReturnT* code);
    // Appends the dns of the children of class `className` of `dn`, in the agent's order.
    OrlReturnT children(OrlTxHandleT tx, const std::string& dn, const std::string& className,
                        std::vector<std::string>* out);
    // Appends the subtree of `dn` (of class `moc`), every MO after the MOs below it.
    OrlReturnT subtree(OrlTxHandleT tx, const std::string& dn, Id moc,
                       std::vector<std::pair<std::string, Id>>* out);
    OrlReturnT getOne(OrlTxHandleT tx, const std::string& dn, Id attribute, Answer* answer);
    OrlReturnT getMany(OrlTxHandleT tx, const std::string& dn, const std::vector<Id>& attributes,
                       Answer* answer);

    Host& _host;
    const ModelView& _model;
    ValueFormatter _formatter;
    OrlTxHandleT _tx = 0;
    bool _open = false;
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

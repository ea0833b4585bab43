// One answer of the command line: the command, whether the agent (or the host's transaction
// coordinator) was asked and what it returned, the values in the model's terms, the operator
// messages attached during the request, and one line saying why when the command failed.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/cli/ValueFormatter.h"
#include "platform/orl/OrlTypes.h"

namespace vesk {
namespace host {
namespace cli {

struct Answer {
    std::string command;            // the command word
    std::vector<std::string> args;  // its arguments as typed
    bool asked = false;             // `code` is an answer of the agent or the coordinator
    OrlReturnT code = OrlOk;
    std::string error;                  // why the command failed; empty on success
    Json data;                          // the values; null when the command has none
    std::vector<std::string> notes;     // lines of the host itself ("transaction 3 open")
    std::vector<std::string> messages;  // operator messages of the request
    std::vector<std::string> reasons;   // warning and error lines logged while it ran

    bool failed() const { return !error.empty() || (asked && code != OrlOk); }
    // Records a refusal of the agent or the coordinator.
    void refuse(OrlReturnT answer, const std::string& why) {
        asked = true;
        code = answer;
        error = why;
    }
};

// "OrlOk", "OrlNotExist", ... for the named codes; "OrlReturn(-5)" for the others.
std::string returnCodeName(OrlReturnT code);

// The answer for people: "<code>: <why>" on a refusal of the agent, "error: <why>" on another
// failure; on success the code (when asked), then the notes and the values, one per line; then
// "reason: " lines and "message: " lines. Bytes that are not UTF-8, and control characters,
// are shown as "\xHH".
void writeText(const Answer& answer, std::ostream& out);
// The answer as one JSON object: command, args, code and rc (when asked), ok, error, result,
// notes, messages, reasons.
Json toJson(const Answer& answer);
// One line of JSON; bytes of its strings that are not UTF-8 are written as "\xHH".
std::string dumpJson(const Json& json);

}  // namespace cli
}  // namespace host
}  // namespace vesk

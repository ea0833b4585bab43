#include "host/cli/Answer.h"

#include "host/cli/Utf8Text.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

// A value on a line of its own: a plain string as it is, anything else as renderText has it.
std::string line(const Json& value) {
    return value.is_string() ? escapeBytes(value.get<std::string>(), true) : renderText(value);
}

// A host or agent text on a line of its own.
std::string shown(const std::string& text) {
    return escapeBytes(text, true);
}

// `json` with every string (and member name) made UTF-8.
Json escaped(const Json& json) {
    if (json.is_string()) {
        return escapeBytes(json.get_ref<const std::string&>());
    }
    if (json.is_array()) {
        Json result = Json::array();
        for (const Json& element : json) {
            result.push_back(escaped(element));
        }
        return result;
    }
    if (json.is_object()) {
        Json result = Json::object();
        for (auto it = json.begin(); it != json.end(); ++it) {
            result[escapeBytes(it.key())] = escaped(*it);
        }
        return result;
    }
    return json;
}

// The values of an answer, one line each: objects as "name: value", arrays one element a line,
// anything else on its own.
void writeData(const Json& data, std::ostream& out) {
    if (data.is_null()) {
        return;
    }
    if (data.is_object()) {
        for (auto it = data.begin(); it != data.end(); ++it) {
            out << shown(it.key()) << ": " << renderText(*it) << "\n";
        }
    } else if (data.is_array()) {
        for (const Json& element : data) {
            out << line(element) << "\n";
        }
    } else {
        out << line(data) << "\n";
    }
}

}  // namespace

std::string returnCodeName(OrlReturnT code) {
    switch (code) {
        case OrlOk:
            return "OrlOk";
        case OrlTryAgain:
            return "OrlTryAgain";
        case OrlFailure:
            return "OrlFailure";
        case OrlNotExist:
            return "OrlNotExist";
        case OrlAlreadyJoined:
            return "OrlAlreadyJoined";
        case OrlValidationFailed:
            return "OrlValidationFailed";
        case OrlSendFailed:
            return "OrlSendFailed";
        default:
            return "OrlReturn(" + std::to_string(code) + ")";
    }
}

void writeText(const Answer& answer, std::ostream& out) {
    if (answer.failed()) {
        bool refused = answer.asked && answer.code != OrlOk;
        out << (refused ? returnCodeName(answer.code) : std::string("error")) << ": "
            << shown(answer.error) << "\n";
        // A refusal may still carry a value (an action's result).
        writeData(answer.data, out);
    } else {
        if (answer.asked) {
            out << returnCodeName(answer.code) << "\n";
        }
        for (const std::string& note : answer.notes) {
            out << shown(note) << "\n";
        }
        writeData(answer.data, out);
    }
    for (const std::string& reason : answer.reasons) {
        out << "reason: " << shown(reason) << "\n";
    }
    for (const std::string& message : answer.messages) {
        out << "message: " << shown(message) << "\n";
    }
    out.flush();
}

Json toJson(const Answer& answer) {
    Json json = Json::object();
    json["command"] = answer.command;
    json["args"] = answer.args;
    if (answer.asked) {
        json["code"] = returnCodeName(answer.code);
        json["rc"] = answer.code;
    }
    json["ok"] = !answer.failed();
    if (answer.failed()) {
        json["error"] = answer.error;
    }
    json["result"] = answer.data;
    json["notes"] = answer.notes;
    json["messages"] = answer.messages;
    json["reasons"] = answer.reasons;
    return json;
}

std::string dumpJson(const Json& json) {
    return escaped(json).dump();
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

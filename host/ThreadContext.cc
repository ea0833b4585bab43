#include "host/ThreadContext.h"

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace {

thread_local std::vector<std::string> t_messages;

}  // namespace

ThreadContext::ThreadContext() {
    _record.header =
        OrlMgmtSpiInterface_1{"OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2"};
    _record.addMessage = &ThreadContext::addMessage;
}

void ThreadContext::beginRequest() {
    t_messages.clear();
}

std::vector<std::string> ThreadContext::messages() {
    return t_messages;
}

OrlReturnT ThreadContext::addMessage(int32_t kind, const char* text) {
    if (text == nullptr) {
        return OrlFailure;
    }
    if (kind != 1) {
        VESK_WARNING("host: operator message of kind %d: %s", kind, text);
    }
    t_messages.emplace_back(text);
    return OrlOk;
}

}  // namespace host
}  // namespace vesk

// The context of the request that a host thread is serving: the operator messages that
// components attach to it, shown with the request's answer.
#pragma once

#include <string>
#include <vector>

#include "platform/orl/OrlMgmtSpi.h"

namespace vesk {
namespace host {

class ThreadContext {
  public:
    ThreadContext();
    ThreadContext(const ThreadContext&) = delete;
    ThreadContext& operator=(const ThreadContext&) = delete;

    // The service record "OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2".
    OrlMgmtSpiThreadContext_2* record() { return &_record; }

    // Starts a new request on the calling thread: forgets its earlier messages.
    static void beginRequest();
    // The messages attached on the calling thread since its last beginRequest, in order.
    static std::vector<std::string> messages();
    // Attaches `text` to the calling thread's request. OrlFailure for a null text.
    static OrlReturnT addMessage(int32_t kind, const char* text);

  private:
    OrlMgmtSpiThreadContext_2 _record;
};

}  // namespace host
}  // namespace vesk

// The protocol library reads each client's bytes with libssh's ssh_channel_read; this file puts
// its own ssh_channel_read in front (the program's definition comes first; the channels that
// clients open start a check each) and checks the chunk
// framing of base:1.1 sessions before the library parses it. The library in use crashes on some
// malformed chunk headers; here a bad header is a read error instead, so the library drops the
// session as it does for a broken connection.
#include "host/netconf/FramingGuard.h"

#include <dlfcn.h>
#include <libssh/libssh.h>
#include <libssh/server.h>

#include <map>
#include <mutex>
#include <string>

#include "platform/Logger.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

std::mutex g_lock;
std::map<const void*, FramingCheck> g_channels;  // guarded by g_lock

using Read = int (*)(ssh_channel, void*, uint32_t, int);
using Free = void (*)(ssh_channel);
using Accept = ssh_channel (*)(ssh_message);

template <typename F>
F next(const char* name) {
    void* found = dlvsym(RTLD_NEXT, name, "LIBSSH_4_5_0");
    return reinterpret_cast<F>(found != nullptr ? found : dlsym(RTLD_NEXT, name));
}

}  // namespace

bool FramingCheck::take(const char* bytes, size_t size) {
    for (size_t i = 0; i < size && _state != kBroken; ++i) {
        step(bytes[i]);
    }
    return _state != kBroken;
}

void FramingCheck::step(char c) {
    static const char kEnd[] = "]]>]]>";
    switch (_state) {
        case kHello:
            _text += c;
            if (_text.size() >= 6 && _text.compare(_text.size() - 6, 6, kEnd) == 0) {
                _state = _text.find("urn:ietf:params:netconf:base:1.1") != std::string::npos
                             ? kHeader
                             : kPlain;
                _text.clear();
            } else if (_text.size() > kMostHello) {
                _state = kBroken;
            }
            return;
        case kChunk:
            _state = --_left == 0 ? kHeader : kChunk;
            return;
        case kHeader:
            _text += c;
            header();
            return;
        default:
            return;
    }
}

// "\n#" then "#\n" (the end of a message of one or more chunks) or a size of 1 to 4294967295
// without leading zeros and "\n".
void FramingCheck::header() {
    const size_t n = _text.size();
    const char c = _text.back();
    bool ok = n == 1 ? c == '\n' : n == 2 ? c == '#' : true;
    if (ok && n >= 3 && _text[2] == '#') {
        // A message has at least one chunk.
        ok = _chunks > 0 && (n == 3 || (n == 4 && c == '\n'));
        if (ok && n == 4) {
            _text.clear();
            _chunks = 0;
        }
    } else if (ok && n >= 3) {
        if (c == '\n' && n > 3) {
            unsigned long long size = std::stoull(_text.substr(2, n - 3));
            ok = size <= 4294967295ULL;
            _left = size;
            ++_chunks;
            _state = kChunk;
            _text.clear();
        } else {
            ok = c >= '0' && c <= '9' && !(n == 3 && c == '0') && n <= 12;
        }
    }
    if (!ok) {
        _state = kBroken;
    }
}

bool framingGuardActive() {
    return next<Read>("ssh_channel_read") != nullptr;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

using vesk::host::netconf::FramingCheck;
using vesk::host::netconf::g_channels;
using vesk::host::netconf::g_lock;

extern "C" int ssh_channel_read(ssh_channel channel, void* dest, uint32_t count, int isStderr) {
    static const auto read =
        vesk::host::netconf::next<vesk::host::netconf::Read>("ssh_channel_read");
    int got = read(channel, dest, count, isStderr);
    if (got <= 0 || isStderr) {
        return got;
    }
    std::lock_guard<std::mutex> hold(g_lock);
    if (!g_channels[channel].take(static_cast<const char*>(dest), static_cast<size_t>(got))) {
        VESK_WARNING("NETCONF: a client broke the message framing; its session is closed");
        return SSH_ERROR;
    }
    return got;
}

// A channel that a client opens starts with a check of its own (libssh may reuse the memory of
// a channel it freed itself).
extern "C" ssh_channel ssh_message_channel_request_open_reply_accept(ssh_message message) {
    static const auto accept = vesk::host::netconf::next<vesk::host::netconf::Accept>(
        "ssh_message_channel_request_open_reply_accept");
    ssh_channel channel = accept(message);
    if (channel != nullptr) {
        std::lock_guard<std::mutex> hold(g_lock);
        g_channels[channel] = FramingCheck();
    }
    return channel;
}

extern "C" void ssh_channel_free(ssh_channel channel) {
    static const auto free =
        vesk::host::netconf::next<vesk::host::netconf::Free>("ssh_channel_free");
    {
        std::lock_guard<std::mutex> hold(g_lock);
        g_channels.erase(channel);
    }
    free(channel);
}

// The check of what a NETCONF client sends, before the protocol library reads it: the hello
// (up to its end mark), then, when the hello offered base:1.1, the chunk framing. A channel whose
// framing breaks reads as an error from then on. The program defines ssh_channel_read and
// ssh_channel_free (FramingGuard.cc), which keep one check per SSH channel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vesk {
namespace host {
namespace netconf {

class FramingCheck {
  public:
    // Takes the next bytes of the channel; false once the framing is broken.
    bool take(const char* bytes, size_t size);

  private:
    enum State { kHello, kPlain, kHeader, kChunk, kBroken };
    static constexpr size_t kMostHello = 1 << 20;

    void step(char c);
    void header();

    State _state = kHello;
    std::string _text;   // the hello, or the chunk header read so far
    uint64_t _left = 0;  // bytes of the chunk still to come
    int _chunks = 0;     // chunks of the message so far
};

// True when the program's ssh_channel_read is in front of libssh's (called by the server's start
// so that the guard is linked in).
bool framingGuardActive();

}  // namespace netconf
}  // namespace host
}  // namespace vesk

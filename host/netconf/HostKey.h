// The SSH host key of the NETCONF server: a private key file in the state directory, made on the
// first start and reused after, so that clients see the same station each time.
#pragma once

#include <string>

namespace vesk {
namespace host {
namespace netconf {

// The key's file name in the state directory.
constexpr char kHostKeyFile[] = "netconf-host-key";

// Makes an ECDSA P-256 key at `path` (readable by its owner only) unless a file is there. False,
// with the reason in `error`, if it cannot be made or written.
bool ensureHostKey(const std::string& path, std::string* error);

}  // namespace netconf
}  // namespace host
}  // namespace vesk

#include "host/netconf/HostKey.h"

#include <libssh/libssh.h>
#include <sys/stat.h>

#include <filesystem>

namespace vesk {
namespace host {
namespace netconf {

bool ensureHostKey(const std::string& path, std::string* error) {
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) {
        return true;
    }
    ssh_key key = nullptr;
    if (ssh_pki_generate(SSH_KEYTYPE_ECDSA_P256, 0, &key) != SSH_OK) {
        *error = "cannot make an SSH host key";
        return false;
    }
    // The key is written private to its owner from the start.
    mode_t previous = umask(077);
    int written = ssh_pki_export_privkey_file(key, nullptr, nullptr, nullptr, path.c_str());
    umask(previous);
    ssh_key_free(key);
    if (written != SSH_OK) {
        *error = "cannot write the SSH host key to " + path;
        return false;
    }
    return true;
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

// The users that may open NETCONF sessions, read from a file of "NAME:HASH" lines (blank lines
// and lines beginning with "#" are skipped), where HASH is a salted crypt(3) hash ("$6$..."
// SHA-512, "$y$..." yescrypt, ...). A clear-text password is refused when the file is read.
// Read once at start; verify may then be called from any thread.
#pragma once

#include <map>
#include <string>

namespace vesk {
namespace host {
namespace netconf {

class Users {
  public:
    // Reads `path`. False, with "PATH:LINE: reason" in `error`, for an unreadable file, a line
    // without ":", an empty name, a name given twice or a value that is not a salted hash.
    bool load(const std::string& path, std::string* error);
    size_t size() const { return _hashes.size(); }

    // Whether `user` is listed and `password` hashes to its entry.
    bool verify(const std::string& user, const std::string& password) const;

    // A new salted SHA-512 hash of `password` for an entry; empty if the system cannot make one.
    static std::string hash(const std::string& password);

  private:
    std::map<std::string, std::string> _hashes;
};

}  // namespace netconf
}  // namespace host
}  // namespace vesk

#include "host/netconf/Users.h"

#include <crypt.h>

#include <cstring>
#include <fstream>
#include <memory>

namespace vesk {
namespace host {
namespace netconf {

namespace {

// Whether `text` has the shape of a salted crypt(3) hash: "$ID$...$..." with an id and a salt.
bool saltedHash(const std::string& text) {
    if (text.size() < 8 || text[0] != '$') {
        return false;
    }
    size_t second = text.find('$', 1);
    return second != std::string::npos && second > 1 &&
           text.find('$', second + 1) != std::string::npos;
}

// crypt(3) of `password` with the setting (or whole hash) `setting`; empty on failure.
std::string cryptText(const std::string& password, const std::string& setting) {
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const char* result = crypt_r(password.c_str(), setting.c_str(), data.get());
    // A failed crypt answers null or a text beginning with "*".
    if (result == nullptr || result[0] == '*') {
        return std::string();
    }
    return result;
}

}  // namespace

bool Users::load(const std::string& path, std::string* error) {
    std::ifstream in(path);
    if (!in) {
        *error = "cannot read " + path;
        return false;
    }
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::string where = path + ":" + std::to_string(number) + ": ";
        if (line.empty() || line[0] == '#') {
            continue;
        }
        size_t colon = line.find(':');
        if (colon == std::string::npos || colon == 0) {
            *error = where + "an entry is NAME:HASH";
            return false;
        }
        std::string name = line.substr(0, colon);
        std::string hash = line.substr(colon + 1);
        if (!saltedHash(hash)) {
            *error = where + "the password of " + name +
                     " is not a salted hash (make one with vesk-host --netconf-hash-password)";
            return false;
        }
        if (!_hashes.emplace(name, hash).second) {
            *error = where + name + " is listed twice";
            return false;
        }
    }
    return true;
}

bool Users::verify(const std::string& user, const std::string& password) const {
    auto found = _hashes.find(user);
    if (found == _hashes.end()) {
        return false;
    }
    std::string computed = cryptText(password, found->second);
    return !computed.empty() && computed == found->second;
}

std::string Users::hash(const std::string& password) {
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (crypt_gensalt_rn("$6$", 0, nullptr, 0, setting, sizeof setting) == nullptr) {
        return std::string();
    }
    return cryptText(password, setting);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

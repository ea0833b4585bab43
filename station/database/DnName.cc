#include "station/database/DnName.h"

namespace vesk {
namespace db {

namespace {

bool isWellFormedPair(const std::string& dn, size_t begin, size_t end) {
    size_t eq = dn.find('=', begin);
    return eq != std::string::npos && eq < end && eq > begin && eq + 1 < end;
}

}  // namespace

bool isWellFormedDn(const std::string& dn) {
    if (dn.empty())
        return false;
    if (isShortForm(dn))
        return dn.front() != '=';
    size_t begin = 0;
    while (begin <= dn.size()) {
        size_t end = dn.find(',', begin);
        if (end == std::string::npos)
            end = dn.size();
        if (!isWellFormedPair(dn, begin, end))
            return false;
        begin = end + 1;
    }
    return true;
}

std::string keyOf(const std::string& fullDn) {
    size_t comma = fullDn.rfind(',');
    return comma == std::string::npos ? fullDn : fullDn.substr(comma + 1);
}

std::string parentOf(const std::string& fullDn) {
    size_t comma = fullDn.rfind(',');
    return comma == std::string::npos ? std::string() : fullDn.substr(0, comma);
}

std::string classOfKey(const std::string& key) {
    return key.substr(0, key.find('='));
}

std::string idOfKey(const std::string& key) {
    size_t eq = key.find('=');
    return eq == std::string::npos ? std::string() : key.substr(eq + 1);
}

std::string joinDn(const std::string& parentDn, const std::string& key) {
    return parentDn.empty() ? key : parentDn + "," + key;
}

}  // namespace db
}  // namespace vesk

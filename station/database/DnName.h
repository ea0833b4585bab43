// Distinguished names as the store sees them. A full dn is comma-joined "Class=id" pairs; a name
// with no "," is either the last pair of an object (its key) or a root-level name such as "OAM".
#pragma once

#include <string>

namespace vesk {
namespace db {

// True if `dn` is well formed: non-empty pieces between commas, each piece of a dn with several
// pieces holding "=" with a non-empty class before it and a non-empty id after it.
bool isWellFormedDn(const std::string& dn);

// The text after the last ",": the object's key ("BrmBackup=3:progressReport").
std::string keyOf(const std::string& fullDn);

// The text before the last ","; "" for a root-level object.
std::string parentOf(const std::string& fullDn);

// The class of a key: the text up to the first "=" ("BrmBackup" for "BrmBackup=3:progressReport"),
// or the whole key when it has none ("OAM").
std::string classOfKey(const std::string& key);

// The id of a key: the text after the first "=" ("3" for "BrmBackup=3"); "" when it has none.
std::string idOfKey(const std::string& key);

// `parentDn` + "," + `key`, or `key` alone at the root.
std::string joinDn(const std::string& parentDn, const std::string& key);

inline bool isShortForm(const std::string& dn) {
    return dn.find(',') == std::string::npos;
}

}  // namespace db
}  // namespace vesk

// Small reads and dn helpers shared by the files of the frequency change.
#pragma once

#include <list>
#include <string>

#include "platform/DBObject.h"

namespace TibVeskCM {
namespace frequency {

// The attribute `name` of `dn` as seen by `handle` (0: committed data), as a whole number
// whatever numeric alternative it is stored in. False when the object or attribute is absent or
// holds no number.
bool readInt(const std::string& dn, const std::string& name, int& out, int handle);
// The same for a text (string or char const* alternative).
bool readText(const std::string& dn, const std::string& name, std::string& out, int handle);
// The class of the last "Class=id" pair of `dn`.
std::string lastClass(const std::string& dn);
// `dn` without its last pair; "" when it has only one.
std::string parentOf(const std::string& dn);
// The text behind the last "=".
std::string lastId(const std::string& dn);
// The pieces of `text` between ";", empty ones left out.
std::list<std::string> splitList(const std::string& text);
// The full dn of an object copy: its parent, ",", its key.
std::string fullDn(const DBObject& object);
// Whether `text` holds one of the ten 5 GHz channel numbers of the high numbering.
bool holdsHighChannel(const std::string& text);

}  // namespace frequency
}  // namespace TibVeskCM

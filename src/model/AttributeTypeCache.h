// What the model answered about attribute types, kept so that a read asks it once: the class
// handle of the last dn looked up, and per class and attribute name the outcome of the walk over
// the class's attributes. The host loads its model once, before it offers its services, so an
// answer stays true until the agent is given new records (clear()). Any thread may call.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "platform/orl/OrlModelRepository.h"

namespace TibVeskCM {

class AttributeTypeCache {
  public:
    // Answers kept at most; all are forgotten when one more would pass it (names the model does
    // not know are kept too, and a client may ask any name).
    static constexpr size_t kLimit = 4096;

    // True, with *moc, when `dn` is the dn of the last rememberMoc().
    bool lastMoc(const std::string& dn, OrlOamSpiMocHandleT* moc) const;
    void rememberMoc(const std::string& dn, OrlOamSpiMocHandleT moc);

    // True when the walk for `name` in class `moc` is known: *typed tells whether it set a type,
    // *type holds that type then.
    bool find(OrlOamSpiMocHandleT moc, const std::string& name, bool* typed, int* type) const;
    void remember(OrlOamSpiMocHandleT moc, const std::string& name, bool typed, int type);

    void clear();

  private:
    struct Answer {
        bool typed;
        int type;
    };

    mutable std::mutex _mutex;
    std::string _lastDn;
    OrlOamSpiMocHandleT _lastMoc = 0;
    bool _hasLast = false;
    std::map<OrlOamSpiMocHandleT, std::map<std::string, Answer, std::less<>>> _answers;
    size_t _size = 0;
};

}  // namespace TibVeskCM

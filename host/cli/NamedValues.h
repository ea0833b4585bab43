// The initial attributes of a create, as the agent takes them: a null-terminated array of
// malloc'ed named containers, freed with all they hold when this goes.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "host/cli/ValueParser.h"

namespace vesk {
namespace host {
namespace cli {

class NamedValues {
  public:
    NamedValues() { _list.push_back(nullptr); }
    ~NamedValues() {
        for (OrlMoNamedAttributeValueContainer_3* named : _list) {
            if (named != nullptr) {
                freeContainerContents(&named->attributeValue);
                std::free(named->attributeName);
                std::free(named);
            }
        }
    }
    NamedValues(const NamedValues&) = delete;
    NamedValues& operator=(const NamedValues&) = delete;

    // Takes what `value` holds.
    void add(const std::string& name, ParsedValue* value) {
        auto* named = static_cast<OrlMoNamedAttributeValueContainer_3*>(
            std::calloc(1, sizeof(OrlMoNamedAttributeValueContainer_3)));
        named->attributeName = strdup(name.c_str());
        named->attributeValue = value->take();
        _list.back() = named;
        _list.push_back(nullptr);
    }
    OrlMoNamedAttributeValueContainer_3** list() { return _list.data(); }

  private:
    std::vector<OrlMoNamedAttributeValueContainer_3*> _list;  // null-terminated
};

}  // namespace cli
}  // namespace host
}  // namespace vesk

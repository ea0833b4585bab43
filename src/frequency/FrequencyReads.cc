#include "frequency/FrequencyReads.h"

#include <boost/variant/get.hpp>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "transaction/Band46Channels.h"

namespace TibVeskCM {
namespace frequency {
namespace {

struct IntVisitor : boost::static_visitor<bool> {
    explicit IntVisitor(int& out) : _out(out) {}
    template <typename T>
    bool operator()(const T& value) const {
        _out = static_cast<int>(value);
        return true;
    }
    bool operator()(const std::string&) const { return false; }
    bool operator()(const char* const&) const { return false; }
    int& _out;
};

}  // namespace

bool readInt(const std::string& dn, const std::string& name, int& out, int handle) {
    Attribute* attribute = IDatabase::getAttribute(dn, name, handle);
    if (attribute == nullptr || attribute->deleted) {
        return false;
    }
    int value = 0;
    if (!boost::apply_visitor(IntVisitor(value), attribute->value)) {
        VESK_ERROR("Toolbox::%s: Boost Bad Get!", __func__);
        return false;
    }
    out = value;
    return true;
}

bool readText(const std::string& dn, const std::string& name, std::string& out, int handle) {
    Attribute* attribute = IDatabase::getAttribute(dn, name, handle);
    if (attribute == nullptr || attribute->deleted) {
        return false;
    }
    if (const std::string* text = boost::get<std::string>(&attribute->value)) {
        out = *text;
        return true;
    }
    if (const char* const* text = boost::get<const char*>(&attribute->value)) {
        out = *text != nullptr ? *text : "";
        return true;
    }
    // A value of another kind counts as the empty text.
    VESK_ERROR("Toolbox::%s: Boost Bad Get!", __func__);
    out.clear();
    return true;
}

std::string lastClass(const std::string& dn) {
    size_t comma = dn.rfind(',');
    std::string pair = comma == std::string::npos ? dn : dn.substr(comma + 1);
    return pair.substr(0, pair.find('='));
}

std::string parentOf(const std::string& dn) {
    size_t comma = dn.rfind(',');
    return comma == std::string::npos ? std::string() : dn.substr(0, comma);
}

std::string lastId(const std::string& dn) {
    size_t equals = dn.rfind('=');
    return equals == std::string::npos ? dn : dn.substr(equals + 1);
}

std::list<std::string> splitList(const std::string& text) {
    std::list<std::string> pieces;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(';', start);
        end = end == std::string::npos ? text.size() : end;
        if (end > start) {
            pieces.push_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return pieces;
}

std::string fullDn(const DBObject& object) {
    return object.parentDn.empty() ? object.dn : object.parentDn + "," + object.dn;
}

bool holdsHighChannel(const std::string& text) {
    for (const Band46Channel& row : kBand46Channels) {
        if (text.find(std::to_string(row.high)) != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace frequency
}  // namespace TibVeskCM

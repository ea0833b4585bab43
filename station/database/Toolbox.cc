// Toolbox: number conversions and splitting of texts.
//
// A text converts only when the whole of it is a decimal number that fits the target type; on
// failure the result is false and the output is left as it was. Lists are all or nothing.
#include "platform/Toolbox.h"

#include <boost/algorithm/string.hpp>
#include <charconv>
#include <cmath>
#include <list>
#include <vector>

namespace {

template <typename T>
bool parseWhole(const std::string& text, T& out) {
    T value{};
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, value);
    if (text.empty() || result.ec != std::errc() || result.ptr != end)
        return false;
    out = value;
    return true;
}

std::vector<std::string> piecesOf(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    boost::split(pieces, text, [separator](char c) { return c == separator; });
    return pieces;
}

// Appends the narrowest of int, long long and unsigned long long that holds the text; double
// otherwise. The value is built in place: an assignment through a temporary variant makes GCC's
// optimiser warn about its string alternative, which is never the one held.
bool appendNumber(std::string piece, std::list<AttributeVariant>& values) {
    boost::trim(piece);
    int i;
    long long ll;
    unsigned long long ull;
    double d;
    if (parseWhole(piece, i)) {
        values.emplace_back(i);
    } else if (parseWhole(piece, ll)) {
        values.emplace_back(ll);
    } else if (parseWhole(piece, ull)) {
        values.emplace_back(ull);
    } else if (parseWhole(piece, d) && std::isfinite(d)) {
        values.emplace_back(d);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool Toolbox::convertIntToString(int const& value, std::string& out) {
    out = std::to_string(value);
    return true;
}

bool Toolbox::convertUIntToString(unsigned const& value, std::string& out) {
    out = std::to_string(value);
    return true;
}

bool Toolbox::convertLongToString(long const& value, std::string& out) {
    out = std::to_string(value);
    return true;
}

bool Toolbox::convertULongToString(unsigned long const& value, std::string& out) {
    out = std::to_string(value);
    return true;
}

bool Toolbox::convertStringToInt(std::string const& text, int& out, bool) {
    return parseWhole(text, out);
}

bool Toolbox::convertStringToUInt(std::string const& text, unsigned& out, bool) {
    return parseWhole(text, out);
}

bool Toolbox::convertStringToShort(std::string const& text, short& out, bool) {
    return parseWhole(text, out);
}

bool Toolbox::convertStringToLongLong(std::string const& text, long long& out, bool) {
    return parseWhole(text, out);
}

bool Toolbox::convertStringToULongLong(std::string const& text, unsigned long long& out, bool) {
    return parseWhole(text, out);
}

bool Toolbox::convertStringToDouble(std::string const& text, double& out) {
    double value;
    if (!parseWhole(text, value) || !std::isfinite(value))
        return false;
    out = value;
    return true;
}

bool Toolbox::readStringToList(std::string const& text, char separator, std::list<std::string>& out,
                               bool append) {
    if (text.empty())
        return false;
    for (std::string& piece : piecesOf(text, separator)) {
        if (append) {
            out.push_back(std::move(piece));
        } else {
            out.push_front(std::move(piece));
        }
    }
    return true;
}

bool Toolbox::readStringToIntList(std::string const& text, char separator, std::list<int>& out) {
    if (text.empty())
        return false;
    std::list<int> values;
    for (std::string& piece : piecesOf(text, separator)) {
        boost::trim(piece);
        int value;
        if (!parseWhole(piece, value))
            return false;
        values.push_back(value);
    }
    out.splice(out.end(), values);
    return true;
}

bool Toolbox::readStringToListVariant(std::string const& text, char separator,
                                      std::list<AttributeVariant>& out) {
    if (text.empty())
        return false;
    std::list<AttributeVariant> values;
    for (const std::string& piece : piecesOf(text, separator)) {
        if (!appendNumber(piece, values))
            return false;
    }
    out.splice(out.end(), values);
    return true;
}

bool Toolbox::splitFdn(char const* fdn, std::string& rdn, std::string& parentDn) {
    if (fdn == nullptr || *fdn == '\0')
        return false;
    std::string text(fdn);
    size_t comma = text.rfind(',');
    if (comma == std::string::npos) {
        rdn = text;
        parentDn.clear();
        return true;
    }
    if (comma == 0 || comma + 1 == text.size())
        return false;
    rdn = text.substr(comma + 1);
    parentDn = text.substr(0, comma);
    return true;
}

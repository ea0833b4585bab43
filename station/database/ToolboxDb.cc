// Toolbox: the operations that read database objects.
#include <climits>
#include <list>
#include <type_traits>

#include "platform/Toolbox.h"
#include "platform/VeskStrings.h"

namespace {

// An integer alternative whose value fits an int.
struct IntOf : public boost::static_visitor<bool> {
    int* out;
    explicit IntOf(int* o) : out(o) {}

    template <typename T>
    bool operator()(const T& v) const {
        if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
            if constexpr (std::is_signed_v<T>) {
                if (v < INT_MIN || v > INT_MAX)
                    return false;
            } else {
                if (v > static_cast<unsigned long long>(INT_MAX))
                    return false;
            }
            *out = static_cast<int>(v);
            return true;
        } else {
            return false;
        }
    }
};

// The attribute `name` of `object` unless it is missing or deleted; a null object is warned
// about in the name of `caller`.
Attribute* presentAttribute(DBObject* object, const std::string& name, const char* caller) {
    if (object == nullptr) {
        VESK_WARNING("Toolbox::%s: Object is NULL", caller);
        return nullptr;
    }
    Attribute* attribute = object->getAttribute(name);
    return attribute != nullptr && !attribute->deleted ? attribute : nullptr;
}

}  // namespace

bool Toolbox::getIntFromDBObject(DBObject* object, std::string& name, int& out) {
    Attribute* attribute = presentAttribute(object, name, __func__);
    if (attribute == nullptr)
        return false;
    int value = 0;
    if (!boost::apply_visitor(IntOf(&value), attribute->value)) {
        VESK_WARNING("Toolbox::%s: '%s:%s' holds no integer", __func__, object->dn.c_str(),
                     name.c_str());
        return false;
    }
    out = value;
    return true;
}

bool Toolbox::getStringFromDBObject(DBObject* object, std::string& name, std::string& out) {
    Attribute* attribute = presentAttribute(object, name, __func__);
    if (attribute == nullptr)
        return false;
    if (const std::string* text = boost::get<std::string>(&attribute->value)) {
        out = *text;
        return true;
    }
    VESK_WARNING("Toolbox::%s: '%s:%s' holds no string", __func__, object->dn.c_str(),
                 name.c_str());
    return false;
}

int32_t Toolbox::getAIPhaseFromDB() {
    DBObject* oam = IDatabase::getObject(VeskConst::OAM, 1, 0);
    int phase = -2;
    std::string name = VeskConst::AI_phase;
    if (oam == nullptr || !getIntFromDBObject(oam, name, phase))
        phase = -2;
    delete oam;
    return phase;
}

// Mixed mode while a WCDMA cell is unlocked: only then do the shared resources have to be split
// between the two radio technologies; otherwise the LTE cells get them all.
int Toolbox::checkModeFromDB(int handle) {
    std::list<DBObject*> cells = IDatabase::getMOClass(VeskConst::NodeBLocalCell, handle);
    bool wcdmaInUse = false;
    std::string name = "administrativeState";
    for (DBObject* cell : cells) {
        int state = 0;
        // Keys holding ":" are struct values of a cell, not cells.
        if (cell->dn.find(':') == std::string::npos && getIntFromDBObject(cell, name, state) &&
            state == 1)
            wcdmaInUse = true;
        delete cell;
    }
    return wcdmaInUse ? 1 : 0;
}

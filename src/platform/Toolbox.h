// Utility operations over the database. The templates are the agent's own code; the other
// operations belong to the station.
#pragma once

#include <list>
#include <sstream>
#include <string>

#include "platform/AttributeVariant.h"
#include "platform/DBObject.h"
#include "platform/IDatabase.h"
#include "platform/Logger.h"

class Toolbox {
  public:
    static bool convertIntToString(int const& value, std::string& out);
    static bool convertUIntToString(unsigned const& value, std::string& out);
    static bool convertLongToString(long const& value, std::string& out);
    static bool convertULongToString(unsigned long const& value, std::string& out);
    static bool convertStringToInt(std::string const& text, int& out, bool flag);
    static bool convertStringToUInt(std::string const& text, unsigned& out, bool flag);
    static bool convertStringToShort(std::string const& text, short& out, bool flag);
    static bool convertStringToLongLong(std::string const& text, long long& out, bool flag);
    static bool convertStringToULongLong(std::string const& text, unsigned long long& out,
                                         bool flag);
    static bool convertStringToDouble(std::string const& text, double& out);

    // Splits `text` on `separator`. With `append` true the pieces keep their order; with false
    // each piece is put at the front, so the last piece comes first.
    static bool readStringToList(std::string const& text, char separator,
                                 std::list<std::string>& out, bool append);
    static bool readStringToIntList(std::string const& text, char separator, std::list<int>& out);
    static bool readStringToListVariant(std::string const& text, char separator,
                                        std::list<AttributeVariant>& out);
    // The last "Class=id" into rdn, everything before the last comma into parentDn.
    static bool splitFdn(char const* fdn, std::string& rdn, std::string& parentDn);
    static bool getIntFromDBObject(DBObject* object, std::string& name, int& out);
    static bool getStringFromDBObject(DBObject* object, std::string& name, std::string& out);
    // "AI_phase" of "OAM"; -2 when the object or attribute is missing.
    static int32_t getAIPhaseFromDB();
    // The operation mode the cells seen by the handle call for: 1 mixed, 0 LTE only.
    static int checkModeFromDB(int handle);

    template <typename T>
    static bool getValue(AttributeVariant value, T& out) {
        try {
            out = boost::get<T>(value);
            return true;
        } catch (boost::bad_get&) {
            VESK_ERROR("Toolbox::%s: Boost Bad Get!", __func__);
            return false;
        }
    }

    template <typename T>
    static bool getAttrValueFromObj(DBObject* object, std::string name, T& out) {
        if (object == nullptr) {
            VESK_WARNING("Toolbox::%s: Object is NULL", __func__);
            return false;
        }
        return readFromObject(__func__, object, object->dn, name, out);
    }

    template <typename T>
    static bool getDbObjAttrValue(std::string dn, std::string name, T& out, int instance) {
        VESK_TRACE("Toolbox::%s fetching object: '%s' instance: '%d' attribute: '%s'", __func__,
                   dn.c_str(), instance, name.c_str());
        DBObject* object = IDatabase::getObject(dn, instance, 0);
        if (object == nullptr) {
            VESK_WARNING("Toolbox::%s: Object '%s' not found from DB", __func__, dn.c_str());
            return false;
        }
        bool ok = readFromObject(__func__, object, dn, name, out);
        delete object;
        return ok;
    }

    template <typename T>
    static bool getDbObjAlternateAttrValue(std::string dn, std::string name, T& out, int instance,
                                           int handle) {
        VESK_TRACE("Toolbox::%s fetching object: '%s' instance: '%d' attribute: '%s'", __func__,
                   dn.c_str(), instance, name.c_str());
        DBObject* object = IDatabase::getObject(dn, instance, handle);
        if (object == nullptr) {
            VESK_WARNING("Toolbox::%s: Object '%s' not found from DB", __func__, dn.c_str());
            return false;
        }
        bool ok = readAttribute(__func__, object->getAlternateAttribute(name), dn, name, out);
        delete object;
        return ok;
    }

    template <typename T>
    static bool getDbAttrValue(std::string dn, std::string name, T& out, DBObject* object,
                               int instance) {
        DBObject* fetched = nullptr;
        if (object == nullptr) {
            fetched = IDatabase::getObject(dn, instance, 0);
            object = fetched;
        }
        bool ok = false;
        if (object == nullptr) {
            VESK_WARNING("Toolbox::%s(), could not read %s from db ", __func__, dn.c_str());
        } else {
            Attribute* attribute = object->getAttribute(name);
            if (attribute == nullptr || attribute->deleted) {
                VESK_WARNING("Toolbox::%s(), not %s::%s from db.", __func__, dn.c_str(),
                             name.c_str());
            } else {
                try {
                    out = boost::get<T>(attribute->value);
                    ok = true;
                } catch (boost::bad_get&) {
                    VESK_ERROR("Toolbox::%s(), Boost Bad Get! %s:%s found has value.", __func__,
                               dn.c_str(), name.c_str());
                }
            }
        }
        delete fetched;
        return ok;
    }

    // Splits on `separator` and parses each piece with a stream; false if a piece does not parse.
    template <typename T>
    static bool readStringToTypedList(std::string const& text, char separator, std::list<T>& out) {
        std::istringstream in(text);
        std::string piece;
        bool ok = true;
        while (std::getline(in, piece, separator)) {
            std::istringstream pieceIn(piece);
            T value{};
            if (pieceIn >> value) {
                out.push_back(value);
            } else {
                ok = false;
            }
        }
        return ok;
    }

  private:
    template <typename T>
    static bool readFromObject(const char* func, DBObject* object, const std::string& dn,
                               const std::string& name, T& out) {
        return readAttribute(func, object->getAttribute(name), dn, name, out);
    }

    template <typename T>
    static bool readAttribute(const char* func, Attribute* attribute, const std::string& dn,
                              const std::string& name, T& out) {
        if (attribute == nullptr || attribute->deleted) {
            VESK_WARNING("Toolbox::%s: '%s:%s' attribute does not exist in DB", func, dn.c_str(),
                         name.c_str());
            return false;
        }
        try {
            out = boost::get<T>(attribute->value);
        } catch (boost::bad_get&) {
            VESK_ERROR("Toolbox::%s: Boost Bad Get! When reading value of: '%s:%s' ", func,
                       dn.c_str(), name.c_str());
            return false;
        }
        VESK_TRACE("Toolbox::%s: '%s:%s' found, value: '%s'", func, dn.c_str(), name.c_str(),
                   attribute->ToStr().c_str());
        return true;
    }
};

// IDatabase::getBOAttributeId and the station's table of baseband ids.
#include "station/database/BoMapping.h"

#include <boost/algorithm/string.hpp>
#include <fstream>

#include "platform/IDatabase.h"
#include "platform/Logger.h"
#include "platform/Toolbox.h"
#include "station/database/DnName.h"

namespace vesk {
namespace db {

const BoAttributeTable& BoAttributeTable::station() {
    static const BoAttributeTable table = [] {
        BoAttributeTable loaded;
        std::string path = std::string(VESK_DATA_DIR) + "/station/bo_attribute_ids.csv";
        if (!loaded.load(path)) {
            VESK_ERROR("BoAttributeTable::%s: cannot read %s", __func__, path.c_str());
        }
        return loaded;
    }();
    return table;
}

bool BoAttributeTable::load(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        return false;
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        boost::trim(line);
        if (line.empty() || line[0] == '#')
            continue;
        size_t comma = line.find(',');
        int id = 0;
        std::string name = boost::trim_copy(line.substr(0, comma));
        if (comma == std::string::npos || name.empty() ||
            !Toolbox::convertStringToInt(boost::trim_copy(line.substr(comma + 1)), id, false) ||
            id <= 0) {
            VESK_WARNING("BoAttributeTable::%s: %s:%d skipped: '%s'", __func__, path.c_str(),
                         number, line.c_str());
            continue;
        }
        _ids[name] = id;
    }
    return true;
}

int32_t BoAttributeTable::find(const std::string& name) const {
    auto it = _ids.find(name);
    return it == _ids.end() ? 0 : it->second;
}

namespace {

// The id that an attribute of the mapping object gives `name`: an integer value, or a text
// holding one. 0 when it has none.
int32_t idFromMappingObject(DBObject* mapping, const std::string& name) {
    if (mapping == nullptr)
        return 0;
    Attribute* attribute = mapping->getAttribute(name);
    if (attribute == nullptr || attribute->deleted)
        return 0;
    int id = 0;
    if (const std::string* text = boost::get<std::string>(&attribute->value)) {
        if (!Toolbox::convertStringToInt(*text, id, false))
            id = 0;
    } else {
        std::string key = name;
        if (!Toolbox::getIntFromDBObject(mapping, key, id))
            id = 0;
    }
    return id > 0 ? id : 0;
}

}  // namespace

}  // namespace db
}  // namespace vesk

int32_t IDatabase::getBOAttributeId(DBObject* boMapping, std::string attributeName) {
    // An object's dn is known by its class: every cell of a class shares the class's id.
    std::string names[2] = {attributeName, ""};
    if (attributeName.find('=') != std::string::npos) {
        names[1] = vesk::db::classOfKey(vesk::db::keyOf(attributeName));
    }
    for (const std::string& name : names) {
        if (name.empty())
            continue;
        int32_t id = vesk::db::idFromMappingObject(boMapping, name);
        if (id == 0)
            id = vesk::db::BoAttributeTable::station().find(name);
        if (id != 0)
            return id;
    }
    // Most attributes of the baseband's classes are the database's alone: no warning.
    VESK_TRACE("IDatabase::%s: '%s' has no baseband id", __func__, attributeName.c_str());
    return 0;
}

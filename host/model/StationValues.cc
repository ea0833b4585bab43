#include "host/model/StationValues.h"

#include <libyang/libyang.h>

namespace vesk {
namespace host {
namespace model {
namespace {

// The number of an enumeration literal; false if the enumeration has none of that name.
bool literalNumber(const ModelTables& tables, Id enumeration, const std::string& name,
                   int* number) {
    for (Id it = tables.enumerations[enumeration].firstLiteral; it != kNone;
         it = tables.literals[it].next) {
        if (tables.properties[tables.literals[it].properties].name == name) {
            *number = tables.literals[it].value;
            return true;
        }
    }
    return false;
}

// Checks `text` against the YANG type of the attribute's leaf.
bool fitsType(const ModelSchema& schema, Id attribute, const std::string& text,
              std::string* error) {
    const lysc_node* node = schema.tables().attributes[attribute].node;
    LY_ERR result = lyd_value_validate(schema.context(), node, text.c_str(), text.size(), nullptr,
                                       nullptr, nullptr);
    if (result == LY_SUCCESS || result == LY_EINCOMPLETE) {
        return true;
    }
    const char* message = ly_errmsg(schema.context());
    *error = "value '" + text + "' does not fit its type" +
             (message != nullptr ? std::string(": ") + message : std::string());
    return false;
}

// One element of a list, as the list text holds it.
std::string listElement(const ModelTables& tables, Id attribute, int32_t type,
                        const std::string& text) {
    if (type == 12) {
        int number = 0;
        literalNumber(tables,
                      tables.typeContainers[tables.attributes[attribute].typeContainer].enumeration,
                      text, &number);
        return std::to_string(number);
    }
    if (type == 10) {
        return text == "true" ? "1" : "0";
    }
    return text;
}

std::unique_ptr<Attribute> encodeList(const ModelTables& tables, Id attribute, int32_t type,
                                      const std::vector<std::string>& texts) {
    const char* separator = (type == 9 || type == 11 || type == 14) ? ";" : ",";
    std::string joined;
    for (size_t i = 0; i < texts.size(); ++i) {
        joined += (i == 0 ? "" : separator) + listElement(tables, attribute, type, texts[i]);
    }
    IPCData::AttributeValueType dbType = databaseType(type, true);
    return std::make_unique<Attribute>(false, tables.attributeName(attribute),
                                       AttributeVariant(joined), 0, true, dbType, true, false);
}

std::unique_ptr<Attribute> encodeSingle(const ModelTables& tables, Id attribute, int32_t type,
                                        const std::string& text) {
    IPCData::AttributeValueType dbType = databaseType(type, false);
    auto result =
        std::make_unique<Attribute>(false, tables.attributeName(attribute),
                                    AttributeVariant(std::string()), 0, true, dbType, true, false);
    if (type == 12) {
        int number = 0;
        literalNumber(tables,
                      tables.typeContainers[tables.attributes[attribute].typeContainer].enumeration,
                      text, &number);
        result->value = AttributeVariant(number);
    } else if (type == 10) {
        result->value = AttributeVariant(text == "true");
    } else {
        result->SetValue(text, dbType);
    }
    return result;
}

}  // namespace

int32_t baseType(const ModelTables& tables, Id attribute) {
    const TypeContainer& type = tables.typeContainers[tables.attributes[attribute].typeContainer];
    if (type.derived == kNone) {
        return type.type;
    }
    return tables.typeContainers[tables.derived[type.derived].base].type;
}

bool isListAttribute(const ModelTables& tables, Id attribute) {
    return tables.typeContainers[tables.attributes[attribute].typeContainer].maxMultiplicity >= 2;
}

IPCData::AttributeValueType databaseType(int32_t modelType, bool isList) {
    static const int kList[17] = {0, 20, 21, 19, 22, 23, 24, 25, 26, 27, 28, 31, 18, 9, 32, 9, 29};
    if (modelType < 1 || modelType > 16 || modelType == 13 || modelType == 15) {
        return IPCData::AVT_STRING;
    }
    return static_cast<IPCData::AttributeValueType>(isList ? kList[modelType] : modelType);
}

std::unique_ptr<Attribute> encodeAttribute(const ModelSchema& schema, Id attribute,
                                           const std::vector<std::string>& texts,
                                           std::string* error) {
    const ModelTables& tables = schema.tables();
    bool list = isListAttribute(tables, attribute);
    const TypeContainer& container =
        tables.typeContainers[tables.attributes[attribute].typeContainer];
    if (!list && texts.size() != 1) {
        *error = "takes one value, the file gives " + std::to_string(texts.size());
        return nullptr;
    }
    if (list && texts.size() > static_cast<size_t>(container.maxMultiplicity)) {
        *error = "takes at most " + std::to_string(container.maxMultiplicity) +
                 " values, the file gives " + std::to_string(texts.size());
        return nullptr;
    }
    for (const std::string& text : texts) {
        if (!fitsType(schema, attribute, text, error)) {
            return nullptr;
        }
    }
    int32_t type = baseType(tables, attribute);
    return list ? encodeList(tables, attribute, type, texts)
                : encodeSingle(tables, attribute, type, texts.front());
}

}  // namespace model
}  // namespace host
}  // namespace vesk

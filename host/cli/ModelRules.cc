#include "host/cli/ModelRules.h"

#include <libyang/libyang.h>

#include <sstream>

#include "host/cli/Utf8Text.h"
#include "host/model/ModelBuilder.h"
#include "platform/orl/OrlAttributeValue.h"

namespace vesk {
namespace host {
namespace cli {
namespace {

bool readOnly(const lysc_node* node) {
    return node != nullptr && (node->flags & LYS_CONFIG_R) != 0;
}

const int32_t kUnbounded = 0x7fffffff;

}  // namespace

bool ModelRules::writable(Id moc, Id attribute, std::string* error) const {
    const model::AttributeRecord& record = _model.tables().attributes[attribute];
    const std::string& name = _model.attributeName(attribute);
    const std::string& className = _model.className(moc);
    if (record.key) {
        *error = name + " is the key of " + className + ": the dn gives it, it cannot be set";
        return false;
    }
    if (readOnly(record.node)) {
        *error = name + " of " + className + " is read-only (config false): the station writes it";
        return false;
    }
    return true;
}

bool ModelRules::creatable(Id moc, std::string* error) const {
    if (readOnly(_model.tables().mocs[moc].node)) {
        *error = "class " + _model.className(moc) +
                 " is read-only (config false): the station makes its MOs";
        return false;
    }
    return true;
}

bool ModelRules::mandatoryGiven(Id moc, const std::set<std::string>& given,
                                std::string* error) const {
    for (Id attribute : _model.attributes(moc)) {
        const model::AttributeRecord& record = _model.tables().attributes[attribute];
        const std::string& name = _model.attributeName(attribute);
        if (record.mandatory && !record.key && given.count(name) == 0) {
            *error = name + " of " + _model.className(moc) +
                     " is mandatory: give it with the create, as " + name + "=VALUE";
            return false;
        }
    }
    return true;
}

bool ModelRules::fitsCount(Id attribute, size_t count, std::string* error) const {
    const model::TypeContainer& type =
        _model.tables().typeContainers[_model.tables().attributes[attribute].typeContainer];
    const std::string& name = _model.attributeName(attribute);
    const auto min = static_cast<size_t>(type.minMultiplicity);
    if (count == 0 && min > 0 && !_model.isList(attribute)) {
        *error = name + " is mandatory: its value cannot be deleted";
        return false;
    }
    if (count < min) {
        *error = name + " takes at least " + std::to_string(min) + " values (min-elements), not " +
                 std::to_string(count);
        return false;
    }
    if (type.maxMultiplicity != kUnbounded && count > static_cast<size_t>(type.maxMultiplicity)) {
        *error = name + " takes at most " + std::to_string(type.maxMultiplicity) +
                 " values (max-elements), not " + std::to_string(count);
        return false;
    }
    return true;
}

bool ModelRules::fitsText(Id attribute, const std::string& text, std::string* error) const {
    const std::string& name = _model.attributeName(attribute);
    if (!isUtf8(text)) {
        *error =
            name + ": value '" + text + "' is not UTF-8 text (" + _model.typeName(attribute) + ")";
        return false;
    }
    if (_model.baseType(attribute) != OrlOamSpiMoAttributeType_3_REFERENCE) {
        return true;
    }
    Id target = kNone;
    std::string why;
    if (!_model.resolveDn(text, &target, &why)) {
        *error = name + ": " + why;
        return false;
    }
    const char* classes =
        model::extensionArgument(_model.tables().attributes[attribute].node, "reference");
    std::istringstream allowed(classes != nullptr ? classes : "");
    for (std::string each; allowed >> each;) {
        if (each == _model.className(target)) {
            return true;
        }
    }
    *error = name + ": " + text + " is of class " + _model.className(target) +
             "; the model allows " + (classes != nullptr ? classes : "none");
    return false;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

#include "host/model/ModelSchema.h"

#include <libyang/libyang.h>

#include <fstream>

#include "host/model/ModelBuilder.h"

namespace vesk {
namespace host {
namespace model {
namespace {

// The quoted module name that follows `lead` in `message`, or "".
std::string quotedAfter(const std::string& message, const std::string& lead) {
    size_t at = message.find(lead);
    if (at == std::string::npos) {
        return "";
    }
    size_t begin = at + lead.size();
    size_t end = message.find_first_of("\"@", begin);
    return end == std::string::npos ? "" : message.substr(begin, end - begin);
}

// The file a libyang message chain names: the first module or submodule named by an "Including",
// "Importing", "Parsing module" or "Data model" message (the innermost one), else the module.
std::string fileOf(const ly_err_item* first, const std::string& directory,
                   const std::string& module) {
    static const char* const kLeads[] = {"Including \"", "Importing \"", "Parsing module \"",
                                         "Data model \""};
    for (const ly_err_item* item = first; item != nullptr; item = item->next) {
        for (const char* lead : kLeads) {
            std::string name = item->msg != nullptr ? quotedAfter(item->msg, lead) : "";
            if (!name.empty()) {
                return directory + "/" + name + ".yang";
            }
        }
    }
    return directory + "/" + module + ".yang";
}

// "FILE:LINE: reason" from a parse error, or "FILE: reason (at PATH)" from a later one.
std::string describeError(const ly_ctx* context, const std::string& directory,
                          const std::string& module) {
    const ly_err_item* first = ly_err_first(context);
    if (first == nullptr) {
        return directory + "/" + module + ".yang: cannot load the module";
    }
    std::string file = fileOf(first, directory, module);
    std::string reason = first->msg != nullptr ? first->msg : "unknown error";
    std::string path = first->path != nullptr ? first->path : "";
    const std::string lineLead = "Line number ";
    size_t at = path.find(lineLead);
    if (at != std::string::npos) {
        size_t begin = at + lineLead.size();
        size_t end = path.find_first_not_of("0123456789", begin);
        return file + ":" + path.substr(begin, end - begin) + ": " + reason;
    }
    return file + ": " + reason + (path.empty() ? "" : " (at " + path + ")");
}

}  // namespace

ModelSchema::~ModelSchema() {
    ly_ctx_destroy(_context);
}

bool ModelSchema::load(const std::string& directory, const std::string& module,
                       std::string* error) {
    std::ifstream probe(directory + "/" + module + ".yang");
    if (!probe) {
        *error = directory + "/" + module + ".yang: cannot open the file";
        return false;
    }
    // The station's context checks values and feeds the tables; the modules that describe a
    // server's datastores are the NETCONF server's own, so they are not loaded here (quicker).
    ly_ctx* context = nullptr;
    if (ly_ctx_new(directory.c_str(),
                   LY_CTX_SET_PRIV_PARSED | LY_CTX_DISABLE_SEARCHDIR_CWD | LY_CTX_NO_YANGLIBRARY,
                   &context) != LY_SUCCESS) {
        *error = directory + ": cannot create the model context";
        return false;
    }
    ly_log_options(LY_LOSTORE);
    const lys_module* loaded = ly_ctx_load_module(context, module.c_str(), nullptr, nullptr);
    if (loaded == nullptr) {
        *error = describeError(context, directory, module);
        ly_ctx_destroy(context);
        return false;
    }
    if (!buildTables(loaded, &_tables, &_mocByName, error)) {
        ly_ctx_destroy(context);
        _tables = ModelTables();
        _mocByName.clear();
        return false;
    }
    _context = context;
    return true;
}

Id ModelSchema::mocByClass(const std::string& name) const {
    auto found = _mocByName.find(name);
    return found == _mocByName.end() ? kNone : found->second;
}

Id ModelSchema::attributeOf(Id moc, const std::string& name) const {
    for (Id it = _tables.mocs[moc].firstAttribute; it != kNone; it = _tables.attributes[it].next) {
        if (_tables.attributeName(it) == name) {
            return it;
        }
    }
    return kNone;
}

Id ModelSchema::memberOf(Id structType, const std::string& name) const {
    for (Id it = _tables.structs[structType].firstMember; it != kNone;
         it = _tables.attributes[it].next) {
        if (_tables.attributeName(it) == name) {
            return it;
        }
    }
    return kNone;
}

Id ModelSchema::childContainment(Id moc, const std::string& childClass) const {
    for (Id it = _tables.mocs[moc].firstContainment; it != kNone;
         it = _tables.containments[it].next) {
        if (_tables.mocName(_tables.containments[it].child) == childClass) {
            return it;
        }
    }
    return kNone;
}

}  // namespace model
}  // namespace host
}  // namespace vesk

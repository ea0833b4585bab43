#include "host/netconf/Replies.h"

#include "host/cli/Answer.h"

namespace vesk {
namespace host {
namespace netconf {

namespace {

lyd_node* makeError(const ly_ctx* context, NC_ERR tag, const std::string& message, bool asked,
                    OrlReturnT code) {
    lyd_node* error = nullptr;
    switch (tag) {
        case NC_ERR_LOCK_DENIED:
            error = nc_err(context, tag, 0u);
            break;
        case NC_ERR_MISSING_ATTR:
        case NC_ERR_BAD_ATTR:
        case NC_ERR_UNKNOWN_ATTR:
            error = nc_err(context, tag, NC_ERR_TYPE_PROT, "", "");
            break;
        case NC_ERR_MISSING_ELEM:
        case NC_ERR_BAD_ELEM:
        case NC_ERR_UNKNOWN_ELEM:
            error = nc_err(context, tag, NC_ERR_TYPE_PROT, "");
            break;
        case NC_ERR_DATA_EXISTS:
        case NC_ERR_DATA_MISSING:
        case NC_ERR_MALFORMED_MSG:
            error = nc_err(context, tag);
            break;
        default:
            error = nc_err(context, tag, NC_ERR_TYPE_APP);
            break;
    }
    if (!message.empty()) {
        nc_err_set_msg(error, message.c_str(), "en");
    }
    if (asked) {
        lyd_node* info = nullptr;
        lyd_new_opaq2(nullptr, context, "return-code", std::to_string(code).c_str(), nullptr,
                      kErrorInfoNamespace, &info);
        nc_err_add_info_other(error, info);
        lyd_new_opaq2(nullptr, context, "return-code-name", cli::returnCodeName(code).c_str(),
                      nullptr, kErrorInfoNamespace, &info);
        nc_err_add_info_other(error, info);
    }
    return error;
}

}  // namespace

nc_server_reply* errorReply(const ly_ctx* context, NC_ERR tag, const std::string& message,
                            bool asked, OrlReturnT code) {
    return nc_server_reply_err(makeError(context, tag, message, asked, code));
}

void addError(nc_server_reply* reply, const ly_ctx* context, NC_ERR tag, const std::string& message,
              bool asked, OrlReturnT code) {
    nc_server_reply_add_err(reply, makeError(context, tag, message, asked, code));
}

nc_server_reply* lockedReply(const ly_ctx* context, NC_ERR tag, uint32_t holder) {
    lyd_node* error = tag == NC_ERR_LOCK_DENIED ? nc_err(context, tag, holder)
                                                : nc_err(context, tag, NC_ERR_TYPE_PROT);
    nc_err_set_msg(error,
                   ("the running datastore is locked by session " + std::to_string(holder)).c_str(),
                   "en");
    if (tag != NC_ERR_LOCK_DENIED) {
        nc_err_set_sid(error, holder);
    }
    return nc_server_reply_err(error);
}

nc_server_reply* dataReply(const lyd_node* rpc, lyd_node* data) {
    lyd_node* output = nullptr;
    if (lyd_dup_single(rpc, nullptr, 0, &output) != LY_SUCCESS ||
        lyd_new_any(output, nullptr, "data", data, 1, LYD_ANYDATA_DATATREE, 1, nullptr) !=
            LY_SUCCESS) {
        lyd_free_siblings(data);
        lyd_free_tree(output);
        return errorReply(LYD_CTX(rpc), NC_ERR_OP_FAILED, "cannot build the answer");
    }
    return nc_server_reply_data(output, NC_WD_EXPLICIT, NC_PARAMTYPE_FREE);
}

}  // namespace netconf
}  // namespace host
}  // namespace vesk

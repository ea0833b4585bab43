// The node's next operation mode: 1 "mixed", 0 "hc_lte". Kept across restarts.
#pragma once

extern "C" {
// `kind` must be 2. 0 on success; -1, with an error line, otherwise. A node that never set a
// mode reads 1.
int mw_api_operation_mode_get(int kind, int* mode);
// `mode` must be 0 or 1. 0 on success, once the mode is stored.
int mw_api_operation_mode_set(int kind, int mode);
}

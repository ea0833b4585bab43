// Numbers shared between the agent and the configuration database.
#pragma once

namespace IPCData {

enum EOperations {
    OP_DELETE = 9,    // object deleted ("Delete")
    OP_INSERT = 18,   // object inserted ("Insert")
    OP_UPDATE = 23,   // attributes updated ("Update")
    OP_TX_OPEN = 25,  // open a transaction
    OP_TX_COMMIT = 26,
    OP_TX_ROLLBACK = 27,
};

// How a value is to be understood. 1..16 equal the host's attribute types; 18..32 are lists and
// always hold a string.
enum AttributeValueType {
    AVT_UNKNOWN = 0,
    AVT_INT8 = 1,
    AVT_INT16 = 2,
    AVT_INT32 = 3,
    AVT_INT64 = 4,
    AVT_UINT8 = 5,
    AVT_UINT16 = 6,
    AVT_UINT32 = 7,
    AVT_UINT64 = 8,
    AVT_STRING = 9,
    AVT_BOOL = 10,
    AVT_REFERENCE = 11,
    AVT_ENUM = 12,
    AVT_RESERVED_13 = 13,
    AVT_STRUCT = 14,
    AVT_RESERVED_15 = 15,
    AVT_DECIMAL64 = 16,
    AVT_FLOAT = 17,
    AVT_ENUM_LIST = 18,
    AVT_INT32_LIST = 19,
    AVT_INT8_LIST = 20,
    AVT_INT16_LIST = 21,
    AVT_INT64_LIST = 22,
    AVT_UINT8_LIST = 23,
    AVT_UINT16_LIST = 24,
    AVT_UINT32_LIST = 25,
    AVT_UINT64_LIST = 26,
    AVT_STRING_LIST = 27,
    AVT_BOOL_LIST = 28,
    AVT_DECIMAL64_LIST = 29,
    AVT_RESERVED_30 = 30,
    AVT_REFERENCE_LIST = 31,
    AVT_STRUCT_LIST = 32,
};

enum OperationalState { OPSTATE_DISABLED = 0, OPSTATE_ENABLED = 1 };
enum AdminState { ADMSTATE_LOCKED = 0, ADMSTATE_UNLOCKED = 1 };

// The variant alternative a value of `type` must hold; -1 for types with none (0, 13, 15).
inline int expectedVariantIndex(AttributeValueType type) {
    switch (type) {
        case AVT_INT8:
            return 0;
        case AVT_INT16:
            return 1;
        case AVT_INT32:
            return 2;
        case AVT_INT64:
            return 3;
        case AVT_UINT8:
            return 7;
        case AVT_UINT16:
            return 8;
        case AVT_UINT32:
            return 9;
        case AVT_UINT64:
            return 10;
        case AVT_STRING:
            return 6;
        case AVT_BOOL:
            return 11;
        case AVT_REFERENCE:
            return 6;
        case AVT_ENUM:
            return 2;
        case AVT_STRUCT:
            return 6;
        case AVT_DECIMAL64:
            return 5;
        case AVT_FLOAT:
            return 4;
        default:
            return (type >= AVT_ENUM_LIST && type <= AVT_STRUCT_LIST) ? 6 : -1;
    }
}

}  // namespace IPCData

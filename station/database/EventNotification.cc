// IDatabase::EventClass_ev4Notification: the change event that subscribers receive.
#include <cstring>
#include <string>

#include "platform/IDatabase.h"

namespace {

const int32_t kNoValue = 12;

// Bytes a value of the alternative `kind` takes; 0 for string and for no value.
int32_t fixedSizeOf(int32_t kind) {
    switch (kind) {
        case AV_CHAR:
        case AV_UCHAR:
        case AV_BOOL:
            return 1;
        case AV_SHORT:
        case AV_USHORT:
            return 2;
        case AV_INT:
        case AV_UINT:
        case AV_FLOAT:
            return 4;
        case AV_LONGLONG:
        case AV_ULONGLONG:
        case AV_DOUBLE:
            return 8;
        default:
            return 0;
    }
}

// Copies the bytes of a fixed-size alternative into a new buffer.
struct ValueBytes : public boost::static_visitor<void> {
    char* data = nullptr;
    int32_t size = 0;

    template <typename T>
    void operator()(const T& v) {
        size = sizeof(T);
        data = new char[sizeof(T)];
        std::memcpy(data, &v, sizeof(T));
    }
    void operator()(const std::string& v) {
        size = static_cast<int32_t>(v.size() + 1);
        data = new char[v.size() + 1];
        std::memcpy(data, v.c_str(), v.size() + 1);
    }
    void operator()(char const*) {}  // no value
};

template <typename T>
AttributeVariant fromBytes(const void* data) {
    T v;
    std::memcpy(&v, data, sizeof(T));
    return AttributeVariant(v);
}

}  // namespace

IDatabase::EventClass_ev4Notification::EventClass_ev4Notification()
    : VESK::Framework::Event(EV4_NOTIFICATION),
      ticket(0),
      valueKind(kNoValue),
      valueSize(0),
      valueData(nullptr),
      objOperation(IPCData::OP_UPDATE) {}

IDatabase::EventClass_ev4Notification::EventClass_ev4Notification(
    const EventClass_ev4Notification& other)
    : VESK::Framework::Event(other.eventId),
      ticket(other.ticket),
      valueKind(other.valueKind),
      valueSize(other.valueSize),
      valueData(nullptr),
      rdn(other.rdn),
      dn(other.dn),
      notifications(other.notifications),
      objOperation(other.objOperation) {
    if (other.valueData != nullptr && other.valueSize > 0) {
        char* copy = new char[other.valueSize];
        std::memcpy(copy, other.valueData, other.valueSize);
        valueData = copy;
    }
}

IDatabase::EventClass_ev4Notification::~EventClass_ev4Notification() {
    delete[] static_cast<char*>(valueData);
}

VESK::Framework::Event* IDatabase::EventClass_ev4Notification::copyEvent() const {
    return new EventClass_ev4Notification(*this);
}

void IDatabase::EventClass_ev4Notification::setAttrValue(const AttributeVariant& value) {
    delete[] static_cast<char*>(valueData);
    valueData = nullptr;
    ValueBytes bytes;
    boost::apply_visitor(bytes, value);
    valueData = bytes.data;
    valueSize = bytes.size;
    valueKind = bytes.data == nullptr ? kNoValue : static_cast<int32_t>(value.which());
}

AttributeVariant IDatabase::EventClass_ev4Notification::getAttrValue() const {
    const AttributeVariant none(static_cast<char const*>(""));
    if (valueData == nullptr || valueKind < 0 || valueKind > AV_BOOL)
        return none;
    if (valueKind == AV_STRING) {
        if (valueSize <= 0)
            return none;
        const char* text = static_cast<const char*>(valueData);
        return AttributeVariant(std::string(text, strnlen(text, valueSize - 1)));
    }
    if (valueSize != fixedSizeOf(valueKind))
        return none;
    switch (valueKind) {
        case AV_CHAR:
            return fromBytes<char>(valueData);
        case AV_SHORT:
            return fromBytes<short>(valueData);
        case AV_INT:
            return fromBytes<int>(valueData);
        case AV_LONGLONG:
            return fromBytes<long long>(valueData);
        case AV_FLOAT:
            return fromBytes<float>(valueData);
        case AV_DOUBLE:
            return fromBytes<double>(valueData);
        case AV_UCHAR:
            return fromBytes<unsigned char>(valueData);
        case AV_USHORT:
            return fromBytes<unsigned short>(valueData);
        case AV_UINT:
            return fromBytes<unsigned int>(valueData);
        case AV_ULONGLONG:
            return fromBytes<unsigned long long>(valueData);
        default:
            return AttributeVariant(*static_cast<const unsigned char*>(valueData) != 0);
    }
}

#include "unit/notification/ProducerFixture.h"

namespace vesk {
namespace notificationtest {
namespace {

host::events::EventRouter* g_router = nullptr;

OrlReturnT routerOnly(const char* service, const char*, const char*, void** out) {
    if (std::string(service) != "OrlOamSpiEventService") {
        return OrlNotExist;
    }
    *out = g_router->record();
    return OrlOk;
}

std::string slot(int32_t type, const OrlMoAttributeValue_3& value);

std::string values(const OrlMoAttributeValueContainer_3& container) {
    if (container.nrOfValues == 0) {
        return "-";
    }
    std::string text;
    for (uint32_t i = 0; i < container.nrOfValues; ++i) {
        text += (i == 0 ? "" : ",") + slot(container.type, container.values[i]);
    }
    return container.nrOfValues == 1 ? text : "[" + text + "]";
}

std::string slot(int32_t type, const OrlMoAttributeValue_3& value) {
    switch (type) {
        case OrlOamSpiMoAttributeType_3_STRING:
        case OrlOamSpiMoAttributeType_3_REFERENCE:
            return "\"" + std::string(value.theString) + "\"";
        case OrlOamSpiMoAttributeType_3_BOOL:
            return value.theBool ? "true" : "false";
        case OrlOamSpiMoAttributeType_3_STRUCT: {
            std::string text = "{";
            for (auto* m = value.structMember; m != nullptr; m = m->nextMember) {
                text += std::string(m == value.structMember ? "" : ",") + m->memberName + "=" +
                        values(*m->memberValue);
            }
            return text + "}";
        }
        case OrlOamSpiMoAttributeType_3_UINT32:
            return std::to_string(value.u32);
        case OrlOamSpiMoAttributeType_3_INT32:
            return std::to_string(value.i32);
        default:
            return std::to_string(value.i64);
    }
}

}  // namespace

std::string render(const OrlOamSpiCmEvent_Notification_1T& notification) {
    const OrlOamSpiCmEvent_1T& event = *notification.events[0];
    std::string text = std::to_string(notification.txHandle) + " " +
                       std::to_string(event.eventType) + " " + event.dn;
    for (auto** a = event.attributes; a != nullptr && *a != nullptr; ++a) {
        text += std::string(" ") + (*a)->attributeName + "=" + values((*a)->attributeValue);
    }
    return text;
}

void ProducerFixture::SetUp() {
    DatabaseTest::SetUp();
    g_router = &_router;
    _portal.getInterface = routerOnly;
    _producer.reset(new Producer(&_portal));
    _producer->_subscribed = true;
    _producer->currentState = Producer::stRunning;
}

void ProducerFixture::TearDown() {
    _producer.reset();
    DatabaseTest::TearDown();
}

unsigned long ProducerFixture::consume(const std::vector<std::string>& patterns) {
    unsigned long consumer =
        _router.addConsumer("test", [this](unsigned long, const char*, const void* notification) {
            std::string line =
                render(*static_cast<const OrlOamSpiCmEvent_Notification_1T*>(notification));
            std::lock_guard<std::mutex> lock(_mutex);
            _seen.push_back(line);
        });
    EXPECT_EQ(_router.subscribe(consumer, host::events::kCmEventType, patterns), OrlOk);
    return consumer;
}

std::vector<std::string> ProducerFixture::seen() {
    EXPECT_TRUE(_router.waitIdle(5000));
    std::lock_guard<std::mutex> lock(_mutex);
    return _seen;
}

}  // namespace notificationtest
}  // namespace vesk

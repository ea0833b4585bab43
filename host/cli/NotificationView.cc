#include "host/cli/NotificationView.h"

#include <Poco/Exception.h>
#include <Poco/RegularExpression.h>

#include <ctime>

namespace vesk {
namespace host {
namespace cli {
namespace {

const char* eventName(int32_t eventType) {
    switch (eventType) {
        case OrlOamSpiCmEvent_Created:
            return "created";
        case OrlOamSpiCmEvent_Deleted:
            return "deleted";
        default:
            return "changed";
    }
}

// The attributes of `event` by name; the model's types where it knows the dn's class.
Json attributesOf(const OrlOamSpiCmEvent_1T& event, const ModelView& model) {
    Json attributes = Json::object();
    if (event.attributes == nullptr) {
        return attributes;
    }
    Id moc = kNone;
    std::string ignored;
    bool known = event.dn != nullptr && model.resolveDn(event.dn, &moc, &ignored);
    for (auto** named = event.attributes; *named != nullptr; ++named) {
        std::string name = (*named)->attributeName != nullptr ? (*named)->attributeName : "";
        Id attribute = kNone;
        if (!known || !model.resolveAttribute(moc, name, &attribute, &ignored)) {
            attribute = kNone;
        }
        attributes[name] = ValueFormatter(model).format(attribute, &(*named)->attributeValue);
    }
    return attributes;
}

}  // namespace

std::string filterPatternError(const std::string& pattern) {
    try {
        Poco::RegularExpression expression(pattern, 0, true);
    } catch (const Poco::Exception& e) {
        return e.displayText();
    }
    return std::string();
}

std::string utcTime(uint64_t nanoseconds) {
    time_t seconds = static_cast<time_t>(nanoseconds / 1000000000ULL);
    unsigned micros = static_cast<unsigned>(nanoseconds % 1000000000ULL / 1000ULL);
    tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    size_t length = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    snprintf(text + length, sizeof text - length, ".%06uZ", micros);
    return text;
}

Json notificationJson(const OrlOamSpiCmEvent_Notification_1T& notification,
                      const ModelView& model) {
    Json json = Json::object();
    json["notification"] = notification.txHandle;
    json["time"] = utcTime(notification.eventTime);
    json["eventTime"] = notification.eventTime;
    const OrlOamSpiCmEvent_1T* event =
        notification.events != nullptr ? notification.events[0] : nullptr;
    if (event == nullptr) {
        json["dn"] = "";
        return json;
    }
    json["dn"] = event->dn != nullptr ? event->dn : "";
    json["event"] = eventName(event->eventType);
    json["attributes"] = attributesOf(*event, model);
    return json;
}

std::string notificationText(const Json& notification) {
    std::string text = "#" + notification.value("notification", Json(0)).dump() + " " +
                       notification.value("time", std::string()) + " " +
                       notification.value("event", std::string("?")) + " " +
                       notification.value("dn", std::string());
    auto attributes = notification.find("attributes");
    if (attributes != notification.end() && attributes->is_object()) {
        for (auto it = attributes->begin(); it != attributes->end(); ++it) {
            text += " " + it.key() + "=" + renderText(*it);
        }
    }
    return text;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk

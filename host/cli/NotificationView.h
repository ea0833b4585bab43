// Change notifications as the operator sees them. A notification record becomes one JSON object
// {"notification": N, "time": "...Z", "eventTime": ns, "dn": "...", "event":
// "created"|"deleted"|"changed", "attributes": {name: value}} with the values in the model's
// terms (as `get` shows them; a removed value is null), and that object becomes one line of text:
// "#N TIME EVENT DN name=value ..." with the values in the command line's value syntax.
#pragma once

#include <string>

#include "host/cli/ModelView.h"
#include "host/cli/ValueFormatter.h"
#include "platform/orl/OrlEventRouter.h"

namespace vesk {
namespace host {
namespace cli {

// The record's first event as JSON; the record stays the producer's.
Json notificationJson(const OrlOamSpiCmEvent_Notification_1T& notification, const ModelView& model);
// The JSON form as one line of text (no line end).
std::string notificationText(const Json& notification);
// Why `pattern` cannot filter notifications (it is compiled as the producer compiles filters),
// or empty when it can.
std::string filterPatternError(const std::string& pattern);
// Nanoseconds since the epoch as "YYYY-MM-DDTHH:MM:SS.uuuuuuZ".
std::string utcTime(uint64_t nanoseconds);

}  // namespace cli
}  // namespace host
}  // namespace vesk

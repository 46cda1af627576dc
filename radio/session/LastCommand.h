#ifndef RADIO_SESSION_LASTCOMMAND_H
#define RADIO_SESSION_LASTCOMMAND_H

#include "radio/session/RadioUnit.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/** What came of the last command that acted on the radio, the start-up included: what expectations ask about.
 */
struct LastCommand {
    std::int32_t code = 0;
    /** What reached the hardware, in order. */
    std::vector<std::pair<std::string, std::int64_t>> writes;
    /** The texts of the trace messages. */
    std::vector<std::string> traces;
    std::vector<Notification> notifications;
};

} // namespace Radio

#endif

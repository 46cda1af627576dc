// One channel of the minimal platform is removed, and another goes on: the subscription of a module goes with
// it, since the platform knows it by its context.
#include "FrequencyHandler_c.h"
#include "MinimalPlatform.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

namespace {

/** How many modules say that they hear of this temperature. */
int hearersOf(int degrees) {
    std::ostringstream traced;
    std::streambuf* const log = std::clog.rdbuf(traced.rdbuf());
    Minimal::setTemperature(degrees);
    std::clog.rdbuf(log);
    const std::string message = "notifyTemperature called with temp = " + std::to_string(degrees) + "\n";
    int count = 0;
    for (std::size_t at = traced.str().find(message); at != std::string::npos;
         at = traced.str().find(message, at + 1)) {
        ++count;
    }
    return count;
}

} // namespace

int main() {
    Minimal::publishServices();
    Minimal::traceEverything();
    FrequencyHandlerModule* modules[2] = {};
    for (const std::int32_t channel : {1, 2}) {
        for (const char* const direction : {"tx", "rx"}) {
            Minimal::addDriver("channel." + std::to_string(channel) + "." + direction + ".rf.frequency");
        }
        if (isFailure(FrequencyHandler_Create(channel, FrequencyHandlerRfModule, &modules[channel - 1]))) {
            return 2;
        }
    }
    std::ostringstream unread;
    std::streambuf* const log = std::clog.rdbuf(unread.rdbuf());
    const bool isUp = Minimal::runPhase(11) && Minimal::runPhase(5) && Minimal::runPhase(20);
    std::clog.rdbuf(log);

    const int both = hearersOf(25);
    FrequencyHandler_Destroy(modules[0]);
    const int one = hearersOf(26);
    FrequencyHandler_Destroy(modules[1]);
    const int none = hearersOf(27);
    std::printf("%d, %d, %d\n", both, one, none);
    return isUp && both == 2 && one == 1 && none == 0 ? 0 : 1;
}

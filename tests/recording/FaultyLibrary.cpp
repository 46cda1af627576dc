// Put before the library: a module that is built does what REPLAY_FAULT says, and does not come back.

#include "FrequencyHandler.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

/** Takes more of the stack with each turn than there is. */
int useUp(volatile int* above) {
    volatile int room[1024] = {*above}; // NOLINT(cppcoreguidelines-avoid-c-arrays)
    return *above < 0 ? 0 : useUp(room) + room[1];
}

} // namespace

extern "C" [[gnu::visibility("default")]] void
buildFaultyModule(void*, unsigned long,
                  ::FrequencyHandler::FrequencyHandlerType) __asm__("_ZN16FrequencyHandlerC1Em"
                                                                    "NS_20FrequencyHandlerTypeE");

extern "C" void buildFaultyModule(void* /*self*/, unsigned long /*channel*/,
                                  ::FrequencyHandler::FrequencyHandlerType /*type*/) {
    const char* const variable = std::getenv("REPLAY_FAULT"); // NOLINT(concurrency-mt-unsafe)
    const std::string fault = variable != nullptr ? variable : "";
    volatile int turns = 0;
    if (fault == "address") {
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1; // NOLINT(clang-analyzer-core.NullDereference)
    } else if (fault == "stack") {
        turns = useUp(&turns);
    } else if (fault == "abort") {
        std::abort();
    } else if (fault == "exit") {
        std::_Exit(0);
    } else if (fault == "killed") {
        static_cast<void>(std::raise(SIGKILL));
    } else if (fault == "turns") {
        for (;;) {
            turns = turns + 1;
        }
    }
    for (;;) {
        static_cast<void>(pause());
    }
}

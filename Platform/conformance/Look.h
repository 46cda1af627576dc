#ifndef PLATFORM_CONFORMANCE_LOOK_H
#define PLATFORM_CONFORMANCE_LOOK_H

#include "conformance/Rule.h"

#include <cstdint>
#include <string>

namespace Conformance {

enum class State : std::uint8_t {
    holds,
    broken,
    unseen, ///< nobody can tell
};

/** What came of a look at a rule. */
struct Finding {
    State state = State::holds;
    /** Why it does not hold, or cannot be looked at; empty: it holds. */
    std::string why{};
};

/** In this process. */
Finding lookHere(const Rule& rule, Adapter& adapter);
/** In a fork of this process: a crash, or what has not come back after so many seconds, is a rule that does
 * not hold. What it has left running is ended. */
Finding lookApart(const Rule& rule, Adapter& adapter, unsigned deadline);

} // namespace Conformance

#endif

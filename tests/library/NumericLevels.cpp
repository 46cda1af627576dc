#include "NumericLevels.h"

#include <dlfcn.h>

#include <utility>

namespace {

std::optional<int> last;
std::optional<OrbiTraceLevel> levelOfAll;

} // namespace

std::optional<int> NumericLevels::takeLast() {
    return std::exchange(last, std::nullopt);
}

void NumericLevels::mapAllTo(std::optional<OrbiTraceLevel> level) {
    levelOfAll = level;
}

/** Stands in for the one of the platform in the whole test program, and asks it. */
OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    using Mapping = OrbiTraceLevel (*)(int);
    static const auto ofThePlatform = reinterpret_cast<Mapping>(
        dlsym(RTLD_NEXT, "CZulTraceHandler_DmLevel2GtLevel")); // dlsym knows no types
    last = level;
    return levelOfAll ? *levelOfAll : ofThePlatform(level);
}

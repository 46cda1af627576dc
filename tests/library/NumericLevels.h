#ifndef TESTS_LIBRARY_NUMERICLEVELS_H
#define TESTS_LIBRARY_NUMERICLEVELS_H

#include "OrbiTrace.h"

#include <optional>

/**
 * The numeric levels that the library has had mapped in this test program, in which the mapping of the
 * platform is called through a function of the tests.
 */
namespace NumericLevels {

/** The one mapped last, once; nothing when none was mapped since. */
std::optional<int> takeLast();

/** Has every numeric level mapped to `level` from now on; with nothing, the platform maps again. */
void mapAllTo(std::optional<OrbiTraceLevel> level);

} // namespace NumericLevels

#endif

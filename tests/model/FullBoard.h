#ifndef TESTS_MODEL_FULLBOARD_H
#define TESTS_MODEL_FULLBOARD_H

#include "Story.h"

namespace Told {

/**
 * Adds whatever anything of the library may ask for on a channel: what boards have instead of something else
 * (the LO configuration driver, the coarse DC drivers and tables, the detectors of two ranges) only when
 * `alternatives` is set.
 */
void addChannel(Board& board, std::int32_t channel, bool alternatives);

/** Adds the variables that all channels share. */
void addShared(Board& board);

} // namespace Told

#endif

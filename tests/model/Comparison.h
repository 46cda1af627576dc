#ifndef TESTS_MODEL_COMPARISON_H
#define TESTS_MODEL_COMPARISON_H

#include "Story.h"

#include <string>

namespace Told {

/** Has library and model tell a story, and gives the first line in which they differ; empty: none. */
std::string differenceIn(Story story);

} // namespace Told

#endif

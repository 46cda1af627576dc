#ifndef RADIO_TEXT_NEARESTNAME_H
#define RADIO_TEXT_NEARESTNAME_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/**
 * The candidate whose spelling is nearest to `word`, for a "did you mean". Upper and lower case count as the
 * same unless they decide between two candidates; of equally near ones the first is taken. Nothing when none
 * is near: at most one slip in four letters, and at most three.
 */
std::optional<std::string> nearestName(std::string_view word, const std::vector<std::string>& candidates);

/** " (did you mean "NAME"?)" for the nearest name; empty when none is near. */
std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates);

} // namespace Radio

#endif

#ifndef RADIO_LANGUAGE_USAGE_H
#define RADIO_LANGUAGE_USAGE_H

#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/**
 * What the usage of a command lets stand behind the words `before`: words that stand for themselves, and
 * placeholders such as "CHANNEL". Nothing when the words do not fit it. A unit may stand behind each of
 * "FROM", "TO", "STEP" and "DWELL" without being in the usage.
 */
std::vector<std::string> choicesBehind(std::string_view usage, const std::vector<std::string>& before);

/** True for what the user fills in; the units of frequency have small letters, too. */
bool isPlaceholder(std::string_view word);

} // namespace Radio

#endif

#ifndef RADIO_BOARD_PLATFORMWORDS_H
#define RADIO_BOARD_PLATFORMWORDS_H

#include "OrbiTrace.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/** What a radio and its platform have, and the words that stand for it in boards, commands and reports. */
namespace Radio {

enum class Direction : std::uint8_t { tx, rx };

std::string_view toString(Direction direction);
std::optional<Direction> directionFromString(std::string_view word);

std::string_view toString(Standalone::Presence presence);
std::optional<Standalone::Presence> presenceFromString(std::string_view word);

/** "off", "error", "warning", "notice" or "information". */
std::string_view toString(OrbiTraceLevel level);
std::optional<OrbiTraceLevel> traceLevelFromString(std::string_view word);

/** What a phase is for, for example "module initialisation". */
std::string_view meaningOf(unsigned long phase);
/** Takes the short name of a phase or its number. */
std::optional<Standalone::Phase> phaseFromString(std::string_view word);

/** The words for every value, in the order of the enumeration. */
std::vector<std::string_view> presenceWords();
std::vector<std::string_view> traceLevelWords();

} // namespace Radio

#endif

#ifndef RADIOCTL_WORDS_H
#define RADIOCTL_WORDS_H

#include "OrbiTrace.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** The words of the command language and of the output, and the values that they stand for. */
namespace Radioctl {

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

/** A result code as people write it, for example "0x8001". */
std::string codeText(std::int32_t code);

/** `text` with its control characters written as \x1b and so on, so that a terminal does not obey them. */
std::string harmless(std::string_view text);

/** `word` in quotation marks, cut when it is long and with nothing in it that a terminal would obey. */
std::string inQuotes(std::string_view word);

/** A number with so many decimals, for example "-71.2"; never "-0.0". */
std::string inDecimals(double number, int places);
/** The same with two. */
std::string inTwoDecimals(double number);
/** A level with its unit, for example "-71.24 dBc". */
std::string levelText(double dBc);

/** "1 channel", "2 channels". */
std::string counted(std::uint64_t count, std::string_view noun);

/** The items with `separator` between them. */
template <typename Items>
std::string joined(const Items& items, std::string_view separator) {
    std::string text;
    for (const auto& item : items) {
        if (!text.empty()) {
            text += separator;
        }
        text += item;
    }
    return text;
}

} // namespace Radioctl

#endif

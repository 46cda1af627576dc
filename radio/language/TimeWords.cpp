#include "radio/language/TimeWords.h"

#include "radio/text/Frequency.h"
#include "radio/text/Numbers.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace Radio {

namespace {

constexpr std::chrono::microseconds longest = std::chrono::hours(1);

bool isLetter(char character) {
    return std::isalpha(static_cast<unsigned char>(character)) != 0;
}

/** How many microseconds a unit has; nothing for an unknown unit. */
std::optional<double> microsecondsIn(std::string_view unit) {
    constexpr std::array<std::pair<std::string_view, double>, 4> units{
        {{"", 1e6}, {"ms", 1e3}, {"s", 1e6}, {"min", 6e7}}};
    const auto* const found =
        std::find_if(units.begin(), units.end(), [unit](const auto& known) { return known.first == unit; });
    return found == units.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

std::chrono::microseconds takeTime(Arguments& arguments, std::string_view what) {
    std::string number = arguments.take(what);
    std::string unit(std::find_if(number.begin(), number.end(), isLetter), number.end());
    std::string written = number;
    number.resize(number.size() - unit.size());
    if (unit.empty() && !arguments.atEnd() && looksLikeUnit(arguments.peek())) {
        unit = arguments.take("unit");
        written += " " + unit;
    }
    const std::optional<double> factor = microsecondsIn(unit);
    const double size = parseNumber<double>(number, 0.0, HUGE_VAL, std::chars_format::fixed).value_or(-1.0);
    if (std::signbit(size) || !factor) {
        throw WordError(inQuotes(written) +
                        " is no time, expected a number of seconds, or with ms, s or min");
    }
    if (size * *factor > static_cast<double>(longest.count())) {
        throw WordError(inQuotes(written) + " is too long, expected at most one hour");
    }
    return std::chrono::microseconds(std::llround(size * *factor));
}

} // namespace Radio

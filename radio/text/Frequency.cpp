#include "radio/text/Frequency.h"

#include "radio/text/Numbers.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <utility>

namespace Radio {

namespace {

bool isLetter(char character) {
    return std::isalpha(static_cast<unsigned char>(character)) != 0;
}

/** How many decimal places of the unit make one kHz; nothing for an unknown unit. */
std::optional<std::size_t> decimalPlaces(std::string_view unit) {
    constexpr std::array<std::pair<std::string_view, std::size_t>, 4> units{
        {{"", 0}, {"khz", 0}, {"mhz", 3}, {"ghz", 6}}};
    std::string lower(unit);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    for (const auto& [name, places] : units) {
        if (name == lower) {
            return places;
        }
    }
    return std::nullopt;
}

[[noreturn]] void throwNoFrequency(const std::string& written) {
    throw WordError(inQuotes(written) +
                    " is not a frequency, expected a decimal number of kHz, or with kHz, MHz or GHz");
}

} // namespace

bool looksLikeUnit(std::string_view word) {
    return !word.empty() && isLetter(word.front());
}

std::uint32_t parseFrequency(std::string_view number, std::string_view unit) {
    const std::string written = std::string(number) + (unit.empty() ? "" : " ") + std::string(unit);
    const auto unitBegin =
        static_cast<std::size_t>(std::find_if(number.begin(), number.end(), isLetter) - number.begin());
    const bool unitFollows = unit.empty() && unitBegin != 0;
    if (unitFollows) {
        unit = number.substr(unitBegin);
        number = number.substr(0, unitBegin);
    }
    const std::size_t point = std::min(number.find('.'), number.size());
    const std::string_view whole = number.substr(0, point);
    std::string_view fraction = point == number.size() ? std::string_view() : number.substr(point + 1);
    const bool endsWithPoint = point != number.size() && fraction.empty();
    std::string digits = std::string(whole) + std::string(fraction);
    if (whole.empty() || endsWithPoint || digits.find_first_not_of("0123456789") != std::string::npos) {
        throwNoFrequency(written);
    }
    const std::optional<std::size_t> knownPlaces = decimalPlaces(unit);
    if (!knownPlaces.has_value() && unitFollows) {
        throwNoFrequency(written);
    }
    if (!knownPlaces.has_value()) {
        throw WordError("unknown unit " + inQuotes(unit) + ", expected kHz, MHz or GHz");
    }
    const std::size_t places = *knownPlaces;
    fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
    if (fraction.size() > places) {
        throw WordError(inQuotes(written) + " has a fraction of a kHz, expected whole kHz");
    }
    digits.resize(whole.size() + places, '0');
    const auto kHz = parseNumber<std::uint32_t>(digits);
    if (!kHz.has_value()) {
        throw WordError(inQuotes(written) + " is too high, expected at most 4294967295 kHz");
    }
    return *kHz;
}

} // namespace Radio

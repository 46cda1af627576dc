#include "radio/language/Arguments.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/text/Frequency.h"
#include "radio/text/NearestName.h"

#include <algorithm>
#include <cctype>

namespace Radio {

namespace {

/** `what` as it reads in a sentence: "CHANNEL" is "channel". */
std::string spoken(std::string_view what) {
    if (what == "DEGREES") {
        return "number of degrees";
    }
    std::string text(what);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

std::int64_t parseInRange(std::string_view word, std::string_view what, std::int64_t lowest,
                          std::int64_t highest) {
    const std::optional<std::int64_t> number = parseInteger(word);
    if (!number.has_value() || *number < lowest || *number > highest) {
        throw WordError(inQuotes(word) + " is no " + spoken(what) + ", expected a number from " +
                        std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return *number;
}

} // namespace

std::int32_t parseInt32(std::string_view word, std::string_view what) {
    return static_cast<std::int32_t>(parseInRange(word, what, INT32_MIN, INT32_MAX));
}

const std::string& Arguments::take(std::string_view what) {
    if (atEnd()) {
        throwUsage(std::string(what) + " is missing");
    }
    return m_words[m_next++];
}

std::int32_t Arguments::takeInt32(std::string_view what) {
    return parseInt32(take(what), what);
}

std::int64_t Arguments::takeInt64(std::string_view what) {
    return parseInRange(take(what), what, INT64_MIN, INT64_MAX);
}

std::int64_t Arguments::takeInteger(std::string_view what, std::int64_t lowest, std::int64_t highest) {
    return parseInRange(take(what), what, lowest, highest);
}

std::int32_t Arguments::takeCode(std::string_view what) {
    return static_cast<std::int32_t>(parseInRange(take(what), what, INT32_MIN, UINT32_MAX));
}

std::int32_t Arguments::takeTemperature() {
    return static_cast<std::int32_t>(
        parseInRange(take("DEGREES"), "DEGREES", temperatureBounds.low, temperatureBounds.high));
}

double Arguments::takeLevel(std::string_view what) {
    const std::string& word = take(what);
    const auto level = parseNumber<double>(word, -120.0, 120.0, std::chars_format::fixed);
    if (!level.has_value()) {
        throw WordError(inQuotes(word) + " is no level, expected a number of dBc from -120 to 120");
    }
    return *level;
}

std::int32_t Arguments::takeChannel() {
    return static_cast<std::int32_t>(parseInRange(take("CHANNEL"), "CHANNEL", 0, INT32_MAX));
}

Direction Arguments::takeDirection() {
    return takeOneOf("tx|rx", directionFromString, {"tx", "rx"});
}

std::uint32_t Arguments::takeFrequency(std::string_view what) {
    const std::string& number = take(what);
    const bool unitFollows = !atEnd() && looksLikeUnit(peek());
    return parseFrequency(number, unitFollows ? std::string_view(take("unit")) : std::string_view());
}

void Arguments::finish() const {
    if (!atEnd()) {
        throwUsage(inQuotes(peek()) + " is one word too many");
    }
}

void Arguments::throwUsage(const std::string& complaint) const {
    throw WordError(complaint + ", expected: " + std::string(m_usage));
}

void Arguments::throwUnknown(std::string_view what, std::string_view word,
                             const std::vector<std::string_view>& words) {
    const std::string hint =
        parseInteger(word).has_value() ? "" : didYouMean(word, {words.begin(), words.end()});
    const bool namesItself = what.find('|') != std::string_view::npos;
    throw WordError((namesItself ? inQuotes(word) + " is out of place"
                                 : "unknown " + spoken(what) + " " + inQuotes(word)) +
                    hint + ", expected " +
                    (words.size() == 2 ? joined(words, " or ") : "one of " + joined(words, ", ")));
}

} // namespace Radio

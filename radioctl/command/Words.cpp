#include "Words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <utility>

namespace Radioctl {

namespace {

template <typename Value, std::size_t count>
using WordList = std::array<std::pair<std::string_view, Value>, count>;

constexpr WordList<Direction, 2> directions{{{"tx", Direction::tx}, {"rx", Direction::rx}}};

constexpr WordList<Standalone::Presence, 5> presences{{{"present", Standalone::Presence::present},
                                                       {"absent", Standalone::Presence::absent},
                                                       {"null", Standalone::Presence::null},
                                                       {"foreign", Standalone::Presence::foreign},
                                                       {"null-record", Standalone::Presence::nullRecord}}};

constexpr WordList<OrbiTraceLevel, 5> traceLevels{{{"off", Standalone::TraceLevel::off},
                                                   {"error", Standalone::TraceLevel::error},
                                                   {"warning", Standalone::TraceLevel::warning},
                                                   {"notice", Standalone::TraceLevel::notice},
                                                   {"information", Standalone::TraceLevel::information}}};

constexpr WordList<Standalone::Phase, 6> phases{{{"init", Standalone::phaseModuleInit},
                                                 {"storage", Standalone::phaseStorageObjectsRetrieved},
                                                 {"frame-format", Standalone::phasePostFrameformatLoad},
                                                 {"11", Standalone::phaseModuleInit},
                                                 {"5", Standalone::phaseStorageObjectsRetrieved},
                                                 {"20", Standalone::phasePostFrameformatLoad}}};

template <typename List>
auto valueOf(const List& list, std::string_view word) {
    const auto found =
        std::find_if(list.begin(), list.end(), [word](const auto& entry) { return entry.first == word; });
    using Value = decltype(found->second);
    return found == list.end() ? std::optional<Value>() : std::optional<Value>(found->second);
}

template <typename List, typename Value>
std::string_view wordOf(const List& list, Value value) {
    const auto found =
        std::find_if(list.begin(), list.end(), [value](const auto& entry) { return entry.second == value; });
    return found == list.end() ? std::string_view("unknown") : found->first;
}

template <typename List>
std::vector<std::string_view> wordsOf(const List& list) {
    std::vector<std::string_view> words;
    std::transform(list.begin(), list.end(), std::back_inserter(words),
                   [](const auto& entry) { return entry.first; });
    return words;
}

} // namespace

std::string_view toString(Direction direction) {
    return wordOf(directions, direction);
}

std::optional<Direction> directionFromString(std::string_view word) {
    return valueOf(directions, word);
}

std::string_view toString(Standalone::Presence presence) {
    return wordOf(presences, presence);
}

std::optional<Standalone::Presence> presenceFromString(std::string_view word) {
    return valueOf(presences, word);
}

std::string_view toString(OrbiTraceLevel level) {
    return wordOf(traceLevels, level);
}

std::optional<OrbiTraceLevel> traceLevelFromString(std::string_view word) {
    return valueOf(traceLevels, word);
}

std::string_view meaningOf(unsigned long phase) {
    switch (phase) {
    case Standalone::phaseModuleInit:
        return "module initialisation";
    case Standalone::phaseStorageObjectsRetrieved:
        return "storage objects retrieved";
    case Standalone::phasePostFrameformatLoad:
        return "post frame-format load";
    default:
        return "no meaning";
    }
}

std::optional<Standalone::Phase> phaseFromString(std::string_view word) {
    return valueOf(phases, word);
}

std::vector<std::string_view> presenceWords() {
    return wordsOf(presences);
}

std::vector<std::string_view> traceLevelWords() {
    return wordsOf(traceLevels);
}

std::string codeText(std::int32_t code) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), static_cast<std::uint32_t>(code), 16).ptr;
    return "0x" + std::string(digits.begin(), end);
}

std::string harmless(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) {
            result += "\\x";
            result += digits[byte / 16U];
            result += digits[byte % 16U];
        } else {
            result += character;
        }
    }
    return result;
}

std::string inQuotes(std::string_view word) {
    constexpr std::size_t longest = 60;
    return '"' + harmless(word.substr(0, longest)) + (word.size() > longest ? "...\"" : "\"");
}

std::string inDecimals(double number, int places) {
    std::array<char, 400> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, places)
            .ptr;
    const std::string text(digits.data(), end);
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return isZero && text.front() == '-' ? text.substr(1) : text;
}

std::string inTwoDecimals(double number) {
    return inDecimals(number, 2);
}

std::string levelText(double dBc) {
    return inTwoDecimals(dBc) + " dBc";
}

std::string counted(std::uint64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

} // namespace Radioctl

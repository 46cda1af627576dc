#include "radio/board/PlatformWords.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace Radio {

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

} // namespace Radio

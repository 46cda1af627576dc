#ifndef RADIO_BOARD_WORDLIST_H
#define RADIO_BOARD_WORDLIST_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Radio {

/** One of the words that stand for a value in board files. */
template <typename Value>
struct Word {
    std::string_view word;
    Value value;
};

template <typename Value, std::size_t count>
std::vector<std::string_view> wordsOf(const std::array<Word<Value>, count>& list) {
    std::vector<std::string_view> words;
    words.reserve(count);
    for (const auto& entry : list) {
        words.push_back(entry.word);
    }
    return words;
}

template <typename Value, std::size_t count>
std::optional<Value> valueOf(const std::array<Word<Value>, count>& list, std::string_view word) {
    for (const auto& entry : list) {
        if (entry.word == word) {
            return entry.value;
        }
    }
    return std::nullopt;
}

} // namespace Radio

#endif

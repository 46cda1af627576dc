#ifndef RADIO_LANGUAGE_ARGUMENTS_H
#define RADIO_LANGUAGE_ARGUMENTS_H

#include "radio/board/PlatformWords.h"
#include "radio/text/Numbers.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** The words behind the name of a command, taken one after the other. What cannot be taken throws
 * WordError. */
class Arguments {
public:
    /** The words from `first` on; `usage` is shown when there are too few or too many. */
    Arguments(std::vector<std::string> words, std::size_t first, std::string_view usage)
        : m_words(std::move(words)),
          m_next(first),
          m_usage(usage) {}

    bool atEnd() const { return m_next == m_words.size(); }
    std::size_t left() const { return m_words.size() - m_next; }
    /** The last word, which has to be there. */
    const std::string& last() const { return m_words.back(); }
    /** The word before it, which has to be there, too. */
    const std::string& beforeLast() const { return m_words[m_words.size() - 2]; }
    void dropLast() { m_words.pop_back(); }

    /** The next word; `what` names it in messages, as the usage does. */
    const std::string& take(std::string_view what);
    /** The next word, or an empty one at the end. */
    std::string takeIfAny() { return atEnd() ? std::string() : m_words[m_next++]; }
    const std::string& peek() const { return m_words[m_next]; }

    /** What `fromString` makes of the next word, which must be one of `words`. */
    template <typename Value>
    Value takeOneOf(std::string_view what, std::optional<Value> (*fromString)(std::string_view),
                    const std::vector<std::string_view>& words) {
        const std::string& word = take(what);
        const std::optional<Value> value = fromString(word);
        if (!value.has_value()) {
            throwUnknown(what, word, words);
        }
        return *value;
    }

    /** A decimal number, or a hexadecimal one after "0x", of the type's range. */
    std::int32_t takeInt32(std::string_view what);
    std::int64_t takeInt64(std::string_view what);
    /** The same from `lowest` to `highest`. */
    std::int64_t takeInteger(std::string_view what, std::int64_t lowest, std::int64_t highest);
    /** The same, also for a number above the range of int32_t that has 32 bits, such as 0xFFFFFFFF. */
    std::int32_t takeCode(std::string_view what);
    /** Degrees Celsius that a radio may meet. */
    std::int32_t takeTemperature();
    /** A level in dBc, with or without a fraction, from -120 to 120. */
    double takeLevel(std::string_view what);
    /** A number that a channel can have. */
    std::int32_t takeChannel();
    Direction takeDirection();
    /** In kHz: a number with or without a unit behind it. */
    std::uint32_t takeFrequency(std::string_view what = "FREQUENCY");

    /** Throws when a word is left. */
    void finish() const;
    [[noreturn]] void throwUsage(const std::string& complaint) const;

private:
    [[noreturn]] static void throwUnknown(std::string_view what, std::string_view word,
                                          const std::vector<std::string_view>& words);

    std::vector<std::string> m_words;
    std::size_t m_next;
    std::string_view m_usage;
};

/** `word` as a number of 32 bits with sign; throws WordError, which calls it `what`. */
std::int32_t parseInt32(std::string_view word, std::string_view what);

} // namespace Radio

#endif

#ifndef RADIO_TEXT_WORDS_H
#define RADIO_TEXT_WORDS_H

#include <cstdint>
#include <string>
#include <string_view>

/** How texts and numbers are written for people. */
namespace Radio {

/** A result code as people write it, for example "0x8001". */
std::string codeText(std::int32_t code);

/**
 * What is shown goes through here, whatever it comes from: a name, a file, a device or a person.
 *
 * `text` with the bytes of its control characters, of those that turn the direction of what follows, of line
 * separators, and of what is no UTF-8 written as `\x1b` and so on, so that a terminal does not obey them.
 * What went through once is not changed any more.
 */
std::string harmless(std::string_view text);
/** The same of what JSON has in strings: the value stays what it was, with `\u001b` and so on in place of
 * these characters. */
std::string harmlessJson(std::string_view json);

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

} // namespace Radio

#endif

#ifndef RADIO_DESCRIPTION_SPELLING_H
#define RADIO_DESCRIPTION_SPELLING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/** How what a recording says is spelt in board files and in scripts. */
namespace Radio::Describing {

/** A text in quotation marks, as TOML has it. */
std::string tomlText(std::string_view text);
/** One word of a script. */
std::string scriptWord(std::string_view text);
/** `text` as one line of a comment, without the mark in front. */
std::string commentText(std::string_view text);
/** "[1, 2, 3]", on several lines when it is long. */
std::string tomlNumbers(const std::int32_t* numbers, std::size_t count);

} // namespace Radio::Describing

#endif

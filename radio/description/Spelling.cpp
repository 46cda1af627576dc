#include "radio/description/Spelling.h"

#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Describing {

namespace {

/** Files are UTF-8: of what is not, the bytes are spelt out. */
std::string withMarks(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : harmless(text)) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + '"';
}

} // namespace

std::string tomlText(std::string_view text) {
    return withMarks(text);
}

std::string scriptWord(std::string_view text) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) {
        return c > ' ' && c < '\x7f' && c != '"' && c != '\\' && c != '#';
    });
    return isPlain && !text.empty() ? std::string(text) : withMarks(text);
}

std::string commentText(std::string_view text) {
    return harmless(text);
}

std::string tomlNumbers(const std::int32_t* numbers, std::size_t count) {
    constexpr std::size_t inOneLine = 12;
    const bool isLong = count > inOneLine;
    std::string text = isLong ? "[\n    " : "[";
    for (std::size_t index = 0; index < count; ++index) {
        const bool endsLine = isLong && (index + 1) % inOneLine == 0;
        const char* const separator = index + 1 == count ? "" : endsLine ? ",\n    " : ", ";
        text += std::to_string(numbers[index]) + separator;
    }
    return text + (isLong ? ",\n]" : "]");
}

} // namespace Radio::Describing
